// veltara export read back by readers written here: the cube file against the closed-form
// hydrogen densities, and the PLY point cloud against the statistics and the orbital's nodes.
#include <cmath>
#include <numbers>

#include "cli_support.h"

using vt_cli_test::Lines;
using vt_cli_test::ReadFile;
using vt_cli_test::RunVeltara;
using vt_cli_test::ScratchDir;

namespace {

const std::string kClock = " --clock 1000000";
constexpr double kPi = std::numbers::pi;

/// A Gaussian cube file as a chemistry viewer reads it.
struct Cube {
    std::string title, comment;
    int atoms = 0;
    double origin[3] = {};
    int counts[3] = {};
    double axes[3][3] = {};
    int atomNumber = 0;
    double atomCharge = 0, atomPos[3] = {};
    std::vector<double> values;  // x outermost, z innermost
    size_t longestLine = 0;      // most values on one data line
    size_t dataLines = 0;
};

Cube ReadCube(const std::filesystem::path& path) {
    Cube c;
    std::istringstream in(ReadFile(path));
    std::getline(in, c.title);
    std::getline(in, c.comment);
    std::string line;
    std::getline(in, line);
    std::istringstream(line) >> c.atoms >> c.origin[0] >> c.origin[1] >> c.origin[2];
    for (int a = 0; a < 3; ++a) {
        std::getline(in, line);
        std::istringstream(line) >> c.counts[a] >> c.axes[a][0] >> c.axes[a][1] >> c.axes[a][2];
    }
    std::getline(in, line);
    std::istringstream(line) >> c.atomNumber >> c.atomCharge >> c.atomPos[0] >> c.atomPos[1] >>
        c.atomPos[2];
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        size_t onLine = 0;
        for (double v; fields >> v; ++onLine) c.values.push_back(v);
        c.longestLine = std::max(c.longestLine, onLine);
        ++c.dataLines;
    }
    return c;
}

/// Closed forms of normalised hydrogen densities (atomic units).
double Density1s(double x, double y, double z) {
    return std::exp(-2 * std::sqrt(x * x + y * y + z * z)) / kPi;
}
double Density2pz(double x, double y, double z) {
    // psi = z e^(-r/2) / (4 sqrt(2 pi)), squared.
    return z * z * std::exp(-std::sqrt(x * x + y * y + z * z)) / (32 * kPi);
}

}  // namespace

TEST(VeltaraExport, CubeMatchesClosedFormDensities) {
    struct Case {
        std::string args;
        int radius, stride;
        double (*density)(double, double, double);
        bool radialWeight;  // the radial view of a single orbital: times rho r
    };
    const Case cases[] = {
        {"1S", 2, 8, Density1s, false},
        {"1S --radius 5", 5, 16, Density1s, false},
        {"2Pz --view drpdf --radius 10", 10, 16, Density2pz, true},
    };
    for (const Case& c : cases) {
        const auto file = ScratchDir() / "density.cube";
        const auto o = RunVeltara("export " + c.args + " --stride " + std::to_string(c.stride) +
                                  " --cube " + file.string());
        ASSERT_EQ(o.exitCode, 0) << c.args << ": " << o.err;
        const Cube cube = ReadCube(file);

        // Geometry: 2 * (127 / stride) + 1 points per axis, step stride * radius / 127 Bohr,
        // symmetric about the nucleus, one hydrogen atom at the centre.
        const int half = 127 / c.stride;
        const int n = 2 * half + 1;
        const double step = c.stride * (c.radius / 127.0);
        EXPECT_EQ(cube.atoms, 1) << c.args;
        for (int a = 0; a < 3; ++a) {
            EXPECT_NEAR(cube.origin[a], -half * step, 1e-6) << c.args;
            EXPECT_EQ(cube.counts[a], n) << c.args;
            for (int b = 0; b < 3; ++b) {
                EXPECT_NEAR(cube.axes[a][b], a == b ? step : 0.0, 1e-6) << c.args;
            }
            EXPECT_EQ(cube.atomPos[a], 0.0);
        }
        EXPECT_EQ(cube.atomNumber, 1);
        ASSERT_EQ(cube.values.size(), static_cast<size_t>(n) * n * n) << c.args;
        // Six values a line, each z run starting on a fresh line.
        EXPECT_EQ(cube.longestLine, 6u);
        EXPECT_EQ(cube.dataLines, static_cast<size_t>(n) * n * ((n + 5) / 6));

        // Every value against the closed form, to the file's six significant digits.
        size_t k = 0, mismatches = 0;
        for (int ix = -half; ix <= half; ++ix) {
            for (int iy = -half; iy <= half; ++iy) {
                for (int iz = -half; iz <= half; ++iz, ++k) {
                    const double x = ix * step, y = iy * step, z = iz * step;
                    double expected = c.density(x, y, z);
                    if (c.radialWeight) {
                        expected *= std::sqrt(x * x + y * y) * std::sqrt(x * x + y * y + z * z);
                    }
                    if (std::abs(cube.values[k] - expected) > 1e-5 * expected + 1e-300) {
                        if (++mismatches <= 3) {
                            ADD_FAILURE() << c.args << " at (" << x << ", " << y << ", " << z
                                          << "): " << cube.values[k] << " vs " << expected;
                        }
                    }
                }
            }
        }
        EXPECT_EQ(mismatches, 0u) << c.args;
    }
}

