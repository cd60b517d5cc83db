// The text form of a state: a recursive-descent reader over the text with its spaces removed,
// each remaining byte remembering its character position for the error messages.
#include "electron/state_text.h"

#include <array>
#include <cmath>
#include <complex>
#include <cstdint>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include "electron/catalogue.h"
#include "electron/hybrids.h"
#include "support/error.h"

namespace veltara {

namespace {

using Complex = std::complex<double>;

constexpr char kLetters[] = "spdf";  // the subshell letters of l = 0..3

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

/// A double from a token that matches digits [. digits] [e [sign] digits], read in the
/// classic locale whatever the program's locale (a decimal comma would break the form).
bool ReadDouble(const std::string& token, double& value) {
    std::istringstream in(token);
    in.imbue(std::locale::classic());
    in >> value;
    return !in.fail() && in.peek() == std::char_traits<char>::eof() && std::isfinite(value);
}

/// The shortest of 15, 16 or 17 significant digits that reads back as the same double.
std::string WriteDouble(double v) {
    std::string text;
    for (int digits = 15; digits <= 17; ++digits) {
        std::ostringstream out;
        out.imbue(std::locale::classic());
        out.precision(digits);
        out << v;
        text = out.str();
        double back = 0;
        if (ReadDouble(text, back) && back == v) break;
    }
    return text;
}

class Reader {
  public:
    explicit Reader(std::string_view text) {
        int32_t position = 0;
        for (const char c : text) {
            // A UTF-8 continuation byte belongs to the character before it.
            if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) ++position;
            if (IsSpace(c)) continue;
            mChars.push_back(c);
            mLower.push_back(Lower(c));
            mPositions.push_back(position);
        }
        mEnd = position + 1;
    }

    std::vector<Term> Text() {
        if (mChars.empty()) Fail("the text is empty; write a state such as 2,1,0 or 3dz2");
        int32_t Z = 1;
        if (Peek() == 'z' && PeekAt(1) == '=') {
            mAt += 2;
            Z = Whole("Z");
            Expect(';', "a ';' after the nuclear charge");
        }
        std::vector<Term> terms;
        size_t count = 0;
        while (true) {
            double sign = 1;
            if (Peek() == '+' || Peek() == '-') {
                sign = Peek() == '-' ? -1 : 1;
                ++mAt;
            } else if (count > 0) {
                Fail("expected '+' or '-' between terms, or the end of the text");
            }
            if (++count > kMaxSuperpositionTerms) {
                Fail("a superposition holds at most " + std::to_string(kMaxSuperpositionTerms) +
                     " terms");
            }
            Term1(sign, terms);
            if (AtEnd()) break;
        }
        for (Term& t : terms) t.state.Z = Z;
        return terms;
    }

  private:
    std::string mChars, mLower;  // the text without spaces, and in lower case
    std::vector<int32_t> mPositions;
    int32_t mEnd = 1;  // the position just after the last character
    size_t mAt = 0;

    bool AtEnd() const { return mAt >= mChars.size(); }
    char Peek() const { return PeekAt(0); }
    char PeekAt(size_t k) const { return mAt + k < mLower.size() ? mLower[mAt + k] : '\0'; }

    [[noreturn]] void FailAt(size_t at, const std::string& sentence) const {
        const int32_t position = at < mPositions.size() ? mPositions[at] : mEnd;
        Raise(kErrInvalidCall, "at character " + std::to_string(position) + ": " + sentence);
    }
    [[noreturn]] void Fail(const std::string& sentence) const { FailAt(mAt, sentence); }

    void Expect(char c, const std::string& what) {
        if (Peek() != c) Fail("expected " + what);
        ++mAt;
    }

    bool Match(std::string_view word) {
        if (std::string_view(mLower).substr(mAt, word.size()) != word) return false;
        mAt += word.size();
        return true;
    }

    /// A number token: digits [. digits] [e [sign] digits] (or starting at the point).
    std::string Number() {
        const size_t start = mAt;
        while (IsDigit(Peek())) ++mAt;
        if (Peek() == '.') {
            ++mAt;
            while (IsDigit(Peek())) ++mAt;
        }
        if (mAt == start || (mAt == start + 1 && mChars[start] == '.')) {
            FailAt(start, "expected a number");
        }
        const bool signedExponent = PeekAt(1) == '+' || PeekAt(1) == '-';
        if (Peek() == 'e' && IsDigit(PeekAt(signedExponent ? 2 : 1))) {
            mAt += signedExponent ? 2 : 1;
            while (IsDigit(Peek())) ++mAt;
        }
        return mChars.substr(start, mAt - start);
    }

