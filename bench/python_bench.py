"""The Python package beside numpy on a million points, run by hand (not a test):

    build/python-venv/bin/python bench/python_bench.py

For 3Dz2: numpy's closed form of the density and of psi against veltara.density and
veltara.wavefunction (one thread, and one per core), then two Python threads making one call
each against one thread making both, for density and for sample. Medians of repeated runs, ms."""
import os
import statistics
import threading
import time

import numpy as np

import veltara

N = 1_000_000
REPEATS = 15
rng = np.random.default_rng(7)
x, y, z = (rng.uniform(-20.0, 20.0, N) for _ in range(3))
C = 1.0 / (81.0 * np.sqrt(6.0 * np.pi))  # 3d_z2: psi = C e^(-r/3) (3z^2 - r^2)


def numpy_psi():
    r2 = x * x + y * y + z * z
    return C * np.exp(-np.sqrt(r2) / 3.0) * (3.0 * z * z - r2)


def numpy_density():
    psi = numpy_psi()
    return psi * psi


def median_ms(call):
    times = []
    for _ in range(REPEATS):
        start = time.perf_counter()
        call()
        times.append(time.perf_counter() - start)
    return 1000.0 * statistics.median(times)


def two_threads_ms(call):
    """Two calls in two Python threads at once, against the two calls one after the other."""
    def both():
        threads = [threading.Thread(target=call) for _ in range(2)]
        for t in threads:
            t.start()
        for t in threads:
            t.join()
    return median_ms(lambda: (call(), call())), median_ms(both)


def main():
    closed = numpy_density()
    assert np.allclose(veltara.density("3Dz2", x, y, z), closed, rtol=1e-12,
                       atol=1e-12 * closed.max())
    print(f"{N} points, vector path {veltara.simd()}, {os.cpu_count()} cores, "
          f"load average {os.getloadavg()[0]:.1f}")
    rows = [
        ("numpy closed form, density", numpy_density),
        ("veltara.density, 1 thread", lambda: veltara.density("3Dz2", x, y, z, threads=1)),
        ("veltara.density, a thread per core", lambda: veltara.density("3Dz2", x, y, z)),
        ("numpy closed form, psi", numpy_psi),
        ("veltara.wavefunction, 1 thread", lambda: veltara.wavefunction("3Dz2", x, y, z,
                                                                        threads=1)),
        ("veltara.wavefunction, a thread per core", lambda: veltara.wavefunction("3Dz2", x, y,
                                                                                 z)),
    ]
    base = {}
    for name, call in rows:
        ms = median_ms(call)
        kind = name.split(", ")[-1] if name.startswith("numpy") else None
        if kind:
            base[kind] = ms
        ratio = base["density" if "density" in name else "psi"] / ms
        print(f"{name:45s} {ms:8.2f} ms  {ratio:5.2f}x numpy")
    state = veltara.parse("3dz2")
    for name, call in [
            ("density, 1 thread per call", lambda: veltara.density("3Dz2", x, y, z, threads=1)),
            ("sample 100000", lambda: veltara.sample(state, 100_000, seed=1))]:
        serial, parallel = two_threads_ms(call)
        print(f"{name:32s} two calls: one thread {serial:8.2f} ms, two threads {parallel:8.2f} ms"
              f" ({serial / parallel:4.2f}x)")


if __name__ == "__main__":
    main()
