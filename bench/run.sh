#!/bin/bash
# Measures the console beside a plain loop and a loop that reads in batches.
set -euo pipefail
# shellcheck source=tools/rig/build.sh
. "$(dirname "$0")/../tools/rig/build.sh"

usage() {
    cat <<'TEXT'
./test --bench [--json FILE] [--only GROUP] [--budget] [--arm]

Installs what is missing (Debian), builds, and prints one table in about three minutes: delays, full speed,
a key beside busy mice, the log, system calls and instructions of a report, start, idle, memory, and how long
settings and a wall take. docs/performance.md tells how to read it.

  --json FILE   write the table to FILE as well
  --only GROUP  delays, speed, mice, logs, costs, rest or micro
  --arm         only the instructions of a report of the build for the board, under emulation
  --budget      only what is judged: system calls and instructions; exit status 1 when a limit is exceeded
TEXT
}

json=
only=
arm=
options=()
while (($# > 0)); do
    case $1 in
        --help | -h)
            usage
            exit 0
            ;;
        --json)
            # From where the command was given, not from the project's directory.
            json=$(realpath -m "${2:?--json needs a file}")
            options+=(--json "$json")
            shift
            ;;
        --only)
            only=${2:?--only needs a group}
            shift
            ;;
        --arm) arm=1 ;;
        *) options+=("$1") ;;
    esac
    shift
done

cd "$(dirname "$0")/.."
packages+=("${test_packages[@]}" strace valgrind)
if [[ -n $arm ]]; then
    packages+=(g++-arm-linux-gnueabihf googletest qemu-user)
fi
install_missing
build release
if [[ -n $arm ]]; then
    build arm tavrik tavrik-plain-loop tavrik-batch-loop
    exec build/release/bench/tavrik-bench --arm build/arm ${options[@]+"${options[@]}"}
fi
if [[ $only != micro ]]; then
    build/release/bench/tavrik-bench ${options[@]+"${options[@]}"} ${only:+--only "$only"}
fi
if [[ -z $only || $only == micro ]] && [[ " ${options[*]-} " != *" --budget "* ]]; then
    build/release/bench/tavrik-microbench --benchmark_counters_tabular=true 2>/dev/null
fi
