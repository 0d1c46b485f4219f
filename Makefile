# The commands users type. Each configures its CMake preset once and builds
# incrementally; ccache keeps rebuilds cheap.
#   make test            every test: Linux default + asan + tsan, fuzzing, Windows
#   make demo            build and run the examples
#   make bench           build and run the benchmarks
#   make check-windows   MinGW-w64 x86-64 tests under Wine, x86 link check
#   make fuzz            run every libFuzzer target, FUZZ_SECONDS in all
#   make mutants         plant MUTANTS faults (seed SEED) and check the unit tests catch them

FUZZ_SECONDS ?= 150
JOBS ?= $(shell nproc)
export CCACHE_DIR ?= $(HOME)/.cache/zantor-ccache
# Paths relative to the checkout, so clones and worktrees share cache entries.
export CCACHE_BASEDIR ?= $(CURDIR)
export WINEDEBUG := -all
export WINEPREFIX ?= $(HOME)/.cache/zantor-wine

.PHONY: all deps test test-linux demo bench check-windows fuzz mutants clean

all: deps
	@$(MAKE) --no-print-directory build-default

deps:
	@scripts/install-deps.sh

# Keep the generated build files: make would otherwise delete them as
# intermediates and every command would configure again.
.PRECIOUS: build/%/build.ninja
build/%/build.ninja:
	cmake --preset $* -Wno-dev >/dev/null

build-%: build/%/build.ninja
	cmake --build --preset $* -j $(JOBS)

test: deps
	@$(MAKE) --no-print-directory test-linux
	@$(MAKE) --no-print-directory fuzz
	@$(MAKE) --no-print-directory check-windows

test-linux: build-default build-asan build-tsan
	ctest --preset default
	ctest --preset asan
	ctest --preset tsan

demo: deps build-default
	@for program in build/default/bin/example-*; do \
	  echo "== $$(basename $$program)"; $$program || exit 1; echo; done

bench: deps build-default
	@for program in build/default/bin/bench-*; do \
	  echo "== $$(basename $$program)"; $$program --benchmark_min_time=0.2 || exit 1; done

fuzz: deps build-fuzz
	scripts/run-fuzzers.sh build/fuzz/bin $(FUZZ_SECONDS)

check-windows: deps build-windows-x64 build-windows-x86
	scripts/run-wine-tests.sh build/windows-x64

# A developer tool, not part of make test: works in a copy under build/mutants.
MUTANTS ?= 40
SEED ?= 1
mutants: deps
	python3 scripts/mutants.py -n $(MUTANTS) --seed $(SEED) $(if $(ONLY),--only $(ONLY))

clean:
	rm -rf build
