#!/bin/bash
# sheet.sh [--update]: docs/guide.html is docs/guide.md with docs/sheet.css, complete in one file, and prints on one
# sheet. With --update it is written anew. Needs cmark-gfm and weasyprint.
set -euo pipefail
cd "$(dirname "$0")/../.."

html() {
    printf '<!DOCTYPE html>\n<html lang="en">\n<head>\n<meta charset="utf-8">\n'
    printf '<meta name="viewport" content="width=device-width">\n<title>%s</title>\n<style>\n' \
        "$(sed -n 's/^# //p;q' docs/guide.md)"
    cat docs/sheet.css
    printf '</style>\n</head>\n<body>\n'
    cmark-gfm -e table docs/guide.md
    printf '</body>\n</html>\n'
}

if [[ ${1:-} == --update ]]; then
    html >docs/guide.html
fi
diff docs/guide.html <(html) || {
    echo "docs/guide.html is not what docs/guide.md makes: ./test --docs --update"
    exit 1
}
printed=$(mktemp)
trap 'rm -f "$printed"' EXIT
weasyprint -q docs/guide.html "$printed"
pages=$(grep -ac '/Type /Page$' "$printed") || true
if ((pages != 1)); then
    echo "docs/guide.html prints on $pages sheets"
    exit 1
fi
