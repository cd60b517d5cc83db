// The signed wavefunction of the single orbitals, from the catalogue's own densities.
#include "electron/wavefunction.h"

#include <array>
#include <cmath>
#include <utility>

#include "electron/catalogue.h"
#include "electron/catalogue_density.h"
#include "electron/density_arithmetic.h"
#include "electron/modOrbitals.h"
#include "electron/wave_sign.h"
#include "electron/wide_rows.h"
#include "support/error.h"

namespace veltara {

namespace {

constexpr int16_t kSingleOrbitals = kCatalogueSingleCount;

void CheckSingle(int16_t orbital) {
    if (orbital < 0 || orbital >= modOrbitals::kOrbitalCount) Raise(kErrSubscript);
    if (orbital >= kSingleOrbitals) Raise(kErrInvalidCall);
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
    const WideTable* wide = WideKernels();
    if (wide != nullptr && points.xStride == 1 && points.yStride == 1 && points.zStride == 1) {
        // Three plain columns: the orbital's wide kernel writes psi itself; the points it leaves
        // go through the point form, which raises at a failing one.
        const WidePsi psi = wide->psi[static_cast<size_t>(orbital)];
        for (size_t start = 0; start < count; start += kWideRun) {
            const size_t n = count - start < kWideRun ? count - start : kWideRun;
            uint64_t redo[2];
            psi(points.x + start, points.y + start, points.z + start, n, out + start, redo);
            ForEachRedo(redo, [&](size_t i) {
                const size_t p = start + i;
                out[p] = Wavefunction(orbital, points.x[p], points.y[p], points.z[p]);
            });
        }
        return;
    }
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
