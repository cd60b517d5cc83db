// Transects: a slice of the probability grid, mirrored about its centre, in grey or by level.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>

#include "picture_test_support.h"
#include "test_support.h"

namespace {

using namespace veltara;
using vt_test::Access;

/// A level for every grid point that differs along each axis.
uint8_t Pattern(int x, int y, int z) { return static_cast<uint8_t>((x * 3 + y * 5 + z * 7) % 256); }

std::unique_ptr<cOrbitalPDF> WithPatternGrid() {
    auto r = vt_test::MakeRenderer();
    ProbGrid& g = Access::ProbMatrix(*r);
    g.Reset();
    for (int z = 0; z < 128; ++z) {
        for (int y = 0; y < 128; ++y) {
            for (int x = 0; x < 128; ++x) g(x, y, z) = Pattern(x, y, z);
        }
    }
    return r;
}

RenderRequest TransectRequest(RenderSize size, TransectDirection dir, int16_t no) {
    RenderRequest q = vt_test::Request(RenderMode::Transect, size);
    q.TransectDir = dir;
    q.TransectNo = no;
    return q;
}

/// The grid point shown at in-plane grid offsets (a, b) of a slice, read from the direction's
/// meaning: AlongX shows Y across and Z up, Alongy X across and Z up, Alongz X across, Y up.
uint8_t Expected(TransectDirection dir, int t, int a, int b) {
    switch (dir) {
        case TransectDirection::AlongX:
            return Pattern(t, a, b);
        case TransectDirection::Alongy:
            return Pattern(a, t, b);
        default:
            return Pattern(a, b, t);
    }
}

TEST(RenderTransect, GreySliceIsTheGridMirroredBothWaysAboutTheCentre) {
    vt_test::FixedClock clock(100000);
    struct Case {
        RenderSize size;
        int centre, reach, step;
    };
    const Case sizes[] = {{RenderSize::Nano, 63, 63, 2}, {RenderSize::Main, 187, 127, 1}};
    for (const Case& c : sizes) {
        for (const TransectDirection dir :
             {TransectDirection::AlongX, TransectDirection::Alongy, TransectDirection::Alongz}) {
            auto r = WithPatternGrid();
            const RenderDCinfo info = r->GetRender(TransectRequest(c.size, dir, 9));
            const int32_t hdc = c.size == RenderSize::Main ? info.MainHDC : info.NanoHDC;
            const cMemoryDCEx& s = vt_test::Surface(hdc);
            ASSERT_EQ(s.Width(), c.centre == 63 ? 127 : 375);
            for (int j = -c.reach; j <= c.reach; ++j) {
                const std::vector<RGBA> row = s.GetBits(c.centre + j);
                for (int i = -c.reach; i <= c.reach; ++i) {
                    const uint8_t p = Expected(dir, 9, std::abs(i) * c.step, std::abs(j) * c.step);
                    ASSERT_EQ(row[c.centre + i], vt_test::Grey(p))
                        << "dir " << static_cast<int>(dir) << " i " << i << " j " << j;
                }
            }
        }
    }
}

TEST(RenderTransect, MainLeavesASixtyPixelBlackBorder) {
    vt_test::FixedClock clock(100000);
    auto r = WithPatternGrid();
    Access::ProbMatrix(*r).Reset();
    std::fill_n(Access::ProbMatrix(*r).Data(), 128 * 128 * 128, uint8_t{200});
    const cMemoryDCEx& s = vt_test::Surface(
        r->GetRender(TransectRequest(RenderSize::Main, TransectDirection::Alongz, 0)).MainHDC);
    for (int row = 0; row < 375; ++row) {
        const std::vector<RGBA> line = s.GetBits(row);
        for (int col = 0; col < 375; ++col) {
            const bool inside = row >= 60 && row <= 314 && col >= 60 && col <= 314;
            ASSERT_EQ(line[col], vt_test::Grey(inside ? 200 : 0)) << col << "," << row;
        }
    }
}

TEST(RenderTransect, NegativeSliceIndexShowsTheSameSlice) {
    vt_test::FixedClock clock(100000);
    auto r = WithPatternGrid();
    const cMemoryDCEx& a = vt_test::Surface(
        r->GetRender(TransectRequest(RenderSize::Nano, TransectDirection::Alongy, 5)).NanoHDC);
    std::vector<std::vector<RGBA>> plus;
    for (int row = 0; row < 127; ++row) plus.push_back(a.GetBits(row));
    const cMemoryDCEx& b = vt_test::Surface(
        r->GetRender(TransectRequest(RenderSize::Nano, TransectDirection::Alongy, -5)).NanoHDC);
    for (int row = 0; row < 127; ++row) EXPECT_EQ(b.GetBits(row), plus[row]);
    EXPECT_NE(a.GetBits(63)[63], vt_test::Grey(Pattern(0, 0, 0)));  // the slice moved off 0
}

/// A Nano transect of a grid holding level p everywhere, with the given flags and companion.
RGBA NanoPixel(uint8_t p, VbBool onDots, VbBool onTrans, RenderMode companion) {
    auto r = vt_test::MakeRenderer();
    Access::ProbMatrix(*r).Reset();
    std::fill_n(Access::ProbMatrix(*r).Data(), 128 * 128 * 128, p);
    Access::LastMainReq(*r) = vt_test::Request(companion);
    RenderRequest q = TransectRequest(RenderSize::Nano, TransectDirection::AlongX, 0);
    q.ShowProbLevelOnDots = onDots;
    q.ShowProbLevelOnTrans = onTrans;
    const cMemoryDCEx& s = vt_test::Surface(r->GetRender(q).NanoHDC);
    return vt_test::PixelAt(s, 20, 100);
}

TEST(RenderTransect, LevelSchemeColoursFromRedBrownToGreen) {
    vt_test::FixedClock clock(100000);
    struct Case {
        uint8_t p;
        RGBA colour;  // G = p p \ 255, R = (255 - p) p \ 255, worked by hand
    };
    const Case cases[] = {
        {0, {0, 0, 0, 0}},     {64, {0, 16, 47, 0}},   {127, {0, 63, 63, 0}},
        {128, {0, 64, 63, 0}}, {200, {0, 156, 43, 0}}, {255, {0, 255, 0, 0}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(NanoPixel(c.p, kTrue, kTrue, RenderMode::Orthographic), c.colour) << int{c.p};
        EXPECT_EQ(NanoPixel(c.p, kTrue, kTrue, RenderMode::Perspective), c.colour) << int{c.p};
    }
}

TEST(RenderTransect, GreySchemeUnlessBothFlagsAndAPlainCompanion) {
    vt_test::FixedClock clock(100000);
    struct Case {
        VbBool onDots, onTrans;
        RenderMode companion;
    };
    const Case greyCases[] = {
        {kTrue, kTrue, RenderMode::Anaglyph},  // companion anaglyph: grey
        {kTrue, kTrue, RenderMode::Volumetric},    {kTrue, kTrue, RenderMode::Transect},
        {kFalse, kTrue, RenderMode::Orthographic}, {kTrue, kFalse, RenderMode::Orthographic},
        {1, kTrue, RenderMode::Orthographic},  // only exactly -1 counts as set
        {kTrue, 1, RenderMode::Orthographic},
    };
    for (const Case& c : greyCases) {
        EXPECT_EQ(NanoPixel(255, c.onDots, c.onTrans, c.companion), vt_test::Grey(255));
        EXPECT_EQ(NanoPixel(100, c.onDots, c.onTrans, c.companion), vt_test::Grey(100));
    }
}

TEST(RenderTransect, MainTransectLooksAtTheLastNanoRequest) {
    vt_test::FixedClock clock(100000);
    auto r = vt_test::MakeRenderer();
    Access::ProbMatrix(*r).Reset();
    std::fill_n(Access::ProbMatrix(*r).Data(), 128 * 128 * 128, uint8_t{200});
    Access::LastMainReq(*r) = vt_test::Request(RenderMode::Anaglyph);
    Access::LastNanoReq(*r) = vt_test::Request(RenderMode::Perspective, RenderSize::Nano);
    RenderRequest q = TransectRequest(RenderSize::Main, TransectDirection::AlongX, 0);
    q.ShowProbLevelOnDots = kTrue;
    q.ShowProbLevelOnTrans = kTrue;
    const cMemoryDCEx& s = vt_test::Surface(r->GetRender(q).MainHDC);
    EXPECT_EQ(vt_test::PixelAt(s, 187, 187), (RGBA{0, 156, 43, 0}));
}

TEST(RenderTransect, SliceBeyondTheGridFailsAfterTheSurfaceIsRecreated) {
    vt_test::FixedClock clock(100000);
    auto r = WithPatternGrid();
    const RenderDCinfo before =
        r->GetRender(TransectRequest(RenderSize::Nano, TransectDirection::AlongX, 3));
    EXPECT_VT_ERROR(r->GetRender(TransectRequest(RenderSize::Nano, TransectDirection::AlongX, 128)),
                    9);
    // The handle in mDCInfo is the old one, which no longer resolves; the new surface is black.
    EXPECT_EQ(Access::DCInfo(*r).NanoHDC, before.NanoHDC);
    EXPECT_EQ(SurfaceFromHandle(before.NanoHDC), nullptr);
    const cMemoryDCEx& fresh = *Access::NanoSurface(*r);
    EXPECT_EQ(fresh.Width(), 127);
    EXPECT_EQ(vt_test::PixelAt(fresh, 63, 63), vt_test::Grey(0));
    // -128 is fine in 16 bits but lies beyond the grid too; 127 is the last slice.
    EXPECT_VT_ERROR(
        r->GetRender(TransectRequest(RenderSize::Main, TransectDirection::Alongz, -128)), 9);
    r->GetRender(TransectRequest(RenderSize::Main, TransectDirection::Alongz, -127));
}

TEST(RenderTransect, MostNegativeSliceOverflowsWithNothingChanged) {
    vt_test::FixedClock clock(100000);
    auto r = WithPatternGrid();
    const RenderDCinfo before =
        r->GetRender(TransectRequest(RenderSize::Nano, TransectDirection::AlongX, 3));
    EXPECT_VT_ERROR(
        r->GetRender(TransectRequest(RenderSize::Nano, TransectDirection::AlongX, -32768)), 6);
    EXPECT_NE(SurfaceFromHandle(before.NanoHDC), nullptr);
}

TEST(RenderTransect, UnknownDirectionGivesAFreshBlackSurfaceWithItsHandle) {
    vt_test::FixedClock clock(100000);
    auto r = WithPatternGrid();
    const RenderDCinfo before =
        r->GetRender(TransectRequest(RenderSize::Main, TransectDirection::AlongX, 3));
    const RenderDCinfo after =
        r->GetRender(TransectRequest(RenderSize::Main, static_cast<TransectDirection>(-4), 3));
    EXPECT_NE(after.MainHDC, before.MainHDC);
    const cMemoryDCEx& s = vt_test::Surface(after.MainHDC);
    for (int row = 0; row < 375; ++row) {
        for (const RGBA& p : s.GetBits(row)) ASSERT_EQ(p, vt_test::Grey(0));
    }
}

TEST(RenderTransect, OtherSizesChangeNothing) {
    vt_test::FixedClock clock(100000);
    auto r = WithPatternGrid();
    const RenderDCinfo before =
        r->GetRender(TransectRequest(RenderSize::Nano, TransectDirection::AlongX, 3));
    const RenderDCinfo after =
        r->GetRender(TransectRequest(static_cast<RenderSize>(200), TransectDirection::AlongX, 3));
    EXPECT_EQ(after.NanoHDC, before.NanoHDC);
    EXPECT_EQ(after.MainHDC, before.MainHDC);
    EXPECT_NE(SurfaceFromHandle(before.NanoHDC), nullptr);
    EXPECT_FALSE(Access::MainSurface(*r));
}

}  // namespace
