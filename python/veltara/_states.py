"""Any hydrogen-like state: State(n, l, m, basis, Z), superpositions that evolve in time,
hybrids, exact samples, and the engine's text form ("7,3,-2", "2,1,1c", "Z=2;1,0,0", "sp3:0",
"0.6*2,1,0-0.8i*1,0,0"). Atomic units: Bohr radii, hartree, time in hbar/E_h (24.188843 as)."""
import collections
import numbers
import os

import numpy as np

from . import _core

_BASES = {"real": 0, "complex": 1}
_HYBRIDS = {"sp": 0, "sp2": 1, "sp3": 2, "sp3d": 3, "sp3d2": 4}

Beat = collections.namedtuple("Beat", "delta_hartree period_fs wavelength_nm")
StateFacts = collections.namedtuple(
    "StateFacts", "n l m Z energy_hartree energy_ev radial_nodes angular_nodes node_radii "
    "mean_radius most_probable_radius beats")
Sample = collections.namedtuple("Sample", "points phase")


def _quantum(value, name):
    if isinstance(value, bool) or not isinstance(value, numbers.Integral):
        raise TypeError(f"{name} must be a whole number, not {value!r}")
    return int(value)


class Superposition:
    """A normalised superposition sum c_k psi_k e^(-i E_k t) of distinct states of one basis
    and one Z: Superposition([(0.6, State(2, 1, 0)), (0.8j, State(1, 0, 0))]). The same state
    twice adds up; the coefficients are scaled so that sum |c_k|^2 = 1."""

    def __init__(self, terms):
        rows = []
        for item in terms:
            try:
                c, state = item
            except (TypeError, ValueError):
                raise TypeError("each term is a pair (coefficient, State)") from None
            if not isinstance(state, State):
                raise TypeError(f"a term's state must be a veltara.State, not {state!r}")
            c = complex(c)
            rows += [(c.real, c.imag, *row[2:]) for row in state._core.terms()]
        self._core = _core.superposition(rows)

    @classmethod
    def _wrap(cls, core):
        obj = cls.__new__(cls)
        obj._core = core
        return obj

    @property
    def terms(self):
        """The normalised terms as (complex coefficient, State) pairs."""
        return [(complex(re, im), State(n, l, m, _basis_name(b), Z, shell_average=avg))
                for re, im, n, l, m, b, Z, avg in self._core.terms()]

    @property
    def text(self):
        """The engine's text form, which veltara.parse reads back to the same superposition."""
        return self._core.text()

    def _is_real(self):
        return all(b == 0 and im == 0 for _, im, _, _, _, b, _, _ in self._core.terms())

    def __eq__(self, other):
        return isinstance(other, Superposition) and self._core.terms() == other._core.terms()

    def __repr__(self):
        return f"veltara.parse({self.text!r})"


class State(Superposition):
    """One state |n l m> of a one-electron atom of nuclear charge Z: n 1..30, l 0..n-1,
    m -l..l, basis "real" (the catalogue's real combinations: m = +1 is x-like, -1 y-like) or
    "complex" (Y_l^m with the Condon-Shortley phase), Z 1..100. shell_average=True gives the
    spherical average of the whole subshell n, l (m 0), which has no phase."""

    def __init__(self, n, l, m=0, basis="real", Z=1, shell_average=False):
        self.n, self.l, self.m = _quantum(n, "n"), _quantum(l, "l"), _quantum(m, "m")
        self.Z = _quantum(Z, "Z")
        if basis not in _BASES:
            raise ValueError(f"basis {basis!r} is not 'real' or 'complex'")
        self.basis, self.shell_average = basis, bool(shell_average)
        self._core = _core.superposition([(1.0, 0.0, self.n, self.l, self.m, _BASES[basis],
                                           self.Z, self.shell_average)])

    def __repr__(self):
        extra = "".join([f", basis={self.basis!r}" if self.basis != "real" else "",
                         f", Z={self.Z}" if self.Z != 1 else "",
                         ", shell_average=True" if self.shell_average else ""])
        return f"veltara.State({self.n}, {self.l}, {self.m}{extra})"


