// A state's facts against closed forms, and node radii where R_nl changes sign.
#include "electron/state_facts.h"

#include <gtest/gtest.h>

#include <cmath>

#include "electron/state_wave.h"

using namespace veltara;

namespace {

StateFacts Of(int32_t n, int32_t l, int32_t m, Basis basis = Basis::Real, int32_t Z = 1,
              bool average = false) {
    return FactsOf(MakeSuperposition(State{n, l, m, basis, Z, average}));
}

void ExpectRelative(const std::vector<double>& got, const std::vector<double>& expected,
                    double tolerance) {
    ASSERT_EQ(got.size(), expected.size());
    for (size_t i = 0; i < got.size(); ++i)
        EXPECT_NEAR(got[i], expected[i], tolerance * expected[i]);
}

}  // namespace

// Nodes of the radial polynomials by hand: 2s (2 - r), 3s (27 - 18r + 2r²), 3p (6 - r),
// 4p (r² - 20r + 80), 4s (r³ - 24r² + 144r - 192: with r = 8 + u, u³ - 48u - 64 = 0, whose
// roots are 8 cos(pi/9 - 2 pi k/3)), all scaled by 1/Z. Most probable radii: n²/Z for l = n - 1, 2s
// (3 + sqrt 5).
TEST(StateFacts, NodesAndRadiiFollowTheClosedForms) {
    const double s3 = std::sqrt(3.0), s5 = std::sqrt(5.0);
    auto fourS = [](int k) { return 8 + 8 * std::cos(M_PI / 9 - 2 * M_PI * k / 3); };
    ExpectRelative(Of(2, 0, 0).nodeRadii, {2}, 1e-8);
    ExpectRelative(Of(3, 0, 0, Basis::Real, 3).nodeRadii, {(9 - 3 * s3) / 6, (9 + 3 * s3) / 6},
                   1e-8);
    ExpectRelative(Of(3, 1, -1, Basis::Complex).nodeRadii, {6}, 1e-8);
    ExpectRelative(Of(4, 1, 0).nodeRadii, {10 - 2 * s5, 10 + 2 * s5}, 1e-8);
    ExpectRelative(Of(4, 0, 0, Basis::Real, 2, true).nodeRadii,
                   {fourS(2) / 2, fourS(1) / 2, fourS(0) / 2}, 1e-8);
    EXPECT_TRUE(Of(5, 4, 4).nodeRadii.empty());
    struct Row {
        StateFacts f;
        double mostProbable, mean;
    };
    const Row rows[] = {{Of(1, 0, 0), 1, 1.5},
                        {Of(1, 0, 0, Basis::Real, 3), 1. / 3, 0.5},
                        {Of(2, 1, 1), 4, 5},
                        {Of(3, 2, 0), 9, 10.5},
                        {Of(30, 29, 3, Basis::Complex, 2), 450, 457.5},
                        {Of(2, 0, 0), 3 + s5, 6}};
    for (const Row& row : rows) {
        EXPECT_NEAR(row.f.mostProbableRadius, row.mostProbable, 1e-7 * row.mostProbable);
        EXPECT_NEAR(row.f.meanRadius, row.mean, 1e-15 * row.mean);
    }
}

// Up to shell 30: n - l - 1 ascending nodes, each a sign change of R_nl within 1e-8 of it,
// and the most probable radius a maximum of r² R² within 1e-7.
TEST(StateFacts, NodesAreSignChangesAndTheMostProbableRadiusIsTheLargestMaximum) {
    const int32_t states[][3] = {{30, 0, 1}, {30, 7, 2}, {17, 3, 1}, {24, 20, 3}, {9, 1, 1}};
    for (const auto& [n, l, Z] : states) {
        const StateFacts f = Of(n, l, 0, Basis::Real, Z);
        ASSERT_EQ(f.nodeRadii.size(), static_cast<size_t>(n - l - 1));
        double previous = 0;
        for (double r : f.nodeRadii) {
            EXPECT_GT(r, previous);
            previous = r;
            EXPECT_LT(RadialR(n, l, Z, r * (1 - 1e-8)) * RadialR(n, l, Z, r * (1 + 1e-8)), 0);
        }
        auto p = [&](double r) { return r * r * std::pow(RadialR(n, l, Z, r), 2); };
        const double top = f.mostProbableRadius, step = top * 1e-7;
        EXPECT_GT(p(top), p(top - step));
        EXPECT_GT(p(top), p(top + step));
        for (double r = step; r < 4.0 * n * n / Z; r += 0.01 * n / Z)
            EXPECT_LE(p(r), p(top) * (1 + 1e-12));
    }
}

TEST(StateFacts, EnergyNodeCountsAndBeats) {
    const StateFacts d = Of(3, 2, -1, Basis::Complex, 2);
    EXPECT_EQ(d.energyHartree, -2.0 / 9);
    EXPECT_NEAR(d.energyEv, -6.047, 1e-3);  // 4 x 13.6057 / 9
    EXPECT_EQ(d.radialNodes, 0);
    EXPECT_EQ(d.angularNodes, 1);
    EXPECT_EQ(Of(3, 2, -1).angularNodes, 2);
    EXPECT_EQ(Of(4, 3, 0, Basis::Real, 1, true).angularNodes, 0);
    EXPECT_EQ(Of(4, 1, 0).radialNodes, 2);
    EXPECT_TRUE(d.beats.empty());
    // 1s + 2p: 0.375 hartree, 0.405 fs, 121.5 nm; with 3d two more energies, three beats.
    const StateFacts two =
        FactsOf(MakeSuperposition({{1.0, State{1, 0, 0}}, {1.0, State{2, 1, 0}}}));
    EXPECT_DOUBLE_EQ(two.energyHartree, -0.3125);
    ASSERT_EQ(two.beats.size(), 1u);
    EXPECT_EQ(two.beats[0].deltaHartree, 0.375);
    EXPECT_NEAR(two.beats[0].periodFs, 0.405, 5e-4);
    EXPECT_NEAR(two.beats[0].wavelengthNm, 121.5, 0.05);
    const StateFacts three = FactsOf(MakeSuperposition({{1.0, State{1, 0, 0}},
                                                        {1.0, State{2, 1, 0}},
                                                        {1.0, State{2, 1, 1}},
                                                        {1.0, State{3, 2, 0}}}));
    EXPECT_EQ(three.beats.size(), 3u);
}
