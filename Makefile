# Veltara: make run (the viewer) | make site | make gallery | make test | make test-python | make bench | make fuzz | make format
JOBS ?= $(shell nproc)
.PHONY: setup run site gallery check test test-release test-debug test-python test-fuzz fuzz fuzz-build bench format clean

setup:
	@bash scripts/setup

build/release/build.ninja: CMakeLists.txt CMakePresets.json
	cmake --preset release >/dev/null

build/debug/build.ninja: CMakeLists.txt CMakePresets.json
	cmake --preset debug >/dev/null

build/bench/build.ninja: CMakeLists.txt CMakePresets.json
	cmake --preset bench >/dev/null

build/fuzz/build.ninja: CMakeLists.txt CMakePresets.json fuzz/CMakeLists.txt
	cmake --preset fuzz >/dev/null

# The viewer as a static site in build/site: the page and the engine compiled to WebAssembly.
# Any static file server can host the folder (python3 -m http.server -d build/site).
site: setup build/release/build.ninja
	cmake --build --preset release -j $(JOBS) --target site
	rm -rf build/site && cp -r build/release/site build/site
	@echo "The viewer's site is in build/site."

# The viewer for local use: open the address it prints in a browser; Ctrl-C stops it.
run: site
	cmake --build --preset release -j $(JOBS) --target veltara_cli
	./build/release/cli/veltara serve

gallery: setup build/release/build.ninja
	cmake --build --preset release -j $(JOBS) --target veltara_cli
	./build/release/cli/veltara render --all --out-dir out/gallery
	@echo "Gallery of all 40 orbitals in out/gallery (contact sheet: out/gallery/contact-sheet.png)."

test-release: setup build/release/build.ninja
	cmake --build --preset release -j $(JOBS)
	ctest --preset release -j $(JOBS)

test-debug: setup build/debug/build.ninja
	cmake --build --preset debug -j $(JOBS)
	ctest --preset debug -j $(JOBS)

# The Python package, installed the documented way into a venv over Debian's Python (numpy,
# pytest, scikit-image, sympy), then tested from outside the source tree against the C library
# and the command of the release build.
PYVENV := build/python-venv
test-python: setup build/release/build.ninja
	cmake --build --preset release -j $(JOBS) --target veltara_c veltara_cli
	test -x $(PYVENV)/bin/python || /usr/bin/python3 -m venv --system-site-packages $(PYVENV)
	# setuptools rebuilds an object only when its own source changed, not a header it includes.
	rm -rf python/build
	VELTARA_BUILD_JOBS=$(JOBS) $(PYVENV)/bin/python -m pip install --quiet --no-index \
		--no-build-isolation --no-deps --force-reinstall ./python
	cd build && VELTARA_C_LIBRARY=$(CURDIR)/build/release/host/libveltara.so \
		VELTARA_BIN=$(CURDIR)/build/release/cli/veltara \
		python-venv/bin/python -m pytest -q -p no:cacheprovider ../python/tests

# The tree's own rules: no include runs upwards, every C/C++ file in the house format.
check: setup
	python3 scripts/check_layers
	bash scripts/check_test_ratio
	clang-format --dry-run --Werror $$(git ls-files '*.h' '*.cpp' '*.c')

# The libFuzzer targets of fuzz/, built with clang under the sanitizers (warnings are errors, so
# this build also keeps the code clean under clang). `make fuzz` runs each for FUZZ_SECONDS;
# the suite runs each for FUZZ_SMOKE_SECONDS from its checked-in seeds.
FUZZ_SECONDS ?= 600
FUZZ_SMOKE_SECONDS ?= 60
fuzz-build: setup build/fuzz/build.ninja
	cmake --build --preset fuzz -j $(JOBS)

fuzz: fuzz-build
	bash scripts/run_fuzz $(FUZZ_SECONDS)

test-fuzz: fuzz-build
	bash scripts/run_fuzz $(FUZZ_SMOKE_SECONDS)

# The suite runs twice: optimised, then under AddressSanitizer and UndefinedBehaviorSanitizer;
# then the fuzz targets' smoke runs.
test: check test-release test-debug test-python test-fuzz

bench: setup build/bench/build.ninja
	cmake --build --preset bench -j $(JOBS)
	@for b in build/bench/bench/*_bench; do echo "== $$b"; $$b --benchmark_min_time=0.2 || exit 1; done

format:
	clang-format -i $$(git ls-files '*.h' '*.cpp' '*.c')

clean:
	rm -rf build
