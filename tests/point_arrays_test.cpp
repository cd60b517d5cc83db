// Points handed to the C interface as three arrays: every layout (columns, a stride, a reversed
// array, a broadcast value) and every sharing among threads gives the electrons' per-point
// doubles, and a failing point gives the error a single pass from the start would give.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "electron/catalogue.h"
#include "electron/modOrbitals.h"
#include "electron/wavefunction.h"
#include "host/veltara.h"

namespace {

using namespace veltara;

constexpr size_t kCount = 40001;  // odd, and long enough to be shared among threads

/// x as a column, y every other double of a longer array, z read backwards.
struct Points {
    std::vector<double> x, y, z;
    vt_points View() const { return {x.data(), y.data(), &z.back(), 1, 2, -1}; }
    /// Three plain columns (y read whole, its odd places 0): the wide kernels' own layout.
    vt_points Columns() const { return {x.data(), z.data(), y.data(), 1, 1, 1}; }
};

/// Coordinate i of a layout, read through its pointer and stride.
double At(const double* p, ptrdiff_t stride, size_t i) {
    return p[static_cast<ptrdiff_t>(i) * stride];
}

Points RandomPoints() {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> u(-30.0, 30.0);
    Points p{std::vector<double>(kCount), std::vector<double>(2 * kCount),
             std::vector<double>(kCount)};
    for (size_t i = 0; i < kCount; ++i)
        p.x[i] = u(random), p.y[2 * i] = u(random), p.z[i] = u(random);
    // The nucleus and points on the axes and planes, where factors vanish.
    p.x[0] = p.y[0] = p.z[kCount - 1] = 0.0;
    p.x[1] = p.y[2] = 0.0;
    return p;
}

const Points kPoints = RandomPoints();

TEST(PointArrays, EveryLayoutAndSharingGivesThePerPointDoubles) {
    const double broadcast = 1.5;
    const vt_points wide = kPoints.View();
    const vt_points flat{wide.x, wide.y, &broadcast, 1, 2, 0};
    std::vector<double> expected(kCount), got(kCount);
    for (int16_t orbital = 0; orbital < kCatalogueSize; ++orbital) {
        const auto electron = modOrbitals::CreateElectron(orbital);
        for (const vt_points& points : {wide, flat, kPoints.Columns()}) {
            const auto X = [&](size_t i) { return At(points.x, points.x_stride, i); };
            const auto Y = [&](size_t i) { return At(points.y, points.y_stride, i); };
            const auto Z = [&](size_t i) { return At(points.z, points.z_stride, i); };
            for (int32_t view : {VT_PDF, VT_DRPDF}) {
                for (size_t i = 0; i < kCount; ++i) {
                    const COORDdoubleParams c{X(i) * X(i), Y(i) * Y(i), Z(i) * Z(i)};
                    expected[i] =
                        view == VT_PDF ? electron->GetRealPDF(c) : electron->GetRealDRPDF(c);
                }
                for (int32_t threads : {1, 2, 3}) {
                    ASSERT_EQ(
                        vt_real_density_at(orbital, view, &points, kCount, threads, got.data()), 0);
                    EXPECT_EQ(std::memcmp(got.data(), expected.data(), kCount * sizeof(double)), 0)
                        << "orbital " << orbital << " view " << view << " threads " << threads;
                }
            }
            if (orbital >= kCatalogueSingleCount) continue;
            for (size_t i = 0; i < kCount; ++i)
                expected[i] = Wavefunction(orbital, X(i), Y(i), Z(i));
            for (int32_t threads : {1, 2}) {
                ASSERT_EQ(vt_wavefunction_at(orbital, &points, kCount, threads, got.data()), 0);
                EXPECT_EQ(std::memcmp(got.data(), expected.data(), kCount * sizeof(double)), 0)
                    << "psi of orbital " << orbital << " threads " << threads;
            }
        }
    }
}

TEST(PointArrays, AFailingPointGivesTheErrorOfASinglePass) {
    // A NaN coordinate raises 5; one whose square overflows raises 6. Placed in the first and
    // the last thread's part, in either order: the earlier point's error, after the values
    // before it.
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        double early, late;
        int32_t error;
    };
    const size_t early = 1001, late = kCount - 7;
    const auto electron = modOrbitals::CreateElectron(9);
    for (const Case& c : {Case{kNaN, 1e200, 5}, Case{1e200, kNaN, 6}}) {
        Points p = kPoints;
        p.x[early] = c.early;
        p.x[late] = c.late;
        for (const vt_points& points : {p.View(), p.Columns()}) {
            const auto X = [&](size_t i) { return At(points.x, points.x_stride, i); };
            const auto Y = [&](size_t i) { return At(points.y, points.y_stride, i); };
            const auto Z = [&](size_t i) { return At(points.z, points.z_stride, i); };
            for (int32_t threads : {1, 2}) {
                std::vector<double> density(kCount, -1.0), psi(kCount, -1.0);
                EXPECT_EQ(vt_real_density_at(9, VT_PDF, &points, kCount, threads, density.data()),
                          c.error);
                EXPECT_EQ(vt_wavefunction_at(9, &points, kCount, threads, psi.data()), c.error);
                for (size_t i = 0; i < early; ++i) {
                    ASSERT_EQ(psi[i], Wavefunction(9, X(i), Y(i), Z(i))) << i;
                    ASSERT_EQ(density[i],
                              electron->GetRealPDF({X(i) * X(i), Y(i) * Y(i), Z(i) * Z(i)}))
                        << i;
                }
                // Nothing after the failing point is written (one thread: the later part is
                // nobody else's).
                if (threads == 1) {
                    EXPECT_EQ(density[early + 1], -1.0);
                }
            }
        }
    }
}

TEST(PointArrays, RefusedArguments) {
    const vt_points points = kPoints.View(), none{nullptr, nullptr, nullptr, 0, 0, 0};
    double out = 0;
    EXPECT_EQ(vt_real_density_at(9, VT_PDF, nullptr, 1, 1, &out), VT_ERR_ARGUMENT);
    EXPECT_EQ(vt_real_density_at(9, VT_PDF, &none, 1, 1, &out), VT_ERR_ARGUMENT);
    EXPECT_EQ(vt_real_density_at(9, VT_PDF, &none, 0, 1, nullptr), VT_OK);
    EXPECT_EQ(vt_real_density_at(9, 2, &points, 1, 1, &out), VT_ERR_ARGUMENT);
    EXPECT_EQ(vt_real_density_at(40, VT_PDF, &points, 1, 1, &out), VT_ERR_OBJECT_NOT_SET);
    EXPECT_EQ(vt_wavefunction_at(30, &points, 1, 1, &out), VT_ERR_ARGUMENT);
    EXPECT_EQ(vt_wavefunction_at(40, &points, 0, 1, &out), VT_ERR_SUBSCRIPT);
    EXPECT_EQ(vt_wavefunction_at(9, &points, 1, 1, nullptr), VT_ERR_ARGUMENT);
}

}  // namespace
