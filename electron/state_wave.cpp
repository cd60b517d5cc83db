// Psi, density and the radial view of any state or superposition, and P(r).
#include "electron/state_wave.h"

#include <array>
#include <cmath>
#include <memory>
#include <numbers>

#include "electron/cElectron.h"
#include "electron/modOrbitals.h"
#include "electron/state_math.h"
#include "support/error.h"

namespace veltara {

namespace {

constexpr double kInverseFourPi = 0.25 / std::numbers::pi;

/// The catalogue's orbital objects and the state each row names, made once. The objects are
/// only read (their scale factors stay 0), so threads may share them.
struct CatalogueRows {
    std::array<std::unique_ptr<cElectron>, modOrbitals::kOrbitalCount> rows;
    std::array<State, modOrbitals::kOrbitalCount> states;

    CatalogueRows() {
        for (int16_t i = 0; i < modOrbitals::kOrbitalCount; ++i) {
            rows[i] = modOrbitals::CreateElectron(i);
            const OrbInfo info = rows[i]->GetInfo();
            const bool average = info.OrbType == OrbitalType::AverageOrbs;
            states[i] = State{info.n, info.l, average ? 0 : info.M, Basis::Real, 1, average};
        }
    }
};

/// The catalogue row whose doubles a superposition's density must be: a single real Z = 1
/// state the catalogue lists (any coefficient: |c| is 1).
cElectron* CatalogueRowOf(const Superposition& s) {
    if (s.Terms().size() != 1) return nullptr;
    const State& state = s.Terms()[0].state;
    if (state.Z != 1 || state.basis != Basis::Real) return nullptr;
    static const CatalogueRows catalogue;
    for (size_t i = 0; i < catalogue.states.size(); ++i) {
        if (catalogue.states[i] == state) return catalogue.rows[i].get();
    }
    return nullptr;
}

void CheckPoint(double x, double y, double z) {
    if (!(std::isfinite(x) && std::isfinite(y) && std::isfinite(z))) {
        Raise(kErrInvalidCall, "the point's coordinates must be finite numbers");
    }
}

/// a b written out: the library's complex product checks for infinities and NaNs by a call
/// at every point, which costs more than the product (our factors are finite).
std::complex<double> Times(std::complex<double> a, std::complex<double> b) {
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

double Radius(double x, double y, double z) {
    CheckPoint(x, y, z);
    return math::Sqrt(x * x + y * y + z * z);
}

}  // namespace

WaveEvaluator::WaveEvaluator(const Superposition& s, double t) {
    if (!std::isfinite(t)) Raise(kErrInvalidCall, "the time t must be a finite number");
    mShellAverage = s.Terms()[0].state.shellAverage;
    mRow = CatalogueRowOf(s);
    std::vector<State> radialKeys, angularKeys;
    for (const Term& term : s.Terms()) {
        const State& st = term.state;
        // One function per distinct (n, l) and per distinct (l, m): terms share them.
        size_t ri = 0;
        while (ri < radialKeys.size() && !(radialKeys[ri].n == st.n && radialKeys[ri].l == st.l))
            ++ri;
        if (ri == radialKeys.size()) {
            radialKeys.push_back(st);
            mRadial.emplace_back(st.n, st.l, st.Z);
        }
        size_t ai = 0;
        while (ai < angularKeys.size() && !(angularKeys[ai].l == st.l && angularKeys[ai].m == st.m))
            ++ai;
        if (ai == angularKeys.size()) {
            angularKeys.push_back(st);
            mAngular.emplace_back(st.l, st.m, st.basis == Basis::Complex);
        }
        const double phase = -StateEnergy(st) * t;
        const std::complex<double> evolve =
            t == 0.0 ? std::complex<double>{1.0, 0.0}
                     : std::complex<double>{math::Cos(phase), math::Sin(phase)};
        mParts.push_back(Part{term.c * evolve, ri, ai});
    }
}

std::complex<double> WaveEvaluator::Sum(double x, double y, double z, double r) const {
    if (mParts.size() == 1) {
        const Part& p = mParts[0];
        return Times(p.c, mRadial[0](r) * mAngular[0](x, y, z, r));
    }
    std::array<double, kMaxSuperpositionTerms> radial;
    std::array<std::complex<double>, kMaxSuperpositionTerms> angular;
    for (size_t i = 0; i < mRadial.size(); ++i) radial[i] = mRadial[i](r);
    for (size_t i = 0; i < mAngular.size(); ++i) angular[i] = mAngular[i](x, y, z, r);
    std::complex<double> sum = 0.0;
    for (const Part& p : mParts) sum += Times(p.c, radial[p.radial] * angular[p.angular]);
    return sum;
}

std::complex<double> WaveEvaluator::Psi(double x, double y, double z) const {
    if (mShellAverage) {
        Raise(kErrInvalidCall, "a shell average is a mixture of states and has no wavefunction");
    }
    return Sum(x, y, z, Radius(x, y, z));
}

double WaveEvaluator::Density(double x, double y, double z) const {
    if (mRow) {
        CheckPoint(x, y, z);
        return mRow->GetRealPDF(COORDdoubleParams{x * x, y * y, z * z});
    }
    const double r = Radius(x, y, z);
    if (mShellAverage) {
        const double radial = mRadial[0](r);
        return radial * radial * kInverseFourPi;
    }
    return std::norm(Sum(x, y, z, r));
}

double WaveEvaluator::RadialView(double x, double y, double z) const {
    if (mRow) {
        CheckPoint(x, y, z);
        return mRow->GetRealDRPDF(COORDdoubleParams{x * x, y * y, z * z});
    }
    const double r = Radius(x, y, z);
    if (mShellAverage) {
        const double radial = mRadial[0](r);
        return radial * radial * kInverseFourPi * (r * r);
    }
    return std::norm(Sum(x, y, z, r)) * math::Sqrt(x * x + y * y) * r;
}

std::complex<double> Psi(const Superposition& s, double x, double y, double z, double t) {
    return WaveEvaluator(s, t).Psi(x, y, z);
}

double Density(const Superposition& s, double x, double y, double z, double t) {
    return WaveEvaluator(s, t).Density(x, y, z);
}

double RadialView(const Superposition& s, double x, double y, double z, double t) {
    return WaveEvaluator(s, t).RadialView(x, y, z);
}

void PsiBatch(const Superposition& s, double t, const double* xyz, size_t count,
              std::complex<double>* out) {
    const WaveEvaluator wave(s, t);
    for (size_t i = 0; i < count; ++i)
        out[i] = wave.Psi(xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]);
}

void DensityBatch(const Superposition& s, double t, const double* xyz, size_t count, double* out) {
    const WaveEvaluator wave(s, t);
    for (size_t i = 0; i < count; ++i) {
        out[i] = wave.Density(xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]);
    }
}

