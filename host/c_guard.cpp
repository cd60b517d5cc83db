// Translation of exceptions into the error numbers the C interface returns.
#include "host/c_guard.h"

#include <exception>
#include <new>
#include <string>

#include "support/error.h"

namespace veltara::host {

namespace {

/// The sentence about the calling thread's last failure.
thread_local std::string tLastDetail;

void Remember(const char* text) noexcept {
    try {
        tLastDetail = text;
    } catch (...) {
        tLastDetail.clear();  // no memory for the sentence: the number still tells
    }
}

}  // namespace

int32_t NoteError(int32_t number) noexcept {
    Remember(ErrorText(number));
    return number;
}

int32_t TranslateCurrentException() noexcept {
    try {
        throw;
    } catch (const Error& e) {
        Remember(e.what());
        return e.number();
    } catch (const std::bad_alloc&) {
        return NoteError(kErrOutOfMemory);
    } catch (...) {
        // A failure without a number (a standard-library error such as length_error) is
        // reported as an invalid call rather than let through a C caller.
        return NoteError(kErrInvalidCall);
    }
}

}  // namespace veltara::host

extern "C" const char* vt_last_error_detail(void) { return veltara::host::tLastDetail.c_str(); }
