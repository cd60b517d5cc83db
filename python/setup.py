"""Builds veltara._core: the binding and the engine's C++ sources, compiled from the repository
around this folder with the engine's floating-point rules (no contraction, no fast-math), so
the package computes the same bytes as the engine's other hosts."""
import glob
import os
import sys

from pybind11.setup_helpers import ParallelCompile, Pybind11Extension, build_ext
from setuptools import setup

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
LAYERS = ["support", "electron", "render", "engine", "about"]


class BuildWithEngine(build_ext):
    """Adds the engine's sources at build time: they lie outside this folder, which setup()
    arguments may not name."""

    def build_extension(self, ext):
        engine = sorted(f for layer in LAYERS for f in glob.glob(os.path.join(ROOT, layer, "*.cpp")))
        if not os.path.exists(os.path.join(ROOT, "records", "PublicTypes.h")) or not engine:
            sys.exit("veltara: build from the python/ folder of a Veltara clone: the engine's "
                     f"sources ({', '.join(LAYERS)}) were not found in {ROOT}")
        ext.sources = list(ext.sources) + engine
        ext.include_dirs = list(ext.include_dirs) + [ROOT]
        super().build_extension(ext)


# Two compilers at once by default (VELTARA_BUILD_JOBS to change): the engine is some twenty files.
ParallelCompile("VELTARA_BUILD_JOBS", default=2).install()

setup(
    ext_modules=[Pybind11Extension(
        "veltara._core", ["src/core_module.cpp"], cxx_std=20,
        extra_compile_args=["-O2", "-ffp-contract=off", "-fno-fast-math"])],
    cmdclass={"build_ext": BuildWithEngine},
)
