// The evaluation scheme shared by every orbital class: distances, exponential, the class's
// own formula, the radial-distribution weight, normalisation or scaling, byte quantisation.
//
// An orbital class derives from SingleOrbital<itself> or AveragedShell<itself> and supplies
// only its formula and constants (private, read by the scheme):
//   kMinusK        the factor by which r is multiplied to form the exponent (-1: negation)
//   kN             the normalisation constant of the real density
//   kNDR           (optional) the constant of the real radial distribution; kN when absent
//   Density(e, t)  e^(-k r) times the polynomial factors, in the order of multiplication
//   kRow           the catalogue row the class draws (CatalogueRowOf its own n, l, m)
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "electron/cElectron.h"
#include "electron/catalogue.h"
#include "electron/density_arithmetic.h"
#include "electron/grid_rows.h"
#include "electron/wide_rows.h"
#include "records/PublicTypes.h"
#include "support/convert.h"

namespace veltara {

/// The quantities of one point that a formula may use, in its number type T: the squares
/// X, Y, Z of the coordinates, rho2 = Y + X, r2 = rho2 + Z and r = sqrt(r2).
template <class T>
struct Terms {
    T X, Y, Z, rho2, r2, r;
};

/// The weight that turns a density into its radial-distribution value.
enum class RadialWeight {
    kRhoTimesR,  ///< single orbitals: distance from the z axis times distance from the nucleus
    kRSquared,   ///< averaged shells: r squared
};

/// cElectron for the orbital class Orb. The only state is the two scale factors, 0 until
/// set; everything else of a point (r², r, rho², the inner factor and its square) is
/// recomputed by every call and kept in locals.
template <class Orb, RadialWeight W>
class OrbitalScheme : public cElectron, public GridRowSampler {
  public:
    void SetPDFScaleFactor(const double& NewPDFScaleFactor) final {
        mPDFScaleFactor = NewPDFScaleFactor;
    }
    void SetDRPDFScaleFactor(const double& NewDRPDFScaleFactor) final {
        mDRPDFScaleFactor = NewDRPDFScaleFactor;
    }
    /// The catalogue row this class draws.
    static constexpr int16_t CatalogueRow() { return Orb::kRow; }
    OrbInfo GetInfo() final { return CatalogueInfo(Orb::kRow); }

    /// The class's formula, the factor of its exponent, its weight and its real factors, for the
    /// kernels of the wider vector paths (electron/wide_row_kernel.h), which evaluate them in
    /// their own number types.
    template <class T>
    static T Formula(const T& e, const Terms<T>& t) {
        return Orb::Density(e, t);
    }
    static constexpr double MinusK() { return Orb::kMinusK; }
    static constexpr RadialWeight kWeight = W;
    /// The factor that turns view v's unscaled value into its real value.
    static constexpr double RealFactor(ViewMode v) {
        return v == ViewMode::DRPDF ? RealDRFactor() : Orb::kN;
    }

    uint8_t GetPDF(const COORDdoubleParams& COORDS) final {
        return Byte<ViewMode::PDF>(COORDS, mPDFScaleFactor);
    }
    double GetRealPDF(const COORDdoubleParams& COORDS) final {
        return CheckFinite(Unscaled<ViewMode::PDF>(COORDS) * Orb::kN);
    }
    double GetNonScaledPDF(const COORDdoubleParams& COORDS) final {
        return Unscaled<ViewMode::PDF>(COORDS);
    }
    uint8_t GetDRPDF(const COORDdoubleParams& COORDS) final {
        return Byte<ViewMode::DRPDF>(COORDS, mDRPDFScaleFactor);
    }
    double GetRealDRPDF(const COORDdoubleParams& COORDS) final {
        return CheckFinite(Unscaled<ViewMode::DRPDF>(COORDS) * RealDRFactor());
    }
    double GetNonScaledDRPDF(const COORDdoubleParams& COORDS) final {
        return Unscaled<ViewMode::DRPDF>(COORDS);
    }

