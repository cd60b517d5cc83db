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

/// The most points one call of a kernel takes.
inline constexpr size_t kWideRun = 128;

/// out[x - xFirst] for x = xFirst..xLast as the orbital's ScaledGridRows writes it, point
/// x - xFirst of redo aside; xLast - xFirst < 128.
using WideGridRow = void (*)(const GridRows& grid, int32_t xFirst, int32_t xLast, int32_t y,
                             int32_t z, uint8_t* out, double scale, uint64_t* redo);
/// out[i] for i < count <= 128 as the batch path writes the unscaled value times `factor`.
using WideValues = void (*)(const COORDdoubleParams* points, size_t count, double factor,
                            double* out, uint64_t* redo);
/// out[i] for i < count <= 128 as the batch path writes the byte of the value times `scale`.
using WideBytes = void (*)(const COORDdoubleParams* points, size_t count, double scale,
                           uint8_t* out, uint64_t* redo);

/// out[i] for i < count <= 128 as RealBatch writes the real value of the point (x[i], y[i],
/// z[i]) (coordinates, not squares).
using WideReal = void (*)(const double* x, const double* y, const double* z, size_t count,
                          double* out, uint64_t* redo);

/// out[i] for i < count <= 128 as Wavefunction gives psi of a single orbital at the point
/// (x[i], y[i], z[i]).
using WidePsi = WideReal;

/// The wide kernels of one vector path: [catalogue row][view (0 density, 1 radial view)]; psi
/// of the single orbitals by row.
struct WideTable {
    WideGridRow rows[kCatalogueSize][2];
    WideValues values[kCatalogueSize][2];
    WideBytes bytes[kCatalogueSize][2];
    WideReal real[kCatalogueSize][2];
    WidePsi psi[kCatalogueSingleCount];
};

/// Calls again(i) for each point i marked in redo, in order (for the caller of a kernel).
template <class Again>
void ForEachRedo(const uint64_t* redo, Again again) {
    for (size_t w = 0; w < 2; ++w) {
        for (uint64_t bits = redo[w]; bits != 0; bits &= bits - 1) {
            again(w * 64 + static_cast<size_t>(__builtin_ctzll(bits)));
        }
    }
}

/// The kernels of the process's vector path (ActiveSimd); null when that path has none (SSE2,
/// scalar, WebAssembly).
const WideTable* WideKernels();

namespace detail {
/// The tables of the wide files, each compiled for its instruction set.
extern const WideTable kWideAvx512;
extern const WideTable kWideAvx2;
}  // namespace detail

}  // namespace veltara
