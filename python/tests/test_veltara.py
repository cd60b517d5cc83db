"""The veltara package against independent sources: the C interface (libveltara.so through
ctypes, a separately built copy of the engine), sympy's hydrogen functions, hand-worked
spherical harmonics, and the veltara command's files."""
import ctypes
import math
import os
import pathlib
import struct
import subprocess

import numpy as np
import pytest
import sympy
from sympy.physics.hydrogen import E_nl, R_nl

import veltara

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = ROOT / "build" / "release"
CLOCK = 123456789
SINGLES = range(30)
SHELLS = [(1, 0), (2, 0), (2, 1), (3, 0), (3, 1), (3, 2), (4, 0), (4, 1), (4, 2), (4, 3)]


def test_installed_package_is_used():
    assert veltara.__version__ == "1.1.0"
    assert ROOT / "python" not in pathlib.Path(veltara.__file__).parents


# ---- the package against the C interface, byte for byte ---------------------------------

@pytest.fixture(scope="module")
def clib():
    lib = ctypes.CDLL(os.environ.get("VELTARA_C_LIBRARY", BUILD / "host" / "libveltara.so"))
    for name in ("vt_create", "vt_add", "vt_get_render", "vt_surface_read", "vt_get_grid",
                 "vt_get_dots", "vt_get_stats", "vt_real_density"):
        getattr(lib, name).restype = ctypes.c_int32
    lib.vt_create.argtypes = [ctypes.POINTER(ctypes.c_void_p)]
    lib.vt_add.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.POINTER(ctypes.c_int16)]
    lib.vt_get_render.argtypes = [ctypes.c_void_p, ctypes.c_int16, ctypes.c_char_p,
                                  ctypes.POINTER(ctypes.c_int32)]
    lib.vt_surface_read.argtypes = [ctypes.c_int32, ctypes.c_void_p, ctypes.c_size_t]
    lib.vt_get_grid.argtypes = [ctypes.c_void_p, ctypes.c_int16, ctypes.c_void_p, ctypes.c_size_t]
    lib.vt_get_dots.argtypes = [ctypes.c_void_p, ctypes.c_int16, ctypes.c_void_p, ctypes.c_int32,
                                ctypes.POINTER(ctypes.c_int32)]
    lib.vt_get_stats.argtypes = [ctypes.c_void_p, ctypes.c_int16, ctypes.c_void_p]
    lib.vt_real_density.argtypes = [ctypes.c_int16, ctypes.c_int32, ctypes.c_void_p,
                                    ctypes.c_size_t, ctypes.c_void_p]
    clock = ctypes.CFUNCTYPE(ctypes.c_int32, ctypes.c_void_p)(lambda ctx: CLOCK)
    lib.vt_set_clock.argtypes = [ctypes.c_void_p, ctypes.c_void_p]
    lib.vt_set_clock(ctypes.cast(clock, ctypes.c_void_p), None)
    lib.keep_clock = clock
    return lib


def c_model(lib, orbital, view, radius, threshold, dots):
    """Grid [x, y, z], dots, raw statistics and an orthographic RGB picture from the C
    interface."""
    engine, slot = ctypes.c_void_p(), ctypes.c_int16()
    assert lib.vt_create(ctypes.byref(engine)) == 0
    setup = struct.pack("<hhBBhi", radius, dots, threshold, 0, orbital, view)
    assert lib.vt_add(engine, setup, ctypes.byref(slot)) == 0
    # Theta, Phi, camera, plane, slice, transector, direction, size, mode, volume quality and
    # finish, the three colour flags, stereo factor.
    request = struct.pack("<ddhhhhiiihhhhhh", 0.4, 0.3, 400, 200, 0, 0, 0, 375, 0, 10, -1,
                          0, 0, 0, 20)
    handles = (ctypes.c_int32 * 2)()
    assert lib.vt_get_render(engine, slot, request, handles) == 0
    bgra = np.zeros((375, 375, 4), np.uint8)
    assert lib.vt_surface_read(handles[0], bgra.ctypes.data, bgra.nbytes) == 0
    grid = np.zeros(128 ** 3, np.uint8)
    assert lib.vt_get_grid(engine, slot, grid.ctypes.data, grid.size) == 0
    count = ctypes.c_int32()
    assert lib.vt_get_dots(engine, slot, None, 0, ctypes.byref(count)) == 0
    points = np.zeros((count.value, 4), np.int16)  # x, y, z, then p and a spare byte each
    assert lib.vt_get_dots(engine, slot, points.ctypes.data, count, ctypes.byref(count)) == 0
    stats = np.zeros(264, np.int32)  # 1056 bytes of 32-bit fields
    assert lib.vt_get_stats(engine, slot, stats.ctypes.data) == 0
    return grid.reshape(128, 128, 128).transpose(2, 1, 0), points, stats, bgra[..., 2::-1]


@pytest.mark.parametrize("name,orbital,view", [("3Dz2", 9, 0), ("av4P", 37, 1), ("4Fxyz", 27, 1),
                                               ("2S", 1, 0)])
