// The probability grid of real orbitals, every symmetry class in both views: the byte image of
// the density point by point, and the histogram's weights.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "picture_test_support.h"

namespace {

using namespace veltara;

TEST(CalcProbabilities, GridIsTheDensityByteImageAndTheHistogramItsWeights) {
    vt_test::FixedClock clock(100000);
    // Histogram totals by symmetry class, by hand: the origin 1, the half-axes 2 x 3 x 127,
    // the quarter-planes 4 x 3 x 127^2, and the open octant's evaluations times their weight:
    // F8 127^3 x 8; F16 (127^3 + 127^2) / 2 x 16 (the diagonal counted twice); F32
    // sum over A of A^2 = 127 x 128 x 255 / 6 = 690880, x 32.
    const int64_t planes = 1 + 6 * 127 + 12 * 127 * 127;
    const int64_t f8 = planes + 8LL * 127 * 127 * 127;
    const int64_t f16 = planes + 8LL * (127 * 127 * 127 + 127 * 127);
    const int64_t f32 = planes + 32LL * 690880;
    struct Case {
        int16_t orbital;
        ViewMode view;
        int64_t total;
    };
    const Case cases[] = {{10, ViewMode::PDF, f8},    {24, ViewMode::DRPDF, f8},
                          {9, ViewMode::PDF, f16},    {17, ViewMode::DRPDF, f16},
                          {13, ViewMode::PDF, f16},   {21, ViewMode::PDF, f16},
                          {3, ViewMode::PDF, f16},    {27, ViewMode::PDF, f32},
                          {34, ViewMode::DRPDF, f32}, {5, ViewMode::PDF, f32}};
    cOrbitalCol col;
    for (const Case& c : cases) {
        const int16_t i = col.Add(vt_test::Defaults(c.orbital, c.view, 100));
        const OrbitalStats stats = col.GetStats(i);
        EXPECT_EQ(
            std::accumulate(std::begin(stats.ProbFreqs), std::end(stats.ProbFreqs), int64_t{0}),
            c.total)
            << c.orbital;
        // Every third point of each axis: ordered by the electron's own density, the bytes
        // never fall (by more than a rounding step, the two evaluations being independent).
        const auto grid = col.Orbital(i).ProbMatrix();
        const auto electron = modOrbitals::CreateElectron(c.orbital);
        const double step = col.Orbital(i).SetupRecord().AtomRadius / 127.0;
        std::vector<std::pair<double, uint8_t>> points;
        for (int z = 0; z < 128; z += 3) {
            for (int y = 0; y < 128; y += 3) {
                for (int x = 0; x < 128; x += 3) {
                    const COORDdoubleParams p{x * step * x * step, y * step * y * step,
                                              z * step * z * step};
                    const double f = c.view == ViewMode::PDF ? electron->GetNonScaledPDF(p)
                                                             : electron->GetNonScaledDRPDF(p);
                    points.emplace_back(f, grid[(static_cast<size_t>(z) * 128 + y) * 128 + x]);
                }
            }
        }
        std::sort(points.begin(), points.end());
        int highest = 0, falls = 0;
        for (const auto& [f, byte] : points) {
            falls += byte + 1 < highest;
            highest = std::max<int>(highest, byte);
        }
        EXPECT_EQ(falls, 0) << c.orbital;
        EXPECT_GE(highest, 200) << c.orbital;
    }
}

}  // namespace
