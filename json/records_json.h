// The engine's public records as JSON, written alike by `veltara stats --json` and the viewer's
// API, and the name both give an orbital.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "veltara.h"

namespace vtjson {

/// The spelling the command accepts for an entry and shows to people: the catalogue name for a
/// single orbital ("3Dz²"), "av" + the name for a shell average ("av2S"), since the averaged S
/// shells share their names with the single S orbitals.
std::string CommandName(const vt_OrbInfo& info);

/// An OrbInfo record with its catalogue index and command name.
nlohmann::json OrbInfoJson(const vt_OrbInfo& info, int index);
/// An OrbitalSetup record; the view by name ("PDF", "DRPDF").
nlohmann::json SetupJson(const vt_OrbitalSetup& setup);
/// An OrbitalStats record, ProbFreqs as an array of 256 counts.
nlohmann::json StatsJson(const vt_OrbitalStats& stats);

/// The JSON text of a value (indented when indent >= 0). Bytes of its strings that are not
/// UTF-8 come out as U+FFFD, so text from outside (a request's path) can never make it throw.
std::string Dump(const nlohmann::json& value, int indent = -1);

}  // namespace vtjson
