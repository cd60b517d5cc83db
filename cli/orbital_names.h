// Orbital names on the command line: catalogue index or name, and close matches for typos.
#pragma once

#include <string>
#include <vector>

#include "cli_common.h"
#include "records_json.h"

namespace vtcli {

using vtjson::CommandName;

/// The entry's name as a file name: ASCII letters, digits and '-' only ("3Dz2", "av2S",
/// "4Fzx2-y2").
std::string FileName(const vt_OrbInfo& info);

/// Lower case, superscripts ² ³ as 2 3, '_' as '-', blanks dropped: "3DZ²" and "3dz2" agree.
std::string NormaliseName(const std::string& text);

/// Levenshtein distance (insertions, deletions, substitutions of one byte each).
size_t EditDistance(const std::string& a, const std::string& b);

/// The result of resolving an orbital argument.
struct Resolution {
    int index = -1;       ///< the catalogue index when found
    std::string problem;  ///< why not, for the message, when not found
};

/// Resolves an index ("9") or a name, case-insensitive, with ² ³ or 2 3: a single orbital's
/// name ("3Dz2", "4Fz(x2-y2)"), or "av"/"avg" + a shell average's name ("av2S", "avg4F"); a
/// name that only a shell average has ("3D") finds the average. An unknown name's problem lists
/// the close matches.
Resolution ResolveOrbital(const std::string& text, const Catalogue& catalogue);

}  // namespace vtcli
