# The two commands of the README: `make run` and `make test`. Both install what is missing first.
BUILD      ?= build
ASAN_BUILD ?= build-asan
JOBS       ?= $(shell nproc)
CMAKE_ARGS ?=

.PHONY: all setup build run test asan-test bench clean

all: build

setup:
	@tools/setup.sh

build: setup
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_ARGS) >/dev/null
	@cmake --build $(BUILD) -j $(JOBS)

run: build
	$(BUILD)/tidewright-server $(ARGS)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

# The whole suite again with AddressSanitizer and UndefinedBehaviorSanitizer, in a separate build directory.
asan-test: setup
	@cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DTW_SANITIZE=ON $(CMAKE_ARGS) >/dev/null
	@cmake --build $(ASAN_BUILD) -j $(JOBS)
	ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS)

bench: build
	@for b in $(BUILD)/bench/tw_bench_*; do echo "== $$b"; $$b; done

clean:
	rm -rf $(BUILD) $(ASAN_BUILD)
