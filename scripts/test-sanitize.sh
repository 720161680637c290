#!/usr/bin/env bash
# Builds from scratch with AddressSanitizer and UndefinedBehaviorSanitizer
# (ZY_SANITIZE=ON) and runs every test headless; any finding fails its test.
# BUILD_DIR chooses the build folder (default: build-sanitize in the source tree).
set -euo pipefail

src="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${BUILD_DIR:-$src/build-sanitize}"

bash "$src/scripts/setup.sh"

rm -rf "$build"
cmake -S "$src" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZY_WARNINGS_AS_ERRORS=ON \
    -DZY_SANITIZE=ON
cmake --build "$build" --parallel "$(nproc)"
export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir "$build" --output-on-failure --no-tests=error --timeout 1200
