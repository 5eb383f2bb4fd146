# The two commands of the README and the daily chores. Each target sets up the machine by itself
# (Debian 12, root or sudo); the building is done by CMake, whose presets can be used without this
# file.

PAGE ?= examples/pages/saltmarsh-point.html
JOBS ?= $(shell nproc)
CLANG_FORMAT ?= clang-format-14
RUN_CLANG_TIDY ?= run-clang-tidy-14
CPP_FILES = git ls-files -z '*.h' '*.cpp'

MAKEFLAGS += --no-print-directory

# What `make test` runs in the optimized build as well, by label: the tests of whole documents, the
# comparisons with the second parsers, with more documents, what the parsers take from the heap,
# with longer ones, that the benchmarks run and no input takes more than linear time, and the
# package, whose library exports otherwise than one without link-time optimization. The target
# `optimized-tests` builds all of them.
OPTIMIZED_TESTS = optimized,enumerated,random,memory,bench,package

# `make corpus`: the packages whose pages are checked. `make fuzz`: the seconds it runs.
CORPUS ?= cppreference-doc-en-html python3.11-doc debian-policy installation-guide-amd64
FUZZ_SECONDS ?= 3600

PYTHON_TESTS = python/tests docs/python.md docs/scale.md docs/moving

LIBRARY_ONLY = -DKESTRA_BUILD_TOOLS=OFF -DKESTRA_BUILD_TESTS=OFF -DKESTRA_BUILD_EXAMPLES=OFF

.PHONY: help run test test-windows test-python test-python-sanitized test-pip test-memory bench bench-builds bench-tool bench-python bench-hostile compare-scripts corpus test-charsets charset-table charset-models fuzz check-fuzz coverage mutation format check-format check-headers check-rooms check-interface save-interface deb compare-debs test-deb distribution-build interface-build tidy docs check-docs pictures test-view picture-view clean

help:
	@echo 'make run            build the release, print the tokens of an example page (PAGE=file)'
	@echo 'make test           build with sanitizers, run all tests; those of whole documents and the package in the release too'
	@echo 'make test-windows   build for 64-bit Windows, run all tests under Wine, those of the package in the release too'
	@echo 'make test-python    build the Python module and run its tests'
	@echo 'make test-python-sanitized  the same with the address sanitizer'
	@echo 'make test-pip       pip install . from the sources alone, into an environment of its own'
	@echo 'make test-view      build the release, use the page of kestra-html view in a browser'
	@echo 'make test-memory    build the release, check what documents of 1 GiB take from the heap, and the tool for them'
	@echo 'make bench          build the release, compare its speed with other tokenizers, for some minutes'
	@echo 'make bench-hostile  the same for inputs made to be slow: their time must grow with their size and no faster'
	@echo 'make bench-python   compare the Python module with other parsers, links found from bytes'
	@echo 'make bench-tool     the last part of make bench alone: how fast the tool writes tokens and events'
	@echo 'make bench-builds   a part of make bench alone: the library as a distribution builds it beside that of the release'
	@echo 'make compare-scripts  compare where tags lie around scripts as text with another tokenizer, over real pages'
	@echo 'make corpus         build the release, check that thousands of real pages are reproduced'
	@echo 'make test-charsets  build the release, measure the charset detector over samples from Debian packages'
	@echo 'make charset-table  the same beside other detectors, for some minutes; draw the plot of the documents'
	@echo 'make charset-models  write the language models of the detector anew, and fit its confidence'
	@echo 'make fuzz           build the fuzzers, run them for an hour (FUZZ_SECONDS=n)'
	@echo 'make check-fuzz     build the fuzzers, run each over its small corpus'
	@echo 'make coverage       which lines of the library the tests reach'
	@echo 'make mutation       how many planted faults do the tests see? takes hours'
	@echo 'make format         format all sources'
	@echo 'make check-format   fail when a source is not formatted, or too wide'
	@echo 'make check-headers  compile every public header alone'
	@echo 'make check-rooms    fail when a folder includes what is above it'
	@echo 'make check-interface  compare the interface with the saved description, name what changed'
	@echo 'make save-interface  accept the changes: save the description anew'
	@echo 'make deb            build the Debian packages, check them with lintian'
	@echo 'make compare-debs   build them twice: are they the same bytes?'
	@echo 'make test-deb       install them in a fresh minimal system, use them, remove them'
	@echo 'make tidy           run clang-tidy over all sources'
	@echo 'make docs           the reference of all public names, with the guides: build/docs/html/index.html'
	@echo 'make check-docs     fail when a public name has no comment, or a document a link that leads nowhere'
	@echo 'make pictures       draw the pictures of the documents'
	@echo 'make picture-view   make the picture of the README, in a browser'
	@echo 'make clean          remove the build folder'

run:
	@setup/install build
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target kestra-html-tool
	build/release/bin/kestra-html tokens $(PAGE)

