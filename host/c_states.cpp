// The C interface of states: making, parsing and describing superpositions, evaluating them,
// sampling them, their boundary surfaces, and adding them to an engine's collection.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "electron/boundary_surface.h"
#include "electron/catalogue.h"
#include "electron/catalogue_density.h"
#include "electron/hybrids.h"
#include "electron/sampling.h"
#include "electron/state.h"
#include "electron/state_facts.h"
#include "electron/state_text.h"
#include "electron/state_wave.h"
#include "host/c_guard.h"
#include "host/c_objects.h"
#include "support/error.h"
#include "support/parallel_runs.h"

using veltara::host::Guard;
using veltara::host::kNullArgument;
using veltara::host::kNullObject;
using veltara::host::NoteError;

struct vt_superposition {
    veltara::Superposition value;
};

struct vt_surface {
    double level = 0;
    veltara::SurfaceMesh mesh;
};

namespace {

using veltara::Raise;

veltara::State StateFrom(const vt_state& s) {
    if (s.basis != VT_BASIS_REAL && s.basis != VT_BASIS_COMPLEX)
        Raise(veltara::kErrInvalidCall, "the basis must be real (0) or complex (1)");
    return veltara::State{
        s.n, s.l, s.m, static_cast<veltara::Basis>(s.basis), s.Z, s.shell_average != 0};
}

vt_state StateTo(const veltara::State& s) {
    return vt_state{s.n, s.l, s.m, static_cast<int32_t>(s.basis), s.Z, s.shellAverage ? 1 : 0};
}

/// Hands a new superposition to the caller.
int32_t Publish(veltara::Superposition value, vt_superposition** out) {
    *out = new vt_superposition{std::move(value)};
    return 0;
}

void CheckTime(double t) {
    if (!std::isfinite(t)) Raise(veltara::kErrInvalidCall, "the time t must be a finite number");
}

/// Copies `items` to a caller's array of `capacity`, or reports only the count when too small.
template <class T, class U, class F>
int32_t CopyOut(const std::vector<T>& items, U* out, int32_t capacity, int32_t* count, F convert) {
    *count = static_cast<int32_t>(items.size());
    if (capacity < *count) return veltara::kErrSubscript;
    for (size_t i = 0; i < items.size(); ++i) out[i] = convert(items[i]);
    return 0;
}

/// The catalogue row a superposition of one term is, whose values are the row's own.
std::optional<int16_t> CatalogueRow(const veltara::Superposition& s) {
    if (s.Terms().size() != 1) return std::nullopt;
    return veltara::CatalogueIndexOf(s.Terms()[0].state);
}

/// A catalogue state's values through the electrons' batch path, in runs; a run's first point
/// with a coordinate that is not finite goes to the per-point form, which refuses it as it
/// refuses such a point of any state, after the values before it are written.
void RowValues(const veltara::WaveEvaluator& wave, int16_t row, int32_t view,
               const veltara::Coordinates& points, size_t count, double* out) {
    for (size_t start = 0; start < count; start += veltara::kCoordinateRun) {
        const size_t end = std::min(count, start + veltara::kCoordinateRun);
        size_t good = start;
        while (good < end && std::isfinite(points.X(good)) && std::isfinite(points.Y(good)) &&
               std::isfinite(points.Z(good)))
            ++good;
        veltara::RealDensityBatch(row, static_cast<veltara::ViewMode>(view), points.From(start),
                                  good - start, out + start);
        if (good < end) wave.Density(points.X(good), points.Y(good), points.Z(good));
    }
}

}  // namespace

