// A renderer's setup from end to end: seeding, timing, statistics, re-sampling, and the dot
// clouds of catalogue orbitals against their expected sizes and mean radii.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "electron/modOrbitals.h"
#include "engine/cOrbitalCol.h"
#include "engine/cVeltara.h"
#include "render/orbital_renderer.h"
#include "renderer_test_access.h"
#include "support/modRand.h"
#include "test_support.h"

namespace veltara {
namespace {

using A = RendererTestAccess;

OrbitalSetup SetupOf(int16_t index, ViewMode view, int16_t radius, int16_t target,
                     uint8_t threshold) {
    return {radius, target, threshold, 0, index, view};
}

// A clock that moves on by `step` ms at each reading.
class SteppingClock {
  public:
    SteppingClock(int32_t start, int32_t step) : mNow(start), mStep(step) {
        SetClock([this] {
            const int32_t t = mNow;
            mNow = static_cast<int32_t>(static_cast<int64_t>(mNow) + mStep);
            return t;
        });
    }
    ~SteppingClock() { SetClock({}); }

  private:
    int32_t mNow;
    int32_t mStep;
};

TEST(Setup, SeedsTheGeneratorFromTheClock) {
    // Seed = Int(|T / 2147483647 x 65536|), by hand: 1e9 -> 30517.578 -> 30517;
    // 32769 -> 1.00002 -> 1; 2147483647 -> 65536.
    struct Case {
        int32_t clock;
        int32_t seed;
    };
    const Case cases[] = {{1000000000, 30517},
                          {-1000000000, 30517},
                          {32769, 1},
                          {2147483647, 65536},
                          {-2147483647, 65536}};
    for (const Case& c : cases) {
        vt_test::FixedClock clock(c.clock);
        cOrbitalPDF r;
        r.Setup(SetupOf(0, ViewMode::PDF, 4, 2000, 30));
        const std::vector<PointArray> dots = A::Dots(r);
        // The same fill from the seed worked out by hand gives the same cloud.
        modRand::Randomize(c.seed);
        A::FillDotMatrix(r);
        EXPECT_EQ(A::Dots(r), dots) << c.clock;
        EXPECT_GT(dots.size(), 1000u) << c.clock;
    }
}

TEST(Setup, ClockBelow32768msGivesNoDotAndRaises9) {
    // Seed 0 sticks the generator at 2147483647: the first fill accepts nothing.
    vt_test::FixedClock clock(32767);
    cOrbitalPDF r;
    EXPECT_VT_ERROR(r.Setup(SetupOf(0, ViewMode::PDF, 4, 2000, 30)), 9);
    EXPECT_FALSE(A::ProbMatrix(r).Empty());  // the grid was made before the fill
}

TEST(Setup, TimesTheGridAndTheFill) {
    // Readings: the seed, then before and after the grid, before and after the fill, 7 ms
    // apart: CalcTime 7, DotTime 7, CalcRate 2097152 / 7 = 299593.14 -> 299593.
    SteppingClock clock(500000000, 7);
    cOrbitalPDF r;
    r.Setup(SetupOf(4, ViewMode::PDF, 8, 3000, 50));
    const OrbitalStats s = r.GetStats();
    EXPECT_EQ(s.TotalSamples, 2097152);
    EXPECT_EQ(s.CalcTime, 7);
    EXPECT_EQ(s.DotTime, 7);
    EXPECT_EQ(s.CalcRate, 299593);
    EXPECT_EQ(s.DotTarget, 3000);
    EXPECT_EQ(s.DotTotal, static_cast<int32_t>(A::Dots(r).size()));
    EXPECT_EQ(s.FramesRendered, 0);
}

TEST(Setup, ClockDifferenceBeyond32BitsRaises6) {
    // The clock passes 2147483647 and wraps between the readings around the grid.
    SteppingClock clock(2147483647 - 2 * 1000000000 + 1, 1000000000);
    cOrbitalPDF r;
    EXPECT_VT_ERROR(r.Setup(SetupOf(0, ViewMode::PDF, 4, 2000, 30)), 6);
}

TEST(Setup, FailuresOfTheElectronAndTheScale) {
    struct Case {
        const char* name;
        OrbitalSetup setup;
        int32_t error;
    };
    const Case cases[] = {
        // The catalogue has no orbital 40 or -1: the search is the first use of the electron.
        {"index 40", SetupOf(40, ViewMode::PDF, 8, 1000, 50), 91},
        {"index -1", SetupOf(-1, ViewMode::DRPDF, 8, 1000, 50), 91},
        // A cube of radius 0 holds only the nucleus, where 2Px and every radial value are 0:
        // the maximum is 0 and 255 / 0 fails.
        {"2Px radius 0", SetupOf(2, ViewMode::PDF, 0, 1000, 50), 11},
        {"1S radial radius 0", SetupOf(0, ViewMode::DRPDF, 0, 1000, 50), 11},
    };
    for (const Case& c : cases) {
        vt_test::FixedClock clock(1000000000);
        OrbitalRenderer r(c.setup.OrbitalViewMode);
        EXPECT_VT_ERROR(r.Setup(c.setup), c.error);
        EXPECT_EQ(A::SetupRec(r).OrbitalIndex, c.setup.OrbitalIndex) << c.name;
        EXPECT_TRUE(A::ProbMatrix(r).Empty()) << c.name;
    }
}

TEST(UpdateStats, RateFromTheCalculationTime) {
    struct Case {
        int32_t calcTime;
        int32_t written;  // CalcTime afterwards, in the caller's variable and the record
        int32_t rate;     // 2097152 / written, ties to even
    };
    const Case cases[] = {
        {0, 1, 2097152},       {3, 3, 699051},  // 699050.67
        {4194304, 4194304, 0},                  // 0.5 goes to the even 0
        {1398101, 1398101, 2},                  // 1.50000024 -> 2
        {-1, -1, -2097152},
    };
    for (const Case& c : cases) {
        cOrbitalPDF r;
        A::Dots(r) = {PointArray{}};
        int32_t calcTime = c.calcTime;
        A::UpdateStats(r, calcTime, 42);
        const OrbitalStats& s = A::Stats(r);
        EXPECT_EQ(calcTime, c.written);
        EXPECT_EQ(s.CalcTime, c.written);
        EXPECT_EQ(s.CalcRate, c.rate) << c.calcTime;
    }
}

TEST(UpdateStats, ModeIsTheLowestMostFrequentLevel) {
    struct Case {
        const char* name;
        std::vector<std::pair<int, int32_t>> counts;
        int mode;
    };
    const Case cases[] = {
        {"single peak", {{3, 10}, {200, 11}, {255, 4}}, 200},
        {"tie goes to the lower level", {{20, 9}, {10, 9}, {30, 2}}, 10},
        {"level 0 counts", {{0, 50}, {1, 49}}, 0},
        {"all zero keeps the old value", {}, 77},
    };
    for (const Case& c : cases) {
        cOrbitalPDF r;
        A::Dots(r) = {PointArray{}};
        A::Stats(r).Mode = 77;
        for (auto [level, count] : c.counts) A::Stats(r).ProbFreqs[level] = count;
        int32_t calcTime = 5;
        A::UpdateStats(r, calcTime, 0);
        EXPECT_EQ(A::Stats(r).Mode, c.mode) << c.name;
    }
}

TEST(ReFillDotMatrix, TargetOutside16BitsRaises6AndChangesNothing) {
    vt_test::FixedClock clock(1000000000);
    cOrbitalPDF r;
    r.Setup(SetupOf(0, ViewMode::PDF, 4, 2000, 30));
    const std::vector<PointArray> dots = A::Dots(r);
    const OrbitalStats stats = r.GetStats();
    for (int32_t target : {40000, 32768, -32769}) {
        EXPECT_VT_ERROR(r.ReFillDotMatrix(target, 10), 6);
        EXPECT_EQ(A::SetupRec(r).DotTarget, 2000);
        EXPECT_EQ(A::SetupRec(r).DotThreshold, 30);
        EXPECT_EQ(A::Dots(r), dots);
        EXPECT_EQ(r.GetStats().DotTotal, stats.DotTotal);
    }
}

TEST(ReFillDotMatrix, NewCloudFromTheSameGridKeepingTheCalculationTime) {
    SteppingClock clock(700000000, 3);  // CalcTime 3 at setup
    cOrbitalPDF r;
    r.Setup(SetupOf(4, ViewMode::PDF, 8, 1000, 50));
    const std::vector<uint8_t> grid(A::ProbMatrix(r).Data(),
                                    A::ProbMatrix(r).Data() + 128 * 128 * 128);
    const int32_t seed = modRand::State();
    EXPECT_EQ(r.ReFillDotMatrix(int32_t{4000}, uint8_t{20}), 0);
    const OrbitalStats s = r.GetStats();
    EXPECT_EQ(A::SetupRec(r).DotTarget, 4000);
    EXPECT_EQ(A::SetupRec(r).DotThreshold, 20);
    EXPECT_EQ(s.DotTarget, 4000);
    EXPECT_EQ(s.CalcTime, 3);
    EXPECT_EQ(s.CalcRate, 699051);
    EXPECT_EQ(s.DotTime, 3);
    EXPECT_EQ(s.DotTotal, static_cast<int32_t>(A::Dots(r).size()));
    EXPECT_TRUE(std::equal(grid.begin(), grid.end(), A::ProbMatrix(r).Data()));
    for (const PointArray& d : A::Dots(r)) ASSERT_GT(d.P, 20);
    // The refill continued the shared generator where the setup left it.
    const std::vector<PointArray> dots = A::Dots(r);
    modRand::Randomize(seed);
    A::FillDotMatrix(r);
    EXPECT_EQ(A::Dots(r), dots);
}

TEST(Setup, SameClockSameCloudThroughTheCollection) {
    for (const OrbitalSetup& setup :
         {SetupOf(9, ViewMode::PDF, 18, 5000, 30), SetupOf(13, ViewMode::DRPDF, 20, 5000, 50),
          SetupOf(37, ViewMode::PDF, 28, 8000, 50)}) {
        vt_test::FixedClock clock(123456789);
        cOrbitalCol col;
        const int16_t a = col.Add(setup);
        const int16_t b = col.Add(setup);
        const auto first = col.Orbital(a).Dots();
        const auto second = col.Orbital(b).Dots();
        EXPECT_GT(first.size(), 1000u);
        EXPECT_TRUE(std::ranges::equal(first, second)) << setup.OrbitalIndex;
    }
}

TEST(Setup, EveryCatalogueOrbitalInBothViewsWithItsDefaults) {
    vt_test::FixedClock clock(1000000000);
    cVeltara veltara;
    const std::vector<OrbInfo> infos = veltara.EnumOrbitals();
    for (int16_t i = 0; i < 40; ++i) {
        for (ViewMode view : {ViewMode::PDF, ViewMode::DRPDF}) {
            const OrbInfo& info = infos[static_cast<size_t>(i)];
            const bool pdf = view == ViewMode::PDF;
            const OrbitalSetup s = SetupOf(
                i, view, pdf ? info.DefaultPDFAtomRadius : info.DefaultDRPDFAtomRadius, 5000,
                static_cast<uint8_t>(pdf ? info.DefaultPDFDotThreshold
                                         : info.DefaultDRPDFDotThreshold));
            cOrbitalCol col;
            try {
                EXPECT_EQ(col.Add(s), 0);
            } catch (const Error& e) {
                ADD_FAILURE() << "orbital " << i << " view " << static_cast<int>(view) << ": error "
                              << e.number();
                continue;
            }
            const OrbitalStats stats = col.GetStats(0);
            EXPECT_GT(stats.DotTotal, 100) << i;
            EXPECT_LE(stats.DotTotal, 5000 + 5 * 71) << i;  // 5 sigma above the target at most
            // The maximum maps to 255: the level is reached somewhere on the grid, unless the
            // maximum lies between grid points.
            EXPECT_GT(stats.ProbFreqs[255] + stats.ProbFreqs[254] + stats.ProbFreqs[253], 0) << i;
        }
    }
}

// Expected size and variance of a cloud drawn from a renderer's grid: each mirror image is an
// independent trial with p = (Accept - 1) / 2147483646.
struct CloudExpectation {
    double mean = 0, variance = 0, closedForm = 0;
};
CloudExpectation Expect(OrbitalRenderer& r, int target, int threshold) {
    const ProbGrid& g = A::ProbMatrix(r);
    double sum = 0;
    for (int v = threshold; v < 256; ++v) sum += 1.0 * A::Stats(r).ProbFreqs[v] * v;
    double above = 0;
    for (int v = threshold + 1; v < 256; ++v) above += 1.0 * A::Stats(r).ProbFreqs[v] * v;
    CloudExpectation e;
    e.closedForm = target * above / sum;
    for (int z = 0; z < 128; ++z) {
        for (int y = 0; y < 128; ++y) {
            for (int x = 0; x < 128; ++x) {
                const int v = g(x, y, z);
                if (v <= threshold) continue;
                const int images = 1 << ((x > 0) + (y > 0) + (z > 0));
                const double a = v / sum * target;
                const double accept = a <= 1 ? std::nearbyint(a * 2147483647.0) : 2147483647.0;
                const double p = std::max(0.0, accept - 1) / 2147483646.0;
                e.mean += images * p;
                e.variance += images * p * (1 - p);
            }
        }
    }
    return e;
}

TEST(FillDotMatrix, CloudSizeOfCatalogueOrbitalsWithinFiveSigma) {
    struct Case {
        OrbitalSetup setup;
        std::vector<std::pair<int, int>> refills;  // (target, threshold)
    };
    const Case cases[] = {
        {SetupOf(10, ViewMode::PDF, 18, 5000, 50), {{20000, 0}, {1000, 200}, {32000, 100}}},
        {SetupOf(0, ViewMode::PDF, 2, 5000, 30), {{15000, 5}, {300, 200}}},
        {SetupOf(4, ViewMode::DRPDF, 10, 5000, 50), {{25000, 20}, {2000, 128}}},
        {SetupOf(38, ViewMode::PDF, 28, 5000, 50), {{10000, 0}, {30000, 60}}},
    };
    for (const Case& c : cases) {
        vt_test::FixedClock clock(987654321);
        const bool pdf = c.setup.OrbitalViewMode == ViewMode::PDF;
        auto r = std::make_unique<OrbitalRenderer>(c.setup.OrbitalViewMode);
        r->Setup(c.setup);
        std::vector<std::pair<int, int>> runs = {{c.setup.DotTarget, c.setup.DotThreshold}};
        runs.insert(runs.end(), c.refills.begin(), c.refills.end());
        for (size_t k = 0; k < runs.size(); ++k) {
            const auto [target, threshold] = runs[k];
            if (k > 0) r->ReFillDotMatrix(target, static_cast<uint8_t>(threshold));
            const CloudExpectation e = Expect(*r, target, threshold);
            const double n = static_cast<double>(A::Dots(*r).size());
            EXPECT_NEAR(n, e.mean, 5 * std::sqrt(e.variance) + 1)
                << c.setup.OrbitalIndex << " target " << target << " threshold " << threshold;
            // Without saturation, and where ProbFreqs counts every image exactly once (F8), the
            // expectation is the closed form DotTarget x sum(v > thr) / Sum. The shortened
            // treatments over-count their diagonal points, and the cloud comes out smaller.
            const OrbInfo info = A::Electron(*r)->GetInfo();
            const OptFactor factor = pdf ? info.PDFOptFactor : info.DRPDFOptFactor;
            if (factor == OptFactor::F8 && e.mean < 0.99 * target) {
                EXPECT_NEAR(e.mean, e.closedForm, 1e-6 * e.closedForm + 1);
            }
        }
    }
}

TEST(FillDotMatrix, MeanRadiusOfTheCloudMatchesTheGridAndTheAtom) {
    // <r> = (3 n^2 - l (l + 1)) / 2 Bohr radii: 1.5 (1S), 5 (2Pz), 10.5 (3Dz2).
    struct Case {
        int16_t index;
        int16_t radius;
        double analytic;
    };
    const Case cases[] = {{0, 8, 1.5}, {4, 24, 5.0}, {9, 40, 10.5}};
    for (const Case& c : cases) {
        vt_test::FixedClock clock(1500000000);
        cOrbitalPDF r;
        r.Setup(SetupOf(c.index, ViewMode::PDF, c.radius, 30000, 0));
        const double step = c.radius / 127.0;

        // The byte-weighted grid over all mirror images.
        const ProbGrid& g = A::ProbMatrix(r);
        double weight = 0, weightedR = 0;
        for (int z = 0; z < 128; ++z) {
            for (int y = 0; y < 128; ++y) {
                for (int x = 0; x < 128; ++x) {
                    const double w = g(x, y, z) * (1 << ((x > 0) + (y > 0) + (z > 0)));
                    weight += w;
                    weightedR += w * step * std::sqrt(1.0 * x * x + y * y + z * z);
                }
            }
        }
        const double gridMean = weightedR / weight;

        // The cloud's mean and its standard error.
        const std::vector<PointArray>& dots = A::Dots(r);
        double s = 0, s2 = 0;
        for (const PointArray& d : dots) {
            const double rr = step * std::sqrt(1.0 * d.X * d.X + d.Y * d.Y + d.Z * d.Z);
            s += rr;
            s2 += rr * rr;
        }
        const double n = static_cast<double>(dots.size());
        const double mean = s / n;
        const double sd = std::sqrt(s2 / n - mean * mean);
        EXPECT_GT(n, 20000) << c.index;
        EXPECT_NEAR(mean, gridMean, 5 * sd / std::sqrt(n)) << c.index;
        EXPECT_NEAR(gridMean, c.analytic, 0.15 * c.analytic) << c.index;
    }
}

}  // namespace
}  // namespace veltara
