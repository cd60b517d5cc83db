// The grid rows of the catalogue's orbitals evaluated 8 (AVX-512) or 4 (AVX2) lanes wide, in files
// compiled for those instruction sets alone and reached only through the table below.
#pragma once

#include <cstdint>

#include "electron/catalogue.h"
#include "electron/grid_rows.h"
#include "records/PublicTypes.h"

namespace veltara {

/// Writes out[x - xFirst] for x = xFirst..xLast as the orbital's ScaledGridRow does, except at
/// the points whose value or r² is not finite or whose scaled value is no byte: it sets their bit
/// x - xFirst in redo[0..2) (cleared first) and leaves them to the caller, which evaluates them
/// again in baseline code (the wide files call no shared per-point code). xLast - xFirst < 128.
using WideGridRow = void (*)(const GridRows& grid, int32_t xFirst, int32_t xLast, int32_t y,
                             int32_t z, uint8_t* out, double scale, uint64_t* redo);

/// The wide row of catalogue row `row` and `view` on the process's vector path (ActiveSimd);
/// null when that path has none (SSE2, scalar, WebAssembly).
WideGridRow WideGridRowFor(int16_t row, ViewMode view);

/// The wide rows of one vector path: [catalogue row][view].
struct WideGridRowTable {
    WideGridRow rows[kCatalogueSize][2];
};

namespace detail {
/// The tables of the wide files, each compiled for its instruction set.
extern const WideGridRowTable kWideGridRowsAvx512;
extern const WideGridRowTable kWideGridRowsAvx2;
}  // namespace detail

}  // namespace veltara