    void NonScaledBatch(ViewMode view, const COORDdoubleParams* points, double* out,
                        size_t count) final {
        // A factor of 1 leaves every finite value as it is.
        if (view == ViewMode::DRPDF) {
            UnscaledRun<ViewMode::DRPDF>(points, out, count, 1.0);
        } else {
            UnscaledRun<ViewMode::PDF>(points, out, count, 1.0);
        }
    }
    void RealBatch(ViewMode view, const COORDdoubleParams* points, double* out,
                   size_t count) final {
        if (view == ViewMode::DRPDF) {
            UnscaledRun<ViewMode::DRPDF>(points, out, count, RealDRFactor());
        } else {
            UnscaledRun<ViewMode::PDF>(points, out, count, Orb::kN);
        }
    }
    void ScaledBatch(ViewMode view, const COORDdoubleParams* points, uint8_t* out,
                     size_t count) final {
        if (view == ViewMode::DRPDF) {
            ByteRun<ViewMode::DRPDF>(points, out, count, mDRPDFScaleFactor);
        } else {
            ByteRun<ViewMode::PDF>(points, out, count, mPDFScaleFactor);
        }
    }

    void ScaledGridRows(ViewMode view, const GridRows& grid, const GridRowSpan* rows,
                        size_t count) final {
        if (view == ViewMode::DRPDF) {
            for (const GridRowSpan* row = rows; row != rows + count; ++row) {
                GridRow<ViewMode::DRPDF>(grid, row->xFirst, row->xLast, row->y, row->z, row->out,
                                         mDRPDFScaleFactor);
            }
        } else {
            for (const GridRowSpan* row = rows; row != rows + count; ++row) {
                GridRow<ViewMode::PDF>(grid, row->xFirst, row->xLast, row->y, row->z, row->out,
                                       mPDFScaleFactor);
            }
        }
    }

  private:
    double mPDFScaleFactor = 0;
    double mDRPDFScaleFactor = 0;

    static constexpr double RealDRFactor() {
        if constexpr (requires { Orb::kNDR; }) {
            return Orb::kNDR;
        } else {
            return Orb::kN;
        }
    }

    template <class T>
    static T Exponent(const T& r) {
        if constexpr (Orb::kMinusK == -1.0) {
            return -r;  // k = 1: the exponent is the plain negation of r
        } else {
            return r * Orb::kMinusK;
        }
    }

    /// The unscaled value of view V at one point, in number type T; r2 receives r².
    /// Products run left to right: exponential, the formula's factors, then the weight.
    template <ViewMode V, class T>
    static T Evaluate(const T& X, const T& Y, const T& Z, T& r2) {
        // rho² + Z is the same double as Y + X + Z added in that order, so classes that never
        // use rho² get their r² from the same sum.
        const T rho2 = Y + X;
        r2 = rho2 + Z;
        const T r = density::Sqrt(r2);
        const T e = density::Exp(Exponent(r));
        return Finish<V>(e, Terms<T>{X, Y, Z, rho2, r2, r});
    }

    /// The value from the exponential on: the formula, then the weight of the view.
    template <ViewMode V, class T>
    static T Finish(const T& e, const Terms<T>& t) {
        const T f = Orb::Density(e, t);
        if constexpr (V == ViewMode::PDF) {
            return f;
        } else if constexpr (W == RadialWeight::kRhoTimesR) {
            // Intended: single orbitals weigh by rho x r, not r², so their radial-distribution
            // view keeps only the symmetry about the z axis.
            return f * density::Sqrt(t.rho2) * t.r;
        } else {
            return f * t.r2;
        }
    }

    /// The per-point unscaled value. A point whose value or r² is not finite (a fault
    /// somewhere on the way, or a negative sum under a square root) is evaluated again step
    /// by step in checked arithmetic, which raises the error of the first failing step.
    template <ViewMode V>
    static double Unscaled(const COORDdoubleParams& c) {
        double r2;
        const double v = Evaluate<V>(c.Xs, c.Ys, c.Zs, r2);
        // r² must be checked itself: an infinite r gives e^(-r) = 0 and may hide the fault.
        if (!(std::fabs(v) <= density::kMaxFinite && r2 <= density::kMaxFinite)) [[unlikely]] {
            return Fault<V>(c);
        }
        return v;
    }

    template <ViewMode V>
    [[gnu::noinline, gnu::cold]] static double Fault(const COORDdoubleParams& c) {
        density::Checked r2;
        const density::Checked v = Evaluate<V, density::Checked>({c.Xs}, {c.Ys}, {c.Zs}, r2);
        return CheckFinite(v.v);
    }

    template <ViewMode V>
    static uint8_t Byte(const COORDdoubleParams& c, double scale) {
        return ToByte(CheckFinite(Unscaled<V>(c) * scale));
    }

    // The batch path, in runs of up to kRun points: the distances of the whole run in packed
    // arithmetic (two points a step), its exponentials through the widest vector path at once
    // (exact::ExpArray gives Exp's doubles), then the formula two points a step. A pair with any
    // faulty or out-of-range lane is redone point by point, which raises at the first failing
    // point after the values before it are written.
    // On the AVX2 and AVX-512 paths the wide kernels (electron/wide_rows.h) take the runs and
    // the grid rows instead, four or eight points a step, with the same operations.

