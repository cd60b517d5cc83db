// The hybrid orbitals of chemistry as superpositions of real states of one shell.
#pragma once

#include <cstdint>

#include "electron/state.h"

namespace veltara {

enum class HybridKind : int32_t { Sp, Sp2, Sp3, Sp3d, Sp3d2 };

/// How many hybrids a kind has: 2, 3, 4, 5, 6.
int32_t HybridCount(HybridKind kind);

/// Hybrid k (0 .. HybridCount - 1) of `kind` in shell n (0: the default, 2 for sp, sp2, sp3
/// and 3 for sp3d, sp3d2). Its parts are signed so that each is positive far out along the
/// hybrid's axis. Raises 5 with a sentence for k or n out of range.
Superposition Hybrid(HybridKind kind, int32_t k, int32_t n = 0);

}  // namespace veltara
