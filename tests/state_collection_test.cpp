// The collection takes states: catalogue rows as their rows, other states by their own density,
// dots from exact samples, and superpositions over the whole cube.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <span>
#include <vector>

#include "electron/radius_holding.h"
#include "electron/state_wave.h"
#include "picture_test_support.h"

namespace {

using namespace veltara;
using vt_test::Request;

constexpr RenderMode kModes[] = {RenderMode::Orthographic, RenderMode::Perspective,
                                 RenderMode::Anaglyph, RenderMode::Volumetric,
                                 RenderMode::Transect};

Superposition Single(int32_t n, int32_t l, int32_t m, Basis basis = Basis::Real, int32_t Z = 1) {
    return MakeSuperposition(State{n, l, m, basis, Z, false});
}

/// 1s + 2p0 with equal weights: its probability leans towards +z at t = 0.
Superposition OneSTwoP() {
    return MakeSuperposition({Term{{1.0, 0.0}, State{1, 0, 0}}, Term{{1.0, 0.0}, State{2, 1, 0}}});
}

OrbitalSetup ViewOnly(ViewMode view) {
    OrbitalSetup s;
    s.OrbitalViewMode = view;
    return s;
}

TEST(cOrbitalCol, AStateThatIsACatalogueRowIsThatRow) {
    vt_test::FixedClock clock(100000);
    // (state, catalogue row): a single orbital, a real p along +y, and a shell average.
    const struct {
        State state;
        int16_t row;
    } rows[] = {
        {State{3, 2, 0}, 9}, {State{2, 1, -1}, 3}, {State{3, 2, 0, Basis::Real, 1, true}, 35}};
    for (const auto& r : rows) {
        for (ViewMode view : {ViewMode::PDF, ViewMode::DRPDF}) {
            SCOPED_TRACE(r.row);
            cOrbitalCol byState, byRow;
            byState.AddState(MakeSuperposition(r.state), 0.0, ViewOnly(view));
            byRow.Add(vt_test::Defaults(r.row, view, 5000));
            const cOrbital& a = byState.Orbital(0);
            const cOrbital& b = byRow.Orbital(0);
            EXPECT_TRUE(std::ranges::equal(a.ProbMatrix(), b.ProbMatrix()));
            EXPECT_TRUE(std::ranges::equal(a.Dots(), b.Dots(), [](auto& p, auto& q) {
                return p.X == q.X && p.Y == q.Y && p.Z == q.Z && p.P == q.P;
            }));
            for (RenderMode mode : kModes) {
                for (RenderSize size : {RenderSize::Main, RenderSize::Nano}) {
                    const RenderRequest q = Request(mode, size);
                    EXPECT_EQ(vt_test::Differences(vt_test::Render(byState, 0, q),
                                                   vt_test::Render(byRow, 0, q)),
                              0u);
                }
            }
        }
    }
}

/// Every 61st grid level against the view's value there: the point of the highest level L
/// and its value dL bound each level to [v (L - 0.5) / dL, v (L + 0.5) / dL], give or take the
/// rounding (the maximum the levels were scaled by lies between the lattice's points).
void ExpectGridFollowsDensity(const cOrbital& o, const Superposition& s, double t, int32_t edge) {
    const std::span<const uint8_t> grid = o.ProbMatrix();
    ASSERT_EQ(o.GridEdge(), edge);
    ASSERT_EQ(grid.size(), size_t(edge) * edge * edge);
    const double step = o.SetupRecord().AtomRadius / 127.0;
    const int32_t low = edge == 255 ? -127 : 0;
    auto value = [&](size_t k) {
        const double x = (low + int32_t(k % edge)) * step,
                     y = (low + int32_t(k / edge % edge)) * step,
                     z = (low + int32_t(k / edge / edge)) * step;
        return o.SetupRecord().OrbitalViewMode == ViewMode::PDF ? Density(s, x, y, z, t)
                                                                : RadialView(s, x, y, z, t);
    };
    const auto highest = std::ranges::max_element(grid);
    const double L = *highest, dL = value(size_t(highest - grid.begin()));
    size_t off = 0;
    for (size_t k = 0; k < grid.size(); k += 61) {
        const double v = value(k);
        off += grid[k] > v * (L + 0.5) / dL + 0.5 || grid[k] < v * (L - 0.5) / dL - 0.5;
    }
    EXPECT_EQ(off, 0u);
}

TEST(cOrbitalCol, AStateIsSampledOnTheOctantAndASuperpositionOnTheWholeCube) {
    vt_test::FixedClock clock(100000);
    const struct {
        Superposition s;
        double t;
        int32_t edge;
    } cases[] = {{Single(4, 2, 1, Basis::Complex), 0.0, 128},
                 {Single(3, 1, 0, Basis::Real, 2), 0.0, 128},  // He+
                 {OneSTwoP(), 0.0, 255},
                 {OneSTwoP(), 4.0, 255}};
    for (const auto& c : cases) {
        for (ViewMode view : {ViewMode::PDF, ViewMode::DRPDF}) {
            cOrbitalCol col;
            col.AddState(c.s, c.t, ViewOnly(view));
            const cOrbital& o = col.Orbital(0);
            // The default radius holds 99.9 % of the probability.
            EXPECT_GE(o.SetupRecord().AtomRadius, RadiusHolding(c.s, 0.999));
            EXPECT_EQ(col.GetStats(0).TotalSamples, c.edge * c.edge * c.edge);
            SCOPED_TRACE(testing::Message()
                         << "edge " << c.edge << " t " << c.t << " view " << int(view));
            ExpectGridFollowsDensity(o, c.s, c.t, c.edge);
        }
    }
}

TEST(cOrbitalCol, AStatesDotsAreExactSamplesOnTheGrid) {
    vt_test::FixedClock clock(100000);
    // 1s + 2p0 at time t: <z> = 0.7449 cos(0.375 t) Bohr (the 1s-2p0 overlap 128 sqrt2 / 243).
    for (const double t : {0.0, 8.3776}) {
        cOrbitalCol col;
        OrbitalSetup setup = ViewOnly(ViewMode::PDF);
        setup.DotTarget = 20000;
        setup.DotThreshold = 200;  // does not thin a state's dots
        col.AddState(OneSTwoP(), t, setup);
        const cOrbital& o = col.Orbital(0);
        ASSERT_EQ(o.Dots().size(), 20000u);
        const double step = o.SetupRecord().AtomRadius / 127.0;
        double sum = 0, sumSq = 0;
        for (const PointArray& d : o.Dots()) {
            ASSERT_LE(std::max({std::abs(d.X), std::abs(d.Y), std::abs(d.Z)}), 127);
            ASSERT_EQ(d.P, o.ProbMatrix()[size_t(d.Z + 127) * 255 * 255 + size_t(d.Y + 127) * 255 +
                                          size_t(d.X + 127)]);
            sum += d.Z * step;
            sumSq += d.Z * step * d.Z * step;
        }
        const double mean = sum / 20000, sd = std::sqrt(sumSq / 20000 - mean * mean);
        EXPECT_NEAR(mean, 0.7449 * std::cos(0.375 * t), 4 * sd / std::sqrt(20000.0)) << t;
    }
}

TEST(cOrbitalCol, AWholeCubeShowsBothSides) {
    vt_test::FixedClock clock(100000);
    cOrbitalCol col;
    col.AddState(OneSTwoP(), 0.0, ViewOnly(ViewMode::PDF));
    const std::span<const uint8_t> g = col.Orbital(0).ProbMatrix();
    auto level = [&](int x, int y, int z) {
        return g[size_t(z + 127) * 255 * 255 + size_t(y + 127) * 255 + size_t(x + 127)];
    };
    // The Nano transect across y at slice -6: pixel (63 + i, 63 - j) shows (2i, -6, 2j), +z up.
    RenderRequest q = Request(RenderMode::Transect, RenderSize::Nano);
    q.TransectNo = -6;
    const std::vector<RGBA> slice = vt_test::Render(col, 0, q);
    size_t off = 0;
    for (int j = -63; j <= 63; ++j) {
        for (int i = -63; i <= 63; ++i) {
            off += !(slice[size_t(63 - j) * 127 + size_t(63 + i)] ==
                     vt_test::Grey(level(2 * i, -6, 2 * j)));
        }
    }
    EXPECT_EQ(off, 0u);
    EXPECT_GT(level(0, 0, 20), level(0, 0, -20));

    // Seen from the front (theta = phi = 0) the volume is brighter on the +z side, which a
    // volumetric picture shows towards its bottom row.
    q = Request(RenderMode::Volumetric, RenderSize::Nano, 0.0, 0.0);
    q.VolFinal = kTrue;
    const std::vector<RGBA> volume = vt_test::Render(col, 0, q);
    EXPECT_GT(volume[size_t(63 + 10) * 127 + 63].G, volume[size_t(63 - 10) * 127 + 63].G + 10);
    EXPECT_GT(volume[size_t(63 - 10) * 127 + 63].G, 0);  // the 1s part lies on both sides
}

TEST(cOrbitalCol, AddStateRefusesBadInput) {
    vt_test::FixedClock clock(100000);
    cOrbitalCol col;
    auto number = [&](double t, ViewMode view) {
        try {
            col.AddState(OneSTwoP(), t, ViewOnly(view));
        } catch (const Error& e) {
            return e.number();
        }
        return 0;
    };
    EXPECT_EQ(number(NAN, ViewMode::PDF), 5);
    EXPECT_EQ(number(0.0, static_cast<ViewMode>(7)), 91);
}

}  // namespace