def _basis_name(b):
    return "complex" if b == 1 else "real"


def _from_core(core):
    """A State when the core holds one state with coefficient 1, else a Superposition."""
    terms = core.terms()
    if len(terms) == 1 and terms[0][:2] == (1.0, 0.0):
        _, _, n, l, m, b, Z, avg = terms[0]
        return State(n, l, m, _basis_name(b), Z, shell_average=avg)
    return Superposition._wrap(core)


def parse(text):
    """The state or superposition a text names, in the engine's one text form: "7,3,-2"
    (real), "2,1,1c" (complex), "Z=2;1,0,0", catalogue names ("3dz2", "av3d"), hybrids
    ("sp3:0", "sp3d2:4@4"), sums with coefficients ("0.6*2,1,0-0.8i*1,0,0",
    "(0.6+0.8i)*2,1,1c"). Raises EngineError 5 naming the character at fault."""
    if not isinstance(text, str):
        raise TypeError(f"parse() takes a text, not {type(text).__name__}")
    return _from_core(_core.parse(text))


def hybrid(kind, k, n=None):
    """Hybrid k (0-based) of a kind "sp", "sp2", "sp3", "sp3d" or "sp3d2" on shell n (None:
    2 for sp..sp3, 3 for the d kinds), a real superposition pointing along its axis."""
    if kind not in _HYBRIDS:
        raise ValueError(f"hybrid kind {kind!r} is not one of {', '.join(_HYBRIDS)}")
    return Superposition._wrap(_core.hybrid(_HYBRIDS[kind], _quantum(k, "k"),
                                            0 if n is None else _quantum(n, "n")))


def as_state(value):
    """value as a Superposition: a State or Superposition as it is, a text parsed."""
    if isinstance(value, Superposition):
        return value
    if isinstance(value, str):
        return parse(value)
    raise TypeError(f"a state is a veltara.State, a Superposition or a text, not {value!r}")


def _time(t):
    t = 0.0 if t is None else float(t)
    if not np.isfinite(t):
        raise ValueError(f"the time t must be a finite number, not {t}")
    return t


def state_wavefunction(state, xyz, t, threads):
    psi = _core.state_psi(state._core, _time(t), *xyz, threads)
    return psi.real.copy() if t is None and state._is_real() else psi


def state_density(state, xyz, view, t, threads):
    return _core.state_density(state._core, _time(t), view, *xyz, threads)


def state_radial(state, r, t):
    return _core.state_radial(state._core, _time(t), r)


def state_facts(state):
    f = _core.state_facts(state._core)
    f["beats"] = [Beat(*b) for b in f["beats"]]
    return StateFacts(**f)


def sample(state, count, seed=None, t=0, view="pdf"):
    """count points drawn exactly from |Psi(t)|^2 (view "pdf") or from the radially weighted
    density (view "drpdf"), with no grid: .points (count, 3) float64 Bohr radii, .phase (count,)
    arg Psi in radians (0 or pi for a real state). The same seed gives the same points on every
    machine; seed None draws a fresh one."""
    state = as_state(state)
    if isinstance(count, bool) or not isinstance(count, numbers.Integral) or count < 0:
        raise ValueError(f"count must be a whole number, 0 or more (got {count!r})")
    if seed is None:
        seed = int.from_bytes(os.urandom(8), "little")
    seed = _quantum(seed, "seed")
    if not 0 <= seed < 2**64:
        raise ValueError(f"seed must be from 0 to 2**64 - 1 (got {seed})")
    weight = {"pdf": 0, "drpdf": 1}.get(view)
    if weight is None:
        raise ValueError(f"view {view!r} is not 'pdf' or 'drpdf'")
    return Sample(*_core.sample(state._core, _time(t), seed, weight, int(count)))
