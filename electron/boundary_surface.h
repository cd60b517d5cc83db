// The boundary surface of a state: the level of |Psi(t)|² whose region holds a given share of
// the probability, and a closed triangle mesh of that level with the phase at each vertex.
#pragma once

#include <cstdint>
#include <vector>

#include "electron/state.h"

namespace veltara {

/// The level L (per Bohr³) such that the region |Psi(t)|² >= L holds `fraction` of the
/// probability, to within 0.002 of the fraction. Found from the exact density at a fixed set
/// of exact draws (a low-discrepancy sequence mapped through the inverse distributions, each
/// point weighed by |Psi|² over the terms' mixture). Raises 5 (with a sentence) unless
/// 0 < fraction < 1, or for a non-finite t.
double EnclosingLevel(const Superposition& s, double t, double fraction);

/// A triangle mesh: vertices (x, y, z in Bohr, three floats each), triangles (three vertex
/// indices each, counter-clockwise seen from outside the region), phase of Psi at each vertex
/// (radians, as Sample gives it), and the level of |Psi|² it follows (0 until one is made).
struct SurfaceMesh {
    double level = 0;
    std::vector<float> xyz;
    std::vector<uint32_t> triangles;
    std::vector<float> phase;
};

/// The surface |Psi(t)|² = EnclosingLevel(s, t, fraction) (the level kept in the mesh, so no
/// caller searches for it twice), by marching tetrahedra over a cube
/// of `resolution` cells a side that holds the whole region; neighbouring triangles share
/// their vertices, so the mesh is closed. Raises 5 (with a sentence) for a resolution outside
/// 8..256, and as EnclosingLevel.
SurfaceMesh BoundarySurface(const Superposition& s, double t, double fraction, int32_t resolution);

}  // namespace veltara
