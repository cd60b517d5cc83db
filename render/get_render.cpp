// GetRender: counts the frame, dispatches on the mode (reusing the last volumetric picture when
// only the transector changed) and remembers the request by its size.
#include "render/orbital_renderer.h"

namespace veltara {

RenderDCinfo OrbitalRenderer::GetRender(const RenderRequest& RenderInfo) {
    // The frame counter saturates instead of wrapping.
    if (mStats.FramesRendered < 2147483647) ++mStats.FramesRendered;
    mReq = RenderInfo;

    switch (mReq.Mode) {
        case RenderMode::Volumetric: {
            // The cached picture belongs to the last Main request, unless that one was a
            // transect, in which case the last Nano request is asked, whatever size is wanted
            // now. Intended: a host shows a Nano volume beside a Main transect, and this is
            // the test that picks it; EraseTransector makes the same choice.
            const RenderRequest& cached =
                mLastMainReq.Mode == RenderMode::Transect ? mLastNanoReq : mLastMainReq;
            const bool served = cached.Mode == RenderMode::Volumetric &&
                                cached.Theta == mReq.Theta && cached.Phi == mReq.Phi &&
                                cached.VolFinal != kFalse && cached.Size == mReq.Size;
            if (served) {
                // mVolBits is one buffer for every mode and size, so what is pushed back is
                // whatever the last picture left there (after a Nano dot frame, that frame).
                // Intended: the cache keeps no copy of its own.
                if (cached.Transector != kFalse) EraseTransector();
                if (mReq.Transector != kFalse) DrawTransector();
                cMemoryDCEx& surface = SurfaceFor(mReq.Size);
                surface.SetAllBits(mVolBits);
                if (static_cast<int32_t>(mReq.Size) == 375) {
                    mDCInfo.MainHDC = surface.hdc();
                } else {
                    mDCInfo.NanoHDC = surface.hdc();
                }
            } else {
                RenderVolume();
            }
            break;
        }
        case RenderMode::Transect:
            RenderTransect();
            break;
        default:
            // The three projections, and any mode value outside the enumeration.
            RenderDots();
            break;
    }

    const RenderDCinfo result = mDCInfo;
    if (static_cast<int32_t>(RenderInfo.Size) == 375) {
        mLastMainReq = RenderInfo;
    } else {
        mLastNanoReq = RenderInfo;
    }
    return result;
}

}  // namespace veltara
