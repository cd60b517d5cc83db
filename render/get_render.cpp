// GetRender: counts the frame, dispatches on the mode (reusing the last volumetric picture when
// only the transector changed) and remembers the request by its size.
#include "render/orbital_renderer.h"

namespace veltara {

RenderDCinfo OrbitalRenderer::GetRender(const RenderRequest& RenderInfo) {
    // The frame counter saturates instead of wrapping.
    if (mStats.FramesRendered < 2147483647) ++mStats.FramesRendered;
    const RenderRequest& req = RenderInfo;

    switch (req.Mode) {
        case RenderMode::Volumetric: {
            // The cached picture serves a finished picture's view again; only the transector
            // may differ. CachedReq is keyed on the last Main request's mode, whatever size is
            // wanted now (kept: a host shows a Nano volume beside a Main transect).
            const RenderRequest& cached = mMemory.CachedReq();
            const bool served = cached.Mode == RenderMode::Volumetric &&
                                cached.Theta == req.Theta && cached.Phi == req.Phi &&
                                cached.VolFinal != kFalse && cached.Size == req.Size;
            if (served) {
                ServeCachedVolume(req, cached);
            } else {
                RenderVolume(req);
            }
            break;
        }
        case RenderMode::Transect:
            RenderTransect(req);
            break;
        default:
            // The three projections, and any mode value outside the enumeration (which draws
            // no dot).
            RenderDots(req);
            break;
    }

    const RenderDCinfo result = mDCInfo;
    mMemory.Remember(req);
    return result;
}

void OrbitalRenderer::ServeCachedVolume(const RenderRequest& req, const RenderRequest& cached) {
    // Whatever the last picture left in the frame is handed back (kept: the cache keeps no copy
    // of its own).
    const FrameView frame = mMemory.FrameToShowOn(req.Size);
    if (cached.Transector != kFalse) EraseTransector(frame);
    if (req.Transector != kFalse) DrawTransector(req, frame);
    PublishSurface(req.Size, mMemory.ShowFrame(req.Size));
}

void OrbitalRenderer::PublishSurface(RenderSize size, const cMemoryDCEx& surface) {
    (IsMainSize(size) ? mDCInfo.MainHDC : mDCInfo.NanoHDC) = surface.hdc();
}

}  // namespace veltara
