// The facts of a state or superposition that a reader checks: energy, nodes, radii, beats.
#pragma once

#include <cstdint>
#include <vector>

#include "electron/state.h"

namespace veltara {

/// The beat of two terms of distinct energies: its energy, period and light.
struct Beat {
    double deltaHartree;  ///< |E_a - E_b|
    double periodFs;      ///< 2 pi hbar / dE, femtoseconds
    double wavelengthNm;  ///< h c / dE, nanometres
};

/// A state's facts. For a superposition, n, l, m, Z, the node counts, the node radii and the
/// most probable radius are the first term's; the energy is <E> = sum |c_k|² E_k and the mean
/// radius <r> averaged over time, sum |c_k|² <r>_k (the cross terms oscillate).
struct StateFacts {
    int32_t n, l, m, Z;
    double energyHartree, energyEv;
    int32_t radialNodes;            ///< n - l - 1
    int32_t angularNodes;           ///< l (real basis), l - |m| (complex), 0 (shell average)
    std::vector<double> nodeRadii;  ///< ascending, Bohr, each to 1e-8 or better
    double meanRadius;              ///< (3n² - l(l+1))/(2Z), Bohr
    double mostProbableRadius;      ///< the largest maximum of r² R_nl², Bohr, to 1e-7
    std::vector<Beat> beats;        ///< one per pair of distinct energies, lower energies first
};

/// The facts of `s`. No errors (a superposition's states are checked when it is made).
StateFacts FactsOf(const Superposition& s);

}  // namespace veltara
