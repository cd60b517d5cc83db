// PhaseDots: the engine's orthographic and perspective dot projection with two colours.
#include "web/wasm/phase_dots.h"

#include <cmath>

#include "render/dot_projection.h"
#include "support/convert.h"
#include "support/error.h"

namespace vtweb {

using veltara::PointArray;
using veltara::RGBA;

std::vector<RGBA> PhaseDots(const std::vector<PointArray>& dots, const std::vector<bool>& positive,
                            const veltara::RenderRequest& req, PhaseColour positiveColour,
                            PhaseColour negativeColour) {
    const int32_t size = static_cast<int32_t>(req.Size);
    if (size != 375 && size != 128) return {};
    const bool nano = size == 128;
    const int32_t edge = nano ? 127 : 375;
    const int32_t centre = nano ? 63 : 187;

    // The depth scale the dot fill gives the same cloud: the farthest dot at offset 127.
    double maxR2 = 0.0;
    for (const PointArray& d : dots) {
        const double r2 = static_cast<double>(veltara::Mul16(d.X, d.X)) +
                          static_cast<double>(veltara::Mul16(d.Y, d.Y)) +
                          static_cast<double>(veltara::Mul16(d.Z, d.Z));
        if (r2 > maxR2) maxR2 = r2;
    }
    const double depthScale = veltara::Divide(127.0, std::sqrt(maxR2));

    // Columns and rows as the engine's pixel array holds them: row 0 at the bottom.
    std::vector<RGBA> pixels(static_cast<size_t>(edge) * edge);
    veltara::DotProjection view(req, depthScale);
    for (size_t i = 0; i < dots.size(); ++i) {
        const veltara::TurnedDot turned = view.Turn(dots[i]);
        int32_t col;
        int32_t row;
        view.Place(turned, col, row);
        if (col < -centre || col > centre || row < -centre || row > centre) continue;

        const int32_t s = veltara::ToByte(turned.shade);
        const PhaseColour& c = positive[i] ? positiveColour : negativeColour;
        RGBA& px = pixels[static_cast<size_t>(centre + row) * edge + (centre + col)];
        px.R = static_cast<uint8_t>(px.R | (c.R * s / 255));
        px.G = static_cast<uint8_t>(px.G | (c.G * s / 255));
        px.B = static_cast<uint8_t>(px.B | (c.B * s / 255));
    }

    // Rows top first, as the engine's surfaces hand their pictures out.
    std::vector<RGBA> picture(pixels.size());
    for (int32_t r = 0; r < edge; ++r) {
        std::copy_n(pixels.begin() + static_cast<ptrdiff_t>(r) * edge, edge,
                    picture.begin() + static_cast<ptrdiff_t>(edge - 1 - r) * edge);
    }
    return picture;
}

}  // namespace vtweb
