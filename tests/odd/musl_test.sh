#!/usr/bin/env bash
# musl_test.sh PROGRAMS: the tool built for musl, as one static program, sends and prints what the
# ordinary one does.  Debian has musl without a C++ library, so libstdc++'s headers are bent to it
# (musl/prelude.h) and nothing but templates of them is used: the tool needs no C++ runtime.
# Runs with a /var/tmp of its own.
set -euo pipefail
programs=$(realpath "$1")
here=$(realpath "$(dirname "$0")")
cd "$here/../.."
work=$(mktemp -d)
agent=
trap '[ -z "$agent" ] || kill "$agent"; rm -rf "$work"' EXIT

# The kernel's headers, without those of the other C library beside them.
machine=$(gcc -dumpmachine)
mkdir "$work/kernel"
ln -s /usr/include/linux /usr/include/asm-generic "/usr/include/$machine/asm" "$work/kernel"

compile() { # SOURCE
    local isa=()
    [[ $1 != *_avx2.cpp ]] || isa=(-mavx2 -mpopcnt)
    musl-gcc -x c++ -std=c++20 -O1 -fno-exceptions -fno-rtti "${isa[@]}" '-D__GLIBC_PREREQ(a,b)=0' \
        -isystem /usr/include/c++/12 -isystem "/usr/include/$machine/c++/12" \
        -isystem "/usr/include/${machine/gnu/musl}" -idirafter "$work/kernel" \
        -include tests/odd/musl/prelude.h -I. -Iinclude -c "$1" -o "$work/${1//\//_}.o"
}
export -f compile
export work machine
# shellcheck disable=SC2016
git ls-files rukcmd dpa infra ifindex ofp platform | grep '\.cpp$' |
    xargs -P "$(nproc)" -I{} bash -c 'compile "$1"' bash {}
musl-gcc -static "$work"/*.o -o "$work/ruklog"

"$programs/ruklog-agentsim" --preload 300 >"$work/agent" &
agent=$!
until grep -q serving "$work/agent"; do
    kill -0 "$agent"
    sleep 0.02
done
export TZ=XYZ-1:30
# What changes the log is run by both in turn, and does not change it the second time.
"$programs/ruklog" stop >/dev/null
for command in 'help' 'show info' 'show all' 'show last 7' 'show debug' 'debug all -dp' 'show debug' \
    'stop' 'show info' 'resume;show last' 'sh' 'debug no -z' 'clear' 'show all'; do
    # shellcheck disable=SC2086
    "$programs/ruklog" $command >"$work/expected"
    # shellcheck disable=SC2086
    "$work/ruklog" $command >"$work/got"
    diff -u --label "ruklog $command" --label "for musl" "$work/expected" "$work/got"
done
