// Boundary surfaces: the level against closed forms and an independent count of exact samples,
// the mesh of 1s against the sphere the closed form gives, closed and turned outwards.
#include "electron/boundary_surface.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <numbers>
#include <utility>
#include <vector>

#include "electron/sampling.h"
#include "electron/state_wave.h"
#include "support/error.h"

using namespace veltara;

namespace {

constexpr double kPi = std::numbers::pi;

Superposition One(int32_t n, int32_t l, int32_t m, Basis basis = Basis::Real) {
    return MakeSuperposition(State{n, l, m, basis, 1, false});
}

// P(r < R) of 1s in closed form, and the R where it reaches a fraction (bisection).
double Cdf1s(double r) { return 1 - std::exp(-2 * r) * (2 * r * r + 2 * r + 1); }
double Radius1s(double fraction) {
    double lo = 0, hi = 50;
    while (hi - lo > 1e-13) (Cdf1s((lo + hi) / 2) < fraction ? lo : hi) = (lo + hi) / 2;
    return lo;
}

}  // namespace

TEST(BoundarySurface, LevelHoldsTheFraction) {
    // 1s: |psi|² = e^(-2r) / pi, so the level L holds P(r < -ln(pi L) / 2).
    for (double fraction : {0.2, 0.5, 0.9, 0.99}) {
        const double level = EnclosingLevel(One(1, 0, 0), 0, fraction);
        EXPECT_NEAR(Cdf1s(-std::log(kPi * level) / 2), fraction, 0.002) << fraction;
    }
    // Others: the share of 400000 exact samples (another seed) whose density, as the state's
    // own evaluation gives it, reaches the level; allowed 0.002 and 4 standard deviations.
    struct Case {
        const char* what;
        Superposition s;
        double t, fraction;
    };
    const Case cases[] = {
        {"3d0", One(3, 2, 0), 0, 0.5},
        {"2p1 complex", One(2, 1, 1, Basis::Complex), 0, 0.9},
        {"1s + 2p0 at t 3", MakeSuperposition({{1.0, State{1, 0, 0}}, {1.0, State{2, 1, 0}}}), 3,
         0.7},
        {"4f-2 - 0.5i 3s", MakeSuperposition({{1.0, State{4, 3, -2}}, {{0, -0.5}, State{3, 0, 0}}}),
         1, 0.9},
    };
    constexpr size_t kCount = 400000;
    std::vector<double> xyz(3 * kCount);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const double level = EnclosingLevel(c.s, c.t, c.fraction);
        Sample(c.s, c.t, 2024, kCount, SampleWeight::Density, xyz.data(), nullptr);
        size_t held = 0;
        for (size_t i = 0; i < kCount; ++i)
            held += Density(c.s, xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2], c.t) >= level;
        const double sd = std::sqrt(c.fraction * (1 - c.fraction) / kCount);
        EXPECT_NEAR(static_cast<double>(held) / kCount, c.fraction, 0.002 + 4 * sd);
    }
}

TEST(BoundarySurface, MeshIsClosedAndOutward) {
    struct Case {
        const char* what;
        Superposition s;
        double t, fraction;
        int32_t resolution;
    };
    const Case cases[] = {
        {"1s 90%", One(1, 0, 0), 0, 0.9, 48},
        {"3d+1 (four lobes)", One(3, 2, 1), 0, 0.8, 40},
        {"2p1 complex (a ring)", One(2, 1, 1, Basis::Complex), 0, 0.9, 40},
        {"1s + 2p0 at t 2", MakeSuperposition({{1.0, State{1, 0, 0}}, {1.0, State{2, 1, 0}}}), 2,
         0.6, 32},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const SurfaceMesh mesh = BoundarySurface(c.s, c.t, c.fraction, c.resolution);
        ASSERT_GT(mesh.triangles.size(), 0u);
        ASSERT_EQ(mesh.phase.size() * 3, mesh.xyz.size());
        // Closed and consistently turned: each edge once each way round.
        std::map<std::pair<uint32_t, uint32_t>, int> edges;
        double volume = 0;  // the divergence theorem: positive when the normals point out
        const auto& tri = mesh.triangles;
        for (size_t i = 0; i < tri.size(); i += 3) {
            for (int e = 0; e < 3; ++e) ++edges[{tri[i + e], tri[i + (e + 1) % 3]}];
            const float* a = &mesh.xyz[3 * tri[i]];
            const float* b = &mesh.xyz[3 * tri[i + 1]];
            const float* d = &mesh.xyz[3 * tri[i + 2]];
            volume += (a[0] * (b[1] * d[2] - b[2] * d[1]) - a[1] * (b[0] * d[2] - b[2] * d[0]) +
                       a[2] * (b[0] * d[1] - b[1] * d[0])) /
                      6.0;
        }
        for (const auto& [edge, count] : edges) {
            ASSERT_EQ(count, 1);
            ASSERT_EQ(edges.count({edge.second, edge.first}), 1u);
        }
        EXPECT_GT(volume, 0);
    }
}

TEST(BoundarySurface, SphereOf1sAndPhasesAtTheVertices) {
    // 1s at 90%: the sphere whose radius the closed form gives, to within a lattice step.
    const double r90 = Radius1s(0.9);
    const SurfaceMesh sphere = BoundarySurface(One(1, 0, 0), 0, 0.9, 64);
    double far = 0;
    for (size_t i = 0; i < sphere.xyz.size(); i += 3) {
        const double r = std::hypot(sphere.xyz[i], sphere.xyz[i + 1], sphere.xyz[i + 2]);
        far = std::max(far, std::fabs(r - r90));
        ASSERT_EQ(sphere.phase[i / 3], 0.0f);
    }
    EXPECT_LT(far, 2 * r90 / 64 * 1.2);  // the cube's half-width is a little above r90
    // 2p1 complex (Condon-Shortley): psi = -R(r) (x + iy) times a positive constant.
    const SurfaceMesh ring = BoundarySurface(One(2, 1, 1, Basis::Complex), 0, 0.5, 32);
    for (size_t i = 0; i < ring.phase.size(); ++i) {
        const double expected = std::atan2(-ring.xyz[3 * i + 1], -ring.xyz[3 * i]);
        EXPECT_NEAR(std::cos(ring.phase[i] - expected), 1, 1e-9) << i;
    }
    // 2p0 - 2s at t 0 is real: every vertex 0 or pi.
    const SurfaceMesh real = BoundarySurface(
        MakeSuperposition({{1.0, State{2, 1, 0}}, {-1.0, State{2, 0, 0}}}), 0, 0.5, 24);
    for (float phase : real.phase) EXPECT_TRUE(phase == 0.0f || phase == float(kPi)) << phase;
}

TEST(BoundarySurface, RefusedArgumentsRaise5) {
    const auto s = One(2, 1, 0);
    for (const auto& call : std::vector<std::function<void()>>{
             [&] { EnclosingLevel(s, 0, 0); },
             [&] { EnclosingLevel(s, 0, 1); },
             [&] { EnclosingLevel(s, INFINITY, 0.5); },
             [&] { BoundarySurface(s, 0, 0.5, 7); },
             [&] { BoundarySurface(s, 0, 0.5, 257); },
         }) {
        try {
            call();
            ADD_FAILURE() << "no error";
        } catch (const Error& e) {
            EXPECT_EQ(e.number(), 5);
            EXPECT_FALSE(e.detail().empty());
        }
    }
}
