"""A tour of the veltara package: a picture, the grid and dots of 3Dz², the signed wavefunction
of 2Px, the textbook facts of 3S, and files for other programs.

    python orbital_tour.py [OUTPUT_FOLDER]
"""
import pathlib
import sys

import numpy as np

import veltara

out = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else "veltara-tour")
out.mkdir(exist_ok=True)

# An orbital in an engine; a fixed clock gives the same dots on every run.
engine = veltara.Engine(clock_ms=123456789)
orbital = engine.add("3Dz2", view="pdf", dots=5000)
picture = orbital.render(mode="orthographic", theta=0.4, phi=0.3)  # (375, 375, 3) RGB
header = f"P6 {picture.shape[1]} {picture.shape[0]} 255\n".encode()
(out / "3Dz2.ppm").write_bytes(header + picture.tobytes())  # any image viewer opens PPM
print(f"{orbital}: {len(orbital.dots)} dots, most frequent level {orbital.stats['mode']}")
print("grid level at the nucleus and 5 Bohr up the z axis:",
      orbital.grid[0, 0, 0], orbital.grid[0, 0, round(5 * 127 / orbital.setup["radius"])])

# The signed wavefunction: psi changes sign through the nodal plane x = 0.
x = np.linspace(-4, 4, 9)
print("2Px psi along x:", np.round(veltara.wavefunction("2Px", x, 0, 0), 4))

# Facts against the radial distribution's own peak.
facts = veltara.facts("3S")
r = np.linspace(0, 30, 30001)
print(f"3S: {facts.radial_nodes} radial nodes, E = {facts.energy_hartree:.6f} hartree, "
      f"<r> = {facts.mean_radius}, most probable r = {facts.most_probable_radius:.4f} "
      f"(grid peak {r[np.argmax(veltara.radial_distribution('3S', r))]:.3f})")

# Files: a cube of psi for Avogadro or VMD, the 90 % boundary surface for Blender or MeshLab.
veltara.write_cube(out / "3Dxy-psi.cube", "3Dxy", quantity="psi")
surface = veltara.boundary_surface("3Dxy", fraction=0.9)
surface.write_ply(out / "3Dxy-90.ply")
print(f"wrote {out}/: 3Dz2.ppm, 3Dxy-psi.cube, 3Dxy-90.ply "
      f"({len(surface.faces)} triangles, lobes of both signs)")
