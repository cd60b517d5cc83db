// The catalogue's orbitals evaluated 8 (AVX-512) or 4 (AVX2) lanes wide, in files compiled for
// those instruction sets alone and reached only through the tables below.
//
// A wide kernel stops at the first point whose value or r² is not finite or whose result gives
// no byte: it writes the points before it and marks that point and every one after it in
// redo[0..2) (which it clears first), for its caller (baseline code) to evaluate point by point,
// which raises the error of the failing point with nothing after it written. The wide files thus
// call no shared per-point code, whose copy the linker might otherwise take from them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "electron/catalogue.h"
#include "electron/grid_rows.h"
#include "records/PublicTypes.h"

namespace veltara {

/// out[x - xFirst] for x = xFirst..xLast as the orbital's ScaledGridRow writes it, point
/// x - xFirst of redo aside; xLast - xFirst < 128.
using WideGridRow = void (*)(const GridRows& grid, int32_t xFirst, int32_t xLast, int32_t y,
                             int32_t z, uint8_t* out, double scale, uint64_t* redo);
/// out[i] for i < count <= 128 as the batch path writes the unscaled value times `factor`.
using WideValues = void (*)(const COORDdoubleParams* points, size_t count, double factor,
                            double* out, uint64_t* redo);
/// out[i] for i < count <= 128 as the batch path writes the byte of the value times `scale`.
using WideBytes = void (*)(const COORDdoubleParams* points, size_t count, double scale,
                           uint8_t* out, uint64_t* redo);

/// The wide kernels of one vector path: [catalogue row][view (0 density, 1 radial view)].
struct WideTable {
    WideGridRow rows[kCatalogueSize][2];
    WideValues values[kCatalogueSize][2];
    WideBytes bytes[kCatalogueSize][2];
};

/// The kernels of the process's vector path (ActiveSimd); null when that path has none (SSE2,
/// scalar, WebAssembly).
const WideTable* WideKernels();

namespace detail {
/// The tables of the wide files, each compiled for its instruction set.
extern const WideTable kWideAvx512;
extern const WideTable kWideAvx2;
}  // namespace detail

}  // namespace veltara
