# Front door. `make demo` and `make test` install what is missing, build and run.
JOBS ?= $(shell nproc)
RELEASE := build/release
SANITIZE := build/sanitize

.PHONY: all deps build demo test test-sanitize bench install clean

all: build

deps:
	@scripts/install-deps.sh

build: deps
	cmake -S . -B $(RELEASE) -DCMAKE_BUILD_TYPE=Release
	cmake --build $(RELEASE) -j $(JOBS)

# Only the tool and the plug-in, built quietly: the build's output goes to a
# log that is shown when the build fails.
demo: deps
	@mkdir -p $(RELEASE)
	@echo "Building the tool and the plug-in in $(RELEASE) (log: $(RELEASE)/demo-build.log)"
	@{ cmake -S . -B $(RELEASE) -DCMAKE_BUILD_TYPE=Release && \
	   cmake --build $(RELEASE) -j $(JOBS) --target tarvex Tarvex; } >$(RELEASE)/demo-build.log 2>&1 || \
	 { cat $(RELEASE)/demo-build.log; echo "make demo: the build failed" >&2; exit 1; }
	@scripts/demo.sh $(RELEASE)

test: build
	ctest --test-dir $(RELEASE) --output-on-failure -j $(JOBS)

# The same suite built with AddressSanitizer and UndefinedBehaviorSanitizer.
test-sanitize: deps
	cmake -S . -B $(SANITIZE) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARVEX_SANITIZE=ON \
	  -DTARVEX_BUILD_BENCHMARKS=OFF
	cmake --build $(SANITIZE) -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
	  ctest --test-dir $(SANITIZE) --output-on-failure -j $(JOBS)

bench: build
	scripts/bench.sh $(RELEASE)

install: build
	cmake --install $(RELEASE)

clean:
	rm -rf build
