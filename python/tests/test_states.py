"""States beyond the catalogue from Python, against sympy's hydrogen functions (complex
harmonics with the Condon-Shortley phase), its Laguerre polynomials and closed forms worked by hand."""
import math

import numpy as np
import pytest
import sympy
from sympy.physics.hydrogen import Psi_nlm

import veltara

CLOCK = 123456789
rs, ths, phs = sympy.symbols("r theta phi", real=True)


def sympy_psi(n, l, m, basis, Z, x, y, z):
    """psi from sympy's complex Psi_nlm; the real basis as (-1)^m sqrt2 Re/Im of Y_l^|m|, which
    undoes the Condon-Shortley phase (m > 0 the cos combination, m < 0 the sin one)."""
    f = sympy.lambdify((rs, phs, ths), Psi_nlm(n, l, abs(m), rs, phs, ths, Z), "numpy")
    r = np.sqrt(x * x + y * y + z * z)
    value = f(r, np.arctan2(y, x), np.arccos(np.clip(z / r, -1, 1)))
    if basis == "complex":
        return value if m >= 0 else (-1) ** m * np.conj(value)
    if m == 0:
        return value.real
    part = value.real if m > 0 else value.imag
    return (-1) ** m * math.sqrt(2) * part


@pytest.mark.parametrize("n,l,m,basis,Z", [(7, 3, -2, "real", 1), (5, 2, 1, "real", 3),
                                           (2, 1, 1, "complex", 1), (6, 4, -3, "complex", 2),
                                           (12, 5, 4, "real", 1)])
def test_wavefunction_matches_sympy_in_both_bases(n, l, m, basis, Z):
    xyz = np.random.default_rng(n * 10 + l).normal(0, 1.5 * n * n / Z, (400, 3))
    psi = veltara.wavefunction(veltara.State(n, l, m, basis, Z), *xyz.T)
    assert psi.dtype == (np.float64 if basis == "real" else np.complex128)
    expected = sympy_psi(n, l, m, basis, Z, *xyz.T)
    assert np.allclose(psi, expected, rtol=1e-9, atol=1e-12 * np.abs(expected).max())


def test_the_real_p_states_point_along_x_and_y_and_match_the_catalogue():
    x, y, z = np.random.default_rng(3).uniform(-9, 9, (3, 500))
    assert np.array_equal(veltara.density(veltara.State(2, 1, 1), x, y, z),
                          veltara.density("2Px", x, y, z))
    assert np.all(veltara.wavefunction(veltara.State(2, 1, -1), 0, 2.0, 0) > 0)
    grown = veltara.Engine(clock_ms=CLOCK).add(veltara.State(3, 2, 0), dots=2000)
    named = veltara.Engine(clock_ms=CLOCK).add("3Dz2", dots=2000)
    assert np.array_equal(grown.grid, named.grid)
    assert grown.dots.tobytes() == named.dots.tobytes()
    assert np.array_equal(grown.render(), named.render())


def test_superposition_facts_and_dtypes():
    s = veltara.parse("1,0,0+2,1,0")
    f = veltara.facts(s)
    # <E> = (-1/2 - 1/8) / 2; the one beat: 3/8 hartree, 2 pi hbar / dE, h c / dE.
    assert f.energy_hartree == pytest.approx(-0.3125, rel=1e-15)
    (beat,) = f.beats
    assert beat.delta_hartree == pytest.approx(0.375, rel=1e-15)
    assert beat.period_fs == pytest.approx(0.405, abs=5e-4)
    assert beat.wavelength_nm == pytest.approx(121.5, abs=0.05)
    assert veltara.wavefunction(s, 1.0, 0, 0).dtype == np.float64
    assert veltara.wavefunction(s, 1.0, 0, 0, t=0).dtype == np.complex128
    assert veltara.wavefunction("0.6*2,1,0-0.8i*1,0,0", 1.0, 0, 0).dtype == np.complex128
    assert veltara.facts(veltara.State(3, 0, 0, Z=2)).energy_ev == pytest.approx(
        -4 / 18 * 27.211386245988, rel=1e-12)
    # 3s (a catalogue row, given as a state) and 5s: R_n0 vanishes where L_(n-1)^(1)(2r/n) does.
    x = sympy.symbols("x")
    for n in (3, 5):
        poly = sympy.Poly(sympy.assoc_laguerre(n - 1, 1, x), x)
        roots = np.roots([float(c) for c in poly.all_coeffs()])
        assert veltara.facts(f"{n},0,0").node_radii == pytest.approx(sorted(n / 2 * roots.real),
                                                                    rel=1e-8)


def test_samples_follow_the_radial_distribution_and_repeat_with_the_seed():
    from scipy.stats import kstest
    s = veltara.sample(veltara.State(2, 1, 0), 20000, seed=1)
    r = np.linalg.norm(s.points, axis=1)
    # 2p: P(r) = r^4 e^(-r) / 24, so P(r < R) = 1 - e^(-R)(1 + R + R²/2 + R³/6 + R^4/24); the
    # angular density goes as cos² theta, so P(cos theta < u) = (u³ + 1) / 2.
    assert kstest(r, lambda R: 1 - np.exp(-R) * (1 + R + R**2 / 2 + R**3 / 6 + R**4 / 24)
                  ).pvalue > 0.01
    assert kstest(s.points[:, 2] / r, lambda u: (u**3 + 1) / 2).pvalue > 0.01
    assert set(np.unique(s.phase)) == {0.0, math.pi}
    assert np.array_equal(np.sign(s.points[:, 2]), np.where(s.phase == 0, 1, -1))
    again = veltara.sample(veltara.State(2, 1, 0), 20000, seed=1)
    assert np.array_equal(again.points, s.points)


def test_bad_input_names_the_field():
    for make, words in [(lambda: veltara.State(0, 0, 0), "n must"),
                        (lambda: veltara.State(3, 3, 0), "l must"),
                        (lambda: veltara.State(2, 1, 2), "m must"),
                        (lambda: veltara.State(1, 0, 0, Z=0), "Z must"),
                        (lambda: veltara.parse("3,3,0"), "l must"),
                        (lambda: veltara.parse("2,1,"), "at character"),
                        (lambda: veltara.hybrid("sp3", 4), "")]:
        with pytest.raises(veltara.EngineError, match=words) as caught:
            make()
        assert caught.value.number == 5
    with pytest.raises(TypeError, match="whole number"):
        veltara.State(2.5, 1, 0)
    with pytest.raises(ValueError, match="count"):
        veltara.sample("1,0,0", -1)
