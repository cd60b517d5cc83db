// Writers of the cube and PLY files.
#include "export_files.h"

#include <bit>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "safe_file.h"

namespace vtcli {

namespace {

/// Appends a value as printf's "%13.5E" would write it (to_chars is exact like printf and
/// several times faster, which matters for 16 million values). Densities are never negative, so
/// the width always leaves a space before the value.
void AppendE(std::string& out, double v) {
    char buf[32];
    const auto res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::scientific, 5);
    std::string_view text(buf, static_cast<size_t>(res.ptr - buf));
    if (text.size() < 13) out.append(13 - text.size(), ' ');
    for (char c : text) out += c == 'e' ? 'E' : c;
}

/// A header number as the file writes it: a space, then 12 decimals (so fields stay apart at
/// any magnitude and the far corner of a 1000-Bohr cube is off by less than 1e-9 Bohr).
std::string HeaderNumber(double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, " %.12f", v);
    return buf;
}

/// The value a reader gets back from HeaderNumber.
double AsWritten(double v) { return std::strtod(HeaderNumber(v).c_str(), nullptr); }

/// The cube's values at count points: the density of a view, or psi.
int32_t CubeValues(int16_t orbital, int32_t view, const double* xyz, size_t count, double* out) {
    if (view == kCubePsi) return vt_wavefunction(orbital, xyz, count, out);
    return vt_real_density(orbital, view, xyz, count, out);
}

}  // namespace

CubeGrid StrideGrid(int32_t radius, int32_t stride) {
    const int32_t half = 127 / stride;
    const double step = AsWritten(stride * (radius / 127.0));
    return {2 * half + 1, AsWritten(-half * step), step};
}

CubeGrid PointsGrid(int32_t radius, int32_t points) {
    const double step = AsWritten(2.0 * radius / (points - 1));
    return {points, AsWritten(-radius), step};
}

int32_t AddCube(OutputFiles& files, const std::string& path, int16_t orbital, int32_t view,
                const std::string& title, const std::string& comment, const CubeGrid& grid,
                WriteOutcome& written) {
    const int32_t n = grid.points;
    const std::string o = HeaderNumber(grid.origin), s = HeaderNumber(grid.step),
                      zero = HeaderNumber(0.0);
    int32_t engineError = 0;
    written = files.Add(path, [&](std::FILE* file) {
        // Header: two comment lines, the atom count with the origin, one line per axis (a
        // positive count means Bohr), then the one hydrogen atom (number, charge, position).
        std::fprintf(file, "%s\n%s\n", title.c_str(), comment.c_str());
        std::fprintf(file, "%5d%s%s%s\n", 1, o.c_str(), o.c_str(), o.c_str());
        std::fprintf(file, "%5d%s%s%s\n", n, s.c_str(), zero.c_str(), zero.c_str());
        std::fprintf(file, "%5d%s%s%s\n", n, zero.c_str(), s.c_str(), zero.c_str());
        std::fprintf(file, "%5d%s%s%s\n", n, zero.c_str(), zero.c_str(), s.c_str());
        std::fprintf(file, "%5d%s%s%s%s\n", 1, HeaderNumber(1.0).c_str(), zero.c_str(),
                     zero.c_str(), zero.c_str());

        // Values one x slab at a time: z varies fastest, six to a line, each z run on fresh
        // lines.
        const size_t slab = static_cast<size_t>(n) * static_cast<size_t>(n);
        std::vector<double> xyz(slab * 3), density(slab);
        std::string text;
        for (int32_t ix = 0; ix < n; ++ix) {
            size_t k = 0;
            for (int32_t iy = 0; iy < n; ++iy) {
                for (int32_t iz = 0; iz < n; ++iz, ++k) {
                    xyz[3 * k + 0] = grid.origin + ix * grid.step;
                    xyz[3 * k + 1] = grid.origin + iy * grid.step;
                    xyz[3 * k + 2] = grid.origin + iz * grid.step;
                }
            }
            engineError = CubeValues(orbital, view, xyz.data(), slab, density.data());
            if (engineError != 0) return false;
            text.clear();
            for (size_t run = 0; run < slab; run += static_cast<size_t>(n)) {
                for (int32_t iz = 0; iz < n; ++iz) {
                    AppendE(text, density[run + static_cast<size_t>(iz)]);
                    if (iz % 6 == 5 || iz == n - 1) text += '\n';
                }
            }
            if (std::fwrite(text.data(), 1, text.size(), file) != text.size()) return false;
        }
        return true;
    });
    if (engineError != 0) return engineError;
    return written.ok ? 0 : -1;
}

WriteOutcome AddPly(OutputFiles& files, const std::string& path,
                    const std::vector<vt_PointArray>& dots, int32_t radius,
                    const std::string& comment, bool binary) {
    static_assert(std::endian::native == std::endian::little, "binary PLY is written as stored");
    return files.Add(path, [&](std::FILE* file) {
        std::fprintf(file,
                     "ply\nformat %s 1.0\ncomment %s\nelement vertex %zu\n"
                     "property float x\nproperty float y\nproperty float z\n"
                     "property uchar red\nproperty uchar green\nproperty uchar blue\n"
                     "property uchar level\nend_header\n",
                     binary ? "binary_little_endian" : "ascii", comment.c_str(), dots.size());
        const double scale = radius / 127.0;
        for (const vt_PointArray& d : dots) {
            const float xyz[3] = {static_cast<float>(d.X * scale), static_cast<float>(d.Y * scale),
                                  static_cast<float>(d.Z * scale)};
            const uint8_t colour[4] = {static_cast<uint8_t>(255 - d.P), d.P, 0, d.P};
            if (binary) {
                unsigned char record[16];
                std::memcpy(record, xyz, 12);
                std::memcpy(record + 12, colour, 4);
                if (std::fwrite(record, 1, sizeof record, file) != sizeof record) return false;
            } else {
                std::fprintf(file, "%.6g %.6g %.6g %d %d 0 %d\n", d.X * scale, d.Y * scale,
                             d.Z * scale, colour[0], colour[1], colour[3]);
            }
        }
        return true;
    });
}

}  // namespace vtcli
