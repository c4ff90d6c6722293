#!/bin/bash
# run.sh [--pictures]: the page in a real browser against a real console. Installs what is missing: Chromium, Node, and
# playwright-core at the version of package-lock.json. With --pictures those of README.md are taken anew.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cd "$here/../.."
# shellcheck source=tools/rig/build.sh
. tools/rig/build.sh
packages+=("${test_packages[@]}" libboost-dev chromium fonts-dejavu-core)
for program in "node nodejs" "npm npm"; do
    command -v "${program% *}" >/dev/null || packages+=("${program#* }")
done
install_missing
build release tavrik tavrik-virtual tavrik-rig tavrik-page
[[ -d $here/node_modules/playwright-core ]] || npm --prefix "$here" ci --silent
# The page draws: what a byte means is told by the server alone.
if grep -nE '0x[0-9A-Fa-f]{2}|charCodeAt|getUint|Uint8Array|4123[678]' tools/page/www/*.js; then
    give_up "the page knows bytes of the wire"
fi
tools=$PWD/build/release/tools
pictures=
[[ ${1:-} != --pictures ]] || pictures=$PWD/docs/pictures
[[ -z $pictures ]] || mkdir -p "$pictures"
cd "$here"
SCREENSHOTS=$pictures TAVRIK_PAGE=$tools/page/tavrik-page TAVRIK_RIG=$tools/rig/tavrik-rig exec node --test page.test.js
