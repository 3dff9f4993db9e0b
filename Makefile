# Thin wrapper around CMake presets. `make run` and `make test` are the two
# commands the README gives; both install what is missing first.
PRESET ?= $(if $(CI),ci,default)
JOBS ?= $(shell nproc)
CTEST_JOBS ?= 4

.PHONY: all deps configure build run demo test test-unit test-tsan clean format bench

all: build

deps:
	@./scripts/install-deps

configure: deps
	@cmake --preset $(PRESET) >/dev/null

build: configure
	@cmake --build build -j $(JOBS)

run: build
	@./scripts/run-glimmerfold

# Glimmerfold at work in a private X server, with screenshots in build/demo/.
demo: configure
	@./scripts/demo

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

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	@rm -rf build build-dev build-tsan
