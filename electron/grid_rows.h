// GridRows: the squared coordinates of one sampling grid, and the electrons that evaluate whole
// rows of it at once.
#pragma once

#include <cstdint>

#include "records/PublicTypes.h"

namespace veltara {

/// The grid whose point (i, j, k) has the squared coordinates (squares[i], squares[j],
/// squares[k]), i, j, k in 0..kMaxIndex.
struct GridRows {
    static constexpr int32_t kMaxIndex = 127;
    const double* squares;  ///< kMaxIndex + 1 values, squares[i] = (i x step)²
};

/// An electron that evaluates whole rows of a grid (the catalogue's orbitals do), handed the
/// squares as they are rather than as records of points.
class GridRowSampler {
  public:
    /// out[x - xFirst] = the byte of the point (x, y, z) of `grid` for x = xFirst..xLast, the
    /// same byte the electron's ScaledBatch gives for it, with the same errors.
    virtual void ScaledGridRow(ViewMode view, const GridRows& grid, int32_t xFirst, int32_t xLast,
                               int32_t y, int32_t z, uint8_t* out) = 0;

  protected:
    ~GridRowSampler() = default;
};

}  // namespace veltara
