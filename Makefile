# Thin wrapper around CMake presets. `make run` and `make test` are the two
# commands the README gives; both install what is missing first.
PRESET ?= $(if $(CI),ci,default)
JOBS ?= $(shell nproc)
CTEST_JOBS ?= 4

.PHONY: all deps configure build run demo screenshots test test-unit test-tsan clean format bench fuzz soak

all: build

deps:
	@./scripts/install-deps

configure: deps
	@cmake --preset $(PRESET) >/dev/null

build: configure
	@cmake --build build -j $(JOBS)

run: build
	@./scripts/run-glimmerfold

# Glimmerfold at work in a private X server, with screenshots in build/demo/. The script
# configures only a tree that is not there yet and builds only the two programs it runs: the
# test suite runs this command while its other tests use build/.
demo:
	@PRESET=$(PRESET) ./scripts/demo

# Every Settings tab and setup-wizard page, drawn in a private X server, in build/screenshots/.
screenshots: configure
	@cmake --build build -j $(JOBS) --target glimmerfold_ui_screenshots
	@./build/tools/glimmerfold_ui_screenshots build/screenshots

test: build test-tsan
	@ctest --test-dir build -j $(CTEST_JOBS) --output-on-failure

# The engine's concurrency stress test, built and run under ThreadSanitizer.
test-tsan: deps
	@cmake --preset tsan >/dev/null
	@cmake --build build-tsan -j $(JOBS) --target engine_concurrency_test
	@./build-tsan/tests/engine_concurrency_test

# Latency, CPU, wake-ups, memory and start-up against openbox's own move and
# resize, in a private X server (a few minutes); tables in build/bench/.
bench: configure
	@cmake --build build -j $(JOBS) --target glimmerfold glimmerfold_bench
	@./build/bench/glimmerfold_bench --output build/bench

# Each fuzz target for FUZZ_SECONDS (300 by default) under AddressSanitizer and
# UndefinedBehaviorSanitizer; clang builds them in build-fuzz, which keeps the inputs found.
FUZZ_SECONDS ?= 300
FUZZ_CXX ?= clang++
fuzz: deps
	@cmake -S tests/fuzz/targets -B build-fuzz -G Ninja -DCMAKE_CXX_COMPILER=$(FUZZ_CXX) >/dev/null
	@cmake --build build-fuzz -j $(JOBS)
	@./tests/fuzz/run-fuzzers build-fuzz $(FUZZ_SECONDS)

# SOAK_GESTURES (2,000 by default) moves and resizes against the program built with
# AddressSanitizer and UndefinedBehaviorSanitizer (the dev preset, in build-dev).
SOAK_GESTURES ?= 2000
soak: deps
	@cmake --preset dev >/dev/null
	@cmake --build build-dev -j $(JOBS) --target soak_e2e_test
	@GLIMMERFOLD_SOAK_GESTURES=$(SOAK_GESTURES) ./build-dev/tests/soak_e2e_test

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	@rm -rf build build-dev build-tsan build-fuzz
