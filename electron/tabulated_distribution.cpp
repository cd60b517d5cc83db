// Building and inverting a tabulated cumulative distribution.
#include "electron/tabulated_distribution.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>

namespace veltara {

namespace {

constexpr int kN = 8;
constexpr int kMaxSplits = 20;        // a piece is halved at most this often
constexpr double kTolerance = 1e-12;  // of the density's peak

using Matrix = std::array<std::array<double, kN>, kN>;

double Node(int k) { return -1.0 + 2.0 * k / (kN - 1); }

// The inverse of the Vandermonde matrix of the nodes: monomial coefficients from node values.
// Gauss-Jordan elimination in plain double arithmetic, so every machine gets the same table.
const Matrix& MonomialFromValues() {
    static const Matrix inverse = [] {
        Matrix a{}, inv{};
        for (int k = 0; k < kN; ++k) {
            double power = 1;
            for (int j = 0; j < kN; ++j, power *= Node(k)) a[k][j] = power;
            inv[k][k] = 1;
        }
        for (int col = 0; col < kN; ++col) {
            int pivot = col;
            for (int r = col + 1; r < kN; ++r)
                if (std::fabs(a[r][col]) > std::fabs(a[pivot][col])) pivot = r;
            std::swap(a[col], a[pivot]);
            std::swap(inv[col], inv[pivot]);
            const double d = a[col][col];
            for (int j = 0; j < kN; ++j) a[col][j] /= d, inv[col][j] /= d;
            for (int r = 0; r < kN; ++r) {
                if (r == col || a[r][col] == 0) continue;
                const double f = a[r][col];
                for (int j = 0; j < kN; ++j) a[r][j] -= f * a[col][j], inv[r][j] -= f * inv[col][j];
            }
        }
        return inv;  // coefficient j = sum_k inv[j][k] * value k
    }();
    return inverse;
}

struct Sampled {
    double lo, hi;
    std::array<double, kN> value;
    std::array<double, kN> coef;  // density = sum coef[j] s^j, s in [-1, 1]
};

Sampled SamplePiece(const std::function<double(double)>& f, double lo, double hi) {
    Sampled p{lo, hi, {}, {}};
    for (int k = 0; k < kN; ++k) p.value[k] = f(k == kN - 1 ? hi : lo + (hi - lo) * k / (kN - 1));
    const Matrix& m = MonomialFromValues();
    for (int j = 0; j < kN; ++j) {
        double c = 0;
        for (int k = 0; k < kN; ++k) c += m[j][k] * p.value[k];
        p.coef[j] = c;
    }
    return p;
}

// The piece's mass and its slope at s, by Estrin's scheme: independent products in pairs, so
// the two polynomials cost about half the latency of Horner's chain.
struct MassAndSlope {
    double mass, slope;
};
static_assert(kN == 8, "the scheme below is written out for degree 8 and 7");
inline MassAndSlope Estrin(const double* m, const double* d, double s) {
    const double s2 = s * s, s4 = s2 * s2;
    const double mLow = (m[0] + m[1] * s) + (m[2] + m[3] * s) * s2;
    const double mHigh = (m[4] + m[5] * s) + (m[6] + m[7] * s) * s2;
    const double dLow = (d[0] + d[1] * s) + (d[2] + d[3] * s) * s2;
    const double dHigh = (d[4] + d[5] * s) + (d[6] + d[7] * s) * s2;
    return {mLow + (mHigh + m[8] * s4) * s4, dLow + dHigh * s4};
}

double Horner(const double* c, int count, double s) {
    double v = c[count - 1];
    for (int j = count - 2; j >= 0; --j) v = v * s + c[j];
    return v;
}

// Whether the polynomial follows the density between the nodes, where equally spaced
// interpolation errs most: between the outer pairs and at the centre.
bool Follows(const std::function<double(double)>& f, const Sampled& p, double tolerance) {
    for (double s : {Node(0) + 1.0 / (kN - 1), 0.0, Node(kN - 1) - 1.0 / (kN - 1)}) {
        const double x = p.lo + (p.hi - p.lo) * (s + 1) / 2;
        if (!(std::fabs(Horner(p.coef.data(), kN, s) - f(x)) <= tolerance)) return false;
    }
    return true;
}

void Refine(const std::function<double(double)>& f, const Sampled& p, double tolerance, int depth,
            std::vector<Sampled>& out) {
    if (depth >= kMaxSplits || Follows(f, p, tolerance)) {
        out.push_back(p);
        return;
    }
    const double mid = p.lo + (p.hi - p.lo) / 2;
    Refine(f, SamplePiece(f, p.lo, mid), tolerance, depth + 1, out);
    Refine(f, SamplePiece(f, mid, p.hi), tolerance, depth + 1, out);
}

}  // namespace

TabulatedDistribution::TabulatedDistribution(const std::function<double(double)>& f,
                                             const std::vector<double>& breaks) {
    assert(breaks.size() >= 2);
    // First partition, then the density's peak sets the tolerance of the refinement.
    std::vector<Sampled> first;
    double peak = 0;
    for (size_t i = 0; i + 1 < breaks.size(); ++i) {
        first.push_back(SamplePiece(f, breaks[i], breaks[i + 1]));
        for (double v : first.back().value) peak = std::max(peak, std::fabs(v));
    }
    std::vector<Sampled> pieces;
    for (const Sampled& p : first) Refine(f, p, kTolerance * peak, 0, pieces);

    // Each piece's mass from its start as a polynomial: the integral of the density's.
    mCumulative.push_back(0);
    for (const Sampled& p : pieces) {
        Piece q{};
        q.lo = p.lo;
        q.halfWidth = (p.hi - p.lo) / 2;
        double atStart = 0;  // integral from 0 to -1 of the density's polynomial
        for (int j = 0; j < kN; ++j) {
            q.mass[j + 1] = q.halfWidth * p.coef[j] / (j + 1);
            q.slope[j] = q.halfWidth * p.coef[j];
            atStart += (j % 2 == 0 ? -q.mass[j + 1] : q.mass[j + 1]);
        }
        q.mass[0] = -atStart;
        q.slopeStart = Horner(q.slope, kN, -1.0);
        q.slopeEnd = Horner(q.slope, kN, 1.0);
        mPieces.push_back(q);
        mCumulative.push_back(mCumulative.back() + PieceMass(q, 1.0));
    }
    mUpper = pieces.back().hi;

    // The guide: where to start looking for each slice of the total.
    const size_t slices = mPieces.size();
    mGuide.resize(slices);
    size_t i = 0;
    for (size_t g = 0; g < slices; ++g) {
        const double threshold = Total() * static_cast<double>(g) / static_cast<double>(slices);
        while (i + 1 < slices && mCumulative[i + 1] <= threshold) ++i;
        mGuide[g] = static_cast<uint32_t>(i);
    }
}

double TabulatedDistribution::PieceMass(const Piece& p, double s) const noexcept {
    return Horner(p.mass, kNodes + 1, s);
}

size_t TabulatedDistribution::PieceOf(double x) const noexcept {
    auto it = std::upper_bound(mPieces.begin(), mPieces.end(), x,
                               [](double v, const Piece& p) { return v < p.lo; });
    return it == mPieces.begin() ? 0 : static_cast<size_t>(it - mPieces.begin()) - 1;
}

double TabulatedDistribution::MassBelow(double x) const noexcept {
    if (!(x > Lower())) return 0;
    if (x >= mUpper) return Total();
    const size_t i = PieceOf(x);
    const Piece& p = mPieces[i];
    return mCumulative[i] + PieceMass(p, std::min(1.0, (x - p.lo) / p.halfWidth - 1));
}

double TabulatedDistribution::Quantile(double u) const noexcept {
    const double target = u * Total();
    const size_t slices = mPieces.size();
    size_t i = mGuide[std::min(slices - 1, static_cast<size_t>(u * static_cast<double>(slices)))];
    while (i + 1 < slices && mCumulative[i + 1] <= target) ++i;
    const Piece& p = mPieces[i];
    const double local = target - mCumulative[i];
    const double pieceMass = mCumulative[i + 1] - mCumulative[i];

    // Start from the mass of a density straight between the piece's ends (a quadratic in s),
    // then Newton's method on the piece's exact mass polynomial, kept inside a shrinking
    // bracket (bisection whenever a step would leave it). A Newton step below 1e-8 leaves an
    // error of the order of its square: done.
    const double a = (p.slopeEnd - p.slopeStart) / 4, b = p.slopeStart;
    const double root = b * b + 4 * a * local;
    double s = -1 + (root > 0 ? 2 * local / (b + std::sqrt(root)) : 2 * local / pieceMass);
    if (!(s >= -1 && s <= 1)) s = pieceMass > 0 ? -1 + 2 * local / pieceMass : 0.0;
    double lo = -1, hi = 1;
    for (int iteration = 0; iteration < 60; ++iteration) {
        const auto [mass, slope] = Estrin(p.mass, p.slope, s);
        const double miss = mass - local;
        if (miss == 0) break;
        (miss > 0 ? hi : lo) = s;
        double next = s - miss / slope;
        const bool newton = slope > 0 && next > lo && next < hi;
        if (!newton) next = lo + (hi - lo) / 2;
        const bool done = (newton && std::fabs(next - s) <= 1e-8) || hi - lo <= 4e-16;
        s = next;
        if (done) break;
    }
    return std::min(mUpper, p.lo + p.halfWidth * (s + 1));
}

}  // namespace veltara
