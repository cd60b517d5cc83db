// cOrbital: what the collection asks of the renderer behind each orbital.
#pragma once

#include <cstdint>

#include "engine/PublicTypes.h"

namespace veltara {

class cOrbital {
  public:
    virtual ~cOrbital() = default;

    /// Makes the electron, scales it, samples the probability grid, fills the first dot cloud
    /// and writes the statistics. Called once, first.
    virtual void Setup(const OrbitalSetup& DrawCmds) = 0;
    /// A copy of the statistics.
    virtual OrbitalStats GetStats() = 0;
    /// A new dot cloud from the existing grid; always returns 0. Raises 6 for a TargetNum outside
    /// 16 bits (nothing changed) and for a 32768th dot.
    virtual int32_t ReFillDotMatrix(const int32_t& TargetNum, const uint8_t& ProbThreshHold) = 0;
    /// Renders one picture into the surface of the requested size; the device handles.
    virtual RenderDCinfo GetRender(const RenderRequest& RenderInfo) = 0;
};

}  // namespace veltara
