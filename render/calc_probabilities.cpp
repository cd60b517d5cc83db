// CalcProbabilities: samples the scaled byte density of the renderer's view on the octant grid
// and counts each level, with its mirror images, in ProbFreqs.
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

#include "electron/grid_rows.h"
#include "render/orbital_renderer.h"

namespace veltara {

namespace {

constexpr int32_t kLast = ProbGrid::kSize - 1;  // 127: the index at the atom radius

// Evaluations per level, counted in four interleaved tables so that runs of one level do not
// wait on each other's increments; ProbFreqs receives weight x count at the end.
struct LevelCounts {
    int32_t table[4][256] = {};
    void Add(uint8_t v, int32_t lane) { ++table[lane & 3][v]; }
    // The levels v[0..n): sixteen 0 levels at once where a row runs beyond the orbital, where
    // about half of the octant lies.
    void AddRow(const uint8_t* v, int32_t n) {
        int32_t i = 0;
        for (; i + 16 <= n; i += 16) {
            uint64_t lo, hi;
            std::memcpy(&lo, v + i, 8);
            std::memcpy(&hi, v + i + 8, 8);
            if ((lo | hi) == 0) {
                table[0][0] += 16;
                continue;
            }
            for (int32_t k = i; k < i + 16; ++k) Add(v[k], k);
        }
        for (; i < n; ++i) Add(v[i], i);
    }
    int32_t Total(int32_t v) const { return table[0][v] + table[1][v] + table[2][v] + table[3][v]; }
};

// Evaluates the byte values of one run of points through the electron's batch path, rows along
// X through its grid rows where it has them.
struct RowSampler {
    cElectron& electron;
    ViewMode view;
    const double* squares;  // squares[i] = (i x step)^2
    GridRows grid{squares};
    GridRowSampler* rows = dynamic_cast<GridRowSampler*>(&electron);
    std::array<COORDdoubleParams, ProbGrid::kSize> points{};
    std::array<uint8_t, ProbGrid::kSize> values{};

