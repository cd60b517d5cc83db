// StateLattice: tables of R_nl by squared distance and mirror images by sign and conjugation.
#include "render/state_lattice.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "electron/radial.h"
#include "electron/state_math.h"
#include "electron/state_wave.h"
#include "support/error.h"

namespace veltara {

namespace {

/// Finds how Y changes when one coordinate of a generic direction changes sign: Y(mirrored)
/// is +-Y or +-conj(Y), whichever of the four lies nearest (the others lie far off, as the
/// direction is generic).
void MirrorOf(const AngularFunction& Y, int axis, double& sign, bool& conj) {
    double p[3] = {0.3713, -0.5521, 0.7468};
    const double r = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
    const std::complex<double> a = Y(p[0], p[1], p[2], r);
    p[axis] = -p[axis];
    const std::complex<double> b = Y(p[0], p[1], p[2], r);
    double best = HUGE_VAL;
    for (double s : {1.0, -1.0}) {
        for (bool c : {false, true}) {
            const double d = std::abs(b - s * (c ? std::conj(a) : a));
            if (d < best) best = d, sign = s, conj = c;
        }
    }
}

}  // namespace

StateLattice::StateLattice(const Superposition& s, double t, double step, ViewMode view)
    : mStep(step), mView(view), mShellAverage(s.Terms()[0].state.shellAverage) {
    if (!std::isfinite(t)) Raise(kErrInvalidCall, "the time t must be a finite number");
    constexpr int32_t kMaxN2 = 3 * kLast * kLast;
    mRoot.resize(kMaxN2 + 1);
    for (int32_t n2 = 0; n2 <= kMaxN2; ++n2) mRoot[n2] = math::Sqrt(static_cast<double>(n2));
    std::vector<double> radii(mRoot.size());
    for (size_t n2 = 0; n2 < radii.size(); ++n2) radii[n2] = mRoot[n2] * step;

    // One table per distinct radial function, one angular function per distinct (l, m).
    std::vector<State> radialKeys, angularKeys;
    for (const Term& term : s.Terms()) {
        const State& st = term.state;
        size_t ri = 0;
        while (ri < radialKeys.size() && !(radialKeys[ri].n == st.n && radialKeys[ri].l == st.l)) {
            ++ri;
        }
        if (ri == radialKeys.size()) {
            radialKeys.push_back(st);
            mRadial.emplace_back(radii.size());
            RadialFunction(st.n, st.l, st.Z)
                .Evaluate(radii.data(), radii.size(), mRadial.back().data());
        }
        size_t ai = 0;
        while (ai < angularKeys.size() &&
               !(angularKeys[ai].l == st.l && angularKeys[ai].m == st.m)) {
            ++ai;
        }
        if (ai == angularKeys.size()) {
            angularKeys.push_back(st);
            mAngular.emplace_back(st.l, st.m, st.basis == Basis::Complex);
            Mirror m{};
            for (int axis = 0; axis < 3; ++axis)
                MirrorOf(mAngular.back(), axis, m.sign[axis], m.conj[axis]);
            mMirror.push_back(m);
        }
        const double phase = -StateEnergy(st) * t;
        const std::complex<double> evolve =
            t == 0.0 ? std::complex<double>{1.0, 0.0}
                     : std::complex<double>{math::Cos(phase), math::Sin(phase)};
        mParts.push_back(Part{term.c * evolve, ri, ai});
        mRealAngular = mRealAngular && st.basis == Basis::Real;
    }
    mValues.resize(mAngular.size() * (kLast + 1));
    mRe.resize(mParts.size() * (kLast + 1));
    mIm.resize(mRe.size());
    mSumRe.resize(kLast + 1);
    mSumIm.resize(kLast + 1);
}

void StateLattice::Row(int32_t j, int32_t k, int32_t images, std::array<double, kLast + 1>* out) {
    const double y = j * mStep;
    const double z = k * mStep;
    const int32_t jk = j * j + k * k;
    const size_t n = kLast + 1;

    // A shell average: R²/(4 pi), the same at every image.
    if (mShellAverage) {
        const std::vector<double>& R = mRadial[0];
        for (int32_t i = 0; i <= kLast; ++i) {
            const int32_t n2 = i * i + jk;
            double v = R[n2] * R[n2] * (0.25 / std::numbers::pi);
            if (mView == ViewMode::DRPDF) v *= (mRoot[n2] * mStep) * (mRoot[n2] * mStep);
            for (int32_t p = 0; p < images; ++p) out[p][i] = v;
        }
        return;
    }

    // R Y of each angular function at the octant points of the row, real and imaginary parts
    // apart, each with its own radial table (one angular function may serve several radial
    // ones: the parts pair them).
    for (size_t a = 0; a < mAngular.size(); ++a) {
        std::complex<double>* v = mValues.data() + a * n;
        for (int32_t i = 0; i <= kLast; ++i) {
            const double r = mRoot[i * i + jk] * mStep;
            v[i] = mAngular[a](i * mStep, y, z, r);
        }
    }
    for (size_t q = 0; q < mParts.size(); ++q) {
        const double* R = mRadial[mParts[q].radial].data();
        const std::complex<double>* Y = mValues.data() + mParts[q].angular * n;
        double* re = mRe.data() + q * n;
        double* im = mIm.data() + q * n;
        for (int32_t i = 0; i <= kLast; ++i) {
            const double radial = R[i * i + jk];
            re[i] = radial * Y[i].real();
            im[i] = radial * Y[i].imag();
        }
    }
    double weight[kLast + 1];
    for (int32_t i = 0; i <= kLast; ++i) {
        // rho r: the distance from the z axis times the distance from the nucleus.
        const double x = i * mStep;
        weight[i] = mView == ViewMode::DRPDF
                        ? math::Sqrt(x * x + y * y) * (mRoot[i * i + jk] * mStep)
                        : 1.0;
    }

    // Each image: the parts summed with the signs and conjugations of its reflections. With
    // u = a + ib and c = cr + i ci, c u = (cr a - ci b) + i (cr b + ci a) and c conj(u) =
    // (cr a + ci b) + i (ci a - cr b): four real factors per part.
    for (int32_t p = 0; p < images; ++p) {
        double* o = out[p].data();
        double* sumRe = mSumRe.data();
        double* sumIm = mSumIm.data();
        std::fill(mSumRe.begin(), mSumRe.end(), 0.0);
        std::fill(mSumIm.begin(), mSumIm.end(), 0.0);
        for (size_t q = 0; q < mParts.size(); ++q) {
            const Mirror& m = mMirror[mParts[q].angular];
            double sign = 1.0;
            bool cj = false;
            for (int axis = 0; axis < 3; ++axis) {
                if (p & (1 << axis)) {
                    sign *= m.sign[axis];
                    cj = cj != m.conj[axis];
                }
            }
            const double cr = mParts[q].c.real() * sign, ci = mParts[q].c.imag() * sign;
            const double k1 = cr, k2 = cj ? ci : -ci, k3 = cj ? -cr : cr, k4 = ci;
            const double* a = mRe.data() + q * n;
            const double* b = mIm.data() + q * n;
            if (mRealAngular) {
                // Real angular functions (b = 0): half the products.
                for (int32_t i = 0; i <= kLast; ++i) {
                    sumRe[i] += k1 * a[i];
                    sumIm[i] += k4 * a[i];
                }
                continue;
            }
            for (int32_t i = 0; i <= kLast; ++i) {
                sumRe[i] += k1 * a[i] + k2 * b[i];
                sumIm[i] += k3 * b[i] + k4 * a[i];
            }
        }
        for (int32_t i = 0; i <= kLast; ++i) {
            o[i] = (sumRe[i] * sumRe[i] + sumIm[i] * sumIm[i]) * weight[i];
        }
    }
}

}  // namespace veltara