extern "C" {

int32_t vt_superposition_new(const vt_term* terms, int32_t count, vt_superposition** out) {
    if (out == nullptr || (count > 0 && terms == nullptr) || count < 0) return kNullArgument;
    return Guard([&] {
        std::vector<veltara::Term> list;
        for (int32_t i = 0; i < count; ++i)
            list.push_back({{terms[i].re, terms[i].im}, StateFrom(terms[i].state)});
        return Publish(veltara::MakeSuperposition(list), out);
    });
}

int32_t vt_parse_state(const char* text, vt_superposition** out) {
    if (text == nullptr || out == nullptr) return kNullArgument;
    return Guard([&] { return Publish(veltara::ParseState(text), out); });
}

int32_t vt_hybrid(int32_t kind, int32_t k, int32_t n, vt_superposition** out) {
    if (out == nullptr) return kNullArgument;
    return Guard([&] {
        if (kind < VT_HYBRID_SP || kind > VT_HYBRID_SP3D2)
            Raise(veltara::kErrInvalidCall, "the hybrid kind must be 0 (sp) to 4 (sp3d2)");
        return Publish(veltara::Hybrid(static_cast<veltara::HybridKind>(kind), k, n), out);
    });
}

void vt_superposition_free(vt_superposition* s) { delete s; }

int32_t vt_superposition_terms(const vt_superposition* s, vt_term* terms, int32_t capacity,
                               int32_t* count) {
    if (s == nullptr) return kNullObject;
    if (count == nullptr || (capacity > 0 && terms == nullptr)) return kNullArgument;
    return Guard([&] {
        return CopyOut(s->value.Terms(), terms, capacity, count, [](const veltara::Term& t) {
            return vt_term{t.c.real(), t.c.imag(), StateTo(t.state)};
        });
    });
}

int32_t vt_state_catalogue_index(const vt_superposition* s, int16_t* index) {
    if (s == nullptr) return NoteError(kNullObject);
    if (index == nullptr) return NoteError(kNullArgument);
    return Guard([&] {
        const std::vector<veltara::Term>& terms = s->value.Terms();
        const std::optional<int16_t> row =
            terms.size() == 1 && terms[0].c == std::complex<double>(1.0)
                ? veltara::CatalogueIndexOf(terms[0].state)
                : std::nullopt;
        *index = row.value_or(-1);
    });
}

int32_t vt_format_state(const vt_superposition* s, char* out, size_t capacity, size_t* length) {
    if (s == nullptr) return kNullObject;
    if (out == nullptr && capacity > 0) return kNullArgument;
    return Guard([&] {
        const std::string text = veltara::FormatState(s->value);
        if (length != nullptr) *length = text.size();
        if (capacity <= text.size()) return static_cast<int32_t>(veltara::kErrSubscript);
        std::memcpy(out, text.c_str(), text.size() + 1);
        return 0;
    });
}

int32_t vt_state_psi(const vt_superposition* s, double t, const double* xyz, size_t count,
                     double* out) {
    if (s == nullptr) return kNullObject;
    if (count > 0 && xyz == nullptr) return kNullArgument;
    const vt_points points = veltara::host::PackedPoints(xyz);
    return vt_state_psi_at(s, t, &points, count, 1, out);
}

int32_t vt_state_density(const vt_superposition* s, double t, int32_t view, const double* xyz,
                         size_t count, double* out) {
    if (s == nullptr) return kNullObject;
    if (count > 0 && xyz == nullptr) return kNullArgument;
    const vt_points points = veltara::host::PackedPoints(xyz);
    return vt_state_density_at(s, t, view, &points, count, 1, out);
}

int32_t vt_state_psi_at(const vt_superposition* s, double t, const vt_points* points, size_t count,
                        int32_t threads, double* out) {
    if (s == nullptr) return kNullObject;
    if (points == nullptr || !veltara::host::HasPoints(*points, count)) return kNullArgument;
    if (count > 0 && out == nullptr) return kNullArgument;
    return Guard([&] {
        const veltara::WaveEvaluator wave(s->value, t);
        const veltara::Coordinates all = veltara::host::CoordinatesOf(*points);
        auto* psi = reinterpret_cast<std::complex<double>*>(out);
        veltara::SplitRuns(count, threads, veltara::host::kPointsPerThread,
                           [&](size_t start, size_t n) {
                               for (size_t i = start; i < start + n; ++i)
                                   psi[i] = wave.Psi(all.X(i), all.Y(i), all.Z(i));
                           });
    });
}

int32_t vt_state_density_at(const vt_superposition* s, double t, int32_t view,
                            const vt_points* points, size_t count, int32_t threads, double* out) {
    if (s == nullptr) return kNullObject;
    if (points == nullptr || !veltara::host::HasPoints(*points, count)) return kNullArgument;
    if (count > 0 && out == nullptr) return kNullArgument;
    return Guard([&] {
        const veltara::WaveEvaluator wave(s->value, t);
        if (view != VT_PDF && view != VT_DRPDF)
            Raise(veltara::kErrInvalidCall, "the view must be 0 (density) or 1 (radial view)");
        const veltara::Coordinates all = veltara::host::CoordinatesOf(*points);
        const std::optional<int16_t> row = CatalogueRow(s->value);
        veltara::SplitRuns(
            count, threads, veltara::host::kPointsPerThread, [&](size_t start, size_t n) {
                if (row) {
                    RowValues(wave, *row, view, all.From(start), n, out + start);
                    return;
                }
                for (size_t i = start; i < start + n; ++i) {
                    const double x = all.X(i), y = all.Y(i), z = all.Z(i);
                    out[i] = view == VT_PDF ? wave.Density(x, y, z) : wave.RadialView(x, y, z);
                }
            });
    });
}

int32_t vt_state_radial_distribution(const vt_superposition* s, double t, const double* r,
                                     size_t count, double* out) {
    if (s == nullptr) return kNullObject;
    if (count > 0 && (r == nullptr || out == nullptr)) return kNullArgument;
    return Guard([&] {
        CheckTime(t);
        for (size_t i = 0; i < count; ++i) {
            if (!(r[i] >= 0)) Raise(veltara::kErrInvalidCall, "a distance r must be 0 or more");
            out[i] = veltara::RadialDistribution(s->value, r[i], t);
        }
    });
}

int32_t vt_state_facts_of(const vt_superposition* s, vt_state_facts* out) {
    if (s == nullptr) return kNullObject;
    if (out == nullptr) return kNullArgument;
    return Guard([&] {
        const veltara::StateFacts f = veltara::FactsOf(s->value);
        *out = vt_state_facts{f.n,
                              f.l,
                              f.m,
                              f.Z,
                              f.radialNodes,
                              f.angularNodes,
                              static_cast<int32_t>(f.nodeRadii.size()),
                              static_cast<int32_t>(f.beats.size()),
                              f.energyHartree,
                              f.energyEv,
                              f.meanRadius,
                              f.mostProbableRadius};
    });
}

int32_t vt_state_node_radii(const vt_superposition* s, double* radii, int32_t capacity,
                            int32_t* count) {
    if (s == nullptr) return kNullObject;
    if (count == nullptr || (capacity > 0 && radii == nullptr)) return kNullArgument;
    return Guard([&] {
        return CopyOut(veltara::FactsOf(s->value).nodeRadii, radii, capacity, count,
                       [](double r) { return r; });
    });
}

int32_t vt_state_beats(const vt_superposition* s, vt_beat* beats, int32_t capacity,
                       int32_t* count) {
    if (s == nullptr) return kNullObject;
    if (count == nullptr || (capacity > 0 && beats == nullptr)) return kNullArgument;
    return Guard([&] {
        return CopyOut(veltara::FactsOf(s->value).beats, beats, capacity, count,
                       [](const veltara::Beat& b) {
                           return vt_beat{b.deltaHartree, b.periodFs, b.wavelengthNm};
                       });
    });
}

int32_t vt_sample(const vt_superposition* s, double t, uint64_t seed, int32_t weight, size_t count,
                  double* xyz, double* phase) {
    if (s == nullptr) return kNullObject;
    if (count > 0 && xyz == nullptr) return kNullArgument;
    return Guard([&] {
        CheckTime(t);
        if (weight != VT_PDF && weight != VT_DRPDF)
            Raise(veltara::kErrInvalidCall, "the weight must be 0 (density) or 1 (radial view)");
        veltara::Sample(
            s->value, t, seed, count,
            weight == VT_PDF ? veltara::SampleWeight::Density : veltara::SampleWeight::RadialView,
            xyz, phase);
    });
}

int32_t vt_radius_holding(const vt_superposition* s, double fraction, double* out) {
    if (s == nullptr) return kNullObject;
    if (out == nullptr) return kNullArgument;
    return Guard([&] {
        if (!(fraction > 0 && fraction < 1))
            Raise(veltara::kErrInvalidCall, "the fraction must lie between 0 and 1");
        *out = veltara::RadiusHolding(s->value, fraction);
    });
}

int32_t vt_surface_new(const vt_superposition* s, double t, double fraction, int32_t resolution,
                       vt_surface** out) {
    if (s == nullptr) return kNullObject;
    if (out == nullptr) return kNullArgument;
    return Guard([&] {
        CheckTime(t);
        if (!(fraction >= 0.01 && fraction <= 0.99))
            Raise(veltara::kErrInvalidCall, "the enclosed fraction must be from 0.01 to 0.99");
        if (resolution < 8 || resolution > 256)
            Raise(veltara::kErrInvalidCall, "the resolution must be from 8 to 256 cells");
        auto surface = std::make_unique<vt_surface>();
        surface->mesh = veltara::BoundarySurface(s->value, t, fraction, resolution);
        surface->level = surface->mesh.level;
        *out = surface.release();
    });
}

int32_t vt_surface_counts(const vt_surface* m, double* level, int32_t* vertices,
                          int32_t* triangles) {
    if (m == nullptr) return kNullObject;
    if (level != nullptr) *level = m->level;
    if (vertices != nullptr) *vertices = static_cast<int32_t>(m->mesh.xyz.size() / 3);
    if (triangles != nullptr) *triangles = static_cast<int32_t>(m->mesh.triangles.size() / 3);
    return 0;
}

int32_t vt_surface_copy(const vt_surface* m, float* xyz, float* phase, uint32_t* triangles) {
    if (m == nullptr) return kNullObject;
    if (xyz != nullptr) std::copy(m->mesh.xyz.begin(), m->mesh.xyz.end(), xyz);
    if (phase != nullptr) std::copy(m->mesh.phase.begin(), m->mesh.phase.end(), phase);
    if (triangles != nullptr)
        std::copy(m->mesh.triangles.begin(), m->mesh.triangles.end(), triangles);
    return 0;
}

void vt_surface_free(vt_surface* m) { delete m; }

int32_t vt_add_state(vt_engine* e, const vt_superposition* s, double t,
                     const vt_OrbitalSetup* setup, int16_t* index) {
    if (e == nullptr || s == nullptr) return kNullObject;
    if (setup == nullptr || index == nullptr) return kNullArgument;
    return Guard([&] {
        CheckTime(t);
        veltara::OrbitalSetup record;
        record.AtomRadius = setup->AtomRadius;
        record.DotTarget = setup->DotTarget;
        record.DotThreshold = setup->DotThreshold;
        record.OrbitalIndex = 0;
        record.OrbitalViewMode = static_cast<veltara::ViewMode>(setup->OrbitalViewMode);
        *index = e->engine.Orbitals()->AddState(s->value, t, record);
    });
}

}  // extern "C"
