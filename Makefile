# The front door: each word sets up what it needs on a fresh Debian 12 machine and runs a CMake preset.
.DEFAULT_GOAL := help
.PHONY: help run test windows test-windows sanitize threads helgrind coverage seeded fuzz reliability bench install package doc \
        format check-format clean

JOBS ?= $(shell nproc)
CORE ?= 0
REPETITIONS ?= 9
PREFIX ?= /usr/local
ROWS ?= .
RUNS ?= 100000
OPERATIONS ?= 100000

# $(call build,PRESET[,TARGET]): configures a preset and builds it, or the one target.
build = cmake --preset $(1) >build/$(1).configure.log || { cat build/$(1).configure.log; exit 1; }; \
        cmake --build --preset $(1) --parallel $(JOBS) $(if $(2),--target $(2))

# $(call measure,PRESET,PROGRAM): runs the benchmarks on one core, in random order.
measure = taskset -c $(CORE) $(2) --benchmark_enable_random_interleaving=true \
        --benchmark_repetitions=$(REPETITIONS) --benchmark_min_time=0.05 --benchmark_filter='$(ROWS)' \
        --benchmark_out=build/$(1)/results.json --benchmark_out_format=json >build/$(1)/results.log

help:  ## what can be made
	@sed -n 's/^\([a-z-]*\):.*## /\1|/p' Makefile | awk -F'|' '{ printf "make %-14s %s\n", $$1, $$2 }'

setup-%:
	@mkdir -p build
	@tools/setup $*

run: setup-native  ## the main job on a sample policy, with a simulated service
	@$(call build,native,patchhost)
	@tools/run-main-job native

test: setup-native  ## the whole native suite
	@$(call build,native)
	@ctest --preset native

windows: setup-windows  ## the 32-bit DLL, the host tool and the tests as .exe
	@$(call build,windows)

test-windows: windows  ## the tests and the main job against the DLL, under 32-bit Wine
	@ctest --preset windows

sanitize: setup-native  ## the native suite under the address and undefined-behaviour sanitizers
	@$(call build,sanitize)
	@ctest --preset sanitize

threads: setup-native  ## the native suite under the thread sanitizer
	@$(call build,threads)
	@ctest --preset threads -E AThousandLoads # which counts threads, and the sanitizer has one

helgrind: setup-helgrind  ## eight threads in the adapter, OPERATIONS calls, under Valgrind's lock checker (ten minutes)
	@$(call build,native,OperationsRaceTest)
	@OV_OPERATIONS='$(OPERATIONS)' OVPLATFORM_REGISTRY=:memory: valgrind --tool=helgrind --error-exitcode=1 --quiet \
	    --history-level=approx --suppressions=tests/reliability/helgrind.supp build/native/bin/OperationsRaceTest

coverage: setup-coverage  ## the lines and branches of ovCore/ and PatchAdapter/ that the native suite reaches
	@$(call build,coverage)
	@find build/coverage -name '*.gcda' -delete
	@ctest --preset coverage -E '^PackageInstalled|AThousandLoads' # paths and memory that the counting needs
	@mkdir -p build/coverage/report
	@gcovr --root . --filter ovCore/ --filter PatchAdapter/ --exclude-throw-branches --exclude-unreachable-branches \
	    --print-summary --json build/coverage/report/coverage.json --html-details build/coverage/report/index.html \
	    build/coverage
	@echo "coverage: line by line in build/coverage/report/index.html"
	@tests/coverage/explained build/coverage/report/coverage.json docs/coverage.md

seeded: setup-native  ## seeded faults, one after the other, each of which the suite must notice (half an hour)
	@tests/seeded/run

fuzz: setup-fuzz  ## the fuzz targets under sanitizers, RUNS executions of each
	@$(call build,fuzz,fuzzTargets)
	@RUNS='$(RUNS)' tests/fuzz/run

reliability: setup-native  ## the long form of the reliability tests
	@$(call build,native)
	@OV_LONG=1 ctest --preset native --timeout 3600 -R '^(EveryPlatformCall|EveryAllocation|KilledAt|OperationsRace|OvFault|HostileArguments|ThreatTable|Soak)'

bench: setup-bench setup-bench-windows  ## the library beside its peers; renews the tables of docs/performance.md (an hour)
	@$(call build,bench,bench)
	@OVPLATFORM_REGISTRY=:memory: $(call measure,bench,build/bench/bin/bench)
	@bench/table build/bench/results.json docs/performance.md
	@$(call build,bench-windows,bench)
	@$(call measure,bench-windows,tools/wine build/bench-windows/bin/bench.exe)
	@[ ! -s build/bench-windows/results.json ] || \
	    bench/table build/bench-windows/results.json docs/performance.md windows
	@echo "bench: the tables are in docs/performance.md"

install: setup-native  ## the library, the host tool, what a host is built with; to PREFIX, below DESTDIR
	@$(call build,native,patchhost)
	@DESTDIR='$(DESTDIR)' cmake --install build/native --prefix '$(PREFIX)' >build/install.log
	@echo "install: the library and the host tool are in $(DESTDIR)$(PREFIX)"

package: setup-package  ## a .deb of the native build and a .zip of the one for Windows, in build/package
	@$(call build,native,patchhost)
	@$(call build,windows,patchhost)
	@$(call build,windows,selfTestPackage)
	@rm -rf build/package
	@for target in native windows; do \
	    cpack --config build/$$target/CPackConfig.cmake -B build/package >build/$$target.package.log || \
	        { cat build/$$target.package.log; exit 1; }; \
	done
	@rm -rf build/package/_CPack_Packages
	@cp build/windows/selftest/*.zip build/package
	@echo "package:" build/package/*

doc: setup-doc  ## the reference of the public header, and a check of the manual page
	@doxygen docs/Doxyfile
	@mandoc -T lint -W warning docs/man/patchhost.1
	@echo "doc: the reference is in build/reference/html/index.html"

format: setup-format  ## formats every source
	@git ls-files '*.cpp' '*.h' | xargs clang-format-14 -i

check-format: setup-format  ## fails when a source is not formatted
	@git ls-files '*.cpp' '*.h' | xargs clang-format-14 --dry-run --Werror

clean:  ## removes the build folders, but for the Wine root
	@rm -rf build/native build/windows build/sanitize build/threads build/coverage build/seeded build/fuzz build/bench \
	    build/bench-windows build/bench-sources build/package build/reference
