// The engine's exponential, 4 lanes at a time: the common sequence of exact_math_table.h over
// AVX2 registers. This file alone is compiled for AVX2 (see CMakeLists.txt) and is called only
// when the processor has it; it calls nothing outside itself but the scalar Exp.
#if defined(__x86_64__)
#include <immintrin.h>

#include "support/exact_math.h"
#include "support/exact_math_table.h"

namespace veltara::exact::detail {

namespace {

using namespace table;

struct Avx2Lanes {
    using D = __m256d;
    using I = __m256i;
    static D Set(double v) { return _mm256_set1_pd(v); }
    static D Add(D a, D b) { return _mm256_add_pd(a, b); }
    static D Sub(D a, D b) { return _mm256_sub_pd(a, b); }
    static D Mul(D a, D b) { return _mm256_mul_pd(a, b); }
    static I Bits(D a) { return _mm256_castpd_si256(a); }
    static D FromBits(I a) { return _mm256_castsi256_pd(a); }
    static I ShiftLeft45(I a) { return _mm256_slli_epi64(a, 45); }
    static I AddBits(I a, I b) { return _mm256_add_epi64(a, b); }
    static I LowIndex(I a) { return _mm256_and_si256(a, _mm256_set1_epi64x(127)); }
    static D GatherTail(I i) { return _mm256_i64gather_pd(kTail, i, 8); }
    static I GatherScale(I i) {
        return _mm256_i64gather_epi64(reinterpret_cast<const long long*>(kScaleBits), i, 8);
    }
};

}  // namespace

void ExpArrayAvx2(const double* x, double* out, size_t count) {
    const __m256d absMask = _mm256_castsi256_pd(_mm256_set1_epi64x(0x7fffffffffffffff));
    const __m256d limit = _mm256_set1_pd(kMainLimit);
    size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const __m256d v = _mm256_loadu_pd(x + i);
        const __m256d inside = _mm256_cmp_pd(_mm256_and_pd(v, absMask), limit, _CMP_LE_OQ);
        if (_mm256_movemask_pd(inside) == 15) [[likely]] {
            _mm256_storeu_pd(out + i, ExpMain<Avx2Lanes>(v));
        } else {
            for (size_t j = i; j < i + 4; ++j) out[j] = Exp(x[j]);
        }
    }
    if (i < count) {
        // The last few through one more full register of zero-padded arguments: each lane
        // gives the double Exp gives, whatever its neighbours hold.
        double in[4] = {}, result[4];
        for (size_t j = i; j < count; ++j) in[j - i] = x[j];
        ExpArrayAvx2(in, result, 4);
        for (size_t j = i; j < count; ++j) out[j] = result[j - i];
    }
}

}  // namespace veltara::exact::detail
#endif
