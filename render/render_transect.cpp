// RenderTransect: one slice of the probability grid, mirrored about its centre pixel, in grey or
// coloured by probability level.
#include <cstdint>
#include <vector>

#include "render/orbital_renderer.h"
#include "support/convert.h"

namespace veltara {

void OrbitalRenderer::RenderTransect() {
    // The grid holds one octant, so the slice index is taken by absolute value.
    const int16_t T = Abs16(mReq.TransectNo);

    if (!IsPictureSize(mReq.Size)) return;
    const bool nano = !IsMainSize(mReq.Size);
    // Nano is 127 pixels, built symmetrically about a centre pixel at two grid points per pixel;
    // Main shows one grid point per pixel in the middle 255 pixels of 375.
    const int32_t edge = nano ? 127 : 375;
    const int32_t C = nano ? 63 : 187;
    const int32_t N = nano ? 63 : 127;
    const int32_t Step = nano ? 2 : 1;

    // A fresh surface per transect, so that it always has the transect's own size.
    cMemoryDCEx& surface = RecreatedSurface(mReq.Size);

    std::vector<RGBA> row(static_cast<size_t>(edge));

    // Coloured like the dot picture shown beside it: only when that companion (the last
    // request of the other size) is a plain projection (kept cross-dependence).
    const RenderRequest& companion = mMemory.OtherSizeReq(mReq.Size);
    const bool levels =
        mReq.ShowProbLevelOnDots == kTrue && mReq.ShowProbLevelOnTrans == kTrue &&
        (companion.Mode == RenderMode::Orthographic || companion.Mode == RenderMode::Perspective);

    const TransectDirection dir = mReq.TransectDir;
    const bool known = dir == TransectDirection::AlongX || dir == TransectDirection::Alongy ||
                       dir == TransectDirection::Alongz;
    if (known) {
        // Every in-plane index stays within 0..127; only the slice index can leave the grid,
        // and then the first pixel fails, after the surface was recreated.
        if (mProbMatrix.Empty() || T >= ProbGrid::kSize) Raise(kErrSubscript);
        // Grid offsets of one step across (i) and one step up (j) in the slice.
        size_t base;
        size_t across;
        size_t up;
        switch (dir) {
            case TransectDirection::AlongX:
                base = ProbGrid::Index(T, 0, 0);
                across = ProbGrid::Index(0, Step, 0);
                up = ProbGrid::Index(0, 0, Step);
                break;
            case TransectDirection::Alongy:
                base = ProbGrid::Index(0, T, 0);
                across = ProbGrid::Index(Step, 0, 0);
                up = ProbGrid::Index(0, 0, Step);
                break;
            default:
                base = ProbGrid::Index(0, 0, T);
                across = ProbGrid::Index(Step, 0, 0);
                up = ProbGrid::Index(0, Step, 0);
                break;
        }
        const uint8_t* grid = mProbMatrix.Data();
        for (int32_t j = 0; j <= N; ++j) {
            const uint8_t* line = grid + base + static_cast<size_t>(j) * up;
            for (int32_t i = 0; i <= N; ++i) {
                const int32_t p = line[static_cast<size_t>(i) * across];
                RGBA& px = row[static_cast<size_t>(C + i)];
                if (levels) {
                    // Black at 0, dark red-brown low, pure green at 255.
                    px.G = static_cast<uint8_t>(p * p / 255);
                    px.R = static_cast<uint8_t>((255 - p) * p / 255);
                } else {
                    px.B = static_cast<uint8_t>(p);
                    px.G = static_cast<uint8_t>(p);
                    px.R = static_cast<uint8_t>(p);
                }
                row[static_cast<size_t>(C - i)] = px;
            }
            surface.SetBits(row, 0, C - j, 1);
            surface.SetBits(row, 0, C + j, 1);
        }
    }

    PublishSurface(surface);
}

}  // namespace veltara
