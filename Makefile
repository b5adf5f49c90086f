# Two commands do everything on a fresh machine: `make run` and `make test`.
# ARGS passes options to the viewer: make run ARGS="--scene --format RGB8"

ARGS ?=

# What one build folder has compiled serves the others.
export CCACHE_BASEDIR := $(CURDIR)
export CCACHE_NOHASHDIR := 1

.PHONY: run viewer test bench package check-packages reference gallery tour matrix twins build deps clean

run: viewer
	tools/with-screen build/viewer/apps/zynview/zynview $(if $(DISPLAY),,--seconds 5 --save build/zynview.png) $(ARGS)

# The viewer alone: no tests, no benchmarks, and nothing installed for them.
viewer:
	@tools/install-packages build run
	@cmake --preset viewer >/dev/null
	@cmake --build --preset viewer --target zynview

build: deps
	@cmake --preset release >/dev/null
	@cmake --build --preset release

deps:
	@tools/install-packages build run test

test: deps
	@tools/install-packages package qt6
	tools/run-tests

bench: deps build
	tools/with-screen --virtual build/release/bench/zynbench --benchmark_filter=-OpenGL
	tools/with-screen --virtual env QT_QPA_PLATFORM=xcb build/release/bench/zynbench --benchmark_filter=OpenGL

# The Debian packages, in build/packages.
package: deps
	@tools/install-packages package
	tools/make-package

# Installs, runs and purges the packages in a fresh Debian root.
check-packages:
	@tools/install-packages root
	tests/install/check-packages

# The reference of the public headers, in build/reference.
reference:
	@tools/install-packages package
	tools/make-reference

# The pictures of docs/gallery.md.
gallery: deps build
	tools/with-screen --virtual tools/make-gallery build/release/apps/zynview/zynview

# The pictures of docs/user-guide.md: a session with mouse and keys.
tour: deps build
	@tools/install-packages tour
	tools/with-screen --virtual tools/make-tour build/release/apps/zynview/zynview

# The table of docs/cpu-and-gl.md, by the test that holds the two variants against each other.
matrix: deps
	tools/with-screen --virtual tools/make-matrix

# The pictures of docs/cpu-and-gl.md.
twins: deps build
	tools/with-screen --virtual tools/make-twins build/release/apps/zynview/zynview

clean:
	rm -rf build
