// Dot projection: placement, shading, colours and the OR rule of the three projection modes.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "picture_test_support.h"
#include "support/convert.h"
#include "support/modMaths.h"
#include "test_support.h"

namespace {

using namespace veltara;
using vt_test::Access;

/// Renders one dot frame and returns the renderer for inspection.
std::unique_ptr<cOrbitalPDF> Render(std::vector<PointArray> dots, const RenderRequest& req,
                                    double depthScale = 0.5) {
    auto r = vt_test::MakeRenderer(nullptr, std::move(dots), depthScale);
    r->GetRender(req);
    return r;
}

int CountLit(const RgbaArray2D& bits) {
    int n = 0;
    for (size_t i = 0; i < bits.Size(); ++i) {
        const RGBA p = bits.Data()[i];
        n += (p.B | p.G | p.R) != 0;
    }
    return n;
}

TEST(RenderDots, OrthographicAtZeroAnglesPlacesXAcrossZUpAndShadesByY) {
    vt_test::FixedClock clock(100000);
    struct Case {
        PointArray dot;
        int col, row;
        uint8_t grey;  // 128 - Y * 0.5, rounded half to even
    };
    const Case cases[] = {
        {{10, 20, -30, 99}, 197, 157, 118},
        {{-127, -127, 127, 5}, 60, 314, 192},  // 128 + 63.5 = 191.5 -> 192
        {{0, 3, 0, 5}, 187, 187, 126},         // 126.5 -> 126
        {{187, 0, 0, 5}, 374, 187, 128},       // the last accepted column
        {{-187, 0, 0, 5}, 0, 187, 128},
        {{0, 0, 187, 5}, 187, 374, 128},
    };
    for (const Case& c : cases) {
        auto r = Render({c.dot}, vt_test::Request(RenderMode::Orthographic));
        const RgbaArray2D& bits = Access::VolBits(*r);
        ASSERT_EQ(Access::MaxPixel(*r), 374);
        EXPECT_EQ(bits(c.col, c.row), vt_test::Grey(c.grey)) << c.dot.X << "," << c.dot.Z;
        EXPECT_EQ(CountLit(bits), 1);
        // The surface shows the array bottom-up: array row j is picture row 374 - j.
        const cMemoryDCEx& s = vt_test::Surface(Access::DCInfo(*r).MainHDC);
        EXPECT_EQ(vt_test::PixelAt(s, c.col, 374 - c.row), vt_test::Grey(c.grey));
    }
    // Offsets beyond the frame are not drawn.
    for (const PointArray dot : {PointArray{188, 0, 0}, PointArray{-188, 0, 0},
                                 PointArray{0, 0, 188}, PointArray{0, 0, -188}}) {
        auto r = Render({dot}, vt_test::Request(RenderMode::Orthographic));
        EXPECT_EQ(CountLit(Access::VolBits(*r)), 0) << dot.X << "," << dot.Z;
    }
}

TEST(RenderDots, ViewAnglesTurnTheCloud) {
    vt_test::FixedClock clock(100000);
    // Phi = pi/2 alone: X' = Y, Z' = Z, depth = -X. Dot (10, 20, 30) -> column 207, row 217,
    // shade 128 + 10 * 0.5 = 133.
    RenderRequest req = vt_test::Request(RenderMode::Orthographic);
    req.Phi = M_PI / 2;
    auto r = Render({{10, 20, 30, 0}}, req);
    EXPECT_EQ(Access::VolBits(*r)(207, 217), vt_test::Grey(133));
    // Theta = pi/2 alone: X' = X, Z' = -Y, depth = Z. Dot (10, 20, 30) -> (197, 167), shade
    // 128 - 15 = 113.
    req.Phi = 0;
    req.Theta = M_PI / 2;
    r = Render({{10, 20, 30, 0}}, req);
    EXPECT_EQ(Access::VolBits(*r)(197, 167), vt_test::Grey(113));
}

TEST(RenderDots, OverlappingDotsCombineByBitwiseOr) {
    vt_test::FixedClock clock(100000);
    // Shades 128 - 32 = 96 and 128 - 80 = 48 on one pixel: 96 | 48 = 112, not 96 or 144.
    auto r =
        Render({{5, 32, 5, 0}, {5, 80, 5, 0}}, vt_test::Request(RenderMode::Orthographic), 1.0);
    EXPECT_EQ(Access::VolBits(*r)(192, 192), vt_test::Grey(112));
}

TEST(RenderDots, ProbabilityLevelsColourDotsFromRedToGreen) {
    vt_test::FixedClock clock(100000);
    struct Case {
        uint8_t p;
        RGBA expected;  // shade 100: G = P * 100 \ 255, R = (255 - P) * 100 \ 255
    };
    const Case cases[] = {
        {255, {0, 100, 0, 0}},
        {0, {0, 0, 100, 0}},
        {128, {0, 50, 49, 0}},
    };
    for (const Case& c : cases) {
        RenderRequest req = vt_test::Request(RenderMode::Orthographic);
        req.ShowProbLevelOnDots = kTrue;
        auto r = Render({{0, 28, 0, c.p}}, req, 1.0);
        EXPECT_EQ(Access::VolBits(*r)(187, 187), c.expected) << int{c.p};
    }
}

TEST(RenderDots, NanoHalvesOffsetsTowardsZero) {
    vt_test::FixedClock clock(100000);
    RenderRequest req = vt_test::Request(RenderMode::Orthographic, RenderSize::Nano);
    // (10, 0, -7): offsets 10 \ 2 = 5 and -7 \ 2 = -3; (127, 0, -127): 63 and -63.
    auto r = Render({{10, 0, -7, 0}, {127, 0, -127, 0}}, req);
    ASSERT_EQ(Access::MaxPixel(*r), 126);
    const RgbaArray2D& bits = Access::VolBits(*r);
    EXPECT_EQ(bits.Cols(), 127);
    EXPECT_EQ(bits(68, 60), vt_test::Grey(128));
    EXPECT_EQ(bits(126, 0), vt_test::Grey(128));
    EXPECT_EQ(CountLit(bits), 2);
    EXPECT_NE(Access::DCInfo(*r).NanoHDC, 0);
    EXPECT_EQ(Access::DCInfo(*r).MainHDC, 0);
}

TEST(RenderDots, PerspectiveProjectsOntoThePlaneWithSinglePrecisionScale) {
    vt_test::FixedClock clock(100000);
    RenderRequest req = vt_test::Request(RenderMode::Perspective);
    req.CameraPos = -300;
    req.ProjectionPlane = 0;
    // (30, 100, 0): T = 300 / 400 = 0.75, X = 22.5 -> 22 (half to even); depth kept.
    auto r = Render({{30, 100, 0, 0}}, req);
    EXPECT_EQ(Access::VolBits(*r)(209, 187), vt_test::Grey(78));
    // Nano: the point halved first, (15, 50, 0): T = float(300 / 350), X = 12.86 -> 13.
    req.Size = RenderSize::Nano;
    r = Render({{30, 100, 0, 0}}, req);
    EXPECT_EQ(Access::VolBits(*r)(76, 63), vt_test::Grey(78));
}

TEST(RenderDots, PerspectiveKeepsThePreviousPositionWhenNothingIsProjected) {
    vt_test::FixedClock clock(100000);
    RenderRequest req = vt_test::Request(RenderMode::Perspective);
    req.CameraPos = 0;
    req.ProjectionPlane = 100;
    // First dot at the camera's depth: not projected, drawn at the start position (centre).
    // Second at depth 50: T = 2, (20, 50, 10) -> (40, 20), shade 103. Third again at the
    // camera's depth: not projected, drawn on top of the second (shades 103 and 128 OR).
    auto r = Render({{7, 0, 7, 0}, {20, 50, 10, 0}, {9, 0, 9, 0}}, req, 0.5);
    const RgbaArray2D& bits = Access::VolBits(*r);
    EXPECT_EQ(bits(187, 187), vt_test::Grey(128));
    EXPECT_EQ(bits(227, 207), vt_test::Grey(103 | 128));
    EXPECT_EQ(CountLit(bits), 2);
}

TEST(RenderDots, AnaglyphDrawsEyeOneGreenAndEyeTwoRedWithRoundedOffset) {
    vt_test::FixedClock clock(100000);
    RenderRequest req = vt_test::Request(RenderMode::Anaglyph);
    req.CameraPos = -200;
    req.ProjectionPlane = 0;
    req.StereoFactor = -40;  // e = 200 / 40 = 5
    // (0, 100, 0): T = float(200 / 300); eye one (+5): -5 T + 5 = 1.67 -> 2; eye two -2.
    auto r = Render({{0, 100, 0, 0}}, req);
    const RgbaArray2D& bits = Access::VolBits(*r);
    EXPECT_EQ(bits(189, 187), (RGBA{0, 78, 0, 0}));
    EXPECT_EQ(bits(185, 187), (RGBA{0, 0, 78, 0}));
    EXPECT_EQ(CountLit(bits), 2);

    // e = 5 / 2 = 2.5 rounds to 2: (0, 5, 0) with camera -5, plane 0: T = 0.5, eye one
    // -2 * 0.5 + 2 = 1, eye two -1 (with e = 3 they would land on 2 and -2).
    req.CameraPos = -5;
    req.StereoFactor = -2;
    r = Render({{0, 5, 0, 0}}, req);
    EXPECT_NE(Access::VolBits(*r)(188, 187).G, 0);
    EXPECT_NE(Access::VolBits(*r)(186, 187).R, 0);
}

TEST(RenderDots, AnaglyphHasNoBlue) {
    vt_test::FixedClock clock(100000);
    std::vector<PointArray> dots;
    for (int i = 0; i < 2000; ++i) {
        dots.push_back({static_cast<int16_t>((i * 37) % 255 - 127),
                        static_cast<int16_t>((i * 91) % 255 - 127),
                        static_cast<int16_t>((i * 53) % 255 - 127), static_cast<uint8_t>(i)});
    }
    RenderRequest req = vt_test::Request(RenderMode::Anaglyph);
    req.Theta = 0.7;
    req.Phi = 0.2;
    req.CameraPos = -600;
    req.ProjectionPlane = 0;
    req.StereoFactor = 30;
    req.ShowProbLevelOnDots = kTrue;  // not consulted by anaglyphs
    req.Transector = kTrue;
    auto r = Render(dots, req, 127.0 / (127.0 * std::sqrt(3.0)));
    const RgbaArray2D& bits = Access::VolBits(*r);
    int green = 0, red = 0;
    for (size_t i = 0; i < bits.Size(); ++i) {
        EXPECT_EQ(bits.Data()[i].B, 0);
        green += bits.Data()[i].G != 0;
        red += bits.Data()[i].R != 0;
    }
    EXPECT_GT(green, 500);
    EXPECT_GT(red, 500);
}

TEST(RenderDots, AnaglyphWithoutStereoFactorOrAShadeWithoutAByteFails) {
    vt_test::FixedClock clock(100000);
    RenderRequest req = vt_test::Request(RenderMode::Anaglyph);
    req.CameraPos = -200;
    EXPECT_VT_ERROR(vt_test::MakeRenderer(nullptr, {{0, 0, 0, 0}})->GetRender(req), 11);
    // 128 - (-200) * 1 = 328 has no byte.
    auto r = vt_test::MakeRenderer(nullptr, {{0, -200, 0, 0}}, 1.0);
    EXPECT_VT_ERROR(r->GetRender(vt_test::Request(RenderMode::Orthographic)), 6);
}

TEST(RenderDots, OtherSizesDrawNothingAndKeepTheHandles) {
    vt_test::FixedClock clock(100000);
    auto r = vt_test::MakeRenderer(nullptr, {{1, 1, 1, 1}});
    const RenderDCinfo first = r->GetRender(vt_test::Request(RenderMode::Orthographic));
    const RgbaArray2D picture = Access::VolBits(*r);
    RenderRequest odd = vt_test::Request(RenderMode::Perspective);
    odd.Size = static_cast<RenderSize>(200);
    const RenderDCinfo second = r->GetRender(odd);
    EXPECT_EQ(second.MainHDC, first.MainHDC);
    EXPECT_EQ(second.NanoHDC, first.NanoHDC);
    EXPECT_TRUE(Access::VolBits(*r) == picture);
    EXPECT_EQ(Access::MaxPixel(*r), 374);
}

TEST(RenderDots, TransectorIsDrawnOnTopOfTheDots) {
    vt_test::FixedClock clock(100000);
    RenderRequest req = vt_test::Request(RenderMode::Orthographic);
    req.Transector = kTrue;
    req.TransectDir = TransectDirection::Alongy;
    // A dot of shade 100 under the outline's edge: the white outline adds 128 -> 228.
    auto r = Render({{0, 56, 127, 0}}, req);
    EXPECT_EQ(Access::VolBits(*r)(187, 314), vt_test::Grey(228));
}

TEST(RenderDots, BothViewsDrawTheSameCloudAlike) {
    vt_test::FixedClock clock(100000);
    const std::vector<PointArray> dots{{1, 2, 3, 4}, {-50, 20, 90, 200}, {100, -100, 0, 9}};
    RenderRequest req = vt_test::Request(RenderMode::Orthographic);
    req.Theta = 0.3;
    req.ShowProbLevelOnDots = kTrue;
    auto a = vt_test::MakeRenderer(nullptr, dots);
    cOrbitalDRPDF b;
    Access::Dots(b) = dots;
    Access::LastDot(b) = 2;
    Access::DotDepthScale(b) = 0.5;
    a->GetRender(req);
    b.GetRender(req);
    EXPECT_TRUE(Access::VolBits(*a) == Access::VolBits(b));
}

/// A plain reference of the central projections: every dot through modMaths::ProjectOntoPlane
/// with whole COORDlong results, placed and shaded by the written rules.
RgbaArray2D ReferenceFrame(const std::vector<PointArray>& dots, const RenderRequest& q,
                           double scale) {
    const bool nano = q.Size == RenderSize::Nano;
    const int centre = nano ? 63 : 187;
    RgbaArray2D out(2 * centre + 1, 2 * centre + 1);
    const double cT = std::cos(q.Theta), sT = std::sin(q.Theta);
    const double cP = std::cos(q.Phi), sP = std::sin(q.Phi);
    int32_t e = 0;
    if (q.Mode == RenderMode::Anaglyph) {
        e = ToInt32(std::abs(q.ProjectionPlane - q.CameraPos) /
                    -static_cast<double>(q.StereoFactor));
    }
    COORDlong one{}, two{}, plain{};
    auto put = [&](const COORDlong& at, auto&& write) {
        if (std::abs(at.X) <= centre && std::abs(at.Z) <= centre)
            write(out(centre + at.X, centre + at.Z));
    };
    for (const PointArray& dot : dots) {
        const double xr = dot.Z * (sT * sP) + dot.X * cP + dot.Y * (cT * sP);
        const double zr = dot.Z * cT - dot.Y * sT;
        const double d = dot.Z * (sT * cP) - sP * dot.X + dot.Y * (cT * cP);
        const double div = nano ? 2.0 : 1.0;
        const COORDdouble p{xr / div, d / div, zr / div};
        const uint8_t s = ToByte(128 - d * scale);
        if (q.Mode == RenderMode::Anaglyph) {
            modMaths::ProjectOntoPlane({e, q.CameraPos, 0}, p, one, q.ProjectionPlane);
            modMaths::ProjectOntoPlane({-e, q.CameraPos, 0}, p, two, q.ProjectionPlane);
            put(one, [&](RGBA& px) { px.G |= s; });
            put(two, [&](RGBA& px) { px.R |= s; });
        } else {
            modMaths::ProjectOntoPlane({0, q.CameraPos, 0}, p, plain, q.ProjectionPlane);
            put(plain, [&](RGBA& px) { px.B = px.G = px.R = static_cast<uint8_t>(px.G | s); });
        }
    }
    return out;
}

TEST(RenderDots, CentralProjectionsMatchAPlainReferenceDotForDot) {
    vt_test::FixedClock clock(100000);
    std::vector<PointArray> dots;
    for (int i = 0; i < 5000; ++i) {
        dots.push_back({static_cast<int16_t>((i * 37) % 255 - 127),
                        static_cast<int16_t>((i * 91) % 255 - 127),
                        static_cast<int16_t>((i * 53) % 255 - 127), 0});
    }
    const double scale = 127.0 / (127.0 * std::sqrt(3.0));
    int compared = 0;
    for (const RenderMode mode : {RenderMode::Perspective, RenderMode::Anaglyph}) {
        for (const RenderSize size : {RenderSize::Main, RenderSize::Nano}) {
            for (const int16_t camera : {int16_t{-150}, int16_t{-400}, int16_t{0}, int16_t{60}}) {
                RenderRequest q = vt_test::Request(mode, size);
                q.Theta = 0.25 * camera;
                q.Phi = -0.01 * camera;
                q.CameraPos = camera;
                q.ProjectionPlane = static_cast<int16_t>(camera == 60 ? -100 : 0);
                q.StereoFactor = -25;
                auto r = Render(dots, q, scale);
                EXPECT_TRUE(Access::VolBits(*r) == ReferenceFrame(dots, q, scale))
                    << static_cast<int>(mode) << " " << static_cast<int>(size) << " " << camera;
                ++compared;
            }
        }
    }
    EXPECT_EQ(compared, 16);
}

}  // namespace
