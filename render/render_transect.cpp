// RenderTransect: one slice of the probability grid, mirrored about its centre pixel (or read
// whole, for a state without mirror symmetry), in grey or coloured by probability level.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "render/orbital_renderer.h"
#include "support/convert.h"

namespace veltara {

namespace {

/// Grid offsets of a slice: its first point, one step across (i) and one step up (j).
struct SliceAxes {
    size_t base, across, up;
};

SliceAxes SliceOf(TransectDirection dir, int32_t T, int32_t Step) {
    switch (dir) {
        case TransectDirection::AlongX:
            return {ProbGrid::Index(T, 0, 0), ProbGrid::Index(0, Step, 0),
                    ProbGrid::Index(0, 0, Step)};
        case TransectDirection::Alongy:
            return {ProbGrid::Index(0, T, 0), ProbGrid::Index(Step, 0, 0),
                    ProbGrid::Index(0, 0, Step)};
        default:
            return {ProbGrid::Index(0, 0, T), ProbGrid::Index(Step, 0, 0),
                    ProbGrid::Index(0, Step, 0)};
    }
}

/// The same for the whole cube: `base` is the slice's centre, the point on the axis.
SliceAxes CubeSliceOf(TransectDirection dir, int32_t T, int32_t Step) {
    switch (dir) {
        case TransectDirection::AlongX:
            return {ProbGrid::CubeIndex(T, 0, 0),
                    ProbGrid::CubeIndex(0, Step, 0) - ProbGrid::CubeIndex(0, 0, 0),
                    ProbGrid::CubeIndex(0, 0, Step) - ProbGrid::CubeIndex(0, 0, 0)};
        case TransectDirection::Alongy:
            return {ProbGrid::CubeIndex(0, T, 0),
                    ProbGrid::CubeIndex(Step, 0, 0) - ProbGrid::CubeIndex(0, 0, 0),
                    ProbGrid::CubeIndex(0, 0, Step) - ProbGrid::CubeIndex(0, 0, 0)};
        default:
            return {ProbGrid::CubeIndex(0, 0, T),
                    ProbGrid::CubeIndex(Step, 0, 0) - ProbGrid::CubeIndex(0, 0, 0),
                    ProbGrid::CubeIndex(0, Step, 0) - ProbGrid::CubeIndex(0, 0, 0)};
    }
}

}  // namespace

void OrbitalRenderer::RenderTransect(const RenderRequest& req) {
    // The grid holds one octant, so the slice index is taken by absolute value.
    const int16_t T = Abs16(req.TransectNo);

    if (!IsPictureSize(req.Size)) return;
    const bool nano = !IsMainSize(req.Size);
    // Nano is 127 pixels, built symmetrically about a centre pixel at two grid points per pixel;
    // Main shows one grid point per pixel in the middle 255 pixels of 375.
    const int32_t C = nano ? 63 : 187;
    const int32_t N = nano ? 63 : 127;
    const int32_t Step = nano ? 2 : 1;

    // A fresh surface per transect, so that it always has the transect's own size; the slice is
    // drawn straight into its rows.
    cMemoryDCEx& surface = mMemory.RecreatedSurface(req.Size);

    // Coloured like the dot picture shown beside it: only when that companion (the last
    // request of the other size) is a plain projection (kept cross-dependence).
    const RenderRequest& companion = mMemory.OtherSizeReq(req.Size);
    const bool levels =
        req.ShowProbLevelOnDots == kTrue && req.ShowProbLevelOnTrans == kTrue &&
        (companion.Mode == RenderMode::Orthographic || companion.Mode == RenderMode::Perspective);

    const TransectDirection dir = req.TransectDir;
    const bool known = dir == TransectDirection::AlongX || dir == TransectDirection::Alongy ||
                       dir == TransectDirection::Alongz;
    if (known) {
        // Every in-plane index stays within 0..127; only the slice index can leave the grid,
        // and then the first pixel fails, after the surface was recreated.
        if (mProbMatrix.Empty() || T >= ProbGrid::kSize) Raise(kErrSubscript);

        // The colour of each level once; black at 0, dark red-brown low, pure green at 255.
        RGBA colour[256];
        for (int32_t p = 0; p <= 255; ++p) {
            colour[p] = levels ? RGBA{0, static_cast<uint8_t>(p * p / 255),
                                      static_cast<uint8_t>((255 - p) * p / 255), 0}
                               : RGBA{static_cast<uint8_t>(p), static_cast<uint8_t>(p),
                                      static_cast<uint8_t>(p), 0};
        }

        const int32_t height = surface.Height();
        if (mProbMatrix.Whole()) {
            // The whole cube: the slice at the signed index, each side read as it is.
            const SliceAxes axes = CubeSliceOf(dir, req.TransectNo, Step);
            const uint8_t* centre = mProbMatrix.Data() + axes.base;
            for (int32_t j = -N; j <= N; ++j) {
                RGBA* line = surface.ScanLine(height - (C - j));
                for (int32_t i = -N; i <= N; ++i) {
                    line[C + i] = colour[centre[i * static_cast<ptrdiff_t>(axes.across) +
                                                j * static_cast<ptrdiff_t>(axes.up)]];
                }
            }
            PublishSurface(req.Size, surface);
            return;
        }

        // Row C - j and row C + j (from the top) show the same grid line, each mirrored about
        // the centre column.
        const SliceAxes axes = SliceOf(dir, T, Step);
        const uint8_t* grid = mProbMatrix.Data();
        for (int32_t j = 0; j <= N; ++j) {
            const uint8_t* line = grid + axes.base + static_cast<size_t>(j) * axes.up;
            RGBA* upper = surface.ScanLine(height - (C - j));
            for (int32_t i = 0; i <= N; ++i) {
                const RGBA px = colour[line[static_cast<size_t>(i) * axes.across]];
                upper[C + i] = px;
                upper[C - i] = px;
            }
            if (j != 0) std::copy_n(upper, surface.Width(), surface.ScanLine(height - (C + j)));
        }
    }

    PublishSurface(req.Size, surface);
}

}  // namespace veltara
