# Thin wrapper over CMake presets. `make test` is what CI runs.
JOBS ?= $(shell nproc)
CMAKE_FLAGS := $(if $(CI),-DFLK_WERROR=ON,)

.PHONY: all bootstrap build app package test test-tsan bench demo fuzz clean

all: build

bootstrap:
	@./scripts/bootstrap

build: bootstrap
	@cmake --preset release $(CMAKE_FLAGS) >/dev/null
	cmake --build build/release -j$(JOBS)

# The desktop program, built and started.
app: bootstrap
	@cmake --preset release $(CMAKE_FLAGS) >/dev/null
	cmake --build build/release -j$(JOBS) --target flickwell
	./build/release/bin/flickwell

# A Debian package of the Release build in build/release, its dependencies
# read off the programs' shared libraries; checked before it is announced.
package: bootstrap
	@cmake --preset release $(CMAKE_FLAGS) >/dev/null
	cmake --build build/release -j$(JOBS) --target flk_installable
	rm -f build/release/flickwell_*.deb
	cd build/release && cpack
	./tests/packaging/check-package build/release/flickwell_*.deb --depends

# Debug build with AddressSanitizer and UBSan, then every test; the desktop
# program's tests run on a virtual X display (xvfb-run, from CTest).
test: bootstrap
	@cmake --preset debug $(CMAKE_FLAGS) >/dev/null
	cmake --build build/debug -j$(JOBS)
	cd build/debug && ctest --output-on-failure -j$(JOBS)

# The tests that exercise threads, under ThreadSanitizer.
test-tsan: bootstrap
	@cmake --preset tsan $(CMAKE_FLAGS) >/dev/null
	cmake --build build/tsan -j$(JOBS) --target flk_tsan_tests
	cd build/tsan && LP_NUM_THREADS=0 TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" ctest --output-on-failure -j$(JOBS) -L tsan

# The main job: a sample recording into a template, exported to MP4 and GIF in build/demo/.
demo: bootstrap
	@cmake --preset release $(CMAKE_FLAGS) >/dev/null
	cmake --build build/release -j$(JOBS) --target flickwell-cli flk-make-recording
	./scripts/demo

bench: build
	@for b in build/release/bench/bench_*; do [ -x "$$b" ] && "$$b" --benchmark_min_time=0.5; done; true

# libFuzzer programs over documents, scene records and media; FUZZ_SECONDS each.
fuzz:
	@./scripts/bootstrap clang unzip
	./scripts/fuzz

clean:
	rm -rf build
