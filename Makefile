# The commands of this project; `make help` lists them. CMake does the building.

.PHONY: help build demo test test-long fuzz soak coverage bench bench-host bench-reader bench-stream package golden format tidy clean packages
.DEFAULT_GOAL := help

SOURCES = $(shell git ls-files '*.cpp' '*.h')

help: ## what can be made
	@sed -n 's/^\([a-z-]*\):.*## \(.*\)/  make \1\t\2/p' Makefile | expand -t 20

packages:
	@tools/install-packages

# The programs only; `make test` builds the tests besides.
build: packages ## build the plug-in, the data modules and pipeline-host into build/release
	@cmake --preset release -Wno-dev --log-level=WARNING
	@cmake --build --preset release --target DataDump/all modules/all host/all stream/all reader/all

demo: build ## run the demo and print both reports
	@tools/run-demo build/release build/demo
	@printf '\n==== DumpEvents: what was captured ====\n\n'
	@cat build/demo/events.txt
	@printf '\n==== Dump: what the data modules hold for it ====\n\n'
	@cat build/demo/dump.txt
	@printf '\n==== datadump findings: what does not fit in it ====\n\n'
	@build/release/bin/datadump findings build/demo/dump.txt || [ $$? -eq 1 ]

# Configures and builds presets. Each builds the tests that need its kind of build, and no others.
BUILD_PRESETS = for preset in $(1); do \
    cmake --preset $$preset -Wno-dev --log-level=WARNING && cmake --build --preset $$preset || exit 1; done

# Runs the tests of builds together, with one summary, which is the last that is printed.
RUN_TESTS = printf 'subdirs($(1))\n' >build/CTestTestfile.cmake && \
    ctest --test-dir build --parallel 2 --output-on-failure $(2)

test: packages ## build everything and run the tests: as installed, and under the sanitizers
	@$(call BUILD_PRESETS,release asan)
	@$(call RUN_TESTS,release asan,--label-exclude long)

test-long: packages ## run what takes longer: a million EDRs, races under the thread sanitizer, fuzzing, the page in a browser, streams
	@tools/install-packages chromium chromium-driver openssl python3
	@$(call BUILD_PRESETS,release asan tsan fuzz)
	@$(call RUN_TESTS,release asan tsan fuzz,--label-regex long)

SECONDS ?= 30
fuzz: packages ## fuzz each target for SECONDS (30); what it finds stays in build/fuzz/fuzz
	@cmake --preset fuzz -Wno-dev --log-level=WARNING
	@cmake --build --preset fuzz
	@tests/fuzz/run-fuzzers build/fuzz -max_total_time=$(SECONDS)

SOAK_EDRS ?= 100000000
SOAK_RUNS ?= 100000000
SOAK_REPEATS ?= 20
SOAK_ALIAS_ROWS ?= 10000000
SOAK_STREAM_EDRS ?= 1000000
soak: export LSAN_OPTIONS = suppressions=$(CURDIR)/tests/leaks.supp:print_suppressions=0
soak: packages ## run the tests of docs/reliability.md at release size, for days
	@tools/install-packages openssl python3
	@cmake --preset asan -Wno-dev --log-level=WARNING
	@cmake --build --preset asan --target differential allocation_failure_test output_fault_test
	@cmake --preset tsan -Wno-dev --log-level=WARNING
	@cmake --build --preset tsan --target races
	@cmake --preset fuzz -Wno-dev --log-level=WARNING
	@cmake --build --preset fuzz
	@cmake --preset release -DDATADUMP_TESTS='rooms;release' -Wno-dev --log-level=WARNING
	@cmake --build --preset release --target database_fault_test \
	    pipeline-host pipeline-host-stream TestRecorder DataDump/all modules/all
	DATABASE_ALIAS_ROWS=$(SOAK_ALIAS_ROWS) tests/support/with-postgresql \
	    build/release/bin/database_fault_test --gtest_brief=1
	STREAM_MEGABYTES=1024 STREAM_KILLS='30 30 10' tests/stream/run-each \
	    build/release/bin/pipeline-host $(SOAK_STREAM_EDRS)
	build/asan/bin/allocation_failure_test --gtest_brief=1
	build/asan/bin/output_fault_test --gtest_brief=1 --gtest_repeat=$(SOAK_REPEATS)
	build/tsan/bin/races $$(($(SOAK_EDRS) / 10))
	build/asan/bin/differential $(SOAK_EDRS)
	tests/fuzz/run-fuzzers --list | \
	    xargs -n 1 -P $$(nproc) tests/fuzz/run-fuzzers build/fuzz -runs=$(SOAK_RUNS)

