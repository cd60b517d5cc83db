// Files for other programs: a Gaussian cube of the density and a PLY point cloud of the dots.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "veltara.h"

namespace vtcli {

/// The sampling of a cube file: 2 * half + 1 points per axis at grid indices -half * stride ..
/// half * stride, the grid step being radius / 127 Bohr radii.
struct CubeGrid {
    int32_t radius = 1;
    int32_t stride = 1;

    int32_t Half() const { return 127 / stride; }
    int32_t Points() const { return 2 * Half() + 1; }
    double Step() const { return stride * (radius / 127.0); }
};

/// The quantity of a cube file beside the two views: psi, the signed wavefunction, a0^(-3/2).
inline constexpr int32_t kCubePsi = -1;

/// Writes the cube file of catalogue orbital `orbital` in `view` (VT_PDF or VT_DRPDF: the
/// normalised density; kCubePsi: the signed wavefunction) at every grid point, x outermost, z
/// innermost. Returns 0, the engine's error number, or -1 when the file could not be written.
int32_t WriteCube(const std::string& path, int16_t orbital, int32_t view, const std::string& title,
                  const CubeGrid& grid);

/// Writes the dots as an ASCII PLY point cloud: x, y, z in Bohr radii (grid coordinate x
/// radius / 127) and the colour of the dot's level (red 255 - P, green P, blue 0). False when
/// the file could not be written.
bool WritePly(const std::string& path, const std::vector<vt_PointArray>& dots, int32_t radius,
              const std::string& comment);

}  // namespace vtcli