test:
	@setup/install build view shells
	setup/test-peers build/sanitize/test-peers
	cmake --preset sanitize
	cmake --build --preset sanitize --parallel $(JOBS)
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target optimized-tests
	@setup/run-tests sanitize release:$(OPTIMIZED_TESTS)

test-windows:
	@setup/install build windows
	setup/windows-packages build/windows-packages
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target kestra-html-tool
	cmake --preset windows-test
	cmake --build --preset windows-test --parallel $(JOBS)
	cmake --preset windows
	cmake --build --preset windows --parallel $(JOBS)
	@trap 'setup/wine --stop' EXIT; trap 'exit 130' INT TERM; setup/wine --start && setup/run-tests windows-test windows

test-python:
	@setup/install build python
	cmake --preset release -DKESTRA_BUILD_PYTHON=ON -DPython_EXECUTABLE=/usr/bin/python3
	cmake --build --preset release --parallel $(JOBS) --target kestra-html-python kestra-html-tool kestra-html-manual
	@KESTRA_BUILD_FOLDER=build/release /usr/bin/python3 python/run-tests build/release/python $(PYTHON_TESTS)

# As a user installs it: the module is built from the sources alone, which takes minutes.
test-pip:
	@setup/install build python
	@env -u KESTRA_BUILD_FOLDER /usr/bin/python3 python/run-tests build/none python/tests/test_pip.py

# What leaks at the end of Python is Python's: it frees neither its modules nor their classes.
# `test-python` looks at the memory of 100,000 pages.
test-python-sanitized:
	@setup/install build python
	cmake --preset sanitize -DKESTRA_BUILD_PYTHON=ON -DPython_EXECUTABLE=/usr/bin/python3
	cmake --build --preset sanitize --parallel $(JOBS) --target kestra-html-python kestra-html-tool
	@KESTRA_BUILD_FOLDER=build/sanitize LD_PRELOAD="$$($(CXX) -print-file-name=libasan.so) $$($(CXX) -print-file-name=libstdc++.so)" \
	    PYTHONMALLOC=malloc ASAN_OPTIONS=detect_leaks=0 UBSAN_OPTIONS=print_stacktrace=1 \
	    /usr/bin/python3 python/run-tests build/sanitize/python $(PYTHON_TESTS)

# Also in `make test`, with the sanitizers.
test-view:
	@setup/install build view
	setup/test-peers build/release/test-peers
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target kestra-html-tool
	tests/view/check-in-browser build/release/test-peers/puppeteer-core build/release/bin/kestra-html examples/pages/saltmarsh-point.html

test-memory:
	@setup/install build
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target memory-tests tool-input-memory-tests
	@setup/run-tests release:gibibyte

bench:
	@setup/install build bench
	setup/bench-corpora build/bench
	setup/bench-peers build/bench
	cmake --preset release -DKESTRA_BENCH_PEERS=ON
	cmake --build --preset release --parallel $(JOBS) --target kestra-bench
	@bench/run build/release/bin/kestra-bench build/bench comparison '^(web|wiki|large|scripts)'
	@$(MAKE) bench-builds
	@$(MAKE) bench-tool

# The library as a distribution builds it: by its own flags, with debug information, without a build
# type.
distribution-build:
	@setup/install build distribution
	CXXFLAGS="$$(dpkg-buildflags --get CXXFLAGS) $$(dpkg-buildflags --get CPPFLAGS)" LDFLAGS="$$(dpkg-buildflags --get LDFLAGS)" \
	    cmake -G Ninja -S . -B build/distribution -DCMAKE_BUILD_TYPE=None $(LIBRARY_ONLY)
	cmake --build build/distribution --parallel $(JOBS) --target kestra-html

# That library is at most 5 % slower than the one of the preset: by the mean over each corpus.
bench-builds: distribution-build
	@setup/install build bench
	setup/bench-corpora build/bench
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target kestra-bench
	@bench/compare build/release/bin/kestra-bench build/release/bin/kestra-bench:build/distribution/lib build/bench \
	    '^(web|wiki|large)/document/(8bit|16bit|8bit-wide-utf8)/buffer/(16K|whole)$$' --rounds 12 --within 5 --by-corpus

# How fast the tool writes, beside jq over the same output.
bench-tool:
	@setup/install build bench
	setup/bench-corpora build/bench
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target kestra-html-tool
	@bench/tool build/release/bin/kestra-html build/bench web

bench-python:
	@setup/install build python bench bench-python
	setup/bench-corpora build/bench
	python/bench/asian-pages build/bench
	cmake --preset release -DKESTRA_BUILD_PYTHON=ON -DPython_EXECUTABLE=/usr/bin/python3
	cmake --build --preset release --parallel $(JOBS) --target kestra-html-python
	@PYTHONPATH=build/release/python /usr/bin/python3 python/bench/links.py build/bench

# Memory is kept once it is there: getting it from the system takes longer than most of these
# inputs, and not in proportion to their size.
bench-hostile:
	@setup/install build bench
	setup/bench-corpora build/bench
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target kestra-bench
	@GLIBC_TUNABLES=glibc.malloc.mmap_max=0:glibc.malloc.trim_threshold=17179869184 \
	    bench/run build/release/bin/kestra-bench build/bench hostile '^(hostile|web/document/8bit/stream/16K|web-without-scripts/stateless/stream)'

