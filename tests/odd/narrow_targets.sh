#!/bin/sh
# narrow_targets.sh COMPILER HEADERS SOURCE_TREE: on a target without 64-bit addresses every header
# is refused, and so is the whole build, first of all with what to do about it.
set -eu
compiler=$1
headers=$2
tree=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
message="ruklog's records hold 64-bit addresses: build for a 64-bit target, without -m32 or -mx32"

for flag in -m32 -mx32; do
    for header in "$headers"/ruk/*.h; do
        for language in c c++; do
            if "$compiler" $flag -x $language -I "$headers" -fsyntax-only "$header" 2>"$work/said"; then
                echo "$header compiles with $flag"
                exit 1
            fi
            if ! grep -m 1 'error: ' "$work/said" | grep -qF "error: #error \"$message\"" &&
                ! grep -m 1 'error: ' "$work/said" | grep -qF "error: \"$message\""; then
                echo "$header with $flag as $language:"
                cat "$work/said"
                exit 1
            fi
            # What follows is few: offsets of the records of this header, or a missing C library.
            if [ "$(grep -c ' error: ' "$work/said")" -gt 9 ]; then
                echo "$header with $flag says more than it needs to:"
                cat "$work/said"
                exit 1
            fi
        done
    done
done

# No program is linked, so that no 32-bit C library is needed.
if cmake -S "$tree" -B "$work/build" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_C_FLAGS=-m32 \
    -DCMAKE_CXX_FLAGS=-m32 -DCMAKE_TRY_COMPILE_TARGET_TYPE=STATIC_LIBRARY >"$work/said" 2>&1; then
    echo "the build is configured for -m32"
    exit 1
fi
if ! tr -s ' \n' ' ' <"$work/said" | grep -qF "$message" ||
    [ "$(grep -c 'CMake Error' "$work/said")" -ne 1 ]; then
    cat "$work/said"
    exit 1
fi
