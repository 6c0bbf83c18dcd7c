#!/bin/sh
# exported_names.sh PRODUCT HEADERS: the product's dynamic symbols are exactly the names that the
# headers mark with RUK_EXPORT.
set -eu
product=$1
headers=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A declaration begins with the mark and ends with ";"; its name stands before the first "(" or "[".
awk '/^RUK_EXPORT/ {
    declaration = $0
    while (declaration !~ /;/ && (getline line) > 0) declaration = declaration " " line
    sub(/[(\[;].*/, "", declaration)
    count = split(declaration, words, /[ *]+/)
    print words[count]
}' "$headers"/*.h | sort >"$work/declared"

nm -D --defined-only "$product" | awk '{ print $NF }' | sort >"$work/exported"

if ! [ -s "$work/declared" ]; then
    echo "no declared names found in $headers"
    exit 1
fi
if ! diff -u "$work/declared" "$work/exported"; then
    echo "$product: the exported names differ from the headers'"
    exit 1
fi
echo "$(wc -l <"$work/exported") names"
