# The project's commands. Each installs what it misses, does only what is needed, and may be run again at any time.
#
#   make run       evaluates an expression over a sample file
#   make check     builds and runs the tests, under the sanitizers and optimised
#   make bench     builds the benchmarks and prints what a row costs at best in those that BENCH=regex names
#   make format    formats the sources in place
#   make tidy      checks format and runs clang-tidy
#   make fuzz      looks for inputs that break the parsers, for a short while
#   make coverage  runs the tests with lines counted and prints the report
#   make clean     removes all that was built

MAKEFLAGS += --no-print-directory
CMAKE_BUILD_PARALLEL_LEVEL ?= $(shell nproc)
CTEST_PARALLEL_LEVEL ?= $(shell nproc)
export CMAKE_BUILD_PARALLEL_LEVEL CTEST_PARALLEL_LEVEL

BENCH ?= .
SOURCES = git ls-files '*.h' '*.c' '*.cpp'

.PHONY: help run check debug release bench format format-check tidy fuzz coverage clean

help:
	@sed -n 's/^#   //p' Makefile

# The tree of the optimised build is shared with `make release`, which adds the tests to it.
run:
	@scripts/install-deps.sh --run
	@test -f build/release/build.ninja || cmake --preset release -DQZBIFUN_TESTS=OFF
	@cmake --build --preset release --target qzeval
	build/release/tools/qzeval/qzeval \
	    "city, population, ceil(latitude) AS north, abs(longitude) AS from_greenwich" \
	    --where "population > 15000000" --format table examples/cities.csv

check: debug release

debug release:
	@scripts/install-deps.sh
	cmake --workflow --preset $@

bench:
	@scripts/install-deps.sh
	@cmake --preset bench
	@cmake --build --preset bench
	@scripts/bench-minimum.py --filter '$(BENCH)' build/bench/bench/*_bench

format:
	@scripts/install-deps.sh
	@$(SOURCES) | xargs clang-format -i

format-check:
	@scripts/install-deps.sh
	@$(SOURCES) | xargs clang-format --dry-run -Werror

# clang-tidy reads how clang compiles each file.
tidy: format-check
	@cmake --preset clang >/dev/null
	@run-clang-tidy -quiet -p build/clang -j $(CMAKE_BUILD_PARALLEL_LEVEL) '$(CURDIR)/(bop|host|engine|tools)/.*\.cpp$$'

fuzz:
	@scripts/install-deps.sh
	cmake --workflow --preset fuzz

coverage:
	@scripts/install-deps.sh --coverage
	@cmake --preset coverage
	@cmake --build --preset coverage
	@find build/coverage -name '*.gcda' -delete
	@ctest --preset coverage
	@gcovr --root . --filter 'bop/' --filter 'host/' --filter 'engine/' --filter 'tools/' build/coverage

clean:
	rm -rf build
