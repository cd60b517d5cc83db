"""Veltara for Python: pictures, probability grids and dot clouds of the hydrogen atom's
orbitals as numpy arrays, their densities, the signed wavefunction and textbook facts.

    import veltara, numpy as np
    e = veltara.Engine(clock_ms=123456789)     # a fixed clock gives the same dots every run
    o = e.add("3Dz2", view="pdf", dots=5000)
    picture = o.render(mode="orthographic", theta=0.4, phi=0.3)   # (375, 375, 3) uint8 RGB
    psi = veltara.wavefunction("2Px", np.linspace(-5, 5, 11), 0, 0)

Orbitals are named as the catalogue names them ("3Dz2" or "3Dz²", case-insensitive) or by
catalogue index; a shell average is "av" + its name ("av3D"). Lengths are in Bohr radii.
"""
import collections
import difflib
import re

import numpy as np

from . import _core
from ._errors import EngineError

__version__ = "1.2.0"  # the C interface's version, which a test compares
__all__ = ["EngineError", "Engine", "Orbital", "CatalogueEntry", "OrbitalFacts", "catalogue",
           "density", "wavefunction", "radial_distribution", "facts", "boundary_surface",
           "write_cube", "Surface", "State", "Superposition", "parse", "hybrid", "sample", "simd"]

CatalogueEntry = collections.namedtuple(
    "CatalogueEntry", "index name n l m averaged pdf_radius drpdf_radius pdf_threshold "
    "drpdf_threshold")
OrbitalFacts = collections.namedtuple(
    "OrbitalFacts", "n l m radial_nodes angular_nodes energy_hartree mean_radius "
    "most_probable_radius")

from ._states import (State, Superposition, hybrid, parse, sample,  # noqa: E402
                      as_state as _as_state)
from . import _states  # noqa: E402

_CATALOGUE = tuple(CatalogueEntry(i, *row) for i, row in enumerate(_core.catalogue()))
# The engine's one table of mode, view and size names: key -> value.
_NAMES = {kind: {key: value for key, _title, _label, value in rows}
          for kind, rows in _core.names().items()}
_VIEWS = _NAMES["view"]
_MODES = _NAMES["mode"]
_SIZES = _NAMES["size"]
_DIRECTIONS = {"x": 0, "y": 1, "z": 2}
_INT16 = (-32768, 32767)
_INT32 = (-2**31, 2**31 - 1)


def catalogue():
    """The catalogue entries in index order: index, name, n, l, m, averaged, and the default
    radius (Bohr) and dot threshold of each view."""
    return list(_CATALOGUE)


# ---- names ---------------------------------------------------------------------------------

def _normalise(text):
    text = text.replace("\u00b2", "2").replace("\u00b3", "3").replace("_", "-")
    return re.sub(r"\s+", "", text).lower()


def _command_name(entry):
    return ("av" if entry.averaged else "") + entry.name


def _find(norm, averaged):
    for entry in _CATALOGUE:
        if entry.averaged == averaged and _normalise(entry.name) == norm:
            return entry.index
    return None


def _index(orbital):
    """The catalogue index of a name or an index; ValueError naming close matches."""
    if isinstance(orbital, (int, np.integer)) and not isinstance(orbital, bool):
        if 0 <= orbital < len(_CATALOGUE):
            return int(orbital)
        raise ValueError(f"orbital index {orbital} is outside 0..{len(_CATALOGUE) - 1}")
    if not isinstance(orbital, str):
        raise TypeError(f"an orbital is a name or an index, not {type(orbital).__name__}")
    if orbital.strip().isdigit():
        return _index(int(orbital))
    norm = _normalise(orbital)
    average = re.fullmatch(r"avg?(\d.*)", norm)
    if average:
        found = _find(average.group(1), True)
    else:
        found = _find(norm, False)
        if found is None:
            found = _find(norm, True)
    if found is not None:
        return found
    names = {_normalise(_command_name(e)): _command_name(e) for e in _CATALOGUE}
    close = difflib.get_close_matches(norm, list(names), n=5, cutoff=0.5)
    hint = ", ".join(names[c] for c in close) or "none (see veltara.catalogue())"
    raise ValueError(f"unknown orbital {orbital!r}; close matches: {hint}")


