# The everyday commands. Each installs what is missing first.
BUILD ?= build
JOBS ?= 2
# clang when the machine has it (the fuzz test needs it), else the system compiler.
CXX_COMPILER ?= $(shell command -v clang++ 2>/dev/null || command -v g++)
CTEST = cd $(BUILD) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j$(JOBS)

PREFIX ?= /usr/local

.PHONY: all deps configure build run test test-long bench demo clean install-client

all: build

deps:
	@scripts/install-deps

configure: deps
	@cmake -S . -B $(BUILD) -DCMAKE_CXX_COMPILER=$(CXX_COMPILER) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null

build: configure
	@cmake --build $(BUILD) -j$(JOBS)

run: build
	$(BUILD)/src/app/tarvoqrb $(ARGS)

test: build
	$(CTEST) -LE long

test-long: build
	$(CTEST) -L long

# A café's day, headless and faster than real time, checked against its own database.
demo: build
	$(BUILD)/tools/demo/tarvoqrb-demo $(BUILD)/demo

bench: build
	@scripts/bench-results $(BUILD)

# The terminal client for a café PC: the program, its kiosk session for the display
# manager's session list, and an example settings file (copied to /etc unless one is there).
install-client: configure
	@cmake --build $(BUILD) -j$(JOBS) --target tarvoqrb-client
	DESTDIR=$(DESTDIR) cmake --install $(BUILD) --component client --prefix $(PREFIX)
	@[ -e $(DESTDIR)/etc/tarvoqrb-client.ini ] || install -D -m 644 tools/client/kiosk/tarvoqrb-client.ini $(DESTDIR)/etc/tarvoqrb-client.ini

clean:
	rm -rf $(BUILD)
