// GetRender: counts the frame, dispatches on the mode (reusing the last volumetric picture when
// only the transector changed) and remembers the request by its size.
#include <cstring>

#include "render/orbital_renderer.h"

namespace veltara {

RenderDCinfo OrbitalRenderer::GetRender(const RenderRequest& RenderInfo) {
    // The frame counter saturates instead of wrapping.
    if (mStats.FramesRendered < 2147483647) ++mStats.FramesRendered;
    mReq = RenderInfo;

    switch (mReq.Mode) {
        case RenderMode::Volumetric: {
            // The cached picture serves a finished picture's view again; only the transector
            // may differ. CachedReq is keyed on the last Main request's mode, whatever size is
            // wanted now (kept: a host shows a Nano volume beside a Main transect).
            const RenderRequest& cached = mMemory.CachedReq();
            const bool served = cached.Mode == RenderMode::Volumetric &&
                                cached.Theta == mReq.Theta && cached.Phi == mReq.Phi &&
                                cached.VolFinal != kFalse && cached.Size == mReq.Size;
            if (served) {
                // Whatever the last picture left in mVolBits is handed back (kept: the cache
                // keeps no copy of its own).
                if (cached.Transector != kFalse) EraseTransector();
                if (mReq.Transector != kFalse) DrawTransector();
                PublishFrame();
            } else {
                RenderVolume();
            }
            break;
        }
        case RenderMode::Transect:
            RenderTransect();
            break;
        default:
            // The three projections, and any mode value outside the enumeration (which draws
            // no dot).
            RenderDots();
            break;
    }

    const RenderDCinfo result = mDCInfo;
    mMemory.Remember(RenderInfo);
    return result;
}

void PictureMemory::ClearFrame(RenderSize size) {
    const int16_t maxPixel = IsMainSize(size) ? 374 : 126;
    if (mMaxPixel == maxPixel && !mVolBits.Empty()) {
        std::memset(static_cast<void*>(mVolBits.Data()), 0, mVolBits.Size() * sizeof(RGBA));
    } else {
        mVolBits.Resize(maxPixel + 1, maxPixel + 1);
        mMaxPixel = maxPixel;
    }
}

cMemoryDCEx& OrbitalRenderer::SurfaceFor(RenderSize size) {
    std::unique_ptr<cMemoryDCEx>& surface = IsMainSize(size) ? mMainSurface : mNanoSurface;
    if (!surface) surface = std::make_unique<cMemoryDCEx>();
    if (!surface->Created()) {
        const int32_t edge = IsMainSize(size) ? 375 : 127;
        surface->Create(edge, edge);
    }
    return *surface;
}

cMemoryDCEx& OrbitalRenderer::RecreatedSurface(RenderSize size) {
    std::unique_ptr<cMemoryDCEx>& slot = IsMainSize(size) ? mMainSurface : mNanoSurface;
    if (!slot) slot = std::make_unique<cMemoryDCEx>();
    slot->Delete();
    const int32_t edge = IsMainSize(size) ? 375 : 127;
    slot->Create(edge, edge);
    return *slot;
}

void OrbitalRenderer::PublishFrame() {
    cMemoryDCEx& surface = SurfaceFor(mReq.Size);
    surface.SetAllBits(mMemory.mVolBits);
    PublishSurface(surface);
}

void OrbitalRenderer::PublishSurface(const cMemoryDCEx& surface) {
    (IsMainSize(mReq.Size) ? mDCInfo.MainHDC : mDCInfo.NanoHDC) = surface.hdc();
}

}  // namespace veltara
