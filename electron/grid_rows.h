// GridRows: the squared coordinates of one sampling grid, and the electrons that evaluate whole
// rows of it at once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/PublicTypes.h"

namespace veltara {

/// The grid whose point (i, j, k) has the squared coordinates (squares[i], squares[j],
/// squares[k]), i, j, k in 0..kMaxIndex.
struct GridRows {
    static constexpr int32_t kMaxIndex = 127;
    const double* squares;  ///< kMaxIndex + 1 values, squares[i] = (i x step)²
};

/// The points (x, y, z) of a grid for x = xFirst..xLast (at most kMaxIndex + 1 of them), whose
/// bytes go to out[x - xFirst].
struct GridRowSpan {
    int32_t xFirst;
    int32_t xLast;
    int32_t y;
    int32_t z;
    uint8_t* out;
};

/// An electron that evaluates whole rows of a grid (the catalogue's orbitals do), handed the
/// squares as they are rather than as records of points.
class GridRowSampler {
  public:
    /// The bytes of rows[0..count) of `grid` in turn, each the same byte the electron's
    /// ScaledBatch gives for its point, with the same errors (a failing row ends the call).
    /// Many rows a call, so that a call's dispatch is paid once for them all.
    virtual void ScaledGridRows(ViewMode view, const GridRows& grid, const GridRowSpan* rows,
                                size_t count) = 0;

  protected:
    ~GridRowSampler() = default;
};

}  // namespace veltara
