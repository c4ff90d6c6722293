#!/bin/bash
# run.sh: the page in a real browser against a real console. Installs what is missing: Chromium, Node, and
# playwright-core at the version of package-lock.json. With SCREENSHOTS=FOLDER pictures are kept there.
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
tools=$PWD/build/release/tools
cd "$here"
TAVRIK_PAGE=$tools/page/tavrik-page TAVRIK_RIG=$tools/rig/tavrik-rig exec node --test page.test.js
