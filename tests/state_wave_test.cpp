// Psi, density, radial view and P(r) of any state, against 80-digit values, closed forms,
// the catalogue's own densities and quadrature.
#include "electron/state_wave.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <numbers>
#include <sstream>
#include <string>

#include "electron/cElectron.h"
#include "electron/modOrbitals.h"
#include "electron/wavefunction.h"
#include "support/error.h"

using namespace veltara;

namespace {

constexpr double kPi = std::numbers::pi;

Superposition One(int32_t n, int32_t l, int32_t m, Basis basis = Basis::Real, int32_t Z = 1) {
    return MakeSuperposition(State{n, l, m, basis, Z, false});
}

int32_t ErrorOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const Error& e) {
        EXPECT_FALSE(e.detail().empty()) << "a refused input is explained";
        return e.number();
    }
    return 0;
}

}  // namespace

// The 80-digit table: |dpsi| <= 1e-10 max(|psi|, 1e-6 max|psi|) at every point.
TEST(StateWave, PsiMatchesEightyDigitValuesUpToShell30) {
    std::ifstream in(std::string(VT_TEST_DATA) + "/state_values.txt");
    ASSERT_TRUE(in) << "tests/data/state_values.txt";
    std::string line;
    int rows = 0;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream row(line);
        int32_t n, l, m, Z;
        char basis;
        double x, y, z, re, im, peak;
        row >> n >> l >> m >> basis >> Z >> x >> y >> z >> re >> im >> peak;
        ASSERT_TRUE(row) << line;
        const auto s = One(n, l, m, basis == 'c' ? Basis::Complex : Basis::Real, Z);
        const std::complex<double> psi = Psi(s, x, y, z, 0.0);
        const double bound = 1e-10 * std::max(std::abs(std::complex<double>(re, im)), 1e-6 * peak);
        EXPECT_LE(std::abs(psi - std::complex<double>(re, im)), bound) << line;
        ++rows;
    }
    EXPECT_EQ(rows, 840);
}

// psi_Z(r) = Z^(3/2) psi_1(Z r), up to the largest charge.
TEST(StateWave, ChargeScalesLengthsAndAmplitude) {
    for (int32_t Z : {2, 37, 100}) {
        const auto ion = One(7, 3, -2, Basis::Complex, Z), hydrogen = One(7, 3, -2, Basis::Complex);
        for (double d : {0.5, 9.0, 40.0}) {
            const double x = 0.48 * d, y = -0.6 * d, z = 0.64 * d;
            const std::complex<double> expected = std::pow(Z, 1.5) * Psi(hydrogen, x, y, z, 0);
            EXPECT_LE(std::abs(Psi(ion, x / Z, y / Z, z / Z, 0) - expected),
                      1e-13 * std::abs(expected));
        }
    }
}

// Every catalogue row is the real state its n, l, m name: the general evaluator gives its
// density to 1e-12 and the sign of its wavefunction; as a state it gives its doubles exactly.
TEST(StateWave, CatalogueRowsAreTheirStatesAndKeepTheirDoubles) {
    const double points[][3] = {{0.3, -1.7, 2.2}, {-4.1, 0.6, -0.9}, {1.25, 2.5, -7.0},
                                {0.0, 0.0, 3.0},  {-9.5, -3.3, 6.1}, {2.0, -2.0, 0.5}};
    for (int16_t row = 0; row < modOrbitals::kOrbitalCount; ++row) {
        auto orbital = modOrbitals::CreateElectron(row);
        const OrbInfo info = orbital->GetInfo();
        const bool average = info.OrbType == OrbitalType::AverageOrbs;
        const State st{info.n, info.l, average ? 0 : info.M, Basis::Real, 1, average};
        const auto s = MakeSuperposition(st);
        for (const auto& p : points) {
            SCOPED_TRACE(testing::Message() << "row " << row << " at " << p[0] << "," << p[1]);
            const COORDdoubleParams squares{p[0] * p[0], p[1] * p[1], p[2] * p[2]};
            const double pdf = orbital->GetRealPDF(squares);
            EXPECT_EQ(Density(s, p[0], p[1], p[2], 0.7), pdf);
            EXPECT_EQ(RadialView(s, p[0], p[1], p[2], 0.0), orbital->GetRealDRPDF(squares));
            const double r = std::sqrt(squares.Xs + squares.Ys + squares.Zs);
            const double radial = RadialR(st.n, st.l, 1, r);
            const double general =
                average ? radial * radial / (4 * kPi) : std::norm(Psi(s, p[0], p[1], p[2], 0.0));
            EXPECT_NEAR(general, pdf, 1e-12 * pdf);
            if (!average && pdf > 1e-12) {
                EXPECT_EQ(Psi(s, p[0], p[1], p[2], 0.0).real() > 0,
                          Wavefunction(row, p[0], p[1], p[2]) > 0);
            }
        }
    }
}

