#!/usr/bin/env bash
# Sets up, builds from scratch and runs every test headless.
# BUILD_DIR chooses the build folder (default: build-test in the source tree).
set -euo pipefail

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