    // The rows spans[0..n), each into its own bytes: through the electron's grid rows in one
    // call where it has them, else point by point.
    void Rows(const GridRowSpan* spans, size_t n) {
        if (rows != nullptr) {
            rows->ScaledGridRows(view, grid, spans, n);
            return;
        }
        for (const GridRowSpan* s = spans; s != spans + n; ++s) {
            size_t k = 0;
            for (int32_t x = s->xFirst; x <= s->xLast; ++x) {
                points[k++] = {squares[x], squares[s->y], squares[s->z]};
            }
            electron.ScaledBatch(view, points.data(), s->out, k);
        }
    }
    void Rows(const std::vector<GridRowSpan>& spans) { Rows(spans.data(), spans.size()); }
    // Points (x, y, z) for x = xFirst..xLast on the row (y, z).
    const uint8_t* AlongX(int32_t xFirst, int32_t xLast, int32_t y, int32_t z) {
        const GridRowSpan span{xFirst, xLast, y, z, values.data()};
        Rows(&span, 1);
        return values.data();
    }
    // Points (x, y, z) for y = yFirst..yLast at fixed x and z.
    const uint8_t* AlongY(int32_t x, int32_t yFirst, int32_t yLast, int32_t z) {
        size_t n = 0;
        for (int32_t y = yFirst; y <= yLast; ++y) {
            points[n++] = {squares[x], squares[y], squares[z]};
        }
        electron.ScaledBatch(view, points.data(), values.data(), n);
        return values.data();
    }
    // Points (x, y, z) for z = zFirst..zLast at fixed x and y.
    const uint8_t* AlongZ(int32_t x, int32_t y, int32_t zFirst, int32_t zLast) {
        size_t n = 0;
        for (int32_t z = zFirst; z <= zLast; ++z) {
            points[n++] = {squares[x], squares[y], squares[z]};
        }
        electron.ScaledBatch(view, points.data(), values.data(), n);
        return values.data();
    }
};

// The origin stands for itself only.
void SampleOrigin(ProbGrid& g, RowSampler& sample, LevelCounts& once) {
    const uint8_t v = sample.AlongX(0, 0, 0, 0)[0];
    g(0, 0, 0) = v;
    once.Add(v, 0);
}

// Each point of a half-axis stands for itself and its mirror image.
void SampleHalfAxes(ProbGrid& g, RowSampler& sample, LevelCounts& twice) {
    const uint8_t* vx = sample.AlongX(1, kLast, 0, 0);
    for (int32_t i = 1; i <= kLast; ++i) {
        g(i, 0, 0) = vx[i - 1];
        twice.Add(vx[i - 1], i);
    }
    const uint8_t* vy = sample.AlongY(0, 1, kLast, 0);
    for (int32_t i = 1; i <= kLast; ++i) {
        g(0, i, 0) = vy[i - 1];
        twice.Add(vy[i - 1], i);
    }
    const uint8_t* vz = sample.AlongZ(0, 0, 1, kLast);
    for (int32_t i = 1; i <= kLast; ++i) {
        g(0, 0, i) = vz[i - 1];
        twice.Add(vz[i - 1], i);
    }
}

// Each point of a quarter-plane stands for four images. The planes Z = 0 and Y = 0 are rows
// along X, sampled straight into the grid in one call.
void SampleQuarterPlanes(ProbGrid& g, RowSampler& sample, LevelCounts& fourTimes) {
    uint8_t* const d = g.Data();
    std::vector<GridRowSpan> spans;
    for (int32_t b = 1; b <= kLast; ++b) {
        spans.push_back({1, kLast, b, 0, d + ProbGrid::Index(1, b, 0)});  // plane Z = 0, row Y = b
        spans.push_back({1, kLast, 0, b, d + ProbGrid::Index(1, 0, b)});  // plane Y = 0, row Z = b
    }
    sample.Rows(spans);
    for (const GridRowSpan& s : spans) fourTimes.AddRow(s.out, kLast);
    for (int32_t b = 1; b <= kLast; ++b) {
        const uint8_t* vx0 = sample.AlongY(0, 1, kLast, b);  // plane X = 0, row Z = b
        for (int32_t a = 1; a <= kLast; ++a) {
            g(0, a, b) = vx0[a - 1];
            fourTimes.Add(vx0[a - 1], a);
        }
    }
}

constexpr size_t kRowStride = ProbGrid::kSize;                 // from (x, y, z) to (x, y + 1, z)
constexpr size_t kPlaneStride = kRowStride * ProbGrid::kSize;  // from (x, y, z) to (x, y, z + 1)

// Row r (1..) of rows of `stride` bytes.
uint8_t* SquareRow(std::vector<uint8_t>& s, int32_t stride, int32_t r) {
    return s.data() + static_cast<size_t>(r - 1) * static_cast<size_t>(stride);
}

// Writes rows 1..n of a square whose element (i, j) is s(max(i, j), min(i, j)), where
// s(r, c) = s[(r - 1) x stride + c - 1]: each row i at out + i x outStride, element j at its
// byte j. The lower triangle comes from the rows as they are, the upper from their columns, so
// the grid is written row by row instead of a new cache line for each mirror image.
void WriteMirroredSquare(const uint8_t* s, int32_t stride, int32_t n, uint8_t* out,
                         size_t outStride) {
    const size_t st = static_cast<size_t>(stride);
    for (int32_t i = 1; i <= n; ++i) {
        uint8_t* row = out + static_cast<size_t>(i) * outStride;
        const size_t below = static_cast<size_t>(i - 1);
        std::memcpy(row + 1, s + below * st, static_cast<size_t>(i));
        for (int32_t j = i + 1; j <= n; ++j) row[j] = s[static_cast<size_t>(j - 1) * st + below];
    }
}

// F32's squares are sampled in blocks of this many before they are written, so that the cells
// X = A of a row, one from each square, are written 16 bytes at a time.
constexpr int32_t kF32Block = 16;

// F32: the point (C, B, A) with B, C <= A stands for four permutations of itself. Square A
// holds the rows B = 1..A, C = 1..A; the cell (x, y, z) whose greatest coordinate is A takes
// the sample the last of its permutations wrote in row order (they can differ in the last
// bit): (min(x, y), max(x, y)) of square z where z = A, else (x, z) where y = A, else (y, z).
void SampleF32(uint8_t* d, RowSampler& sample, std::vector<uint8_t>& samples, LevelCounts& octant) {
    std::vector<GridRowSpan> spans;
    for (int32_t first = 1; first <= kLast; first += kF32Block) {
        const int32_t last = std::min(first + kF32Block - 1, kLast);
        // Square a at samples + offsets[a - first], rows of a bytes.
        std::array<size_t, kF32Block> offsets{};
        size_t used = 0;
        spans.clear();
        for (int32_t a = first; a <= last; ++a) {
            const size_t side = static_cast<size_t>(a);
            offsets[static_cast<size_t>(a - first)] = used;
            for (int32_t b = 1; b <= a; ++b) {
                spans.push_back(
                    {1, a, b, a, samples.data() + used + static_cast<size_t>(b - 1) * side});
            }
            used += side * side;
        }
        sample.Rows(spans);
        for (const GridRowSpan& s : spans) octant.AddRow(s.out, s.xLast);
        for (int32_t a = first; a <= last; ++a) {
            const size_t side = static_cast<size_t>(a);
            const uint8_t* square = samples.data() + offsets[static_cast<size_t>(a - first)];
            uint8_t* plane = d + static_cast<size_t>(a) * kPlaneStride;
            WriteMirroredSquare(square, a, a, plane, kRowStride);  // z = A
            // z < A, y = A: the row z of the square, x = 1..A.
            for (int32_t z = 1; z < a; ++z) {
                std::memcpy(d + ProbGrid::Index(1, a, z),
                            square + static_cast<size_t>(z - 1) * side, side);
            }
        }
        // z < A, y < A, x = A: the block's squares side by side along each row.
        for (int32_t z = 1; z < last; ++z) {
            for (int32_t y = 1; y < last; ++y) {
                uint8_t* row = d + ProbGrid::Index(0, y, z);
                for (int32_t a = std::max(first, std::max(y, z) + 1); a <= last; ++a) {
                    const size_t side = static_cast<size_t>(a);
                    row[a] =
                        samples[offsets[static_cast<size_t>(a - first)] +
                                static_cast<size_t>(z - 1) * side + static_cast<size_t>(y - 1)];
                }
            }
        }
    }
}

// The open octant, shortened by the symmetry the orbital declares for this view; returns the
// weight of each evaluation (0: an unknown factor leaves the octant unsampled). Each
// evaluation adds its full weight even where the elements it writes coincide (X = Y under
// F16xy, the repeated permutations of F32): ProbFreqs then over-counts those points. This is
// intended: the dot fill's acceptance thresholds are worked out from these counts.
int32_t SampleOpenOctant(ProbGrid& g, RowSampler& sample, OptFactor factor, ViewMode view,
                         LevelCounts& octant) {
    int32_t octantWeight = 0;
    // The rows of one plane or slice, or of one block of F32's squares, before they are written.
    std::vector<uint8_t> samples;
    std::vector<GridRowSpan> spans;
    // The grid's elements through a local pointer: the byte stores could otherwise alias the
    // grid's own pointer, which would be read again for every store.
    uint8_t* const d = g.Data();
    auto at = [d](int32_t x, int32_t y, int32_t z) -> uint8_t& {
        return d[ProbGrid::Index(x, y, z)];
    };
    switch (factor) {
        case OptFactor::F8:
            // Each plane Z = z straight into the grid.
            octantWeight = 8;
            for (int32_t z = 1; z <= kLast; ++z) {
                spans.clear();
                for (int32_t y = 1; y <= kLast; ++y) {
                    spans.push_back({1, kLast, y, z, &at(1, y, z)});
                }
                sample.Rows(spans);
                for (const GridRowSpan& s : spans) octant.AddRow(s.out, kLast);
            }
            break;
        case OptFactor::F16xy:
            // Mirror in the plane X = Y: the rows of each plane Z = z first, then the plane.
            octantWeight = 16;
            samples.resize(kLast * kLast);
            for (int32_t z = 1; z <= kLast; ++z) {
                spans.clear();
                for (int32_t y = 1; y <= kLast; ++y) {
                    spans.push_back({1, y, y, z, SquareRow(samples, kLast, y)});
                }
                sample.Rows(spans);
                for (const GridRowSpan& s : spans) octant.AddRow(s.out, s.xLast);
                WriteMirroredSquare(samples.data(), kLast, kLast, &at(0, 0, z), kRowStride);
            }
            break;
        case OptFactor::F16yz:
            // Mirror in the plane Y = Z: rows straight into the grid, then copied to their images.
            // The radial view leaves the open octant unsampled for this factor; that difference
            // between the views is intended and kept.
            if (view == ViewMode::DRPDF) break;
            octantWeight = 16;
            for (int32_t y = 1; y <= kLast; ++y) {
                spans.clear();
                for (int32_t z = 1; z <= y; ++z) spans.push_back({1, kLast, y, z, &at(1, y, z)});
                sample.Rows(spans);
                for (const GridRowSpan& s : spans) {
                    octant.AddRow(s.out, kLast);
                    if (s.z != y) std::memcpy(&at(1, s.z, y), s.out, kLast);
                }
            }
            break;
        case OptFactor::F16xz:
            // Mirror in the plane X = Z: the rows of each slice Y = y first, then the slice.
            octantWeight = 16;
            samples.resize(kLast * kLast);
            for (int32_t y = 1; y <= kLast; ++y) {
                spans.clear();
                for (int32_t z = 1; z <= kLast; ++z) {
                    spans.push_back({1, z, y, z, SquareRow(samples, kLast, z)});
                }
                sample.Rows(spans);
                for (const GridRowSpan& s : spans) octant.AddRow(s.out, s.xLast);
                WriteMirroredSquare(samples.data(), kLast, kLast, &at(0, y, 0), kPlaneStride);
            }
            break;
        case OptFactor::F32:
            octantWeight = 32;
            samples.resize(kF32Block * kLast * kLast);
            SampleF32(d, sample, samples, octant);
            break;
        default:
            // An unknown factor leaves the open octant at 0.
            break;
    }

    return octantWeight;
}

}  // namespace

void OrbitalRenderer::CalcProbabilities() {
    if (mStateElectron != nullptr) {
        CalcStateGrid();
        return;
    }
    cElectron& e = LiveElectron();
    mProbMatrix.Reset();
    std::memset(mStats.ProbFreqs, 0, sizeof(mStats.ProbFreqs));
    // Evaluations by the weight they carry: 1 (origin), 2 (half-axes), 4 (quarter-planes) and
    // that of the open octant's treatment.
    auto counts = std::make_unique<LevelCounts[]>(4);

    // The squared coordinate of each grid index: index 127 lies at the atom radius.
    const double step = static_cast<double>(mSetup.AtomRadius) / 127.0;
    std::array<double, ProbGrid::kSize> squares{};
    for (int32_t i = 0; i <= kLast; ++i) {
        const double c = static_cast<double>(i) * step;
        squares[i] = c * c;
    }
    RowSampler sample{e, mView, squares.data()};

    SampleOrigin(mProbMatrix, sample, counts[0]);
    SampleHalfAxes(mProbMatrix, sample, counts[1]);
    SampleQuarterPlanes(mProbMatrix, sample, counts[2]);
    const OrbInfo info = e.GetInfo();
    const OptFactor factor = mView == ViewMode::PDF ? info.PDFOptFactor : info.DRPDFOptFactor;
    const int32_t octantWeight = SampleOpenOctant(mProbMatrix, sample, factor, mView, counts[3]);

    // Each evaluation's weight, once per evaluation.
    for (int32_t v = 0; v <= 255; ++v) {
        mStats.ProbFreqs[v] = counts[0].Total(v) + 2 * counts[1].Total(v) + 4 * counts[2].Total(v) +
                              octantWeight * counts[3].Total(v);
    }
}

}  // namespace veltara
