// Spherical harmonics from the direction's Cartesian components: the normalised associated
// Legendre function divided by sin^|m| theta is a polynomial in cos theta, and
// sin^|m| theta e^(i|m|phi) is ((x + iy)/r)^|m|, so neither an angle nor a trigonometric
// function is needed.
#include "electron/angular.h"

#include <cmath>
#include <numbers>

namespace veltara {

AngularFunction::AngularFunction(int32_t l, int32_t m, bool complex)
    : mM(m < 0 ? -m : m), mSign(m < 0 ? -1 : 1), mComplex(complex) {
    // The normalised P_|m|^|m| / sin^|m|: sqrt((2|m|+1)/(4 pi) prod_(k<=|m|) (2k-1)/(2k)).
    double start = (2.0 * mM + 1.0) / (4.0 * std::numbers::pi);
    for (int32_t k = 1; k <= mM; ++k) start *= (2.0 * k - 1.0) / (2.0 * k);
    if (!complex && mM != 0) start *= 2.0;
    mStart = std::sqrt(start);
    // The Condon-Shortley phase (-1)^m belongs to Y_l^m with m > 0; Y_l^-m = (-1)^m conj(Y_l^m).
    mPhase = complex && m > 0 && (m % 2 == 1) ? -1.0 : 1.0;
    // P_l = a (cos theta P_(l-1) - b P_(l-2)), a = sqrt((4l²-1)/(l²-m²)),
    // b = sqrt(((l-1)²-m²)/(4(l-1)²-1)): stored as a and a b.
    for (int32_t j = mM + 1; j <= l; ++j) {
        const double jj = static_cast<double>(j) * j;
        const double mm = static_cast<double>(mM) * mM;
        const double a = std::sqrt((4.0 * jj - 1.0) / (jj - mm));
        const double k = j - 1.0;
        const double b = j == mM + 1 ? 0.0 : std::sqrt((k * k - mm) / (4.0 * k * k - 1.0));
        mA.push_back(a);
        mB.push_back(a * b);
    }
}

std::complex<double> AngularFunction::operator()(double x, double y, double z, double r) const {
    double cosTheta = 1.0, ux = 0.0, uy = 0.0;
    if (r > 0.0) {
        const double inv = 1.0 / r;
        cosTheta = z * inv;
        ux = x * inv;
        uy = y * inv;
    }
    // The polynomial in cos theta.
    double previous = 0.0;
    double p = mStart;
    for (size_t j = 0; j < mA.size(); ++j) {
        const double next = mA[j] * cosTheta * p - mB[j] * previous;
        previous = p;
        p = next;
    }
    if (mM == 0) return {p, 0.0};
    // (ux + i uy)^|m| by squaring.
    double re = 1.0, im = 0.0, baseRe = ux, baseIm = uy;
    for (int32_t k = mM;; k >>= 1) {
        if (k & 1) {
            const double t = re * baseRe - im * baseIm;
            im = re * baseIm + im * baseRe;
            re = t;
        }
        if (k == 1) break;
        const double t = baseRe * baseRe - baseIm * baseIm;
        baseIm = 2.0 * baseRe * baseIm;
        baseRe = t;
    }
    if (!mComplex) return {mSign > 0 ? p * re : p * im, 0.0};
    const double s = mPhase * p;
    return {s * re, mSign * s * im};
}

}  // namespace veltara
