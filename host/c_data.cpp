// Read-only data of an orbital for hosts that export it: its setup, dot cloud, probability grid,
// and the catalogue's normalised densities.
#include <algorithm>
#include <cstring>
#include <memory>

#include "electron/catalogue.h"
#include "electron/catalogue_density.h"
#include "engine/cOrbitalCol.h"
#include "host/c_guard.h"
#include "host/c_objects.h"
#include "host/c_records.h"
#include "support/error.h"
#include "support/parallel_runs.h"

using veltara::host::Guard;
using veltara::host::kNullArgument;
using veltara::host::kNullObject;

namespace {

/// The orbital in a slot: 9 outside the slots, 91 for an empty one.
const veltara::cOrbital& Occupant(vt_engine& e, int16_t index) {
    return e.engine.Orbitals()->Orbital(index);
}

}  // namespace

extern "C" {

int32_t vt_get_setup(vt_engine* e, int16_t index, vt_OrbitalSetup* out) {
    if (e == nullptr) return kNullObject;
    if (out == nullptr) return kNullArgument;
    return Guard([&] { *out = veltara::host::ToC(Occupant(*e, index).SetupRecord()); });
}

int32_t vt_get_dots(vt_engine* e, int16_t index, vt_PointArray* dots, int32_t capacity,
                    int32_t* count) {
    if (e == nullptr) return kNullObject;
    if (count == nullptr || (dots == nullptr && capacity != 0)) return kNullArgument;
    return Guard([&]() -> int32_t {
        const std::span<const veltara::PointArray> held = Occupant(*e, index).Dots();
        *count = static_cast<int32_t>(held.size());
        if (dots == nullptr) return 0;
        if (capacity < 0 || static_cast<size_t>(capacity) < held.size()) {
            return veltara::kErrSubscript;
        }
        std::transform(held.begin(), held.end(), dots,
                       [](const veltara::PointArray& p) { return veltara::host::ToC(p); });
        return 0;
    });
}

int32_t vt_grid_edge(vt_engine* e, int16_t index, int32_t* edge) {
    if (e == nullptr) return kNullObject;
    if (edge == nullptr) return kNullArgument;
    return Guard([&] { *edge = Occupant(*e, index).GridEdge(); });
}

int32_t vt_get_grid(vt_engine* e, int16_t index, uint8_t* grid, size_t size) {
    if (e == nullptr) return kNullObject;
    if (grid == nullptr) return kNullArgument;
    return Guard([&]() -> int32_t {
        const veltara::cOrbital& o = Occupant(*e, index);
        const std::span<const uint8_t> g = o.ProbMatrix();
        const auto edge = static_cast<size_t>(o.GridEdge());
        const size_t kBytes = edge * edge * edge;
        if (size < kBytes) return veltara::kErrSubscript;
        // A grid never sampled (its Setup failed part-way) reads as zeros.
        if (g.empty()) {
            std::memset(grid, 0, kBytes);
        } else {
            std::memcpy(grid, g.data(), kBytes);
        }
        return 0;
    });
}

int32_t vt_real_density(int16_t orbital, int32_t view, const double* xyz, size_t count,
                        double* out) {
    if (count > 0 && xyz == nullptr) return kNullArgument;
    const vt_points points = veltara::host::PackedPoints(xyz);
    return vt_real_density_at(orbital, view, &points, count, 1, out);
}

int32_t vt_real_density_at(int16_t orbital, int32_t view, const vt_points* points, size_t count,
                           int32_t threads, double* out) {
    if (view != VT_PDF && view != VT_DRPDF) return veltara::kErrInvalidCall;
    if (points == nullptr || !veltara::host::HasPoints(*points, count)) return kNullArgument;
    if (count > 0 && out == nullptr) return kNullArgument;
    return Guard([&] {
        if (!veltara::IsCatalogueIndex(orbital)) veltara::Raise(veltara::kErrObjectNotSet);
        const veltara::Coordinates all = veltara::host::CoordinatesOf(*points);
        veltara::SplitRuns(
            count, threads, veltara::host::kPointsPerThread, [&](size_t start, size_t n) {
                veltara::RealDensityBatch(orbital, static_cast<veltara::ViewMode>(view),
                                          all.From(start), n, out + start);
            });
    });
}

}  // extern "C"
