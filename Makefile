# The two commands of the README: `make run` and `make test`. Both install what is missing first.
# `make run` builds only the server, the plugin and the demo tree; `make test` builds everything.
BUILD      ?= build
ASAN_BUILD ?= build-asan
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 60
JOBS       ?= $(shell nproc)
CMAKE_ARGS ?=
# The stand-in, the plugin and the demo tree they run on: all that `make run` needs; and the test runner
# for scripts, a copy of one file.
RUN_TARGETS = tidewright-server tidewright demo_tree tidewright_test_tool

MAKEFLAGS += --no-print-directory

.PHONY: all setup build run test asan-test fuzz bench docs clean

all: build

setup:
	@tools/setup.sh

build: setup
	@tools/build.sh $(BUILD) $(JOBS) all -- -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_ARGS)

run: setup
	@tools/build.sh $(BUILD) $(JOBS) $(RUN_TARGETS) -- -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_ARGS)
	@$(BUILD)/tidewright-server $(ARGS)

test: build
	@ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

# The whole suite again with AddressSanitizer and UndefinedBehaviorSanitizer, in a separate build directory.
asan-test: setup
	@tools/build.sh $(ASAN_BUILD) $(JOBS) all -- -DCMAKE_BUILD_TYPE=Debug -DTW_SANITIZE=ON $(CMAKE_ARGS)
	@ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS)

# Each fuzz target for FUZZ_SECONDS seconds, in a build of its own made with clang: libFuzzer with
# AddressSanitizer and UndefinedBehaviorSanitizer. Fails on a crash, a leak or a hang.
fuzz:
	@tools/setup.sh fuzz
	@CC=clang CXX=clang++ tools/build.sh $(FUZZ_BUILD) $(JOBS) tw_fuzz demo_tree -- -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTW_SANITIZE=ON -DTW_FUZZ=ON $(CMAKE_ARGS)
	@fuzz/run_fuzz.sh $(FUZZ_BUILD) $(FUZZ_SECONDS)

bench: build
	@for b in $(BUILD)/bench/tw_bench_*; do echo "== $$b"; $$b; done

# The command and event reference in docs/, generated from the command tables and the demo tree's event
# files; CI's docs.fresh fails when the committed copy differs.
docs: setup
	@tools/build.sh $(BUILD) $(JOBS) tidewright-check demo_tree -- -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_ARGS)
	@$(BUILD)/tidewright-check --game $(BUILD)/demo/game --reference docs

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(FUZZ_BUILD)