    double Real(const std::string& token, size_t start) const {
        double v = 0;
        if (!ReadDouble(token, v)) FailAt(start, "the number is outside the range of a double");
        return v;
    }

    /// A whole number for the field `field`: digits only.
    int32_t Whole(const std::string& field) {
        const size_t start = mAt;
        if (!IsDigit(Peek())) Fail(field + " must be a whole number");
        return WholeFrom(Number(), start, field);
    }

    int32_t WholeFrom(const std::string& token, size_t start, const std::string& field) const {
        if (token.find_first_not_of("0123456789") != std::string::npos) {
            FailAt(start, field + " must be a whole number");
        }
        const size_t digits = token.find_first_not_of('0');
        if (digits != std::string::npos && token.size() - digits > 9) {
            FailAt(start, field + " is far too large");
        }
        return std::stoi(token);  // at most nine digits: within int32_t
    }

    /// One term, appended to `terms` with its sign: [factor "*"] state.
    void Term1(double sign, std::vector<Term>& terms) {
        Complex factor = sign;
        if (Peek() == '(') {
            factor *= Parenthesised();
            Expect('*', "'*' after the coefficient");
        } else if (Peek() == 'i' && PeekAt(1) == '*') {
            factor *= Complex(0, 1);
            mAt += 2;
        } else if (IsDigit(Peek()) || Peek() == '.') {
            // A number before '*' or 'i*' is a coefficient; a catalogue name or n,l,m is a state.
            const size_t start = mAt;
            if (CatalogueName(factor, terms)) return;
            const std::string token = Number();
            if (Peek() == '*' || (Peek() == 'i' && PeekAt(1) == '*')) {
                factor *= Peek() == 'i' ? Complex(0, Real(token, start)) : Real(token, start);
                mAt += Peek() == 'i' ? 2 : 1;
            } else if (Peek() == 'i') {
                FailAt(mAt + 1, "expected '*' after the coefficient");
            } else {
                Quantum(WholeFrom(token, start, "n"), factor, terms);
                return;
            }
        }
        State1(factor, terms);
    }

    /// "(" [sign] part {sign part} ")", each part a number with an optional "i", or "i".
    Complex Parenthesised() {
        ++mAt;
        Complex sum = 0;
        bool first = true;
        while (Peek() != ')') {
            double sign = 1;
            if (Peek() == '+' || Peek() == '-') {
                sign = Peek() == '-' ? -1 : 1;
                ++mAt;
            } else if (!first) {
                Fail("expected '+', '-' or ')' in the coefficient");
            }
            first = false;
            if (Peek() == 'i') {
                ++mAt;
                sum += Complex(0, sign);
                continue;
            }
            const size_t start = mAt;
            if (!IsDigit(Peek()) && Peek() != '.') Fail("expected a number in the coefficient");
            const double v = sign * Real(Number(), start);
            if (Peek() == 'i') {
                ++mAt;
                sum += Complex(0, v);
            } else {
                sum += v;
            }
        }
        if (first) Fail("expected a number in the coefficient");
        ++mAt;
        return sum;
    }

    /// A state after its coefficient: n,l,m, a catalogue name, a shell average or a hybrid.
    void State1(Complex factor, std::vector<Term>& terms) {
        const size_t start = mAt;
        if (CatalogueName(factor, terms)) return;
        if (Match("av")) return Average(factor, terms);
        if (Peek() == 's' && PeekAt(1) == 'p') return HybridTerms(factor, terms);
        if (!IsDigit(Peek())) {
            Fail(
                "expected a state: n,l,m (such as 2,1,0), a catalogue name (such as 3dz2 or "
                "av3d) or a hybrid (such as sp3:0)");
        }
        Quantum(WholeFrom(Number(), start, "n"), factor, terms);
    }

    /// After n: "," l "," [sign] m ["c" | "r"].
    void Quantum(int32_t n, Complex factor, std::vector<Term>& terms) {
        State s;
        s.n = n;
        Expect(',', "',' after n");
        s.l = Whole("l");
        Expect(',', "',' after l");
        int32_t sign = 1;
        if (Peek() == '+' || Peek() == '-') {
            sign = Peek() == '-' ? -1 : 1;
            ++mAt;
        }
        s.m = sign * Whole("m");
        if (Peek() == 'c' || Peek() == 'r') {
            s.basis = Peek() == 'c' ? Basis::Complex : Basis::Real;
            ++mAt;
        }
        terms.push_back({factor, s});
    }

