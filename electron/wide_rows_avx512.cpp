// The catalogue's grid rows and batches 8 lanes wide. This file alone is compiled for AVX-512F (see
// CMakeLists.txt); its kernels are called only when the processor has it (electron/wide_rows.cpp).
#if defined(__x86_64__)
#include <immintrin.h>

#include <bit>

#include "electron/wide_row_kernel.h"

// Some of GCC 12's AVX-512 intrinsics start from an "undefined" vector, which it then reports as
// used uninitialized wherever they are inlined.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

namespace veltara {

namespace {

using namespace exact::table;

struct Avx512Lanes {
    using D = __m512d;
    using I = __m512i;
    static constexpr int32_t kLanes = 8;
    static D Set(double v) { return _mm512_set1_pd(v); }
    static D Add(D a, D b) { return _mm512_add_pd(a, b); }
    static D Sub(D a, D b) { return _mm512_sub_pd(a, b); }
    static D Mul(D a, D b) { return _mm512_mul_pd(a, b); }
    static D Neg(D a) { return _mm512_castsi512_pd(_mm512_xor_si512(Bits(a), Bits(Set(-0.0)))); }
    static D Sqrt(D a) { return _mm512_sqrt_pd(a); }
    static D Load(const double* p) { return _mm512_loadu_pd(p); }
    /// The x, y and z of eight records of three doubles: three loads, each coordinate put
    /// together by two permutations (the first five from p[0..16), the last from p[16..24)).
    static void LoadRecords(const double* p, D& x, D& y, D& z) {
        const D a = _mm512_loadu_pd(p), b = _mm512_loadu_pd(p + 8), c = _mm512_loadu_pd(p + 16);
        const auto pick = [&](I first, I last) {
            return _mm512_permutex2var_pd(_mm512_permutex2var_pd(a, first, b), last, c);
        };
        x = pick(_mm512_setr_epi64(0, 3, 6, 9, 12, 15, 0, 0),
                 _mm512_setr_epi64(0, 1, 2, 3, 4, 5, 10, 13));
        y = pick(_mm512_setr_epi64(1, 4, 7, 10, 13, 0, 0, 0),
                 _mm512_setr_epi64(0, 1, 2, 3, 4, 8, 11, 14));
        z = pick(_mm512_setr_epi64(2, 5, 8, 11, 14, 0, 0, 0),
                 _mm512_setr_epi64(0, 1, 2, 3, 4, 9, 12, 15));
    }
    static void Store(double* p, D a) { _mm512_storeu_pd(p, a); }
    static I Bits(D a) { return _mm512_castpd_si512(a); }
    static D FromBits(I a) { return _mm512_castsi512_pd(a); }
    static I ShiftLeft45(I a) { return _mm512_slli_epi64(a, 45); }
    static I AddBits(I a, I b) { return _mm512_add_epi64(a, b); }
    static I LowIndex(I a) { return _mm512_and_si512(a, _mm512_set1_epi64(127)); }
    // The tables read by eight scalar loads each rather than a gather: on the processors
    // measured (AMD Zen 4) a gather of eight costs about twice the loads and their inserts.
    template <class T>
    static D Lookup(const T* table, I i) {
        alignas(64) int64_t k[8];
        _mm512_store_si512(k, i);
        const auto pair = [&](int32_t j) {
            return _mm_set_pd(std::bit_cast<double>(table[k[j + 1]]),
                              std::bit_cast<double>(table[k[j]]));
        };
        const auto quad = [&](int32_t j) {
            return _mm256_insertf128_pd(_mm256_zextpd128_pd256(pair(j)), pair(j + 2), 1);
        };
        return _mm512_mask_broadcast_f64x4(_mm512_zextpd256_pd512(quad(0)), 0xf0, quad(4));
    }
    static D GatherTail(I i) { return Lookup(kTail, i); }
    static I GatherScale(I i) { return Bits(Lookup(kScaleBits, i)); }
    static D Abs(D a) {
        return _mm512_castsi512_pd(_mm512_and_si512(Bits(a), _mm512_set1_epi64(INT64_MAX)));
    }
    static uint32_t Within(D a, double limit) {
        return _mm512_cmp_pd_mask(Abs(a), Set(limit), _CMP_LE_OQ);
    }
    static uint32_t Finite(D a, D b) {
        const D max = Set(density::kMaxFinite);
        return _mm512_cmp_pd_mask(Abs(a), max, _CMP_LE_OQ) &
               _mm512_cmp_pd_mask(Abs(b), max, _CMP_LE_OQ);
    }
    static D SignedRoot(D d, D f) {
        // The magnitude's bits from the root, the sign's from f (ternary logic: sign ? f : root);
        // then +0 in the lanes where d is 0.
        const I root = Bits(_mm512_sqrt_pd(d));
        const I psi = _mm512_ternarylogic_epi64(_mm512_set1_epi64(INT64_MIN), Bits(f), root, 0xca);
        return FromBits(_mm512_maskz_mov_epi64(_mm512_cmp_pd_mask(d, Set(0.0), _CMP_NEQ_UQ), psi));
    }
    static uint32_t ToBytes(D a, uint8_t* out) {
        // Rounded in the current mode (to nearest, ties to even); NaN and lanes out of range give
        // INT32_MIN, which the unsigned comparison finds with the negative ones.
        const __m512i n = _mm512_zextsi256_si512(_mm512_cvtpd_epi32(a));
        const uint32_t bad = _mm512_cmpgt_epu32_mask(n, _mm512_set1_epi32(255)) & 0xff;
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm512_cvtepi32_epi8(n));
        return bad;
    }
};

constexpr WideTable kTable = wide::KernelTable<Avx512Lanes>(CatalogueOrbitals{});

}  // namespace

const WideTable detail::kWideAvx512 = kTable;

}  // namespace veltara
#endif
