// The vector path the engine's exact arithmetic runs on: the widest the processor has, or the
// one VELTARA_SIMD names (scalar, sse2, avx2, avx512; simd128 in WebAssembly). Every path gives
// the same doubles; the choice only changes speed.
#pragma once

#include <cstdint>

namespace veltara {

enum class SimdPath : int32_t { Scalar = 0, Sse2 = 1, Avx2 = 2, Avx512 = 3, Simd128 = 4 };

/// The path's name as VELTARA_SIMD spells it ("scalar", "sse2", "avx2", "avx512", "simd128").
const char* SimdPathName(SimdPath path);

/// True when this build holds the path and the processor (and the system) can run it.
bool SimdPathAvailable(SimdPath path);

/// The widest available path.
SimdPath WidestSimdPath();

struct SimdChoice {
    SimdPath path;  ///< the path in use
    bool refused;   ///< VELTARA_SIMD was set to a name unknown or a path unavailable here
};

/// The path in use, settled once per process from VELTARA_SIMD (unset or empty: the widest).
/// A refused request falls back to the widest available path; the engine writes no log, so the
/// hosts report `refused`.
SimdChoice ActiveSimd();

/// The choice VELTARA_SIMD = `request` would give (null: unset), without touching the process's
/// own choice.
SimdChoice ChooseSimd(const char* request);

}  // namespace veltara
