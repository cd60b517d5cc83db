// The drawing helpers: integer lines that save and restore grey values, shaded outline lines
// and the transector square.
#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <utility>
#include <vector>

#include "picture_test_support.h"
#include "test_support.h"

namespace {

using namespace veltara;
using vt_test::Access;
using Point = std::pair<int, int>;

/// A renderer whose pixel array is sized for a picture of the given last index, every pixel
/// holding a distinct grey (B = G = R) in a pattern, alpha 0.
std::unique_ptr<cOrbitalPDF> WithGreyPicture(int16_t maxPixel) {
    auto r = vt_test::MakeRenderer();
    Access::MaxPixel(*r) = maxPixel;
    RgbaArray2D& bits = Access::VolBits(*r);
    bits.Resize(maxPixel + 1, maxPixel + 1);
    for (int c = 0; c <= maxPixel; ++c) {
        for (int row = 0; row <= maxPixel; ++row) {
            bits(c, row) = vt_test::Grey(static_cast<uint8_t>((c * 7 + row * 13) % 200 + 20));
        }
    }
    return r;
}

/// Pixels whose alpha byte was set by a saving walk (alpha starts 0 and greys are >= 20).
std::set<Point> Saved(cOrbitalPDF& r) {
    std::set<Point> out;
    const RgbaArray2D& bits = Access::VolBits(r);
    for (int c = 0; c < bits.Cols(); ++c) {
        for (int row = 0; row < bits.Rows(); ++row) {
            if (bits(c, row).A != 0) out.insert({c, row});
        }
    }
    return out;
}

TEST(DrawLine, VisitsTheBresenhamPixelsOfEachOctant) {
    // Worked by hand from the error-term walk: Err starts at half the major delta and the
    // minor coordinate steps whenever Err reaches the major delta.
    struct Case {
        int x1, y1, x2, y2;
        std::set<Point> visited;
    };
    const Case cases[] = {
        {0, 0, 4, 4, {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}}},
        {0, 0, 4, 2, {{0, 0}, {1, 1}, {2, 1}, {3, 2}, {4, 2}}},
        {4, 2, 0, 0, {{0, 0}, {1, 1}, {2, 1}, {3, 2}, {4, 2}}},  // ends exchanged
        {2, 4, 0, 0, {{0, 0}, {1, 1}, {1, 2}, {2, 3}, {2, 4}}},  // steep, rows decreasing
        {0, 2, 4, 0, {{0, 2}, {1, 1}, {2, 1}, {3, 0}, {4, 0}}},  // rows stepping down
        {-3, 0, 3, 0, {{0, 0}, {1, 0}, {2, 0}, {3, 0}}},         // left part outside
        {124, 9, 130, 9, {{124, 9}, {125, 9}, {126, 9}}},        // right part outside
        {5, 5, 5, 5, {}},                                        // zero length: nothing
        {0, 3, 0, 6, {{0, 3}, {0, 4}, {0, 5}, {0, 6}}},
    };
    for (const Case& c : cases) {
        auto r = WithGreyPicture(126);
        Access::DrawLine(*r, c.x1, c.y1, c.x2, c.y2, kFalse);
        EXPECT_EQ(Saved(*r), c.visited) << c.x1 << "," << c.y1 << " -> " << c.x2 << "," << c.y2;
    }
}

TEST(DrawLine, SaveThenRestoreLeavesTheGreyPictureAndTheGreyInAlpha) {
    auto r = WithGreyPicture(374);
    const RgbaArray2D before = Access::VolBits(*r);
    Access::DrawLine(*r, 10, 300, 200, 40, kFalse);
    // Paint over the line, as the outline does, then restore.
    Access::DrawDepthLine(*r, 10, 300, 200, 40, 128, 128, 16777215);
    Access::DrawLine(*r, 10, 300, 200, 40, kTrue);
    const RgbaArray2D& after = Access::VolBits(*r);
    const std::set<Point> line = Saved(*r);
    EXPECT_EQ(line.size(), 261u);  // the longer delta, 260, plus one
    for (int c = 0; c <= 374; ++c) {
        for (int row = 0; row <= 374; ++row) {
            const RGBA was = before(c, row);
            const RGBA now = after(c, row);
            EXPECT_EQ(now.B, was.B);
            EXPECT_EQ(now.G, was.G);
            EXPECT_EQ(now.R, was.R);
            EXPECT_EQ(now.A, line.count({c, row}) ? was.R : 0);
        }
    }
}

