// Any state for the page: its text form read and written back by the engine, its facts, exact
// samples of its density, its boundary surface and P(r). Every call takes the state as the
// engine's text form, so the page holds nothing but that text; errors come back as the
// engine's number, with the sentence naming what was refused in vtw_last_message().
#include <emscripten/emscripten.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "electron/boundary_surface.h"
#include "electron/catalogue.h"
#include "electron/radius_holding.h"
#include "electron/sampling.h"
#include "electron/state.h"
#include "electron/state_facts.h"
#include "electron/state_text.h"
#include "electron/state_wave.h"
#include "support/error.h"

namespace {

std::string gMessage;        // the sentence of the last refusal
std::string gReport;         // the last description, as JSON
veltara::SurfaceMesh gMesh;  // the last surface
// What the last surface was made for: the page asks again for the same one when only the dots
// or the colours change.
struct SurfaceKey {
    std::string text;
    double t, fraction;
    int32_t resolution;
    bool operator==(const SurfaceKey&) const = default;
};
std::optional<SurfaceKey> gMeshKey;

template <class F>
int32_t Guard(F&& f) {
    gMessage.clear();
    try {
        f();
        return 0;
    } catch (const veltara::Error& e) {
        gMessage = e.what();
        return e.number();
    } catch (const std::bad_alloc&) {
        return 7;
    } catch (...) {
        return 5;
    }
}

// Numbers in JSON: 17 significant digits, so the page reads back the engine's doubles.
void Put(std::string& out, const char* key, double v) {
    char text[64];
    std::snprintf(text, sizeof text, "\"%s\":%.17g,", key, v);
    out += text;
}

std::string Quoted(const std::string& s) {
    std::string out = "\"";
    for (const char c : s) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + "\"";
}

}  // namespace

