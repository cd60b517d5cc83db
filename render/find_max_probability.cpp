// FindMaxProbability: the largest unscaled value of the renderer's view over the sampled cube,
// which Setup maps to byte 255.
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "render/orbital_renderer.h"

namespace veltara {

namespace {

// Evaluates the view at the points whose coordinates are xs[0..count) on one row (y, z),
// through the electron's batch path: one virtual call per row.
void EvaluateRow(cElectron& e, ViewMode view, const double* xs, size_t count, double y, double z,
                 COORDdoubleParams* points, double* out) {
    const double ys = y * y;
    const double zs = z * z;
    for (size_t i = 0; i < count; ++i) {
        points[i].Xs = xs[i] * xs[i];
        points[i].Ys = ys;
        points[i].Zs = zs;
    }
    e.NonScaledBatch(view, points, out, count);
}

constexpr size_t kMaxBatch = 33;  // the most points one evaluation is given

/// The largest value of a smooth function over the cube [lo, hi]³: a coarse scan, then pattern
/// searches from its peaks (see FindMaxRadialDistribution). eval(xyz, n, out) evaluates n <= 33
/// points given as x, y, z triples.
template <typename Eval>
double ClimbToMax(double lo, double hi, Eval&& eval) {
    // Stage 1: the coarse scan.
    constexpr int32_t kDiv = 32;
    constexpr int32_t kPts = kDiv + 1;
    const double h = (hi - lo) / kDiv;
    std::array<double, kPts> xs{};
    for (int32_t i = 0; i < kPts; ++i) xs[i] = lo + static_cast<double>(i) * h;
    std::vector<double> grid(static_cast<size_t>(kPts) * kPts * kPts);
    std::array<double, 3 * kPts> row{};
    for (int32_t k = 0; k < kPts; ++k) {
        for (int32_t j = 0; j < kPts; ++j) {
            for (int32_t i = 0; i < kPts; ++i) {
                row[3 * i] = xs[i];
                row[3 * i + 1] = xs[j];
                row[3 * i + 2] = xs[k];
            }
            eval(row.data(), kPts, grid.data() + (static_cast<size_t>(k) * kPts + j) * kPts);
        }
    }
    auto at = [&](int32_t i, int32_t j, int32_t k) {
        return grid[(static_cast<size_t>(k) * kPts + j) * kPts + i];
    };
    struct Candidate {
        double value;
        double p[3];
    };
    std::vector<Candidate> candidates;
    double coarseBest = 0.0;
    for (int32_t k = 0; k < kPts; ++k) {
        for (int32_t j = 0; j < kPts; ++j) {
            for (int32_t i = 0; i < kPts; ++i) {
                const double v = at(i, j, k);
                coarseBest = std::max(coarseBest, v);
                if (!(v > 0.0)) continue;
                bool isPeak = true;
                for (int32_t dk = -1; dk <= 1 && isPeak; ++dk) {
                    for (int32_t dj = -1; dj <= 1 && isPeak; ++dj) {
                        for (int32_t di = -1; di <= 1; ++di) {
                            const int32_t ni = i + di, nj = j + dj, nk = k + dk;
                            if (ni < 0 || nj < 0 || nk < 0 || ni >= kPts || nj >= kPts ||
                                nk >= kPts) {
                                continue;
                            }
                            if (at(ni, nj, nk) > v) {
                                isPeak = false;
                                break;
                            }
                        }
                    }
                }
                if (isPeak) candidates.push_back({v, {xs[i], xs[j], xs[k]}});
            }
        }
    }
    std::sort(candidates.begin(), candidates.end(),
              [](const Candidate& a, const Candidate& b) { return a.value > b.value; });
    constexpr size_t kClimbs = 8;
    if (candidates.size() > kClimbs) candidates.resize(kClimbs);

    // Stage 2: pattern search from each candidate.
    std::array<std::array<double, 3>, 26> moves{};
    {
        size_t m = 0;
        for (int dz = -1; dz <= 1; ++dz) {
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dx = -1; dx <= 1; ++dx) {
                    if (dx == 0 && dy == 0 && dz == 0) continue;
                    moves[m++] = {static_cast<double>(dx), static_cast<double>(dy),
                                  static_cast<double>(dz)};
                }
            }
        }
    }
    auto clamp = [lo, hi](double v) { return std::min(std::max(v, lo), hi); };

    double best = coarseBest;
    std::array<double, 3 * 26> trial{};
    std::array<double, 26> trialValues{};
    for (const Candidate& c : candidates) {
        double p[3] = {c.p[0], c.p[1], c.p[2]};
        double v = c.value;
        double s = h;
        // The step halves about 60 times before it drops below a unit in the last place of
        // the radius; the move cap only guards against a pathological crawl.
        const double minStep = std::max(-lo, hi) * 1e-17;
        int32_t movesLeft = 200000;
        while (s > minStep && movesLeft > 0) {
            for (size_t m = 0; m < moves.size(); ++m) {
                const double x = clamp(p[0] + moves[m][0] * s);
                const double y = clamp(p[1] + moves[m][1] * s);
                const double z = clamp(p[2] + moves[m][2] * s);
                trial[3 * m] = x;
                trial[3 * m + 1] = y;
                trial[3 * m + 2] = z;
            }
            eval(trial.data(), moves.size(), trialValues.data());
            size_t bestMove = moves.size();
            double bestValue = v;
            for (size_t m = 0; m < moves.size(); ++m) {
                if (trialValues[m] > bestValue) {
                    bestValue = trialValues[m];
                    bestMove = m;
                }
            }
            if (bestMove == moves.size()) {
                s *= 0.5;
            } else {
                for (int a = 0; a < 3; ++a) p[a] = clamp(p[a] + moves[bestMove][a] * s);
                v = bestValue;
                --movesLeft;
            }
        }
        best = std::max(best, v);
    }
    return best;
}

}  // namespace