// Psi(t) = sum c_k psi_k e^(-iE_k t), by hand for 1s + i 2p0 (E = -1/2, -1/8):
// psi_1s = e^-r / sqrt(pi), psi_2p0 = z e^(-r/2) / (4 sqrt(2 pi)).
TEST(StateWave, SuperpositionEvolvesWithEachTermsEnergy) {
    const auto s = MakeSuperposition({{1.0, State{1, 0, 0}}, {{0.0, 1.0}, State{2, 1, 0}}});
    for (double t : {0.0, 1.3, 7.9}) {
        const double x = 0.4, y = -0.8, z = 1.1, r = std::sqrt(x * x + y * y + z * z);
        const std::complex<double> expected =
            (std::exp(-r) / std::sqrt(kPi) * std::polar(1.0, t / 2) +
             std::complex<double>(0, 1) * z * std::exp(-r / 2) / (4 * std::sqrt(2 * kPi)) *
                 std::polar(1.0, t / 8)) /
            std::sqrt(2.0);
        EXPECT_LT(std::abs(Psi(s, x, y, z, t) - expected), 1e-15);
        EXPECT_NEAR(Density(s, x, y, z, t), std::norm(expected), 1e-15);
        EXPECT_NEAR(RadialView(s, x, y, z, t), std::norm(expected) * std::hypot(x, y) * r, 1e-15);
    }
    EXPECT_FALSE(IsRealValued(s));
    EXPECT_TRUE(IsRealValued(MakeSuperposition({{0.6, State{2, 1, 1}}, {-0.8, State{3, 2, -2}}})));
    EXPECT_FALSE(IsRealValued(One(2, 1, 0, Basis::Complex)));
}

// P(r) of 1s + 2s by hand: r²/2 (R10² + R20² + 2 R10 R20 cos(3t/8)),
// R10 = 2e^-r, R20 = (1 - r/2) e^(-r/2) / sqrt 2.
TEST(StateWave, RadialDistributionHasTheCrossTermOfSharedAngles) {
    const auto s = MakeSuperposition({{1.0, State{1, 0, 0}}, {1.0, State{2, 0, 0}}});
    for (double t : {0.0, 2.0, 5.0}) {
        for (double r : {0.0, 0.5, 2.0, 3.7}) {
            const double a = 2 * std::exp(-r), b = (1 - r / 2) * std::exp(-r / 2) / std::sqrt(2.0);
            const double expected = r * r / 2 * (a * a + b * b + 2 * a * b * std::cos(0.375 * t));
            EXPECT_NEAR(RadialDistribution(s, r, t), expected, 1e-15);
        }
    }
}

// P(r) = r² times the sphere's integral of the density (midpoints in cos theta, to 1e-4;
// the trapezoid rule in phi, exact for the products of e^(i m phi) here).
TEST(StateWave, RadialDistributionIsTheDensityIntegratedOverTheSphere) {
    const auto s = MakeSuperposition({{{0.3, 0.2}, State{3, 2, 1, Basis::Complex, 2}},
                                      {0.5, State{5, 2, 1, Basis::Complex, 2}},
                                      {{0.0, -0.7}, State{4, 3, -2, Basis::Complex, 2}},
                                      {0.4, State{4, 1, 1, Basis::Complex, 2}}});
    const int bands = 400, slices = 16;
    for (double r : {0.7, 2.5, 6.0}) {
        double sum = 0;
        for (int i = 0; i < bands; ++i) {
            const double u = -1 + (i + 0.5) * 2 / bands, sine = std::sqrt(1 - u * u);
            for (int j = 0; j < slices; ++j) {
                const double phi = 2 * kPi * j / slices;
                sum += Density(s, r * sine * std::cos(phi), r * sine * std::sin(phi), r * u, 3.1);
            }
        }
        const double expected = r * r * sum * (2.0 / bands) * (2 * kPi / slices);
        EXPECT_NEAR(RadialDistribution(s, r, 3.1), expected, 1e-4 * expected);
    }
}

TEST(StateWave, ShellAverageIsTheSphericalMeanAndHasNoPsi) {
    const auto av = MakeSuperposition(State{3, 1, 0, Basis::Real, 2, true});
    // R_31 by hand, Z = 2, rho = 2Zr/3: Z^(3/2) rho (4 - rho) e^(-rho/2) / (9 sqrt 6).
    const double r = 1.9, rho = 4 * r / 3;
    const double R =
        std::pow(2.0, 1.5) * rho * (4 - rho) * std::exp(-rho / 2) / (9 * std::sqrt(6.0));
    EXPECT_NEAR(Density(av, 0, r * 0.6, r * 0.8, 0), R * R / (4 * kPi), 1e-15);
    EXPECT_NEAR(RadialDistribution(av, r, 0), r * r * R * R, 1e-14);
    EXPECT_EQ(ErrorOf([&] { Psi(av, 1, 0, 0, 0); }), kErrInvalidCall);
}

TEST(StateWave, RefusesNonFiniteInputWithASentence) {
    const auto s = One(2, 1, 0);
    const double nan = std::nan("");
    EXPECT_EQ(ErrorOf([&] { Psi(s, nan, 0, 0, 0); }), kErrInvalidCall);
    EXPECT_EQ(ErrorOf([&] {
                  Density(MakeSuperposition(State{5, 1, 0}), 0, INFINITY, 0, 0);
              }),
              kErrInvalidCall);
    EXPECT_EQ(ErrorOf([&] { Psi(s, 1, 0, 0, nan); }), kErrInvalidCall);
    EXPECT_EQ(ErrorOf([&] { RadialR(3, 3, 1, 1.0); }), kErrInvalidCall);
    EXPECT_EQ(ErrorOf([&] { RadialR(3, 1, 1, -1.0); }), kErrInvalidCall);
    EXPECT_EQ(ErrorOf([&] { RadialDistribution(s, nan, 0); }), kErrInvalidCall);
}
