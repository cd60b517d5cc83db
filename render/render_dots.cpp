// RenderDots: the dot cloud turned by the view angles and projected orthographically, in
// perspective or as a red-green anaglyph, straight into the frame in the surface of its size.
#include <cmath>
#include <cstdint>

#include "render/dot_projection.h"
#include "render/orbital_renderer.h"
#include "support/convert.h"

namespace veltara {

void OrbitalRenderer::RenderDots(const RenderRequest& req) {
    // The view transform, once per frame.
    DotProjection view(req, mDotDepthScale);

    // Only the two picture sizes are drawn; any other size leaves every pixel and handle as
    // it was.
    if (!IsPictureSize(req.Size)) return;

    // A clean pixel array of the frame's size: centre 187 and offsets up to 187 on Main, 63
    // and 63 on Nano.
    const FrameView frame = mMemory.NewFrame(req.Size);
    const int32_t centre = mMemory.mMaxPixel / 2;
    const int32_t maxOffset = centre;

    const RenderMode mode = req.Mode;
    const bool anaglyph = mode == RenderMode::Anaglyph;
    // A mode value outside the enumeration places and writes no dot: the frame stays black
    // but for the transector.
    const bool drawsDots =
        anaglyph || mode == RenderMode::Perspective || mode == RenderMode::Orthographic;
    const bool levels = req.ShowProbLevelOnDots != kFalse;
    RGBA* const pixels = frame.data;
    const int32_t stride = frame.cols;

    // Eye offset of the anaglyph: |plane - camera| / -StereoFactor, rounded half to even.
    // Eye one's camera sits at +e, eye two's at -e.
    double eyeOne = 0;
    double eyeTwo = 0;
    if (anaglyph) {
        const int16_t spread = Abs16(Sub16(req.ProjectionPlane, req.CameraPos));
        const int32_t e = ToInt32(Divide(spread, Neg16(req.StereoFactor)));
        eyeOne = e;
        eyeTwo = Neg32(e);
    }
    // Like one camera's dots, an eye's dot that the projection does not write is drawn where
    // the previous one landed.
    COORDlong projectedOne{};
    COORDlong projectedTwo{};
    double t = 0;

    auto accepted = [maxOffset](int32_t col, int32_t row) {
        return col >= -maxOffset && col <= maxOffset && row >= -maxOffset && row <= maxOffset;
    };
    auto pixelAt = [&](int32_t col, int32_t row) -> RGBA& {
        return pixels[static_cast<size_t>(centre + row) * stride + (centre + col)];
    };

    // Every dot from 0 to mLastDot: turned, placed by the mode, shaded by depth, written.
    const int64_t available = static_cast<int64_t>(mDots.size());
    const int64_t last = !drawsDots ? -1 : mLastDot < available ? mLastDot : available - 1;
    const PointArray* const dots = mDots.data();
    for (int64_t i = 0; i <= last; ++i) {
        const PointArray& dot = dots[i];
        const TurnedDot turned = view.Turn(dot);
        const double shade = turned.shade;

        if (anaglyph) {
            const uint8_t s = NarrowByte(RoundShade(shade));
            const COORDdouble p = view.OnPicture(turned);
            // Both eyes share the camera's depth, so they share T and the row.
            if (view.Plane().Scale(p.Y, t)) {
                projectedOne.X = PlaneProjection::Place(p.X, eyeOne, t);
                projectedOne.Z = PlaneProjection::Place(p.Z, 0.0, t);
                projectedTwo.X = PlaneProjection::Place(p.X, eyeTwo, t);
                projectedTwo.Z = projectedOne.Z;
            }
            // Eye one (camera at +e) is green, eye two red; the outline uses the same pairing.
            if (accepted(projectedOne.X, projectedOne.Z)) {
                RGBA& px = pixelAt(projectedOne.X, projectedOne.Z);
                px.G = static_cast<uint8_t>(px.G | s);
            }
            if (accepted(projectedTwo.X, projectedTwo.Z)) {
                RGBA& px = pixelAt(projectedTwo.X, projectedTwo.Z);
                px.R = static_cast<uint8_t>(px.R | s);
            }
            continue;
        }

        int32_t col;
        int32_t row;
        view.Place(turned, col, row);
        if (!accepted(col, row)) continue;

        // Pixels combine by OR, never by replacement or addition: overlapping dots saturate
        // towards the brighter bits. Intended; the look of dense regions depends on it.
        RGBA& px = pixelAt(col, row);
        if (levels) {
            const int32_t s = RoundShade(shade);
            const int32_t p = dot.P;
            px.G = NarrowByte(px.G | (Mul32(p, s) / 255));
            px.R = NarrowByte(px.R | (Mul32(255 - p, s) / 255));
        } else {
            const uint8_t v = static_cast<uint8_t>(px.G | NarrowByte(RoundShade(shade)));
            px.B = v;
            px.G = v;
            px.R = v;
        }
    }
    // A cloud shorter than its recorded upper bound fails as an index out of range would.
    if (mLastDot >= available) Raise(kErrSubscript);

    // The transector on top of the dots; the frame is the surface's own picture.
    if (req.Transector != kFalse) DrawTransector(req, frame);
    PublishSurface(req.Size, mMemory.ShowFrame(req.Size));
}

}  // namespace veltara
