#!/usr/bin/env python3
"""Writes tests/data/state_values.txt: psi of randomly drawn hydrogen-like states (n up to 30, both
bases, Z up to 3) at points spread over each state's extent, at 80 digits with mpmath, from
the explicit sums of the Laguerre and Legendre polynomials (no recurrence).

Each line: n l m basis(r|c) Z x y z Re(psi) Im(psi) max|psi|. Run: python3 scripts/state_values.py
"""
import os
import random

from mpmath import mp, mpf, binomial, factorial, sqrt, exp, cos, sin, atan2, acos, pi

mp.dps = 80


def laguerre(k, alpha, x):
    return sum((-1) ** i * binomial(k + alpha, k - i) * x ** i / factorial(i) for i in range(k + 1))


def radial(n, l, Z, r):
    rho = 2 * mpf(Z) * r / n
    norm = sqrt((2 * mpf(Z) / n) ** 3 * factorial(n - l - 1) / (2 * n * factorial(n + l)))
    return norm * exp(-rho / 2) * rho ** l * laguerre(n - l - 1, 2 * l + 1, rho)


def legendre_m(l, m, x):
    """P_l^m(x) without the Condon-Shortley phase: (1 - x^2)^(m/2) d^m/dx^m P_l(x)."""
    total = 0
    for k in range(l // 2 + 1):
        power = l - 2 * k
        if power < m:
            continue
        coef = (-1) ** k * binomial(l, k) * binomial(2 * l - 2 * k, l) / mpf(2) ** l
        total += coef * factorial(power) / factorial(power - m) * x ** (power - m)
    return (1 - x * x) ** (mpf(m) / 2) * total


def harmonic(l, m, basis, theta, phi):
    a = abs(m)
    norm = sqrt((2 * l + 1) / (4 * pi) * factorial(l - a) / factorial(l + a))
    p = norm * legendre_m(l, a, cos(theta))
    if basis == "c":
        # Y_l^m = (-1)^m N P_l^m e^(i m phi) for m >= 0; Y_l^-m = (-1)^m conj(Y_l^m).
        sign = (-1) ** m if m > 0 else 1
        return sign * p * cos(m * phi), sign * p * sin(m * phi)
    if m == 0:
        return p, mpf(0)
    return sqrt(2) * p * (cos(m * phi) if m > 0 else sin(a * phi)), mpf(0)


def max_abs(n, l, m, basis, Z):
    """max|psi| = max|R| max|Y| (psi separates): both maxima by a fine scan."""
    top = mpf(3) * n * n / Z
    best_r = max(abs(radial(n, l, Z, top * i / 600)) for i in range(601))
    best_y = max(abs(complex(*harmonic(l, m, basis, pi * i / 400, 0 if m >= 0 else pi / (2 * abs(m)))))
                 for i in range(401))
    return best_r * best_y


def main():
    rng = random.Random(20261123)
    lines = []
    states = [(30, 0, 0), (30, 29, 29), (30, 29, -17), (30, 12, 5), (1, 0, 0), (25, 3, -3)]
    while len(states) < 70:
        n = rng.randint(1, 30)
        l = rng.randint(0, n - 1)
        states.append((n, l, rng.randint(-l, l)))
    for index, (n, l, m) in enumerate(states):
        basis = "rc"[index % 2]
        Z = 1 + index % 3
        peak = max_abs(n, l, m, basis, Z)
        points = [(0.0, 0.0, 0.5 * n * n / Z)]
        while len(points) < 12:
            r = rng.uniform(0.0, 2.5 * n * n / Z)
            v = [rng.gauss(0, 1) for _ in range(3)]
            s = sum(c * c for c in v) ** 0.5
            points.append(tuple(r * c / s for c in v))
        for x, y, z in points:
            X, Y, Zc = mpf(x), mpf(y), mpf(z)
            r = sqrt(X * X + Y * Y + Zc * Zc)
            theta = acos(Zc / r)
            phi = atan2(Y, X)
            re, im = harmonic(l, m, basis, theta, phi)
            R = radial(n, l, Z, r)
            lines.append(f"{n} {l} {m} {basis} {Z} {x!r} {y!r} {z!r} "
                         f"{mp.nstr(R * re, 20)} {mp.nstr(R * im, 20)} {mp.nstr(peak, 20)}")
    with open(os.path.join(os.path.dirname(__file__), "..", "tests", "data", "state_values.txt"), "w") as out:
        out.write("# n l m basis Z x y z Re(psi) Im(psi) max|psi|; made by scripts/state_values.py\n")
        out.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
