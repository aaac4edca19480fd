# The words of this project. `make demo` and `make test` do everything, set-up included.
.PHONY: help setup build demo test bench fuzz format lint docs asan tsan coverage install deb clean
PRESET ?= dev
JOBS ?= $(shell nproc)

help:
	@echo "make demo      build, then watch requests travel between real processes, a crash, and the interface"
	@echo "make test      build, then run every test"
	@echo "make build     everything into build/PRESET (default dev), or TARGET alone; the programs lie in its Apps/"
	@echo "make setup     the Debian packages that a build needs; every word here sees to its own"
	@echo "make bench     side-by-side runs against peers; writes build/bench.txt"
	@echo "make fuzz      each fuzz target for FUZZ_SECONDS (default 60)"
	@echo "make asan|tsan the whole test suite under the sanitizers"
	@echo "make coverage  line coverage of the test suite"
	@echo "make format    lay all sources out by .clang-format"
	@echo "make lint      floors, headers, formatting, clang-tidy"
	@echo "make docs      the documents' examples taken over from docs/examples and held to what they print"
	@echo "make install   into PREFIX (default /usr/local)"
	@echo "make deb       Debian packages of the programs and of the libraries"
	@echo "make clean     all that was built goes"

setup:
	@scripts/setup build

build: setup
	@mkdir -p build
	@cmake --preset $(PRESET) >build/configure.log 2>&1 || { cat build/configure.log; exit 1; }
	@cmake --build build/$(PRESET) -j $(JOBS) $(if $(TARGET),--target $(TARGET))

test: build
	@ctest --test-dir build/$(PRESET) --output-on-failure -j $(JOBS)

demo: build
	@scripts/demo build/$(PRESET)

asan tsan:
	@$(MAKE) --no-print-directory test PRESET=$@

coverage:
	@$(MAKE) --no-print-directory test PRESET=coverage
	@scripts/coverage build/coverage

bench:
	@scripts/setup build bench
	@$(MAKE) --no-print-directory build PRESET=release TARGET=zqcore_bench
	@scripts/bench build/release

FUZZ_SECONDS ?= 60
fuzz:
	@scripts/setup build fuzz
	@$(MAKE) --no-print-directory build PRESET=fuzz
	@scripts/fuzz build/fuzz $(FUZZ_SECONDS)

format:
	@scripts/setup lint
	@git ls-files '*.h' '*.cpp' | xargs clang-format -i

lint:
	@scripts/setup build lint
	@scripts/lint

docs: build
	@scripts/check-snippets --write
	@scripts/check-examples build/$(PRESET)

PREFIX ?= /usr/local
install:
	@$(MAKE) --no-print-directory build PRESET=release
	@cmake --install build/release --prefix $(PREFIX)

deb:
	@scripts/setup build deb
	@$(MAKE) --no-print-directory build PRESET=package
	@cd build/package && cpack -G DEB >cpack.log 2>&1 || { cat cpack.log; exit 1; }
	@ls build/package/*.deb

clean:
	@rm -rf build