    static constexpr size_t kRun = 128;

    /// The wide kernels of the process's vector path, or null (looked up once).
    static const WideTable* Wide() {
        static const WideTable* const table = WideKernels();
        return table;
    }
    static constexpr size_t ViewIndex(ViewMode v) { return v == ViewMode::DRPDF ? 1 : 0; }

    /// The distances and exponentials of points[0..count), count <= kRun; of an odd count the
    /// last point is left out (the runs below do it apart, as a pair of itself).
    struct Run {
        alignas(64) double rho2[kRun], r2[kRun], r[kRun], e[kRun];

        void Fill(const COORDdoubleParams* p, size_t count) {
            using density::Load;
            using density::Store;
            for (size_t i = 0; i + 2 <= count; i += 2) {
                const density::Pair rho2Pair =
                    Load(p[i].Ys, p[i + 1].Ys) + Load(p[i].Xs, p[i + 1].Xs);
                const density::Pair r2Pair = rho2Pair + Load(p[i].Zs, p[i + 1].Zs);
                const density::Pair rPair = density::Sqrt(r2Pair);
                Store(rho2Pair, rho2 + i);
                Store(r2Pair, r2 + i);
                Store(rPair, r + i);
                Store(Exponent(rPair), e + i);
            }
            exact::ExpArray(e, e, count & ~size_t{1});
        }

        template <ViewMode V>
        density::Pair Value(const COORDdoubleParams* p, size_t i) const {
            using density::Load;
            const Terms<density::Pair> t{Load(p[i].Xs, p[i + 1].Xs), Load(p[i].Ys, p[i + 1].Ys),
                                         Load(p[i].Zs, p[i + 1].Zs), Load(rho2[i], rho2[i + 1]),
                                         Load(r2[i], r2[i + 1]),     Load(r[i], r[i + 1])};
            return Finish<V>(Load(e[i], e[i + 1]), t);
        }
    };

    /// Runs of up to kRun points through a wide kernel; each point it leaves (a fault, or a
    /// value out of range, and every point after it in its run) is redone in order by `again`,
    /// so an error is raised at the first failing point with the values before it written.
    template <class Out, class Kernel, class Again>
    static void WideRuns(Kernel kernel, const COORDdoubleParams* points, Out* out, size_t count,
                         double factor, Again again) {
        for (size_t start = 0; start < count; start += kRun) {
            const size_t n = count - start < kRun ? count - start : kRun;
            uint64_t redo[2];
            kernel(points + start, n, factor, out + start, redo);
            ForEachRedo(redo, [&](size_t i) { out[start + i] = again(points[start + i]); });
        }
    }

    /// out[i] = the unscaled value times `factor`, as CheckFinite(Unscaled<V>(p) * factor).
    template <ViewMode V>
    static void UnscaledRun(const COORDdoubleParams* points, double* out, size_t count,
                            double factor) {
        if (const WideTable* wide = Wide()) {
            WideRuns(
                wide->values[Orb::kRow][ViewIndex(V)], points, out, count, factor,
                [&](const COORDdoubleParams& p) { return CheckFinite(Unscaled<V>(p) * factor); });
            return;
        }
        Run run;
        for (size_t start = 0; start < count; start += kRun) {
            const size_t n = count - start < kRun ? count - start : kRun;
            const COORDdoubleParams* p = points + start;
            double* o = out + start;
            run.Fill(p, n);
            size_t i = 0;
            for (; i + 2 <= n; i += 2) {
                // A finite product needs a finite value: the check of the per-point path.
                const density::Pair v = run.template Value<V>(p, i) * factor;
                const density::Pair r2 = density::Load(run.r2[i], run.r2[i + 1]);
                if (density::BothFinite(v, r2)) [[likely]] {
                    density::Store(v, o + i);
                } else {
                    o[i] = CheckFinite(Unscaled<V>(p[i]) * factor);
                    o[i + 1] = CheckFinite(Unscaled<V>(p[i + 1]) * factor);
                }
            }
            if (i < n) {
                // The odd last point as a pair of itself: its doubles are the per-point ones.
                const COORDdoubleParams twice[2] = {p[i], p[i]};
                double values[2];
                UnscaledRun<V>(twice, values, 2, factor);
                o[i] = values[0];
            }
        }
    }