def _state_or_index(orbital):
    """A catalogue index for a catalogue name or index, else the state a State, Superposition
    or text form names."""
    if isinstance(orbital, Superposition):
        index = orbital._core.catalogue_index()
        return orbital if index < 0 else index
    try:
        return _index(orbital)
    except ValueError as unknown:
        if not isinstance(orbital, str):
            raise
        try:
            return _state_or_index(parse(orbital))
        except EngineError as refused:
            # Text with the marks of the state form is answered about that form alone.
            if any(mark in orbital for mark in ",:;=*+"):
                raise
            raise ValueError(f"{unknown}; nor is it a state: {refused.message}") from None


def _choice(value, table, what):
    if isinstance(value, str):
        key = value.lower()
        if key in table:
            return table[key]
        raise ValueError(f"{what} {value!r} is not one of {', '.join(table)}")
    return _whole(value, what, _INT32)


def _whole(value, what, bounds):
    if isinstance(value, bool) or not isinstance(value, (int, np.integer)):
        raise TypeError(f"{what} must be a whole number, not {value!r}")
    if not bounds[0] <= value <= bounds[1]:
        raise ValueError(f"{what} {value} is outside {bounds[0]}..{bounds[1]}")
    return int(value)


# ---- the engine ----------------------------------------------------------------------------

class Engine:
    """One engine with its collection of orbitals.

    clock_ms: None for the system clock (new dots every run), or a fixed millisecond reading
    (above 32768; below it the random generator is stuck and adding fails with error 9) that
    seeds every orbital the same way on every run and machine.
    """

    def __init__(self, clock_ms=None):
        if clock_ms is not None:
            clock_ms = _whole(clock_ms, "clock_ms", _INT32)
        self.clock_ms = clock_ms
        self._engine = _core.Engine(clock_ms)

    def add(self, orbital, view="pdf", radius=None, threshold=None, dots=5000, t=0):
        """Samples an orbital's probability grid and draws its first dot cloud.

        orbital: a catalogue name or index, or any state (a State, Superposition or text
        form such as "7,3,-2"); view: "pdf" (density) or "drpdf" (radially weighted);
        radius: half the cube's edge, Bohr (None: the catalogue's default for the view, or
        for other states a cube holding 99.9 % of the probability); threshold: the lowest
        probability level 0..255 a dot may have (None: the default); dots: dots wanted,
        0..32767 (exact samples for a state beyond the catalogue); t: the time of a
        superposition (hbar/E_h). Raises EngineError (11 for a density that is zero over the
        whole cube, 9 for a first cloud without a dot, 6 for a level above 255).
        """
        found = _state_or_index(orbital)
        if isinstance(found, Superposition):
            v = _choice(view, _VIEWS, "view")
            slot = self._engine.add_state(
                found._core, _states._time(t), v, _whole(radius or 0, "radius", _INT16),
                _whole(dots, "dots", _INT16), _whole(50 if threshold is None else threshold,
                                                     "threshold", (0, 255)))
            setup = self._engine.setup(slot)
            entry = (_CATALOGUE[setup["orbital"]] if setup["orbital"] >= 0 else None)
            return Orbital(self, slot, entry, view if isinstance(view, str) else
                           {0: "pdf", 1: "drpdf"}.get(v, str(v)), state=found)
        index = found
        entry = _CATALOGUE[index]
        v = _choice(view, _VIEWS, "view")
        if radius is None:
            radius = entry.pdf_radius if v == 0 else entry.drpdf_radius
        if threshold is None:
            threshold = entry.pdf_threshold if v == 0 else entry.drpdf_threshold
        slot = self._engine.add(index, v, _whole(radius, "radius", _INT16),
                                _whole(dots, "dots", _INT16),
                                _whole(threshold, "threshold", (0, 255)))
        return Orbital(self, slot, entry, view if isinstance(view, str) else
                       {0: "pdf", 1: "drpdf"}.get(v, str(v)))

    def __repr__(self):
        return f"veltara.Engine(clock_ms={self.clock_ms!r})"


