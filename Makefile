# TOLVA: `make` builds, `make run FILE=...` starts the editor, `make test` runs every test.
BUILD      ?= build
ASAN_BUILD ?= build-asan
PREFIX     ?= /usr/local
JOBS       ?= $(shell nproc)
CMAKE_GEN   = -G Ninja

.PHONY: all build deps run test bench install clean

all: build

deps:
	@scripts/deps

build:
	@cmake -S . -B $(BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	@cmake --build $(BUILD) -j $(JOBS)

run: deps build
	@scripts/run-editor $(CURDIR)/$(BUILD)/app/tolva $(FILE)

test: deps
	@scripts/run-tests $(BUILD) $(ASAN_BUILD)

bench: deps build
	@scripts/run-bench $(BUILD)

install: deps
	@cmake -S . -B build-install $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTOLVA_TEST_HOOKS=OFF \
	  -DTOLVA_TESTS=OFF -DTOLVA_BENCH=OFF -DCMAKE_INSTALL_PREFIX=$(PREFIX) >/dev/null
	@cmake --build build-install -j $(JOBS)
	@cmake --install build-install

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) build-install
