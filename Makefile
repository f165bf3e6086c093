# The two commands of the README: `make demo` and `make test`. Both install
# what is missing first, so they work on a fresh machine.

JOBS ?= $(shell nproc)
BUILD := build
ASAN := build-asan
FUZZ := build-fuzz
FUZZ_SECONDS ?= 5

.PHONY: all build bootstrap test test-fast test-asan test-fuzz demo bench format clean

all: build

build:
	@cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
	@cmake --build $(BUILD) -j $(JOBS)

bootstrap:
	@scripts/bootstrap

test: bootstrap
	@$(MAKE) --no-print-directory test-fast test-asan test-fuzz

test-fast: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

test-asan:
	@cmake -S . -B $(ASAN) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DTALLYRINK_SANITIZE=ON -DTALLYRINK_BENCH=OFF >/dev/null
	@cmake --build $(ASAN) -j $(JOBS)
	ctest --test-dir $(ASAN) --output-on-failure -j $(JOBS)

test-fuzz:
	@CC=clang CXX=clang++ cmake -S . -B $(FUZZ) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DTALLYRINK_FUZZ=ON \
	  -DTALLYRINK_TESTS=OFF -DTALLYRINK_BENCH=OFF -DTALLYRINK_FUZZ_SECONDS=$(FUZZ_SECONDS) >/dev/null
	@cmake --build $(FUZZ) -j $(JOBS)
	ctest --test-dir $(FUZZ) --output-on-failure

demo: bootstrap build
	@scripts/demo

bench: build
	$(BUILD)/bench/tallyrink_bench

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD) $(ASAN) $(FUZZ)
