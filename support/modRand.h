// modRand: the engine's own minimal-standard generator, so a dot cloud depends only on its seed.
#pragma once

#include <cstdint>

namespace veltara::modRand {

/// Sets the state to |Seed|. Raises 6 for -2147483648 and leaves the state unchanged.
void Randomize(const int32_t& Seed);

/// Advances the Lehmer generator (multiplier 48271, modulus 2147483647, Schrage's method) and
/// returns the new state. A state of 0 gives 2147483647 and then stays there.
int32_t NextRandom();

/// The current state (for tests and diagnostics).
int32_t State();

}  // namespace veltara::modRand
