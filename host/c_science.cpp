// The C interface of the signed wavefunction, the orbital facts and the radial distribution.
#include "electron/orbital_facts.h"
#include "electron/wavefunction.h"
#include "host/c_guard.h"
#include "support/parallel_runs.h"

using veltara::host::Guard;
using veltara::host::kNullArgument;

extern "C" {

int32_t vt_wavefunction(int16_t orbital, const double* xyz, size_t count, double* out) {
    if (count > 0 && xyz == nullptr) return kNullArgument;
    const vt_points points = veltara::host::PackedPoints(xyz);
    return vt_wavefunction_at(orbital, &points, count, 1, out);
}

int32_t vt_wavefunction_at(int16_t orbital, const vt_points* points, size_t count, int32_t threads,
                           double* out) {
    if (points == nullptr || !veltara::host::HasPoints(*points, count)) return kNullArgument;
    if (count > 0 && out == nullptr) return kNullArgument;
    return Guard([&] {
        const veltara::Coordinates all = veltara::host::CoordinatesOf(*points);
        // The orbital is checked before any thread starts.
        veltara::WavefunctionBatch(orbital, all, 0, out);
        veltara::SplitRuns(count, threads, veltara::host::kPointsPerThread,
                           [&](size_t start, size_t n) {
                               veltara::WavefunctionBatch(orbital, all.From(start), n, out + start);
                           });
    });
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
