#!/bin/bash
# walls.sh TAVRIKCTL [--update]: each wall of docs/walls is without a mistake, its map lines stand in docs/walls.md, and its
# picture is what tavrikctl draws. With --update the pictures are drawn anew first.
set -euo pipefail
ctl=$(realpath "$1")
cd "$(dirname "$0")/../../docs"
drawn=$(mktemp)
trap 'rm -f "$drawn"' EXIT
for file in walls/*.ini; do
    checked=$("$ctl" check --console 192.168.1.20 "$file") && [[ $checked == "$file: fine;"* ]] || {
        echo "$checked"
        exit 1
    }
    grep '^kOutIpmap' "$file" | while read -r line; do
        grep -qxF "$line" walls.md || { echo "docs/walls.md has not: $line" && exit 1; }
    done
    "$ctl" draw --console 192.168.1.20 --svg "$drawn" "$file"
    [[ ${2:-} != --update ]] || cat "$drawn" >"${file%.ini}.svg"
    cmp "$drawn" "${file%.ini}.svg" || { echo "${file%.ini}.svg is not the wall: ./test --docs --update" && exit 1; }
    grep -qF "(${file%.ini}.svg)" walls.md || { echo "docs/walls.md does not show ${file%.ini}.svg" && exit 1; }
done
