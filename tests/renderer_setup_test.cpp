// The renderer's setup, statistics and re-fills through the collection, real orbitals only:
// one table of edge cases and error numbers.
#include <array>
#include <cmath>

#include "electron/catalogue.h"
#include "picture_test_support.h"

namespace {

using namespace veltara;
using vt_test::Defaults;

TEST(OrbitalRenderer, EdgeCases) {
    vt_test::FixedClock clock(100000);
    const RenderRequest dots = vt_test::Request(RenderMode::Orthographic, RenderSize::Main);
    struct Case {
        const char* what;
        OrbitalSetup setup;
        int32_t clock;
        int addError;                                      // of Add; 0: added as slot 0
        void (*then)(cOrbitalCol&, const RenderRequest&);  // further checks on slot 0
    };
    const Case cases[] = {
        {"a fixed clock: every time 0 ms, the rate from 1 ms", Defaults(9, ViewMode::PDF, 3000),
         100000, 0,
         [](cOrbitalCol& col, const RenderRequest&) {
             const OrbitalStats s = col.GetStats(0);
             EXPECT_EQ((std::array{s.TotalSamples, s.CalcTime, s.CalcRate, s.DotTime, s.DotTarget}),
                       (std::array{2097152, 1, 2097152, 0, 3000}));
             EXPECT_EQ(s.DotTotal, static_cast<int32_t>(col.Orbital(0).Dots().size()));
         }},
        {"the same clock gives the same cloud", Defaults(9, ViewMode::PDF, 3000), 100000, 0,
         [](cOrbitalCol& col, const RenderRequest&) {
             const int16_t twin = col.Add(Defaults(9, ViewMode::PDF, 3000));
             EXPECT_TRUE(std::ranges::equal(col.Orbital(0).Dots(), col.Orbital(twin).Dots()));
         }},
        {"a target beyond 16 bits raises 6 and changes nothing", Defaults(9, ViewMode::PDF, 3000),
         100000, 0,
         [](cOrbitalCol& col, const RenderRequest&) {
             EXPECT_VT_ERROR(col.ReFillDotMatrix(int16_t{0}, 200, 40000), 6);
             EXPECT_EQ(col.Orbital(0).SetupRecord().DotTarget, 3000);
             EXPECT_EQ(col.Orbital(0).SetupRecord().DotThreshold, 30);
         }},
        {"threshold 255: no dot can be kept, the cloud stays", Defaults(9, ViewMode::PDF, 3000),
         100000, 0,
         [](cOrbitalCol& col, const RenderRequest&) {
             const std::vector<PointArray> before(col.Orbital(0).Dots().begin(),
                                                  col.Orbital(0).Dots().end());
             EXPECT_EQ(col.ReFillDotMatrix(int16_t{0}, 255, 3000), 0);
             EXPECT_TRUE(std::ranges::equal(col.Orbital(0).Dots(), before));
         }},
        {"target 0: one dot at the origin, and the render still walks the old cloud's length",
         Defaults(9, ViewMode::PDF, 3000), 100000, 0,
         [](cOrbitalCol& col, const RenderRequest& q) {
             EXPECT_EQ(col.ReFillDotMatrix(int16_t{0}, 30, 0), 0);
             EXPECT_TRUE(std::ranges::equal(col.Orbital(0).Dots(), std::vector<PointArray>(1)));
             EXPECT_EQ(col.GetStats(0).DotTotal, 1);
             EXPECT_VT_ERROR(col.GetRender(0, q), 9);
             EXPECT_EQ(col.GetStats(0).FramesRendered, 1);  // counted before the failure
         }},
        {"radius 1000: only the nucleus is above 0, a cloud at the origin has no depth scale",
         {1000, 20000, 30, 0, 0, ViewMode::PDF},
         100000,
         11,
         nullptr},
        {"a clock below 32768 ms seeds 0, a stuck generator: no first cloud",
         Defaults(9, ViewMode::PDF), 30000, 9, nullptr},
        {"no orbital past the catalogue: the renderer has no electron", Defaults(0, ViewMode::PDF), 100000, 91,
         nullptr},
        {"2S at its defaults: the outer shell (beyond the node at 2 Bohr, 31.75 grid steps) peaks "
         "at 4 e^-4 / 4 of the centre, below the threshold 30 of 255: no dot there",
         Defaults(1, ViewMode::PDF), 100000, 0,
         [](cOrbitalCol& col, const RenderRequest&) {
             for (const PointArray& d : col.Orbital(0).Dots()) {
                 ASSERT_LT(std::hypot(d.X, d.Y, d.Z), 31.75);
             }
         }},
        {"the first draw 48271 x 820 (the seed of 26869760 ms) = 39582220 lies just below the "
         "acceptance of the nucleus' level 255, 39582220.72 rounded to 39582221: the origin is "
         "the first dot",
         {2, 7501, 29, 0, 0, ViewMode::PDF},
         26869760,
         0,
         [](cOrbitalCol& col, const RenderRequest&) {
             EXPECT_EQ(col.Orbital(0).Dots()[0], (PointArray{0, 0, 0, 255}));
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        cOrbitalCol col;
        OrbitalSetup setup = c.setup;
        if (c.addError == 91) setup.OrbitalIndex = kCatalogueSize;
        clock.Set(c.clock);
        if (c.addError != 0) {
            EXPECT_VT_ERROR(col.Add(setup), c.addError);
            continue;
        }
        EXPECT_EQ(col.Add(setup), 0);
        c.then(col, dots);
    }
}

}  // namespace
