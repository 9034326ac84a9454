# Two commands do everything on a fresh machine; the rest are the same steps one by one.
#   make demo    install what is missing, build, import real cards into a throwaway roster, look at them
#   make check   install what is missing, build and pass all tests, with sanitizers and in release

.PHONY: demo check bootstrap dev release deb deb-check bench fuzz interop tidy thread-safety format

demo: release
	tools/demo build/release/bin/roster

check: bootstrap
	cmake --preset dev
	cmake --build --preset dev
	ctest --preset dev -j 2
	cmake --preset release
	cmake --build --preset release
	ctest --preset release -j 2

bootstrap:
	@tools/bootstrap

dev release: bootstrap
	cmake --preset $@
	cmake --build --preset $@

# The packages libroster1, libroster-dev and roster, in build/deb/packages.
deb: bootstrap
	@tools/bootstrap --deb
	cmake --preset deb
	cmake --build --preset deb
	cpack --config build/deb/CPackConfig.cmake -B build/deb/packages

# Installs, uses and removes them in a fresh Debian 12 (debootstrap), as root.
deb-check: deb
	tests/install/packages build/deb/packages

# The API reference, in build/docs/html.
docs: bootstrap
	@tools/apidocs

bench: bootstrap
	cmake --preset bench
	cmake --build --preset bench
	bench/run build/bench

# The build and a short run of each target; bench/README.md and docs/limits.md tell how long a full run takes.
fuzz: bootstrap
	@tools/bootstrap --clang
	cmake --preset fuzz
	cmake --build --preset fuzz
	fuzz/run build/fuzz 60

# Has other readers of vCards read ours; tests/interop/run tells which.
interop: release
	@tools/bootstrap --interop
	tests/interop/run build/release

tidy: bootstrap
	@tools/bootstrap --clang
	cmake --preset tidy
	cmake --build --preset tidy

# Has clang check that guarded data and nts_ operations are used under their locks; builds nothing.
thread-safety: bootstrap
	@tools/bootstrap --clang
	cmake --preset tidy
	tests/house/thread_safety.py build/tidy

format:
	git ls-files '*.h' '*.cpp' '*.c' | xargs clang-format -i
