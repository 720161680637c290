#!/usr/bin/env bash
# Fails when a C++ file under src/, tests/ or bench/ is not formatted as
# .clang-format says, and prints what clang-format would change. The version is
# fixed (another one formats some lines differently): clang-format 14, which
# scripts/setup.sh installs on Debian 12. Without it the test is skipped.
#
#   check-format.sh SOURCE_DIR
set -euo pipefail

tool=clang-format-14
command -v "$tool" >/dev/null || { echo "code style: $tool is missing, not checked"; exit 77; }
cd "$1"

files=0 wrong=0
while IFS= read -r -d '' file; do
    files=$((files + 1))
    "$tool" --style=file "$file" | diff -u --label "$file" --label "$file, formatted" "$file" - ||
        wrong=$((wrong + 1))
done < <(find src tests bench \( -name '*.cpp' -o -name '*.h' \) -print0 | sort -z)

[ "$files" -gt 0 ] || { echo "code style: no C++ files found in $PWD" >&2; exit 1; }
if [ "$wrong" -gt 0 ]; then
    echo "code style: $wrong of $files files are not formatted; run" \
        "'$tool -i' on them (see above)" >&2
    exit 1
fi
echo "code style: all $files C++ files are formatted as .clang-format says"
