// The zero surface of a scalar field on a cubic lattice, by marching tetrahedra: each cell split
// into the six tetrahedra around its main diagonal, the same split in every cell, so that
// neighbouring cells cut their shared faces alike and the surface has no cracks.
#pragma once

#include <cstdint>
#include <functional>

#include "electron/boundary_surface.h"

namespace veltara {

/// The lattice: points origin + step * (i, j, k), i, j, k in 0..cells.
struct Lattice {
    double origin;
    double step;
    int32_t cells;
};

/// Appends to `mesh` the surface between field >= 0 (inside) and field < 0. layer(k, values)
/// writes the field on the plane k: values[j * (cells + 1) + i] at point (i, j, k); it is
/// called once per plane, in order. phaseAt gives each new vertex's phase. Triangles are
/// counter-clockwise seen from outside (where the field is negative); every lattice edge gives
/// at most one vertex, shared by all triangles that meet it.
void MarchTetrahedra(const Lattice& lattice, const std::function<void(int32_t, double*)>& layer,
                     const std::function<float(double, double, double)>& phaseAt,
                     SurfaceMesh& mesh);

}  // namespace veltara
