// modMaths: parity, the central projection onto a plane, and the two-angle rotation.
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

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

TEST(modMaths, IsEvenFollowsTheRemainderSign) {
    const struct {
        int32_t value;
        VbBool even;
    } cases[] = {
        {0, -1},          {-2, -1},         {-1, 0},
        {1, 0},           {2, -1},          {2147483647, 0},
        {2147483646, -1}, {-2147483647, 0}, {-2147483647 - 1, -1},
    };
    for (const auto& c : cases) EXPECT_EQ(IsEven(c.value), c.even) << c.value;
}

bool SameCoord(const COORDlong& a, const COORDlong& b) {
    return a.X == b.X && a.Y == b.Y && a.Z == b.Z;
}

// Results worked out by hand: T = (PlaneY - Camera.Y) / (Point.Y - Camera.Y), then
// X = (Point.X - Camera.X) T + Camera.X, Z likewise, Y = Point.Y, each rounded half to even.
TEST(modMaths, ProjectOntoPlaneProjectsThroughTheCamera) {
    const struct {
        const char* what;
        COORDlong camera;
        COORDdouble point;
        int16_t planeY;
        COORDlong expected;
    } cases[] = {
        {"T = 10 / 5 = 2", {0, 0, 0}, {1, 5, 2}, 10, {2, 5, 4}},
        {"camera off the origin, T = 2", {1, 0, 1}, {2.25, 2, 1.75}, 4, {4, 2, 2}},  // 3.5, 2.5
        {"depth -0.5 projects, T = 1 / -0.5 = -2", {0, 0, 0}, {1, -0.5, 3}, 1, {-2, 0, -6}},
        {"depth exactly 1 projects, T = 7", {0, 3, 0}, {-1, 4, 2}, 10, {-7, 4, 14}},
        {"point on the plane, T = 1", {4, -20, -6}, {2.4, 30, -7.6}, 30, {2, 30, -8}},
        {"halves to even with T = 1", {0, 0, 0}, {2.5, 1, 3.5}, 1, {2, 1, 4}},
        {"negative halves to even", {0, 0, 0}, {-2.5, 1, -3.5}, 1, {-2, 1, -4}},
        {"depth 2.5 rounds to 2", {0, 0, 0}, {0, 2.5, 0}, 5, {0, 2, 0}},
        {"depth 3.5 rounds to 4", {0, 0, 0}, {0, 3.5, 0}, 7, {0, 4, 0}},
    };
    for (const auto& c : cases) {
        COORDlong result{99, 99, 99};
        ProjectOntoPlane(c.camera, c.point, result, c.planeY);
        EXPECT_TRUE(SameCoord(result, c.expected))
            << c.what << ": got " << result.X << ", " << result.Y << ", " << result.Z;
    }
}

TEST(modMaths, ProjectOntoPlaneLeavesResultForDepthInZeroToOne) {
    const double depths[] = {0.0, -0.0, 0.5, 0.999999};
    const COORDlong camera{3, -4, 5};
    for (const double depth : depths) {
        COORDlong result{11, 22, 33};
        ProjectOntoPlane(camera, {7, camera.Y + depth, 8}, result, 20);
        EXPECT_TRUE(SameCoord(result, {11, 22, 33})) << depth;
    }
    // Just below zero the point is projected: T = 24 / -0.5 = -48, X = 4 * -48 + 3.
    COORDlong result{11, 22, 33};
    ProjectOntoPlane(camera, {7, camera.Y - 0.5, 8}, result, 20);
    EXPECT_EQ(result.X, -189);
}

TEST(modMaths, ProjectOntoPlaneUsesSinglePrecisionT) {
    // T = 1 / 3. In single precision that is 11184811 / 2^25 = 0.33333334326744..., about
    // 9.934e-9 above a third. X = 3000001.47 T is then 1000000.49 + 0.0298 = 1000000.5198,
    // which rounds to 1000001; with a double T it would be 1000000.49 and round to 1000000.
    COORDlong result{};
    ProjectOntoPlane({0, 0, 0}, {3000001.47, 3, -3000001.47}, result, 1);
    EXPECT_EQ(result.X, 1000001);
    EXPECT_EQ(result.Z, -1000001);
    EXPECT_EQ(result.Y, 3);
}

TEST(modMaths, ProjectOntoPlaneFaultsRaiseAndKeepEarlierFields) {
    const struct {
        const char* what;
        COORDlong camera;
        COORDdouble point;
        int16_t planeY;
        int32_t error;
        COORDlong after;  // fields written before the fault, the rest still 77
    } cases[] = {
        {"PlaneY - Camera.Y overflows", {0, -2147483647 - 1, 0}, {1, 0, 1}, 1, 6, {77, 77, 77}},
        {"X beyond 32 bits", {0, 0, 0}, {3e9, 1, 1}, 1, 6, {77, 77, 77}},
        {"Z beyond 32 bits after X", {0, 0, 0}, {5, 1, -3e9}, 1, 6, {5, 77, 77}},
        {"Y beyond 32 bits after X and Z", {0, 0, 0}, {0, 3e9, 0}, 1, 6, {0, 77, 0}},
        {"NaN point", {0, 0, 0}, {kNaN, 2, 0}, 1, 5, {77, 77, 77}},
        {"NaN depth", {0, 0, 0}, {0, kNaN, 0}, 1, 5, {77, 77, 77}},
        {"infinite point", {0, 0, 0}, {kInf, 2, 0}, 1, 6, {77, 77, 77}},
        // 1000 / -1e-300 = -1e303 fits a double but not a float.
        {"T beyond single precision", {0, 0, 0}, {1, -1e-300, 1}, 1000, 6, {77, 77, 77}},
    };
    for (const auto& c : cases) {
        COORDlong result{77, 77, 77};
        EXPECT_VT_ERROR(ProjectOntoPlane(c.camera, c.point, result, c.planeY), c.error);
        EXPECT_TRUE(SameCoord(result, c.after)) << c.what;
    }
}

