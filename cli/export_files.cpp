// Writers of the cube and PLY files.
#include "export_files.h"

#include <charconv>
#include <cstdio>
#include <memory>

namespace vtcli {

namespace {

struct FileCloser {
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

/// Appends a value as printf's "%13.5E" would write it (to_chars is exact like printf and
/// several times faster, which matters for 16 million values).
void AppendE(std::string& out, double v) {
    char buf[32];
    const auto res = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::scientific, 5);
    std::string_view text(buf, static_cast<size_t>(res.ptr - buf));
    if (text.size() < 13) out.append(13 - text.size(), ' ');
    for (char c : text) out += c == 'e' ? 'E' : c;
}

/// The cube's values at count points: the density of a view, or psi.
int32_t CubeValues(int16_t orbital, int32_t view, const double* xyz, size_t count, double* out) {
    if (view == kCubePsi) return vt_wavefunction(orbital, xyz, count, out);
    return vt_real_density(orbital, view, xyz, count, out);
}

}  // namespace

int32_t WriteCube(const std::string& path, int16_t orbital, int32_t view, const std::string& title,
                  const CubeGrid& grid) {
    File file(std::fopen(path.c_str(), "wb"));
    if (!file) return -1;
    const int32_t n = grid.Points();
    const double step = grid.Step();
    const double origin = -grid.Half() * step;

    // Header: two comment lines, the atom count with the origin, one line per axis (a positive
    // count means Bohr), then the one hydrogen atom (number, charge, position) at the nucleus.
    std::fprintf(file.get(), "%s\n", title.c_str());
    std::fprintf(file.get(), "%d points per axis, step %.10g Bohr; x outer, y middle, z inner\n", n,
                 step);
    std::fprintf(file.get(), "%5d%12.6f%12.6f%12.6f\n", 1, origin, origin, origin);
    std::fprintf(file.get(), "%5d%12.6f%12.6f%12.6f\n", n, step, 0.0, 0.0);
    std::fprintf(file.get(), "%5d%12.6f%12.6f%12.6f\n", n, 0.0, step, 0.0);
    std::fprintf(file.get(), "%5d%12.6f%12.6f%12.6f\n", n, 0.0, 0.0, step);
    std::fprintf(file.get(), "%5d%12.6f%12.6f%12.6f%12.6f\n", 1, 1.0, 0.0, 0.0, 0.0);

    // Values one x slab at a time: z varies fastest, six to a line, each z run on fresh lines.
    const size_t slab = static_cast<size_t>(n) * static_cast<size_t>(n);
    std::vector<double> xyz(slab * 3), density(slab);
    std::string text;
    for (int32_t ix = 0; ix < n; ++ix) {
        size_t k = 0;
        for (int32_t iy = 0; iy < n; ++iy) {
            for (int32_t iz = 0; iz < n; ++iz, ++k) {
                xyz[3 * k + 0] = origin + ix * step;
                xyz[3 * k + 1] = origin + iy * step;
                xyz[3 * k + 2] = origin + iz * step;
            }
        }
        if (const int32_t rc = CubeValues(orbital, view, xyz.data(), slab, density.data())) {
            return rc;
        }
        text.clear();
        for (size_t run = 0; run < slab; run += static_cast<size_t>(n)) {
            for (int32_t iz = 0; iz < n; ++iz) {
                AppendE(text, density[run + static_cast<size_t>(iz)]);
                if (iz % 6 == 5 || iz == n - 1) text += '\n';
            }
        }
        if (std::fwrite(text.data(), 1, text.size(), file.get()) != text.size()) return -1;
    }
    return std::fclose(file.release()) == 0 ? 0 : -1;
}

bool WritePly(const std::string& path, const std::vector<vt_PointArray>& dots, int32_t radius,
              const std::string& comment) {
    File file(std::fopen(path.c_str(), "wb"));
    if (!file) return false;
    std::fprintf(file.get(),
                 "ply\nformat ascii 1.0\ncomment %s\nelement vertex %zu\n"
                 "property float x\nproperty float y\nproperty float z\n"
                 "property uchar red\nproperty uchar green\nproperty uchar blue\nend_header\n",
                 comment.c_str(), dots.size());
    const double scale = radius / 127.0;
    for (const vt_PointArray& d : dots) {
        std::fprintf(file.get(), "%.6g %.6g %.6g %d %d 0\n", d.X * scale, d.Y * scale, d.Z * scale,
                     255 - d.P, d.P);
    }
    return std::fclose(file.release()) == 0;
}

}  // namespace vtcli
