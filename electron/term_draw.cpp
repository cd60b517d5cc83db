// Tabulating and inverting one term's radial, polar and azimuthal distributions.
#include "electron/term_draw.h"

#include <cmath>
#include <complex>
#include <cstdlib>
#include <numbers>

#include "electron/angular.h"
#include "electron/radial.h"
#include "electron/sample_elementary.h"

namespace veltara {

namespace {

namespace fn = sample_elementary;
constexpr double kPi = std::numbers::pi;

std::vector<double> Breaks(double lo, double hi, int count) {
    std::vector<double> b(count + 1);
    for (int i = 0; i <= count; ++i) b[i] = i == count ? hi : lo + (hi - lo) * i / count;
    return b;
}

// Whether the radial view weighs this state by r² (a shell average) rather than rho r.
bool WeighsBySquare(const State& s, SampleWeight w) {
    return w == SampleWeight::RadialView && s.shellAverage;
}

}  // namespace

double RadialReach(const State& s, SampleWeight weight) {
    // r² R² is a gamma density of shape 2n + 1 in 2Zr/n (2n + 3 for r⁴ R²) times a polynomial
    // whose roots lie inside; the cut-off lies far out in the gamma tail.
    const int shape = 2 * s.n + (weight == SampleWeight::Density ? 1 : 3);
    const double rhoMax = shape + 50 + 8 * std::sqrt(static_cast<double>(shape));
    return rhoMax * s.n / (2.0 * s.Z);
}

TabulatedDistribution RadialTable(const State& s, SampleWeight weight) {
    const double rMax = RadialReach(s, weight);
    // Pieces even in sqrt(r): the radial waves shorten like sqrt(r) towards the nucleus.
    std::vector<double> breaks = Breaks(0, std::sqrt(rMax), 256);
    for (double& b : breaks) b *= b;
    breaks.back() = rMax;
    const RadialFunction radial(s.n, s.l, s.Z);
    const bool fourth = weight == SampleWeight::RadialView;
    return TabulatedDistribution(
        [&](double r) {
            const double rr = r * radial(r);
            return fourth ? rr * rr * r * r : rr * rr;
        },
        breaks);
}

TermDraw::TermDraw(const State& s, SampleWeight weight)
    : mRadial(RadialTable(s, weight)), mPolar([&] {
          // |Y|² along phi = 0 of the complex function of |m|: the polar shape of both
          // bases, normalised so that 2 pi times its integral against sin theta is 1.
          const int32_t l = s.shellAverage ? 0 : s.l;
          const AngularFunction y(l, s.shellAverage ? 0 : std::abs(s.m), true);
          const bool byRho = weight == SampleWeight::RadialView && !WeighsBySquare(s, weight);
          return TabulatedDistribution(
              [&y, byRho](double theta) {
                  const double st = fn::Sin(theta), ct = fn::Cos(theta);
                  const double v = std::norm(y(st, 0, ct, 1)) * st;
                  return byRho ? v * st : v;
              },
              Breaks(0, kPi, 32 + 4 * l));
      }()) {
    if (s.basis == Basis::Real && s.m != 0 && !s.shellAverage) {
        const int32_t m = s.m;
        mAzimuth.emplace(
            [m](double phi) {
                const double v = m > 0 ? fn::Cos(m * phi) : fn::Sin(-m * phi);
                return v * v;
            },
            Breaks(0, 2 * kPi, 16 * std::abs(m)));
    }
}

void TermDraw::Point(const double* u, double* xyz) const {
    const double r = mRadial.Quantile(u[0]);
    const double theta = mPolar.Quantile(u[1]);
    const double phi = mAzimuth ? mAzimuth->Quantile(u[2]) : 2 * kPi * u[2];
    const double rs = r * fn::Sin(theta);
    xyz[0] = rs * fn::Cos(phi);
    xyz[1] = rs * fn::Sin(phi);
    xyz[2] = r * fn::Cos(theta);
}

double TermDraw::ViewMass() const noexcept { return mRadial.Total() * 2 * kPi * mPolar.Total(); }

}  // namespace veltara
