// The catalogue, every orbital in both views: its entry as hosts know it, its density against
// the normalised hydrogen wavefunction of the entry's own n, l and M, its total probability,
// the mirror planes its symmetry class claims, and the batch path against the per-point path.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <optional>
#include <vector>

#include "electron/catalogue.h"
#include "electron/modOrbitals.h"
#include "test_support.h"

namespace {

using namespace veltara;
using modOrbitals::CreateElectron;

constexpr double kPi = std::numbers::pi;
constexpr OrbitalType S = OrbitalType::SingleOrb, A = OrbitalType::AverageOrbs;
constexpr OptFactor F8 = OptFactor::F8, F16xy = OptFactor::F16xy, F16yz = OptFactor::F16yz;
constexpr OptFactor F16xz = OptFactor::F16xz, F32 = OptFactor::F32;

// Name; atom radius and dot threshold of the PDF and the DRPDF view; n, l, M; type; the
// symmetry class of the PDF and the DRPDF view.
const OrbInfo kCatalogue[] = {
    {u"1S", 2, 3, 30, 50, 1, 0, 0, S, F32, F16xy},
    {u"2S", 8, 10, 30, 50, 2, 0, 0, S, F32, F16xy},
    {u"2Px", 8, 10, 50, 50, 2, 1, 1, S, F16yz, F8},
    {u"2Py", 8, 10, 50, 50, 2, 1, -1, S, F16xz, F8},
    {u"2Pz", 8, 10, 50, 50, 2, 1, 0, S, F16xy, F16xy},
    {u"3S", 18, 20, 50, 50, 3, 0, 0, S, F32, F16xy},
    {u"3Px", 18, 20, 50, 50, 3, 1, 1, S, F16yz, F8},
    {u"3Py", 18, 20, 50, 50, 3, 1, -1, S, F16xz, F8},
    {u"3Pz", 18, 20, 50, 50, 3, 1, 0, S, F16xy, F16xy},
    {u"3Dz\u00B2", 18, 20, 30, 50, 3, 2, 0, S, F16xy, F16xy},
    {u"3Dx\u00B2-y\u00B2", 18, 20, 50, 50, 3, 2, 2, S, F8, F8},
    {u"3Dxy", 18, 20, 50, 50, 3, 2, -2, S, F16xy, F16xy},
    {u"3Dxz", 18, 20, 50, 50, 3, 2, 1, S, F16xz, F8},
    {u"3Dyz", 18, 20, 50, 50, 3, 2, -1, S, F16yz, F8},
    {u"4S", 28, 32, 50, 50, 4, 0, 0, S, F32, F16xy},
    {u"4Px", 28, 32, 50, 50, 4, 1, 1, S, F16yz, F8},
    {u"4Py", 28, 32, 50, 50, 4, 1, -1, S, F16xz, F8},
    {u"4Pz", 28, 32, 50, 50, 4, 1, 0, S, F16xy, F16xy},
    {u"4Dz\u00B2", 28, 32, 30, 50, 4, 2, 0, S, F16xy, F16xy},
    {u"4Dx\u00B2-y\u00B2", 28, 32, 50, 50, 4, 2, 2, S, F8, F8},
    {u"4Dxy", 28, 32, 50, 50, 4, 2, -2, S, F16xy, F16xy},
    {u"4Dxz", 28, 32, 50, 50, 4, 2, 1, S, F16xz, F8},
    {u"4Dyz", 28, 32, 50, 50, 4, 2, -1, S, F16yz, F8},
    {u"4Fz\u00B3", 28, 32, 30, 50, 4, 3, 0, S, F16xy, F16xy},
    {u"4Fxz\u00B2", 28, 32, 50, 50, 4, 3, 1, S, F8, F8},
    {u"4Fyz\u00B2", 28, 32, 50, 50, 4, 3, -1, S, F8, F8},
    {u"4Fz(x\u00B2-y\u00B2)", 28, 32, 50, 50, 4, 3, 2, S, F8, F8},
    {u"4Fxyz", 28, 32, 50, 50, 4, 3, -2, S, F32, F16xy},
    {u"4Fx(x\u00B2-3y\u00B2)", 28, 32, 50, 50, 4, 3, 3, S, F8, F8},
    {u"4Fy(3x\u00B2-y\u00B2)", 28, 32, 50, 50, 4, 3, -3, S, F8, F8},
    {u"1S", 2, 3, 50, 50, 1, 0, 0, A, F32, F32},
    {u"2S", 8, 10, 30, 50, 2, 0, 0, A, F32, F32},
    {u"2P", 8, 10, 50, 50, 2, 1, 0, A, F32, F32},
    {u"3S", 18, 20, 50, 50, 3, 0, 0, A, F32, F32},
    {u"3P", 18, 20, 50, 50, 3, 1, 0, A, F32, F32},
    {u"3D", 18, 20, 50, 50, 3, 2, 0, A, F32, F32},
    {u"4S", 28, 32, 50, 50, 4, 0, 0, A, F32, F32},
    {u"4P", 28, 32, 50, 50, 4, 1, 0, A, F32, F32},
    {u"4D", 28, 32, 50, 50, 4, 2, 0, A, F32, F32},
    {u"4F", 28, 32, 50, 50, 4, 3, 0, A, F32, F32},
};

// The operations and catalogue fields of each view, PDF first.
struct View {
    double (cElectron::*unscaled)(const COORDdoubleParams&);
    double (cElectron::*real)(const COORDdoubleParams&);
    uint8_t (cElectron::*byte)(const COORDdoubleParams&);
    void (cElectron::*scale)(const double&);
    int16_t OrbInfo::*radius;
    OptFactor OrbInfo::*symmetry;
};
const View kViews[2] = {
    {&cElectron::GetNonScaledPDF, &cElectron::GetRealPDF, &cElectron::GetPDF,
     &cElectron::SetPDFScaleFactor, &OrbInfo::DefaultPDFAtomRadius, &OrbInfo::PDFOptFactor},
    {&cElectron::GetNonScaledDRPDF, &cElectron::GetRealDRPDF, &cElectron::GetDRPDF,
     &cElectron::SetDRPDFScaleFactor, &OrbInfo::DefaultDRPDFAtomRadius, &OrbInfo::DRPDFOptFactor},
};

/// Runs check(electron, its entry, view, view number, orbital index) on the 80 pairs.
template <class F>
void ForEachPair(F check) {
    for (int16_t i = 0; i < kCatalogueSize; ++i) {
        for (int v = 0; v < 2; ++v) {
            SCOPED_TRACE(testing::Message() << "orbital " << i << (v == 0 ? " PDF" : " DRPDF"));
            auto e = CreateElectron(i);
            check(*e, e->GetInfo(), kViews[v], static_cast<ViewMode>(v), i);
        }
    }
}

/// The squares of grid point (x, y, z) of the renderer's sampling grid over [0, radius].
COORDdoubleParams GridPoint(double radius, int x, int y, int z) {
    const double step = radius / 127.0;
    return {(x * step) * (x * step), (y * step) * (y * step), (z * step) * (z * step)};
}

double Factorial(int k) { return std::tgamma(k + 1.0); }

/// The normalised |psi|² of hydrogen (n, l, M) in its real form (cos M phi for M > 0, sin |M| phi
/// for M < 0). An averaged shell is the mean over its 2l + 1 members: R(r)² / 4 pi (Unsöld).
double Hydrogen(const OrbInfo& o, double x, double y, double z) {
    const int n = o.n, l = o.l, m = std::abs(o.M);
    const double r = std::sqrt(x * x + y * y + z * z), t = 2 * r / n;
    const double R =
        std::sqrt(std::pow(2.0 / n, 3) * Factorial(n - l - 1) / (2 * n * Factorial(n + l))) *
        std::exp(-r / n) * std::pow(t, l) * std::assoc_laguerre(n - l - 1, 2 * l + 1, t);
    if (o.OrbType == OrbitalType::AverageOrbs) return R * R / (4 * kPi);
    const double phi = std::atan2(y, x);
    const double azimuthal =
        o.M == 0 ? 1.0 : std::sqrt(2.0) * (o.M > 0 ? std::cos(m * phi) : std::sin(m * phi));
    const double Y = std::sqrt((2 * l + 1) / (4 * kPi) * Factorial(l - m) / Factorial(l + m)) *
                     std::assoc_legendre(l, m, r > 0 ? z / r : 1.0) * azimuthal;
    return R * R * Y * Y;
}

TEST(modOrbitals, EveryIndexGivesItsCatalogueEntryAndNoOtherIndexGivesAnObject) {
    for (int16_t i = 0; i < kCatalogueSize; ++i)
        EXPECT_EQ(CreateElectron(i)->GetInfo(), kCatalogue[i]) << i;
    for (int i : {-32768, -1, int{kCatalogueSize}, 32767})
        EXPECT_EQ(CreateElectron(int16_t(i)), nullptr) << i;
}

TEST(Catalogue, EachRowNamesItsRealHydrogenStateAndOnlyThatStateFindsTheRow) {
    static_assert(std::size(kCatalogue) == kCatalogueSize);
    for (int16_t i = 0; i < kCatalogueSize; ++i) {
        const OrbInfo& o = kCatalogue[i];
        State s{o.n, o.l, o.M, Basis::Real, 1, o.OrbType == A};
        EXPECT_EQ(CatalogueState(i), s) << i;
        EXPECT_EQ(CatalogueIndexOf(s), std::optional<int16_t>(i)) << i;
        State ion = s;
        ion.Z = 2;
        EXPECT_EQ(CatalogueIndexOf(ion), std::nullopt) << i;
        s.basis = Basis::Complex;
        EXPECT_EQ(CatalogueIndexOf(s), std::nullopt) << i;
    }
    EXPECT_EQ(CatalogueIndexOf(State{5, 0, 0}), std::nullopt);
    EXPECT_EQ(CatalogueIndexOf(State{4, 3, 1, Basis::Real, 1, true}), std::nullopt);
    for (int i : {-1, int{kCatalogueSize}}) EXPECT_VT_ERROR(CatalogueState(int16_t(i)), 9);
}

TEST(cElectron, DensityIsTheHydrogenWavefunctionWithExactlyTheMirrorPlanesOfItsClass) {
    // Intended: 4Fz(x²-y²) gives its real radial distribution the 4Fz³ constant, a fifteenth
    // of its own. The radial weight is rho x r for single orbitals, r² for averaged shells.
    const double kFz3Constant = 6.74586584692617e-9 / 1.01187987703893e-7;
    // The planes x = y, y = z and x = z as bits 1, 2, 4: F8 claims none (the sampler then
    // evaluates the whole octant), F16xy, F16yz and F16xz one each, F32 all three.
    const int claims[5] = {0, 1, 2, 4, 7};
    ForEachPair([&](cElectron& e, const OrbInfo& info, const View& view, ViewMode mode, int i) {
        constexpr int kN = 15, kStep = 9;  // the lattice 0, 9, ..., 126 of grid indices
        const double step = info.*view.radius / 127.0;
        std::vector<double> got(kN * kN * kN);
        double peak = 0, worst = 0, broken[3] = {};
        for (int k = 0; k < kN * kN * kN; ++k) {
            const int x = k % kN * kStep, y = k / kN % kN * kStep, z = k / (kN * kN) * kStep;
            const double cx = x * step, cy = y * step, cz = z * step,
                         r2 = cx * cx + cy * cy + cz * cz;
            const double weight = info.OrbType == A ? r2 : std::hypot(cx, cy) * std::sqrt(r2);
            const double want =
                Hydrogen(info, cx, cy, cz) *
                (mode == ViewMode::PDF ? 1.0 : weight * (i == 26 ? kFz3Constant : 1.0));
            got[k] = (e.*view.real)(GridPoint(info.*view.radius, x, y, z));
            peak = std::max(peak, want);
            worst = std::max(worst, std::fabs(got[k] - want));
        }
        for (int k = 0; k < kN * kN * kN; ++k) {  // k = x + y kN + z kN² on the lattice
            const int x = k % kN, y = k / kN % kN, z = k / (kN * kN);
            const int mirror[3] = {y + x * kN + z * kN * kN, x + z * kN + y * kN * kN,
                                   z + y * kN + x * kN * kN};
            for (int b = 0; b < 3; ++b)
                broken[b] = std::max(broken[b], std::fabs(got[k] - got[mirror[b]]));
        }
        EXPECT_LT(worst, 1e-13 * peak);
        const int claimed = claims[static_cast<int>(info.*view.symmetry)];
        for (int b = 0; b < 3; ++b) {
            if (claimed & (1 << b)) {
                EXPECT_LE(broken[b], 1e-12 * peak) << "plane " << b << " is claimed but broken";
            } else if (claimed != 0) {
                EXPECT_GT(broken[b], 1e-6 * peak) << "plane " << b << " holds but is not claimed";
            }
        }
    });
}

TEST(cElectron, RealDensityIntegratesToOne) {
    // 4-point Gauss-Legendre in cos(theta) and 8 angles phi are exact for the angular factors
    // up to l = 3; r runs over 480 panels of 4-point Gauss-Legendre on [0, 120].
    const double node[4] = {-0.8611363115940526, -0.3399810435848563, 0.3399810435848563,
                            0.8611363115940526};
    const double weight[4] = {0.3478548451374538, 0.6521451548625461, 0.6521451548625461,
                              0.3478548451374538};
    for (int16_t i = 0; i < kCatalogueSize; ++i) {
        auto e = CreateElectron(i);
        double total = 0;
        for (int panel = 0; panel < 480; ++panel) {
            for (int a = 0; a < 4; ++a) {
                const double r = 0.25 * (panel + (node[a] + 1) / 2);
                for (int b = 0; b < 4; ++b) {
                    const double s = std::sqrt(1 - node[b] * node[b]), z = r * node[b];
                    for (int k = 0; k < 8; ++k) {
                        const double x = r * s * std::cos(kPi * k / 4),
                                     y = r * s * std::sin(kPi * k / 4);
                        total += 0.125 * weight[a] * r * r * weight[b] * (kPi / 4) *
                                 e->GetRealPDF({x * x, y * y, z * z});
                    }
                }
            }
        }
        EXPECT_NEAR(total, 1.0, 1e-10) << "orbital " << i;
    }
}

TEST(cElectron, BatchEqualsPerPointAndRaises6AboveTheLastByte) {
    // Whole rows of x on every eighth plane and row of the sampling grid, and one more point.
    ForEachPair([&](cElectron& e, const OrbInfo& info, const View& view, ViewMode mode, int) {
        std::vector<COORDdoubleParams> points;
        for (int z = 0; z < 128; z += 8)
            for (int y = 0; y < 128; y += 8)
                for (int x = 0; x < 128; ++x)
                    points.push_back(GridPoint(info.*view.radius, x, y, z));
        points.push_back(points[1]);  // an odd count: the last point takes the per-point path
        const size_t n = points.size();
        std::vector<double> single(n), batch(n);
        for (size_t i = 0; i < n; ++i) single[i] = (e.*view.unscaled)(points[i]);
        e.NonScaledBatch(mode, points.data(), batch.data(), n);
        EXPECT_EQ(std::memcmp(single.data(), batch.data(), n * sizeof(double)), 0);

        // The largest value scaled to 255.4 gives byte 255 in both paths; scaled to 256.2 it
        // rounds to 256, outside a byte: error 6 in both.
        const size_t top = std::max_element(single.begin(), single.end()) - single.begin();
        std::vector<uint8_t> singleBytes(n), batchBytes(n);
        (e.*view.scale)(255.4 / single[top]);
        for (size_t i = 0; i < n; ++i) singleBytes[i] = (e.*view.byte)(points[i]);
        e.ScaledBatch(mode, points.data(), batchBytes.data(), n);
        EXPECT_EQ(singleBytes, batchBytes);
        EXPECT_EQ(batchBytes[top], 255);
        (e.*view.scale)(256.2 / single[top]);
        EXPECT_VT_ERROR((e.*view.byte)(points[top]), 6);
        EXPECT_VT_ERROR(e.ScaledBatch(mode, points.data(), batchBytes.data(), n), 6);
    });
}

}  // namespace
