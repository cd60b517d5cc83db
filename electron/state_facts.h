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

struct StateFacts {
    int32_t n, l, m, Z;              ///< of the first term
    double energyHartree, energyEv;  ///< a superposition: <E>
    int32_t radialNodes, angularNodes;
    std::vector<double> nodeRadii;          ///< ascending, Bohr
    double meanRadius, mostProbableRadius;  ///< Bohr
    std::vector<Beat> beats;                ///< one per pair of distinct energies
};

/// The facts of `s`; for a superposition n, l, m, Z and the radii are the first term's.
StateFacts FactsOf(const Superposition& s);

}  // namespace veltara