# No tests are behind what CMake tries its compiler with. Of the plug-in built on a second framework,
# whose calls have other branches, the figures of the same lines would be mixed up.
COVERAGE = build/coverage --exclude-directories '.*(CompilerId|second-framework).*'

coverage: packages ## report what the tests reach; fails below 95 % of the plug-in's branches or 90 % of the other lines
	@tools/install-packages gcovr
	@cmake --preset coverage -Wno-dev --log-level=WARNING
	@cmake --build --preset coverage
	@find build/coverage -name '*.gcda' -delete
	@# Without what takes long, and what the profiles of the run itself disturb.
	ctest --preset coverage
	gcovr $(COVERAGE) --exclude-throw-branches --print-summary \
	    --filter DataDump/ --fail-under-branch 95
	gcovr $(COVERAGE) --print-summary \
	    --filter 'framework/|modules/|host/|reader/' --fail-under-line 90

bench: packages ## measure the capture against other ways to keep events, and the reports
	@tools/install-packages libbenchmark-dev
	@cmake --preset bench -Wno-dev --log-level=WARNING
	@cmake --build --preset bench --target capture_bench capture_count report_bench
	build/bench/bin/capture_bench --benchmark_min_time=0.05
	build/bench/bin/report_bench
	bench/count-reads build/bench/bin/capture_count

bench-host: packages ## measure pipeline-host against simdjson alone, and what loading data takes
	@tools/install-packages libbenchmark-dev
	@cmake --preset bench -Wno-dev --log-level=WARNING
	@cmake --build --preset bench --target host_bench modules_load modules/all
	build/bench/bin/host_bench build/bench/bin/pipeline-host build/bench/edrs 200000 7 50
	build/bench/bin/modules_load modules/reference-schema.sql build/bench/accounts.db

bench-reader: build ## measure datadump against grep on a dump of a gigabyte
	@tools/install-packages python3
	@mkdir -p build/bench/reader
	bench/compare-reader build/release/bin/datadump build/release/bin/pipeline-host build/bench/reader

bench-stream: build ## measure a host on a stream of three servers against one on a file
	@tools/install-packages python3
	tests/support/with-nats bench/compare-stream build/release/bin/pipeline-host 1000000 5

package: build ## make the Debian packages, in build/package
	@cd build/release && cpack -B $(CURDIR)/build/package

golden: build ## run the demo, show what differs from the expected reports, and take it over
	@tools/run-demo build/release build/golden
	@cd build/golden && { ../release/bin/datadump findings dump.txt >findings.txt || [ $$? -eq 1 ]; }
	@for report in events.txt dump.txt findings.txt; do \
	    diff -uN tests/golden/$$report build/golden/$$report; \
	    cp build/golden/$$report tests/golden/$$report; \
	done

format: ## format all sources
	@tools/install-packages clang-format
	@clang-format -i $(SOURCES)

tidy: packages ## check all sources with clang-tidy
	@tools/install-packages clang-tidy
	@cmake --preset tidy -Wno-dev --log-level=WARNING
	@printf '%s\n' $(filter-out tests/% bench/% examples/tests/%,$(filter %.cpp,$(SOURCES))) | \
	    xargs -n 4 -P $$(nproc) clang-tidy --quiet -p build/tidy \
	        --extra-arg=-Wno-unknown-warning-option

clean: ## remove everything that was built
	@rm -rf build
