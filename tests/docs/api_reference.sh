#!/bin/sh
# api_reference.sh BUILD: the reference of the headers is made without a warning and has every name
# that the library in BUILD exports.
set -eu
if ! command -v doxygen >/dev/null; then
    echo "SKIPPED: no doxygen here; the package doxygen has it"
    exit 77
fi
tag=$1/docs/names.tag
rm -f "$tag"
doxygen "$1/docs/Doxyfile"
[ -s "$1/docs/html/index.html" ]
nm -D --defined-only "$1/libruklog.so" | {
    status=0 names=0
    while read -r _ _ name; do
        names=$((names + 1))
        grep -q "<name>$name</name>" "$tag" || { echo "no $name in the reference"; status=1; }
    done
    echo "$names names"
    [ "$names" -gt 0 ] && exit "$status"
}
