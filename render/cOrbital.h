// cOrbital: what the collection asks of the renderer behind each orbital.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "../electron/state.h"
#include "../records/PublicTypes.h"

namespace veltara {

class cOrbital {
  public:
    virtual ~cOrbital() = default;

    /// Makes the electron, scales it, samples the probability grid, fills the first dot cloud
    /// and writes the statistics. Called once, first.
    virtual void Setup(const OrbitalSetup& DrawCmds) = 0;
    /// Setup for a state or superposition at time t (hbar/E_h) instead of a catalogue row
    /// (OrbitalIndex is not read). A state whose density lacks mirror symmetry is sampled over
    /// the whole cube; its dots are exact samples of the view. Called once, first, instead of
    /// Setup. Raises 5 (with a sentence) for a non-finite t, and Setup's errors.
    virtual void SetupState(const Superposition& s, double t, const OrbitalSetup& DrawCmds) = 0;
    /// A copy of the statistics.
    virtual OrbitalStats GetStats() = 0;
    /// A new dot cloud from the existing grid; always returns 0. Raises 6 for a TargetNum outside
    /// 16 bits (nothing changed) and for a 32768th dot.
    virtual int32_t ReFillDotMatrix(const int32_t& TargetNum, const uint8_t& ProbThreshHold) = 0;
    /// Renders one picture into the surface of the requested size; the device handles.
    virtual RenderDCinfo GetRender(const RenderRequest& RenderInfo) = 0;

    // Read-only views of the renderer's state, for hosts that export data.

    /// The setup record this renderer was given.
    virtual const OrbitalSetup& SetupRecord() const = 0;
    /// The dot cloud (empty before the first fill).
    virtual std::span<const PointArray> Dots() const = 0;
    /// The probability grid, GridEdge()³ levels, X fastest (empty when it was never sampled).
    virtual std::span<const uint8_t> ProbMatrix() const = 0;
    /// Points per edge of ProbMatrix: 128 (one octant, index 0 at the nucleus) or 255 (the
    /// whole cube of a state without mirror symmetry, index 127 at the nucleus).
    virtual int32_t GridEdge() const = 0;
    /// The volumetric preview's resolution factor: 9 at first, then adapted after every
    /// preview so that one takes about 50 ms (a preview is Int(quality x factor) pixels wide).
    virtual float VolFactor() const = 0;
};

/// The renderer of a view: cOrbitalPDF or cOrbitalDRPDF; nullptr for any other view.
std::unique_ptr<cOrbital> CreateOrbitalRenderer(ViewMode view);

}  // namespace veltara
