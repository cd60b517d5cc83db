// A superposition's exact draw: a term picked by its share of the weight, a point of that
// term, and Psi and the mixture at the point for the rejection that makes the draw |Psi|².
#pragma once

#include <complex>
#include <vector>

#include "electron/angular.h"
#include "electron/radial.h"
#include "electron/sampling.h"
#include "electron/term_draw.h"

namespace veltara {

class SuperpositionDraw {
  public:
    SuperpositionDraw(const Superposition& s, double t, SampleWeight weight);

    size_t TermCount() const noexcept { return mTerms.size(); }
    /// The term whose share of the mixture's weight holds u in [0, 1).
    size_t PickTerm(double u) const noexcept;
    const TermDraw& Term(size_t k) const noexcept { return mTerms[k].draw; }
    /// |c_k|².
    double TermWeight(size_t k) const noexcept { return mTerms[k].weight; }

    struct Value {
        std::complex<double> psi;  ///< Psi(t) e^(i E_1 t)
        double mixture;            ///< sum |c_k|² |psi_k|²
    };
    /// Psi and the mixture at (x, y, z).
    Value At(double x, double y, double z) const;

    /// arg of a value of Psi in (-pi, pi]; exactly 0 or pi for a real value.
    static double PhaseOf(std::complex<double> psi);

  private:
    struct Part {
        TermDraw draw;
        size_t radial;  // index into mRadial
        AngularFunction angular;
        std::complex<double> clockedC;  // c_k e^(-i (E_k - E_1) t)
        double weight;                  // |c_k|²
        double shareEnd;                // the mixture's cumulative share up to this term
    };
    std::vector<Part> mTerms;
    std::vector<State> mRadialOf;         // the n, l, Z of each distinct radial function
    std::vector<RadialFunction> mRadial;  // shared by terms of one n and l (hybrids)
};

}  // namespace veltara
