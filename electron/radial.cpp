// R_nl by the three-term Laguerre recurrence; the normalisation is a product of ratios.
#include "electron/radial.h"

#include <cmath>

#include "electron/state_math.h"

namespace veltara {

RadialFunction::RadialFunction(int32_t n, int32_t l, int32_t Z)
    : mL(l), mDegree(n - l - 1), mScale(2.0 * Z / n), mAlpha(2.0 * l + 1.0) {
    // (n-l-1)!/(n+l)! = 1 / ((n-l)(n-l+1)...(n+l)): at most 59!/1 ~ 1e80, within range.
    double product = 2.0 * n;
    for (int32_t k = n - l; k <= n + l; ++k) product *= k;
    mNorm = std::sqrt(mScale * mScale * mScale / product);
    // (k+1) L_(k+1) = (2k + 1 + alpha - rho) L_k - (k + alpha) L_(k-1), divided through.
    for (int32_t k = 1; k < mDegree; ++k) {
        const double inv = 1.0 / (k + 1.0);
        mA.push_back((2.0 * k + 1.0 + mAlpha) * inv);
        mB.push_back(inv);
        mC.push_back((k + mAlpha) * inv);
    }
}

double RadialFunction::operator()(double r) const {
    const double rho = mScale * r;
    const double e = math::Exp(-0.5 * rho);
    if (e == 0.0) return 0.0;  // beyond e^-745: far below any value anyone can see
    // rho^l by squaring: a few dependent multiplications instead of l.
    double value = mNorm, power = rho;
    for (int32_t k = mL; k > 0; k >>= 1) {
        if (k & 1) value *= power;
        power *= power;
    }
    if (mDegree == 0) return value * e;
    double previous = 1.0;
    double current = 1.0 + mAlpha - rho;
    for (size_t k = 0; k + 1 < static_cast<size_t>(mDegree); ++k) {
        const double next = (mA[k] - rho * mB[k]) * current - mC[k] * previous;
        previous = current;
        current = next;
    }
    return value * current * e;
}

void RadialFunction::Evaluate(const double* r, size_t count, double* out) const {
    for (size_t i = 0; i < count; ++i) out[i] = (*this)(r[i]);
}

}  // namespace veltara
