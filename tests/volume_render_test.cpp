// The volumetric picture: ray sums checked against an analytic density, the preview resolution
// rule, normalisation by the running maximum, and the cache of GetRender.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "picture_test_support.h"
#include "test_support.h"

namespace {

using namespace veltara;
using vt_test::Access;
using vt_test::PictureElectron;

RenderRequest Volume(RenderSize size, int16_t quality, VbBool final, double theta = 0,
                     double phi = 0) {
    RenderRequest q = vt_test::Request(RenderMode::Volumetric, size);
    q.VolQuality = quality;
    q.VolFinal = final;
    q.Theta = theta;
    q.Phi = phi;
    return q;
}

/// The red byte of every visible pixel of a surface, rows from the top.
std::vector<uint8_t> Reds(const cMemoryDCEx& s) {
    std::vector<uint8_t> out;
    for (int32_t row = 0; row < s.Height(); ++row)
        for (const RGBA& p : s.GetBits(row)) out.push_back(p.R);
    return out;
}

struct Vec {
    double x, y, z;
};

/// The view basis written out as rotation matrices: about Z by phi, then about X by theta.
Vec Turn(Vec v, double theta, double phi) {
    const Vec a{v.x * std::cos(phi) - v.y * std::sin(phi),
                v.x * std::sin(phi) + v.y * std::cos(phi), v.z};
    return {a.x, a.y * std::cos(theta) + a.z * std::sin(theta),
            -a.y * std::sin(theta) + a.z * std::cos(theta)};
}

/// Independent reference of a finished picture's ray sums: for column offset j and row offset
/// i, the sum over k of density(i R + j C + (k - (Q - 1) / 2) D) / (k + 1), in double.
struct Reference {
    int half, quality;
    Vec col, row, depth;
    PictureElectron::Density density;