TEST(DrawLine, RestoreModeOtherThanTheTwoTruthValuesDrawsNothing) {
    auto r = WithGreyPicture(126);
    const RgbaArray2D before = Access::VolBits(*r);
    Access::DrawLine(*r, 0, 0, 100, 50, 1);
    EXPECT_TRUE(Access::VolBits(*r) == before);
}

TEST(DrawLine, DeltaOrShadeOutsideItsWidthOverflows) {
    auto r = WithGreyPicture(126);
    EXPECT_VT_ERROR(Access::DrawLine(*r, -2147483647 - 1, 0, 2147483647, 0, kFalse), 6);
    EXPECT_VT_ERROR(Access::DrawDepthLine(*r, 0, 0, 5, 0, -2147483647 - 1, 10, 255), 6);
    // White below zero has no byte either.
    EXPECT_VT_ERROR(Access::DrawDepthLine(*r, 3, 3, 9, 3, -300, -300, 16777215), 6);
}

TEST(DrawDepthLine, ColourCasesBrightenSaturateOrCombineByOr) {
    struct Case {
        uint8_t r, g;  // pixel before
        int32_t shade;
        int32_t colour;
        RGBA after;
    };
    const Case cases[] = {
        {200, 200, 100, 16777215, {255, 255, 255, 0}},  // 200 + 100 saturates at white
        {50, 50, 100, 16777215, {150, 150, 150, 0}},
        {200, 200, -150, 16777215, {50, 50, 50, 0}},  // a negative shade darkens
        {0, 0, 300, 65280, {0, 255, 0, 0}},           // green clamps to 255: every bit
        {0, 0x0F, 0x30, 65280, {0, 0x3F, 0, 0}},      // green ORs
        {0x0F, 0, 0x30, 255, {0, 0, 0x3F, 0}},        // red ORs
        {7, 9, -40, 255, {0, 9, 7, 0}},               // red clamps to 0: unchanged
        {7, 9, 100, 12345, {0, 9, 7, 0}},             // no such colour: nothing drawn
    };
    for (const Case& c : cases) {
        auto r = vt_test::MakeRenderer();
        Access::MaxPixel(*r) = 126;
        Access::VolBits(*r).Resize(127, 127);
        Access::VolBits (*r)(40, 20) = RGBA{0, c.g, c.r, 0};
        Access::VolBits (*r)(41, 20) = RGBA{0, c.g, c.r, 0};
        Access::DrawDepthLine(*r, 40, 20, 41, 20, c.shade, c.shade, c.colour);
        EXPECT_EQ(Access::VolBits(*r)(40, 20), c.after) << "colour " << c.colour;
        EXPECT_EQ(Access::VolBits(*r)(41, 20), c.after) << "colour " << c.colour;
    }
}

TEST(DrawDepthLine, ShadeRunsLinearlyFromFirstToSecondDepth) {
    for (const bool reversed : {false, true}) {
        auto r = vt_test::MakeRenderer();
        Access::MaxPixel(*r) = 126;
        Access::VolBits(*r).Resize(127, 127);
        if (reversed) {
            Access::DrawDepthLine(*r, 10, 5, 0, 5, 100, 0, 16777215);
        } else {
            Access::DrawDepthLine(*r, 0, 5, 10, 5, 0, 100, 16777215);
        }
        // The end points carry exactly their depths; the middle is 50 for any linear rule.
        EXPECT_EQ(Access::VolBits(*r)(0, 5).R, 0);
        EXPECT_EQ(Access::VolBits(*r)(5, 5).R, 50);
        EXPECT_EQ(Access::VolBits(*r)(10, 5).R, 100);
        for (int c = 1; c <= 10; ++c) {
            EXPECT_GE(Access::VolBits(*r)(c, 5).R, Access::VolBits(*r)(c - 1, 5).R);
        }
    }
}

/// Renderer with a black Main or Nano pixel array and the request r.
std::unique_ptr<cOrbitalPDF> ForOutline(const RenderRequest& req) {
    auto r = vt_test::MakeRenderer();
    const int16_t maxPixel = static_cast<int32_t>(req.Size) == 375 ? 374 : 126;
    Access::MaxPixel(*r) = maxPixel;
    Access::VolBits(*r).Resize(maxPixel + 1, maxPixel + 1);
    Access::Req(*r) = req;
    return r;
}

