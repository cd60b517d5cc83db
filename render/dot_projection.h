// DotProjection: where a dot picture puts each dot of a cloud and how bright it is, for the angles,
// camera, plane and size of one request. The engine's dot pictures and the page's phase-coloured
// dots both place their dots through it, so the two cannot drift apart.
#pragma once

#include <cmath>
#include <cstdint>

#include "../records/PublicTypes.h"
#include "../support/convert.h"
#include "../support/exact_math.h"

namespace veltara {

/// floor(v) as a 32-bit whole number, for |v| well inside the 32-bit range (turned dots lie
/// within 127 x sqrt(3) of the centre): the truncation, one lower for a negative fraction.
inline int32_t FloorToInt(double v) {
    const auto i = static_cast<int32_t>(v);
    return v < static_cast<double>(i) ? i - 1 : i;
}

/// A dot's shade rounded half to even, as ToInt32 gives it: shades of a cloud lie in 1..255, and
/// for those adding and taking away 1.5 x 2^52 rounds in the processor's nearest-even mode
/// without a library call; any other value takes the checked conversion (error 6 outside).
inline int32_t RoundShade(double s) {
    if (s >= 0.0 && s < 256.0) {
        constexpr double kRounder = 6755399441055744.0;
        return static_cast<int32_t>((s + kRounder) - kRounder);
    }
    return ToInt32(s);
}

/// modMaths::ProjectOntoPlane for cameras on the line Z = 0, Y = camY, with the work shared by
/// every dot of a frame (and by both eyes of an anaglyph) hoisted out: the same arithmetic
/// step for step, so the same pixels. Scale gives the single-precision T of a point at `depth`,
/// or false when the projection would not write its result (depth 0..1 from the camera).
struct PlaneProjection {
    double camY;
    double num;  // plane - camera, a 32-bit whole number

    PlaneProjection(int32_t cameraY, int16_t planeY) : camY(cameraY), num(Sub32(planeY, cameraY)) {}

    bool Scale(double depth, double& t) const {
        const double dY = CheckFinite(depth - camY);
        if (Int(dY) == 0.0) return false;
        const float tf = static_cast<float>(Divide(num, dY));
        t = CheckFinite(static_cast<double>(tf));
        return true;
    }
    static int32_t Place(double v, double cam, double t) {
        return ToInt32(CheckFinite(CheckFinite(v - cam) * t) + cam);
    }
};

/// A dot turned by the view angles: across the picture, depth (away from the viewer), up the
/// picture, each halved on the Nano picture where the projection asks for it; and its shade.
struct TurnedDot {
    double across, depth, up;
    double shade;  ///< 128 - depth * depth scale: nearer dots are brighter
};

class DotProjection {
  public:
    /// The view of `req` for a cloud whose farthest dot lies 127 / depthScale from the nucleus.
    /// A non-finite angle has no cosine: 5 or 6.
    DotProjection(const RenderRequest& req, double depthScale)
        : mCosT(CheckFinite(exact::Cos(req.Theta))),
          mSinT(CheckFinite(exact::Sin(req.Theta))),
          mCosP(CheckFinite(exact::Cos(req.Phi))),
          mSinP(CheckFinite(exact::Sin(req.Phi))),
          mCosTCosP(mCosT * mCosP),
          mSinTSinP(mSinT * mSinP),
          mSinTCosP(mSinT * mCosP),
          mCosTSinP(mCosT * mSinP),
          mDepthScale(depthScale),
          mNano(req.Size != RenderSize::Main),
          mPerspective(req.Mode == RenderMode::Perspective),
          mPlane(req.CameraPos, req.ProjectionPlane) {}

    TurnedDot Turn(const PointArray& dot) const {
        const double x = dot.X;
        const double y = dot.Y;
        const double z = dot.Z;
        const double across = z * mSinTSinP + x * mCosP + y * mCosTSinP;
        const double up = z * mCosT - y * mSinT;
        const double depth = z * mSinTCosP - mSinP * x + y * mCosTCosP;
        return {across, depth, up, 128.0 - depth * mDepthScale};
    }

    /// The pixel offset from the centre of a dot seen by one camera: orthographic (the turned
    /// coordinates floored, halved towards zero on Nano) or, for Perspective, projected onto the
    /// plane. A dot the projection does not write (depth 0..1 in front of the camera) lands
    /// where the previous one did, the first such at the centre. Intended: it costs one
    /// misplaced dot at most and keeps the projection free of a special case.
    void Place(const TurnedDot& t, int32_t& col, int32_t& row) {
        if (mPerspective) {
            const COORDdouble p = OnPicture(t);
            double scale = 0;
            if (mPlane.Scale(p.Y, scale)) {
                mLast.X = PlaneProjection::Place(p.X, 0.0, scale);
                mLast.Z = PlaneProjection::Place(p.Z, 0.0, scale);
            }
            col = mLast.X;
            row = mLast.Z;
            return;
        }
        col = FloorToInt(t.across);
        row = FloorToInt(t.up);
        if (mNano) {
            col /= 2;  // remainder dropped, towards zero
            row /= 2;
        }
    }

    /// The turned point as the central projection takes it: halved on Nano.
    COORDdouble OnPicture(const TurnedDot& t) const {
        if (mNano) return {t.across / 2.0, t.depth / 2.0, t.up / 2.0};
        return {t.across, t.depth, t.up};
    }
    const PlaneProjection& Plane() const { return mPlane; }

  private:
    double mCosT, mSinT, mCosP, mSinP;
    double mCosTCosP, mSinTSinP, mSinTCosP, mCosTSinP;
    double mDepthScale;
    bool mNano;
    bool mPerspective;
    PlaneProjection mPlane;
    COORDlong mLast{};
};

}  // namespace veltara
