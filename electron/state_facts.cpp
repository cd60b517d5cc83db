// A state's facts. The radial nodes are the zeros of L^(2l+1)_(n-l-1)(rho): the eigenvalues
// of its symmetric tridiagonal Jacobi matrix, each found by bisection on the matrix's Sturm
// count, which needs no starting guess and cannot miss or repeat a zero.
#include "electron/state_facts.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "electron/state_wave.h"

namespace veltara {

namespace {

constexpr double kEvPerHartree = 27.211386245988;
constexpr double kHbarOverHartreeFs = 2.4188843265857e-2;  // hbar/E_h in femtoseconds
constexpr double kPlanckTimesLightEvNm = 1239.84198;       // h c in eV nm

/// L^alpha_k(x) by the three-term recurrence.
double Laguerre(int32_t k, double alpha, double x) {
    double previous = 0.0, current = 1.0;
    for (int32_t j = 0; j < k; ++j) {
        const double next =
            ((2.0 * j + 1.0 + alpha - x) * current - (j + alpha) * previous) / (j + 1.0);
        previous = current;
        current = next;
    }
    return current;
}

/// How many zeros of L^alpha_k lie below x: the negative pivots of T - x for the Jacobi
/// matrix T (diagonal 2i + alpha + 1, off-diagonal sqrt(i (i + alpha)), i from 1).
int32_t ZerosBelow(int32_t k, double alpha, double x) {
    int32_t count = 0;
    double pivot = 1.0;
    for (int32_t i = 0; i < k; ++i) {
        const double offSquare = i == 0 ? 0.0 : i * (i + alpha);
        pivot = (2.0 * i + alpha + 1.0 - x) - offSquare / pivot;
        if (pivot == 0.0) pivot = -1e-300;  // x is an eigenvalue of a leading block: nudge
        if (pivot < 0.0) ++count;
    }
    return count;
}

/// The zeros of L^alpha_k in ascending order, each to the last bits bisection can give.
std::vector<double> LaguerreZeros(int32_t k, double alpha) {
    // Gershgorin: every eigenvalue lies below the largest row sum.
    double upper = 0.0;
    for (int32_t i = 0; i < k; ++i) {
        const double off = std::sqrt(i * (i + alpha)) + std::sqrt((i + 1.0) * (i + 1.0 + alpha));
        upper = std::max(upper, 2.0 * i + alpha + 1.0 + off);
    }
    std::vector<double> zeros;
    for (int32_t j = 0; j < k; ++j) {
        double lo = 0.0, hi = upper;  // the (j+1)-th zero lies in (lo, hi]
        while (true) {
            const double mid = 0.5 * (lo + hi);
            if (mid <= lo || mid >= hi) break;
            if (ZerosBelow(k, alpha, mid) > j) {
                hi = mid;
            } else {
                lo = mid;
            }
        }
        zeros.push_back(hi);
    }
    return zeros;
}

/// The radius of the largest maximum of P(r) = r² R_nl². In rho = 2Zr/n, u = rho^(l+1)
/// e^(-rho/2) L has its extremes where g = (l + 1 - rho/2) L - rho L' vanishes, one in each
/// lobe between neighbouring zeros of L (and beyond the last): bisection in each.
double MostProbableRho(int32_t k, double alpha, int32_t l, const std::vector<double>& zeros) {
    auto g = [&](double rho) {
        const double lower = k == 0 ? 0.0 : Laguerre(k - 1, alpha + 1.0, rho);
        return (l + 1.0 - 0.5 * rho) * Laguerre(k, alpha, rho) - rho * lower;
    };
    auto logP = [&](double rho) {
        return 2.0 * (l + 1.0) * std::log(rho) - rho +
               2.0 * std::log(std::fabs(Laguerre(k, alpha, rho)));
    };
    std::vector<double> edges{0.0};
    edges.insert(edges.end(), zeros.begin(), zeros.end());
    // Beyond the last lobe's maximum g has the sign of its leading term, (-1)^(k+1).
    const bool farPositive = k % 2 == 1;
    double far = 2.0 * (edges.back() + l + 1.0) + 1.0;
    while ((g(far) > 0.0) != farPositive) far *= 2.0;
    edges.push_back(far);
    double best = 0.0, bestLog = -HUGE_VAL;
    for (size_t i = 0; i + 1 < edges.size(); ++i) {
        double lo = edges[i], hi = edges[i + 1];
        const bool loPositive = g(lo) > 0.0;
        while (true) {
            const double mid = 0.5 * (lo + hi);
            if (mid <= lo || mid >= hi) break;
            if ((g(mid) > 0.0) == loPositive) {
                lo = mid;
            } else {
                hi = mid;
            }
        }
        const double rho = 0.5 * (lo + hi);
        const double value = logP(rho);
        if (value > bestLog) {
            bestLog = value;
            best = rho;
        }
    }
    return best;
}

}  // namespace

StateFacts FactsOf(const Superposition& s) {
    const std::vector<Term>& terms = s.Terms();
    const State& first = terms[0].state;
    StateFacts f{};
    f.n = first.n;
    f.l = first.l;
    f.m = first.m;
    f.Z = first.Z;
    // <E> and the time-averaged <r>: cross terms of distinct energies average out.
    std::vector<double> energies;
    for (const Term& term : terms) {
        const double weight = std::norm(term.c);
        const double e = StateEnergy(term.state);
        const State& st = term.state;
        f.energyHartree += weight * e;
        f.meanRadius += weight * (3.0 * st.n * st.n - st.l * (st.l + 1.0)) / (2.0 * st.Z);
        if (std::find(energies.begin(), energies.end(), e) == energies.end()) energies.push_back(e);
    }
    f.energyEv = f.energyHartree * kEvPerHartree;
    f.radialNodes = first.n - first.l - 1;
    f.angularNodes = first.shellAverage           ? 0
                     : first.basis == Basis::Real ? first.l
                                                  : first.l - std::abs(first.m);
    const double alpha = 2.0 * first.l + 1.0;
    const double rToR = first.n / (2.0 * first.Z);  // r = rho n / (2Z)
    const std::vector<double> zeros = LaguerreZeros(f.radialNodes, alpha);
    for (double rho : zeros) f.nodeRadii.push_back(rho * rToR);
    f.mostProbableRadius = MostProbableRho(f.radialNodes, alpha, first.l, zeros) * rToR;
    // Beats: every pair of distinct energies, lowest first.
    std::sort(energies.begin(), energies.end());
    for (size_t i = 0; i < energies.size(); ++i) {
        for (size_t j = i + 1; j < energies.size(); ++j) {
            const double delta = energies[j] - energies[i];
            f.beats.push_back(Beat{delta, 2.0 * std::numbers::pi * kHbarOverHartreeFs / delta,
                                   kPlanckTimesLightEvNm / (delta * kEvPerHartree)});
        }
    }
    return f;
}

}  // namespace veltara