std::set<Point> Lit(cOrbitalPDF& r) {
    std::set<Point> out;
    const RgbaArray2D& bits = Access::VolBits(r);
    for (int c = 0; c < bits.Cols(); ++c) {
        for (int row = 0; row < bits.Rows(); ++row) {
            const RGBA p = bits(c, row);
            if (p.B || p.G || p.R) out.insert({c, row});
        }
    }
    return out;
}

std::set<Point> SquareOutline(int lo, int hi) {
    std::set<Point> s;
    for (int v = lo; v <= hi; ++v) {
        s.insert({v, lo});
        s.insert({v, hi});
        s.insert({lo, v});
        s.insert({hi, v});
    }
    return s;
}

TEST(DrawTransector, FrontOnSquareAtZeroAnglesHasItsCornersAtTheCubeEdge) {
    RenderRequest req = vt_test::Request(RenderMode::Orthographic);
    req.TransectDir = TransectDirection::Alongy;
    auto r = ForOutline(req);
    Access::DrawTransector(*r);
    // Corners (314, 314), (314, 60), (60, 60), (60, 314), all at shade 128: the edges are 128
    // and each corner, walked by its two edges, is 128 + 128 saturated to white.
    EXPECT_EQ(Lit(*r), SquareOutline(60, 314));
    const RgbaArray2D& bits = Access::VolBits(*r);
    for (const Point& p : std::vector<Point>{{314, 314}, {314, 60}, {60, 60}, {60, 314}}) {
        EXPECT_EQ(bits(p.first, p.second), vt_test::Grey(255));
    }
    EXPECT_EQ(bits(200, 60), vt_test::Grey(128));
    EXPECT_EQ(bits(314, 123), vt_test::Grey(128));
}

TEST(DrawTransector, PerspectiveShrinksASquareBehindThePlane) {
    // Camera at Y = -1000, plane Y = 0, slice Y = 100: T = float(1000 / 1100), corner column
    // 127 T = 115.45 -> 115, so the square spans 187 -+ 115; depth 100 rounds to 100 and the
    // shade is 128 - floor(100 / sqrt 3) = 71.
    RenderRequest req = vt_test::Request(RenderMode::Perspective);
    req.TransectDir = TransectDirection::Alongy;
    req.TransectNo = 100;
    req.CameraPos = -1000;
    req.ProjectionPlane = 0;
    auto r = ForOutline(req);
    Access::DrawTransector(*r);
    EXPECT_EQ(Lit(*r), SquareOutline(72, 302));
    EXPECT_EQ(Access::VolBits(*r)(150, 72), vt_test::Grey(71));
    EXPECT_EQ(Access::VolBits(*r)(72, 72), vt_test::Grey(142));
}

TEST(DrawTransector, NanoSquareUsesHalfSizeAndHalvedSlice) {
    // h = 63; AlongX seen end-on at zero angles: the square collapses onto column
    // 63 + TransectNo / 2 = 68 (11 / 2 = 5), spanning rows 0..126.
    RenderRequest req = vt_test::Request(RenderMode::Orthographic, RenderSize::Nano);
    req.TransectDir = TransectDirection::AlongX;
    req.TransectNo = 11;
    auto r = ForOutline(req);
    Access::DrawTransector(*r);
    std::set<Point> column;
    for (int row = 0; row <= 126; ++row) column.insert({68, row});
    EXPECT_EQ(Lit(*r), column);
}

TEST(DrawTransector, UnknownDirectionDrawsNothing) {
    RenderRequest req = vt_test::Request(RenderMode::Orthographic);
    req.TransectDir = static_cast<TransectDirection>(3);
    auto r = ForOutline(req);
    Access::DrawTransector(*r);
    EXPECT_TRUE(Lit(*r).empty());
}