    /// The bytes of a grid row: the distances of the row two points a step straight from the
    /// squares, its exponentials through ExpArray at once, then the formula two points a step
    /// as in ByteRun; an odd last point as a pair of itself.
// Every element read below was stored by the first loop (a pair at a time, the spare slot
// holding an odd row's last pair); GCC cannot see that through ExpArray and would warn.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
    template <ViewMode V>
    static void GridRow(const GridRows& grid, int32_t xFirst, int32_t xLast, int32_t y, int32_t z,
                        uint8_t* out, double scale) {
        using density::Broadcast;
        using density::Load;
        using density::Store;
        const double* X = grid.squares + xFirst;
        const double Y = grid.squares[y], Z = grid.squares[z];
        const size_t n = static_cast<size_t>(xLast - xFirst + 1);
        if (const WideTable* wide = Wide()) {
            // The wide row leaves its faulty and out-of-range points to the per-point path here.
            uint64_t redo[2];
            wide->rows[Orb::kRow][ViewIndex(V)](grid, xFirst, xLast, y, z, out, scale, redo);
            ForEachRedo(redo, [&](size_t i) { out[i] = Byte<V>({X[i], Y, Z}, scale); });
            return;
        }
        alignas(64) double rho2[kRun + 1], r2[kRun + 1], r[kRun + 1], e[kRun + 1];
        for (size_t i = 0; i < n; i += 2) {
            const size_t k = i + 1 < n ? i + 1 : i;
            const density::Pair rho2Pair = Broadcast(Y) + Load(X[i], X[k]);
            const density::Pair r2Pair = rho2Pair + Z;
            const density::Pair rPair = density::Sqrt(r2Pair);
            Store(rho2Pair, rho2 + i);
            Store(r2Pair, r2 + i);
            Store(rPair, r + i);
            Store(Exponent(rPair), e + i);
        }
        exact::ExpArray(e, e, n);

        for (size_t i = 0; i < n; i += 2) {
            const size_t k = i + 1 < n ? i + 1 : i;
            const Terms<density::Pair> t{Load(X[i], X[k]),   Broadcast(Y),
                                         Broadcast(Z),       Load(rho2[i], rho2[k]),
                                         Load(r2[i], r2[k]), Load(r[i], r[k])};
            const density::Pair v = Finish<V>(Load(e[i], e[k]), t);
            uint8_t bytes[2];
            if (!density::BothFinite(v, t.r2) || !density::ToBytes(v * scale, bytes)) [[unlikely]] {
                out[i] = Byte<V>({X[i], Y, Z}, scale);
                if (k != i) out[k] = Byte<V>({X[k], Y, Z}, scale);
            } else {
                out[i] = bytes[0];
                if (k != i) out[k] = bytes[1];
            }
        }
    }
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

    template <ViewMode V>
    static void ByteRun(const COORDdoubleParams* points, uint8_t* out, size_t count, double scale) {
        if (const WideTable* wide = Wide()) {
            WideRuns(wide->bytes[Orb::kRow][ViewIndex(V)], points, out, count, scale,
                     [&](const COORDdoubleParams& p) { return Byte<V>(p, scale); });
            return;
        }
        Run run;
        for (size_t start = 0; start < count; start += kRun) {
            const size_t n = count - start < kRun ? count - start : kRun;
            const COORDdoubleParams* p = points + start;
            uint8_t* o = out + start;
            run.Fill(p, n);
            size_t i = 0;
            for (; i + 2 <= n; i += 2) {
                const density::Pair v = run.template Value<V>(p, i);
                const density::Pair r2 = density::Load(run.r2[i], run.r2[i + 1]);
                // Rounding in the packed conversion is the same ties-to-even rounding as ToByte's.
                if (!density::BothFinite(v, r2) || !density::ToBytes(v * scale, o + i))
                    [[unlikely]] {
                    o[i] = Byte<V>(p[i], scale);
                    o[i + 1] = Byte<V>(p[i + 1], scale);
                }
            }
            if (i < n) {
                const COORDdoubleParams twice[2] = {p[i], p[i]};
                uint8_t values[2];
                ByteRun<V>(twice, values, 2, scale);
                o[i] = values[0];
            }
        }
    }
};

/// Base of the 30 single orbitals (radial-distribution weight rho x r).
template <class Orb>
using SingleOrbital = OrbitalScheme<Orb, RadialWeight::kRhoTimesR>;

/// Base of the 10 averaged shells (radial-distribution weight r²).
template <class Orb>
using AveragedShell = OrbitalScheme<Orb, RadialWeight::kRSquared>;

}  // namespace veltara
