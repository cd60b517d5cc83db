// The radius that holds a given share of a state's probability, and the default radius of the
// sampled cube that follows from it.
#pragma once

#include <cstdint>

#include "electron/state.h"

namespace veltara {

/// The smallest R (Bohr) with P(r < R) >= fraction. For a superposition, whose P(r) may move
/// with time, an R that holds the fraction at every time: the tails T_k(R) of the terms bound
/// the probability outside by (sum |c_k| sqrt(T_k(R)))². Accurate to 1e-9 relative. Raises 5
/// (with a sentence) unless 0 < fraction <= 1.
double RadiusHolding(const Superposition& s, double fraction);

/// The default AtomRadius of a state: the whole Bohr radius at or above RadiusHolding(s, 0.999),
/// at least 1. Raises 6 if it exceeds the 16-bit range.
int16_t DefaultAtomRadius(const Superposition& s);

}  // namespace veltara