TEST(VeltaraExport, PlyHoldsTheDotCloudInBohrWithLevelColours) {
    const auto file = ScratchDir() / "dots.ply";
    const std::string setup = "2Px --dots 3000" + kClock;
    const auto o = RunVeltara("export " + setup + " --ply " + file.string());
    ASSERT_EQ(o.exitCode, 0) << o.err;
    const auto stats = RunVeltara("stats " + setup + " --json");
    ASSERT_EQ(stats.exitCode, 0) << stats.err;
    const int dotTotal = nlohmann::json::parse(stats.out)["DotTotal"];

    const auto lines = Lines(ReadFile(file));
    ASSERT_GT(lines.size(), 10u);
    EXPECT_EQ(lines[0], "ply");
    EXPECT_EQ(lines[1], "format ascii 1.0");
    size_t header = 0;
    int vertices = -1;
    for (; header < lines.size() && lines[header] != "end_header"; ++header) {
        if (lines[header].rfind("element vertex ", 0) == 0) {
            vertices = std::stoi(lines[header].substr(15));
        }
    }
    // The same clock gives the same seed, so the same cloud as the statistics counted.
    EXPECT_EQ(vertices, dotTotal);
    ASSERT_EQ(lines.size() - header - 1, static_cast<size_t>(vertices));

    // 2Px: radius 8 Bohr, dots at grid points k * 8 / 127; none on its nodal plane x = 0; the
    // colour of level P is red 255 - P, green P, and P is at least the threshold 50.
    const double grid = 8.0 / 127.0;
    size_t bad = 0;
    for (size_t i = header + 1; i < lines.size(); ++i) {
        std::istringstream fields(lines[i]);
        double x, y, z;
        int r, g, b;
        fields >> x >> y >> z >> r >> g >> b;
        const bool onGrid = std::abs(x / grid - std::round(x / grid)) < 1e-3 &&
                            std::abs(z / grid - std::round(z / grid)) < 1e-3;
        const bool ok = onGrid && std::abs(x) <= 8 + 1e-4 && std::abs(y) <= 8 + 1e-4 &&
                        std::abs(z) <= 8 + 1e-4 && x != 0 && r + g == 255 && b == 0 && g >= 50;
        if (!ok && ++bad <= 3) ADD_FAILURE() << "dot line: " << lines[i];
    }
    EXPECT_EQ(bad, 0u);
}
