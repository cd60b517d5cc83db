// cOrbitalCol: slots of renderers and the bookkeeping of the next free index.
#include "engine/cOrbitalCol.h"

#include <locale.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "electron/modOrbitals.h"
#include "electron/radius_holding.h"
#include "support/convert.h"

namespace veltara {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// A decimal number: [+-] digits [. [digits]] | [+-] . digits, then [eE [+-] digits].
bool IsDecimalNumber(std::string_view s) {
    size_t i = 0;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
    size_t digits = 0;
    while (i < s.size() && IsDigit(s[i])) ++i, ++digits;
    if (i < s.size() && s[i] == '.') {
        ++i;
        while (i < s.size() && IsDigit(s[i])) ++i, ++digits;
    }
    if (digits == 0) return false;
    if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
        ++i;
        if (i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
        size_t expDigits = 0;
        while (i < s.size() && IsDigit(s[i])) ++i, ++expDigits;
        if (expDigits == 0) return false;
    }
    return i == s.size();
}

double ParseNumber(const std::string& text) {
    std::string_view s(text);
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    while (!s.empty() && isBlank(s.front())) s.remove_prefix(1);
    while (!s.empty() && isBlank(s.back())) s.remove_suffix(1);
    if (!IsDecimalNumber(s)) Raise(kErrTypeMismatch);
    // strtod_l in the "C" locale reads the same decimal numbers on every C library (the
    // WebAssembly build's library has no floating-point from_chars), whatever locale the host
    // process set.
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
    const std::string digits(s);
    char* end = nullptr;
    errno = 0;
    const double value = strtod_l(digits.c_str(), &end, cLocale);
    if (end != digits.c_str() + digits.size()) Raise(kErrTypeMismatch);
    // A number too large for a double, or too small to be told from zero, is out of every
    // integer range (a subnormal result is a number like any other).
    if (std::isinf(value) || (errno == ERANGE && value == 0.0)) Raise(kErrOverflow);
    return value;
}

}  // namespace

namespace {

/// Dots of a state when none are asked for.
constexpr int16_t kDefaultStateDots = 5000;

/// The catalogue row a superposition is, if any: one state (any coefficient: its density is
/// the state's) that is real with Z = 1, or a shell average, and that the catalogue lists.
std::optional<int16_t> CatalogueRowOf(const Superposition& s) {
    if (s.Terms().size() != 1) return std::nullopt;
    const State& state = s.Terms()[0].state;
    if (state.Z != 1 || state.basis != Basis::Real) return std::nullopt;
    for (int16_t i = 0; i < modOrbitals::kOrbitalCount; ++i) {
        const OrbInfo info = modOrbitals::CreateElectron(i)->GetInfo();
        const bool average = info.OrbType == OrbitalType::AverageOrbs;
        if (state.shellAverage == average && state.n == info.n && state.l == info.l &&
            (average || state.m == info.M)) {
            return i;
        }
    }
    return std::nullopt;
}

}  // namespace

int32_t ConvertOrbitalIndex(const OrbitalIndexValue& index) {
    struct Visitor {
        int32_t operator()(int16_t v) const { return v; }
        int32_t operator()(int32_t v) const { return v; }
        int32_t operator()(double v) const { return ToInt32(v); }
        int32_t operator()(const std::string& v) const { return ToInt32(ParseNumber(v)); }
    };
    return std::visit(Visitor{}, index);
}

cOrbitalCol::cOrbitalCol() : mOrbitals(1) {}

cOrbitalCol::~cOrbitalCol() = default;

int16_t cOrbitalCol::UBound() const { return Narrow16(static_cast<int64_t>(mOrbitals.size()) - 1); }

void cOrbitalCol::CheckBounds(int32_t index) const {
    if (index < 0 || static_cast<size_t>(index) >= mOrbitals.size()) Raise(kErrSubscript);
}

cOrbital& cOrbitalCol::Occupant(int32_t index) {
    CheckBounds(index);
    // A call on an empty slot reaches no object.
    cOrbital* r = mOrbitals[static_cast<size_t>(index)].get();
    if (r == nullptr) Raise(kErrObjectNotSet);
    return *r;
}

