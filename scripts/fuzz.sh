#!/usr/bin/env bash
# Builds the libFuzzer targets of the file readers with clang (ZY_FUZZ=ON) in
# BUILD_DIR (default: build-fuzz in the source tree) and runs each for
# FUZZ_SECONDS (default 60) on a copy of its corpus in tests/fuzz/corpus.
# Fails if a target finds a crash, a leak, a timeout, memory over 2 GiB or a
# round trip that changes what was read; the input is kept in BUILD_DIR.
set -euo pipefail

source_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build_dir=${BUILD_DIR:-$source_dir/build-fuzz}
seconds=${FUZZ_SECONDS:-60}
targets=(document project po xliff)

bash "$source_dir/scripts/setup.sh"

cmake -S "$source_dir" -B "$build_dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_COMPILER=clang++ -DZY_FUZZ=ON >/dev/null
cmake --build "$build_dir" --parallel 2 --target "${targets[@]/#/fuzz_}"

failed=()
for target in "${targets[@]}"; do
    run_dir=$build_dir/fuzz-run/$target
    rm -rf "$run_dir"
    mkdir -p "$run_dir/corpus" "$run_dir/found"
    # The fuzzer adds what it finds to its corpus: a copy, never the committed one.
    cp "$source_dir/tests/fuzz/corpus/$target/"* "$run_dir/corpus/"
    dict=$source_dir/tests/fuzz/xml.dict
    [ "$target" = po ] && dict=$source_dir/tests/fuzz/po.dict
    echo "fuzz.sh: fuzz_$target for ${seconds}s"
    if "$build_dir/tests/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=10 \
        -rss_limit_mb=2048 -dict="$dict" -artifact_prefix="$run_dir/found/" \
        "$run_dir/corpus" >"$run_dir/log" 2>&1 && [ -z "$(ls -A "$run_dir/found")" ]; then
        tail -n 1 "$run_dir/log"
    else
        tail -n 60 "$run_dir/log"
        echo "fuzz.sh: fuzz_$target failed; the input is in $run_dir/found" >&2
        failed+=("$target")
    fi
done

if [ ${#failed[@]} -gt 0 ]; then
    echo "fuzz.sh: faults found by: ${failed[*]}" >&2
    exit 1
fi
echo "fuzz.sh: no faults in ${#targets[@]} targets"
