// The mixture draw of a superposition and the evaluation of Psi term by term.
#include "electron/superposition_draw.h"

#include <cmath>
#include <numbers>

#include "electron/sample_elementary.h"
#include "electron/state_wave.h"

namespace veltara {

namespace fn = sample_elementary;

SuperpositionDraw::SuperpositionDraw(const Superposition& s, double t, SampleWeight weight) {
    const std::vector<veltara::Term>& terms = s.Terms();
    const double e1 = StateEnergy(terms.front().state);
    double total = 0;
    for (const veltara::Term& term : terms) {
        const State& st = term.state;
        const double angle = -(StateEnergy(st) - e1) * t;
        const std::complex<double> clock(fn::Cos(angle), fn::Sin(angle));
        TermDraw draw(st, weight);
        const double w = std::norm(term.c);
        total += w * draw.ViewMass();
        size_t radial = 0;
        while (radial < mRadialOf.size() &&
               (mRadialOf[radial].n != st.n || mRadialOf[radial].l != st.l))
            ++radial;
        if (radial == mRadial.size()) {
            mRadialOf.push_back(st);
            mRadial.emplace_back(st.n, st.l, st.Z);
        }
        mTerms.push_back(
            Part{std::move(draw), radial,
                 AngularFunction(st.shellAverage ? 0 : st.l, st.shellAverage ? 0 : st.m,
                                 st.basis == Basis::Complex),
                 term.c * clock, w, total});
    }
    for (Part& p : mTerms) p.shareEnd /= total;
    mTerms.back().shareEnd = 1;
}

size_t SuperpositionDraw::PickTerm(double u) const noexcept {
    size_t k = 0;
    while (k + 1 < mTerms.size() && mTerms[k].shareEnd <= u) ++k;
    return k;
}

SuperpositionDraw::Value SuperpositionDraw::At(double x, double y, double z) const {
    const double r = std::sqrt(x * x + y * y + z * z);
    double radial[kMaxSuperpositionTerms];
    for (size_t i = 0; i < mRadial.size(); ++i) radial[i] = mRadial[i](r);
    Value v{0, 0};
    for (const Part& p : mTerms) {
        const std::complex<double> psi = radial[p.radial] * p.angular(x, y, z, r);
        v.psi += p.clockedC * psi;
        v.mixture += p.weight * std::norm(psi);
    }
    return v;
}

double SuperpositionDraw::PhaseOf(std::complex<double> psi) {
    if (psi.imag() == 0) return psi.real() < 0 ? std::numbers::pi : 0.0;
    return fn::Atan2(psi.imag(), psi.real());
}

}  // namespace veltara
