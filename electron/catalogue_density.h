// The catalogue's normalised densities over many points at once, through the electrons' batch
// path (whole runs of exponentials on the widest vector path).
#pragma once

#include <cstddef>
#include <cstdint>

#include "electron/cElectron.h"
#include "electron/coordinates.h"
#include "records/PublicTypes.h"

namespace veltara {

/// The catalogue's electron of row `orbital` (0 .. kCatalogueSize - 1, unchecked), made once
/// with scale factors 0. Its density operations read nothing but constants, so threads may
/// share it.
cElectron& CatalogueElectron(int16_t orbital);

/// Points taken in runs of this many: the squares of one run are gathered on the stack.
inline constexpr size_t kCoordinateRun = 256;

/// out[0..n) = the real values of view `view` of catalogue orbital `orbital` (whose electron is
/// `electron`) at points [start, start + n), n <= kCoordinateRun, as RealBatch gives them. Three
/// plain columns (every stride 1) go straight through the widest path's kernel, without
/// gathering their squares. Errors: the density's own (5, 6) at a failing point, after the
/// values before it are written.
void RealDensityRun(cElectron& electron, int16_t orbital, ViewMode view, const Coordinates& points,
                    size_t start, size_t n, double* out);

/// out[i] = GetRealPDF or GetRealDRPDF of catalogue orbital `orbital` at point i, bit for bit.
/// Errors: 91 for an orbital outside the catalogue (before any point), and the density's own
/// (5, 6) at a failing point, after the values before it are written.
void RealDensityBatch(int16_t orbital, ViewMode view, const Coordinates& points, size_t count,
                      double* out);

}  // namespace veltara
