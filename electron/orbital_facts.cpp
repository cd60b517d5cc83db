// The textbook facts of each catalogue orbital, its radial distribution from the averaged
// shells, and the most probable radius as a root of dP/dr.
#include "electron/orbital_facts.h"

#include <array>
#include <cmath>
#include <memory>
#include <numbers>

#include "electron/catalogue.h"
#include "electron/modOrbitals.h"
#include "support/convert.h"
#include "support/error.h"

namespace veltara {

namespace {

/// Coefficients of powers of r up to the catalogue's highest n.
using Coefficients = std::array<double, kCatalogueHighestN + 1>;

OrbInfo InfoOf(int16_t orbital) {
    const std::unique_ptr<cElectron> electron = modOrbitals::CreateElectron(orbital);
    if (!electron) Raise(kErrSubscript);
    return electron->GetInfo();
}

/// The catalogue row of the averaged shell with quantum numbers n and l.
int16_t ShellOf(int n, int l) { return CatalogueRowOf(n, l, 0, true); }

/// The radial factor without its exponential, q(r) = r^(l+1) L(2r/n), as coefficients of
/// powers of r (L the associated Laguerre polynomial of degree n - l - 1 and order 2l + 1).
Coefficients RadialPolynomial(int n, int l) {
    const int k = n - l - 1, alpha = 2 * l + 1;
    Coefficients q{};
    for (int i = 0; i <= k; ++i) {
        // (-1)^i C(k + alpha, k - i) / i! (2/n)^i
        double c = i % 2 == 0 ? 1.0 : -1.0;
        for (int j = 1; j <= k - i; ++j) c *= static_cast<double>(alpha + i + j) / j;
        for (int j = 1; j <= i; ++j) c *= 2.0 / (n * j);
        q[i + l + 1] = c;
    }
    return q;
}

double Evaluate(const Coefficients& c, double r) {
    double v = 0;
    for (size_t i = c.size(); i-- > 0;) v = v * r + c[i];
    return v;
}

/// The sign of dP/dr: P = q² e^(-2r/n), so dP/dr has the sign of q (q' - q/n).
double Slope(const Coefficients& q, int n, double r) {
    Coefficients d{};
    for (size_t i = 1; i < q.size(); ++i) d[i - 1] = q[i] * static_cast<double>(i);
    const double v = Evaluate(q, r);
    return v * (Evaluate(d, r) - v / n);
}

/// P(r) from the density of the averaged shell with the orbital's n and l.
double RadialFromShell(cElectron& shell, double r) {
    if (!(r >= 0)) Raise(kErrInvalidCall);
    return CheckFinite(4.0 * std::numbers::pi * r * r * shell.GetRealPDF({r * r, 0.0, 0.0}));
}

/// The global maximum of P: the best of a fine scan out to 4n², then bisection of dP/dr
/// between its neighbours to the last bit.
double MostProbableRadius(int n, int l) {
    if (l == n - 1) return static_cast<double>(n * n);  // q = r^n: the root of n - r/n
    const std::unique_ptr<cElectron> shell = modOrbitals::CreateElectron(ShellOf(n, l));
    const int steps = 4000;
    const double h = 4.0 * n * n / steps;
    int best = 1;
    double top = 0;
    for (int i = 1; i < steps; ++i) {
        const double p = RadialFromShell(*shell, i * h);
        if (p > top) {
            top = p;
            best = i;
        }
    }
    const Coefficients q = RadialPolynomial(n, l);
    double lo = (best - 1) * h, hi = (best + 1) * h;
    while (true) {
        const double mid = lo + (hi - lo) / 2;
        if (mid <= lo || mid >= hi) return mid;
        (Slope(q, n, mid) > 0 ? lo : hi) = mid;
    }
}

}  // namespace

OrbitalFacts FactsOf(int16_t orbital) {
    const OrbInfo info = InfoOf(orbital);
    const int n = info.n, l = info.l;
    OrbitalFacts f;
    f.n = info.n;
    f.l = info.l;
    f.m = info.M;
    f.radialNodes = n - l - 1;
    f.angularNodes = l;
    f.energyHartree = -1.0 / (2.0 * n * n);
    f.meanRadius = (3.0 * n * n - l * (l + 1)) / 2.0;
    f.mostProbableRadius = MostProbableRadius(n, l);
    return f;
}

double RadialDistribution(int16_t orbital, double r) {
    const OrbInfo info = InfoOf(orbital);
    const std::unique_ptr<cElectron> shell = modOrbitals::CreateElectron(ShellOf(info.n, info.l));
    return RadialFromShell(*shell, r);
}

void RadialDistributionBatch(int16_t orbital, const double* r, size_t count, double* out) {
    const OrbInfo info = InfoOf(orbital);
    const std::unique_ptr<cElectron> shell = modOrbitals::CreateElectron(ShellOf(info.n, info.l));
    for (size_t i = 0; i < count; ++i) out[i] = RadialFromShell(*shell, r[i]);
}

}  // namespace veltara
