// The dot picture in phase colours: each dot of an orbital's cloud coloured by the sign of the
// wavefunction where it sits, projected exactly as the engine's orthographic and perspective
// dot pictures project it. The engine's own five pictures are not touched.
#pragma once

#include <cstdint>
#include <vector>

#include "records/PublicTypes.h"

namespace vtweb {

/// A dot colour at full shade: each channel is scaled by the dot's depth shade (1..255).
struct PhaseColour {
    uint8_t R, G, B;
};

/// Paints `dots` (grid coordinates -127..127) seen as `req` asks: Theta, Phi, Size (375 or
/// 128), Mode (Perspective projects from CameraPos onto ProjectionPlane, anything else
/// orthographically). Dot i takes `positive` when positive[i] is true, else `negative`; its
/// shade is the engine's depth shade of the same cloud. Overlapping dots combine by bitwise OR,
/// as in the engine's pictures. Returns the picture's pixels B, G, R, A with rows top first
/// (375 x 375 or 127 x 127; empty for any other size). Raises the engine's numbered errors
/// where the engine's dot picture would (6 for a shade out of range, 11, ...).
std::vector<veltara::RGBA> PhaseDots(const std::vector<veltara::PointArray>& dots,
                                     const std::vector<bool>& positive,
                                     const veltara::RenderRequest& req, PhaseColour positiveColour,
                                     PhaseColour negativeColour);

}  // namespace vtweb
