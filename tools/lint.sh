#!/bin/bash
# Format, static analysis and shell scripts: what the compilers do not see. Installs what is missing; no build
# is needed. Shows every finding and ends with status 1 when there is one.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=tools/rig/build.sh
. tools/rig/build.sh
packages+=("${test_packages[@]}" libboost-dev clang-format clang-tidy shellcheck)
install_missing
[[ -f build/release/compile_commands.json ]] || cmake --preset release >/dev/null

failed=0
# check NAME COMMAND...: the files are read from standard input, the findings shown when there are any.
check() {
    local name=$1 files findings
    shift
    mapfile -t files
    if ((${#files[@]} > 0)) && findings=$(printf '%s\0' "${files[@]}" | xargs -0 "$@" 2>&1); then
        echo "$name: ${#files[@]} files"
    else
        printf '%s\n' "${findings:-no file to check}" | grep -v ' warnings\? generated' || true
        echo "$name: FAILED"
        failed=1
    fi
}

# Everything that is no build's: a checkout without history has no list of its files.
sources() { find "$@" -name '*.cpp' -o -name '*.h' | sort; }
scripts() { grep -rlE --exclude-dir={build,.git,node_modules} '^#!.*sh$' . | sort; }

check clang-format clang-format --dry-run -Werror < <(sources src tools tests bench fuzz)
check shellcheck shellcheck -x < <(scripts)
check clang-tidy -P "$(nproc)" -n 4 clang-tidy -p build/release --quiet < <(sources src tools | grep 'cpp$')
exit "$failed"
