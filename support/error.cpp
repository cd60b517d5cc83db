// The table of error numbers and messages shared by the engine and the C interface.
#include "support/error.h"

namespace veltara {

const char* ErrorText(int32_t number) noexcept {
    switch (number) {
        case 0:
            return "Success";
        case kErrInvalidCall:
            return "Invalid procedure call or argument";
        case kErrOverflow:
            return "Overflow";
        case kErrOutOfMemory:
            return "Out of memory";
        case kErrSubscript:
            return "Subscript out of range";
        case kErrDivisionByZero:
            return "Division by zero";
        case kErrTypeMismatch:
            return "Type mismatch";
        case kErrObjectNotSet:
            return "Object variable or With block variable not set";
        default:
            return "Unknown error";
    }
}

Error::Error(int32_t number) : std::runtime_error(ErrorText(number)), mNumber(number) {}

Error::Error(int32_t number, const std::string& detail)
    : std::runtime_error(detail), mNumber(number), mDetail(detail) {}

void Raise(int32_t number) { throw Error(number); }

void Raise(int32_t number, const std::string& detail) { throw Error(number, detail); }

}  // namespace veltara
