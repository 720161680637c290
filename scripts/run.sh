#!/usr/bin/env bash
# Sets up, builds and starts the editor.
set -euo pipefail

src="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${BUILD_DIR:-$src/build}"

bash "$src/scripts/setup.sh"
cmake -S "$src" -B "$build" -DCMAKE_BUILD_TYPE=Release
cmake --build "$build" --parallel "$(nproc)" --target zyhelpeditor # tests and benchmarks are built by scripts/test.sh

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
    cat >&2 <<MSG
run: no display found (neither DISPLAY nor WAYLAND_DISPLAY is set).
     The editor is a desktop window and needs one. Without a desktop, start it
     inside a virtual X server:

         xvfb-run -a -s "-screen 0 1600x1000x24" "$build/zyhelpeditor"
MSG
    exit 1
fi
exec "$build/zyhelpeditor"
