#!/usr/bin/env bash
# The test command: sets up, builds from scratch and runs every test headless;
# then the same tests built with sanitizers (test-sanitize.sh), and every reader
# of outside files fuzzed (fuzz.sh). With --plain only the first part, as the
# forky leg runs it (forky has no clang 14 for fuzzing).
# BUILD_DIR chooses the build folder (default: build-test in the source tree).
set -euo pipefail

plain=0
[ "${1:-}" != --plain ] || plain=1

src="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${BUILD_DIR:-$src/build-test}"

bash "$src/scripts/setup.sh"

qt="$(qmake6 -query QT_VERSION 2>/dev/null || dpkg-query -W -f='${Version}' qt6-base-dev)"
echo "test: Qt $qt, $(g++ --version | head -n1), $(cmake --version | head -n1)"
rm -rf "$build"
cmake -S "$src" -B "$build" -DCMAKE_BUILD_TYPE=Release -DZY_WARNINGS_AS_ERRORS=ON
cmake --build "$build" --parallel "$(nproc)"
export QT_QPA_PLATFORM=offscreen
ctest --test-dir "$build" --output-on-failure --no-tests=error --timeout 600

[ "$plain" = 0 ] || exit 0
unset BUILD_DIR
echo "=== the same tests, built with AddressSanitizer and UndefinedBehaviorSanitizer ==="
bash "$src/scripts/test-sanitize.sh"
echo "=== every reader of outside files fuzzed, 60 s each ==="
bash "$src/scripts/fuzz.sh"