_REQUEST_FIELDS = _core.default_request()


class Orbital:
    """An orbital in an engine's collection: its pictures, grid, dots and statistics."""

    def __init__(self, engine, slot, entry, view, state=None):
        self.engine, self.slot, self.entry, self.view = engine, slot, entry, view
        self.state = state

    @property
    def name(self):
        return _command_name(self.entry) if self.state is None else self.state.text

    def render(self, mode="orthographic", size="main", **fields):
        """One picture as an ndarray (height, width, 3) of uint8 R, G, B, top row first:
        375 x 375 for size "main", 127 x 127 for "nano".

        mode: orthographic, perspective, anaglyph, volumetric or transect (or its number);
        every other field of the engine's render request is a keyword with the engine's
        default: theta, phi (radians), camera_pos, projection_plane, transect_no, transector,
        transect_dir ("x", "y", "z"), vol_quality (0 or 5..10), vol_final,
        show_prob_level_on_dots, show_prob_level_on_trans, use_coloured_transector,
        stereo_factor. Truth values are Python bools. Raises EngineError (11 for an anaglyph
        with stereo_factor 0, 9 for a volume quality or slice out of range).
        """
        request = dict(_REQUEST_FIELDS)
        unknown = set(fields) - set(request)
        if unknown:
            close = difflib.get_close_matches(sorted(unknown)[0], list(request), n=3)
            raise TypeError(f"render() has no keyword {sorted(unknown)[0]!r}"
                            + (f"; did you mean {', '.join(close)}?" if close else ""))
        request.update(fields, mode=_choice(mode, _MODES, "mode"),
                       size=_choice(size, _SIZES, "size"))
        request["transect_dir"] = _choice(request["transect_dir"], _DIRECTIONS, "transect_dir")
        for key, value in request.items():
            if key in ("theta", "phi"):
                request[key] = float(value)
            elif isinstance(value, (bool, np.bool_)):
                request[key] = -1 if value else 0
            elif key not in ("mode", "size", "transect_dir"):
                request[key] = _whole(value, key, _INT16)
        # The engine draws B, G, R, A into the array; R, G, B is a view of it, not a copy.
        return self.engine._engine.render(self.slot, request)[..., 2::-1]

    @property
    def grid(self):
        """The probability grid, uint8 indexed [x, y, z]: (128, 128, 128) over one octant, 0 at
        the nucleus and 127 at the radius, the other octants its mirror images; or, for a state
        without mirror symmetry (a superposition, a hybrid), (255, 255, 255) over the whole
        cube with the nucleus at 127."""
        return self.engine._engine.grid(self.slot)

    @property
    def dots(self):
        """The dot cloud: records x, y, z (int16 grid units, -127..127; x * radius / 127 Bohr)
        and p (uint8 probability level)."""
        return self.engine._engine.dots(self.slot)

    @property
    def stats(self):
        """The statistics: frames_rendered, prob_freqs (256 int32), total_samples, mode,
        calc_time, calc_rate, dot_target, dot_total, dot_time (times in ms)."""
        return self.engine._engine.stats(self.slot)

    @property
    def setup(self):
        """The setup the orbital was added with (radius, dots, threshold, orbital, view), with
        the target and threshold of its last refill."""
        return self.engine._engine.setup(self.slot)

    def refill(self, threshold, target):
        """Draws a new dot cloud from the existing grid: target dots (0..32767) at levels
        above threshold (0..255)."""
        self.engine._engine.refill(self.slot, _whole(threshold, "threshold", (0, 255)),
                                   _whole(target, "target", _INT32))

    def delete(self):
        """Removes the orbital from its engine; using it afterwards raises EngineError 91."""
        self.engine._engine.delete(self.slot)

    def __repr__(self):
        return f"<veltara.Orbital {self.name} {self.view} in slot {self.slot}>"


