// Adding an orbital for a command, with the engine's refusals to draw a dot cloud explained.
#pragma once

#include "session.h"

namespace vtcli {

/// Adds catalogue entry `index` with the options' setup. slot (out): the orbital's handle. When
/// the engine refuses, says why in one plain sentence with the engine's number after it:
/// threshold 255 leaves no level above it (9), too few dots wanted at a high threshold draw
/// none (9), a cloud whose every dot lies at the nucleus has no size (11), a density that is
/// zero all over the cube cannot be scaled (11). kExitOk, kExitUsage or kExitEngine.
int AddOrbitalExplained(Session& session, const OrbitalOptions& options, int index, int16_t& slot,
                        vt_OrbitalSetup& setup);

}  // namespace vtcli
