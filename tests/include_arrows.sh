#!/usr/bin/env bash
# Fails when a folder of src includes what does not stand to its right in
#   app -> input -> control -> remote -> { config, net } -> app/base
# or when a tool includes anything of src but remote/wire and app/base.
set -eu
cd "$1"
bad=0

check() {  # folder, pattern of the folders that it may include, files to look at
    local folder=$1 allowed=$2
    shift 2
    if grep -nE '^#include "(app|input|control|remote|config|net)/' "$@" |
        grep -vE "#include \"($allowed)"; then
        echo "^ $folder may not include these"
        bad=1
    fi
}

files() { find "$@" -name '*.h' -o -name '*.cpp'; }

check app/base 'app/base/' $(files src/app/base)
check config 'config/|app/base/' $(files src/config)
check net 'net/|app/base/' $(files src/net)
check remote 'remote/|config/|net/|app/base/' $(files src/remote)
check control 'control/|remote/|config/|net/|app/base/' $(files src/control)
check input 'input/|control/|remote/|config/|net/|app/base/' $(files src/input)
check tools 'remote/wire.h|app/base/' $(files tools)
[ "$bad" = 0 ] && echo "every include follows its arrow"
exit "$bad"