def test_package_equals_c_interface(clib, name, orbital, view):
    entry = veltara.catalogue()[orbital]
    radius, threshold = (entry.pdf_radius, entry.pdf_threshold) if view == 0 else \
        (entry.drpdf_radius, entry.drpdf_threshold)
    grid, points, stats, picture = c_model(clib, orbital, view, radius, threshold, 4000)
    o = veltara.Engine(clock_ms=CLOCK).add(name, view=("pdf", "drpdf")[view], dots=4000)
    assert np.array_equal(o.grid, grid)
    assert o.dots.tobytes() == points.tobytes() and len(points) > 1000
    s = o.stats
    assert np.array_equal(s["prob_freqs"], stats[1:257])
    assert [s["total_samples"], s["mode"], s["calc_time"], s["calc_rate"], s["dot_target"],
            s["dot_total"], s["dot_time"]] == [stats[257], stats[258] & 255, *stats[259:264]]
    assert np.array_equal(o.render(mode="orthographic", size="main", theta=0.4, phi=0.3), picture)
    assert o.stats["frames_rendered"] == 1


def test_density_equals_c_interface(clib):
    xyz = np.random.default_rng(1).uniform(-30, 30, (2000, 3))
    for orbital in (0, 9, 26, len(veltara.catalogue()) - 1):
        for view in (0, 1):
            expected = np.zeros(len(xyz))
            assert clib.vt_real_density(orbital, view, xyz.ctypes.data, len(xyz),
                                        expected.ctypes.data) == 0
            got = veltara.density(orbital, xyz[:, 0], xyz[:, 1], xyz[:, 2], view=view)
            assert np.array_equal(got, expected)


# ---- the signed wavefunction -------------------------------------------------------------

def test_psi_squared_is_the_density_and_has_parity_minus_one_to_the_l():
    x, y, z = np.random.default_rng(2).uniform(-25, 25, (3, 20000))
    for orbital in SINGLES:
        psi = veltara.wavefunction(orbital, x, y, z)
        assert np.allclose(psi ** 2, veltara.density(orbital, x, y, z), rtol=1e-14, atol=0)
        l = veltara.facts(orbital).l
        assert np.array_equal(veltara.wavefunction(orbital, -x, -y, -z), (-1) ** l * psi)


S3, PI = math.sqrt(3), math.pi
# (orbital, unit direction, the real spherical harmonic there, worked by hand)
RAYS = [("1S", (1, 0, 0), 1 / math.sqrt(4 * PI)), ("2S", (0, 1, 0), 1 / math.sqrt(4 * PI)),
        ("3S", (0, 0, 1), 1 / math.sqrt(4 * PI)), ("4S", (1, 0, 0), 1 / math.sqrt(4 * PI)),
        ("2Px", (-1, 0, 0), -math.sqrt(3 / (4 * PI))), ("3Py", (0, 1, 0), math.sqrt(3 / (4 * PI))),
        ("4Pz", (0, 0, -1), -math.sqrt(3 / (4 * PI))),
        ("3Dz2", (0, 0, 1), 2 * math.sqrt(5 / (16 * PI))),
        ("3Dz2", (1, 0, 0), -math.sqrt(5 / (16 * PI))),
        ("3Dxy", (1 / 2 ** .5, -1 / 2 ** .5, 0), -math.sqrt(15 / (4 * PI)) / 2),
        ("4Dx2-y2", (0, 1, 0), -math.sqrt(15 / (16 * PI))),
        ("4Dxz", (1 / 2 ** .5, 0, 1 / 2 ** .5), math.sqrt(15 / (4 * PI)) / 2),
        ("4Fz3", (0, 0, 1), 2 * math.sqrt(7 / (16 * PI))),
        ("4Fxyz", (1 / S3, 1 / S3, 1 / S3), math.sqrt(105 / (4 * PI)) / (3 * S3)),
        ("4Fx(x2-3y2)", (1, 0, 0), math.sqrt(35 / (32 * PI))),
        ("4Fy(3x2-y2)", (0, 1, 0), -math.sqrt(35 / (32 * PI)))]


@pytest.mark.parametrize("name,direction,harmonic", RAYS)
def test_psi_along_a_ray_is_sympys_radial_function_times_the_harmonic(name, direction, harmonic):
    f = veltara.facts(name)
    r = sympy.symbols("r")
    radial = sympy.lambdify(r, R_nl(f.n, f.l, r, 1), "numpy")
    t = np.linspace(0.05, 45, 900)
    psi = veltara.wavefunction(name, *(t * c for c in direction))
    expected = radial(t) * harmonic
    assert np.allclose(psi, expected, rtol=1e-9, atol=1e-12 * np.abs(expected).max())
    assert np.count_nonzero(np.diff(np.signbit(psi))) == f.radial_nodes


def test_shell_averages_have_no_sign():
    with pytest.raises(veltara.EngineError) as caught:
        veltara.wavefunction("av3D", 1.0, 2.0, 3.0)
    assert caught.value.number == 5 and "Invalid procedure call" in str(caught.value)


# ---- closed forms of the facts -----------------------------------------------------------

