# The two commands of the README and the daily chores. Each target sets up the machine by itself (Debian 12, root or sudo); the
# building is done by CMake, whose presets can be used without this file.

PAGE ?= examples/pages/saltmarsh-point.html
JOBS ?= $(shell nproc)
CLANG_FORMAT ?= clang-format-14
RUN_CLANG_TIDY ?= run-clang-tidy-14
CPP_FILES = git ls-files -z '*.h' '*.cpp'

MAKEFLAGS += --no-print-directory

# `make corpus`: the packages whose pages are checked. `make fuzz`: the seconds it runs.
CORPUS ?= cppreference-doc-en-html python3.11-doc debian-policy installation-guide-amd64
FUZZ_SECONDS ?= 3600

.PHONY: help run test bench corpus fuzz format check-format check-headers tidy clean

help:
	@echo 'make run            build the release, print the tokens of an example page (PAGE=file)'
	@echo 'make test           build with sanitizers, run all tests'
	@echo 'make bench          build the release, run the benchmarks'
	@echo 'make corpus         build the release, check that thousands of real pages are reproduced'
	@echo 'make fuzz           build the fuzzers, run them for an hour (FUZZ_SECONDS=n)'
	@echo 'make format         format all sources'
	@echo 'make check-format   fail when a source is not formatted'
	@echo 'make check-headers  compile every public header alone'
	@echo 'make tidy           run clang-tidy over all sources'
	@echo 'make clean          remove the build folder'

run:
	@setup/install build
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target kestra-html-tool
	build/release/bin/kestra-html tokens $(PAGE)

test:
	@setup/install build
	cmake --preset sanitize
	cmake --build --preset sanitize --parallel $(JOBS)
	@setup/run-tests sanitize

bench:
	@setup/install build
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target kestra-bench
	build/release/bin/kestra-bench

corpus:
	@setup/install build corpus
	setup/fetch build/corpus/pages $(CORPUS)
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target kestra-html-tool
	tests/corpus/run build/release/bin/kestra-html build/corpus $(CORPUS)

fuzz:
	@setup/install build fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz --parallel $(JOBS) --target fuzzers
	fuzz/run build/fuzz $(FUZZ_SECONDS)

format:
	@setup/install format
	$(CPP_FILES) | xargs -0 -r $(CLANG_FORMAT) -i

check-format:
	@setup/install format
	$(CPP_FILES) | xargs -0 -r $(CLANG_FORMAT) --dry-run -Werror --ferror-limit=1

check-headers:
	@setup/install build
	cmake --preset sanitize
	cmake --build --preset sanitize --parallel $(JOBS) --target all_verify_interface_header_sets

tidy:
	@setup/install build tidy
	cmake --preset dev
	$(RUN_CLANG_TIDY) -quiet -p build/dev -j $(JOBS) '\.cpp$$'

clean:
	rm -rf build