using Matrix = std::array<std::array<double, 3>, 3>;

Matrix Multiply(const Matrix& a, const Matrix& b) {
    Matrix m{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 3; ++k) m[i][j] += a[i][k] * b[k][j];
    return m;
}

// Right-handed rotations by theta about X and about Z.
Matrix RotX(double t) {
    return {{{1, 0, 0}, {0, std::cos(t), -std::sin(t)}, {0, std::sin(t), std::cos(t)}}};
}
Matrix RotZ(double t) {
    return {{{std::cos(t), -std::sin(t), 0}, {std::sin(t), std::cos(t), 0}, {0, 0, 1}}};
}

TEST(modMaths, RotateCoordMatchesComposedRotationMatrices) {
    // A turn by B about Z, then the X step Y' = Y cos A + Z sin A, Z' = -Y sin A + Z cos A,
    // which is the right-handed turn by -A about X.
    const struct {
        double a, b;
        COORDdouble p;
    } cases[] = {
        {0.3, 1.1, {1, 2, 3}},      {-2.0, 0.7, {-4.5, 0.25, 9}},   {5.0, -3.3, {100, -50, 7}},
        {kPi / 3, 13.0, {0, 0, 1}}, {1e-3, 2e-3, {1e6, 1e6, -1e6}},
    };
    for (const auto& c : cases) {
        const Matrix m = Multiply(RotX(-c.a), RotZ(c.b));
        const double v[3] = {c.p.X, c.p.Y, c.p.Z};
        double want[3];
        for (int i = 0; i < 3; ++i) want[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
        const double tol = 1e-13 * (std::abs(v[0]) + std::abs(v[1]) + std::abs(v[2]));
        const COORDdouble got = RotateCoord(c.p, c.a, c.b);
        EXPECT_NEAR(got.X, want[0], tol) << c.a << " " << c.b;
        EXPECT_NEAR(got.Y, want[1], tol) << c.a << " " << c.b;
        EXPECT_NEAR(got.Z, want[2], tol) << c.a << " " << c.b;
    }
}

TEST(modMaths, RotateCoordSpecialAngles) {
    const struct {
        const char* what;
        double a, b;
        COORDdouble p, expected;
    } cases[] = {
        {"zero angles keep the point", 0, 0, {1.5, -2.25, 1e10}, {1.5, -2.25, 1e10}},
        {"quarter turn about Z", 0, kPi / 2, {1, 0, 0}, {0, 1, 0}},
        {"then a quarter turn about X: (0, 1, 0) goes to (0, 0, -1)",
         kPi / 2,
         kPi / 2,
         {1, 0, 0},
         {0, 0, -1}},
        {"half turn about X only", kPi, 0, {1, 2, 3}, {1, -2, -3}},
    };
    for (const auto& c : cases) {
        const COORDdouble got = RotateCoord(c.p, c.a, c.b);
        EXPECT_NEAR(got.X, c.expected.X, 1e-15 * std::abs(c.p.Z) + 1e-15) << c.what;
        EXPECT_NEAR(got.Y, c.expected.Y, 1e-15 * std::abs(c.p.Z) + 1e-15) << c.what;
        EXPECT_NEAR(got.Z, c.expected.Z, 1e-15) << c.what;
    }
    // With both angles 0 every term is an exact product by 1 or 0.
    const COORDdouble p{0.1, -7.3, 123456.789};
    const COORDdouble same = RotateCoord(p, 0.0, 0.0);
    EXPECT_EQ(same.X, p.X);
    EXPECT_EQ(same.Y, p.Y);
    EXPECT_EQ(same.Z, p.Z);
}

TEST(modMaths, RotateCoordFaultsRaise) {
    // cos and sin of an infinite angle are invalid.
    EXPECT_VT_ERROR(RotateCoord({1, 0, 0}, kInf, 0.0), 5);
    EXPECT_VT_ERROR(RotateCoord({1, 0, 0}, 0.0, kNaN), 5);
    EXPECT_VT_ERROR(RotateCoord({kNaN, 0, 0}, 0.1, 0.2), 5);
    // An eighth of a turn about Z: X' = 1.7e308 cos 45 + 1.7e308 sin 45, about 2.4e308, is
    // infinite.
    EXPECT_VT_ERROR(RotateCoord({1.7e308, -1.7e308, 0}, 0.0, kPi / 4), 6);
}

}  // namespace
