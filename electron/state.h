// A hydrogen-like state: the engine's unit of physics. Quantum numbers, basis and nuclear
// charge of one state, and superpositions of such states that evolve in time.
//
// Conventions (atomic units throughout): lengths in Bohr radii, energies in hartree
// (E_n = -Z²/(2n²)), time in hbar/E_h (24.188843 as).
//   R_nl(r) = sqrt((2Z/n)³ (n-l-1)! / (2n (n+l)!)) e^(-rho/2) rho^l L^(2l+1)_(n-l-1)(rho),
//   rho = 2Zr/n: positive at the nucleus side; psi_Z(r) = Z^(3/2) psi_1(Zr).
//   Complex basis: Y_l^m with the Condon-Shortley phase.
//   Real basis: m = 0: N_l0 P_l(cos theta); m > 0: sqrt2 N_lm P_l^m(cos theta) cos(m phi);
//   m < 0: sqrt2 N_l|m| P_l^|m|(cos theta) sin(|m| phi), P_l^m without the Condon-Shortley
//   phase (so 2p with m = +1 is +x, m = -1 is +y).
//   Superposition: Psi(t) = sum c_k psi_k e^(-i E_k t), normalised so that sum |c_k|² = 1.
#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace veltara {

/// Which angular functions a state uses.
enum class Basis : int32_t {
    Real = 0,     ///< the real combinations (the catalogue's)
    Complex = 1,  ///< Y_l^m with a definite m
};

inline constexpr int32_t kMaxStateN = 30;   ///< highest principal quantum number
inline constexpr int32_t kMaxStateZ = 100;  ///< highest nuclear charge
inline constexpr size_t kMaxSuperpositionTerms = 16;

/// One state |n l m> of a one-electron atom of nuclear charge Z, or (shellAverage) the
/// spherical average of the whole subshell n, l (m 0, basis Real), which has no phase.
struct State {
    int32_t n = 1;
    int32_t l = 0;
    int32_t m = 0;
    Basis basis = Basis::Real;
    int32_t Z = 1;
    bool shellAverage = false;

    friend bool operator==(const State&, const State&) = default;
};

/// One term c |state> of a superposition.
struct Term {
    std::complex<double> c;
    State state;
};

/// A normalised superposition of distinct states of one basis and one Z; made only by
/// MakeSuperposition, so a value of this type always holds 1 to 16 terms with sum |c|² = 1.
/// A single state is a superposition of one term with coefficient 1.
class Superposition {
  public:
    const std::vector<Term>& Terms() const noexcept { return mTerms; }
    friend Superposition MakeSuperposition(const std::vector<Term>& terms);

  private:
    std::vector<Term> mTerms;
};

/// Raises 5 with a sentence naming the field and its allowed range unless: n 1..30,
/// 0 <= l < n, |m| <= l, Z 1..100, and for a shell average m 0 and the real basis.
void CheckState(const State& state);

/// The superposition of `terms`: each state checked, the same state twice added up, the
/// coefficients normalised. Raises 5 (with a sentence) for no terms, more than 16 distinct
/// states, all-zero or non-finite coefficients, terms of different Z or basis, or a shell
/// average among several terms.
Superposition MakeSuperposition(const std::vector<Term>& terms);

/// The superposition of one state with coefficient 1.
Superposition MakeSuperposition(const State& state);

}  // namespace veltara
