#!/bin/bash
# run.sh [MINUTES] [TARGET...]: each fuzz target for so long (20 s without MINUTES), as many at once as there are
# processors, from the corpus in the tree and what earlier runs found. Status 1 when one finds something.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=tools/rig/build.sh
. tools/rig/build.sh
packages+=(clang libclang-rt-14-dev nlohmann-json3-dev)
install_missing

seconds=$((${1:-0} * 60))
((seconds > 0)) || seconds=20
shift || true
build fuzz
export TMPDIR=/dev/shm # some write files at every execution
if (($# == 0)); then
    mapfile -t targets < <(cd fuzz/corpus && ls)
    set -- "${targets[@]}"
fi

# one TARGET: its figures in a line; what a failure printed is shown.
one() {
    local target=$1 seconds=$2 found=build/fuzz/found/$1 log=build/fuzz/$1.log
    mkdir -p "$found"
    if "build/fuzz/fuzz/fuzz_$target" -max_total_time="$seconds" -max_len=4096 -timeout=10 -print_final_stats=1 \
        -dict=fuzz/words.dict -artifact_prefix="build/fuzz/$target-" "$found" "fuzz/corpus/$target" >"$log" 2>&1; then
        printf '  ok    %-10s %s, %s\n' "$target" "$(grep -c . <(ls "$found")) inputs kept" \
            "$(sed -n 's/.*DONE *\(cov: [0-9]*\).*/\1/p; s/stat::number_of_executed_units: \(.*\)/\1 executions/p' "$log" | paste -sd, -)"
    else
        tail -n 40 "$log"
        echo "  FAIL  $target: its input is build/fuzz/$target-*"
        return 1
    fi
}
export -f one
printf '%s\n' "$@" | xargs -P "$(nproc)" -I{} bash -c "one {} $seconds"
