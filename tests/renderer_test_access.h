// White-box access to a renderer's state and private operations, for tests only.
#pragma once

#include "render/orbital_renderer.h"

namespace veltara {

struct RendererTestAccess {
    using R = OrbitalRenderer;
    static OrbitalStats& Stats(R& r) { return r.mStats; }
    static OrbitalSetup& SetupRec(R& r) { return r.mSetup; }
    static float& VolFactor(R& r) { return r.mVolFactor; }
    static ProbGrid& ProbMatrix(R& r) { return r.mProbMatrix; }
    static std::vector<PointArray>& Dots(R& r) { return r.mDots; }
    static int32_t& LastDot(R& r) { return r.mLastDot; }
    static double& DotDepthScale(R& r) { return r.mDotDepthScale; }
    static std::unique_ptr<cMemoryDCEx>& MainSurface(R& r) { return r.mMainSurface; }
    static std::unique_ptr<cMemoryDCEx>& NanoSurface(R& r) { return r.mNanoSurface; }
    static RgbaArray2D& VolBits(R& r) { return r.mVolBits; }
    static int16_t& MaxPixel(R& r) { return r.mMaxPixel; }
    static RenderRequest& LastNanoReq(R& r) { return r.mLastNanoReq; }
    static RenderRequest& LastMainReq(R& r) { return r.mLastMainReq; }
    static RenderRequest& Req(R& r) { return r.mReq; }
    static RenderDCinfo& DCInfo(R& r) { return r.mDCInfo; }
    static std::unique_ptr<cElectron>& Electron(R& r) { return r.mElectron; }
    static float* VolMax(R& r) { return r.mVolMax; }

    static double FindMaxProbability(R& r) { return r.FindMaxProbability(); }
    static void CalcProbabilities(R& r) { r.CalcProbabilities(); }
    static void FillDotMatrix(R& r) { r.FillDotMatrix(); }
    static void UpdateStats(R& r, int32_t& calcTime, int32_t dotTime) {
        r.UpdateStats(calcTime, dotTime);
    }
    static void RenderDots(R& r) { r.RenderDots(); }
    static void RenderVolume(R& r) { r.RenderVolume(); }
    static void RenderTransect(R& r) { r.RenderTransect(); }
    static void DrawLine(R& r, int32_t x1, int32_t y1, int32_t x2, int32_t y2, VbBool restore) {
        r.DrawLine(x1, y1, x2, y2, restore);
    }
    static void DrawDepthLine(R& r, int32_t x1, int32_t z1, int32_t x2, int32_t z2, int32_t d1,
                              int32_t d2, int32_t colour) {
        r.DrawDepthLine(x1, z1, x2, z2, d1, d2, colour);
    }
    static void DrawTransector(R& r) { r.DrawTransector(); }
    static void EraseTransector(R& r) { r.EraseTransector(); }
};

}  // namespace veltara
