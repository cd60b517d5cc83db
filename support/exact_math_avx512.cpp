// The engine's exponential, 8 lanes at a time: the common sequence of exact_math_table.h over
// AVX512 registers. This file alone is compiled for AVX512 (see CMakeLists.txt) and is called only
// when the processor has it; it calls nothing outside itself but the scalar Exp.
#if defined(__x86_64__)
// GCC 12's gather and shift intrinsics start from a deliberately undefined register, which its
// own uninitialised-use warning then flags inside the header.
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

#include "support/exact_math.h"
#include "support/exact_math_table.h"

namespace veltara::exact::detail {

namespace {

using namespace table;

struct Avx512Lanes {
    using D = __m512d;
    using I = __m512i;
    static D Set(double v) { return _mm512_set1_pd(v); }
    static D Add(D a, D b) { return _mm512_add_pd(a, b); }
    static D Sub(D a, D b) { return _mm512_sub_pd(a, b); }
    static D Mul(D a, D b) { return _mm512_mul_pd(a, b); }
    static I Bits(D a) { return _mm512_castpd_si512(a); }
    static D FromBits(I a) { return _mm512_castsi512_pd(a); }
    static I ShiftLeft45(I a) { return _mm512_slli_epi64(a, 45); }
    static I AddBits(I a, I b) { return _mm512_add_epi64(a, b); }
    static I LowIndex(I a) { return _mm512_and_si512(a, _mm512_set1_epi64(127)); }
    static D GatherTail(I i) { return _mm512_i64gather_pd(i, kTail, 8); }
    static I GatherScale(I i) { return _mm512_i64gather_epi64(i, kScaleBits, 8); }
};

}  // namespace

void ExpArrayAvx512(const double* x, double* out, size_t count) {
    const __m512d limit = _mm512_set1_pd(kMainLimit);
    size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m512d v = _mm512_loadu_pd(x + i);
        const __m512d a = _mm512_castsi512_pd(
            _mm512_and_si512(_mm512_castpd_si512(v), _mm512_set1_epi64(0x7fffffffffffffff)));
        if (_mm512_cmp_pd_mask(a, limit, _CMP_LE_OQ) == 0xff) [[likely]] {
            _mm512_storeu_pd(out + i, ExpMain<Avx512Lanes>(v));
        } else {
            for (size_t j = i; j < i + 8; ++j) out[j] = Exp(x[j]);
        }
    }
    if (i < count) {
        // The last few through one more full register of zero-padded arguments: each lane
        // gives the double Exp gives, whatever its neighbours hold.
        double in[8] = {}, result[8];
        for (size_t j = i; j < count; ++j) in[j - i] = x[j];
        ExpArrayAvx512(in, result, 8);
        for (size_t j = i; j < count; ++j) out[j] = result[j - i];
    }
}

}  // namespace veltara::exact::detail
#endif
