#!/bin/bash
# walls.sh TAVRIKCTL [--update]: each wall of docs/walls is without a mistake, its map lines stand in docs/walls.md, and its
# picture is what tavrikctl draws. With --update the pictures are drawn anew first.
set -euo pipefail
ctl=$(realpath "$1")
cd "$(dirname "$0")/../../docs"
drawn=$(mktemp)
trap 'rm -f "$drawn"' EXIT
fail() {
    echo "$1"
    exit 1
}

for file in walls/*.ini; do
    checked=$("$ctl" check --console 192.168.1.20 "$file") || fail "$checked"
    [[ $checked == "$file: fine;"* ]] || fail "$checked"
    mapfile -t lines < <(grep '^kOutIpmap' "$file")
    for line in "${lines[@]}"; do
        grep -qxF "$line" walls.md || fail "docs/walls.md has not: $line"
    done
    "$ctl" draw --console 192.168.1.20 --svg "$drawn" "$file"
    picture=${file%.ini}.svg
    [[ ${2:-} != --update ]] || cat "$drawn" >"$picture"
    cmp "$drawn" "$picture" || fail "$picture is not the wall: ./test --docs --update"
    grep -qF "($picture)" walls.md || fail "docs/walls.md does not show $picture"
done
