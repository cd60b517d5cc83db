// Fuzz target of the text form of a state: any bytes either parse or raise a numbered error,
// and whatever parses is formatted into a text that reads back as the same superposition.
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "electron/state_text.h"
#include "support/error.h"

namespace {

// Renormalising an already normalised sum may move a coefficient by a few units in the last
// place, so coefficients compare to within 1e-15 of the unit norm; states compare exactly.
bool Same(const veltara::Superposition& a, const veltara::Superposition& b) {
    if (a.Terms().size() != b.Terms().size()) return false;
    for (size_t k = 0; k < a.Terms().size(); ++k) {
        if (!(a.Terms()[k].state == b.Terms()[k].state)) return false;
        if (!(std::abs(a.Terms()[k].c - b.Terms()[k].c) <= 1e-15)) return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    veltara::Superposition first;
    try {
        first = veltara::ParseState(text);
    } catch (const veltara::Error& e) {
        if (e.number() != veltara::kErrInvalidCall) std::abort();
        return 0;
    }
    const std::string formatted = veltara::FormatState(first);
    // A formatted text must parse: an error here escapes and the fuzzer reports it.
    if (!Same(first, veltara::ParseState(formatted))) std::abort();
    return 0;
}
