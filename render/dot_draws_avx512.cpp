// The dot fill's test of a row's draws, eight lanes at a time: which points have a draw below
// their acceptance threshold. Integer arithmetic only, so every path marks the same points. This
// file alone is compiled for AVX512 (see CMakeLists.txt), is called only when the processor has
// it, and calls nothing outside itself.
#if defined(__x86_64__)
#include <immintrin.h>

#include <cstdint>

namespace veltara::detail {

/// hit[j] = 1 when one of the draws powers[8j..8j+8) x seed mod 2^31 - 1 lies below accept[j],
/// else 0, for j < n; seed in 1..2^31 - 2, powers below 2^31.
void MarkDrawsBelowAvx512(uint32_t seed, const uint32_t* powers, const int32_t* accept, int32_t n,
                          uint8_t* hit) {
    const __m512i s = _mm512_set1_epi64(seed);
    const __m512i modulus = _mm512_set1_epi64(2147483647);
    for (int32_t j = 0; j < n; ++j) {
        const __m512i w = _mm512_cvtepu32_epi64(
            _mm256_loadu_si256(reinterpret_cast<const __m256i*>(powers + 8 * j)));
        const __m512i t = _mm512_mul_epu32(w, s);
        // The product's low 31 bits plus the rest, below 2^32; less the modulus when that is
        // not negative (as an unsigned number the difference is then the smaller).
        const __m512i r = _mm512_add_epi64(_mm512_and_si512(t, modulus), _mm512_srli_epi64(t, 31));
        const __m512i draw = _mm512_min_epu64(r, _mm512_sub_epi64(r, modulus));
        hit[j] = _mm512_cmplt_epi64_mask(draw, _mm512_set1_epi64(accept[j])) != 0;
    }
}

}  // namespace veltara::detail
#endif
