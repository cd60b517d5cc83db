// Checked conversions and arithmetic for values of a stated width (byte, 16-bit, 32-bit).
//
// Floating point to integer rounds to nearest with ties to even; a result outside the
// target's range, or a non-finite input, raises error 6. Integer results out of range raise 6.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "support/error.h"

namespace veltara {

/// Round half to even (the default rounding mode of the floating-point unit).
inline double RoundHalfEven(double v) { return std::nearbyint(v); }

/// `Int`: the largest whole number not above `v` (rounds towards minus infinity).
inline double Int(double v) { return std::floor(v); }

namespace detail {
template <typename T>
inline T FromDouble(double v) {
    const double r = RoundHalfEven(v);
    // The comparisons are false for NaN, so NaN falls through to the error as well.
    if (r >= static_cast<double>(std::numeric_limits<T>::min()) &&
        r <= static_cast<double>(std::numeric_limits<T>::max())) {
        return static_cast<T>(r);
    }
    Raise(kErrOverflow);
}
template <typename T>
inline T FromInt(int64_t v) {
    if (v < std::numeric_limits<T>::min() || v > std::numeric_limits<T>::max()) {
        Raise(kErrOverflow);
    }
    return static_cast<T>(v);
}
}  // namespace detail

/// double -> byte 0..255, ties to even; error 6 outside or non-finite.
inline uint8_t ToByte(double v) { return detail::FromDouble<uint8_t>(v); }
/// double -> 16-bit signed, ties to even; error 6 outside or non-finite.
inline int16_t ToInt16(double v) { return detail::FromDouble<int16_t>(v); }
/// double -> 32-bit signed, ties to even; error 6 outside or non-finite.
inline int32_t ToInt32(double v) { return detail::FromDouble<int32_t>(v); }

/// Integer narrowing; error 6 when the value does not fit.
inline uint8_t NarrowByte(int64_t v) { return detail::FromInt<uint8_t>(v); }
inline int16_t Narrow16(int64_t v) { return detail::FromInt<int16_t>(v); }
inline int32_t Narrow32(int64_t v) { return detail::FromInt<int32_t>(v); }

/// Checked 16-bit arithmetic; error 6 on overflow.
inline int16_t Add16(int16_t a, int16_t b) { return Narrow16(int64_t{a} + b); }
inline int16_t Sub16(int16_t a, int16_t b) { return Narrow16(int64_t{a} - b); }
inline int16_t Mul16(int16_t a, int16_t b) { return Narrow16(int64_t{a} * b); }
inline int16_t Neg16(int16_t a) { return Narrow16(-int64_t{a}); }
inline int16_t Abs16(int16_t a) { return Narrow16(a < 0 ? -int64_t{a} : int64_t{a}); }

/// Checked 32-bit arithmetic; error 6 on overflow.
inline int32_t Add32(int32_t a, int32_t b) { return Narrow32(int64_t{a} + b); }
inline int32_t Sub32(int32_t a, int32_t b) { return Narrow32(int64_t{a} - b); }
inline int32_t Mul32(int32_t a, int32_t b) { return Narrow32(int64_t{a} * b); }
inline int32_t Neg32(int32_t a) { return Narrow32(-int64_t{a}); }
inline int32_t Abs32(int32_t a) { return Narrow32(a < 0 ? -int64_t{a} : int64_t{a}); }

/// A floating-point result checked the way the engine's arithmetic is: NaN -> 5, infinite -> 6.
inline double CheckFinite(double v) {
    if (std::isnan(v)) Raise(kErrInvalidCall);
    if (std::isinf(v)) Raise(kErrOverflow);
    return v;
}

/// Floating-point division with the engine's faults: x / 0 -> 11, then CheckFinite.
inline double Divide(double num, double den) {
    if (den == 0.0) Raise(kErrDivisionByZero);
    return CheckFinite(num / den);
}

/// Square root; a negative argument raises 5.
inline double CheckedSqrt(double v) {
    if (v < 0.0) Raise(kErrInvalidCall);
    return std::sqrt(v);
}

}  // namespace veltara
