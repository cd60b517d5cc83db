// The number types an orbital formula is evaluated in: plain doubles (the fast path), checked
// doubles (which stop at the first floating-point fault) and pairs of doubles (the batch path).
//
// Every orbital formula is written once as a template over its number type. All three types
// perform the same IEEE double operations in the same order, so a value is bit-identical
// whichever type computed it; they differ only in how faults are noticed.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__wasm_simd128__)
#include <wasm_simd128.h>
#endif

#include "support/convert.h"
#include "support/exact_math.h"

namespace veltara::density {

inline constexpr double kMaxFinite = std::numeric_limits<double>::max();

// ---- plain double -----------------------------------------------------------------------

/// Square root without a check: a negative argument gives NaN, noticed later by the caller.
inline double Sqrt(double v) { return std::sqrt(v); }
/// The engine's own exponential (the same double everywhere); underflow quietly gives 0.
inline double Exp(double v) { return exact::Exp(v); }

// ---- checked double ---------------------------------------------------------------------

/// A double whose every operation raises the engine's floating-point error at once: an
/// infinite result 6, a NaN 5, the square root of a negative 5. Used to find and report the
/// failing step of a point that the fast path found faulty.
struct Checked {
    double v;
};

inline Checked operator+(Checked a, Checked b) { return {CheckFinite(a.v + b.v)}; }
inline Checked operator-(Checked a, Checked b) { return {CheckFinite(a.v - b.v)}; }
inline Checked operator*(Checked a, Checked b) { return {CheckFinite(a.v * b.v)}; }
inline Checked operator+(Checked a, double b) { return {CheckFinite(a.v + b)}; }
inline Checked operator-(Checked a, double b) { return {CheckFinite(a.v - b)}; }
inline Checked operator*(Checked a, double b) { return {CheckFinite(a.v * b)}; }
inline Checked operator-(double a, Checked b) { return {CheckFinite(a - b.v)}; }
inline Checked operator*(double a, Checked b) { return {CheckFinite(a * b.v)}; }
inline Checked operator-(Checked a) { return {-a.v}; }
inline Checked Sqrt(Checked a) { return {CheckedSqrt(a.v)}; }
inline Checked Exp(Checked a) { return {CheckFinite(exact::Exp(a.v))}; }

// ---- two doubles at once ----------------------------------------------------------------

#if defined(__SSE2__)

/// Two lanes of double arithmetic. Packed add, subtract, multiply and square root are the
/// same correctly rounded operations as their scalar forms; the exponential is the engine's own,
/// lane by lane here (the batch paths take whole runs of exponentials through ExpArray).
struct Pair {
    __m128d v;
};

inline Pair Broadcast(double a) { return {_mm_set1_pd(a)}; }
inline Pair operator+(Pair a, Pair b) { return {_mm_add_pd(a.v, b.v)}; }
inline Pair operator-(Pair a, Pair b) { return {_mm_sub_pd(a.v, b.v)}; }
inline Pair operator*(Pair a, Pair b) { return {_mm_mul_pd(a.v, b.v)}; }
inline Pair operator+(Pair a, double b) { return {_mm_add_pd(a.v, _mm_set1_pd(b))}; }
inline Pair operator-(Pair a, double b) { return {_mm_sub_pd(a.v, _mm_set1_pd(b))}; }
inline Pair operator*(Pair a, double b) { return {_mm_mul_pd(a.v, _mm_set1_pd(b))}; }
inline Pair operator-(double a, Pair b) { return {_mm_sub_pd(_mm_set1_pd(a), b.v)}; }
inline Pair operator*(double a, Pair b) { return {_mm_mul_pd(_mm_set1_pd(a), b.v)}; }
inline Pair operator-(Pair a) { return {_mm_xor_pd(a.v, _mm_set1_pd(-0.0))}; }
inline Pair Sqrt(Pair a) { return {_mm_sqrt_pd(a.v)}; }
inline Pair Exp(Pair a) {
    const double lo = exact::Exp(_mm_cvtsd_f64(a.v));
    const double hi = exact::Exp(_mm_cvtsd_f64(_mm_unpackhi_pd(a.v, a.v)));
    return {_mm_set_pd(hi, lo)};
}
inline Pair Load(const double& lo, const double& hi) { return {_mm_set_pd(hi, lo)}; }
inline void Store(Pair a, double* out) { _mm_storeu_pd(out, a.v); }

/// True when both lanes of `a` are finite and both lanes of `b` lie in [-max, max].
inline bool BothFinite(Pair a, Pair b) {
    const __m128d absMask = _mm_castsi128_pd(_mm_set1_epi64x(0x7fffffffffffffff));
    const __m128d max = _mm_set1_pd(kMaxFinite);
    const __m128d okA = _mm_cmple_pd(_mm_and_pd(a.v, absMask), max);
    const __m128d okB = _mm_cmple_pd(_mm_and_pd(b.v, absMask), max);
    return _mm_movemask_pd(_mm_and_pd(okA, okB)) == 3;
}

/// Both lanes rounded to whole numbers in the current rounding mode (to nearest, ties to
/// even, as std::nearbyint does); false when either lane does not give a byte 0..255.
inline bool ToBytes(Pair a, uint8_t* out) {
#if defined(__wasm_simd128__)
    // WebAssembly's own rounding (ties to even) and saturating conversion: the emulated
    // _mm_cvtpd_epi32 calls lrint lane by lane. A NaN lane, which would convert to 0, is refused.
    const v128_t d = reinterpret_cast<const v128_t&>(a.v);
    if (wasm_i64x2_bitmask(wasm_f64x2_eq(d, d)) != 3) return false;
    const v128_t i = wasm_i32x4_trunc_sat_f64x2_zero(wasm_f64x2_nearest(d));
    const auto lo = static_cast<uint32_t>(wasm_i32x4_extract_lane(i, 0));
    const auto hi = static_cast<uint32_t>(wasm_i32x4_extract_lane(i, 1));
#else
    const __m128i i = _mm_cvtpd_epi32(a.v);  // NaN and out-of-range lanes give INT32_MIN
    const auto lo = static_cast<uint32_t>(_mm_cvtsi128_si32(i));
    const auto hi = static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_srli_si128(i, 4)));