@pytest.mark.parametrize("n,l", SHELLS)
def test_facts_and_radial_distribution_match_sympy(n, l):
    r = sympy.symbols("r", positive=True)
    p = sympy.expand(r ** 2 * R_nl(n, l, r, 1) ** 2)
    q = sympy.expand(p * sympy.exp(2 * r / n))  # P = q e^(-2r/n), q a polynomial
    members = [e.index for e in veltara.catalogue() if (e.n, e.l) == (n, l)]
    grid = np.linspace(0, 60, 601)
    expected = sympy.lambdify(r, p, "numpy")(grid)
    peaks = [float(v) for v in sympy.Poly(sympy.diff(q, r) - 2 * q / n, r).real_roots() if v > 0]
    best = max(peaks, key=lambda v: float(p.subs(r, v)))
    for orbital in members:
        assert np.allclose(veltara.radial_distribution(orbital, grid), expected, rtol=1e-12,
                           atol=1e-14)
        f = veltara.facts(orbital)
        assert (f.n, f.l, f.radial_nodes, f.angular_nodes) == (n, l, n - l - 1, l)
        assert f.energy_hartree == float(E_nl(n))
        assert f.mean_radius == float(sympy.integrate(r * p, (r, 0, sympy.oo)))
        assert f.most_probable_radius == pytest.approx(best, rel=1e-12)


# ---- errors and names --------------------------------------------------------------------

def test_unknown_names_raise_value_error_with_close_matches():
    with pytest.raises(ValueError, match="3Dz²"):
        veltara.Engine(clock_ms=CLOCK).add("3Dzz")
    with pytest.raises(ValueError, match="2Px"):
        veltara.density("2Pw", 0, 0, 1)
    with pytest.raises(ValueError):
        veltara.facts(len(veltara.catalogue()))


def test_anaglyph_with_stereo_factor_zero_raises_11():
    o = veltara.Engine(clock_ms=CLOCK).add("2Pz", dots=500)
    with pytest.raises(veltara.EngineError) as caught:
        o.render(mode="anaglyph", stereo_factor=0)
    assert caught.value.number == 11 and caught.value.message == "Division by zero"


# ---- surfaces and files ------------------------------------------------------------------

def test_boundary_surface_encloses_the_fraction_with_the_signs_of_psi(tmp_path):
    # 1S: the probability inside r is 1 - e^(-2r)(1 + 2r + 2r²); solved for 0.9 by sympy.
    r = sympy.symbols("r")
    r90 = float(sympy.nsolve(1 - sympy.exp(-2 * r) * (1 + 2 * r + 2 * r ** 2) - 0.9, r, 2.5))
    sphere = veltara.boundary_surface("1S", fraction=0.9)
    assert np.linalg.norm(sphere.vertices, axis=1) == pytest.approx(r90, rel=0.02)
    lobes = veltara.boundary_surface("2Px")
    assert set(np.unique(lobes.signs)) == {-1, 1}
    assert np.array_equal(np.sign(lobes.vertices[:, 0]), lobes.signs)
    lobes.write_ply(tmp_path / "2px.ply")
    text = (tmp_path / "2px.ply").read_text().splitlines()
    assert f"element vertex {len(lobes.vertices)}" in text and text[-1].startswith("3 ")


def read_cube(path):
    lines = pathlib.Path(path).read_text().splitlines()
    n, step = int(lines[3].split()[0]), float(lines[3].split()[1])
    origin = float(lines[2].split()[1])
    values = np.array(" ".join(lines[7:]).split(), float).reshape(n, n, n)
    axis = origin + step * np.arange(n)
    return np.meshgrid(axis, axis, axis, indexing="ij"), values


def test_cube_files_of_psi_from_python_and_the_command(tmp_path):
    veltara.write_cube(tmp_path / "a.cube", "3Dxy", points=31)
    command = os.environ.get("VELTARA_BIN", BUILD / "cli" / "veltara")
    subprocess.run([command, "export", "3Dxy", "--cube", tmp_path / "b.cube", "--quantity",
                    "psi", "--stride", "16"], check=True, capture_output=True)
    for name in ("a.cube", "b.cube"):
        (x, y, z), values = read_cube(tmp_path / name)
        psi = veltara.wavefunction("3Dxy", x, y, z)
        assert np.allclose(values, psi, rtol=1e-5, atol=1e-7)  # header: 6 decimals
        assert (values > 0).any() and (values < 0).any()


def test_the_command_prints_the_facts():
    command = os.environ.get("VELTARA_BIN", BUILD / "cli" / "veltara")
    text = subprocess.run([command, "info", "4s", "--points", "3", "--rmax", "30"], check=True,
                          capture_output=True, text=True).stdout
    for line in ("nodes: 3 radial, 0 angular", "energy: -0.03125 hartree",
                 "mean radius <r>: 24 Bohr"):
        assert line in text
    # 4s: P(r) = r² R_40² with sympy's R_40, at r = 30.
    assert float(text.split()[-1]) == pytest.approx(
        float((sympy.Integer(30) * R_nl(4, 0, 30, 1)) ** 2), rel=1e-6)
