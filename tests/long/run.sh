#!/bin/bash
# run.sh: what is tried for longer than a test may take, in under 40 minutes: the laws, a person at a console who does
# anything at all, the storm under the thread sanitizer, a whole site, a soak, the fuzzers, the target.
# run.sh --short: some minutes of it. run.sh --soak HOURS: one console at human speed for so long.
set -euo pipefail
cd "$(dirname "$0")/../.."
# shellcheck source=tools/rig/build.sh
. tools/rig/build.sh
packages+=("${test_packages[@]}")
install_missing

kind=${1:-long}
failed=0
# try WHAT COMMAND...: a line with the time and the last of what it prints (a daemon's farewell apart); all of it
# is in build/long.
try() {
    local what=$1 started=$SECONDS
    local log=build/long/${what// /-}.log
    shift
    if "$@" >"$log" 2>&1; then
        echo "  ok    $what ($((SECONDS - started)) s): $(grep -v Normal "$log" | tail -n 1)"
    else
        cat "$log"
        echo "  FAIL  $what: $*"
        failed=1
    fi
}

mkdir -p build/long
build release tavrik tavrik-life tavrik-site laws
life=build/release/tools/life/tavrik-life
site=build/release/tools/life/tavrik-site
if [[ $kind == --soak ]]; then
    exec "$life" --faults --release-everything --pause 120 --seconds "$(awk "BEGIN {print int(${2:?hours} * 3600)}")"
fi
build tsan tavrik tavrik-life
storm=build/tsan/tools/life/tavrik-life
if [[ $kind == --short ]]; then
    try "laws" env LAWS_RUNS=10 build/release/tests/laws
    try "a life" "$life" --seconds 40 --pause 6
    try "a life with faults, everything released" "$life" --seconds 40 --pause 6 --faults --release-everything
    try "the storm" "$storm" --seconds 40 --acts 50 --storm
    try "a site of 6 consoles" "$site" --consoles 6 --seconds 30
    exit "$failed"
fi
try "laws" env LAWS_RUNS=100 build/release/tests/laws
for seed in 1 2 3; do
    try "a life, seed $seed" "$life" --seconds 40 --pause 6 --seed "$seed"
    try "a life with faults, seed $seed" "$life" --seconds 40 --pause 6 --seed "$seed" --faults --release-everything
done
try "the storm" "$storm" --seconds 600 --acts 50 --storm
try "a site of 24 consoles" "$site" --seconds 300
try "a soak" "$life" --faults --release-everything --pause 120 --seconds 180
try "what reads from outside" ./test --fuzz
try "the target" ./test --target
exit "$failed"
