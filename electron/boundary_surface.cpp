// The enclosing level from exact draws, and its surface by marching tetrahedra.
#include "electron/boundary_surface.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <utility>

#include "electron/marching_tetrahedra.h"
#include "electron/superposition_draw.h"
#include "support/error.h"

namespace veltara {

namespace {

// Draws for the level, shared among the terms. A low-discrepancy sequence puts the fraction's
// error far below the 0.002 allowed (an independent count in the tests checks it).
constexpr uint32_t kLevelPoints = 1u << 17;

// The radical inverse of i in base b: Halton's sequence, exact in double arithmetic.
double RadicalInverse(uint32_t i, uint32_t b) {
    double inverse = 1.0 / b, weight = inverse, v = 0;
    for (; i > 0; i /= b, weight *= inverse) v += (i % b) * weight;
    return v;
}

void CheckArguments(double t, double fraction) {
    if (!(fraction > 0 && fraction < 1))
        Raise(kErrInvalidCall, "the fraction must be a number above 0 and below 1");
    if (!std::isfinite(t)) Raise(kErrInvalidCall, "the time t must be a finite number");
}

double LevelOf(const SuperpositionDraw& draw, double fraction) {
    // Each term's draws stand for its share of the mixture; the weight |Psi|² / mixture turns
    // the mixture into |Psi|² (identically 1 for a single term).
    const size_t terms = draw.TermCount();
    const uint32_t perTerm = kLevelPoints / static_cast<uint32_t>(terms);
    std::vector<std::pair<double, double>> levelWeight;  // (|Psi|², weight)
    levelWeight.reserve(static_cast<size_t>(perTerm) * terms);
    double total = 0;
    for (size_t k = 0; k < terms; ++k) {
        for (uint32_t i = 1; i <= perTerm; ++i) {
            const double u[3] = {RadicalInverse(i, 2), RadicalInverse(i, 3), RadicalInverse(i, 5)};
            double p[3];
            draw.Term(k).Point(u, p);
            const SuperpositionDraw::Value v = draw.At(p[0], p[1], p[2]);
            const double density = std::norm(v.psi);
            double w = 1;
            if (terms > 1) w = v.mixture > 0 ? draw.TermWeight(k) * density / v.mixture : 0;
            levelWeight.emplace_back(density, w);
            total += w;
        }
    }
    // One term: every weight is 1, so the level is the density of rank ceil(fraction * count)
    // counted from the densest, which a selection finds without sorting the rest.
    if (terms == 1) {
        const double rank = std::ceil(fraction * total);
        const auto at = levelWeight.begin() + static_cast<std::ptrdiff_t>(std::max(rank, 1.0)) - 1;
        std::nth_element(levelWeight.begin(), at, levelWeight.end(), std::greater<>());
        return at->first;
    }
    // The densest points first, until they hold the fraction. The order is total (ties by
    // weight), so every library's sort adds the weights in the same order.
    std::sort(levelWeight.begin(), levelWeight.end(), std::greater<>());
    double held = 0;
    for (const auto& [density, w] : levelWeight) {
        held += w;
        if (held >= fraction * total) return density;
    }
    return levelWeight.back().first;
}

// A half-width beyond which |Psi|² < level in every direction: |Psi|² <= K sum |c_k|² R_k²
// (2 l_k + 1) / (4 pi), since no harmonic of degree l exceeds (2l + 1) / (4 pi) in square.
double ReachOf(const Superposition& s, double level) {
    const std::vector<Term>& terms = s.Terms();
    std::vector<RadialFunction> radial;
    double reach = 0;
    for (const Term& term : terms) {
        const State& st = term.state;
        radial.emplace_back(st.n, st.l, st.Z);
        reach = std::max(reach, RadialReach(st, SampleWeight::Density));
    }
    const double step = reach / 4096;
    for (double r = reach; r > 0; r -= step) {
        double bound = 0;
        for (size_t k = 0; k < terms.size(); ++k) {
            const double rk = radial[k](r);
            const int32_t l = terms[k].state.shellAverage ? 0 : terms[k].state.l;
            bound += std::norm(terms[k].c) * rk * rk * (2 * l + 1);
        }
        if (bound * static_cast<double>(terms.size()) / (4 * std::numbers::pi) >= level)
            return r + step;
    }
    return step;
}

}  // namespace

double EnclosingLevel(const Superposition& s, double t, double fraction) {
    CheckArguments(t, fraction);
    return LevelOf(SuperpositionDraw(s, t, SampleWeight::Density), fraction);
}

SurfaceMesh BoundarySurface(const Superposition& s, double t, double fraction, int32_t resolution) {
    CheckArguments(t, fraction);
    if (resolution < 8 || resolution > 256)
        Raise(kErrInvalidCall, "the resolution must be a whole number from 8 to 256 (got " +
                                   std::to_string(resolution) + ")");
    const SuperpositionDraw draw(s, t, SampleWeight::Density);
    SurfaceMesh mesh;
    mesh.level = LevelOf(draw, fraction);
    const double level = mesh.level;
    // A cube whose faces lie beyond the reach, so the region is inside and the surface closed.
    const double reach = ReachOf(s, level);
    const double half = reach * (1 + 2.0 / resolution);
    const Lattice lattice{-half, 2 * half / resolution, resolution};
    const bool average = s.Terms().front().state.shellAverage;

    MarchTetrahedra(
        lattice,
        [&](int32_t k, double* values) {
            const double z = lattice.origin + lattice.step * k;
            for (int32_t j = 0; j <= resolution; ++j) {
                const double y = lattice.origin + lattice.step * j;
                for (int32_t i = 0; i <= resolution; ++i) {
                    const double x = lattice.origin + lattice.step * i;
                    *values++ = std::norm(draw.At(x, y, z).psi) - level;
                }
            }
        },
        [&](double x, double y, double z) {
            return average ? 0.0f
                           : static_cast<float>(SuperpositionDraw::PhaseOf(draw.At(x, y, z).psi));
        },
        mesh);
    return mesh;
}

}  // namespace veltara
