"""What chemists draw: the boundary surface enclosing a fraction of the probability, with the
sign of each part, as a mesh (PLY for Blender or MeshLab), and cube files of psi or the density
for Avogadro, VMD or ASE."""
import dataclasses
import os
import tempfile

import numpy as np

from . import (_CATALOGUE, Superposition, _core, _index, _state_or_index, density,
               radial_distribution, wavefunction)


def _write_atomically(path, text):
    """Writes the whole file beside its target and renames it over the target only when
    complete, so a failed write leaves what was at the path."""
    folder = os.path.dirname(os.path.abspath(path))
    fd, temp = tempfile.mkstemp(dir=folder, prefix=".veltara-", suffix=".tmp")
    try:
        with os.fdopen(fd, "w", encoding="ascii", newline="\n") as f:
            f.write(text)
        os.replace(temp, path)
    except BaseException:
        os.unlink(temp)
        raise


def _enclosing_radius(index, share):
    """The distance (Bohr) within which the orbital's probability reaches `share`."""
    n = _CATALOGUE[index].n
    r = np.linspace(0.0, 12.0 * n * n, 20001)
    cumulative = np.cumsum(radial_distribution(index, r)) * (r[1] - r[0])
    return float(r[np.searchsorted(cumulative, share)])


def _cube_axis(index, radius, points):
    if points < 3 or points > 1001:
        raise ValueError(f"points {points} is outside 3..1001")
    if radius is None:
        radius = 1.1 * _enclosing_radius(index, 0.9999)
    if not radius > 0:
        raise ValueError(f"radius {radius} is not a positive length")
    return np.linspace(-radius, radius, points)


@dataclasses.dataclass
class Surface:
    """A triangle mesh of a boundary surface, Bohr radii: vertices (V, 3) float, faces (F, 3)
    vertex indices, signs (V,) int8 (+1 where psi is positive, -1 where negative, 0 for a
    shell average, which has no sign); level is the density on the surface (per cubic Bohr)
    and fraction the probability it encloses."""
    vertices: np.ndarray
    faces: np.ndarray
    signs: np.ndarray
    level: float
    fraction: float
    phase: np.ndarray = None  #: (V,) arg psi in radians, for a surface of any state

    def write_ply(self, path, positive=(40, 90, 230), negative=(230, 60, 40),
                  unsigned=(180, 180, 180)):
        """Writes the mesh as an ASCII PLY file with each vertex coloured by its sign."""
        colours = np.array([unsigned, positive, negative], dtype=np.int64)[self.signs]
        lines = ["ply", "format ascii 1.0",
                 f"comment Veltara boundary surface enclosing {self.fraction:g} of the "
                 "probability; Bohr radii; colour: sign of psi",
                 f"element vertex {len(self.vertices)}", "property float x", "property float y",
                 "property float z", "property uchar red", "property uchar green",
                 "property uchar blue", f"element face {len(self.faces)}",
                 "property list uchar int vertex_indices", "end_header"]
        lines += [f"{x:.6g} {y:.6g} {z:.6g} {r} {g} {b}"
                  for (x, y, z), (r, g, b) in zip(self.vertices.tolist(), colours.tolist())]
        lines += [f"3 {a} {b} {c}" for a, b, c in self.faces.tolist()]
        _write_atomically(path, "\n".join(lines) + "\n")


def boundary_surface(orbital, fraction=0.9, points=101, radius=None):
    """The surface of constant density that encloses `fraction` of the probability, found by
    marching cubes (scikit-image) over a cube of points³ samples, half-edge radius Bohr (None:
    where 99.99 % of the probability lies, with a margin). Single orbitals give one part per
    sign of psi; shell averages one unsigned part. Any state (a State, Superposition or text
    form) takes the engine's own mesh at time t = 0, its level found from the exact density,
    with `points` - 1 cells along the cube's edge and each vertex's phase."""
    found = _state_or_index(orbital)
    if isinstance(found, Superposition):
        if not 0 < fraction < 1:
            raise ValueError(f"fraction {fraction} is outside (0, 1)")
        level, vertices, phase, faces = _core.surface(found._core, 0.0, float(fraction),
                                                      int(points) - 1)
        signs = np.where(np.cos(phase) >= 0, 1, -1).astype(np.int8)
        return Surface(vertices.astype(np.float64), faces.astype(np.int64), signs, level,
                       fraction, phase)
    from skimage.measure import marching_cubes

    if not 0 < fraction < 1:
        raise ValueError(f"fraction {fraction} is outside (0, 1)")
    index = _index(orbital)
    axis = _cube_axis(index, radius, points)
    h = axis[1] - axis[0]
    x, y, z = np.meshgrid(axis, axis, axis, indexing="ij")
    rho = density(index, x, y, z)
    # The level whose superlevel set holds the fraction of the sampled probability.
    ordered = np.sort(rho.ravel())[::-1]
    cumulative = np.cumsum(ordered)
    level = float(ordered[np.searchsorted(cumulative, fraction * cumulative[-1])])
    if _CATALOGUE[index].averaged:
        parts = [(rho, level, 0)]
    else:
        psi = wavefunction(index, x, y, z)
        parts = [(psi, np.sqrt(level), 1), (-psi, np.sqrt(level), -1)]
    vertices, faces, signs, count = [], [], [], 0
    for field, threshold, sign in parts:
        if field.max() <= threshold:
            continue
        v, f, _, _ = marching_cubes(field, threshold, spacing=(h, h, h))
        vertices.append(v + axis[0])
        faces.append(f + count)
        signs.append(np.full(len(v), sign, dtype=np.int8))
        count += len(v)
    return Surface(np.concatenate(vertices), np.concatenate(faces), np.concatenate(signs),
                   level, fraction)


def write_cube(path, orbital, quantity="psi", view="pdf", points=81, radius=None):
    """Writes a Gaussian cube file of psi (quantity "psi", single orbitals) or the normalised
    density of a view (quantity "density") over a cube of points³ samples centred on the
    nucleus, half-edge radius Bohr (None: where 99.99 % of the probability lies, with a
    margin). x outermost, z innermost, six values a line."""
    index = _index(orbital)
    axis = _cube_axis(index, radius, points)
    x, y, z = np.meshgrid(axis, axis, axis, indexing="ij")
    if quantity == "psi":
        values, what = wavefunction(index, x, y, z), "psi: signed wavefunction, Bohr^(-3/2)"
    elif quantity == "density":
        values, what = density(index, x, y, z, view), f"{view}: normalised density"
    else:
        raise ValueError(f"quantity {quantity!r} is neither 'psi' nor 'density'")
    step, origin, n = axis[1] - axis[0], axis[0], len(axis)
    name = ("av" if _CATALOGUE[index].averaged else "") + _CATALOGUE[index].name
    out = [f"Veltara {name} {what}",
           f"{n} points per axis, step {step:.10g} Bohr; x outer, y middle, z inner",
           f"{1:5d}{origin:12.6f}{origin:12.6f}{origin:12.6f}",
           f"{n:5d}{step:12.6f}{0:12.6f}{0:12.6f}", f"{n:5d}{0:12.6f}{step:12.6f}{0:12.6f}",
           f"{n:5d}{0:12.6f}{0:12.6f}{step:12.6f}",
           f"{1:5d}{1:12.6f}{0:12.6f}{0:12.6f}{0:12.6f}"]
    for run in values.reshape(n * n, n).tolist():
        out += ["".join(f"{v:13.5E}" for v in run[i:i + 6]) for i in range(0, n, 6)]
    _write_atomically(path, "\n".join(out) + "\n")
