# Short names for what the tools do. Each target installs the Debian packages that it needs.
#
#   make build    build all (preset desk; distro if its sysroot can't be made)
#   make demo     run the example shell on a script, and show the trace of that run
#   make test     build all and run the tests
#   make check    everything that CI runs; notes in build/checked that the commit passed
#   make bench    measure the library beside its peers (about 15 minutes, on an idle machine)
#   make fuzz     compare the library with plain models on random inputs; SECONDS=60 for each target, SEED=N repeats a run
#   make coverage list the lines that the tests don't run, and the share of lines and branches that they run
#   make package  make the Debian packages for this machine, in build/distro/packages
#   make docs     make the site of guides and reference, build/docs/index.html
#   make dist     make the source archive of the last commit, in build/dist
#   make clean    remove the build trees

.PHONY: build demo test check check-wider bench fuzz coverage package docs dist clean

CTEST_FLAGS ?= -j2

build:
	@tools/prerequisites build
	@tools/build "$$(tools/profile)"

demo:
	@tools/prerequisites build test
	@profile=$$(tools/profile) && tools/build $$profile && tools/demo build/$$profile

test:
	@tools/prerequisites build test
	@profile=$$(tools/profile) && tools/build $$profile && tools/test $$profile $(CTEST_FLAGS)

check:
	@tools/checked $(MAKE) --no-print-directory test check-wider

check-wider:
	@tools/prerequisites build test unit check bench docs
	@tools/check

bench:
	@tools/prerequisites build test bench
	@tools/bench run

# SECONDS given to make, not the one that a shell may have exported.
fuzz: SECONDS = 60
fuzz:
	@tools/prerequisites build test check
	@tools/fuzz --seconds $(SECONDS) $(if $(SEED),--seed $(SEED))

coverage:
	@tools/prerequisites build test coverage
	@tools/coverage

package:
	@tools/prerequisites build
	@tools/package

docs:
	@tools/prerequisites docs
	@tools/docs

dist:
	@tools/prerequisites dist
	@tools/dist

docs/%.svg: docs/%.dot
	@tools/prerequisites docs
	dot -Tsvg $< -o $@

docs/synopses.svg: docs/samples/show.velk
	@tools/prerequisites build docs
	@profile=$$(tools/profile) && tools/build $$profile && \
	  build/$$profile/tools/velk/program/corvane-velk graph --output $@ $<

clean:
	rm -rf build
