// The C interface of the signed wavefunction, the orbital facts and the radial distribution.
#include "electron/orbital_facts.h"
#include "electron/wavefunction.h"
#include "host/c_guard.h"

using veltara::host::Guard;
using veltara::host::kNullArgument;

extern "C" {

int32_t vt_wavefunction(int16_t orbital, const double* xyz, size_t count, double* out) {
    if (count > 0 && (xyz == nullptr || out == nullptr)) return kNullArgument;
    return Guard([&] { veltara::WavefunctionBatch(orbital, xyz, count, out); });
}

int32_t vt_orbital_facts(int16_t orbital, vt_OrbitalFacts* out) {
    if (out == nullptr) return kNullArgument;
    return Guard([&] {
        const veltara::OrbitalFacts f = veltara::FactsOf(orbital);
        *out = vt_OrbitalFacts{f.n,
                               f.l,
                               f.m,
                               0,
                               f.radialNodes,
                               f.angularNodes,
                               f.energyHartree,
                               f.meanRadius,
                               f.mostProbableRadius};
    });
}

int32_t vt_radial_distribution(int16_t orbital, const double* r, size_t count, double* out) {
    if (count > 0 && (r == nullptr || out == nullptr)) return kNullArgument;
    return Guard([&] { veltara::RadialDistributionBatch(orbital, r, count, out); });
}

}  // extern "C"
