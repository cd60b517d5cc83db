// The probability grid: symmetry treatments and their counts, the sampled bytes, and the two
// maximum searches.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <numeric>

#include "electron/modOrbitals.h"
#include "fake_electron.h"
#include "render/orbital_renderer.h"
#include "renderer_test_access.h"
#include "test_support.h"

namespace veltara {
namespace {

using A = RendererTestAccess;

// A renderer of `view` holding a stand-in electron with value `density` and scale `scale`.
template <typename Density>
std::unique_ptr<OrbitalRenderer> WithFake(ViewMode view, Density density, OrbInfo info,
                                          int16_t radius, double scale,
                                          vt_test::FakeElectron** out = nullptr) {
    auto r = std::make_unique<OrbitalRenderer>(view);
    auto e = std::make_unique<vt_test::FakeElectron>(density, info);
    e->SetPDFScaleFactor(scale);
    e->SetDRPDFScaleFactor(scale);
    if (out) *out = e.get();
    A::Electron(*r) = std::move(e);
    A::SetupRec(*r).AtomRadius = radius;
    return r;
}

// A renderer of a catalogue orbital with its scale factor set from its own maximum search.
std::unique_ptr<OrbitalRenderer> Catalogue(ViewMode view, int16_t index, int16_t radius,
                                           double* max = nullptr) {
    auto r = std::make_unique<OrbitalRenderer>(view);
    A::Electron(*r) = modOrbitals::CreateElectron(index);
    A::SetupRec(*r).AtomRadius = radius;
    A::SetupRec(*r).OrbitalIndex = index;
    const double m = A::FindMaxProbability(*r);
    if (view == ViewMode::PDF) {
        A::Electron(*r)->SetPDFScaleFactor(255.0 / m);
    } else {
        A::Electron(*r)->SetDRPDFScaleFactor(255.0 / m);
    }
    if (max) *max = m;
    return r;
}

int64_t Total(const OrbitalStats& s) {
    return std::accumulate(std::begin(s.ProbFreqs), std::end(s.ProbFreqs), int64_t{0});
}

// Counts of mirror images, by hand: the origin 1, three half-axes of 127 points with 2 images,
// three quarter-planes of 127^2 points with 4 images.
constexpr int64_t kBase = 1 + 3 * 127 * 2 + 3 * 127 * 127 * 4;  // 194311
// F8: 127^3 points with 8 images; base + that = 255^3.
constexpr int64_t kF8 = kBase + 8LL * 127 * 127 * 127;
// F16: 127 x (1 + 2 + ... + 127) evaluations of weight 16.
constexpr int64_t kF16 = kBase + 16LL * 127 * (127 * 128 / 2);
// F32: sum over A of A^2 evaluations, A = 1..127: 127 x 128 x 255 / 6, weight 32.
constexpr int64_t kF32 = kBase + 32LL * (127 * 128 * 255 / 6);

TEST(CalcProbabilities, CountsEveryTreatmentWithItsWeights) {
    static_assert(kF8 == 255LL * 255 * 255);
    struct Case {
        ViewMode view;
        int32_t factor;
        int64_t total;
        bool octantSampled;
    };
    const Case cases[] = {
        {ViewMode::PDF, 0, kF8, true},       {ViewMode::PDF, 1, kF16, true},
        {ViewMode::PDF, 2, kF16, true},      {ViewMode::PDF, 3, kF16, true},
        {ViewMode::PDF, 4, kF32, true},      {ViewMode::PDF, 5, kBase, false},
        {ViewMode::PDF, -1, kBase, false},   {ViewMode::DRPDF, 0, kF8, true},
        {ViewMode::DRPDF, 1, kF16, true},    {ViewMode::DRPDF, 2, kBase, false},
        {ViewMode::DRPDF, 3, kF16, true},    {ViewMode::DRPDF, 4, kF32, true},
        {ViewMode::DRPDF, 99, kBase, false},
    };
    for (const Case& c : cases) {
        const OptFactor f = static_cast<OptFactor>(c.factor);
        // A constant value: every sampled element is 200, everything else stays 0.
        auto r = WithFake(
            c.view, [](const COORDdoubleParams&) { return 1.0; }, vt_test::InfoWith(f, f), 10,
            200.0);
        A::CalcProbabilities(*r);
        const OrbitalStats& s = A::Stats(*r);
        const std::string name =
            std::string(c.view == ViewMode::PDF ? "PDF " : "DRPDF ") + std::to_string(c.factor);
        EXPECT_EQ(Total(s), c.total) << name;
        EXPECT_EQ(s.ProbFreqs[200], c.total) << name;
        const ProbGrid& g = A::ProbMatrix(*r);
        int64_t octant200 = 0, zeros = 0;
        for (int z = 0; z < 128; ++z) {
            for (int y = 0; y < 128; ++y) {
                for (int x = 0; x < 128; ++x) {
                    const bool open = x > 0 && y > 0 && z > 0;
                    if (open && g(x, y, z) == 200) ++octant200;
                    if (g(x, y, z) == 0) ++zeros;
                }
            }
        }
        EXPECT_EQ(octant200, c.octantSampled ? 127 * 127 * 127 : 0) << name;
        EXPECT_EQ(zeros, c.octantSampled ? 0 : 127 * 127 * 127) << name;
    }
}

TEST(CalcProbabilities, MirroredElementsTakeTheValueOfTheEvaluatedPoint) {
    // A value without the assumed symmetry shows which point was evaluated for each mirrored
    // element: the one listed first by its treatment. Step 1: grid index = coordinate.
    auto f = [](double x, double y, double z) {
        return std::exp(-(x * x + 2 * y * y + 4 * z * z) / 200.0);
    };
    auto density = [f](const COORDdoubleParams& p) {
        return f(std::sqrt(p.Xs), std::sqrt(p.Ys), std::sqrt(p.Zs));
    };
    struct Case {
        OptFactor factor;
        int x, y, z;     // an element of the open octant
        int ex, ey, ez;  // the point evaluated for it
    };
    const Case cases[] = {
        {OptFactor::F16xy, 5, 3, 1, 3, 5, 1},  // X <= Y evaluated, (Y, X, Z) mirrored
        {OptFactor::F16yz, 9, 2, 7, 9, 7, 2},  // Z <= Y evaluated, (X, Z, Y) mirrored
        {OptFactor::F16xz, 8, 1, 4, 4, 1, 8},  // X <= Z evaluated, (Z, Y, X) mirrored
        {OptFactor::F32, 7, 2, 3, 2, 3, 7},    // (C, B, A) = (2, 3, 7) written as (A, C, B)
        {OptFactor::F32, 3, 2, 7, 2, 3, 7},    // ... and as (B, C, A)
        {OptFactor::F32, 2, 7, 3, 2, 3, 7},    // ... and as (C, A, B)
    };
    for (const Case& c : cases) {
        auto r =
            WithFake(ViewMode::PDF, density, vt_test::InfoWith(c.factor, c.factor), 127, 255.0);
        A::CalcProbabilities(*r);
        const double evaluated = std::nearbyint(f(c.ex, c.ey, c.ez) * 255.0);
        const double direct = std::nearbyint(f(c.x, c.y, c.z) * 255.0);
        ASSERT_NE(evaluated, direct);  // the case tells the two apart
        EXPECT_EQ(A::ProbMatrix(*r)(c.x, c.y, c.z), evaluated)
            << static_cast<int>(c.factor) << " (" << c.x << ", " << c.y << ", " << c.z << ")";
    }
}

TEST(CalcProbabilities, SymmetricDensitiesFillTheWholeGridAsSampledPointByPoint) {
    // For a value with the symmetry a treatment assumes (exactly, in floating point), the grid
    // is the value at every element: the test samples all 128^3 points itself.
    const double step = 60.0 / 127.0;
    struct Case {
        OptFactor factor;
        double (*f)(const COORDdoubleParams&);
    };
    const Case cases[] = {
        {OptFactor::F8,
         [](const COORDdoubleParams& p) {
             return std::exp(-p.Xs / 900 - p.Ys / 400 - p.Zs / 1600);
         }},
        {OptFactor::F16xy,
         [](const COORDdoubleParams& p) { return std::exp(-(p.Xs + p.Ys) / 900 - p.Zs / 400); }},
        {OptFactor::F16yz,
         [](const COORDdoubleParams& p) { return std::exp(-(p.Ys + p.Zs) / 900 - p.Xs / 400); }},
        {OptFactor::F16xz,
         [](const COORDdoubleParams& p) { return std::exp(-(p.Xs + p.Zs) / 900 - p.Ys / 400); }},
        {OptFactor::F32,
         [](const COORDdoubleParams& p) {
             // Powers of two: the products are exact in any order.
             auto hh = [](double s) { return std::exp2(-std::floor(s / 40.0)); };
             return hh(p.Xs) * hh(p.Ys) * hh(p.Zs);
         }},
    };
    for (const Case& c : cases) {
        auto r = WithFake(ViewMode::PDF, c.f, vt_test::InfoWith(c.factor, c.factor), 60, 255.0);
        A::CalcProbabilities(*r);
        const ProbGrid& g = A::ProbMatrix(*r);
        int64_t mismatches = 0;
        int64_t freqs[256] = {};
        for (int z = 0; z < 128; ++z) {
            for (int y = 0; y < 128; ++y) {
                for (int x = 0; x < 128; ++x) {
                    const double X = x * step, Y = y * step, Z = z * step;
                    const int v =
                        static_cast<int>(std::nearbyint(c.f({X * X, Y * Y, Z * Z}) * 255.0));
                    if (g(x, y, z) != v) ++mismatches;
                    freqs[v] += 1 << ((x > 0) + (y > 0) + (z > 0));
                }
            }
        }
        EXPECT_EQ(mismatches, 0) << static_cast<int>(c.factor);
        // Under F8 the counts are the true mirror-image counts of each level.
        if (c.factor == OptFactor::F8) {
            for (int v = 0; v < 256; ++v) EXPECT_EQ(A::Stats(*r).ProbFreqs[v], freqs[v]) << v;
        }
    }
}

// Independent densities of three catalogue orbitals: their textbook forms up to constants.
double Density1S(const COORDdoubleParams& p) {
    return std::exp(-2.0 * std::sqrt(p.Xs + p.Ys + p.Zs));
}
double Density2Pz(const COORDdoubleParams& p) {
    return p.Zs * std::exp(-std::sqrt(p.Xs + p.Ys + p.Zs));
}
double Radial1S(const COORDdoubleParams& p) {
    const double r = std::sqrt(p.Xs + p.Ys + p.Zs);
    return std::exp(-2.0 * r) * std::sqrt(p.Xs + p.Ys) * r;
}

TEST(CalcProbabilities, GridHoldsTheOrbitalScaledTo255AtItsMaximum) {
    struct Case {
        const char* name;
        ViewMode view;
        int16_t index;
        int16_t radius;
        double (*density)(const COORDdoubleParams&);
        double analyticMax;
        double maxTolerance;  // relative: the density view's lattice search is not exact
    };
    const Case cases[] = {
        {"1S density", ViewMode::PDF, 0, 4, Density1S, 1.0, 0.0},
        {"2Pz density", ViewMode::PDF, 4, 10, Density2Pz, 4.0 * std::exp(-2.0), 1e-6},
        {"1S radial", ViewMode::DRPDF, 0, 3, Radial1S, std::exp(-2.0), 1e-12},
    };
    for (const Case& c : cases) {
        double max = 0;
        auto r = Catalogue(c.view, c.index, c.radius, &max);
        EXPECT_NEAR(max, c.analyticMax, c.maxTolerance * c.analyticMax) << c.name;
        A::CalcProbabilities(*r);
        const ProbGrid& g = A::ProbMatrix(*r);
        const double step = c.radius / 127.0;
        const double scale = 255.0 / max;
        int checked = 0, nonZero = 0;
        for (int z = 0; z < 128; z += 3) {
            for (int y = 0; y < 128; y += 5) {
                for (int x = 0; x < 128; x += 2) {
                    const double X = x * step, Y = y * step, Z = z * step;
                    const double expected =
                        std::nearbyint(c.density({X * X, Y * Y, Z * Z}) * scale);
                    // A value may sit a rounding error from a half; allow one level there.
                    const double exact = c.density({X * X, Y * Y, Z * Z}) * scale;
                    if (std::fabs(exact - std::floor(exact) - 0.5) < 1e-9) continue;
                    EXPECT_EQ(g(x, y, z), expected) << c.name << " " << x << " " << y << " " << z;
                    ++checked;
                    if (expected > 0) ++nonZero;
                }
            }
        }
        EXPECT_GT(checked, 10000) << c.name;
        EXPECT_GT(nonZero, 500) << c.name;
    }
}

TEST(CalcProbabilities, RowBatchesEqualThePerPointInterface) {
    // Orbitals whose view is sampled point by point over the whole octant (F8).
    struct Case {
        ViewMode view;
        int16_t index;
        int16_t radius;
    };
    const Case cases[] = {
        {ViewMode::PDF, 10, 18}, {ViewMode::DRPDF, 2, 10}, {ViewMode::DRPDF, 24, 32}};
    for (const Case& c : cases) {
        auto r = Catalogue(c.view, c.index, c.radius);
        A::CalcProbabilities(*r);
        cElectron& e = *A::Electron(*r);
        const double step = c.radius / 127.0;
        int64_t mismatches = 0;
        for (int z = 0; z < 128; ++z) {
            for (int y = 0; y < 128; ++y) {
                for (int x = 0; x < 128; ++x) {
                    const double X = x * step, Y = y * step, Z = z * step;
                    const COORDdoubleParams p{X * X, Y * Y, Z * Z};
                    const uint8_t v = c.view == ViewMode::PDF ? e.GetPDF(p) : e.GetDRPDF(p);
                    if (A::ProbMatrix(*r)(x, y, z) != v) ++mismatches;
                }
            }
        }
        EXPECT_EQ(mismatches, 0) << c.index;
    }
}

TEST(FindMaxProbability, DensityViewRefinesAShrinkingLattice) {
    // Rounds of 14 and then 13 divisions: 15^3 + 14^3 = 6119 evaluations when the second round
    // finds nothing better. The second box is one step either side of the best point, moved
    // back inside the cube.
    struct Case {
        const char* name;
        double (*f)(const COORDdoubleParams&);
        double max;
        COORDdoubleParams firstOfRound2, lastOfRound2;
    };
    const Case cases[] = {
        // 0 everywhere: the first round cannot stop (PrevBest -1), the second stops at 0. The
        // best point stays the origin: box [-1, 1]^3 shifted to [0, 2]^3.
        {"zero", [](const COORDdoubleParams&) { return 0.0; }, 0.0, {0, 0, 0}, {4, 4, 4}},
        // Largest at x = 14, first met at (14, 0, 0): box [13, 15] x [-1, 1]^2 shifted to
        // [12, 14] x [0, 2]^2.
        {"rising in x",
         [](const COORDdoubleParams& p) { return p.Xs; },
         196.0,
         {144, 0, 0},
         {196, 4, 4}},
        // A peak on the first lattice at (3, 5, 7): box [2, 4] x [4, 6] x [6, 8].
        {"peak",
         [](const COORDdoubleParams& p) {
             const double dx = std::sqrt(p.Xs) - 3, dy = std::sqrt(p.Ys) - 5,
                          dz = std::sqrt(p.Zs) - 7;
             return 100 - dx * dx - dy * dy - dz * dz;
         },
         100.0,
         {4, 16, 36},
         {16, 36, 64}},
    };
    for (const Case& c : cases) {
        vt_test::FakeElectron* e = nullptr;
        auto r = WithFake(ViewMode::PDF, c.f, {}, 14, 0.0, &e);
        e->record = true;
        EXPECT_EQ(A::FindMaxProbability(*r), c.max) << c.name;
        ASSERT_EQ(e->evaluations, 15 * 15 * 15 + 14 * 14 * 14) << c.name;
        for (const auto& [got, want] : {std::pair{e->points[15 * 15 * 15], c.firstOfRound2},
                                        std::pair{e->points.back(), c.lastOfRound2}}) {
            EXPECT_DOUBLE_EQ(got.Xs, want.Xs) << c.name;
            EXPECT_DOUBLE_EQ(got.Ys, want.Ys) << c.name;
            EXPECT_DOUBLE_EQ(got.Zs, want.Zs) << c.name;
        }
    }
}

TEST(FindMaxProbability, RadialViewFindsTheAnalyticMaximum) {
    // Maxima by hand. 1S: r^2 e^-2r (in the plane z = 0) at r = 1. 2Px: x^2 rho r e^-r is at
    // most r^4 e^-r, reached on the x axis at r = 4. 2Pz: r^4 cos^2 sin e^-r, with r = 4 and
    // sin = 1/sqrt(3). Averaged shells: r^(2l+2) x U^2 e^-kr, at r = 1 (1S), 4 (2P), 9 (3D),
    // 16 (4F).
    struct Case {
        int16_t index;
        int16_t radius;
        double max;
    };
    const Case cases[] = {
        {0, 3, std::exp(-2.0)},
        {2, 10, 256 * std::exp(-4.0)},
        {4, 10, 512 * std::exp(-4.0) / (3 * std::sqrt(3.0))},
        {30, 3, std::exp(-2.0)},
        {32, 10, 256 * std::exp(-4.0)},
        {35, 20, std::pow(9.0, 6) * std::exp(-6.0)},
        {39, 32, std::pow(16.0, 8) * std::exp(-8.0)},
    };
    for (const Case& c : cases) {
        double max = 0;
        Catalogue(ViewMode::DRPDF, c.index, c.radius, &max);
        EXPECT_NEAR(max, c.max, 1e-12 * c.max) << c.index;
    }
}

TEST(FindMaxProbability, RadialViewIsNoLowerThanAFineScan) {
    struct Case {
        int16_t index;
        int16_t radius;
    };
    const Case cases[] = {{5, 20}, {9, 20}, {19, 32}, {23, 32}, {27, 32}, {29, 32}, {36, 32}};
    constexpr int kDiv = 100;
    for (const Case& c : cases) {
        double max = 0;
        auto r = Catalogue(ViewMode::DRPDF, c.index, c.radius, &max);
        cElectron& e = *A::Electron(*r);
        double scan = 0;
        const double h = c.radius / static_cast<double>(kDiv);
        for (int k = 0; k <= kDiv; ++k) {
            for (int j = 0; j <= kDiv; ++j) {
                for (int i = 0; i <= kDiv; ++i) {
                    const double x = i * h, y = j * h, z = k * h;
                    scan = std::max(scan, e.GetNonScaledDRPDF({x * x, y * y, z * z}));
                }
            }
        }
        EXPECT_GE(max, scan) << c.index;
        EXPECT_LT(max, scan * 1.01) << c.index;  // the scan's lattice is within 1% of the top
    }
}

}  // namespace
}  // namespace veltara
