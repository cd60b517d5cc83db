// The signed wavefunction of the single orbitals, from the catalogue's own densities.
#include "electron/wavefunction.h"

#include <array>
#include <cmath>
#include <type_traits>
#include <utility>

#include "electron/catalogue.h"
#include "electron/catalogue_density.h"
#include "electron/density_arithmetic.h"
#include "electron/modOrbitals.h"
#include "support/error.h"

namespace veltara {

namespace {

constexpr int16_t kSingleOrbitals = kCatalogueSingleCount;

void CheckSingle(int16_t orbital) {
    if (orbital < 0 || orbital >= modOrbitals::kOrbitalCount) Raise(kErrSubscript);
    if (orbital >= kSingleOrbitals) Raise(kErrInvalidCall);
}

/// A number whose sign is the sign of the orbital's wavefunction at (x, y, z): the product of
/// its odd coordinate factors and its polynomial. Each polynomial is computed from the squares
/// in the same operations as the catalogue's density, so it is zero exactly where the density's
/// factor is; a leading minus turns the catalogue's orientation into the usual one.
/// Inlined with a constant orbital in the batch path, where the switch and any unused
/// quantity fall away.
/// In plain doubles or in pairs (density::Pair), with the same operations in the same order.
template <class T>
[[gnu::always_inline]] inline T SignFactor(int16_t orbital, T x, T y, T z) {
    const T X = x * x, Y = y * y, Z = z * z;
    const T rho2 = Y + X, r2 = rho2 + Z;
    const auto r = [r2] { return density::Sqrt(r2); };
    switch (orbital) {
        case 0:  // 1S
            if constexpr (std::is_same_v<T, double>) {
                return 1.0;
            } else {
                return density::Broadcast(1.0);
            }
        case 1:  // 2S: 2 - r()
            return -(r() - 2.0);
        case 2:
            return x;
        case 3:
            return y;
        case 4:
            return z;
        case 5:  // 3S: 6 - 4r + 4r²/9
            return (6.0 - 4.0 * r()) + r2 * 0.4444444444444444;
        case 6:  // 3P: 6 - r()
            return x * -(r() - 6.0);
        case 7:
            return y * -(r() - 6.0);
        case 8:
            return z * -(r() - 6.0);
        case 9:  // 3Dz²: 3z² - r²
            return -(rho2 - (Z + Z));
        case 10:
            return X - Y;
        case 11:
            return x * y;
        case 12:
            return x * z;
        case 13:
            return y * z;
        case 14:  // 4S: 192 - 144r + 24r² - r³
            return -((r2 + 144.0) * r() + (r2 + 8.0) * -24.0);
        case 15:  // 4P: r² - 20r + 80
            return x * ((r2 + 80.0) - r() * 20.0);
        case 16:
            return y * ((r2 + 80.0) - r() * 20.0);
        case 17:
            return z * ((r2 + 80.0) - r() * 20.0);
        case 18:  // 4D: (3z² - r²)(12 - r()), both factors turned
            return (rho2 - (Z + Z)) * (r() - 12.0);
        case 19:
            return (X - Y) * -(r() - 12.0);
        case 20:
            return x * y * -(r() - 12.0);
        case 21:
            return x * z * -(r() - 12.0);
        case 22:
            return y * z * -(r() - 12.0);
        case 23:  // 4Fz³: z(2z² - 3rho²) = z(5z² - 3r²)
            return z * -(rho2 * 3.0 - (Z + Z));
        case 24:  // 4Fxz²: x(4z² - rho²) = x(5z² - r²)
            return x * -(rho2 - Z * 4.0);
        case 25:
            return y * -(rho2 - Z * 4.0);
        case 26:
            return z * (X - Y);
        case 27:
            return x * y * z;
        case 28:
            return x * (X - Y * 3.0);
        default:  // 29, 4Fy(3x² - y²)
            return y * -(Y - X * 3.0);
    }
}

/// psi from the real density at the point: its square root with the sign of the orbital.
[[gnu::always_inline]] inline double Signed(double density, int16_t orbital, double x, double y,
                                            double z) {
    if (density == 0.0) return 0.0;  // on a node: no sign, and never -0
    return std::copysign(std::sqrt(density), SignFactor<double>(orbital, x, y, z));
}

/// Turns a run's densities o[0..n) into psi at points start.. of `points`, for one orbital.
template <int16_t kOrbital>
void SignRun(const Coordinates& points, size_t start, size_t n, double* o) {
    size_t i = 0;
#if defined(__SSE2__)
    // Two points a step: Signed's operations, its copysign and its zero test as bit masks.
    const __m128d sign = _mm_set1_pd(-0.0);
    for (; i + 2 <= n; i += 2) {
        const size_t p = start + i;
        using density::Load;
        const density::Pair f =
            SignFactor(kOrbital, Load(points.X(p), points.X(p + 1)),
                       Load(points.Y(p), points.Y(p + 1)), Load(points.Z(p), points.Z(p + 1)));
        const __m128d d = _mm_loadu_pd(o + i);
        const __m128d psi = _mm_or_pd(_mm_andnot_pd(sign, _mm_sqrt_pd(d)), _mm_and_pd(sign, f.v));
        _mm_storeu_pd(o + i, _mm_andnot_pd(_mm_cmpeq_pd(d, _mm_setzero_pd()), psi));
    }
#endif
    for (; i < n; ++i) {
        const size_t p = start + i;
        o[i] = Signed(o[i], kOrbital, points.X(p), points.Y(p), points.Z(p));
    }
}

using SignRunFunction = void (*)(const Coordinates&, size_t, size_t, double*);

template <int16_t... kOrbitals>
constexpr std::array<SignRunFunction, sizeof...(kOrbitals)> SignRuns(
    std::integer_sequence<int16_t, kOrbitals...>) {
    return {&SignRun<kOrbitals>...};
}

constexpr auto kSignRuns = SignRuns(std::make_integer_sequence<int16_t, kSingleOrbitals>());

}  // namespace

double Wavefunction(int16_t orbital, double x, double y, double z) {
    CheckSingle(orbital);
    return Signed(CatalogueElectron(orbital).GetRealPDF({x * x, y * y, z * z}), orbital, x, y, z);
}

void WavefunctionBatch(int16_t orbital, const double* xyz, size_t count, double* out) {
    WavefunctionBatch(orbital, Coordinates::Interleaved(xyz), count, out);
}

void WavefunctionBatch(int16_t orbital, const Coordinates& points, size_t count, double* out) {
    CheckSingle(orbital);
    cElectron& electron = CatalogueElectron(orbital);
    const SignRunFunction signs = kSignRuns[static_cast<size_t>(orbital)];
    for (size_t start = 0; start < count; start += kCoordinateRun) {
        const size_t n = count - start < kCoordinateRun ? count - start : kCoordinateRun;
        double* o = out + start;
        try {
            RealDensityRun(electron, orbital, ViewMode::PDF, points, start, n, o);
        } catch (...) {
            // A failing point: the run again point by point, which writes the values before
            // it and raises its error.
            for (size_t i = start; i < start + n; ++i) {
                out[i] = Wavefunction(orbital, points.X(i), points.Y(i), points.Z(i));
            }
            throw;
        }
        signs(points, start, n, o);
    }
}

}  // namespace veltara
