// The text form of a state: what each form reads as, where a malformed text is refused, and
// that a formatted superposition reads back as itself.
#include "electron/state_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <locale>
#include <string>
#include <vector>

#include "test_support.h"

namespace {

using namespace veltara;
using C = std::complex<double>;
constexpr Basis R = Basis::Real, X = Basis::Complex;

State S(int32_t n, int32_t l, int32_t m, Basis b = R, int32_t Z = 1, bool average = false) {
    return State{n, l, m, b, Z, average};
}

/// Expects `got` to hold exactly the states of `want` (in any order), with coefficients within
/// 1e-15.
void ExpectTerms(const Superposition& got, const std::vector<Term>& want) {
    ASSERT_EQ(got.Terms().size(), want.size());
    for (size_t k = 0; k < want.size(); ++k) {
        bool found = false;
        for (const Term& t : got.Terms()) {
            if (t.state != want[k].state) continue;
            found = true;
            EXPECT_LE(std::abs(t.c - want[k].c), 1e-15) << "term " << k;
        }
        EXPECT_TRUE(found) << "term " << k << " is missing";
    }
}

/// The message of the error `text` raises (5 expected), or "" when it parses.
std::string Refusal(const std::string& text) {
    try {
        ParseState(text);
    } catch (const Error& e) {
        EXPECT_EQ(e.number(), 5) << text;
        return e.what();
    }
    return "";
}

TEST(ParseState, EachFormReadsAsItsStatesWithNormalisedCoefficients) {
    const double h = std::sqrt(0.5);  // two equal coefficients, normalised by hand
    struct Case {
        const char* text;
        std::vector<Term> want;
    };
    const Case cases[] = {
        {"7,3,-2", {{1, S(7, 3, -2)}}},
        {" 2 , 1 , 1 c ", {{1, S(2, 1, 1, X)}}},
        {"2,1,-1R", {{1, S(2, 1, -1)}}},
        {"Z=2;1,0,0", {{1, S(1, 0, 0, R, 2)}}},
        {"z = 3 ; 3dz2", {{1, S(3, 2, 0, R, 3)}}},
        {"3DZ2", {{1, S(3, 2, 0)}}},
        {"2px", {{1, S(2, 1, 1)}}},
        {"2Py", {{1, S(2, 1, -1)}}},
        {"4fxyz", {{1, S(4, 3, -2)}}},
        {"3dx2-y2", {{1, S(3, 2, 2)}}},
        {"4fz(x2-y2)", {{1, S(4, 3, 2)}}},
        {"4Fy(3x2-y2)+4fz3", {{h, S(4, 3, -3)}, {h, S(4, 3, 0)}}},
        {"av3d", {{1, S(3, 2, 0, R, 1, true)}}},
        {"AV1S", {{1, S(1, 0, 0, R, 1, true)}}},
        {"av7,5", {{1, S(7, 5, 0, R, 1, true)}}},
        {"1,0,0+2,1,0", {{h, S(1, 0, 0)}, {h, S(2, 1, 0)}}},
        {"0.6*2,1,0-0.8i*1,0,0", {{0.6, S(2, 1, 0)}, {C(0, -0.8), S(1, 0, 0)}}},
        {"(0.6+0.8i)*2,1,1c", {{C(0.6, 0.8), S(2, 1, 1, X)}}},
        {"(1+2i)*1,0,0c-2i*2,0,0c+(4)*3,0,0c",
         {{C(0.2, 0.4), S(1, 0, 0, X)}, {C(0, -0.4), S(2, 0, 0, X)}, {0.8, S(3, 0, 0, X)}}},
        {"i*1,0,0", {{C(0, 1), S(1, 0, 0)}}},
        {"-2,1,0", {{-1, S(2, 1, 0)}}},
        {"3e-1*1s+.4e0*1,0,0+1E+0*2s-1*2s", {{1, S(1, 0, 0)}, {0, S(2, 0, 0)}}},
        // Hybrids: squared weights 1/4 s + 3/4 p (sp3), 1/2 + 1/2 (sp), 1/6 s + 1/2 p + 1/3 d
        // (sp3d2), each part positive far out along the axis, where R_nl has the sign
        // (-1)^(n-l-1).
        {"sp3", {{-0.5, S(2, 0, 0)}, {0.5, S(2, 1, 1)}, {0.5, S(2, 1, -1)}, {0.5, S(2, 1, 0)}}},
        {"Z=2;SP:1", {{-h, S(2, 0, 0, R, 2)}, {-h, S(2, 1, 0, R, 2)}}},
        {"sp3d2:4@4",
         {{-std::sqrt(1 / 6.0), S(4, 0, 0)}, {h, S(4, 1, 0)}, {-std::sqrt(1 / 3.0), S(4, 2, 0)}}},
        {"sp:0+sp:1", {{-1, S(2, 0, 0)}, {0, S(2, 1, 0)}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        ExpectTerms(ParseState(c.text), c.want);
    }
}

TEST(ParseState, MalformedTextIsRefusedAtItsCharacterAndFieldsOutOfRangeByName) {
    const std::string tooLong(1001, '1');
    const std::string seventeen = [] {
        std::string t = "1,0,0";
        for (int k = 0; k < 16; ++k) t += "+1,0,0";
        return t;
    }();
    struct Case {
        std::string text, message;  // the message's start
    };
    const Case cases[] = {
        {"", "at character 1: the text is empty"},
        {"   ", "at character 4: the text is empty"},
        {"2,1", "at character 4: expected ',' after l"},
        {"2.5,1,0", "at character 1: n must be a whole number"},
        {"2,1,0.5", "at character 5: m must be a whole number"},
        {"2, x,0", "at character 4: l must be a whole number"},
        {"é2,1,0", "at character 1: expected a state"},
        {"2,1,0 é", "at character 7: expected '+' or '-' between terms"},
        {"2,1,0++1,0,0", "at character 7: expected a state"},
        {"2pz3", "at character 4: expected '+', '-' or the end of the text after the name 2pz"},
        {"av3x", "at character 4: expected the subshell letter"},
        {"sp3:", "at character 5: the hybrid's index must be a whole number"},
        {"sp3:4", "the sp3 hybrid index must be from 0 to 3"},
        {"Z=2 1,0,0", "at character 6: expected a ';' after the nuclear charge"},  // Z 21
        {"Z=;1,0,0", "at character 3: Z must be a whole number"},
        {"(0.6+0.8i*2,1,0", "at character 10: expected '+', '-' or ')'"},
        {"()*1,0,0", "at character 2: expected a number in the coefficient"},
        {"0.8i 1,0,0", "at character 6: expected '*' after the coefficient"},
        {"0.6 2,1,0", "at character 1: n must be a whole number"},  // 0.62 before ','
        {"2,1,0-", "at character 7: expected a state"},
        {"1e999*1,0,0", "at character 1: the number is outside the range of a double"},
        {"1234567890,0,0", "at character 1: n is far too large"},
        {tooLong, "at character 1001: the text is longer than 1000 characters"},
        {seventeen, "at character 97: a superposition holds at most 16 terms"},
        {"31,0,0", "n must be a whole number from 1 to 30 (got 31)"},
        {"2,2,0", "l must be a whole number from 0 to n - 1"},
        {"2,1,-2", "m must be a whole number from -l to l"},
        {"Z=0;1,0,0", "Z must be a whole number from 1 to 100 (got 0)"},
        {"0*1,0,0", "a superposition needs a coefficient that is not zero"},
        {"1,0,0+2,1,0c", "every term must be in the same basis"},
        {"av2p+1,0,0", "a shell average cannot be part of a superposition"},
    };
    for (const Case& c : cases) {
        const std::string got = Refusal(c.text);
        EXPECT_EQ(got.substr(0, c.message.size()), c.message) << c.text << " gave: " << got;
    }
}

TEST(FormatState, ReadsBackAsTheSameSuperposition) {
    const char* texts[] = {
        "7,3,-2",
        "2,1,1c",
        "Z=2;1,0,0",
        "3dz2",
        "av3d",
        "Z=5;av30,29",
        "-2,1,0",
        "i*1,0,0",
        "-i*1,0,0c",
        "0.6*2,1,0-0.8i*1,0,0",
        "(0.6+0.8i)*2,1,1c",
        "(-1e-5-3i)*30,29,-29c+1e20*2,1,0c+0*3,2,1c",
        "1,0,0+2,1,0+3,2,-1+4,3,3",
        "0.1*1,0,0-0.2*2,0,0+0.3*3,0,0-0.4*4,0,0+0.5*5,0,0-0.6*6,0,0",
        "sp3d:3@5",
        "Z=3;(0.5-2i)*sp2:2",
    };
    for (const char* text : texts) {
        SCOPED_TRACE(text);
        const Superposition s = ParseState(text);
        const std::string formatted = FormatState(s);
        SCOPED_TRACE(formatted);
        std::vector<Term> want = s.Terms();
        ExpectTerms(ParseState(formatted), want);
    }
}

TEST(ParseState, NumbersReadTheSameUnderAnyGlobalLocale) {
    // A global locale whose decimal point is a comma must not change how "0.6" reads.
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale previous =
        std::locale::global(std::locale(std::locale::classic(), new Comma));
    const Superposition s = ParseState("0.6*2,1,0+0.8*1,0,0");
    std::locale::global(previous);
    ExpectTerms(s, {{0.6, S(2, 1, 0)}, {0.8, S(1, 0, 0)}});
}

}  // namespace
