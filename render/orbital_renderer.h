// The renderer behind one orbital: one implementation, parametrised by the view, serves both
// cOrbitalPDF (probability density) and cOrbitalDRPDF (radial distribution).
//
// Its operations live in one file each: setup and statistics (orbital_renderer.cpp), the
// maximum search, the probability grid, the dot fill, GetRender and the three picture kinds,
// and the drawing helpers.
//
// A request's way to the pixels: GetRender (get_render.cpp) counts the frame and dispatches on
// the mode: RenderDots (render_dots.cpp) draws the dot cloud into mVolBits, RenderVolume
// (render_volume.cpp) rays through the electron onto a fresh surface, RenderTransect
// (render_transect.cpp) copies a slice of mProbMatrix onto a fresh surface, and a volumetric
// request that matches the cached picture gets mVolBits back. Each ends in PublishSurface,
// which stores the surface's handle in mDCInfo; GetRender then remembers the request.
// Behaviours kept on purpose are listed in docs/kept-behaviours.md.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "electron/cElectron.h"
#include "records/PublicTypes.h"
#include "render/cOrbital.h"
#include "render/prob_grid.h"
#include "support/cMemoryDCEx.h"
#include "support/rgba_array.h"

namespace veltara {

/// The two picture sizes: 375 is Main; 128 draws a Nano picture. Where a size must be chosen
/// whatever the request says (a surface, the remembered request, the outline's scale), every
/// value other than 375 counts as Nano.
inline bool IsMainSize(RenderSize size) { return static_cast<int32_t>(size) == 375; }
/// Whether pictures of this size are drawn at all (375 or 128); other sizes draw nothing.
inline bool IsPictureSize(RenderSize size) {
    return IsMainSize(size) || static_cast<int32_t>(size) == 128;
}

/// What one picture leaves for the next. Three behaviours rely on it: the volumetric cache of
/// GetRender hands mVolBits back when the cached request (CachedReq) asked for the same view of
/// a finished picture; a transect takes its colour scheme from the last request of the other
/// size; EraseTransector removes the outline that the cached request drew. mVolBits is one
/// buffer for every mode and size, so the cache hands back whatever the last picture left.
struct PictureMemory {
    RenderRequest mLastNanoReq{};
    RenderRequest mLastMainReq{};
    RgbaArray2D mVolBits;   ///< pixels of the last dot picture or kept volume, (column, row)
    int16_t mMaxPixel = 0;  ///< 374 while mVolBits is sized for Main, 126 for Nano

    /// The request the cached picture belongs to: the last Main request, or the last Nano one
    /// when the last Main request was a transect, whatever size is asked for now.
    const RenderRequest& CachedReq() const {
        return mLastMainReq.Mode == RenderMode::Transect ? mLastNanoReq : mLastMainReq;
    }
    /// The last request of the other size (the picture a host shows beside this one).
    const RenderRequest& OtherSizeReq(RenderSize size) const {
        return IsMainSize(size) ? mLastNanoReq : mLastMainReq;
    }
    /// Remembers a served request as the last one of its size.
    void Remember(const RenderRequest& req) {
        (IsMainSize(req.Size) ? mLastMainReq : mLastNanoReq) = req;
    }
    /// mVolBits all zero with the bounds of a picture size (128 or 375); sets mMaxPixel.
    void ClearFrame(RenderSize size);
};

class OrbitalRenderer : public cOrbital {
  public:
    explicit OrbitalRenderer(ViewMode view);
    ~OrbitalRenderer() override;

    void Setup(const OrbitalSetup& DrawCmds) override;
    OrbitalStats GetStats() override;
    int32_t ReFillDotMatrix(const int32_t& TargetNum, const uint8_t& ProbThreshHold) override;
    RenderDCinfo GetRender(const RenderRequest& RenderInfo) override;

    /// The view this renderer shows.
    ViewMode View() const { return mView; }

    // Read-only views of the renderer's state, for hosts that export data.
    const OrbitalSetup& SetupRecord() const override { return mSetup; }
    std::span<const PointArray> Dots() const override { return mDots; }
    std::span<const uint8_t> ProbMatrix() const override {
        if (mProbMatrix.Empty()) return {};
        return {mProbMatrix.Data(),
                static_cast<size_t>(ProbGrid::kSize) * ProbGrid::kSize * ProbGrid::kSize};
    }
    cElectron* Electron() const { return mElectron.get(); }

    float VolFactor() const override { return mVolFactor; }

  private:
    /// Sets the scale factor of this renderer's view on the electron.
    void SetScaleFactor(double factor);
    /// The electron, or error 91 when the catalogue gave none (an index outside the catalogue).
    cElectron& LiveElectron();
    /// The radial view's maximum search (the density view's is a fixed grid refinement).
    double FindMaxRadialDistribution();

    double FindMaxProbability();
    void CalcProbabilities();
    void FillDotMatrix();
    void UpdateStats(int32_t& CalcTime, int32_t DotTime);

    void RenderDots();
    void RenderVolume();
    void RenderTransect();

    void DrawLine(int32_t X1, int32_t Y1, int32_t X2, int32_t Y2, VbBool RestoreMode);
    void DrawDepthLine(int32_t X1, int32_t Z1, int32_t X2, int32_t Z2, int32_t Depth1,
                       int32_t Depth2, int32_t Colour);
    void DrawTransector();
    void EraseTransector();

    /// The surface for a request size (375: main, anything else: nano), created on first use.
    cMemoryDCEx& SurfaceFor(RenderSize size);
    /// The surface for a picture size deleted and made anew at its full size (375 or 127).
    cMemoryDCEx& RecreatedSurface(RenderSize size);
    /// Hands mVolBits to the surface of the request's size and publishes its handle.
    void PublishFrame();
    /// Stores the surface's handle as the request size's handle in mDCInfo.
    void PublishSurface(const cMemoryDCEx& surface);

    const ViewMode mView;

    // Renderer state, in declaration order.
    OrbitalStats mStats{};
    OrbitalSetup mSetup{};
    float mVolFactor = 9.0f;        ///< preview resolution factor, adapted after each preview
    ProbGrid mProbMatrix;           ///< scaled probability of each octant grid point
    std::vector<PointArray> mDots;  ///< the dot cloud; empty only before the first fill
    int32_t mLastDot = 0;           ///< upper bound of mDots after the last scanning fill
    double mDotDepthScale = 0;      ///< 127 / distance of the farthest dot, grid units
    std::unique_ptr<cMemoryDCEx> mMainSurface;
    std::unique_ptr<cMemoryDCEx> mNanoSurface;
    PictureMemory mMemory;  ///< the remembered requests and the last picture
    RenderRequest mReq{};   ///< the request being served
    RenderDCinfo mDCInfo{};
    std::unique_ptr<cElectron> mElectron;

    // Volumetric state: the brightest accumulated ray value per quality level 5..10.
    float mVolMax[6] = {};
};

/// The probability density view.
class cOrbitalPDF final : public OrbitalRenderer {
  public:
    cOrbitalPDF() : OrbitalRenderer(ViewMode::PDF) {}
};

/// The radial-distribution view.
class cOrbitalDRPDF final : public OrbitalRenderer {
  public:
    cOrbitalDRPDF() : OrbitalRenderer(ViewMode::DRPDF) {}
};

}  // namespace veltara
