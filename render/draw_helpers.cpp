// The drawing helpers: integer lines over the frame and the transector outline drawn on pictures.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "render/orbital_renderer.h"
#include "support/convert.h"
#include "support/exact_math.h"
#include "support/modMaths.h"

namespace veltara {

namespace {

constexpr int32_t kWhite = 16777215;
constexpr int32_t kGreen = 65280;
constexpr int32_t kRed = 255;
constexpr int32_t kInt32Max = std::numeric_limits<int32_t>::max();

/// The view transform of dots and outlines: rotation about X by Theta, then about Z by Phi.
struct ViewTurn {
    double cT, sT, cP, sP;
    double cTcP, sTsP, sTcP, cTsP;

    ViewTurn(double theta, double phi) {
        // A non-finite angle has no cosine: the invalid operation raises the engine's error.
        cT = CheckFinite(exact::Cos(theta));
        sT = CheckFinite(exact::Sin(theta));
        cP = CheckFinite(exact::Cos(phi));
        sP = CheckFinite(exact::Sin(phi));
        cTcP = cT * cP;
        sTsP = sT * sP;
        sTcP = sT * cP;
        cTsP = cT * sP;
    }
    double Across(double x, double y, double z) const { return z * sTsP + x * cP + y * cTsP; }
    double Up(double y, double z) const { return z * cT - y * sT; }
    double Depth(double x, double y, double z) const { return z * sTcP - sP * x + y * cTcP; }
};

/// The four corners of the transector square of a request, in grid units around the centre.
/// A direction outside the three axes leaves every corner at the origin.
void TransectorCorners(const RenderRequest& req, COORDdouble corners[4]) {
    const bool main = IsMainSize(req.Size);
    const double h = main ? 127.0 : 63.0;
    // The small picture shows the grid at half scale, so its slice index halves (towards zero).
    const double t = main ? req.TransectNo : req.TransectNo / 2;
    for (int c = 0; c < 4; ++c) corners[c] = COORDdouble{};
    const double sign0[4] = {h, h, -h, -h};  // first free axis
    const double sign1[4] = {h, -h, -h, h};  // second free axis
    switch (req.TransectDir) {
        case TransectDirection::AlongX:
            for (int c = 0; c < 4; ++c) corners[c] = {t, sign0[c], sign1[c]};
            break;
        case TransectDirection::Alongy:
            for (int c = 0; c < 4; ++c) corners[c] = {sign0[c], t, sign1[c]};
            break;
        case TransectDirection::Alongz:
            for (int c = 0; c < 4; ++c) corners[c] = {sign0[c], sign1[c], t};
            break;
        default:
            break;
    }
}

/// floor(v) + offset as a 32-bit screen coordinate.
int32_t ScreenCoord(double v, int32_t offset) { return Add32(ToInt32(std::floor(v)), offset); }

/// One walk along an integer line (the major axis increases by one per step, the minor axis
/// follows an error term). Calls touch(column, row, stepIndex) for every visited point whose
/// column and row both lie in 0..maxPixel. Raises 6 where the engine's 32-bit arithmetic of the
/// walk would overflow: the error term, or the loop counter passing 2147483647 at the end.
template <typename Touch>
void WalkLine(bool steep, int32_t majorFrom, int32_t majorTo, int32_t minorFrom, int32_t step,
              int32_t dMajor, int32_t dMinor, int32_t maxPixel, Touch&& touch) {
    const int32_t err0 = dMajor / 2;
    auto visit = [&](int32_t major, int32_t minor, int64_t n) {
        const int32_t col = steep ? minor : major;
        const int32_t row = steep ? major : minor;
        if (col >= 0 && row >= 0 && col <= maxPixel && row <= maxPixel) touch(col, row, n);
    };
    if (int64_t{dMajor} - 1 + dMinor > kInt32Max) {
        // Only lines longer than about 2^30 pixels can overflow the error term: walk them
        // step by step so that the overflow comes at the step where it happens.
        int32_t err = err0;
        int32_t minor = minorFrom;
        for (int64_t major = majorFrom; major <= majorTo; ++major) {
            visit(static_cast<int32_t>(major), minor, major - majorFrom);
            err = Add32(err, dMinor);
            if (err >= dMajor) {
                minor = Add32(minor, step);
                err = Sub32(err, dMajor);
            }
        }
    } else {
        // The error term after n steps is (err0 + n * dMinor) mod dMajor and the minor axis has
        // moved (err0 + n * dMinor) div dMajor times, so the walk can start where the major
        // axis enters 0..maxPixel; the points skipped would all be outside the picture.
        const int64_t first = std::max<int64_t>(majorFrom, 0);
        const int64_t last = std::min<int64_t>(majorTo, maxPixel);
        for (int64_t major = first; major <= last; ++major) {
            const int64_t n = major - majorFrom;
            const int64_t moved = (err0 + n * dMinor) / dMajor;
            visit(static_cast<int32_t>(major), static_cast<int32_t>(minorFrom + step * moved), n);
        }
    }
    // The loop counter steps once past the far end.
    if (majorTo == kInt32Max) Raise(kErrOverflow);
}

}  // namespace

void OrbitalRenderer::DrawLine(const FrameView& frame, int32_t X1, int32_t Y1, int32_t X2,
                               int32_t Y2, VbBool RestoreMode) {
    int32_t dX = Sub32(X2, X1);
    int32_t dY = Sub32(Y2, Y1);
    int32_t step = 1;
    // A line of zero length does not touch even its one pixel. Intended: the outline of a
    // transector seen edge-on collapses to nothing rather than to dots at its corners.
    if (dX == 0 && dY == 0) return;
    // Only the two truth values mean anything; any other value walks nothing.
    if (RestoreMode != kTrue && RestoreMode != kFalse) return;

    auto touch = [&](int32_t col, int32_t row, int64_t) {
        RGBA& px = frame.At(col, row);
        if (RestoreMode == kTrue) {
            px.B = px.A;  // the grey value saved under the outline comes back
            px.G = px.A;
            px.R = px.A;
        } else {
            px.A = px.R;  // keep the grey value before an outline covers it
        }
    };

    if (Abs32(dX) < Abs32(dY)) {
        // Steep: rows increase by one per step.
        if (dY < 0) {
            std::swap(X1, X2);
            std::swap(Y1, Y2);
            dX = Sub32(X2, X1);
            dY = Sub32(Y2, Y1);
        }
        if (dX < 0) {
            dX = Neg32(dX);
            step = -1;
        }
        WalkLine(true, Y1, Y2, X1, step, dY, dX, mMemory.mMaxPixel, touch);
    } else {
        if (dX < 0) {
            std::swap(X1, X2);
            std::swap(Y1, Y2);
            dX = Sub32(X2, X1);
            dY = Sub32(Y2, Y1);
        }
        if (dY < 0) {
            dY = Neg32(dY);
            step = -1;
        }
        WalkLine(false, X1, X2, Y1, step, dX, dY, mMemory.mMaxPixel, touch);
    }
}

void OrbitalRenderer::DrawDepthLine(const FrameView& frame, int32_t X1, int32_t Z1, int32_t X2,
                                    int32_t Z2, int32_t Depth1, int32_t Depth2, int32_t Colour) {
    int32_t dX = Sub32(X2, X1);
    int32_t dZ = Sub32(Z2, Z1);
    int32_t dDepth = Sub32(Depth2, Depth1);
    int32_t step = 1;
    // Zero length draws nothing, as in DrawLine (intended).
    if (dX == 0 && dZ == 0) return;
    if (Colour != kWhite && Colour != kGreen && Colour != kRed) return;

    const bool steep = Abs32(dX) < Abs32(dZ);
    if (steep ? dZ < 0 : dX < 0) {
        std::swap(X1, X2);
        std::swap(Z1, Z2);
        std::swap(Depth1, Depth2);
        dX = Sub32(X2, X1);
        dZ = Sub32(Z2, Z1);
        dDepth = Sub32(Depth2, Depth1);
    }
    int32_t& dMinor = steep ? dX : dZ;
    if (dMinor < 0) {
        dMinor = Neg32(dMinor);
        step = -1;
    }
    const int32_t dMajor = steep ? dZ : dX;

    auto touch = [&](int32_t col, int32_t row, int64_t n) {
        // Linear shade from Depth1 to Depth2 along the major axis; exactly Depth2 at the end.
        const int64_t s = Depth1 + int64_t{dDepth} * n / dMajor;
        RGBA& px = frame.At(col, row);
        if (Colour == kWhite) {
            // The single-image outline brightens what lies under it, saturating at white;
            // a negative sum has no byte and overflows.
            int32_t v = Add32(px.R, static_cast<int32_t>(s));
            if (v > 255) v = 255;
            const uint8_t grey = NarrowByte(v);
            px.B = grey;
            px.G = grey;
            px.R = grey;
        } else {
            // The anaglyph outlines combine by OR like the anaglyph dots.
            const auto bits = static_cast<uint8_t>(std::clamp<int64_t>(s, 0, 255));
            if (Colour == kGreen) {
                px.G = static_cast<uint8_t>(px.G | bits);
            } else {
                px.R = static_cast<uint8_t>(px.R | bits);
            }
        }
    };
    if (steep) {
        WalkLine(true, Z1, Z2, X1, step, dZ, dX, mMemory.mMaxPixel, touch);
    } else {
        WalkLine(false, X1, X2, Z1, step, dX, dZ, mMemory.mMaxPixel, touch);
    }
}

void OrbitalRenderer::DrawTransector(const RenderRequest& req, const FrameView& frame) {
    const ViewTurn turn(req.Theta, req.Phi);
    const bool main = IsMainSize(req.Size);
    // 1/sqrt(3) and 2/sqrt(3): a cube corner maps to a shade offset of about 127.
    const double depthScale = main ? 0.577350269189625 : 1.15470053837925;
    const int32_t centre = mMemory.mMaxPixel / 2;

    COORDdouble corners[4];
    TransectorCorners(req, corners);
    COORDdouble turned[4];
    for (int c = 0; c < 4; ++c) {
        const COORDdouble& p = corners[c];
        turned[c].X = turn.Across(p.X, p.Y, p.Z);
        turned[c].Z = turn.Up(p.Y, p.Z);
        turned[c].Y = turn.Depth(p.X, p.Y, p.Z);
    }

    // Screen points: X column, Z row, Y shade. A corner that the projection leaves unwritten
    // (depth 0..1 in front of the camera) stays at the origin before the centring.
    COORDlong screen[2][4] = {};
    auto project = [&](int32_t cameraX, COORDlong out[4]) {
        const COORDlong camera{cameraX, req.CameraPos, 0};
        for (int c = 0; c < 4; ++c) {
            modMaths::ProjectOntoPlane(camera, turned[c], out[c], req.ProjectionPlane);
            out[c].X = Add32(out[c].X, centre);
            out[c].Z = Add32(out[c].Z, centre);
            out[c].Y = ToInt32(128.0 - std::floor(out[c].Y * depthScale));
        }
    };

    const bool anaglyph = req.Mode == RenderMode::Anaglyph;
    if (req.Mode == RenderMode::Perspective) {
        project(0, screen[0]);
    } else if (anaglyph) {
        // Eye offset in 16-bit whole numbers, remainder dropped: a positive StereoFactor puts
        // eye one on the negative side.
        const int16_t spread = Abs16(Sub16(req.ProjectionPlane, req.CameraPos));
        const int16_t divisor = Neg16(req.StereoFactor);
        if (divisor == 0) Raise(kErrDivisionByZero);
        const int16_t d = Narrow16(spread / divisor);
        project(d, screen[0]);
        project(Neg16(d), screen[1]);
    } else {
        for (int c = 0; c < 4; ++c) {
            screen[0][c].X = ScreenCoord(turned[c].X, centre);
            screen[0][c].Z = ScreenCoord(turned[c].Z, centre);
            screen[0][c].Y = ToInt32(128.0 - std::floor(depthScale * turned[c].Y));
        }
    }

    // Edges run from corner i to corner i - 1 (corner -1 being corner 3).
    auto prev = [](int c) { return (c + 3) % 4; };
    if (req.Mode == RenderMode::Volumetric && req.VolFinal != kFalse) {
        // Save the grey under the outline in the alpha bytes, so that the cached picture can
        // lose this outline later without being computed again.
        for (int c = 0; c < 4; ++c) {
            const COORDlong& a = screen[0][c];
            const COORDlong& b = screen[0][prev(c)];
            DrawLine(frame, a.X, a.Z, b.X, b.Z, kFalse);
        }
    }
    if (anaglyph) {
        for (int c = 0; c < 4; ++c) {
            const COORDlong& a1 = screen[0][c];
            const COORDlong& b1 = screen[0][prev(c)];
            DrawDepthLine(frame, a1.X, a1.Z, b1.X, b1.Z, a1.Y, b1.Y, kGreen);
            const COORDlong& a2 = screen[1][c];
            const COORDlong& b2 = screen[1][prev(c)];
            DrawDepthLine(frame, a2.X, a2.Z, b2.X, b2.Z, a2.Y, b2.Y, kRed);
        }
        return;
    }
    for (int c = 0; c < 4; ++c) {
        const COORDlong& a = screen[0][c];
        const COORDlong& b = screen[0][prev(c)];
        DrawDepthLine(frame, a.X, a.Z, b.X, b.Z, a.Y, b.Y, kWhite);
    }
}

void OrbitalRenderer::EraseTransector(const FrameView& frame) {
    // The outline on the cached picture belongs to the request that the cache was chosen by,
    // the same choice as GetRender's, which decides when this runs.
    const RenderRequest earlier = mMemory.CachedReq();
    const ViewTurn turn(earlier.Theta, earlier.Phi);
    const int32_t centre = mMemory.mMaxPixel / 2;

    COORDdouble corners[4];
    TransectorCorners(earlier, corners);
    // The volumetric picture is always orthographic, so only the plain projection is needed.
    int32_t col[4];
    int32_t row[4];
    for (int c = 0; c < 4; ++c) {
        const COORDdouble& p = corners[c];
        col[c] = ScreenCoord(turn.Across(p.X, p.Y, p.Z), centre);
        row[c] = ScreenCoord(turn.Up(p.Y, p.Z), centre);
    }
    for (int c = 0; c < 4; ++c) {
        const int p = (c + 3) % 4;
        DrawLine(frame, col[c], row[c], col[p], row[p], kTrue);
    }
}

}  // namespace veltara
