# make run     set up, build, play an agent's morning against a sample desk, and open the cockpit over it
# make test    set up, build, check the formatting and run every test
# make help    the rest

PRESET ?= release
BUILD := build/$(PRESET)
JOBS ?= $(shell nproc)

.DEFAULT_GOAL := build

.PHONY: build run test screenshots bench fuzz format check-format tidy check-home install uninstall clean help setup setup-tests

help:
	@echo "make run       set up, build, play an agent's morning against a sample desk, open the cockpit over it"
	@echo "make test      set up, build, check the formatting and run every test"
	@echo "make build     set up and build into $(BUILD)/Contents"
	@echo "make bench     run the benchmarks and write docs/performance.md"
	@echo "make screenshots  take the pictures of docs/screenshots anew"
	@echo "make fuzz      run every fuzz target for a minute (FUZZ_SECONDS=60)"
	@echo "make format    format the sources"
	@echo "make tidy      look over the sources with clang-tidy; takes long"
	@echo "make install   install below PREFIX (/usr/local)"
	@echo "make uninstall remove what that installed below the same PREFIX, and nothing else"
	@echo "make clean     remove the build folder"
	@echo "PRESET=debug|release|asan|tsan chooses how; release is the default."

setup:
	@scripts/setup

setup-tests:
	@scripts/setup --tests

check-home:
	@scripts/check-home

# Tests are built only by those who run them: a machine that only runs the program does not need their libraries.
build: setup
	@cmake --preset $(PRESET) -DBUILD_TESTING=OFF -DMERVO_BENCH=OFF >/dev/null
	@cmake --build --preset $(PRESET) -j $(JOBS)

run: check-home build
	@demo/morning $(BUILD) --cockpit

test: setup-tests check-format
	@cmake --preset $(PRESET) -DBUILD_TESTING=ON -DMERVO_BENCH=OFF >/dev/null
	@cmake --build --preset $(PRESET) -j $(JOBS)
	@scripts/run-tests $(PRESET)

bench: setup-tests
	@cmake --preset release -DBUILD_TESTING=OFF -DMERVO_BENCH=ON >/dev/null
	@cmake --build --preset release -j $(JOBS)
	@bench/run build/release

screenshots: setup-tests build
	@scripts/make-screenshots $(BUILD) docs/screenshots

fuzz:
	@scripts/setup --fuzz
	@scripts/fuzz

format: setup-tests
	@git ls-files -- '*.cpp' '*.h' | xargs clang-format -i

check-format: setup-tests
	@git ls-files -- '*.cpp' '*.h' | xargs -r clang-format --dry-run -Werror

# The build comes first: some headers of the cockpit are generated.
tidy:
	@scripts/setup --tests --tidy
	@cmake --preset $(PRESET) -DBUILD_TESTING=ON -DMERVO_BENCH=ON >/dev/null
	@cmake --build --preset $(PRESET) -j $(JOBS)
	@git ls-files -- '*.cpp' ':!fuzz' | xargs -P $(JOBS) -n 1 clang-tidy -p $(BUILD) --quiet

PREFIX ?= /usr/local
install: check-home build
	@cmake --install $(BUILD) --prefix $(PREFIX)
	@cp $(BUILD)/install_manifest.txt $(DESTDIR)$(PREFIX)/lib/mervo/

uninstall:
	@scripts/uninstall $(PREFIX)

clean:
	@rm -rf build
