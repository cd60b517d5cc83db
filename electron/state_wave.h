// The wavefunction, density and radial distribution of any state or superposition.
#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "electron/angular.h"
#include "electron/radial.h"
#include "electron/state.h"

namespace veltara {

class cElectron;

/// A superposition at one time t, prepared once for many points: each distinct radial and
/// angular function of its terms, and each coefficient times e^(-i E t). The free functions
/// below prepare one per call; callers evaluating many points keep one instead.
/// Errors (of the operations): 5 with a sentence for a non-finite coordinate; Psi also for a
/// shell average; a catalogue row's density and radial view also the catalogue's own errors
/// (6 where the squares of the coordinates overflow).
class WaveEvaluator {
  public:
    /// Raises 5 with a sentence for a non-finite t.
    WaveEvaluator(const Superposition& s, double t);

    std::complex<double> Psi(double x, double y, double z) const;
    double Density(double x, double y, double z) const;
    double RadialView(double x, double y, double z) const;

  private:
    struct Part {
        std::complex<double> c;  // the coefficient times e^(-i E t)
        size_t radial, angular;  // indices into mRadial, mAngular
    };
    std::vector<RadialFunction> mRadial;
    std::vector<AngularFunction> mAngular;
    std::vector<Part> mParts;
    bool mShellAverage = false;
    cElectron* mRow = nullptr;  // the catalogue row this state is, which gives its doubles

    std::complex<double> Sum(double x, double y, double z, double r) const;
};

/// Psi(x, y, z, t) = sum c_k psi_k e^(-i E_k t), in a0^(-3/2), Bohr and hbar/E_h.
/// Raises 5 for a shell average (a mixture has no phase).
std::complex<double> Psi(const Superposition& s, double x, double y, double z, double t);

/// |Psi|² per Bohr³; a shell average: R_nl²/(4 pi). A single real Z = 1 state that is a
/// catalogue row returns the catalogue's density bit for bit.
double Density(const Superposition& s, double x, double y, double z, double t);

/// The radial view at a point: rho r |Psi|² (rho the distance from the z axis), r² R_nl²/(4 pi)
/// for a shell average. A single real Z = 1 state that is a catalogue row returns the
/// catalogue's radial view bit for bit.
double RadialView(const Superposition& s, double x, double y, double z, double t);

/// The batch forms: out[i] is the point form at (xyz[3i], xyz[3i + 1], xyz[3i + 2]), bit for
/// bit. On an error at a point the values before it are written. Errors: as the point forms.
void PsiBatch(const Superposition& s, double t, const double* xyz, size_t count,
              std::complex<double>* out);
void DensityBatch(const Superposition& s, double t, const double* xyz, size_t count, double* out);
void RadialViewBatch(const Superposition& s, double t, const double* xyz, size_t count,
                     double* out);

/// R_nl(r) of nuclear charge Z, in a0^(-3/2). Raises 5 (with a sentence) for numbers out of
/// range or a negative or non-finite r.
double RadialR(int32_t n, int32_t l, int32_t Z, double r);

/// P(r) = r² times the integral of |Psi(t)|² over the sphere of radius r, per Bohr: the sum
/// of |c_k|² r² R_k² and the cross terms of terms that share l and m. Raises 5 (with a
/// sentence) for a negative or non-finite r or a non-finite t.
double RadialDistribution(const Superposition& s, double r, double t);

/// E_n = -Z²/(2n²), hartree.
double StateEnergy(const State& s);

/// True when every term is in the real basis with a real coefficient (psi is real at t = 0).
bool IsRealValued(const Superposition& s);

}  // namespace veltara
