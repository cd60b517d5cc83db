// Exact samples against closed forms: Kolmogorov-Smirnov tests of r, of the angles and of
// the azimuth, the beat of a superposition's mean position, and the radius holding a share.
#include "electron/sampling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <vector>

#include "electron/hybrids.h"
#include "electron/state_wave.h"
#include "support/error.h"

using namespace veltara;

namespace {

constexpr double kPi = std::numbers::pi;
constexpr size_t kCount = 20000;
// The Kolmogorov-Smirnov distance that a true distribution exceeds with probability 0.001.
const double kKsLimit = 1.95 / std::sqrt(static_cast<double>(kCount));

Superposition One(int32_t n, int32_t l, int32_t m, Basis basis = Basis::Real, int32_t Z = 1) {
    return MakeSuperposition(State{n, l, m, basis, Z, false});
}

std::vector<double> Points(const Superposition& s, SampleWeight w, double t = 2, uint64_t seed = 7,
                           size_t count = kCount) {
    std::vector<double> xyz(3 * count);
    Sample(s, t, seed, count, w, xyz.data(), nullptr);
    return xyz;
}

double KsDistance(std::vector<double> v, const std::function<double(double)>& cdf) {
    std::sort(v.begin(), v.end());
    double d = 0;
    const double n = static_cast<double>(v.size());
    for (size_t i = 0; i < v.size(); ++i) {
        const double f = cdf(v[i]);
        d = std::max({d, f - static_cast<double>(i) / n, static_cast<double>(i + 1) / n - f});
    }
    return d;
}

// 1 - e^(-a r) sum c_j r^j / c_0: the closed forms that sympy gives for these states' CDFs.
std::function<double(double)> Gamma(double a, std::vector<double> c) {
    return [a, c](double r) {
        double p = 0;
        for (size_t j = c.size(); j-- > 0;) p = p * r + c[j];
        return 1 - std::exp(-a * r) * p / c[0];
    };
}

// The CDF of r² R_nl² by Simpson's rule on R_nl from std::assoc_laguerre (unnormalised: the
// total normalises it).
std::function<double(double)> LaguerreCdf(int n, int l, double rMax) {
    constexpr int kSteps = 200000;
    auto f = [=](double r) {
        const double rho = 2 * r / n;
        const double R = std::exp(-rho / 2) * std::pow(rho, l) *
                         std::assoc_laguerre(unsigned(n - l - 1), unsigned(2 * l + 1), rho);
        return r * r * R * R;
    };
    auto cum = std::make_shared<std::vector<double>>(kSteps / 2 + 1, 0.0);
    const double h = rMax / kSteps;
    for (int i = 0; i < kSteps / 2; ++i)
        (*cum)[i + 1] =
            (*cum)[i] + h / 3 * (f(2 * i * h) + 4 * f((2 * i + 1) * h) + f((2 * i + 2) * h));
    return [cum, h](double r) {
        const double x = r / (2 * h);
        const size_t i = std::min(cum->size() - 2, static_cast<size_t>(x));
        const double v = (*cum)[i] + (x - static_cast<double>(i)) * ((*cum)[i + 1] - (*cum)[i]);
        return v / cum->back();
    };
}

// The CDF of cos theta under P_l^m(u)² by Simpson's rule on std::assoc_legendre.
std::function<double(double)> LegendreCdf(int l, int m) {
    constexpr int kSteps = 20000;
    auto cum = std::make_shared<std::vector<double>>(kSteps / 2 + 1, 0.0);
    const double h = 2.0 / kSteps;
    auto f = [=](double u) {
        return std::pow(std::assoc_legendre(unsigned(l), unsigned(m), u), 2);
    };
    for (int i = 0; i < kSteps / 2; ++i)
        (*cum)[i + 1] =
            (*cum)[i] +
            h / 3 * (f(-1 + 2 * i * h) + 4 * f(-1 + (2 * i + 1) * h) + f(-1 + (2 * i + 2) * h));
    return [cum, h](double u) {
        const double x = (u + 1) / (2 * h);
        const size_t i = std::min(cum->size() - 2, static_cast<size_t>(x));
        return ((*cum)[i] + (x - static_cast<double>(i)) * ((*cum)[i + 1] - (*cum)[i])) /
               cum->back();
    };
}

std::vector<double> Column(const std::vector<double>& xyz,
                           const std::function<double(const double*)>& of) {
    std::vector<double> v;
    for (size_t i = 0; i < xyz.size(); i += 3) v.push_back(of(&xyz[i]));
    return v;
}

double Radius(const double* p) { return std::hypot(p[0], p[1], p[2]); }

}  // namespace