#endif
    if (lo > 255u || hi > 255u) return false;
    out[0] = static_cast<uint8_t>(lo);
    out[1] = static_cast<uint8_t>(hi);
    return true;
}

#else

/// Portable two-lane fallback with the same operations as the packed form.
struct Pair {
    double lo, hi;
};

inline Pair Broadcast(double a) { return {a, a}; }
inline Pair operator+(Pair a, Pair b) { return {a.lo + b.lo, a.hi + b.hi}; }
inline Pair operator-(Pair a, Pair b) { return {a.lo - b.lo, a.hi - b.hi}; }
inline Pair operator*(Pair a, Pair b) { return {a.lo * b.lo, a.hi * b.hi}; }
inline Pair operator+(Pair a, double b) { return {a.lo + b, a.hi + b}; }
inline Pair operator-(Pair a, double b) { return {a.lo - b, a.hi - b}; }
inline Pair operator*(Pair a, double b) { return {a.lo * b, a.hi * b}; }
inline Pair operator-(double a, Pair b) { return {a - b.lo, a - b.hi}; }
inline Pair operator*(double a, Pair b) { return {a * b.lo, a * b.hi}; }
inline Pair operator-(Pair a) { return {-a.lo, -a.hi}; }
inline Pair Sqrt(Pair a) { return {std::sqrt(a.lo), std::sqrt(a.hi)}; }
inline Pair Exp(Pair a) { return {exact::Exp(a.lo), exact::Exp(a.hi)}; }
inline Pair Load(const double& lo, const double& hi) { return {lo, hi}; }
inline void Store(Pair a, double* out) {
    out[0] = a.lo;
    out[1] = a.hi;
}
inline bool BothFinite(Pair a, Pair b) {
    return std::fabs(a.lo) <= kMaxFinite && std::fabs(a.hi) <= kMaxFinite &&
           std::fabs(b.lo) <= kMaxFinite && std::fabs(b.hi) <= kMaxFinite;
}
inline bool ToBytes(Pair a, uint8_t* out) {
    const double lo = std::nearbyint(a.lo), hi = std::nearbyint(a.hi);
    if (!(lo >= 0.0 && lo <= 255.0 && hi >= 0.0 && hi <= 255.0)) return false;
    out[0] = static_cast<uint8_t>(lo);
    out[1] = static_cast<uint8_t>(hi);
    return true;
}

#endif

}  // namespace veltara::density
