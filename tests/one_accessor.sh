#!/usr/bin/env bash
# one_accessor.sh DIR: fails when a file of DIR/src but the handover and the picture changes the box in control, or when a
# file but those that need it takes a guard by itself.
# one_accessor.sh --prove: a tree with one wrong line of each kind must fail.
set -eu

# What only some files may say: a pattern, and these files.
rules=(
    'changeBoxInControl|box_change\.h' 'remote/(box_change\.h|(box_in_control|handover|picture)\.cpp)'
    'Guarded<Controlled>' 'remote/box_in_control\.cpp'
    'lock_guard|unique_lock|scoped_lock|shared_lock|boxGuard|std::mutex|shared_mutex|pthread_mutex'
    'base/guarded\.h|base/log_queue\.(h|cpp)|input/input_thread\.cpp|config/whole_file\.(h|cpp)'
)

check() {
    local bad=0 i found
    for ((i = 0; i < ${#rules[@]}; i += 2)); do
        if found=$(cd src && grep -rnE "${rules[i]}" . | sed 's,^\./,src/,' | grep -vE "^src/(${rules[i + 1]}):"); then
            echo "$found"
            echo "only in ${rules[i + 1]}"
            bad=1
        fi
    done
    return "$bad"
}

prove() {
    local wrong file
    tree=$(mktemp -d)
    trap 'rm -rf "$tree"' EXIT
    cd "$tree"
    mkdir -p src/{base,config,remote,input}
    echo 'const std::lock_guard hold(guard_);' >src/base/guarded.h
    echo 'changeBoxInControl(change);' >src/remote/handover.cpp
    check
    for wrong in 'remote/reports.cpp changeBoxInControl(change);' 'input/a.h #include "remote/box_change.h"' \
        'remote/handover.h changeBoxInControl' 'remote/handover.cpp std::mutex guard;' 'input/a.cpp std::unique_lock hold(guard);' \
        'base/guarded.cpp boxGuard.lock();' 'remote/a.cpp Guarded<Controlled> mine;'; do
        file=${wrong%% *}
        mv src/remote/handover.cpp kept
        cp kept src/remote/handover.cpp
        echo "${wrong#* }" >>"src/$file"
        if check >/dev/null; then
            echo "passed, but is wrong: $wrong"
            exit 1
        fi
        [[ $file == remote/handover.cpp ]] || rm "src/$file"
        mv kept src/remote/handover.cpp
    done
    check
    echo "each wrong line is found"
}

if [[ $1 == --prove ]]; then
    prove
    exit
fi
cd "$1"
check
echo "the box in control changes in two places, and guards are taken in those that need it"
