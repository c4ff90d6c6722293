#!/usr/bin/env bash
# include_arrows.sh DIR: fails when a file of DIR/src includes what does not stand to the right of its room in
#   app -> input -> control -> remote -> { config, net } -> base
# or when a tool includes anything of src but the wire's headers, the map text and base (tools/simulated and
# tools/ctl are made of the daemon's own rooms).
# However an include is written ("../x/y.h", <x/y.h>), it is the file that it leads to which counts.
# include_arrows.sh --prove: a tree with one wrong include of each kind must fail.
set -eu

declare -A may=(
    [base]="base" [config]="config base" [net]="net base" [remote]="remote config net base"
    [control]="control remote config net base" [input]="input control remote config net base"
    [app]="app input control remote config net base" [main.cpp]="app input base"
)

# The path without its "." and "..", in `plain`.
simplify() {
    local part parts=()
    IFS=/ read -ra given <<<"$1"
    for part in "${given[@]}"; do
        case $part in
            '' | .) ;;
            ..) parts=("${parts[@]:0:${#parts[@]}-1}") ;;
            *) parts+=("$part") ;;
        esac
    done
    plain=$(IFS=/; echo "${parts[*]}")
}

# The file of src that `name`, included from the file `from`, leads to, in `target`; empty when it is none.
resolve() {
    local from=$1 name=$2 way
    target=
    for way in "${from%/*}/$name" "src/$name" "tools/$name"; do
        if [[ -f $way ]]; then
            simplify "$way"
            if [[ $plain == src/* ]]; then
                target=${plain#src/}
            fi
            return
        fi
    done
}

allowed() {  # file, included file of src
    local room=${1#src/} wanted=${2%%/*}
    if [[ $1 == tools/simulated/* ]]; then
        [[ $wanted != app ]]
    elif [[ $1 == tools/ctl/* ]]; then
        [[ " ${may[control]} " == *" $wanted "* ]]
    elif [[ $1 == tools/* ]]; then
        [[ $2 == remote/wire.h || $2 == remote/wire_text.h || $2 == remote/map_text.h || $wanted == base ]]
    else
        [[ " ${may[${room%%/*}]:-} " == *" $wanted "* ]]
    fi
}

check() {
    local bad=0 file line name target plain
    while IFS=: read -r file line name; do
        name=${name#*[<\"]}
        resolve "$file" "${name%%[>\"]*}"
        if [[ -n $target ]] && ! allowed "$file" "$target"; then
            echo "$file:$line: may not include $target"
            bad=1
        fi
    done < <(grep -rnE '^[[:space:]]*#[[:space:]]*include[[:space:]]*[<"][^>"]*/' src tools --include='*.h' --include='*.cpp')
    return "$bad"
}

prove() {
    local wrong file text
    tree=$(mktemp -d)
    trap 'rm -rf "$tree"' EXIT
    cd "$tree"
    mkdir -p src/{base,net,remote,control,input} tools/rig
    touch src/{base/b,remote/wire,remote/r,control/c,input/i}.h
    echo '#include "../base/b.h"' >src/net/fine.cpp
    check
    for wrong in 'src/remote/a.cpp "../input/i.h"' 'src/remote/a.cpp <control/c.h>' 'src/base/a.h "remote/../control/c.h"' \
        'src/net/a.cpp # include "remote/r.h"' 'tools/rig/a.cpp "../../src/remote/r.h"'; do
        file=${wrong%% *}
        text=${wrong#* }
        echo "${text/#[<\"]/#include ${text:0:1}}" >"$file"
        if check >/dev/null; then
            echo "passed, but is wrong: $wrong"
            exit 1
        fi
        rm "$file"
    done
    echo "each wrong include is found"
}

if [[ $1 == --prove ]]; then
    prove
    exit
fi
cd "$1"
check
echo "every include follows its arrow"
