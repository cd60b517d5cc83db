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

__version__ = "1.1.0"
__all__ = ["EngineError", "Engine", "Orbital", "CatalogueEntry", "OrbitalFacts", "catalogue",
           "density", "wavefunction", "radial_distribution", "facts", "boundary_surface",
           "write_cube", "Surface"]

CatalogueEntry = collections.namedtuple(
    "CatalogueEntry", "index name n l m averaged pdf_radius drpdf_radius pdf_threshold "
    "drpdf_threshold")
OrbitalFacts = collections.namedtuple(
    "OrbitalFacts", "n l m radial_nodes angular_nodes energy_hartree mean_radius "
    "most_probable_radius")

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

    def add(self, orbital, view="pdf", radius=None, threshold=None, dots=5000):
        """Samples an orbital's probability grid and draws its first dot cloud.

        orbital: name or index; view: "pdf" (density) or "drpdf" (radially weighted);
        radius: half the cube's edge, Bohr (None: the catalogue's default for the view);
        threshold: the lowest probability level 0..255 a dot may have (None: the default);
        dots: dots wanted, 0..32767. Raises EngineError (11 for a density that is zero over
        the whole cube, 9 for a first cloud without a dot, 6 for a level above 255).
        """
        index = _index(orbital)
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

    def __init__(self, engine, slot, entry, view):
        self.engine, self.slot, self.entry, self.view = engine, slot, entry, view

    @property
    def name(self):
        return _command_name(self.entry)

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
        return self.engine._engine.render(self.slot, request)

    @property
    def grid(self):
        """The probability grid: (128, 128, 128) uint8 indexed [x, y, z] over one octant, 0 at
        the nucleus and 127 at the radius; the other octants are its mirror images."""
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

def _points(x, y, z):
    bx, by, bz = np.broadcast_arrays(*(np.asarray(v, dtype=np.float64) for v in (x, y, z)))
    return np.stack([bx.ravel(), by.ravel(), bz.ravel()], axis=1), bx.shape


def density(orbital, x, y, z, view="pdf"):
    """The normalised density of an orbital at points x, y, z (Bohr radii; numpy broadcasting):
    per cubic Bohr radius for view "pdf", the radially weighted density for "drpdf"."""
    xyz, shape = _points(x, y, z)
    return _core.density(_index(orbital), _choice(view, _VIEWS, "view"), xyz).reshape(shape)


def wavefunction(orbital, x, y, z):
    """The signed wavefunction psi of a single orbital at x, y, z (Bohr radii, broadcasting),
    in Bohr^(-3/2): psi² is density(orbital, x, y, z). Shell averages have no sign: EngineError
    5."""
    xyz, shape = _points(x, y, z)
    return _core.wavefunction(_index(orbital), xyz).reshape(shape)


def radial_distribution(orbital, r):
    """P(r) = r² R_nl(r)², per Bohr radius, at distances r >= 0 (Bohr radii); integrates to 1."""
    r = np.asarray(r, dtype=np.float64)
    return _core.radial_distribution(_index(orbital), r.ravel()).reshape(r.shape)


def facts(orbital):
    """n, l, m, radial_nodes, angular_nodes, energy_hartree (-1/(2n²)), mean_radius (<r>) and
    most_probable_radius (Bohr radii) of an orbital."""
    return OrbitalFacts(**_core.facts(_index(orbital)))


from ._science import Surface, boundary_surface, write_cube  # noqa: E402  (uses the above)
