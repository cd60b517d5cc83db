// The renderer behind one orbital: one implementation, parametrised by the view, serves both
// cOrbitalPDF (probability density) and cOrbitalDRPDF (radial distribution).
//
// Its operations live in one file each: setup and statistics (orbital_renderer.cpp), the
// maximum search, the probability grid, the dot fill, GetRender and the three picture kinds,
// and the drawing helpers.
//
// A request's way to the pixels: GetRender (get_render.cpp) counts the frame and dispatches on
// the mode, handing the request to each step as an argument: RenderDots (render_dots.cpp) draws
// the dot cloud into the frame in the surface of its size, RenderVolume (render_volume.cpp) rays
// through the electron onto a fresh surface, RenderTransect (render_transect.cpp) draws a slice
// of mProbMatrix onto a fresh surface, and a volumetric request that matches the cached picture
// gets the frame back. Each picture is drawn once, into the surface the host reads; each ends
// in PublishSurface, which stores the surface's handle in mDCInfo; GetRender then remembers the
// request (PictureMemory).
// Behaviours kept on purpose are listed in docs/kept-behaviours.md.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "electron/cElectron.h"
#include "records/PublicTypes.h"
#include "render/cOrbital.h"
#include "render/picture_memory.h"
#include "render/prob_grid.h"
#include "render/state_electron.h"
#include "support/cMemoryDCEx.h"
#include "support/rgba_array.h"

namespace veltara {

class OrbitalRenderer : public cOrbital {
  public:
    explicit OrbitalRenderer(ViewMode view);
    ~OrbitalRenderer() override;

    void Setup(const OrbitalSetup& DrawCmds) override;
    void SetupState(const Superposition& s, double t, const OrbitalSetup& DrawCmds) override;
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
        return {mProbMatrix.Data(), mProbMatrix.Count()};
    }
    int32_t GridEdge() const override { return mProbMatrix.Edge(); }
    cElectron* Electron() const { return mElectron.get(); }

    float VolFactor() const override { return mVolFactor; }

  private:
    /// Sets the scale factor of this renderer's view on the electron.
    void SetScaleFactor(double factor);
    /// The electron, or error 91 when the catalogue gave none (an index outside 0..39).
    cElectron& LiveElectron();
    /// The radial view's maximum search (the density view's is a fixed grid refinement).
    double FindMaxRadialDistribution();

    /// Setup's steps once the electron is in place: scale, seed, grid, dots, statistics.
    void Prepare();
    double FindMaxProbability();
    void CalcProbabilities();
    /// The grid of a state: its octant, or the whole cube when it lacks mirror symmetry.
    void CalcStateGrid();
    void FillDotMatrix();
    /// A state's dot cloud: DotTarget exact samples of the view inside the cube, each at its
    /// nearest grid point with that point's level.
    void FillStateDots();
    /// mLastDot and the depth scale of the cloud in mDots.
    void FinishCloud();
    void UpdateStats(int32_t& CalcTime, int32_t DotTime);

    void RenderDots(const RenderRequest& req);
    void RenderVolume(const RenderRequest& req);
    void RenderTransect(const RenderRequest& req);
    /// The volumetric cache: the frame of the cached request shown again, outline redrawn.
    void ServeCachedVolume(const RenderRequest& req, const RenderRequest& cached);

    void DrawLine(const FrameView& frame, int32_t X1, int32_t Y1, int32_t X2, int32_t Y2,
                  VbBool RestoreMode);
    void DrawDepthLine(const FrameView& frame, int32_t X1, int32_t Z1, int32_t X2, int32_t Z2,
                       int32_t Depth1, int32_t Depth2, int32_t Colour);
    void DrawTransector(const RenderRequest& req, const FrameView& frame);
    void EraseTransector(const FrameView& frame);

    /// Stores the surface's handle as the handle of the request's size in mDCInfo.
    void PublishSurface(RenderSize size, const cMemoryDCEx& surface);

    const ViewMode mView;

    // Renderer state, in declaration order.
    OrbitalStats mStats{};
    OrbitalSetup mSetup{};
    float mVolFactor = 9.0f;        ///< preview resolution factor, adapted after each preview
    ProbGrid mProbMatrix;           ///< scaled probability of each octant grid point
    std::vector<PointArray> mDots;  ///< the dot cloud; empty only before the first fill
    int32_t mLastDot = 0;           ///< upper bound of mDots after the last scanning fill
    double mDotDepthScale = 0;      ///< 127 / distance of the farthest dot, grid units
    PictureMemory mMemory;          ///< both surfaces, the last picture and the remembered requests
    RenderDCinfo mDCInfo{};
    std::unique_ptr<cElectron> mElectron;
    StateElectron* mStateElectron = nullptr;  ///< mElectron when it is a state's, else null
    bool mWholeCube = false;  ///< grid, maximum, volume and transect read the whole cube

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