TEST(Sampling, RadiiFollowTheRadialDistribution) {
    struct Case {
        const char* what;
        Superposition s;
        SampleWeight w;
        std::function<double(double)> cdf;
    };
    const SampleWeight D = SampleWeight::Density, V = SampleWeight::RadialView;
    const Case cases[] = {
        {"1s", One(1, 0, 0), D, Gamma(2, {1, 2, 2})},
        {"2s", One(2, 0, 0), D, Gamma(1, {1, 1, 0.5, 0, 0.125})},
        {"3d-1", One(3, 2, -1), D, Gamma(2.0 / 3, {32805, 21870, 7290, 1620, 270, 36, 4})},
        {"4p1 complex", One(4, 1, 1, Basis::Complex), D,
         Gamma(0.5, {491520, 245760, 61440, 10240, 1280, -512, 224, -24, 1})},
        {"2p0 Z=2", One(2, 1, 0, Basis::Real, 2), D, Gamma(2, {3, 6, 6, 4, 2})},
        {"1s radial view", One(1, 0, 0), V, Gamma(2, {3, 6, 6, 4, 2})},
        {"3p1 radial view", One(3, 1, 1), V,
         Gamma(2.0 / 3, {295245, 196830, 65610, 14580, 2430, 324, 36, 0, 1})},
        {"12h", One(12, 5, 3), D, LaguerreCdf(12, 5, 600)},
        {"30s", One(30, 0, 0), D, LaguerreCdf(30, 0, 3000)},
        {"27,20", One(27, 20, -7, Basis::Complex), D, LaguerreCdf(27, 20, 3000)},
        // Over angles the cross term of 1s and 2p0 in the radial view is 0; the halves weigh
        // <r²>_1s pi / 4 = 3 pi / 4 and <r²>_2p (3 pi / 16) = 90 pi / 16.
        {"1s + 2p0 radial view at t 2",
         MakeSuperposition({{1.0, State{1, 0, 0}}, {1.0, State{2, 1, 0}}}), V,
         [](double r) {
             const double a = 3 * kPi / 4, b = 90 * kPi / 16;
             return (a * Gamma(2, {3, 6, 6, 4, 2})(r) +
                     b * Gamma(1, {1, 1, 1 / 2., 1 / 6., 1 / 24., 1 / 120., 1 / 720.})(r)) /
                    (a + b);
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_LT(KsDistance(Column(Points(c.s, c.w), Radius), c.cdf), kKsLimit);
    }
}

TEST(Sampling, AnglesFollowTheHarmonics) {
    auto cosTheta = [](const double* p) { return p[2] / Radius(p); };
    auto along = [](int axis) { return [axis](const double* p) { return p[axis] / Radius(p); }; };
    auto azimuth = [](const double* p) {
        const double phi = std::atan2(p[1], p[0]);
        return phi < 0 ? phi + 2 * kPi : phi;
    };
    const auto squared = [](double u) { return (u * u * u + 1) / 2; };       // 3/2 u²
    const auto belt = [](double u) { return (3 * u - u * u * u + 2) / 4; };  // 3/4 (1 - u²)
    const auto cos2 = [](double phi) { return (phi + std::sin(4 * phi) / 4) / (2 * kPi); };
    const auto sin2 = [](double phi) { return (phi - std::sin(4 * phi) / 4) / (2 * kPi); };
    // The radial view of 2p0 weighs cos theta by sin theta more: u² sqrt(1 - u²).
    const auto viewed = [](double u) {
        return (std::asin(u) - u * std::sqrt(1 - u * u) * (1 - 2 * u * u) + kPi / 2) / kPi;
    };
    struct Case {
        const char* what;
        Superposition s;
        std::function<double(const double*)> of;
        std::function<double(double)> cdf;
        SampleWeight w = SampleWeight::Density;
    };
    const Case cases[] = {
        {"2p0: cos theta", One(2, 1, 0), cosTheta, squared},
        {"2p0 radial view: cos theta", One(2, 1, 0), cosTheta, viewed, SampleWeight::RadialView},
        {"2p+1 real: x / r", One(2, 1, 1), along(0), squared},
        {"3p-1 real: y / r", One(3, 1, -1), along(1), squared},
        {"2p1 complex: cos theta", One(2, 1, 1, Basis::Complex), cosTheta, belt},
        {"27,20,-7 complex: cos theta", One(27, 20, -7, Basis::Complex), cosTheta,
         LegendreCdf(20, 7)},
        {"3d+2 real: phi", One(3, 2, 2), azimuth, cos2},
        {"3d-2 real: phi", One(3, 2, -2), azimuth, sin2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_LT(KsDistance(Column(Points(c.s, c.w), c.of), c.cdf), kKsLimit);
    }
}

// 1s + 2p0 in equal parts: <z>(t) = <1s|z|2p0> cos(0.375 t), <1s|z|2p0> = 2^7 sqrt 2 / 3^5
// = 0.7449 Bohr.
TEST(Sampling, MeanPositionsOfSuperpositions) {
    const auto s = MakeSuperposition({{1.0, State{1, 0, 0}}, {1.0, State{2, 1, 0}}});
    constexpr size_t kMany = 200000;
    // <z²> = (1 + 18) / 2 for the two halves, so the mean of kMany has sd sqrt(9.5 / kMany).
    const double tolerance = 4.5 * std::sqrt(9.5 / kMany);
    for (double t : {0.0, 2.0, 4.1887902, 8.3775804}) {
        const std::vector<double> xyz = Points(s, SampleWeight::Density, t, 11, kMany);
        double sum = 0;
        for (size_t i = 2; i < xyz.size(); i += 3) sum += xyz[i];
        EXPECT_NEAR(sum / kMany, 128 * std::sqrt(2.0) / 243 * std::cos(0.375 * t), tolerance)
            << "t = " << t;
    }
    // sp3 hybrid 0 = -1/2 2s + sqrt 3 / 2 2p along (1, 1, 1) / sqrt 3, its 2p parts sharing one
    // radial function: <r> = 2 (1/2) (sqrt 3 / 2) 3 along the axis (<2s|z|2p0> = -3 Bohr, from
    // the radial integral -3 sqrt 3 and the angular 1 / sqrt 3), 1.5 Bohr on each axis.
    // <x²> is at most 14 for these parts.
    const std::vector<double> xyz =
        Points(Hybrid(HybridKind::Sp3, 0), SampleWeight::Density, 0, 5, kMany);
    for (int axis = 0; axis < 3; ++axis) {
        double sum = 0;
        for (size_t i = axis; i < xyz.size(); i += 3) sum += xyz[i];
        EXPECT_NEAR(sum / kMany, 1.5, 4.5 * std::sqrt(14.0 / kMany)) << axis;
    }
}

TEST(Sampling, SameSeedSamePointsAndPhasesOfARealState) {
    const auto s = One(3, 2, 1);
    std::vector<double> a(300), b(300), c(300), phase(100);
    Sample(s, 0, 42, 100, SampleWeight::Density, a.data(), phase.data());
    Sample(s, 5, 42, 100, SampleWeight::Density, b.data(), nullptr);
    Sample(s, 0, 43, 100, SampleWeight::Density, c.data(), nullptr);
    EXPECT_EQ(a, b);
    EXPECT_NE(a, c);
    // 3d+1 real is R(r) (positive: no radial node) times a positive constant times xz.
    for (size_t i = 0; i < 100; ++i)
        EXPECT_EQ(phase[i], a[3 * i] * a[3 * i + 2] > 0 ? 0.0 : kPi) << i;
}

TEST(Sampling, RadiusHoldingMatchesTheClosedForms) {
    const auto cdf1s = Gamma(2, {1, 2, 2});
    for (double fraction : {0.5, 0.9, 0.999}) {
        double lo = 0, hi = 50;  // bisection on the closed form
        while (hi - lo > 1e-13) ((cdf1s((lo + hi) / 2) < fraction) ? lo : hi) = (lo + hi) / 2;
        EXPECT_NEAR(RadiusHolding(One(1, 0, 0), fraction), lo, 1e-9 * lo);
        EXPECT_NEAR(RadiusHolding(One(1, 0, 0, Basis::Real, 3), fraction), lo / 3, 1e-9 * lo);
        if (fraction == 0.999) {
            EXPECT_EQ(DefaultAtomRadius(One(1, 0, 0)), std::ceil(lo));
        }
    }
    // A superposition whose P(r) moves in time holds the fraction at every time.
    const auto s = MakeSuperposition({{1.0, State{1, 0, 0}}, {1.0, State{2, 0, 0}}});
    const double r = RadiusHolding(s, 0.99);
    for (double t : {0.0, 4.0, 8.0}) {
        double held = 0;
        for (int i = 0; i < 20000; ++i) held += RadialDistribution(s, (i + 0.5) * r / 20000, t);
        EXPECT_GE(held * r / 20000, 0.99) << t;
    }
}

TEST(Sampling, RefusedArgumentsRaise5) {
    const auto s = One(2, 1, 0);
    for (const auto& call : std::vector<std::function<void()>>{
             [&] { Sample(s, 0, 1, 3, SampleWeight::Density, nullptr, nullptr); },
             [&] { Sample(s, NAN, 1, 3, SampleWeight::Density, nullptr, nullptr); },
             [&] { RadiusHolding(s, 0); },
             [&] { RadiusHolding(s, 1.5); },
             [&] { RadiusHolding(s, NAN); },
         }) {
        try {
            call();
            ADD_FAILURE() << "no error";
        } catch (const Error& e) {
            EXPECT_EQ(e.number(), 5);
            EXPECT_FALSE(e.detail().empty());
        }
    }
}
