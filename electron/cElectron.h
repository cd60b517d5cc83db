// cElectron: one orbital's probability density in two views, unscaled, real and as a byte.
#pragma once

#include <cstddef>
#include <cstdint>

#include "../records/PublicTypes.h"

namespace veltara {

/// The contract between the physics and the renderers. Every point is given by the squares of
/// its coordinates (Bohr radii); every density depends on the coordinates only through them.
///
/// Errors of the density operations: 6 when a byte rounds outside 0..255 (no clamping),
/// 5 for the square root of a negative sum of squares, and the floating-point errors
/// (5 invalid, 6 infinite) of a non-finite result.
class cElectron {
  public:
    virtual ~cElectron() = default;

    /// Multiplier mapping the unscaled density to 0..255. Stored unchecked.
    virtual void SetPDFScaleFactor(const double& NewPDFScaleFactor) = 0;
    /// Multiplier mapping the unscaled radial distribution to 0..255. Stored unchecked.
    virtual void SetDRPDFScaleFactor(const double& NewDRPDFScaleFactor) = 0;
    /// The orbital's catalogue entry.
    virtual OrbInfo GetInfo() = 0;

    /// Byte of f x the PDF scale factor, rounded half to even.
    virtual uint8_t GetPDF(const COORDdoubleParams& COORDS) = 0;
    /// f x N: the normalised density, per cubic Bohr radius.
    virtual double GetRealPDF(const COORDdoubleParams& COORDS) = 0;
    /// f: the bare density formula.
    virtual double GetNonScaledPDF(const COORDdoubleParams& COORDS) = 0;
    /// Byte of g x the DRPDF scale factor.
    virtual uint8_t GetDRPDF(const COORDdoubleParams& COORDS) = 0;
    /// g x N_DR.
    virtual double GetRealDRPDF(const COORDdoubleParams& COORDS) = 0;
    /// g = f x w: rho x r for single orbitals, r^2 for averaged shells.
    virtual double GetNonScaledDRPDF(const COORDdoubleParams& COORDS) = 0;

    // The batch path: a whole run of points per virtual call, each value bit-identical to the
    // per-point operation of the same view. On an error the values before the failing point
    // are written.

    /// out[i] = GetNonScaledPDF(points[i]) or GetNonScaledDRPDF(points[i]).
    virtual void NonScaledBatch(ViewMode view, const COORDdoubleParams* points, double* out,
                                size_t count) = 0;
    /// out[i] = GetRealPDF(points[i]) or GetRealDRPDF(points[i]); here point by point, in
    /// the catalogue's classes through the packed path.
    virtual void RealBatch(ViewMode view, const COORDdoubleParams* points, double* out,
                           size_t count) {
        for (size_t i = 0; i < count; ++i)
            out[i] = view == ViewMode::DRPDF ? GetRealDRPDF(points[i]) : GetRealPDF(points[i]);
    }
    /// out[i] = GetPDF(points[i]) or GetDRPDF(points[i]).
    virtual void ScaledBatch(ViewMode view, const COORDdoubleParams* points, uint8_t* out,
                             size_t count) = 0;
};

}  // namespace veltara
