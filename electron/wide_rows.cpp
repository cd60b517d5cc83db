// Choosing the wide kernels of the process's vector path.
#include "electron/wide_rows.h"

#include "support/simd_dispatch.h"

namespace veltara {

const WideTable* WideKernels() {
#if defined(__x86_64__)
    switch (ActiveSimd().path) {
        case SimdPath::Avx512:
            return &detail::kWideAvx512;
        case SimdPath::Avx2:
            return &detail::kWideAvx2;
        default:
            break;
    }
#endif
    return nullptr;
}

}  // namespace veltara
