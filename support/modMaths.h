// modMaths: parity, the central projection onto a plane and the two-angle rotation.
#pragma once

#include <cstdint>

#include "records/PublicTypes.h"

namespace veltara::modMaths {

/// True (-1) when Value is even; the remainder takes the sign of the dividend.
VbBool IsEven(const int32_t& Value);

/// Where the line from Camera through Point meets the plane Y = PlaneY. Leaves Result untouched
/// when floor(Point.Y - Camera.Y) is 0 (depth in [0, 1)); the parameter T is single precision.
/// Writes X, Z, then Y (Point.Y rounded). Raises 6 on 32-bit overflow, 5/6/11 on a
/// floating-point fault.
void ProjectOntoPlane(const COORDlong& Camera, const COORDdouble& Point, COORDlong& Result,
                      const int16_t& PlaneY);

/// Turns Point about Z by AngleB, then about X by AngleA (radians). Raises 5/6 on a
/// floating-point fault.
COORDdouble RotateCoord(const COORDdouble& Point, const double& AngleA, const double& AngleB);

}  // namespace veltara::modMaths
