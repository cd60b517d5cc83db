// Choosing the vector path: the processor's features, and VELTARA_SIMD read once.
#include "support/simd_dispatch.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace veltara {

const char* SimdPathName(SimdPath path) {
    switch (path) {
        case SimdPath::Sse2:
            return "sse2";
        case SimdPath::Avx2:
            return "avx2";
        case SimdPath::Avx512:
            return "avx512";
        case SimdPath::Simd128:
            return "simd128";
        default:
            return "scalar";
    }
}

bool SimdPathAvailable(SimdPath path) {
    switch (path) {
        case SimdPath::Scalar:
            return true;
#if defined(__x86_64__)
        // SSE2 is part of every x86-64 processor; the wider paths need the processor's word
        // (__builtin_cpu_supports also checks that the system saves the wider registers).
        case SimdPath::Sse2:
            return true;
        case SimdPath::Avx2:
            return __builtin_cpu_supports("avx2");
        case SimdPath::Avx512:
            return __builtin_cpu_supports("avx512f");
#endif
#if defined(__wasm_simd128__)
        case SimdPath::Simd128:
            return true;
#endif
        default:
            return false;
    }
}

SimdPath WidestSimdPath() {
    for (SimdPath p : {SimdPath::Avx512, SimdPath::Avx2, SimdPath::Simd128, SimdPath::Sse2}) {
        if (SimdPathAvailable(p)) return p;
    }
    return SimdPath::Scalar;
}

SimdChoice ChooseSimd(const char* request) {
    const SimdPath widest = WidestSimdPath();
    if (request == nullptr || *request == '\0') return {widest, false};
    for (SimdPath p :
         {SimdPath::Scalar, SimdPath::Sse2, SimdPath::Avx2, SimdPath::Avx512, SimdPath::Simd128}) {
        if (std::strcmp(request, SimdPathName(p)) == 0) {
            if (SimdPathAvailable(p)) return {p, false};
            break;
        }
    }
    return {widest, true};
}

SimdChoice ActiveSimd() {
    static const SimdChoice choice = ChooseSimd(std::getenv("VELTARA_SIMD"));
    return choice;
}

}  // namespace veltara
