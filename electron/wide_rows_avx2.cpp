// The catalogue's grid rows and batches 4 lanes wide. This file alone is compiled for AVX2 (see
// CMakeLists.txt); its kernels are called only when the processor has it (electron/wide_rows.cpp).
#if defined(__x86_64__)
#include <immintrin.h>

#include <bit>

#include "electron/wide_row_kernel.h"

namespace veltara {

namespace {

using namespace exact::table;

struct Avx2Lanes {
    using D = __m256d;
    using I = __m256i;
    static constexpr int32_t kLanes = 4;
    static D Set(double v) { return _mm256_set1_pd(v); }
    static D Add(D a, D b) { return _mm256_add_pd(a, b); }
    static D Sub(D a, D b) { return _mm256_sub_pd(a, b); }
    static D Mul(D a, D b) { return _mm256_mul_pd(a, b); }
    static D Neg(D a) { return _mm256_xor_pd(a, Set(-0.0)); }
    static D Sqrt(D a) { return _mm256_sqrt_pd(a); }
    static D Load(const double* p) { return _mm256_loadu_pd(p); }
    /// The x, y and z of four records of three doubles: three loads, each coordinate's lanes
    /// blended into place out of order, then put in order.
    static void LoadRecords(const double* p, D& x, D& y, D& z) {
        const D a = _mm256_loadu_pd(p), b = _mm256_loadu_pd(p + 4), c = _mm256_loadu_pd(p + 8);
        // x: a0 c1 b2 a3 -> a0 a3 b2 c1; y: b0 a1 c2 b3 -> a1 b0 b3 c2; z: c0 b1 a2 c3 -> a2 b1 c0
        // c3
        x = _mm256_permute4x64_pd(_mm256_blend_pd(_mm256_blend_pd(a, b, 4), c, 2), 0x6c);
        y = _mm256_permute4x64_pd(_mm256_blend_pd(_mm256_blend_pd(b, a, 2), c, 4), 0xb1);
        z = _mm256_permute4x64_pd(_mm256_blend_pd(_mm256_blend_pd(c, b, 2), a, 4), 0xc6);
    }
    static void Store(double* p, D a) { _mm256_storeu_pd(p, a); }
    static I Bits(D a) { return _mm256_castpd_si256(a); }
    static D FromBits(I a) { return _mm256_castsi256_pd(a); }
    static I ShiftLeft45(I a) { return _mm256_slli_epi64(a, 45); }
    static I AddBits(I a, I b) { return _mm256_add_epi64(a, b); }
    static I LowIndex(I a) { return _mm256_and_si256(a, _mm256_set1_epi64x(127)); }
    // The tables read by four scalar loads each rather than a gather, which on AMD Zen 4 costs
    // more than the loads and their insert.
    template <class T>
    static D Lookup(const T* table, I i) {
        alignas(32) int64_t k[4];
        _mm256_store_si256(reinterpret_cast<__m256i*>(k), i);
        const auto pair = [&](int32_t j) {
            return _mm_set_pd(std::bit_cast<double>(table[k[j + 1]]),
                              std::bit_cast<double>(table[k[j]]));
        };
        return _mm256_insertf128_pd(_mm256_castpd128_pd256(pair(0)), pair(2), 1);
    }
    static D GatherTail(I i) { return Lookup(kTail, i); }
    static I GatherScale(I i) { return Bits(Lookup(kScaleBits, i)); }
    static D Abs(D a) { return _mm256_and_pd(a, FromBits(_mm256_set1_epi64x(INT64_MAX))); }
    static uint32_t Within(D a, double limit) {
        return static_cast<uint32_t>(
            _mm256_movemask_pd(_mm256_cmp_pd(Abs(a), Set(limit), _CMP_LE_OQ)));
    }
    static uint32_t Finite(D a, D b) {
        const D max = Set(density::kMaxFinite);
        const D ok = _mm256_and_pd(_mm256_cmp_pd(Abs(a), max, _CMP_LE_OQ),
                                   _mm256_cmp_pd(Abs(b), max, _CMP_LE_OQ));
        return static_cast<uint32_t>(_mm256_movemask_pd(ok));
    }
    static D SignedRoot(D d, D f) {
        // The magnitude's bits from the root, the sign's from f; then +0 where d is 0.
        const D sign = Set(-0.0);
        const D psi =
            _mm256_or_pd(_mm256_andnot_pd(sign, _mm256_sqrt_pd(d)), _mm256_and_pd(sign, f));
        return _mm256_andnot_pd(_mm256_cmp_pd(d, _mm256_setzero_pd(), _CMP_EQ_OQ), psi);
    }
    static uint32_t ToBytes(D a, uint8_t* out) {
        // Rounded in the current mode (to nearest, ties to even); NaN and lanes out of range give
        // INT32_MIN, whose high bits mark it with the negative ones and those above 255.
        const __m128i n = _mm256_cvtpd_epi32(a);
        const __m128i high = _mm_and_si128(n, _mm_set1_epi32(~255));
        const __m128i fits = _mm_cmpeq_epi32(high, _mm_setzero_si128());
        const auto bad = static_cast<uint32_t>(~_mm_movemask_ps(_mm_castsi128_ps(fits))) & 15u;
        const __m128i b = _mm_packus_epi16(_mm_packus_epi32(n, n), _mm_setzero_si128());
        const int32_t word = _mm_cvtsi128_si32(b);
        std::memcpy(out, &word, 4);
        return bad;
    }
};

constexpr WideTable kTable = wide::KernelTable<Avx2Lanes>(CatalogueOrbitals{});

}  // namespace

const WideTable detail::kWideAvx2 = kTable;

}  // namespace veltara
#endif
