// Translation of exceptions into the error numbers the C interface returns.
#include "host/c_guard.h"

#include <exception>
#include <new>

#include "support/error.h"

namespace veltara::host {

int32_t TranslateCurrentException() noexcept {
    try {
        throw;
    } catch (const Error& e) {
        return e.number();
    } catch (const std::bad_alloc&) {
        return kErrOutOfMemory;
    } catch (...) {
        // A failure without a number (a standard-library error such as length_error) is
        // reported as an invalid call rather than let through a C caller.
        return kErrInvalidCall;
    }
}

}  // namespace veltara::host
