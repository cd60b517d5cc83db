// Points given as three arrays of coordinates, each with its own stride, so that a host can
// hand over its arrays as they lie (separate x, y, z columns, interleaved triples, or one value
// repeated) without gathering them into a new array first.
#pragma once

#include <cstddef>

#include "records/PublicTypes.h"

namespace veltara {

/// Point i is (x[i * xStride], y[i * yStride], z[i * zStride]), Bohr radii. Strides count
/// doubles; a stride 0 repeats one value for every point.
struct Coordinates {
    const double* x;
    const double* y;
    const double* z;
    ptrdiff_t xStride, yStride, zStride;

    /// Points as triples x, y, z one after another.
    static Coordinates Interleaved(const double* xyz) { return {xyz, xyz + 1, xyz + 2, 3, 3, 3}; }

    double X(size_t i) const { return x[static_cast<ptrdiff_t>(i) * xStride]; }
    double Y(size_t i) const { return y[static_cast<ptrdiff_t>(i) * yStride]; }
    double Z(size_t i) const { return z[static_cast<ptrdiff_t>(i) * zStride]; }

    /// The points from point `start` on.
    Coordinates From(size_t start) const {
        const auto i = static_cast<ptrdiff_t>(start);
        return {x + i * xStride, y + i * yStride, z + i * zStride, xStride, yStride, zStride};
    }

    /// The squares of points [start, start + count), as the electrons take them.
    void Squares(size_t start, size_t count, COORDdoubleParams* out) const {
        for (size_t i = 0; i < count; ++i) {
            const double a = X(start + i), b = Y(start + i), c = Z(start + i);
            out[i] = COORDdoubleParams{a * a, b * b, c * c};
        }
    }
};

}  // namespace veltara