void RadialViewBatch(const Superposition& s, double t, const double* xyz, size_t count,
                     double* out) {
    const WaveEvaluator wave(s, t);
    for (size_t i = 0; i < count; ++i) {
        out[i] = wave.RadialView(xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]);
    }
}

double RadialR(int32_t n, int32_t l, int32_t Z, double r) {
    CheckState(State{n, l, 0, Basis::Real, Z, false});
    if (!(r >= 0.0 && std::isfinite(r))) {
        Raise(kErrInvalidCall, "the radius r must be a finite number 0 or above");
    }
    return RadialFunction(n, l, Z)(r);
}

double RadialDistribution(const Superposition& s, double r, double t) {
    if (!(r >= 0.0 && std::isfinite(r))) {
        Raise(kErrInvalidCall, "the radius r must be a finite number 0 or above");
    }
    if (!std::isfinite(t)) Raise(kErrInvalidCall, "the time t must be a finite number");
    const std::vector<Term>& terms = s.Terms();
    std::array<double, kMaxSuperpositionTerms> radial;
    std::array<std::complex<double>, kMaxSuperpositionTerms> c;
    for (size_t k = 0; k < terms.size(); ++k) {
        const State& st = terms[k].state;
        radial[k] = RadialFunction(st.n, st.l, st.Z)(r);
        const double phase = -StateEnergy(st) * t;
        c[k] = terms[k].c * std::complex<double>{math::Cos(phase), math::Sin(phase)};
    }
    // The angular functions of one basis are orthonormal over the sphere: only terms of the
    // same l and m overlap.
    double sum = 0.0;
    for (size_t j = 0; j < terms.size(); ++j) {
        sum += std::norm(c[j]) * radial[j] * radial[j];
        for (size_t k = j + 1; k < terms.size(); ++k) {
            const State& a = terms[j].state;
            const State& b = terms[k].state;
            if (a.l != b.l || a.m != b.m) continue;
            sum += 2.0 * std::real(std::conj(c[j]) * c[k]) * radial[j] * radial[k];
        }
    }
    return sum * (r * r);
}

double StateEnergy(const State& s) {
    return -0.5 * (static_cast<double>(s.Z) * s.Z) / (static_cast<double>(s.n) * s.n);
}

bool IsRealValued(const Superposition& s) {
    for (const Term& term : s.Terms()) {
        if (term.state.basis != Basis::Real || term.c.imag() != 0.0) return false;
    }
    return true;
}

}  // namespace veltara
