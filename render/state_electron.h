// StateElectron: the electron of any state or superposition at one time, as the renderers see
// an orbital: its density and radial view, unscaled and as a byte, at squared or signed points.
#pragma once

#include <cstddef>
#include <cstdint>

#include "electron/cElectron.h"
#include "electron/state.h"
#include "electron/state_wave.h"
#include "support/convert.h"

namespace veltara {

class StateElectron final : public cElectron {
  public:
    /// The state `s` at time t (hbar/E_h). Raises 5 (with a sentence) for a non-finite t.
    StateElectron(const Superposition& s, double t);

    /// Whether |Psi|² is unchanged by reflection in each coordinate plane, so that one octant
    /// stands for the cube: one state of either basis (a real state flips sign or not, a
    /// complex one's |Y|² depends on theta alone and is even in cos theta) or a shell average.
    /// A superposition of several states is taken to have no such symmetry.
    bool MirrorSymmetric() const { return mSymmetric; }
    const Superposition& State() const { return mState; }
    double Time() const { return mTime; }

    void SetPDFScaleFactor(const double& factor) override { mPDFScale = factor; }
    void SetDRPDFScaleFactor(const double& factor) override { mDRPDFScale = factor; }
    /// n, l, m of the first term; the shell-average type for a shell average; factor F8; both
    /// default radii the one that holds 99.9 % of the probability; thresholds 0.
    OrbInfo GetInfo() override { return mInfo; }

    // The squared-coordinate operations evaluate at the point of the positive octant (the
    // square roots), which is the point for a mirror-symmetric state. The density is already
    // normalised, so the real and bare values agree.
    uint8_t GetPDF(const COORDdoubleParams& p) override;
    double GetRealPDF(const COORDdoubleParams& p) override { return GetNonScaledPDF(p); }
    double GetNonScaledPDF(const COORDdoubleParams& p) override;
    uint8_t GetDRPDF(const COORDdoubleParams& p) override;
    double GetRealDRPDF(const COORDdoubleParams& p) override { return GetNonScaledDRPDF(p); }
    double GetNonScaledDRPDF(const COORDdoubleParams& p) override;
    void NonScaledBatch(ViewMode view, const COORDdoubleParams* points, double* out,
                        size_t count) override;
    void ScaledBatch(ViewMode view, const COORDdoubleParams* points, uint8_t* out,
                     size_t count) override;

    /// out[i] = the unscaled view at the signed point (xyz[3i], xyz[3i + 1], xyz[3i + 2]).
    void SignedBatch(ViewMode view, const double* xyz, double* out, size_t count) const;
    /// The same as bytes of the view's scale factor (error 6 outside 0..255).
    void ScaledSignedBatch(ViewMode view, const double* xyz, uint8_t* out, size_t count) const;

    /// The scale factor of a view.
    double ScaleFactor(ViewMode view) const { return Scale(view); }
    /// The byte of an unscaled value: rounded half to even, a value above the maximum the search
    /// found (which a search of a state's many lobes may miss by a little) counts as 255.
    static uint8_t Level(double value, double scale) {
        const double v = CheckFinite(value * scale);
        if (v >= 255.0) return 255;
        // Adding and taking away 1.5 x 2^52 rounds half to even, as ToByte does, without a
        // library call; a negative value keeps the checked conversion (error 6).
        constexpr double kRounder = 6755399441055744.0;
        return v >= 0.0 ? static_cast<uint8_t>((v + kRounder) - kRounder) : ToByte(v);
    }

  private:
    double View(ViewMode view, double x, double y, double z) const;
    double Scale(ViewMode view) const { return view == ViewMode::PDF ? mPDFScale : mDRPDFScale; }

    Superposition mState;
    double mTime;
    WaveEvaluator mWave;
    bool mSymmetric;
    OrbInfo mInfo;
    double mPDFScale = 0;
    double mDRPDFScale = 0;
};

}  // namespace veltara