    Reference(int res, int q, int16_t radius, double theta, double phi, PictureElectron::Density d)
        : half(res / 2), quality(q), density(std::move(d)) {
        const double pixel = static_cast<float>(static_cast<double>(radius) / half);
        col = Turn({pixel, 0, 0}, theta, phi);
        row = Turn({0, 0, pixel}, theta, phi);
        depth = Turn({0, 2.0 * radius / (q - 1), 0}, theta, phi);
    }
    double Ray(int j, int i) const {
        double sum = 0;
        for (int k = 0; k < quality; ++k) {
            const double t = k - (quality - 1) / 2.0;
            const double x = i * row.x + j * col.x + t * depth.x;
            const double y = i * row.y + j * col.y + t * depth.y;
            const double z = i * row.z + j * col.z + t * depth.z;
            sum += density(x * x, y * y, z * z) / (k + 1);
        }
        return sum;
    }
    /// The largest sum over the pixels that cast rays: the middle row and, for an odd half,
    /// every odd row and odd column offset.
    double Max() const {
        double m = 0;
        for (int j = -half; j <= half; ++j) m = std::max(m, Ray(j, 0));
        for (int i = -half; i <= half; ++i) {
            if (i % 2 == 0) continue;
            for (int j = -half; j <= half; j += 2) m = std::max(m, Ray(j, i));
        }
        return m;
    }
};

/// Checks cast and averaged pixels of a finished picture (odd half) against the reference.
void ExpectMatchesReference(const cMemoryDCEx& s, int offset, const Reference& ref) {
    const double max = ref.Max();
    const int h = ref.half;
    int checked = 0;
    for (int r = 0; r <= 2 * h; r += 6) {
        if (r == h) continue;  // the middle row is averaged over when half is odd
        for (int c = 0; c <= 2 * h; c += 2) {
            const int i = r - h, j = c - h;
            const double expected = 255.0 * ref.Ray(j, i) / max;
            const RGBA p = vt_test::PixelAt(s, offset + c, offset + r);
            ASSERT_NEAR(p.R, expected, 1.0) << "column " << c << " row " << r;
            ASSERT_EQ(p.G, p.R);
            ASSERT_EQ(p.B, p.R);
            if (c + 2 <= 2 * h) {
                // A column between two cast pixels is their mean.
                const double mean = 255.0 * (ref.Ray(j, i) + ref.Ray(j + 2, i)) / 2 / max;
                ASSERT_NEAR(vt_test::PixelAt(s, offset + c + 1, offset + r).R, mean, 1.0);
            }
            ++checked;
        }
    }
    EXPECT_GT(checked, 500);
}

TEST(RenderVolume, FinishedPictureIsTheDepthWeightedRaySumOfTheDensity) {
    vt_test::FixedClock clock(100000);
    // The radial view asks the electron's radial function; the fake gives r^2 e^(-r) there.
    auto radial = [](double x2, double y2, double z2) {
        const double r2 = x2 + y2 + z2;
        return r2 * std::exp(-std::sqrt(r2));
    };
    struct Case {
        ViewMode view;
        RenderSize size;
        int16_t quality, radius;
        double theta, phi;
    };
    const Case cases[] = {{ViewMode::PDF, RenderSize::Nano, 7, 8, 0.0, 0.0},
                          {ViewMode::PDF, RenderSize::Nano, 10, 8, 0.35, -0.8},
                          {ViewMode::PDF, RenderSize::Nano, 5, 8, 2.0, 1.0},
                          {ViewMode::DRPDF, RenderSize::Main, 9, 12, 0.6, 0.25}};
    for (const Case& c : cases) {
        OrbitalRenderer r(c.view);
        Access::Electron(r).reset(new PictureElectron(PictureElectron::OneS, radial));
        Access::SetupRec(r).AtomRadius = c.radius;
        const RenderDCinfo info = r.GetRender(Volume(c.size, c.quality, kTrue, c.theta, c.phi));
        const bool main = c.size == RenderSize::Main;
        ExpectMatchesReference(
            vt_test::Surface(main ? info.MainHDC : info.NanoHDC), main ? 60 : 0,
            Reference(main ? 255 : 127, c.quality, c.radius, c.theta, c.phi,
                      c.view == ViewMode::PDF ? PictureElectron::Density(PictureElectron::OneS)
                                              : radial));
    }
}

TEST(RenderVolume, FinishedMainPictureCoversExactlyTheSquareFrom60To314) {
    vt_test::FixedClock clock(100000);
    auto r = vt_test::MakeRenderer(new PictureElectron([](double, double, double) { return 1.0; }));
    const cMemoryDCEx& s =
        vt_test::Surface(r->GetRender(Volume(RenderSize::Main, 6, kTrue)).MainHDC);
    for (int row = 0; row < 375; ++row) {
        const std::vector<RGBA> line = s.GetBits(row);
        for (int col = 0; col < 375; ++col) {
            const bool inside = row >= 60 && row <= 314 && col >= 60 && col <= 314;
            ASSERT_EQ(line[col], vt_test::Grey(inside ? 255 : 0)) << col << "," << row;
        }
    }
}

/// mVolFactor after one preview at a fixed clock (elapsed 0 counts as 50 ms, so the speed is 1
/// and the factor becomes (Res / Quality + old) / 2).
float FactorAfterPreview(float factor, int16_t quality, RenderSize size) {
    auto r = vt_test::MakeRenderer(new PictureElectron());
    Access::VolFactor(*r) = factor;
    r->GetRender(Volume(size, quality, kFalse));
    return Access::VolFactor(*r);
}

TEST(RenderVolume, PreviewResolutionFollowsTheFactorCappedRaisedAndMadeOdd) {
    vt_test::FixedClock clock(100000);
    struct Case {
        float factor;
        int16_t quality;
        RenderSize size;
        int res;  // worked by hand: Int(quality * factor), capped, at least 16, odd
    };
    const Case cases[] = {
        {9.0f, 5, RenderSize::Nano, 45},
        {9.0f, 10, RenderSize::Nano, 89},
        {9.0f, 0, RenderSize::Main, 45},  // quality 0 means 5
        {1.0f, 5, RenderSize::Main, 15},  // 5 -> 16 -> 15
        {4.0f, 6, RenderSize::Nano, 23},  // 24 is even
        {100.0f, 10, RenderSize::Main, 255},
        {100.0f, 10, RenderSize::Nano, 127},
        {30.0f, 10, static_cast<RenderSize>(200), 127},
    };
    for (const Case& c : cases) {
        const int q = c.quality == 0 ? 5 : c.quality;
        const auto expected = static_cast<float>((c.res / static_cast<double>(q) + c.factor) / 2);
        EXPECT_EQ(FactorAfterPreview(c.factor, c.quality, c.size), expected)
            << c.factor << " x " << c.quality;
    }
}

TEST(RenderVolume, PreviewFactorFollowsTheFrameTime) {
    vt_test::FixedClock clock(100000);
    auto* fake = new PictureElectron();
    bool first = true;
    fake->onBatch = [&] {
        if (first) clock.Advance(200);  // one 200 ms frame: speed sqrt(50 / 200) = 0.5
        first = false;
    };
    auto r = vt_test::MakeRenderer(fake);
    r->GetRender(Volume(RenderSize::Nano, 5, kFalse));
    EXPECT_EQ(Access::VolFactor(*r), 6.75f);  // (45 * 0.5 / 5 + 9) / 2

    // A finished picture leaves the factor alone.
    first = true;
    r->GetRender(Volume(RenderSize::Nano, 5, kTrue, 1.0));
    EXPECT_EQ(Access::VolFactor(*r), 6.75f);

    // A clock running backwards makes the speed the root of a negative number.
    fake->onBatch = [&] { clock.Advance(-10); };
    EXPECT_VT_ERROR(r->GetRender(Volume(RenderSize::Nano, 5, kFalse, 2.0)), 5);
}

TEST(RenderVolume, QualityOutsideItsRangeFails) {
    vt_test::FixedClock clock(100000);
    struct Case {
        int16_t quality;
        int error;
    };
    const Case cases[] = {{4, 9}, {11, 9}, {1, 9}, {255, 9}, {-1, 6}, {256, 6}};
    for (const Case& c : cases) {
        auto* fake = new PictureElectron();
        auto r = vt_test::MakeRenderer(fake);
        const RenderRequest q = Volume(RenderSize::Main, c.quality, kTrue);
        EXPECT_VT_ERROR(r->GetRender(q), c.error);
        EXPECT_EQ(fake->calls, 0);
    }
}

TEST(RenderVolume, AllZeroDensityGivesABlackPicture) {
    vt_test::FixedClock clock(100000);
    auto r = vt_test::MakeRenderer(new PictureElectron([](double, double, double) { return 0.0; }));
    const cMemoryDCEx& s =
        vt_test::Surface(r->GetRender(Volume(RenderSize::Nano, 7, kTrue)).NanoHDC);
    EXPECT_EQ(Reds(s), std::vector<uint8_t>(127 * 127, 0));
    EXPECT_EQ(Access::VolMax(*r)[2], 0.0f);
}

TEST(RenderVolume, DimFrameAfterABrightOneIsNormalisedByTheBrightMaximum) {
    vt_test::FixedClock clock(100000);
    double amplitude = 1.0;
    auto r = vt_test::MakeRenderer(new PictureElectron([&](double x2, double y2, double z2) {
        return amplitude * PictureElectron::OneS(x2, y2, z2);
    }));
    auto picture = [&](const RenderDCinfo& info) { return Reds(vt_test::Surface(info.NanoHDC)); };
    // The 1S density is the same in every direction, so a turned view (which the cache does
    // not serve) sees the same rays.
    const std::vector<uint8_t> bright = picture(r->GetRender(Volume(RenderSize::Nano, 6, kTrue)));
    amplitude = 0.25;
    const std::vector<uint8_t> dim = picture(r->GetRender(Volume(RenderSize::Nano, 6, kTrue, 0.5)));
    int brightest = 0;
    for (size_t i = 0; i < bright.size(); ++i) {
        ASSERT_NEAR(dim[i], bright[i] * 0.25, 1.0) << i;
        brightest = std::max<int>(brightest, bright[i]);
    }
    EXPECT_GT(brightest, 240);
    // Another quality level has its own maximum: the dim orbital is bright there.
    const std::vector<uint8_t> other =
        picture(r->GetRender(Volume(RenderSize::Nano, 7, kTrue, 0.5)));
    EXPECT_GT(*std::max_element(other.begin(), other.end()), 150);
}

// --- The cache of GetRender ---------------------------------------------------------------

struct CacheFixture {
    vt_test::FixedClock clock{100000};
    PictureElectron* electron = new PictureElectron();
    std::unique_ptr<cOrbitalPDF> renderer = vt_test::MakeRenderer(electron);

