// The text form of a state: one parser for what a user types, used by every host.
//
//   7,3,-2            the real state n 7, l 3, m -2 (hydrogen)
//   2,1,1c            the complex state (Y_l^m with a definite m)
//   Z=2;1,0,0         a leading nuclear charge applies to every term
//   3dz2, 2px, av3d   catalogue names, any case ("av" + n + s|p|d|f: a shell average)
//   sp3:0, sp3d2:4@4  hybrid kind, index (default 0) and shell (default the kind's own)
//   0.6*2,1,0-0.8i*1,0,0, (0.6+0.8i)*2,1,1c   sums with real, imaginary or complex factors
// Spaces are ignored. The grammar with examples is in docs/states.md.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "electron/state.h"

namespace veltara {

/// Longest text ParseState reads, in bytes.
inline constexpr size_t kMaxStateTextLength = 1000;

/// The superposition `text` describes. Raises 5 with "at character N: <sentence>" (N counted
/// from 1 in the text as given) for malformed text, a text longer than kMaxStateTextLength or
/// more than kMaxSuperpositionTerms terms; raises 5 with CheckState's or MakeSuperposition's
/// sentence for fields out of range.
Superposition ParseState(std::string_view text);

/// A text that ParseState reads back to the same states with the same coefficients: each
/// printed with the fewest digits (15 to 17) that read back as the same double; the
/// renormalisation on reading may move a coefficient by a few units in its last place.
std::string FormatState(const Superposition& s);

}  // namespace veltara
