// The orbital densities: normalisation by quadrature, shapes against hydrogen wavefunctions
// built from the standard library's special functions, nodes, averaging, byte quantisation
// and the errors of the density operations.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <vector>

#include "electron/modOrbitals.h"
#include "test_support.h"

namespace {

using veltara::cElectron;
using veltara::COORDdoubleParams;
using veltara::modOrbitals::CreateElectron;

std::unique_ptr<cElectron> Make(int index) {
    auto e = CreateElectron(static_cast<int16_t>(index));
    EXPECT_NE(e, nullptr);
    return e;
}

COORDdoubleParams Squares(double x, double y, double z) { return {x * x, y * y, z * z}; }

// ---- quadrature --------------------------------------------------------------------------

struct Node {
    double x, w;
};

/// Gauss-Legendre nodes and weights on [-1, 1] by Newton's method on the three-term recurrence.
std::vector<Node> GaussLegendre(int n) {
    std::vector<Node> nodes;
    for (int i = 1; i <= n; ++i) {
        double x = std::cos(std::numbers::pi * (i - 0.25) / (n + 0.5));
        double dp = 0;
        for (int iter = 0; iter < 100; ++iter) {
            double p0 = 1, p1 = x;
            for (int k = 2; k <= n; ++k) {
                const double p2 = ((2 * k - 1) * x * p1 - (k - 1) * p0) / k;
                p0 = p1;
                p1 = p2;
            }
            dp = n * (x * p1 - p0) / (x * x - 1);
            const double dx = p1 / dp;
            x -= dx;
            if (std::fabs(dx) < 1e-16) break;
        }
        nodes.push_back({x, 2 / ((1 - x * x) * dp * dp)});
    }
    return nodes;
}

/// N x (integral of f over all space) from GetRealPDF: Gauss-Legendre in cos(theta) and a
/// uniform rule in phi (both exact for the angular polynomials of l <= 3), composite
/// Gauss-Legendre in r on [0, 160].
double TotalProbability(cElectron& e) {
    const std::vector<Node> cosTheta = GaussLegendre(10);
    const std::vector<Node> panel = GaussLegendre(12);
    constexpr int kPhi = 16;
    constexpr double kPanelWidth = 2.0;
    constexpr int kPanels = 80;
    double total = 0;
    for (int p = 0; p < kPanels; ++p) {
        for (const Node& rn : panel) {
            const double r = kPanelWidth * (p + 0.5 * (rn.x + 1));
            const double rw = 0.5 * kPanelWidth * rn.w * r * r;
            for (const Node& tn : cosTheta) {
                const double sinTheta = std::sqrt(1 - tn.x * tn.x);
                for (int k = 0; k < kPhi; ++k) {
                    const double phi = 2 * std::numbers::pi * k / kPhi;
                    const double x = r * sinTheta * std::cos(phi);
                    const double y = r * sinTheta * std::sin(phi);
                    const double z = r * tn.x;
                    total +=
                        rw * tn.w * (2 * std::numbers::pi / kPhi) * e.GetRealPDF(Squares(x, y, z));
                }
            }
        }
    }
    return total;
}

TEST(OrbitalDensity, RealDensityOfEveryOrbitalIntegratesToOne) {
    for (int i = 0; i < 40; ++i) {
        auto e = Make(i);
        EXPECT_NEAR(TotalProbability(*e), 1.0, 1e-6) << "orbital " << i;
    }
}

// ---- shapes against the hydrogen wavefunctions --------------------------------------------

struct Quantum {
    int index, n, l, m;  // m in the real-orbital convention: > 0 cos(m phi), < 0 sin(|m| phi)
};

const Quantum kSingles[30] = {
    {0, 1, 0, 0},  {1, 2, 0, 0},   {2, 2, 1, 1},   {3, 2, 1, -1},  {4, 2, 1, 0},   {5, 3, 0, 0},
    {6, 3, 1, 1},  {7, 3, 1, -1},  {8, 3, 1, 0},   {9, 3, 2, 0},   {10, 3, 2, 2},  {11, 3, 2, -2},
    {12, 3, 2, 1}, {13, 3, 2, -1}, {14, 4, 0, 0},  {15, 4, 1, 1},  {16, 4, 1, -1}, {17, 4, 1, 0},
    {18, 4, 2, 0}, {19, 4, 2, 2},  {20, 4, 2, -2}, {21, 4, 2, 1},  {22, 4, 2, -1}, {23, 4, 3, 0},
    {24, 4, 3, 1}, {25, 4, 3, -1}, {26, 4, 3, 2},  {27, 4, 3, -2}, {28, 4, 3, 3},  {29, 4, 3, -3},
};

/// |psi|² of the real hydrogen orbital (n, l, m) at (x, y, z), up to a constant factor.
double HydrogenDensity(const Quantum& q, double x, double y, double z) {
    const double r = std::sqrt(x * x + y * y + z * z);
    const double rho = 2 * r / q.n;
    const double radial = std::exp(-r / q.n) * std::pow(rho, q.l) *
                          std::assoc_laguerre(q.n - q.l - 1, 2 * q.l + 1, rho);
    const int am = std::abs(q.m);
    const double phi = std::atan2(y, x);
    const double azimuthal = q.m > 0 ? std::cos(am * phi) : q.m < 0 ? std::sin(am * phi) : 1.0;
    const double angular = std::assoc_legendre(q.l, am, z / r) * azimuthal;
    const double psi = radial * angular;
    return psi * psi;
}

TEST(OrbitalDensity, SingleOrbitalsAreSquaredHydrogenWavefunctions) {
    std::mt19937_64 gen(20240611);
    for (const Quantum& q : kSingles) {
        auto e = Make(q.index);
        std::uniform_real_distribution<double> coord(-2.0 * q.n * q.n, 2.0 * q.n * q.n);
        // A reference point off every node of every orbital.
        const double rx = 0.37 * q.n, ry = -0.71 * q.n, rz = 0.53 * q.n;
        const double fRef = e->GetNonScaledPDF(Squares(rx, ry, rz));
        const double psiRef = HydrogenDensity(q, rx, ry, rz);
        for (int k = 0; k < 40; ++k) {
            const double x = coord(gen), y = coord(gen), z = coord(gen);
            const double expected = HydrogenDensity(q, x, y, z) / psiRef;
            const double actual = e->GetNonScaledPDF(Squares(x, y, z)) / fRef;
            EXPECT_NEAR(actual / expected, 1.0, 1e-10)
                << "orbital " << q.index << " at " << x << ", " << y << ", " << z;
        }
    }
}

TEST(OrbitalDensity, RadialDistributionWeights) {
    // Single orbitals weigh by (distance from the z axis) x (distance from the nucleus),
    // averaged shells by r².
    const double x = 1.3, y = -0.4, z = 2.2;
    const COORDdoubleParams p = Squares(x, y, z);
    const double rhoR = std::hypot(x, y) * std::sqrt(x * x + y * y + z * z);
    const double r2 = x * x + y * y + z * z;
    for (int i = 0; i < 40; ++i) {
        auto e = Make(i);
        const double w = i < 30 ? rhoR : r2;
        EXPECT_NEAR(e->GetNonScaledDRPDF(p) / e->GetNonScaledPDF(p) / w, 1.0, 1e-13) << i;
    }
}

TEST(OrbitalDensity, RealDensityOfFz_x2_y2_UsesTwoConstants) {
    // Intended: the real radial distribution of 4Fz(x²-y²) carries the 4Fz³ constant.
    auto e = Make(26);
    const COORDdoubleParams p = Squares(1.5, 0.5, 2.0);
    EXPECT_DOUBLE_EQ(e->GetRealDRPDF(p) / e->GetNonScaledDRPDF(p), 6.74586584692617e-9);
    EXPECT_DOUBLE_EQ(e->GetRealPDF(p) / e->GetNonScaledPDF(p), 1.01187987703893e-7);
}

// ---- averaged shells -----------------------------------------------------------------------

struct Subshell {
    int averaged;
    std::vector<int> members;
};

const Subshell kSubshells[] = {
    {30, {0}},
    {31, {1}},
    {32, {2, 3, 4}},
    {33, {5}},
    {34, {6, 7, 8}},
    {35, {9, 10, 11, 12, 13}},
    {36, {14}},
    {37, {15, 16, 17}},
    {38, {18, 19, 20, 21, 22}},
    {39, {23, 24, 25, 26, 27, 28, 29}},
};

TEST(OrbitalDensity, AveragedShellIsTheMeanOfItsSubshell) {
    std::mt19937_64 gen(7);
    std::uniform_real_distribution<double> coord(-9.0, 9.0);
    for (const Subshell& s : kSubshells) {
        auto avg = Make(s.averaged);
        std::vector<std::unique_ptr<cElectron>> members;
        for (int m : s.members) members.push_back(Make(m));
        for (int k = 0; k < 20; ++k) {
            const COORDdoubleParams p = Squares(coord(gen), coord(gen), coord(gen));
            double sum = 0;
            for (auto& m : members) sum += m->GetRealPDF(p);
            const double mean = sum / static_cast<double>(members.size());
            EXPECT_NEAR(avg->GetRealPDF(p) / mean, 1.0, 1e-12) << "shell " << s.averaged;
        }
    }
}

TEST(OrbitalDensity, AveragedShellsAreSphericallySymmetric) {
    // Squares summing exactly to 4 (and to 36): each operation gives one value per sphere.
    const COORDdoubleParams sphere4[] = {{4, 0, 0}, {0, 4, 0}, {0, 0, 4}, {1, 1, 2}, {2, 0, 2}};
    const COORDdoubleParams sphere36[] = {{36, 0, 0}, {0, 0, 36}, {4, 16, 16}, {16, 4, 16}};
    for (int i = 30; i < 40; ++i) {
        auto e = Make(i);
        for (const auto& sphere : {std::vector(std::begin(sphere4), std::end(sphere4)),
                                   std::vector(std::begin(sphere36), std::end(sphere36))}) {
            const COORDdoubleParams& a = sphere[0];
            // Scaled so that the sphere maps to about 200 (1 where the sphere is a node).
            const double f = e->GetNonScaledPDF(a), g = e->GetNonScaledDRPDF(a);
            e->SetPDFScaleFactor(f > 0 ? 200.3 / f : 1.0);
            e->SetDRPDFScaleFactor(g > 0 ? 200.3 / g : 1.0);
            for (const COORDdoubleParams& b : sphere) {
                EXPECT_EQ(e->GetNonScaledPDF(a), e->GetNonScaledPDF(b)) << i;
                EXPECT_EQ(e->GetRealPDF(a), e->GetRealPDF(b)) << i;
                EXPECT_EQ(e->GetPDF(a), e->GetPDF(b)) << i;
                EXPECT_EQ(e->GetNonScaledDRPDF(a), e->GetNonScaledDRPDF(b)) << i;
                EXPECT_EQ(e->GetRealDRPDF(a), e->GetRealDRPDF(b)) << i;
                EXPECT_EQ(e->GetDRPDF(a), e->GetDRPDF(b)) << i;
            }
        }
    }
}

// ---- exact values and nodes ---------------------------------------------------------------

struct NodeCase {
    int index;
    COORDdoubleParams squares;
    const char* why;
};

TEST(OrbitalDensity, NodesAreExactZeros) {
    const NodeCase cases[] = {
        {1, {4, 0, 0}, "2S at r = 2"},
        {1, {1, 1, 2}, "2S at r = 2"},
        {6, {4, 16, 16}, "3Px at r = 6"},
        {18, {16, 64, 64}, "4Dz2 at r = 12"},
        {19, {16, 64, 64}, "4Dx2-y2 at r = 12"},
        {20, {16, 64, 64}, "4Dxy at r = 12"},
        {21, {16, 64, 64}, "4Dxz at r = 12"},
        {22, {16, 64, 64}, "4Dyz at r = 12"},
        {9, {1, 1, 1}, "3Dz2 where rho2 = 2Z"},
        {9, {3, 5, 4}, "3Dz2 where rho2 = 2Z"},
        {18, {3, 5, 4}, "4Dz2 where rho2 = 2Z"},
        {24, {2, 2, 1}, "4Fxz2 where rho2 = 4Z"},
        {25, {2, 2, 1}, "4Fyz2 where rho2 = 4Z"},
        {23, {1, 2, 4.5}, "4Fz3 where 3 rho2 = 2Z"},
        {10, {2, 2, 5}, "3Dx2-y2 where X = Y"},
        {19, {2, 2, 5}, "4Dx2-y2 where X = Y"},
        {26, {2, 2, 5}, "4Fz(x2-y2) where X = Y"},
        {28, {3, 1, 5}, "4Fx(x2-3y2) where X = 3Y"},
        {29, {1, 3, 5}, "4Fy(3x2-y2) where Y = 3X"},
        {2, {0, 3, 5}, "2Px on X = 0"},
        {3, {3, 0, 5}, "2Py on Y = 0"},
        {4, {3, 5, 0}, "2Pz on Z = 0"},
        {27, {0, 3, 5}, "4Fxyz on X = 0"},
        {27, {3, 0, 5}, "4Fxyz on Y = 0"},
        {27, {3, 5, 0}, "4Fxyz on Z = 0"},
        {11, {0, 3, 5}, "3Dxy on X = 0"},
        {12, {3, 5, 0}, "3Dxz on Z = 0"},
        {38, {16, 64, 64}, "averaged 4D at r = 12"},
    };
    for (const NodeCase& c : cases) {
        auto e = Make(c.index);
        e->SetPDFScaleFactor(1e6);
        e->SetDRPDFScaleFactor(1e6);
        EXPECT_EQ(e->GetNonScaledPDF(c.squares), 0.0) << c.why;
        EXPECT_EQ(e->GetRealPDF(c.squares), 0.0) << c.why;
        EXPECT_EQ(e->GetPDF(c.squares), 0) << c.why;
        EXPECT_EQ(e->GetNonScaledDRPDF(c.squares), 0.0) << c.why;
        EXPECT_EQ(e->GetDRPDF(c.squares), 0) << c.why;
    }
}

TEST(OrbitalDensity, ValuesAtTheNucleusAndOnTheZAxis) {
    const COORDdoubleParams nucleus{0, 0, 0};
    EXPECT_NEAR(Make(0)->GetRealPDF(nucleus), 1 / std::numbers::pi, 1e-15);
    // 4S: the cubic r^3 - 24 r^2 + 144 r - 192 is -192 at r = 0.
    EXPECT_EQ(Make(14)->GetNonScaledPDF(nucleus), 192.0 * 192.0);
    EXPECT_EQ(Make(36)->GetNonScaledPDF(nucleus), 192.0 * 192.0);
    for (int i = 0; i < 40; ++i) {
        // Every radial weight vanishes at the nucleus, and so does every density with l >= 1.
        EXPECT_EQ(Make(i)->GetRealDRPDF(nucleus), 0.0) << i;
        const bool sShell =
            i == 0 || i == 1 || i == 5 || i == 14 || i == 30 || i == 31 || i == 33 || i == 36;
        if (!sShell) {
            EXPECT_EQ(Make(i)->GetNonScaledPDF(nucleus), 0.0) << i;
        }
    }
    // The r^2 weight of the averaged shells does not vanish on the z axis: 1S at z = 1 gives
    // e^-2 x 1; the rho r weight of the single orbitals does.
    EXPECT_DOUBLE_EQ(Make(30)->GetNonScaledDRPDF({0, 0, 1}), std::exp(-2.0));
    EXPECT_EQ(Make(0)->GetNonScaledDRPDF({0, 0, 1}), 0.0);
}

// ---- scaling and bytes ----------------------------------------------------------------------

TEST(OrbitalDensity, FreshObjectsGiveByteZeroEverywhere) {
    for (int i = 0; i < 40; ++i) {
        auto e = Make(i);
        EXPECT_EQ(e->GetPDF({1, 2, 3}), 0) << i;
        EXPECT_EQ(e->GetDRPDF({1, 2, 3}), 0) << i;
    }
}

TEST(OrbitalDensity, BytesRoundHalfToEvenWithoutClamping) {
    // 1S at the nucleus is exactly 1, so the byte is the scale factor rounded.
    struct Case {
        double scale;
        int byte;  // -1: error 6
    };
    const Case cases[] = {{0.5, 0},     {1.5, 2},     {2.5, 2},      {0.49, 0},   {254.5, 254},
                          {253.5, 254}, {255.0, 255}, {255.49, 255}, {255.5, -1}, {256.0, -1},
                          {-0.5, 0},    {-0.51, -1},  {-3.0, -1},    {1e300, -1}};
    const COORDdoubleParams nucleus{0, 0, 0};
    for (const Case& c : cases) {
        auto e = Make(0);
        e->SetPDFScaleFactor(c.scale);
        if (c.byte < 0) {
            EXPECT_VT_ERROR(e->GetPDF(nucleus), 6);
        } else {
            EXPECT_EQ(e->GetPDF(nucleus), c.byte) << c.scale;
        }
    }
}

TEST(OrbitalDensity, PointInsideTheScaledMaximumOverflows) {
    // Scaled so that r0 = 1 maps to 255; a point 0.001 nearer the nucleus gives
    // 255 e^0.002 = 255.51, which rounds to 256.
    auto e = Make(0);
    e->SetPDFScaleFactor(255.0 / std::exp(-2.0));
    EXPECT_EQ(e->GetPDF({1, 0, 0}), 255);
    EXPECT_VT_ERROR(e->GetPDF(Squares(0.999, 0, 0)), 6);
    EXPECT_EQ(e->GetPDF(Squares(0.9999, 0, 0)), 255);
}

// ---- faults -------------------------------------------------------------------------------

TEST(OrbitalDensity, NegativeSquaresWithANonNegativeSumAreAccepted) {
    auto e = Make(0);
    EXPECT_EQ(e->GetNonScaledPDF({-1, 2, 0}), std::exp(-2.0));
    EXPECT_EQ(e->GetNonScaledDRPDF({-1, 2, 0}), std::exp(-2.0));
    // rho² negative but r² not: the density is fine, only the rho x r weight fails.
    EXPECT_EQ(e->GetNonScaledPDF({-2, 1, 5}), std::exp(-4.0));
    EXPECT_VT_ERROR(e->GetNonScaledDRPDF({-2, 1, 5}), 5);
    EXPECT_EQ(Make(30)->GetNonScaledDRPDF({-2, 1, 5}), std::exp(-4.0) * 4.0);
}

TEST(OrbitalDensity, FaultsRaiseTheirErrors) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (int i = 0; i < 40; ++i) {
        auto e = Make(i);
        e->SetPDFScaleFactor(1.0);
        e->SetDRPDFScaleFactor(1.0);
        // A negative sum of squares under the square root.
        EXPECT_VT_ERROR(e->GetNonScaledPDF({-2, 1, 0}), 5);
        EXPECT_VT_ERROR(e->GetRealPDF({-2, 1, 0}), 5);
        EXPECT_VT_ERROR(e->GetPDF({0, 0, -1}), 5);
        EXPECT_VT_ERROR(e->GetRealDRPDF({-2, 1, 0}), 5);
        EXPECT_VT_ERROR(e->GetDRPDF({-2, 1, 0}), 5);
        // Not a number.
        EXPECT_VT_ERROR(e->GetNonScaledPDF({nan, 1, 1}), 5);
        EXPECT_VT_ERROR(e->GetNonScaledDRPDF({1, 1, nan}), 5);
        // r² overflows even though e^(-r) would quietly give 0.
        EXPECT_VT_ERROR(e->GetNonScaledPDF({1e308, 1e308, 0}), 6);
        EXPECT_VT_ERROR(e->GetDRPDF({0, 1e308, 1e308}), 6);
        EXPECT_VT_ERROR(e->GetNonScaledPDF({inf, 0, 0}), 6);
    }
    // The grouped cubic of 4S overflows before the vanishing exponential multiplies it.
    EXPECT_VT_ERROR(Make(14)->GetNonScaledPDF({1e300, 0, 0}), 6);
    // Scale factors are stored unchecked; their faults show in the byte operations.
    auto e = Make(0);
    e->SetPDFScaleFactor(inf);
    EXPECT_VT_ERROR(e->GetPDF({0, 0, 0}), 6);
    e->SetPDFScaleFactor(nan);
    EXPECT_VT_ERROR(e->GetPDF({0, 0, 0}), 5);
}

TEST(OrbitalDensity, UnderflowIsNoFault) {
    for (int i = 0; i < 40; ++i) {
        auto e = Make(i);
        e->SetPDFScaleFactor(255.0);
        EXPECT_EQ(e->GetNonScaledPDF({1e6, 1e6, 1e6}), 0.0) << i;
        EXPECT_EQ(e->GetPDF({1e6, 1e6, 1e6}), 0) << i;
    }
    // e^-740 is subnormal, e^-800 is 0.
    EXPECT_GT(Make(0)->GetNonScaledPDF({370.0 * 370.0, 0, 0}), 0.0);
    EXPECT_EQ(Make(0)->GetNonScaledPDF({400.0 * 400.0, 0, 0}), 0.0);
}

}  // namespace
