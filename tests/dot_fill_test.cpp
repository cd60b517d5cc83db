// Dot clouds of real orbitals against a reference fill written from the description of the
// visit, the mirror images and the acceptance rule, compared dot for dot over whole clouds.
#include <algorithm>
#include <array>
#include <cmath>
#include <span>

#include "picture_test_support.h"

namespace {

using namespace veltara;

/// The engine's generator: Lehmer's minimal standard (48271, 2^31 - 1); 0 sticks at 2^31 - 1.
int32_t Next(int32_t& s) {
    const int64_t m = 2147483647;
    s = s == 0 || s == m ? static_cast<int32_t>(m) : static_cast<int32_t>(int64_t{s} * 48271 % m);
    return s;
}

/// A cloud of about `target` dots: each mirror image of each point above `thr` is kept when
/// its own draw falls below the level's acceptance. `cloud` keeps its dots when none is kept;
/// at most 32768 dots are stored (the fill stops there, `full` tells).
void ReferenceFill(std::span<const uint8_t> grid, const OrbitalStats& stats, int16_t target,
                   uint8_t thr, int32_t& state, std::vector<PointArray>& cloud, bool& full) {
    full = false;
    double sum = 0;
    for (int v = thr; v <= 255; ++v) sum += 1.0 * stats.ProbFreqs[v] * v;
    if (target == 0 || sum == 0) {  // no dot wanted, or no level to draw from
        cloud.assign(1, PointArray{});
        return;
    }
    std::vector<PointArray> dots;
    auto offer = [&](int x, int y, int z, std::initializer_list<std::array<int, 3>> signs) {
        const uint8_t p = grid[(static_cast<size_t>(z) * 128 + y) * 128 + x];
        if (p <= thr || full) return;
        const double a = p / sum * target;
        const int32_t accept =
            a <= 1 ? static_cast<int32_t>(std::nearbyint(a * 2147483647.0)) : 2147483647;
        for (const auto& s : signs) {
            if (full) return;
            if (Next(state) < accept) {
                dots.push_back({static_cast<int16_t>(s[0] * x), static_cast<int16_t>(s[1] * y),
                                static_cast<int16_t>(s[2] * z), p});
                full = dots.size() == 32768;
            }
        }
    };
    offer(0, 0, 0, {{1, 1, 1}});
    for (int a = 1; a < 128; ++a) offer(a, 0, 0, {{1, 1, 1}, {-1, 1, 1}});
    for (int a = 1; a < 128; ++a) offer(0, a, 0, {{1, 1, 1}, {1, -1, 1}});
    for (int a = 1; a < 128; ++a) offer(0, 0, a, {{1, 1, 1}, {1, 1, -1}});
    for (int b = 1; b < 128; ++b) {
        for (int a = 1; a < 128; ++a)
            offer(a, b, 0, {{1, 1, 1}, {-1, 1, 1}, {1, -1, 1}, {-1, -1, 1}});
    }
    for (int b = 1; b < 128; ++b) {
        for (int a = 1; a < 128; ++a)
            offer(a, 0, b, {{1, 1, 1}, {-1, 1, 1}, {1, 1, -1}, {-1, 1, -1}});
    }
    for (int b = 1; b < 128; ++b) {
        for (int a = 1; a < 128; ++a)
            offer(0, a, b, {{1, 1, 1}, {1, -1, 1}, {1, 1, -1}, {1, -1, -1}});
    }
    for (int z = 1; z < 128; ++z) {
        for (int y = 1; y < 128; ++y) {
            for (int x = 1; x < 128; ++x) {
                offer(x, y, z,
                      {{1, 1, 1},
                       {-1, 1, 1},
                       {1, -1, 1},
                       {1, 1, -1},
                       {-1, -1, 1},
                       {-1, 1, -1},
                       {1, -1, -1},
                       {-1, -1, -1}});
            }
        }
    }
    if (!dots.empty()) cloud = dots;
}

bool SameCloud(std::span<const PointArray> a, const std::vector<PointArray>& b) {
    return std::ranges::equal(a, b);
}

TEST(FillDotMatrix, WholeCloudsMatchTheReferenceFill) {
    // The clock 100000 ms seeds the generator with Int(100000 / (2^31 - 1) x 65536) = 3.
    vt_test::FixedClock clock(100000);
    cOrbitalCol col;
    // Each orbital (one of each symmetry class, both views) is set up, then filled again with
    // other targets and thresholds; the generator runs on from fill to fill.
    const std::pair<int16_t, ViewMode> orbitals[] = {{10, ViewMode::PDF}, {11, ViewMode::DRPDF},
                                                     {13, ViewMode::PDF}, {16, ViewMode::PDF},
                                                     {27, ViewMode::PDF}, {33, ViewMode::DRPDF}};
    const std::pair<int32_t, uint8_t> refills[] = {{5000, 0}, {32767, 100}, {1, 200}, {32767, 0}};
    for (const auto& [index, view] : orbitals) {
        const int16_t i = col.Add(vt_test::Defaults(index, view, 20000));
        const cOrbital& orbital = col.Orbital(i);
        int32_t state = 3;
        std::vector<PointArray> cloud;
        bool full = false;
        const OrbitalSetup& setup = orbital.SetupRecord();
        ReferenceFill(orbital.ProbMatrix(), col.GetStats(i), setup.DotTarget, setup.DotThreshold,
                      state, cloud, full);
        EXPECT_TRUE(SameCloud(orbital.Dots(), cloud)) << index;
        for (const auto& [target, threshold] : refills) {
            ReferenceFill(orbital.ProbMatrix(), col.GetStats(i), static_cast<int16_t>(target),
                          threshold, state, cloud, full);
            if (full) {
                // The 32768th dot overflows the fill's 16-bit counter, with every dot kept.
                EXPECT_VT_ERROR(col.ReFillDotMatrix(i, threshold, target), 6);
            } else {
                EXPECT_EQ(col.ReFillDotMatrix(i, threshold, target), 0);
            }
            EXPECT_TRUE(SameCloud(orbital.Dots(), cloud)) << index << " target " << target;
        }
    }
}

}  // namespace