    CacheFixture() {
        Access::ProbMatrix(*renderer).Reset();
        Access::Dots(*renderer) = {{20, 0, -126, 0}};
        Access::LastDot(*renderer) = 0;
    }
    /// Density evaluations made by one request.
    int64_t Calls(const RenderRequest& q) {
        const int64_t before = electron->calls;
        renderer->GetRender(q);
        return electron->calls - before;
    }
};

TEST(VolumeCache, ServesAFinishedPictureWithTheSameAnglesAndSize) {
    struct Case {
        const char* what;
        RenderRequest first, second;
        bool served;
    };
    RenderRequest finalMain = Volume(RenderSize::Main, 6, kTrue, 0.3, 0.4);
    RenderRequest other = finalMain;
    other.VolQuality = 9;  // quality, camera and flags are not compared
    other.CameraPos = 77;
    other.VolFinal = kFalse;
    RenderRequest preview = Volume(RenderSize::Main, 6, kFalse, 0.3, 0.4);
    RenderRequest turned = Volume(RenderSize::Main, 6, kTrue, 0.3, std::nextafter(0.4, 1.0));
    RenderRequest nano = Volume(RenderSize::Nano, 6, kTrue, 0.3, 0.4);
    const Case cases[] = {
        {"same", finalMain, finalMain, true},
        {"other fields", finalMain, other, true},
        {"cached preview", preview, finalMain, false},
        {"angle", finalMain, turned, false},
        {"size", finalMain, nano, false},
    };
    for (const Case& c : cases) {
        CacheFixture f;
        EXPECT_GT(f.Calls(c.first), 0) << c.what;
        EXPECT_EQ(f.Calls(c.second) == 0, c.served) << c.what;
    }
}

TEST(VolumeCache, AnyNonZeroVolFinalOfTheCachedRequestCounts) {
    // VolFinal 1 is not exactly true, so that request is drawn as a preview (were it not
    // served) but, once cached, still counts as finished.
    CacheFixture f;
    const RenderRequest finalMain = Volume(RenderSize::Main, 6, kTrue, 0.3, 0.4);
    RenderRequest almost = finalMain;
    almost.VolFinal = 1;
    EXPECT_GT(f.Calls(finalMain), 0);
    EXPECT_EQ(f.Calls(almost), 0);
    EXPECT_EQ(f.Calls(finalMain), 0);
    // Without a cached picture the same request is computed at preview resolution, but as it
    // is not 0 it does not adapt the preview factor.
    CacheFixture g;
    // Res Int(6 x 9) = 54 -> 53, Half 26: the middle row's 53 rays and rows 2, 4, .. 26 of
    // 27 rays each, 6 samples a ray.
    EXPECT_EQ(g.Calls(almost), (53 + 13 * 27) * 6);
    EXPECT_EQ(Access::VolFactor(*g.renderer), 9.0f);
}

TEST(VolumeCache, MovingTheTransectorGivesTheFreshPictureWithoutRecomputing) {
    CacheFixture f;
    RenderRequest q = Volume(RenderSize::Main, 7, kTrue, 0.9, -0.3);
    q.Transector = kTrue;
    q.TransectDir = TransectDirection::Alongz;
    q.TransectNo = 20;
    f.Calls(q);
    q.TransectNo = -45;
    q.TransectDir = TransectDirection::AlongX;
    ASSERT_EQ(f.Calls(q), 0);
    const std::vector<uint8_t> served = Reds(vt_test::Surface(Access::DCInfo(*f.renderer).MainHDC));
    CacheFixture fresh;
    fresh.Calls(q);
    EXPECT_EQ(served, Reds(vt_test::Surface(Access::DCInfo(*fresh.renderer).MainHDC)));

    // Switching the outline off erases it: the picture of a request without one.
    q.Transector = kFalse;
    ASSERT_EQ(f.Calls(q), 0);
    CacheFixture plain;
    plain.Calls(q);
    EXPECT_EQ(Reds(vt_test::Surface(Access::DCInfo(*f.renderer).MainHDC)),
              Reds(vt_test::Surface(Access::DCInfo(*plain.renderer).MainHDC)));
}

TEST(VolumeCache, ANanoDotFrameInBetweenIsWhatTheCachePushesBack) {
    // The one pixel array serves every mode: after a Nano dot frame the cached Main picture
    // is served from it, and the Main surface receives the dot frame's pixels.
    CacheFixture f;
    const RenderRequest q = Volume(RenderSize::Main, 5, kTrue, 0.2, 0.1);
    f.Calls(q);
    // The dot (20, 0, -126) lands at Nano column 63 + 10, row 0: element 73 of the array.
    f.Calls(vt_test::Request(RenderMode::Orthographic, RenderSize::Nano));
    EXPECT_EQ(f.Calls(q), 0);
    EXPECT_EQ(Access::MaxPixel(*f.renderer), 126);
    const cMemoryDCEx& s = vt_test::Surface(Access::DCInfo(*f.renderer).MainHDC);
    // Array memory goes in from the bottom row up, 375 elements a row.
    EXPECT_EQ(vt_test::PixelAt(s, 73, 374), vt_test::Grey(128));
}

TEST(VolumeCache, AfterAMainTransectTheLastNanoRequestIsTheCachedOne) {
    {
        // A finished Nano picture, then a Main transect: the Nano picture is served again.
        CacheFixture f;
        const RenderRequest nano = Volume(RenderSize::Nano, 5, kTrue, 0.7, 0.7);
        f.Calls(nano);
        f.Calls(vt_test::Request(RenderMode::Transect, RenderSize::Main));
        EXPECT_EQ(f.Calls(nano), 0);
    }
    {
        // A finished Main picture, a finished Nano one, then a Main transect: the same Main
        // request is computed anew, because the Nano request is compared (its size differs).
        CacheFixture f;
        const RenderRequest main = Volume(RenderSize::Main, 5, kTrue, 0.7, 0.7);
        f.Calls(main);
        f.Calls(Volume(RenderSize::Nano, 5, kTrue, 0.7, 0.7));
        f.Calls(vt_test::Request(RenderMode::Transect, RenderSize::Main));
        EXPECT_GT(f.Calls(main), 0);
    }
}

TEST(GetRender, FrameCounterSaturates) {
    CacheFixture f;
    Access::Stats(*f.renderer).FramesRendered = 2147483646;
    f.Calls(vt_test::Request(RenderMode::Orthographic));
    EXPECT_EQ(f.renderer->GetStats().FramesRendered, 2147483647);
    f.Calls(vt_test::Request(RenderMode::Orthographic));
    EXPECT_EQ(f.renderer->GetStats().FramesRendered, 2147483647);
}

TEST(GetRender, RemembersTheRequestByItsSizeAndReturnsBothHandles) {
    CacheFixture f;
    RenderRequest main = vt_test::Request(RenderMode::Orthographic);
    main.Theta = 1.5;
    RenderRequest nano = vt_test::Request(RenderMode::Transect, RenderSize::Nano);
    nano.TransectNo = 3;
    const RenderDCinfo a = f.renderer->GetRender(main);
    const RenderDCinfo b = f.renderer->GetRender(nano);
    EXPECT_EQ(Access::LastMainReq(*f.renderer).Theta, 1.5);
    EXPECT_EQ(Access::LastNanoReq(*f.renderer).TransectNo, 3);
    EXPECT_EQ(b.MainHDC, a.MainHDC);
    EXPECT_NE(b.NanoHDC, 0);
    // A mode outside the enumeration draws dots.
    RenderRequest odd = vt_test::Request(static_cast<RenderMode>(17), RenderSize::Nano);
    EXPECT_EQ(f.renderer->GetRender(odd).NanoHDC, b.NanoHDC);
    EXPECT_EQ(Access::MaxPixel(*f.renderer), 126);
    EXPECT_EQ(Access::VolBits(*f.renderer)(73, 0), vt_test::Grey(128));
}

}  // namespace
