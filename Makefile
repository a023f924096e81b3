# Everything from set-up to benchmarks. `make help` lists the targets.
PYTHON ?= /usr/bin/python3
CMAKE ?= $(or $(wildcard /usr/bin/cmake),cmake)
BUILD = build/default
PREFIX ?= /usr/local
VENV ?= build/venv
PYTHONPATH := $(CURDIR)/build
SOURCES = src simulator tests bench fuzz
FUZZ_SECONDS ?= 60
SOAK_SECONDS ?= 600

export PYTHONPATH
export PYTHONDONTWRITEBYTECODE = 1

configure = $(CMAKE) --preset $(1) -DPython_EXECUTABLE=$(PYTHON) $(2) >/dev/null
setup = @tools/setup.sh $(1)

.PHONY: help build shell demo install venv check build-tests test bench soak asan tsan fuzz lint stubs docs clean

help: ## Lists the targets
	@sed -n 's/^\([a-z]*\):.*## /\1\t/p' Makefile | expand -t 10

build: ## Builds the importable packages, in build/, and the simulator
	$(call setup,build --wanted usb)
	$(call configure,default,-DZVR_TESTS=OFF -DZVR_INSTALL_DIR=)
	$(CMAKE) --build $(BUILD)

demo: build ## Runs the main job against the simulator
	$(PYTHON) examples/demo.py

shell: build ## Opens Python with the packages imported and the simulator at hand
	PATH="$(CURDIR)/$(BUILD)/bin:$$PATH" $(PYTHON) -i tools/shell.py

install: build ## Installs packages and simulator below PREFIX (/usr/local)
	$(call configure,default,-DZVR_TESTS=OFF -DZVR_INSTALL_DIR=$$($(PYTHON) tools/install_dir.py $(PREFIX)))
	$(CMAKE) --install $(BUILD) --prefix $(PREFIX) --component python
	@$(PYTHON) tools/install_dir.py $(PREFIX) --advice

venv: build ## Makes a virtual environment with packages and simulator, VENV (build/venv)
	@$(PYTHON) -c 'import ensurepip' 2>/dev/null || echo "Without pip: python3-venv is not installed"
	$(PYTHON) -m venv $$($(PYTHON) -c 'import ensurepip' 2>/dev/null || echo --without-pip) $(VENV)
	$(MAKE) --no-print-directory install PREFIX=$(VENV)

check: ## Checks the format of C++ code, that no layer includes a higher one, and names in Python code
	$(call setup,check)
	find $(SOURCES) -name '*.h' -o -name '*.cpp' | xargs clang-format --dry-run --Werror
	$(PYTHON) tools/layers.py
	$(PYTHON) -m pyflakes examples bench docs python tests tools

build-tests:
	$(call setup,build usb test)
	$(call configure,default,-DZVR_TESTS=ON -DZVR_INSTALL_DIR=)
	$(CMAKE) --build $(BUILD)

test: build-tests ## Runs all tests
	$(PYTHON) -m mypy.stubtest pyzvr --allowlist tests/stubtest_allowlist.txt
	$(PYTHON) -m mypy --strict python/zvrkit
	$(PYTHON) -m mypy --strict examples
	$(PYTHON) tools/generate.py --check
	cd $(BUILD) && ctest --output-on-failure --no-tests=error
	$(PYTHON) -m pytest -q tests/python tests/zvrkit

bench: ## Measures beside what a user would pick instead
	$(call setup,build usb bench)
	$(call configure,bench)
	$(CMAKE) --build $(BUILD)
	$(PYTHON) bench/run.py

soak: build ## Streams from sixteen devices for SOAK_SECONDS and compares every row
	$(PYTHON) bench/soak.py $(SOAK_SECONDS)

# Tests of what several threads, loops and processes do at once: the sanitizers run them LONGER times.
LONGER ?= 3
RACES = clients decoder_threads event_loop_endings event_loops exit forks gates hostile link_failures logger \
	logger_endings logger_replaced queues reading_right replaced_threads
races = $(RACES:%=tests/python/test_%.py)

# The sanitizer keeps what is freed for a while, so tests of memory say nothing here; a fork copies locks of its
# allocator as they are, so threads started in the child hang. Its own account of thread-local storage
# (intercept_tls_get_addr) ends some processes by a signal.
sanitized = -k "not (take_no_memory or closes_handles_with_streams)"
asan: ## Runs engine and Python tests under the address, leak and undefined-behaviour sanitizers
	$(call setup,build usb asan)
	$(call configure,asan)
	$(CMAKE) --build build/asan
	cd build/asan && ctest --output-on-failure --no-tests=error --repeat until-fail:$(LONGER)
	$(CXX) -shared -fPIC -o build/asan/fork.so tests/sanitizers/fork.cpp
	export PYTHONPATH=$(CURDIR)/build/asan/package:$(CURDIR)/tests/sanitizers/without PYTHONMALLOC=malloc \
	ASAN_OPTIONS=detect_leaks=1:verify_asan_link_order=0:intercept_tls_get_addr=0 UBSAN_OPTIONS=print_stacktrace=1 \
	LSAN_OPTIONS=suppressions=$(CURDIR)/tests/sanitizers/leaks.supp:print_suppressions=0 \
	LD_PRELOAD="$(CURDIR)/build/asan/fork.so $$($(CXX) -print-file-name=libasan.so) $$($(CXX) -print-file-name=libstdc++.so)"; \
	$(PYTHON) -X faulthandler -m pytest -q -p no:cacheprovider $(sanitized) tests/python || exit 1; \
	for round in $$(seq 2 $(LONGER)); do \
		$(PYTHON) -X faulthandler -m pytest -q -p no:cacheprovider $(sanitized) $(races) || exit 1; \
	done

tsan: ## Runs the engine's tests under the thread sanitizer
	$(call setup,build tsan)
	$(call configure,tsan)
	$(CMAKE) --build build/tsan
	cd build/tsan && TSAN_OPTIONS=halt_on_error=1 ZVR_TRIPS=1000000 ctest --output-on-failure --no-tests=error --repeat until-fail:$(LONGER)

fuzz: ## Fuzzes for FUZZ_SECONDS each
	$(call setup,build fuzz)
	$(call configure,fuzz)
	$(CMAKE) --build build/fuzz
	mkdir -p build/fuzz/corpus
	build/fuzz/bin/splitter_fuzz -max_total_time=$(FUZZ_SECONDS) -max_len=100000 build/fuzz/corpus fuzz/corpus/splitter

lint: check ## The same, and what clang-tidy finds
	$(call setup,build lint)
	$(call configure,lint)
	$(CMAKE) --build build/lint --target pyzvr
	git ls-files 'src/*.cpp' 'simulator/*.cpp' | xargs -P "$$(nproc)" -n 4 clang-tidy -p build/lint --quiet

stubs: build ## Writes the type stub from the module
	$(PYTHON) tools/generate.py

docs: build ## Makes the site, build/docs/html, and checks its links
	$(call setup,docs)
	$(PYTHON) tools/site_tree.py build/docs/tree
	$(PYTHON) -m sphinx -b html -W --keep-going -n -q -j auto -c docs -d build/docs/read build/docs/tree/docs build/docs/html
	$(PYTHON) tools/site_links.py build/docs/html

clean: ## Removes what was built
	rm -rf build
