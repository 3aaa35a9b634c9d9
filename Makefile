# The two commands: `make test` and `make demo`.
JOBS ?= $(shell nproc)
CTEST_FLAGS ?= --output-on-failure -j $(JOBS)

.PHONY: test demo deps build build-asan test-plain test-asan install-check bench clean

test: deps test-plain test-asan install-check

deps:
	@scripts/install-deps.sh

build:
	cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build build -j $(JOBS)

build-asan:
	cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DNQ_SANITIZE=ON -DNQ_BUILD_BENCH=OFF
	cmake --build build-asan -j $(JOBS)

test-plain: build
	ctest --test-dir build $(CTEST_FLAGS)

test-asan: build-asan
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --test-dir build-asan $(CTEST_FLAGS)

# The library installed into a temporary prefix, and the demo built against that tree alone.
install-check: build
	tests/install/check_install.sh build

demo: deps build
	build/examples/nq_demo

bench: deps build
	@for b in build/bench/bench_*; do echo "== $$b"; $$b; done

clean:
	rm -rf build build-asan