const cOrbital& cOrbitalCol::Orbital(int16_t index) const {
    return const_cast<cOrbitalCol*>(this)->Occupant(index);
}

RenderDCinfo cOrbitalCol::GetRender(const int16_t& index, const RenderRequest& RenderInfo) {
    return Occupant(index).GetRender(RenderInfo);
}

int32_t cOrbitalCol::ReFillDotMatrix(const OrbitalIndexValue& index, const uint8_t& Threshold,
                                     const int32_t& Target) {
    const int32_t i = ConvertOrbitalIndex(index);
    // The public operation names the threshold first, the renderer the target first.
    return Occupant(i).ReFillDotMatrix(Target, Threshold);
}

OrbitalStats cOrbitalCol::GetStats(const int16_t& index) { return Occupant(index).GetStats(); }

cOrbital& cOrbitalCol::NewRenderer(ViewMode view) {
    // Grow by one slot when every slot is taken.
    if (mNextOrbIndex > UBound()) mOrbitals.resize(static_cast<size_t>(mNextOrbIndex) + 1);

    // The renderer of the view; any other view leaves the slot empty.
    std::unique_ptr<cOrbital>& slot = mOrbitals[static_cast<size_t>(mNextOrbIndex)];
    slot = CreateOrbitalRenderer(view);
    if (!slot) Raise(kErrObjectNotSet);
    return *slot;
}

int16_t cOrbitalCol::Filled() {
    const int16_t result = mNextOrbIndex;
    FindNextOrbIndex();
    return result;
}

int16_t cOrbitalCol::Add(const OrbitalSetup& Info) {
    // The whole calculation. An error leaves the renderer in its slot and the next index
    // as it was: the slot stays taken until the host deletes it.
    NewRenderer(Info.OrbitalViewMode).Setup(Info);
    return Filled();
}

int16_t cOrbitalCol::AddState(const Superposition& s, double t, const OrbitalSetup& Info) {
    OrbitalSetup setup = Info;
    if (setup.DotTarget == 0) setup.DotTarget = kDefaultStateDots;

    // A catalogue row keeps the row's defaults and its draw.
    if (const std::optional<int16_t> row = CatalogueRowOf(s)) {
        const OrbInfo info = modOrbitals::CreateElectron(*row)->GetInfo();
        const bool pdf = setup.OrbitalViewMode == ViewMode::PDF;
        setup.OrbitalIndex = *row;
        if (setup.AtomRadius == 0) {
            setup.AtomRadius = pdf ? info.DefaultPDFAtomRadius : info.DefaultDRPDFAtomRadius;
        }
        if (setup.DotThreshold == 0) {
            setup.DotThreshold =
                NarrowByte(pdf ? info.DefaultPDFDotThreshold : info.DefaultDRPDFDotThreshold);
        }
        return Add(setup);
    }

    if (!std::isfinite(t)) Raise(kErrInvalidCall, "the time t must be a finite number");
    if (setup.AtomRadius == 0) setup.AtomRadius = DefaultAtomRadius(s);
    setup.OrbitalIndex = 0;
    NewRenderer(setup.OrbitalViewMode).SetupState(s, t, setup);
    return Filled();
}

void cOrbitalCol::Delete(const int16_t& OrbIndex) {
    const int16_t U = UBound();
    CheckBounds(OrbIndex);
    mOrbitals[static_cast<size_t>(OrbIndex)].reset();
    // Only the last slot goes; empty slots that then stand at the end stay for later Adds.
    if (OrbIndex == U && U != 0) mOrbitals.pop_back();
    FindNextOrbIndex();
}

void cOrbitalCol::FindNextOrbIndex() {
    const int16_t U = UBound();
    for (int32_t i = 0; i <= U; ++i) {
        if (!mOrbitals[static_cast<size_t>(i)]) {
            mNextOrbIndex = static_cast<int16_t>(i);
            return;
        }
    }
    // Slot 32767 full and nothing free: 6, and mNextOrbIndex keeps its value.
    mNextOrbIndex = Narrow16(static_cast<int32_t>(U) + 1);
}

}  // namespace veltara