# ---- the catalogue's functions ---------------------------------------------------------------

def _coordinates(x, y, z):
    """x, y, z as float64 arrays of one shape: broadcast views of the arrays given, not copies."""
    return np.broadcast_arrays(*(np.asarray(v, dtype=np.float64) for v in (x, y, z)))


def _threads(threads):
    return 0 if threads is None else _whole(threads, "threads", (1, 64))


def density(orbital, x, y, z, view="pdf", t=0, threads=None):
    """The normalised density of an orbital or state at points x, y, z (Bohr radii; numpy
    broadcasting): per cubic Bohr radius for view "pdf", the radially weighted density for
    "drpdf"; t is a superposition's time (hbar/E_h). The values are computed in place from the
    arrays given, by at most `threads` threads (None: one per core) with the
    interpreter's lock released; the values do not depend on the threads."""
    found, v = _state_or_index(orbital), _choice(view, _VIEWS, "view")
    xyz = _coordinates(x, y, z)
    if isinstance(found, Superposition):
        return _states.state_density(found, xyz, v, t, _threads(threads))
    return _core.density(found, v, *xyz, _threads(threads))


def wavefunction(orbital, x, y, z, t=None, threads=None):
    """The wavefunction psi at x, y, z (Bohr radii, broadcasting), in Bohr^(-3/2): float64 for
    a catalogue orbital, a real State or a real hybrid with t None; complex128 for a complex
    state, complex coefficients or a given time t (hbar/E_h). |psi|² is density(...). Shell
    averages have no phase: EngineError 5. threads: as for density."""
    found = _state_or_index(orbital)
    xyz = _coordinates(x, y, z)
    if isinstance(found, Superposition):
        return _states.state_wavefunction(found, xyz, t, _threads(threads))
    return _core.wavefunction(found, *xyz, _threads(threads))


def radial_distribution(orbital, r, t=0):
    """P(r), per Bohr radius, at distances r >= 0 (Bohr radii): r² R_nl(r)² for one state, with
    the cross terms of a superposition's terms that share l and m at time t; integrates to 1."""
    r = np.asarray(r, dtype=np.float64)
    found = _state_or_index(orbital)
    if isinstance(found, Superposition):
        return _states.state_radial(found, r.ravel(), t).reshape(r.shape)
    return _core.radial_distribution(found, r.ravel()).reshape(r.shape)


def facts(orbital):
    """What a chemist reads off an orbital or state: n, l, m, radial_nodes, angular_nodes,
    energy_hartree, mean_radius (<r>) and most_probable_radius (Bohr radii); a State or text
    also gives Z, energy_ev, node_radii and, for a superposition (whose energy_hartree is <E>),
    beats (delta_hartree, period_fs, wavelength_nm for each pair of distinct energies)."""
    try:
        return OrbitalFacts(**_core.facts(_index(orbital)))  # a catalogue name or index
    except (ValueError, TypeError):
        pass
    # Given as a state, a catalogue row too is answered with every fact of a state.
    found = _state_or_index(orbital)
    if not isinstance(found, Superposition):
        found = orbital if isinstance(orbital, Superposition) else parse(orbital)
    return _states.state_facts(found)


def simd():
    """The vector path the engine uses on this processor ("scalar", "sse2", "avx2", "avx512"),
    chosen at start or forced by VELTARA_SIMD; every path gives the same numbers."""
    return _core.simd()[0]


if _core.simd()[1]:
    import os as _os
    import warnings as _warnings
    _warnings.warn(f"VELTARA_SIMD={_os.environ.get('VELTARA_SIMD')!r} names no path this "
                   f"processor has; using {simd()}", RuntimeWarning, stacklevel=2)


from ._science import Surface, boundary_surface, write_cube  # noqa: E402  (uses the above)
