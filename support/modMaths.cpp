// modMaths: parity, the central projection onto a plane and the two-angle rotation.
#include "support/modMaths.h"

#include <cmath>

#include "support/convert.h"
#include "support/exact_math.h"

namespace veltara::modMaths {

VbBool IsEven(const int32_t& Value) { return Value % 2 == 0 ? kTrue : kFalse; }

void ProjectOntoPlane(const COORDlong& Camera, const COORDdouble& Point, COORDlong& Result,
                      const int16_t& PlaneY) {
    const double dY = CheckFinite(Point.Y - Camera.Y);

    // A depth in [0, 1) is never projected and Result keeps whatever it held, while a depth in
    // (-1, 0) is. This is intended: the dot and outline drawers skip such points by it.
    if (Int(dY) == 0.0) return;

    const int32_t num = Sub32(PlaneY, Camera.Y);

    // T is kept in single precision on purpose; the products below use that value widened back.
    // A T beyond the float range is an overflow like any other.
    const float t = static_cast<float>(Divide(num, dY));
    const double tWide = CheckFinite(static_cast<double>(t));

    // The fields are written X, Z, Y: a fault part-way leaves the earlier ones written.
    const double x = CheckFinite(CheckFinite(Point.X - Camera.X) * tWide);
    Result.X = ToInt32(CheckFinite(x + Camera.X));
    const double z = CheckFinite(CheckFinite(Point.Z - Camera.Z) * tWide);
    Result.Z = ToInt32(CheckFinite(z + Camera.Z));
    // The point keeps its own depth, not the plane's.
    Result.Y = ToInt32(Point.Y);
}

COORDdouble RotateCoord(const COORDdouble& Point, const double& AngleA, const double& AngleB) {
    const double cA = CheckFinite(exact::Cos(AngleA));
    const double sA = CheckFinite(exact::Sin(AngleA));
    const double cB = CheckFinite(exact::Cos(AngleB));
    const double sB = CheckFinite(exact::Sin(AngleB));

    // About Z by AngleB, then about X by AngleA, folded into one sum per axis. Each product of
    // two cosines or sines is formed first and the terms are added left to right.
    const double x = Point.X;
    const double y = Point.Y;
    const double z = Point.Z;
    COORDdouble r;
    r.X = CheckFinite(CheckFinite(x * cB) - CheckFinite(sB * y));
    r.Y = CheckFinite(CheckFinite(CheckFinite(CheckFinite(sB * cA) * x) + CheckFinite(sA * z)) +
                      CheckFinite(CheckFinite(cA * cB) * y));
    r.Z = CheckFinite(CheckFinite(CheckFinite(-CheckFinite(sA * sB) * x) + CheckFinite(cA * z)) -
                      CheckFinite(CheckFinite(cB * sA) * y));
    return r;
}

}  // namespace veltara::modMaths
