// The engine's refusals to draw a dot cloud, in plain words.
#include "refusals.h"

#include <cstdio>

#include "orbital_names.h"

namespace vtcli {

namespace {

/// The slot the next add fills: the lowest empty one, or the one past the last.
int16_t NextSlot(vt_engine* engine) {
    vt_OrbitalStats stats{};
    int16_t slot = 0;
    while (slot < INT16_MAX && vt_get_stats(engine, slot, &stats) == VT_OK) ++slot;
    return slot;
}

/// Whether the failed orbital in `slot` sampled its grid: some grid point has a level above 0.
bool GridSampled(vt_engine* engine, int16_t slot) {
    vt_OrbitalStats stats{};
    if (vt_get_stats(engine, slot, &stats) != VT_OK) return false;
    for (int level = 1; level < 256; ++level) {
        if (stats.ProbFreqs[level] > 0) return true;
    }
    return false;
}

int Refusal(const std::string& sentence, int32_t number) {
    std::fprintf(stderr, "veltara: %s (engine error %d)\n", sentence.c_str(),
                 static_cast<int>(number));
    return kExitEngine;
}

}  // namespace

int AddOrbitalExplained(Session& session, const OrbitalOptions& options, int index, int16_t& slot,
                        vt_OrbitalSetup& setup) {
    const vt_OrbInfo& info = session.catalogue.entries[static_cast<size_t>(index)];
    if (const int rc = MakeSetup(options, info, index, setup)) return rc;
    vt_engine* engine = session.engine.get();
    const int16_t expected = NextSlot(engine);
    const int32_t rc = vt_add(engine, &setup, &slot);
    if (rc == VT_OK) {
        if (setup.DotTarget == 0) {
            std::fprintf(stderr,
                         "veltara: note: --dots 0 asks for no cloud; the engine keeps a single dot "
                         "at the nucleus with level 0\n");
        }
        return kExitOk;
    }

    const std::string name = CommandName(info);
    const std::string level = std::to_string(setup.DotThreshold);
    if (rc == VT_ERR_SUBSCRIPT && setup.DotThreshold == 255) {
        return Refusal("no grid point lies above level 255, so no dot can be drawn", rc);
    }
    if (rc == VT_ERR_SUBSCRIPT) {
        return Refusal("no dot of " + name + " above level " + level + " was drawn with " +
                           std::to_string(setup.DotTarget) +
                           " dots wanted; lower --threshold or ask for more --dots",
                       rc);
    }
    if (rc == VT_ERR_DIVISION_BY_ZERO && GridSampled(engine, expected)) {
        return Refusal("every dot of " + name + " above level " + level +
                           " lies at the nucleus, the only grid point above it at radius " +
                           std::to_string(setup.AtomRadius) +
                           " Bohr, so the cloud has no size to shade its dots by; lower "
                           "--threshold or --radius",
                       rc);
    }
    if (rc == VT_ERR_DIVISION_BY_ZERO) {
        return Refusal("the density of " + name + " is zero to double precision everywhere " +
                           "within radius " + std::to_string(setup.AtomRadius) +
                           " Bohr, so it cannot be scaled to levels; use a smaller --radius",
                       rc);
    }
    return EngineError(rc, "adding " + name + " (" + options.view + ", radius " +
                               std::to_string(setup.AtomRadius) + ")");
}

}  // namespace vtcli
