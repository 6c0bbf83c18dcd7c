#!/bin/sh
# needed_libraries.sh PRODUCT...: the products need the C library (and its loader) and nothing else.
set -eu
for product; do
    needed=$(readelf -d "$product" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | grep -v '^ld-linux')
    if [ "$needed" != libc.so.6 ]; then
        echo "$product needs: $needed"
        exit 1
    fi
done