# The web pages of the benchmarks, with scripts as text, by the library and by parse5.
compare-scripts:
	@setup/install build bench
	setup/bench-corpora build/bench
	setup/test-peers build/release/test-peers
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target tag-lister
	tests/html/parser/peer/compare-with-peer build/release/test-peers/parse5 build/release/bin/tag-lister build/bench/web.txt

corpus:
	@setup/install build corpus
	setup/fetch build/corpus/pages $(CORPUS)
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target kestra-html-tool
	tests/corpus/run build/release/bin/kestra-html build/corpus $(CORPUS)

# The samples are made of translated messages, manuals and guides.
build/charsets/samples/test.tsv: tests/charsets/make-samples tests/charsets/documents.py tests/charsets/charset_names.py
	@setup/install build charsets
	setup/fetch build/charsets/packages $$(tests/charsets/documents.py)
	tests/charsets/make-samples build/charsets/packages build/charsets/samples

test-charsets: build/charsets/samples/test.tsv
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target detector-answers
	tests/charsets/measure build/release/bin/detector-answers build/charsets/samples build/charsets/reliability.svg --alone

charset-table: build/charsets/samples/test.tsv
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target detector-answers
	/usr/bin/python3 tests/charsets/measure build/release/bin/detector-answers build/charsets/samples docs/pictures/charset-confidence.svg

charset-models: build/charsets/samples/test.tsv
	tests/charsets/make-models build/charsets/packages >build/charsets/LanguageModels.cpp
	mv build/charsets/LanguageModels.cpp platform/posix/LanguageModels.cpp
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target detector-answers
	tests/charsets/fit-confidence build/release/bin/detector-answers build/charsets/samples

fuzz:
	@setup/install build fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz --parallel $(JOBS) --target fuzzers
	fuzz/run build/fuzz $(FUZZ_SECONDS)

check-fuzz:
	@setup/install build fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz --parallel $(JOBS) --target fuzzers
	build/fuzz/bin/document-fuzzer -runs=0 fuzz/seeds/document-fuzzer
	build/fuzz/bin/event-fuzzer -runs=0 fuzz/seeds/event-fuzzer

coverage:
	@setup/install build coverage
	cmake --preset coverage
	cmake --build --preset coverage --parallel $(JOBS)
	ctest --preset coverage --parallel $(JOBS) -LE "enumerated|random"
	gcovr --root . --object-directory build/coverage --filter html/ --filter platform/ --exclude-throw-branches --sort-uncovered

mutation:
	@setup/install build
	tests/mutation/run --jobs $(JOBS)

format:
	@setup/install format
	$(CPP_FILES) | xargs -0 -r $(CLANG_FORMAT) -i

check-format:
	@setup/install format
	$(CPP_FILES) | xargs -0 -r $(CLANG_FORMAT) --dry-run -Werror --ferror-limit=1
	setup/check-widths

check-headers:
	@setup/install build
	cmake --preset sanitize
	cmake --build --preset sanitize --parallel $(JOBS) --target all_verify_interface_header_sets

check-rooms:
	@setup/install build
	setup/check-rooms

tidy:
	@setup/install build tidy
	cmake --preset dev
	$(RUN_CLANG_TIDY) -quiet -p build/dev -j $(JOBS) '\.cpp$$'

# The packages of Debian, and what its checker finds in them.
deb:
	@setup/install build deb
	setup/deb build/deb
	lintian --allow-root --fail-on error,warning build/deb/*.changes

compare-debs: deb
	setup/compare-debs build/deb

# In a fresh minimal system, made by debootstrap; as root.
test-deb: deb
	@setup/install build deb test-deb
	setup/test-debs build/deb

# The library with debug information. What is optimized away, such as the class description of an
# observer that the library never makes, would depend on the compiler.
interface-build:
	@setup/install build interface
	CXXFLAGS="-O0 -g" cmake -G Ninja -S . -B build/interface -DCMAKE_BUILD_TYPE=None $(LIBRARY_ONLY)
	cmake --build build/interface --parallel $(JOBS) --target kestra-html

check-interface: interface-build
	setup/check-interface build/interface

save-interface: interface-build
	setup/check-interface --save build/interface

docs:
	@setup/install docs
	setup/reference build/docs

check-docs: docs
	tests/docs/check-reference .

pictures:
	@setup/install pictures
	for picture in docs/pictures/*.dot; do dot -Tsvg -o "$${picture%.dot}.svg" "$$picture"; done

picture-view:
	@setup/install build view
	setup/test-peers build/release/test-peers
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target kestra-html-tool
	tests/view/check-in-browser build/release/test-peers/puppeteer-core build/release/bin/kestra-html \
	    examples/pages/saltmarsh-point.html --picture docs/pictures/view.png

clean:
	rm -rf build
