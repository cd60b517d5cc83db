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
class OrbitalScheme : public cElectron {
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
        if (view == ViewMode::DRPDF) {
            UnscaledRun<ViewMode::DRPDF>(points, out, count);
        } else {
            UnscaledRun<ViewMode::PDF>(points, out, count);
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
        const T f = Orb::Density(e, Terms<T>{X, Y, Z, rho2, r2, r});
        if constexpr (V == ViewMode::PDF) {
            return f;
        } else if constexpr (W == RadialWeight::kRhoTimesR) {
            // Intended: single orbitals weigh by rho x r, not r², so their radial-distribution
            // view keeps only the symmetry about the z axis.
            return f * density::Sqrt(rho2) * r;
        } else {
            return f * r2;
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

    // The batch path: two points per step in packed arithmetic. A pair with any faulty or
    // out-of-range lane is redone point by point, which raises at the first failing point
    // after the values before it are written.

    template <ViewMode V>
    static density::Pair EvaluatePair(const COORDdoubleParams* p, density::Pair& r2) {
        using density::Load;
        return Evaluate<V>(Load(p[0].Xs, p[1].Xs), Load(p[0].Ys, p[1].Ys), Load(p[0].Zs, p[1].Zs),
                           r2);
    }

    template <ViewMode V>
    static void UnscaledRun(const COORDdoubleParams* points, double* out, size_t count) {
        size_t i = 0;
        for (; i + 2 <= count; i += 2) {
            density::Pair r2;
            const density::Pair v = EvaluatePair<V>(points + i, r2);
            if (density::BothFinite(v, r2)) [[likely]] {
                density::Store(v, out + i);
            } else {
                out[i] = Unscaled<V>(points[i]);
                out[i + 1] = Unscaled<V>(points[i + 1]);
            }
        }
        if (i < count) out[i] = Unscaled<V>(points[i]);
    }

    template <ViewMode V>
    static void ByteRun(const COORDdoubleParams* points, uint8_t* out, size_t count, double scale) {
        size_t i = 0;
        for (; i + 2 <= count; i += 2) {
            density::Pair r2;
            const density::Pair v = EvaluatePair<V>(points + i, r2);
            // Rounding in the packed conversion is the same ties-to-even rounding as ToByte's.
            if (!density::BothFinite(v, r2) || !density::ToBytes(v * scale, out + i)) [[unlikely]] {
                out[i] = Byte<V>(points[i], scale);
                out[i + 1] = Byte<V>(points[i + 1], scale);
            }
        }
        if (i < count) out[i] = Byte<V>(points[i], scale);
    }
};

/// Base of the 30 single orbitals (radial-distribution weight rho x r).
template <class Orb>
using SingleOrbital = OrbitalScheme<Orb, RadialWeight::kRhoTimesR>;

/// Base of the 10 averaged shells (radial-distribution weight r²).
template <class Orb>
using AveragedShell = OrbitalScheme<Orb, RadialWeight::kRSquared>;

}  // namespace veltara
