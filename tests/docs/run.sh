#!/bin/bash
# run.sh [--update]: what the pages say holds. The commands of README.md and the pages are typed in a fresh Debian; the
# guide prints on one sheet. With --update what is made of something else is written anew first, and nothing is typed.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
cd "$here/../.."
# shellcheck source=tools/rig/build.sh
. tools/rig/build.sh
packages+=(cmark-gfm weasyprint fonts-dejavu-core)
install_missing

"$here/sheet.sh" "$@"
echo "  ok    the guide is one sheet"
[[ ${1:-} == --update ]] || "$here/pages.sh"
