#!/usr/bin/env bash
# Fails when a folder of src includes what does not stand to its right in
#   app -> input -> control -> remote -> { config, net } -> app/base
# or when a tool includes anything of src but remote/wire and app/base.
set -eu
cd "$1"
bad=0

check() {  # folder, pattern of includes that it may not have, files to look at
    local folder=$1 refused=$2
    shift 2
    if grep -nE "^#include \"($refused)" "$@"; then
        echo "^ $folder may not include these"
        bad=1
    fi
}

files() { find "$@" -name '*.h' -o -name '*.cpp'; }

check app/base 'app/[^b]|input/|control/|remote/|config/|net/' $(files src/app/base)
check config 'app/[^b]|input/|control/|remote/|net/' $(files src/config)
check net 'app/[^b]|input/|control/|remote/|config/' $(files src/net)
check remote 'app/[^b]|input/|control/' $(files src/remote)
check control 'app/[^b]|input/' $(files src/control)
check input 'app/[^b]' $(files src/input)
check tools 'app/[^b]|input/|control/|config/|net/|remote/[^w]' $(files tools bench/latency.cpp)
[ "$bad" = 0 ] && echo "every include follows its arrow"
exit "$bad"
