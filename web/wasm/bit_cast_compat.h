// std::bit_cast for C++ libraries that lack it (emscripten 3.1.6's), forced into every source
// of the WebAssembly build; a library that has it keeps its own.
#pragma once

#include <bit>
#include <cstring>
#include <type_traits>

#if !defined(__cpp_lib_bit_cast)
namespace std {
template <class To, class From>
requires(sizeof(To) == sizeof(From) && is_trivially_copyable_v<To> &&
         is_trivially_copyable_v<From>) To bit_cast(const From& from)
noexcept {
    To to;
    std::memcpy(&to, &from, sizeof(To));
    return to;
}
}  // namespace std
#endif
