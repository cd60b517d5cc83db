// modMaths: parity, the central projection onto a plane, and the two-angle rotation.
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <tuple>

#include "support/modMaths.h"
#include "test_support.h"

namespace {

using namespace veltara;
using modMaths::IsEven;
using modMaths::ProjectOntoPlane;
using modMaths::RotateCoord;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kPi = std::numbers::pi;

TEST(modMaths, EdgeCasesAndErrors) {
    vt_test::CheckEdges({
        VT_GIVES(-1, IsEven(0)),
        VT_GIVES(-1, IsEven(-2)),
        VT_GIVES(0, IsEven(-1)),
        VT_GIVES(0, IsEven(2147483647)),
        VT_GIVES(-1, IsEven(-2147483647 - 1)),
        VT_GIVES(1e10, RotateCoord({1.5, -2.25, 1e10}, 0.0, 0.0).Z),  // every factor 1 or 0
        VT_GIVES(-2.25, RotateCoord({1.5, -2.25, 1e10}, 0.0, 0.0).Y),
        VT_RAISES(5, RotateCoord({1, 0, 0}, kInf, 0.0)),  // cos and sin of infinity
        VT_RAISES(5, RotateCoord({1, 0, 0}, 0.0, kNaN)),
        VT_RAISES(5, RotateCoord({kNaN, 0, 0}, 0.1, 0.2)),
        // An eighth of a turn: X' = 1.7e308 (cos 45 + sin 45) is about 2.4e308.
        VT_RAISES(6, RotateCoord({1.7e308, -1.7e308, 0}, 0.0, kPi / 4)),
    });
}

// T = (PlaneY - Camera.Y) / (Point.Y - Camera.Y) in single precision, then
// X = (Point.X - Camera.X) T + Camera.X, Z likewise, Y = Point.Y, each rounded half to even,
// written X, Z, Y. Results worked by hand; 77 marks a field left as it was.
TEST(modMaths, ProjectOntoPlaneWorkedByHand) {
    const struct {
        COORDlong camera;
        COORDdouble point;
        int16_t planeY;
        COORDlong result;
        int32_t error;
    } cases[] = {
        {{0, 0, 0}, {1, 5, 2}, 10, {2, 5, 4}, 0},              // T = 2
        {{1, 0, 1}, {2.25, 2, 1.75}, 4, {4, 2, 2}, 0},         // 3.5 and 2.5 to even
        {{0, 0, 0}, {1, -0.5, 3}, 1, {-2, 0, -6}, 0},          // depth -0.5: T = -2
        {{0, 3, 0}, {-1, 4, 2}, 10, {-7, 4, 14}, 0},           // depth exactly 1: T = 7
        {{4, -20, -6}, {2.4, 30, -7.6}, 30, {2, 30, -8}, 0},   // on the plane: T = 1
        {{3, -4, 5}, {7, -3.000001, 8}, 20, {77, 77, 77}, 0},  // depth below 1: untouched
        {{0, 0, 0},
         {3000001.47, 3, -3000001.47},
         1,
         {1000001, 3, -1000001},
         0},                                                       // T = 1/3 as a float
        {{0, -2147483647 - 1, 0}, {1, 0, 1}, 1, {77, 77, 77}, 6},  // PlaneY - Camera.Y
        {{0, 0, 0}, {5, 1, -3e9}, 1, {5, 77, 77}, 6},              // X written before Z fails
        {{0, 0, 0}, {0, 3e9, 0}, 1, {0, 77, 0}, 6},
        {{0, 0, 0}, {kNaN, 2, 0}, 1, {77, 77, 77}, 5},
        {{0, 0, 0}, {1, -1e-300, 1}, 1000, {77, 77, 77}, 6},  // T fits a double, not a float
    };
    for (const auto& c : cases) {
        COORDlong r{77, 77, 77};
        if (c.error != 0) {
            EXPECT_VT_ERROR(ProjectOntoPlane(c.camera, c.point, r, c.planeY), c.error);
        } else {
            ProjectOntoPlane(c.camera, c.point, r, c.planeY);
        }
        EXPECT_EQ(std::tie(r.X, r.Y, r.Z), std::tie(c.result.X, c.result.Y, c.result.Z))
            << c.point.X << ", " << c.point.Y << ", " << c.point.Z;
    }
}

TEST(modMaths, RotateCoordTurnsAboutZThenAboutX) {
    // About Z by B: x' = x cos B - y sin B, y1 = x sin B + y cos B; then about X by A:
    // y' = y1 cos A + z sin A, z' = -y1 sin A + z cos A.
    const struct {
        double a, b;
        COORDdouble p;
    } cases[] = {{0.3, 1.1, {1, 2, 3}}, {-2.0, 0.7, {-4.5, 0.25, 9}}, {5.0, -3.3, {100, -50, 7}}};
    for (const auto& [a, b, p] : cases) {
        const double y1 = p.X * std::sin(b) + p.Y * std::cos(b);
        const COORDdouble got = RotateCoord(p, a, b);
        EXPECT_NEAR(got.X, p.X * std::cos(b) - p.Y * std::sin(b), 1e-12) << a << " " << b;
        EXPECT_NEAR(got.Y, y1 * std::cos(a) + p.Z * std::sin(a), 1e-12) << a << " " << b;
        EXPECT_NEAR(got.Z, -y1 * std::sin(a) + p.Z * std::cos(a), 1e-12) << a << " " << b;
    }
}

}  // namespace
