// Files for other programs: a Gaussian cube of the density and a PLY point cloud of the dots.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "safe_file.h"
#include "veltara.h"

namespace vtcli {

/// The sampling of a cube file: `points` per axis from `origin` in steps of `step` Bohr on each
/// axis. Origin and step are the values as the header writes them, and every point is sampled at
/// origin + i * step, so a reader places each value exactly where it was computed.
struct CubeGrid {
    int32_t points = 0;
    double origin = 0;
    double step = 0;
};

/// Every stride-th point of the engine's grid (step radius / 127): 2 * (127 / stride) + 1 points
/// per axis, symmetric about the nucleus.
CubeGrid StrideGrid(int32_t radius, int32_t stride);

/// The quantity of a cube file beside the two views: psi, the signed wavefunction, a0^(-3/2).
inline constexpr int32_t kCubePsi = -1;

/// `points` points per axis (2 or more) from -radius to radius.
CubeGrid PointsGrid(int32_t radius, int32_t points);

/// Produces into `files` the cube file ("-": standard output) of catalogue orbital `orbital` in
/// `view` (VT_PDF or VT_DRPDF: the normalised density; kCubePsi: the signed wavefunction) at
/// every point, x outermost, z innermost, after the two comment lines `title` and `comment`.
/// Returns 0, the engine's error number, or -1 when the file could not be written (`written`
/// says why).
int32_t AddCube(OutputFiles& files, const std::string& path, int16_t orbital, int32_t view,
                const std::string& title, const std::string& comment, const CubeGrid& grid,
                WriteOutcome& written);

/// Produces into `files` the dots as a PLY point cloud, ASCII or `binary` little-endian: x, y, z
/// in Bohr radii (grid coordinate x radius / 127), the colour of the dot's level (red 255 - P,
/// green P, blue 0) and the level P itself (see OutputFiles::Add).
WriteOutcome AddPly(OutputFiles& files, const std::string& path,
                    const std::vector<vt_PointArray>& dots, int32_t radius,
                    const std::string& comment, bool binary);

}  // namespace vtcli