    /// The longest catalogue name at the cursor, if any (names compare in lower case).
    bool CatalogueName(Complex factor, std::vector<Term>& terms) {
        static const std::array<std::string, kCatalogueSize> kKeys = [] {
            std::array<std::string, kCatalogueSize> keys;
            for (int16_t i = 0; i < kCatalogueSize; ++i) keys[i] = CatalogueKey(i);
            return keys;
        }();
        int16_t best = -1;
        size_t bestLength = 0;
        for (int16_t i = 0; i < kCatalogueSize; ++i) {
            const std::string& key = kKeys[i];
            if (key.size() > bestLength &&
                std::string_view(mLower).substr(mAt, key.size()) == key) {
                best = i;
                bestLength = key.size();
            }
        }
        if (best < 0) return false;
        // A name runs to the next sign or the end: "2pz3" is refused, not read as 2pz and 3.
        const char next = PeekAt(bestLength);
        if (next != '\0' && next != '+' && next != '-') {
            FailAt(mAt + bestLength,
                   "expected '+', '-' or the end of the text after the name " + kKeys[best]);
        }
        mAt += bestLength;
        terms.push_back({factor, CatalogueState(best)});
        return true;
    }

    /// After "av": n then a subshell letter s, p, d, f, or "," l.
    void Average(Complex factor, std::vector<Term>& terms) {
        State s;
        s.shellAverage = true;
        s.n = Whole("n");
        if (Match(",")) {
            s.l = Whole("l");
        } else {
            const std::string_view letters(kLetters);
            const size_t l = letters.find(Peek());
            if (Peek() == '\0' || l == std::string_view::npos) {
                Fail("expected the subshell letter s, p, d or f (or ',' and l) after av and n");
            }
            s.l = static_cast<int32_t>(l);
            ++mAt;
        }
        terms.push_back({factor, s});
    }

    /// A hybrid: kind [":" index] ["@" shell].
    void HybridTerms(Complex factor, std::vector<Term>& terms) {
        // Longest kind first, so that sp3d2 is not read as sp3 followed by d2.
        static constexpr std::array<std::pair<std::string_view, HybridKind>, 5> kKinds{{
            {"sp3d2", HybridKind::Sp3d2},
            {"sp3d", HybridKind::Sp3d},
            {"sp3", HybridKind::Sp3},
            {"sp2", HybridKind::Sp2},
            {"sp", HybridKind::Sp},
        }};
        HybridKind kind = HybridKind::Sp;
        for (const auto& [word, k] : kKinds) {
            if (Match(word)) {
                kind = k;
                break;
            }
        }
        const int32_t index = Match(":") ? Whole("the hybrid's index") : 0;
        const int32_t shell = Match("@") ? Whole("the hybrid's shell") : 0;
        const Superposition hybrid = Hybrid(kind, index, shell);  // kept alive for the loop
        for (const Term& t : hybrid.Terms()) {
            terms.push_back({factor * t.c, t.state});
        }
    }
};

std::string Coefficient(Complex c, bool first) {
    const double re = c.real(), im = c.imag();
    if (im == 0 || re == 0) {
        const double v = im == 0 ? re : im;
        std::string text = v < 0 ? "-" : (first ? "" : "+");
        if (std::fabs(v) != 1) text += WriteDouble(std::fabs(v));
        return text + (im == 0 ? "" : "i") + (std::fabs(v) == 1 && im == 0 ? "" : "*");
    }
    std::string text = first ? "(" : "+(";
    text += WriteDouble(re);
    text += im < 0 ? "-" : "+";
    return text + WriteDouble(std::fabs(im)) + "i)*";
}

std::string StateText(const State& s) {
    if (s.shellAverage) {
        std::string text = "av" + std::to_string(s.n);
        if (s.l < 4) return text + kLetters[s.l];
        return text + "," + std::to_string(s.l);
    }
    return std::to_string(s.n) + "," + std::to_string(s.l) + "," + std::to_string(s.m) +
           (s.basis == Basis::Complex ? "c" : "");
}

}  // namespace

Superposition ParseState(std::string_view text) {
    if (text.size() > kMaxStateTextLength) {
        Raise(kErrInvalidCall, "at character " + std::to_string(kMaxStateTextLength + 1) +
                                   ": the text is longer than " +
                                   std::to_string(kMaxStateTextLength) + " characters");
    }
    return MakeSuperposition(Reader(text).Text());
}

std::string FormatState(const Superposition& s) {
    const std::vector<Term>& terms = s.Terms();
    std::string text;
    if (terms.front().state.Z != 1) text = "Z=" + std::to_string(terms.front().state.Z) + ";";
    for (size_t k = 0; k < terms.size(); ++k) {
        const bool alone = terms.size() == 1 && terms[k].c == Complex(1, 0);
        if (!alone) text += Coefficient(terms[k].c, k == 0);
        text += StateText(terms[k].state);
    }
    return text;
}

}  // namespace veltara