double OrbitalRenderer::FindMaxProbability() {
    // The radial view's search serves any state's density too: a state's lobes are not the
    // catalogue's, and the lattice refinement below is the catalogue's own.
    if (mView == ViewMode::DRPDF || mStateElectron != nullptr) return FindMaxRadialDistribution();

    // The density view's search: a lattice over a box that shrinks around the best point, with
    // 14, 13, 12, 14, 13, 12 ... divisions per round, until a round finds nothing better.
    cElectron& e = LiveElectron();
    const double radius = static_cast<double>(mSetup.AtomRadius);
    double lo[3] = {0.0, 0.0, 0.0};
    double hi[3] = {radius, radius, radius};
    double Best = 0.0;
    double PrevBest = -1.0;
    double BestPoint[3] = {0.0, 0.0, 0.0};
    int32_t N = 12;
    bool firstRound = true;

    constexpr int32_t kMaxDivisions = 14;
    std::array<double, kMaxDivisions + 1> xs{};
    std::array<COORDdoubleParams, kMaxDivisions + 1> points{};
    std::array<double, kMaxDivisions + 1> values{};

    for (;;) {
        // The first round cannot stop the search, PrevBest stays -1 there.
        if (!firstRound) PrevBest = Best;
        firstRound = false;
        N = (N % 3 != 0) ? N - 1 : N + 2;
        const double dN = static_cast<double>(N);
        const double step[3] = {(hi[0] - lo[0]) / dN, (hi[1] - lo[1]) / dN, (hi[2] - lo[2]) / dN};

        // The lattice: Z outermost, then Y, X innermost; strict > keeps the first of equal values.
        for (int32_t i = 0; i <= N; ++i) xs[i] = lo[0] + static_cast<double>(i) * step[0];
        for (int32_t k = 0; k <= N; ++k) {
            const double z = lo[2] + static_cast<double>(k) * step[2];
            for (int32_t j = 0; j <= N; ++j) {
                const double y = lo[1] + static_cast<double>(j) * step[1];
                EvaluateRow(e, mView, xs.data(), static_cast<size_t>(N + 1), y, z, points.data(),
                            values.data());
                for (int32_t i = 0; i <= N; ++i) {
                    if (values[i] > Best) {
                        Best = values[i];
                        BestPoint[0] = xs[i];
                        BestPoint[1] = y;
                        BestPoint[2] = z;
                    }
                }
            }
        }

        // The next box: one step either side of the best point, pushed back inside the cube.
        for (int a = 0; a < 3; ++a) {
            lo[a] = BestPoint[a] - step[a];
            hi[a] = BestPoint[a] + step[a];
            if (lo[a] < 0.0) {
                const double shift = -lo[a];
                lo[a] = 0.0;
                hi[a] = hi[a] + shift;
            }
            if (hi[a] > radius) {
                const double excess = hi[a] - radius;
                hi[a] = radius;
                lo[a] = lo[a] - excess;
            }
        }

        // Stop when a round finds nothing better.
        if (Best == PrevBest) return Best;
    }
}

// The radial view's search. Its values g = f x rho x r (single orbitals) or f x r^2 (averaged
// shells) are smooth in the cube, so the largest value lies either where the gradient
// vanishes inside or on a face, edge or corner of the cube. The search has two stages:
//
//  1. A coarse scan of a 33 x 33 x 33 lattice over [0, AtomRadius]^3 finds every lattice point
//     that is at least as large as all its lattice neighbours: each hump of the function (a
//     lobe of the orbital) shows up as one of them, since the lobes of the catalogue's orbitals
//     are several lattice steps wide.
//  2. From the largest few of these candidates, a pattern search climbs to the top: it tries
//     the 26 moves of the current step along the axes, face and space diagonals, takes the best
//     move that raises the value, and halves the step when none does, until the step is below
//     the resolution of a double. Coordinates are clamped to the cube, so maxima on its faces,
//     edges and corners are reached as well. For a smooth function a step that finds no better
//     neighbour bounds the gradient by a multiple of the step, so the final point is a
//     stationary point (or a constrained one on the boundary) to machine precision, and the
//     value there, being quadratic in the distance from the top, is correct to a few units in
//     the last place.
//
// The best of the climbed values is returned. Every value is a real evaluation of the
// function, so the result never exceeds the true maximum, and since it is that maximum to
// about 1e-15 relative, no grid value can scale to more than 255.5 and round above 255.
double OrbitalRenderer::FindMaxRadialDistribution() {
    cElectron& e = LiveElectron();
    const double radius = static_cast<double>(mSetup.AtomRadius);
    if (mWholeCube) {
        // A state without mirror symmetry: the whole cube, at signed points.
        StateElectron& state = *mStateElectron;
        return ClimbToMax(-radius, radius, [&](const double* xyz, size_t n, double* out) {
            state.SignedBatch(mView, xyz, out, n);
        });
    }
    std::array<COORDdoubleParams, kMaxBatch> points{};
    return ClimbToMax(0.0, radius, [&](const double* xyz, size_t n, double* out) {
        for (size_t i = 0; i < n; ++i) {
            points[i] = {xyz[3 * i] * xyz[3 * i], xyz[3 * i + 1] * xyz[3 * i + 1],
                         xyz[3 * i + 2] * xyz[3 * i + 2]};
        }
        e.NonScaledBatch(mView, points.data(), out, n);
    });
}

}  // namespace veltara
