// The C interface's one exception boundary: every vt_ function runs its body through Guard.
#pragma once

#include <cstdint>
#include <type_traits>

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

/// Numbers for the interface's own argument checks.
inline constexpr int32_t kNullArgument = 5;  ///< a NULL out pointer or needed input
inline constexpr int32_t kNullObject = 91;   ///< a NULL engine or surface

}  // namespace veltara::host