TEST(DrawTransector, AnaglyphDrawsGreenAndRedOutlinesOnly) {
    RenderRequest req = vt_test::Request(RenderMode::Anaglyph);
    req.TransectDir = TransectDirection::Alongy;
    req.CameraPos = -400;
    req.ProjectionPlane = 0;
    req.StereoFactor = 40;  // eye offset 400 \ -40 = -10
    auto r = ForOutline(req);
    Access::DrawTransector(*r);
    const RgbaArray2D& bits = Access::VolBits(*r);
    // The slice lies on the projection plane, so both eyes see it in place: the two outlines
    // coincide with the orthographic square, at shade 128.
    int green = 0, red = 0;
    for (int c = 0; c <= 374; ++c) {
        for (int row = 0; row <= 374; ++row) {
            EXPECT_EQ(bits(c, row).B, 0);
            green += bits(c, row).G != 0;
            red += bits(c, row).R != 0;
        }
    }
    EXPECT_EQ(green, 1016);
    EXPECT_EQ(red, 1016);
    EXPECT_EQ(bits(60, 200).G, 128);
    EXPECT_EQ(bits(60, 200).R, 128);

    Access::Req(*r).StereoFactor = 0;
    EXPECT_VT_ERROR(Access::DrawTransector(*r), 11);
}

TEST(DrawTransector, AnaglyphEyeOffsetShiftsAnOffPlaneSlice) {
    // Slice at Y = 100, camera Y = -400, plane 0: T = float(400 / 500) = 0.8.
    // Eye offset 400 \ -40 = -10 (eye one at x = -10, eye two at x = +10).
    // Eye one: column offset (127 + 10) * 0.8 - 10 = 99.6 -> 100 and (-127 + 10) * 0.8 - 10 =
    // -103.6 -> -104. Eye two mirrors it: -100 and 104.
    RenderRequest req = vt_test::Request(RenderMode::Anaglyph);
    req.TransectDir = TransectDirection::Alongy;
    req.TransectNo = 100;
    req.CameraPos = -400;
    req.ProjectionPlane = 0;
    req.StereoFactor = 40;
    auto r = ForOutline(req);
    Access::DrawTransector(*r);
    const RgbaArray2D& bits = Access::VolBits(*r);
    EXPECT_NE(bits(187 + 100, 200).G, 0);
    EXPECT_NE(bits(187 - 104, 200).G, 0);
    EXPECT_EQ(bits(187 - 100, 200).G, 0);
    EXPECT_NE(bits(187 - 100, 200).R, 0);
    EXPECT_NE(bits(187 + 104, 200).R, 0);
    EXPECT_EQ(bits(187 + 100, 200).R, 0);
}

TEST(EraseTransector, RestoresTheGreyUnderTheOutlineOfTheCachedRequest) {
    // A finished volumetric picture with its outline saved, then erased through the request
    // remembered as the last Main one.
    RenderRequest req = vt_test::Request(RenderMode::Volumetric);
    req.VolFinal = kTrue;
    req.Transector = kTrue;
    req.TransectDir = TransectDirection::Alongz;
    req.TransectNo = -40;
    req.Theta = 0.4;
    req.Phi = -1.1;
    auto r = WithGreyPicture(374);
    const RgbaArray2D before = Access::VolBits(*r);
    Access::Req(*r) = req;
    Access::DrawTransector(*r);
    ASSERT_FALSE(Access::VolBits(*r) == before);
    Access::LastMainReq(*r) = req;
    Access::EraseTransector(*r);
    RgbaArray2D after = Access::VolBits(*r);
    for (size_t i = 0; i < after.Size(); ++i) after.Data()[i].A = 0;  // the saved greys
    EXPECT_TRUE(after == before);
}

TEST(EraseTransector, AfterAMainTransectTheLastNanoRequestIsErased) {
    // The last Main request is a transect, so the Nano request's outline is the one erased,
    // even on a Main-sized picture.
    RenderRequest nano = vt_test::Request(RenderMode::Volumetric, RenderSize::Nano);
    nano.TransectDir = TransectDirection::Alongy;  // Nano corners: +-63 around 187
    auto r = WithGreyPicture(374);
    RgbaArray2D& bits = Access::VolBits(*r);
    for (int v = 124; v <= 250; ++v) bits(v, 124).A = 1;  // a saved grey of 1 along one edge
    Access::LastMainReq(*r) = vt_test::Request(RenderMode::Transect);
    Access::LastNanoReq(*r) = nano;
    Access::EraseTransector(*r);
    EXPECT_EQ(bits(124, 124), (RGBA{1, 1, 1, 1}));
    EXPECT_EQ(bits(250, 124), (RGBA{1, 1, 1, 1}));
    EXPECT_EQ(bits(187, 124), (RGBA{1, 1, 1, 1}));
}

}  // namespace
