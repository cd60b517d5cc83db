// Numbered run-time errors: the one way the engine reports a failure to its caller.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace veltara {

/// The engine's error numbers. Each number keeps its meaning for ever; hosts test for them.
enum ErrorNumber : int32_t {
    kErrInvalidCall = 5,  ///< "Invalid procedure call or argument" (also NaN, sqrt of a negative)
    kErrOverflow = 6,     ///< "Overflow": a value outside its stated width, an infinite result
    kErrOutOfMemory = 7,  ///< "Out of memory"
    kErrSubscript = 9,    ///< "Subscript out of range"
    kErrDivisionByZero = 11,  ///< "Division by zero"
    kErrTypeMismatch = 13,    ///< "Type mismatch"
    kErrObjectNotSet = 91,    ///< "Object variable or With block variable not set"
};

/// The message of an error number; "Unknown error" for a number the engine never raises.
const char* ErrorText(int32_t number) noexcept;

/// An engine failure carrying its number. what() is the number's message, or for a refused
/// input the plain sentence naming the field and its allowed range (`detail`, which then
/// stands in for the message).
class Error : public std::runtime_error {
  public:
    explicit Error(int32_t number);
    Error(int32_t number, const std::string& detail);
    int32_t number() const noexcept { return mNumber; }
    /// The sentence about the refused input; empty for an error that has none.
    const std::string& detail() const noexcept { return mDetail; }

  private:
    int32_t mNumber;
    std::string mDetail;
};

/// Raises error `number`.
[[noreturn]] void Raise(int32_t number);

/// Raises error `number` with a sentence saying what was refused and what is allowed, for
/// example "n must be a whole number from 1 to 30 (got 31)".
[[noreturn]] void Raise(int32_t number, const std::string& detail);

}  // namespace veltara
