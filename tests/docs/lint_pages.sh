#!/bin/sh
# lint_pages.sh PAGE...: the manual pages are sound to both programs that set such pages.
set -eu
if ! command -v mandoc >/dev/null; then
    echo "SKIPPED: no mandoc here; the package mandoc has it"
    exit 77
fi
status=0
mandoc -T lint -W warning "$@" || status=1
if command -v groff >/dev/null; then
    for page in "$@"; do
        said=$(groff -mandoc -Tascii -ww -z "$page" 2>&1)
        [ -z "$said" ] || { printf '%s: %s\n' "$page" "$said"; status=1; }
    done
else
    echo "no groff here; mandoc alone has looked at the pages"
fi
exit "$status"
