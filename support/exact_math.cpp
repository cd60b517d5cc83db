// The engine's exponential (scalar, SSE2 and WebAssembly forms), logarithm, sine and cosine.
#include "support/exact_math.h"

#include <cstdint>
#include <cstring>
#include <limits>

#include "support/exact_math_table.h"

#if defined(__x86_64__)
#include <emmintrin.h>
#endif
#if defined(__wasm_simd128__)
#include <wasm_simd128.h>
#endif

namespace veltara::exact {

namespace detail {
// The wider x86 forms, each in a file of its own compiled for its instruction set.
void ExpArrayAvx2(const double* x, double* out, size_t count);
void ExpArrayAvx512(const double* x, double* out, size_t count);
}  // namespace detail

namespace {

using namespace table;

uint64_t BitsOf(double v) {
    uint64_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}
double FromBitsOf(uint64_t b) {
    double v;
    std::memcpy(&v, &b, sizeof v);
    return v;
}

struct ScalarLanes {
    using D = double;
    using I = uint64_t;
    static D Set(double v) { return v; }
    static D Add(D a, D b) { return a + b; }
    static D Sub(D a, D b) { return a - b; }
    static D Mul(D a, D b) { return a * b; }
    static I Bits(D a) { return BitsOf(a); }
    static D FromBits(I a) { return FromBitsOf(a); }
    static I ShiftLeft45(I a) { return a << 45; }
    static I AddBits(I a, I b) { return a + b; }
    static I LowIndex(I a) { return a & 127; }
    static D GatherTail(I i) { return kTail[i]; }
    static I GatherScale(I i) { return kScaleBits[i]; }
};

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// ---- exponential outside the common range -------------------------------------------------

constexpr double kOverflowAbove = 0x1.62e42fefa39efp+9;    // ln(largest double) rounded
constexpr double kUnderflowBelow = -0x1.74910d52d3052p+9;  // ln(half the least subnormal)

/// 704 < |x|, or NaN: the common sequence with its power of two applied in two steps, so that
/// the scale stays a normal double on the way.
[[gnu::noinline]] double ExpOutside(double x) {
    if (x != x) return x + x;
    if (x > kOverflowAbove) return kInf;
    if (x < kUnderflowBelow) return 0.0;
    double kd = x * kInvLn2N + kShift;
    const uint64_t ki = BitsOf(kd);
    kd = kd - kShift;
    const double r = (x - kd * kLn2HiN) - kd * kLn2LoN;
    const uint64_t index = ki & 127;
    const double r2 = r * r;
    const double tmp = ((kTail[index] + r) + r2 * (kC2 + r * kC3)) + (r2 * r2) * (kC4 + r * kC5);
    uint64_t sbits = kScaleBits[index] + (ki << 45);
    if (x > 0) {
        sbits -= 1009ull << 52;
        const double scale = FromBitsOf(sbits);
        return (scale + scale * tmp) * 0x1p1009;
    }
    // Rounded once to a normal double, then once more into the subnormal range: within 1 ulp.
    sbits += 1022ull << 52;
    const double scale = FromBitsOf(sbits);
    return (scale + scale * tmp) * 0x1p-1022;
}

// ---- sine and cosine ------------------------------------------------------------------------

// pi/2 in three parts of 33, 33 and 53 bits: k x kPio2A and k x kPio2B are exact for |k| < 2^20.
constexpr double kPio2A = 0x1.921fb54400000p+0;
constexpr double kPio2B = 0x1.0b4611a600000p-34;
constexpr double kPio2C = 0x1.3198a2e037073p-69;
constexpr double kTwoOverPi = 0x1.45f306dc9c883p-1;
constexpr double kReductionLimit = 0x1.921fb54400000p+20;  // about 2^20 pi/2

/// x = k pi/2 + (y + yy), |y| <= pi/4 (a little more), yy the part of the remainder below y's
/// precision. Returns k & 3.
int ReduceQuarterTurns(double x, double& y, double& yy) {
    const double kd = (x * kTwoOverPi + kShift) - kShift;
    const auto k = static_cast<int64_t>(kd);
    const double a = x - kd * kPio2A;  // exact: x and k pi/2 lie within a factor 2 of each other
    const double b = kd * kPio2B;      // exact
    // a - b as an exact sum s + e (Knuth's two-sum), then the third part.
    const double s = a - b;
    const double bv = a - s;
    const double av = s + bv;
    const double e = (a - av) + (bv - b);
    const double t = e - kd * kPio2C;
    y = s + t;
    yy = (s - y) + t;
    return static_cast<int>(k & 3);
}

/// 32 bits of 2/pi from bit `pos` on (bit 1 the first after the binary point); bits before the
/// point read as 0.
uint64_t TwoOverPiWord(int pos) {
    const auto word = [](int w) -> uint64_t { return w >= 0 && w < 38 ? kTwoOverPiBits[w] : 0; };
    const int first = pos - 1;
    const int w = first >= 0 ? first / 32 : -((31 - first) / 32);  // floor(first / 32)
    const int o = first - 32 * w;
    return ((word(w) << 32 | word(w + 1)) >> (32 - o)) & 0xffffffffu;
}

/// a x b = p + err exactly (Dekker's product: halves of 26 bits multiply without rounding).
void ExactProduct(double a, double b, double& p, double& err) {
    const double ca = 134217729.0 * a, cb = 134217729.0 * b;
    const double ah = ca - (ca - a), al = a - ah;
    const double bh = cb - (cb - b), bl = b - bh;
    p = a * b;
    err = (((ah * bh - p) + ah * bl) + al * bh) + al * bl;
}

/// ReduceQuarterTurns for any finite |x| >= 2^20: x 2/pi worked out in whole numbers from the
/// bits of 2/pi that matter (Payne and Hanek's reduction).
int ReduceWide(double x, double& y, double& yy) {
    const uint64_t b = BitsOf(x);
    const uint64_t m = (b & 0x000fffffffffffffull) | (1ull << 52);
    const int e = static_cast<int>((b >> 52) & 0x7ff) - 1075;  // |x| = m 2^e
    // The bits b_j of 2/pi with j <= e - 2 give multiples of 4 in m 2^e 2/pi; the 192 bits from
    // j = e - 1 on, W, give |x| 2/pi = m W 2^-190 modulo 4.
    uint32_t window[6];  // least significant first
    for (int k = 0; k < 6; ++k)
        window[5 - k] = static_cast<uint32_t>(TwoOverPiWord(e - 1 + 32 * k));
    const uint32_t mLimb[2] = {static_cast<uint32_t>(m), static_cast<uint32_t>(m >> 32)};
    uint32_t product[8] = {};  // m W, least significant limb first
    for (int j = 0; j < 2; ++j) {
        uint64_t carry = 0;
        for (int i = 0; i < 6; ++i) {
            const uint64_t t = uint64_t{mLimb[j]} * window[i] + product[i + j] + carry;
            product[i + j] = static_cast<uint32_t>(t);
            carry = t >> 32;
        }
        product[6 + j] = static_cast<uint32_t>(carry);
    }
    // Bits 190 and 191 are the quarter turns; the 128 bits below them the fraction.
    int q = static_cast<int>(product[5] >> 30);
    uint64_t hi =
        uint64_t{product[5] & 0x3fffffffu} << 34 | uint64_t{product[4]} << 2 | product[3] >> 30;
    uint64_t lo = uint64_t{product[3]} << 34 | uint64_t{product[2]} << 2 | product[1] >> 30;
    double sign = 1.0;
    if (hi >> 63) {  // a fraction of 1/2 or more: one quarter turn more, less the rest
        ++q;
        lo = ~lo + 1;
        hi = ~hi + (lo == 0 ? 1 : 0);
        sign = -1.0;
    }
    // The fraction's leading bit to the top (it may lie 60 bits down), then two exact doubles
    // of 53 bits each.
    int shift = 0;
    if (hi == 0) {
        hi = lo;
        lo = 0;
        shift = 64;
    }
    const int lead = hi == 0 ? 0 : __builtin_clzll(hi);
    if (lead > 0) {
        hi = hi << lead | lo >> (64 - lead);
        lo <<= lead;
    }
    const double down = FromBitsOf(static_cast<uint64_t>(1023 - shift - lead) << 52);
    const double a = static_cast<double>(hi >> 11) * 0x1p-53 * down;
    const double c = static_cast<double>((hi & 0x7ff) << 42 | lo >> 22) * 0x1p-106 * down;
    const double f = a + c;
    const double ff = c - (f - a);
    // The fraction of a quarter turn times pi/2, as a sum of two doubles.
    constexpr double kPio2Hi = 0x1.921fb54442d18p+0, kPio2Lo = 0x1.1a62633145c07p-54;
    double p, err;
    ExactProduct(f, kPio2Hi, p, err);
    const double tail = err + (f * kPio2Lo + ff * kPio2Hi);
    y = sign * (p + tail);
    yy = sign * ((p - (p + tail)) + tail);
    if (x < 0) {
        y = -y;
        yy = -yy;
        q = -q;
    }
    return q & 3;
}

/// Taylor coefficients 1/n! with alternating signs (rounded quotients, alike everywhere).
constexpr double kS1 = -1.0 / 6.0, kS2 = 1.0 / 120.0, kS3 = -1.0 / 5040.0, kS4 = 1.0 / 362880.0,
                 kS5 = -1.0 / 39916800.0, kS6 = 1.0 / 6227020800.0, kS7 = -1.0 / 1307674368000.0,
                 kS8 = 1.0 / 355687428096000.0, kS9 = -1.0 / 121645100408832000.0,
                 kS10 = 1.0 / 51090942171709440000.0;
constexpr double kC1 = 1.0 / 24.0, kC2c = -1.0 / 720.0, kC3c = 1.0 / 40320.0,
                 kC4c = -1.0 / 3628800.0, kC5c = 1.0 / 479001600.0, kC6 = -1.0 / 87178291200.0,
                 kC7 = 1.0 / 20922789888000.0, kC8 = -1.0 / 6402373705728000.0,
                 kC9 = 1.0 / 2432902008176640000.0, kC10 = -1.0 / 1124000727777607680000.0;

/// sin(y + yy) for |y| <= pi/4: y plus a correction a tenth of its size or less.
double SinKernel(double y, double yy) {
    const double z = y * y;
    const double v = z * y;
    const double r =
        kS2 +
        z * (kS3 +
             z * (kS4 + z * (kS5 + z * (kS6 + z * (kS7 + z * (kS8 + z * (kS9 + z * kS10)))))));
    return y - (((z * (0.5 * yy - v * r)) - yy) - v * kS1);
}

/// cos(y + yy) for |y| <= pi/4: 1 - y^2/2 split so that its rounding error is kept.
double CosKernel(double y, double yy) {
    const double z = y * y;
    const double r =
        z *
        (kC1 +
         z * (kC2c +
              z * (kC3c +
                   z * (kC4c +
                        z * (kC5c + z * (kC6 + z * (kC7 + z * (kC8 + z * (kC9 + z * kC10)))))))));
    const double hz = 0.5 * z;
    const double w = 1.0 - hz;
    return w + (((1.0 - w) - hz) + (z * r - y * yy));
}

double SinCos(double x, int shift) {
    if (!(x - x == 0.0)) return kNaN;  // infinite or NaN
    double y = x, yy = 0.0;
    int q = 0;
    if (!(x >= -0x1.921fb54442d18p-1 && x <= 0x1.921fb54442d18p-1)) {
        q = x > -kReductionLimit && x < kReductionLimit ? ReduceQuarterTurns(x, y, yy)
                                                        : ReduceWide(x, y, yy);
    }
    switch ((q + shift) & 3) {
        case 0:
            return SinKernel(y, yy);
        case 1:
            return CosKernel(y, yy);
        case 2:
            return -SinKernel(y, yy);
        default:
            return -CosKernel(y, yy);
    }
}

// ---- logarithm ------------------------------------------------------------------------------

constexpr double kLn2Hi = 0x1.62e42fee00000p-1;  // 32 bits: e x kLn2Hi is exact
constexpr double kLn2Lo = 0x1.a39ef35793c76p-33;
constexpr double kSqrt2 = 0x1.6a09e667f3bcdp+0;
// 2 / (2j + 1) for j = 1..11: log(1 + f) = 2 atanh(s), s = f / (2 + f), |s| <= 0.172.
constexpr double kL1 = 2.0 / 3.0, kL2 = 2.0 / 5.0, kL3 = 2.0 / 7.0, kL4 = 2.0 / 9.0,
                 kL5 = 2.0 / 11.0, kL6 = 2.0 / 13.0, kL7 = 2.0 / 15.0, kL8 = 2.0 / 17.0,
                 kL9 = 2.0 / 19.0, kL10 = 2.0 / 21.0, kL11 = 2.0 / 23.0;

// ---- the array forms ------------------------------------------------------------------------

void ExpArrayScalar(const double* x, double* out, size_t count) {
    for (size_t i = 0; i < count; ++i) out[i] = Exp(x[i]);
}

#if defined(__x86_64__)
struct Sse2Lanes {
    using D = __m128d;
    using I = __m128i;
    static D Set(double v) { return _mm_set1_pd(v); }
    static D Add(D a, D b) { return _mm_add_pd(a, b); }
    static D Sub(D a, D b) { return _mm_sub_pd(a, b); }
    static D Mul(D a, D b) { return _mm_mul_pd(a, b); }
    static I Bits(D a) { return _mm_castpd_si128(a); }
    static D FromBits(I a) { return _mm_castsi128_pd(a); }
    static I ShiftLeft45(I a) { return _mm_slli_epi64(a, 45); }
    static I AddBits(I a, I b) { return _mm_add_epi64(a, b); }
    static I LowIndex(I a) { return _mm_and_si128(a, _mm_set1_epi64x(127)); }
    static D GatherTail(I i) {
        return _mm_set_pd(kTail[_mm_cvtsi128_si64(_mm_unpackhi_epi64(i, i))],
                          kTail[_mm_cvtsi128_si64(i)]);
    }
    static I GatherScale(I i) {
        return _mm_set_epi64x(
            static_cast<int64_t>(kScaleBits[_mm_cvtsi128_si64(_mm_unpackhi_epi64(i, i))]),
            static_cast<int64_t>(kScaleBits[_mm_cvtsi128_si64(i)]));
    }
};

void ExpArraySse2(const double* x, double* out, size_t count) {
    const __m128d absMask = _mm_castsi128_pd(_mm_set1_epi64x(0x7fffffffffffffff));
    const __m128d limit = _mm_set1_pd(kMainLimit);
    size_t i = 0;
    for (; i + 2 <= count; i += 2) {
        const __m128d v = _mm_loadu_pd(x + i);
        const int inside = _mm_movemask_pd(_mm_cmple_pd(_mm_and_pd(v, absMask), limit));
        if (inside == 3) [[likely]] {
            _mm_storeu_pd(out + i, ExpMain<Sse2Lanes>(v));
        } else {
            ExpArrayScalar(x + i, out + i, 2);
        }
    }
    if (i < count) {
        const double in[2] = {x[i], 0.0};
        double result[2];
        ExpArraySse2(in, result, 2);
        out[i] = result[0];
    }
}
#endif

#if defined(__wasm_simd128__)
struct Simd128Lanes {
    using D = v128_t;
    using I = v128_t;
    static D Set(double v) { return wasm_f64x2_splat(v); }
    static D Add(D a, D b) { return wasm_f64x2_add(a, b); }
    static D Sub(D a, D b) { return wasm_f64x2_sub(a, b); }
    static D Mul(D a, D b) { return wasm_f64x2_mul(a, b); }
    static I Bits(D a) { return a; }
    static D FromBits(I a) { return a; }
    static I ShiftLeft45(I a) { return wasm_i64x2_shl(a, 45); }
    static I AddBits(I a, I b) { return wasm_i64x2_add(a, b); }
    static I LowIndex(I a) { return wasm_v128_and(a, wasm_i64x2_splat(127)); }
    static D GatherTail(I i) {
        return wasm_f64x2_make(kTail[wasm_i64x2_extract_lane(i, 0)],
                               kTail[wasm_i64x2_extract_lane(i, 1)]);
    }
    static I GatherScale(I i) {
        return wasm_i64x2_make(static_cast<int64_t>(kScaleBits[wasm_i64x2_extract_lane(i, 0)]),
                               static_cast<int64_t>(kScaleBits[wasm_i64x2_extract_lane(i, 1)]));
    }
};

void ExpArraySimd128(const double* x, double* out, size_t count) {
    const v128_t limit = wasm_f64x2_splat(kMainLimit);
    size_t i = 0;
    for (; i + 2 <= count; i += 2) {
        const v128_t v = wasm_v128_load(x + i);
        if (wasm_i64x2_all_true(wasm_f64x2_le(wasm_f64x2_abs(v), limit))) [[likely]] {
            wasm_v128_store(out + i, ExpMain<Simd128Lanes>(v));
        } else {
            ExpArrayScalar(x + i, out + i, 2);
        }
    }
    if (i < count) {
        const double in[2] = {x[i], 0.0};
        double result[2];
        ExpArraySimd128(in, result, 2);
        out[i] = result[0];
    }
}
#endif

}  // namespace

double Exp(double x) {
    if (x >= -kMainLimit && x <= kMainLimit) [[likely]] {
        return ExpMain<ScalarLanes>(x);
    }
    return ExpOutside(x);
}

double Log(double x) {
    if (x != x) return x + x;
    if (x < 0.0) return kNaN;
    if (x == 0.0) return -kInf;
    if (x == kInf) return kInf;
    // x = 2^e m with m in [sqrt(1/2), sqrt(2)); subnormals are scaled up first.
    int e = 0;
    if (x < 0x1p-1022) {
        x *= 0x1p54;
        e = -54;
    }
    const uint64_t b = BitsOf(x);
    e += static_cast<int>((b >> 52) & 0x7ff) - 1023;
    double m = FromBitsOf((b & 0x000fffffffffffffull) | 0x3ff0000000000000ull);
    if (m > kSqrt2) {
        m *= 0.5;
        ++e;
    }
    // log(1 + f) = f - f^2/2 + s (f^2/2 + R), R = 2 s^2/3 + 2 s^4/5 + ...
    const double f = m - 1.0;  // exact
    const double s = f / (2.0 + f);
    const double z = s * s;
    const double R =
        z *
        (kL1 +
         z * (kL2 +
              z * (kL3 +
                   z * (kL4 +
                        z * (kL5 +
                             z * (kL6 +
                                  z * (kL7 + z * (kL8 + z * (kL9 + z * (kL10 + z * kL11))))))))));
    const double hfsq = 0.5 * f * f;
    const double dk = e;
    return dk * kLn2Hi - ((hfsq - (s * (hfsq + R) + dk * kLn2Lo)) - f);
}

double Sin(double x) { return SinCos(x, 0); }
double Cos(double x) { return SinCos(x, 1); }

void ExpArrayOn(SimdPath path, const double* x, double* out, size_t count) {
    switch (path) {
#if defined(__x86_64__)
        case SimdPath::Sse2:
            return ExpArraySse2(x, out, count);
        case SimdPath::Avx2:
            return detail::ExpArrayAvx2(x, out, count);
        case SimdPath::Avx512:
            return detail::ExpArrayAvx512(x, out, count);
#endif
#if defined(__wasm_simd128__)
        case SimdPath::Simd128:
            return ExpArraySimd128(x, out, count);
#endif
        default:
            return ExpArrayScalar(x, out, count);
    }
}

void ExpArray(const double* x, double* out, size_t count) {
    static const SimdPath path = ActiveSimd().path;
    ExpArrayOn(path, x, out, count);
}

}  // namespace veltara::exact
