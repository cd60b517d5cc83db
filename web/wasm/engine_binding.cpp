// What the page's engine needs beyond the C interface (whose functions the WebAssembly module
// exports as they are): a clock that starts where the page says, the render request's
// defaults and the phase-coloured dot picture.
#include <emscripten/emscripten.h>

#include <cmath>
#include <cstring>
#include <new>
#include <optional>
#include <vector>

#include "electron/state_text.h"
#include "electron/state_wave.h"
#include "electron/wavefunction.h"
#include "host/veltara.h"
#include "records/PublicTypes.h"
#include "support/error.h"
#include "web/wasm/phase_dots.h"

namespace {

// The clock reads gClockStart at the moment vtw_set_clock was called and, when it runs, goes on
// in milliseconds from there: a page gives every add the seed it chooses (to restore a shared
// picture) while the engine's timings stay real; a clock that stands still repeats a run.
double gClockStart = 40000;
double gClockSetAt = 0;
bool gClockRuns = true;

int32_t PageClock(void*) {
    const double elapsed = gClockRuns ? std::floor(emscripten_get_now() - gClockSetAt) : 0.0;
    return static_cast<int32_t>(
        static_cast<uint32_t>(std::fmod(gClockStart + elapsed, 4294967296.0)));
}

// Turns the engine's numbered errors into their numbers, as the C interface does.
template <class F>
int32_t Guard(F&& f) {
    try {
        f();
        return 0;
    } catch (const veltara::Error& e) {
        return e.number();
    } catch (const std::bad_alloc&) {
        return 7;
    } catch (...) {
        return 5;
    }
}

}  // namespace

extern "C" {

/// Sets the engine's clock to read `start` (0..4294967295) ms now and, when `runs` is not 0,
/// to run on from there.
EMSCRIPTEN_KEEPALIVE void vtw_set_clock(double start, int32_t runs) {
    gClockStart = start;
    gClockRuns = runs != 0;
    gClockSetAt = emscripten_get_now();
    vt_set_clock(&PageClock, nullptr);
}

/// The request every picture starts from (out).
EMSCRIPTEN_KEEPALIVE void vtw_default_request(vt_RenderRequest* out) {
    const veltara::RenderRequest r = veltara::DefaultRenderRequest();
    static_assert(sizeof(r) == sizeof(*out));
    std::memcpy(out, &r, sizeof(r));
}

/// The dot picture of orbital `index` for `req` (orthographic or perspective, Main or Nano) with
/// each dot coloured by the sign of the wavefunction at its place: colours 0xRRGGBB for
/// positive and negative. A slot added as a state names it in `state` (its text form; "" or
/// NULL for a catalogue orbital): the sign is that of Psi at t = 0, so the page colours only a
/// real-valued state this way. bgra (out): the picture, rows top first, `size` bytes at least
/// (375 x 375 x 4 or 127 x 127 x 4); edge (out): its width and height.
/// Errors: those of vt_get_setup and vt_get_dots (9, 91), 5 (an averaged shell, which has no
/// sign; a short buffer), the projection's (6, 11).
EMSCRIPTEN_KEEPALIVE int32_t vtw_render_phase(vt_engine* e, int16_t index,
                                              const vt_RenderRequest* req, uint32_t positive,
                                              uint32_t negative, const char* state, uint8_t* bgra,
                                              size_t size, int32_t* edge) {
    vt_OrbitalSetup setup{};
    if (const int32_t rc = vt_get_setup(e, index, &setup)) return rc;
    int32_t count = 0;
    if (const int32_t rc = vt_get_dots(e, index, nullptr, 0, &count)) return rc;
    std::vector<veltara::PointArray> dots(static_cast<size_t>(count));
    static_assert(sizeof(veltara::PointArray) == sizeof(vt_PointArray));
    if (const int32_t rc =
            vt_get_dots(e, index, reinterpret_cast<vt_PointArray*>(dots.data()), count, &count)) {
        return rc;
    }
    return Guard([&] {
        // One colour for both signs needs no wavefunction (and draws the engine's grey picture
        // when it is white).
        std::vector<bool> signs(dots.size(), true);
        if (positive != negative) {
            const double step = setup.AtomRadius / 127.0;
            const bool named = state != nullptr && *state != '\0';
            const std::optional<veltara::Superposition> s =
                named ? std::optional(veltara::ParseState(state)) : std::nullopt;
            for (size_t i = 0; i < dots.size(); ++i) {
                const double x = dots[i].X * step, y = dots[i].Y * step, z = dots[i].Z * step;
                signs[i] = s ? veltara::Psi(*s, x, y, z, 0).real() >= 0.0
                             : veltara::Wavefunction(setup.OrbitalIndex, x, y, z) >= 0.0;
            }
        }
        veltara::RenderRequest r;
        std::memcpy(&r, req, sizeof(r));
        const auto colour = [](uint32_t c) {
            return vtweb::PhaseColour{static_cast<uint8_t>(c >> 16), static_cast<uint8_t>(c >> 8),
                                      static_cast<uint8_t>(c)};
        };
        const std::vector<veltara::RGBA> picture =
            vtweb::PhaseDots(dots, signs, r, colour(positive), colour(negative));
        if (picture.empty() || size < picture.size() * 4) veltara::Raise(veltara::kErrInvalidCall);
        std::memcpy(bgra, picture.data(), picture.size() * 4);
        *edge = static_cast<int32_t>(std::lround(std::sqrt(static_cast<double>(picture.size()))));
    });
}

}  // extern "C"
