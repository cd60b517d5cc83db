// Checking a state's quantum numbers and forming normalised superpositions.
#include "electron/state.h"

#include <cmath>
#include <cstdlib>
#include <string>

#include "support/error.h"

namespace veltara {

namespace {

void Require(bool ok, const std::string& sentence) {
    if (!ok) Raise(kErrInvalidCall, sentence);
}

std::string Got(int32_t value) { return " (got " + std::to_string(value) + ")"; }

}  // namespace

void CheckState(const State& s) {
    Require(s.n >= 1 && s.n <= kMaxStateN,
            "n must be a whole number from 1 to " + std::to_string(kMaxStateN) + Got(s.n));
    Require(s.l >= 0 && s.l < s.n,
            "l must be a whole number from 0 to n - 1 = " + std::to_string(s.n - 1) + Got(s.l));
    Require(std::abs(s.m) <= s.l, "m must be a whole number from -l to l (-" + std::to_string(s.l) +
                                      " to " + std::to_string(s.l) + ")" + Got(s.m));
    Require(s.Z >= 1 && s.Z <= kMaxStateZ,
            "Z must be a whole number from 1 to " + std::to_string(kMaxStateZ) + Got(s.Z));
    Require(s.basis == Basis::Real || s.basis == Basis::Complex,
            "the basis must be real or complex");
    Require(!s.shellAverage || (s.m == 0 && s.basis == Basis::Real),
            "a shell average has m 0 and the real basis");
}

Superposition MakeSuperposition(const std::vector<Term>& terms) {
    Require(!terms.empty(), "a superposition needs at least one term");
    Superposition result;
    for (const Term& t : terms) {
        CheckState(t.state);
        Require(std::isfinite(t.c.real()) && std::isfinite(t.c.imag()),
                "every coefficient must be a finite number");
        const State& first = terms.front().state;
        Require(t.state.Z == first.Z, "every term must have the same Z");
        Require(t.state.basis == first.basis, "every term must be in the same basis");
        // The same state twice is one term whose coefficient is the sum.
        bool merged = false;
        for (Term& have : result.mTerms) {
            if (have.state == t.state) {
                have.c += t.c;
                merged = true;
            }
        }
        if (!merged) result.mTerms.push_back(t);
    }
    Require(result.mTerms.size() <= kMaxSuperpositionTerms,
            "a superposition holds at most " + std::to_string(kMaxSuperpositionTerms) +
                " distinct states");
    bool average = false;
    for (const Term& t : result.mTerms) average = average || t.state.shellAverage;
    Require(!average || result.mTerms.size() == 1,
            "a shell average cannot be part of a superposition");
    double norm2 = 0;
    for (const Term& t : result.mTerms) norm2 += std::norm(t.c);
    Require(norm2 > 0 && std::isfinite(norm2),
            "a superposition needs a coefficient that is not zero");
    // Divided rather than multiplied by a reciprocal, so 3 and 4i become exactly 0.6 and 0.8.
    const double norm = std::sqrt(norm2);
    for (Term& t : result.mTerms) t.c = {t.c.real() / norm, t.c.imag() / norm};
    return result;
}

Superposition MakeSuperposition(const State& state) {
    return MakeSuperposition(std::vector<Term>{Term{1.0, state}});
}

}  // namespace veltara
