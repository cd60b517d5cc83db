// The C interface's one exception boundary: every vt_ function runs its body through Guard.
#pragma once

#include <cstdint>
#include <type_traits>

#include "electron/coordinates.h"
#include "host/veltara.h"

namespace veltara::host {

/// The error number of the exception being handled: an engine Error gives its own number,
/// std::bad_alloc gives 7 (out of memory) and anything else 5 (invalid procedure call), the
/// catch-all for failures that carry no number. Call only inside a catch block.
int32_t TranslateCurrentException() noexcept;

/// Records the sentence vt_last_error_detail gives for a failure of number `number` that has
/// none of its own (its message), and returns the number.
int32_t NoteError(int32_t number) noexcept;

/// Runs `body` and returns 0, or the number of the exception it raised. `body` may also return
/// an int32_t error number of its own (argument checks), which is passed through.
template <typename Body>
int32_t Guard(Body&& body) noexcept {
    try {
        if constexpr (std::is_same_v<std::invoke_result_t<Body>, int32_t>) {
            const int32_t number = body();
            return number == 0 ? 0 : NoteError(number);
        } else {
            body();
            return 0;
        }
    } catch (...) {
        return TranslateCurrentException();
    }
}

/// Points packed as x, y, z triples from `xyz` (which may be NULL, with no point, for no count:
/// no offset is then applied to it).
inline vt_points PackedPoints(const double* xyz) {
    if (xyz == nullptr) return vt_points{nullptr, nullptr, nullptr, 3, 3, 3};
    return vt_points{xyz, xyz + 1, xyz + 2, 3, 3, 3};
}

/// True when the arrays of `points` are there for `count` points (any may be NULL for none).
inline bool HasPoints(const vt_points& points, size_t count) {
    return count == 0 || (points.x != nullptr && points.y != nullptr && points.z != nullptr);
}

/// The engine's view of a host's points.
inline Coordinates CoordinatesOf(const vt_points& p) {
    return {p.x, p.y, p.z, p.x_stride, p.y_stride, p.z_stride};
}

/// Below this many points a thread costs more than it saves.
inline constexpr size_t kPointsPerThread = 16384;

/// Numbers for the interface's own argument checks.
inline constexpr int32_t kNullArgument = 5;  ///< a NULL out pointer or needed input
inline constexpr int32_t kNullObject = 91;   ///< a NULL engine or surface

}  // namespace veltara::host
