// Choosing the wide grid rows of the process's vector path.
#include "electron/wide_rows.h"

#include "electron/catalogue.h"
#include "support/simd_dispatch.h"

namespace veltara {

WideGridRow WideGridRowFor(int16_t row, ViewMode view) {
    if (!IsCatalogueIndex(row)) return nullptr;
    const auto r = static_cast<size_t>(row);
    const size_t v = view == ViewMode::DRPDF ? 1 : 0;
#if defined(__x86_64__)
    switch (ActiveSimd().path) {
        case SimdPath::Avx512:
            return detail::kWideGridRowsAvx512.rows[r][v];
        case SimdPath::Avx2:
            return detail::kWideGridRowsAvx2.rows[r][v];
        default:
            break;
    }
#endif
    (void)r;
    (void)v;
    return nullptr;
}

}  // namespace veltara
