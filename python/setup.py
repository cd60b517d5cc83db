"""Builds veltara._core: the binding and the engine's C++ sources, compiled from the repository
around this folder with the engine's floating-point rules (no contraction, no fast-math), so
the package computes the same bytes as the engine's other hosts."""
import glob
import os
import platform
import re
import sys

from pybind11.setup_helpers import ParallelCompile, Pybind11Extension, build_ext
from setuptools import setup

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
# The engine and its C interface: the package reaches the engine only through the latter.
LAYERS = ["support", "electron", "render", "engine", "about", "host"]


def _version_header(folder):
    """The C interface's version header, made from the project's version as CMake makes it."""
    with open(os.path.join(ROOT, "CMakeLists.txt"), encoding="utf-8") as f:
        major, minor, patch = re.search(r"project\(Veltara VERSION (\d+)\.(\d+)\.(\d+)",
                                        f.read()).groups()
    with open(os.path.join(ROOT, "cmake", "veltara_version.h.in"), encoding="utf-8") as f:
        text = f.read()
    for key, value in {"PROJECT_VERSION_MAJOR": major, "PROJECT_VERSION_MINOR": minor,
                       "PROJECT_VERSION_PATCH": patch,
                       "PROJECT_VERSION": f"{major}.{minor}.{patch}"}.items():
        text = text.replace(f"@{key}@", value)
    os.makedirs(os.path.join(folder, "veltara"), exist_ok=True)
    with open(os.path.join(folder, "veltara", "veltara_version.h"), "w", encoding="utf-8") as f:
        f.write(text)


class BuildWithEngine(build_ext):
    """Adds the engine's sources at build time: they lie outside this folder, which setup()
    arguments may not name."""

    def build_extension(self, ext):
        engine = sorted(f for layer in LAYERS for f in glob.glob(os.path.join(ROOT, layer, "*.cpp")))
        if not os.path.exists(os.path.join(ROOT, "records", "PublicTypes.h")) or not engine:
            sys.exit("veltara: build from the python/ folder of a Veltara clone: the engine's "
                     f"sources ({', '.join(LAYERS)}) were not found in {ROOT}")
        generated = os.path.join(self.build_temp, "generated")
        _version_header(generated)
        ext.include_dirs = list(ext.include_dirs) + [ROOT, generated]
        # The wide forms of the exact exponential, of the orbitals' kernels and of the dot fill's
        # draw test are compiled for their instruction sets alone (as CMakeLists.txt does) and
        # called only on processors that have them.
        wide = {os.path.join(ROOT, *path): flag for path, flag in (
            (("support", "exact_math_avx2.cpp"), "-mavx2"),
            (("support", "exact_math_avx512.cpp"), "-mavx512f"),
            (("electron", "wide_rows_avx2.cpp"), "-mavx2"),
            (("electron", "wide_rows_avx512.cpp"), "-mavx512f"),
            (("render", "dot_draws_avx512.cpp"), "-mavx512f"))}
        if platform.machine().lower() in ("x86_64", "amd64"):
            for source, flag in wide.items():
                ext.extra_objects = list(ext.extra_objects) + self.compiler.compile(
                    [source], output_dir=self.build_temp, include_dirs=ext.include_dirs,
                    macros=ext.define_macros, extra_postargs=ext.extra_compile_args + [flag])
            engine = [f for f in engine if f not in wide]
        ext.sources = list(ext.sources) + engine
        super().build_extension(ext)


# Two compilers at once by default (VELTARA_BUILD_JOBS to change): the engine is some twenty files.
ParallelCompile("VELTARA_BUILD_JOBS", default=2).install()

setup(
    ext_modules=[Pybind11Extension(
        "veltara._core", ["src/core_module.cpp"], cxx_std=20,
        define_macros=[("VT_STATIC", None)],
        extra_compile_args=["-O2", "-ffp-contract=off", "-fno-fast-math"])],
    cmdclass={"build_ext": BuildWithEngine},
)