extern "C" {

/// The sentence of the last refused call ("" when it had none).
EMSCRIPTEN_KEEPALIVE const char* vtw_last_message() { return gMessage.c_str(); }

/// Reads `text` and describes it as JSON (the result's pointer in *json): the engine's own
/// text form for it, its terms, whether it is real, its catalogue row (-1 when none) and its
/// facts (energies, nodes, radii, beats).
EMSCRIPTEN_KEEPALIVE int32_t vtw_state_describe(const char* text, const char** json) {
    return Guard([&] {
        const veltara::Superposition s = veltara::ParseState(text);
        const veltara::StateFacts f = veltara::FactsOf(s);
        std::string out = "{\"text\":" + Quoted(veltara::FormatState(s)) + ",";
        out += veltara::IsRealValued(s) ? "\"real\":true," : "\"real\":false,";
        const auto& terms = s.Terms();
        const auto row = terms.size() == 1 ? veltara::CatalogueIndexOf(terms[0].state)
                                           : std::optional<int16_t>{};
        Put(out, "catalogue", row ? *row : -1);
        out += "\"terms\":[";
        for (size_t i = 0; i < terms.size(); ++i) {
            const veltara::State& st = terms[i].state;
            out += i ? ",{" : "{";
            Put(out, "re", terms[i].c.real());
            Put(out, "im", terms[i].c.imag());
            Put(out, "n", st.n);
            Put(out, "l", st.l);
            Put(out, "m", st.m);
            Put(out, "Z", st.Z);
            Put(out, "complex", st.basis == veltara::Basis::Complex ? 1 : 0);
            Put(out, "average", st.shellAverage ? 1 : 0);
            Put(out, "energy", veltara::StateEnergy(st));
            out.back() = '}';
        }
        out += "],";
        Put(out, "n", f.n);
        Put(out, "l", f.l);
        Put(out, "m", f.m);
        Put(out, "Z", f.Z);
        Put(out, "energyHartree", f.energyHartree);
        Put(out, "energyEv", f.energyEv);
        Put(out, "radialNodes", f.radialNodes);
        Put(out, "angularNodes", f.angularNodes);
        Put(out, "meanRadius", f.meanRadius);
        Put(out, "mostProbableRadius", f.mostProbableRadius);
        Put(out, "radius999", veltara::RadiusHolding(s, 0.999));
        out += "\"nodeRadii\":[";
        for (size_t i = 0; i < f.nodeRadii.size(); ++i) {
            char v[32];
            std::snprintf(v, sizeof v, "%s%.17g", i ? "," : "", f.nodeRadii[i]);
            out += v;
        }
        out += "],\"beats\":[";
        for (size_t i = 0; i < f.beats.size(); ++i) {
            out += i ? ",{" : "{";
            Put(out, "deltaHartree", f.beats[i].deltaHartree);
            Put(out, "periodFs", f.beats[i].periodFs);
            Put(out, "wavelengthNm", f.beats[i].wavelengthNm);
            out.back() = '}';
        }
        out += "]}";
        gReport = std::move(out);
        *json = gReport.c_str();
    });
}

/// `count` exact samples of the state `text` at time t (hbar/E_h): xyz (out, 3 count floats,
/// Bohr radii), phase (out, count floats, radians) and density (out, count floats, |Psi|^2 per
/// Bohr^3 at each point). weight 0: |Psi|^2; 1: the radial view.
EMSCRIPTEN_KEEPALIVE int32_t vtw_state_sample(const char* text, double t, double seed,
                                              int32_t count, int32_t weight, float* xyz,
                                              float* phase, float* density) {
    return Guard([&] {
        if (count < 0) veltara::Raise(5, "the number of dots must be 0 or more");
        const veltara::Superposition s = veltara::ParseState(text);
        const size_t n = static_cast<size_t>(count);
        std::vector<double> points(3 * n);
        std::vector<double> phases(n);
        veltara::Sample(s, t, static_cast<uint64_t>(seed), n,
                        weight ? veltara::SampleWeight::RadialView : veltara::SampleWeight::Density,
                        points.data(), phases.data());
        std::vector<double> densities(n);
        veltara::DensityBatch(s, t, points.data(), n, densities.data());
        for (size_t i = 0; i < 3 * n; ++i) xyz[i] = static_cast<float>(points[i]);
        for (size_t i = 0; i < n; ++i) {
            phase[i] = static_cast<float>(phases[i]);
            density[i] = static_cast<float>(densities[i]);
        }
    });
}

/// The boundary surface holding `fraction` of the probability at time t; counts (out):
/// vertices and triangles; level (out): the |Psi|^2 it follows. The mesh stays until the next
/// call: vtw_surface_xyz/triangles/phase point at it. The same question again (the same text,
/// t, fraction and resolution) is answered with the mesh already made.
EMSCRIPTEN_KEEPALIVE int32_t vtw_state_surface(const char* text, double t, double fraction,
                                               int32_t resolution, int32_t* counts, double* level) {
    return Guard([&] {
        SurfaceKey key{text, t, fraction, resolution};
        if (gMeshKey != key) {
            gMeshKey.reset();
            gMesh = veltara::BoundarySurface(veltara::ParseState(text), t, fraction, resolution);
            gMeshKey = std::move(key);
        }
        *level = gMesh.level;
        counts[0] = static_cast<int32_t>(gMesh.xyz.size() / 3);
        counts[1] = static_cast<int32_t>(gMesh.triangles.size() / 3);
    });
}
EMSCRIPTEN_KEEPALIVE const float* vtw_surface_xyz() { return gMesh.xyz.data(); }
EMSCRIPTEN_KEEPALIVE const uint32_t* vtw_surface_triangles() { return gMesh.triangles.data(); }
EMSCRIPTEN_KEEPALIVE const float* vtw_surface_phase() { return gMesh.phase.data(); }

/// P(r) of the state `text` at time t, at each of `count` radii (Bohr radii) into out.
EMSCRIPTEN_KEEPALIVE int32_t vtw_state_radial(const char* text, double t, const double* radii,
                                              int32_t count, double* out) {
    return Guard([&] {
        const veltara::Superposition s = veltara::ParseState(text);
        for (int32_t i = 0; i < count; ++i) {
            out[i] = veltara::RadialDistribution(s, radii[i], t);
        }
    });
}

}  // extern "C"
