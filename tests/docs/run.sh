#!/bin/bash
# run.sh [--update]: what the pages say holds.
#
# - the examples of docs/protocol.md are what the console sends, and every message has one;
# - Wireshark's dissector says what tavrikctl says, field by field, and leaves other traffic alone;
# - the box and the OSD that the page tells how to write do their work in golden scripts;
# - the walls of docs/walls.md are those of their files;
# - the guide prints on one sheet;
# - the commands of README.md and the pages, typed in a fresh Debian, do what they should.
#
# With --update what is made of something else is written anew first, and nothing is typed.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cd "$here/../.."
# shellcheck source=tools/rig/build.sh
. tools/rig/build.sh
packages+=("${test_packages[@]}" cmark-gfm weasyprint fonts-dejavu-core python3 tshark)
export DEBIAN_FRONTEND=noninteractive
install_missing
build release tavrik tavrik-virtual tavrik-rig tavrik-docs tavrikctl
tools=build/release/tools
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

"$tools/docs/tavrik-docs" docs/protocol.md tests/console/scripts --pcap "$scratch/capture.pcap" "$@"
# Each form of report in the header is told, under a name of its own.
forms=$(grep -c '^using .* = std::array<std::uint8_t' src/remote/wire.h)
told=$(sed -n 's/^<!-- \([a-z -]*report[a-z ]*\): .*/\1/p' docs/protocol.md | sort -u | wc -l)
((forms == told)) || give_up "src/remote/wire.h has $forms forms of reports, docs/protocol.md tells $told"
echo "  ok    every message of the wire has its example in docs/protocol.md"
python3 "$here/dissector.py" "$scratch/capture.pcap" "$tools/ctl/tavrikctl" docs/wireshark/tavrik.lua

# program HEADING FILE: the page's program under that heading.
program() {
    awk -v heading="## $1" '/^## /{under = $0 == heading} /^```/{inside = /python/; next} under && inside' \
        docs/protocol.md >"$scratch/$2"
    (($(wc -l <"$scratch/$2") <= 40))
}
program "Write your own box" box.py
program "Write your own OSD" osd.py
# plays SCRIPT WHAT PROGRAM...: with that program in the place of a box or the OSD.
plays() {
    "$tools/rig/tavrik-rig" play "$1" --program "$2=python3 $scratch/$3" >"$scratch/log" 2>&1 ||
        { cat "$scratch/log"; return 1; }
    echo "  ok    ${1##*/} with $3 of docs/protocol.md as $2"
}
plays tests/console/scripts/edge_left_right.script "box 127.0.0.32" "box.py 127.0.0.32 8080"
plays tests/console/scripts/tap.script "box 127.0.0.31" "box.py 127.0.0.31 8080"
plays tests/console/scripts/tap.script osd osd.py
plays tests/docs/scripts/own_osd.script osd osd.py

"$here/walls.sh" "$tools/ctl/tavrikctl" "$@"
echo "  ok    the walls of docs/walls.md are those of their files"
"$here/sheet.sh" "$@"
echo "  ok    the guide is one sheet"
[[ ${1:-} == --update ]] || "$here/pages.sh"
