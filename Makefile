# A thin front to the CMake presets. Each target installs what it needs if it is missing.
#
#   make build    build the library and the examples (profile desk; distro where the 2.12 SDK can't be had)
#   make demo     run the example shell on a script and show the trace of that run
#   make test     build and run the tests
#   make check    everything that CI runs
#   make package  make Debian packages in build/<preset>/packages
#   make clean    remove the build trees

.PHONY: build demo test check check-wider package clean

CTEST_FLAGS ?= -j2

build:
	@tools/prerequisites build test
	@tools/build "$$(tools/profile)"

demo:
	@tools/prerequisites build test
	@profile=$$(tools/profile) && tools/build $$profile && tools/demo build/$$profile

test:
	@tools/prerequisites build test
	@profile=$$(tools/profile) && tools/build $$profile && ctest --preset $$profile $(CTEST_FLAGS)

check: test check-wider

check-wider:
	@tools/prerequisites build test unit check
	@tools/check

package:
	@tools/prerequisites build
	@tools/package

clean:
	rm -rf build
