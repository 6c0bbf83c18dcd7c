#!/bin/sh
# install_test.sh BUILD SOURCE LIBDIR: what "cmake --install" puts into an empty root is complete,
# programs can be built with it by pkg-config and by CMake, and it can be removed again.
# Runs with a /var/tmp of its own.
set -eu
build=$1
source=$2
libdir=$3
. "$source/tests/packaging/common.sh"
root=$work/root
needs make pkg-config readelf

needed_libruklog() { readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(libruklog.*\)\]/\1/p'; }

DESTDIR=$root cmake --install "$build" --prefix /opt/ruklog >"$work/log" || fail "$(cat "$work/log")"
prefix=$root/opt/ruklog

# --- everything is there, and nothing else ---

version=$(sed -n 's/^project(ruklog VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
headers=$(cd "$source/include" && find ruk -name '*.h' | sed 's|^|include/|')
same "the installed files" "$(sort <<FILES
bin/ruklog
bin/ruklog-agentsim
$headers
$libdir/cmake/ruklog/ruklog-config-version.cmake
$libdir/cmake/ruklog/ruklog-config.cmake
$libdir/cmake/ruklog/ruklog-targets-BUILDTYPE.cmake
$libdir/cmake/ruklog/ruklog-targets.cmake
$libdir/libruklog.a
$libdir/libruklog.so
$libdir/libruklog.so.1
$libdir/libruklog.so.$version
$libdir/pkgconfig/ruklog.pc
lib/systemd/system/ruklog-tail.service
share/doc/libruklog-dev/examples/CMakeLists.txt
share/doc/libruklog-dev/examples/Makefile
share/doc/libruklog-dev/examples/bit_runs.cpp
share/doc/libruklog-dev/examples/interface_names.c
share/doc/libruklog-dev/examples/last_entries.c
share/man/man1/ruklog.1
share/man/man3/libruklog.3
share/man/man8/ruklog-agentsim.8
share/bash-completion/completions/ruklog
share/bash-completion/completions/ruklog-agentsim
share/zsh/site-functions/_ruklog
share/zsh/site-functions/_ruklog-agentsim
FILES
)" "$(cd "$prefix" && find . ! -type d |
      LC_ALL=C sed 's|^\./||; s|targets-[a-z]*\.cmake|targets-BUILDTYPE.cmake|' | sort)"

grep -q '^ExecStart=/opt/ruklog/bin/ruklog show tail$' \
    "$prefix/lib/systemd/system/ruklog-tail.service" || fail "the service starts something else"

# The archive serves any compiler: it holds nothing for this one's optimiser across files.
readelf -SW "$prefix/$libdir/libruklog.a" >"$work/sections"
grep -q '\.text' "$work/sections" || fail "the archive holds no code"
grep 'gnu\.lto' "$work/sections" && fail "the archive holds the compiler's own sections"

# --- programs are built with it in four ways ---

PKG_CONFIG_SYSROOT_DIR=$root
PKG_CONFIG_LIBDIR=$prefix/$libdir/pkgconfig
LD_LIBRARY_PATH=$prefix/$libdir
export PKG_CONFIG_SYSROOT_DIR PKG_CONFIG_LIBDIR LD_LIBRARY_PATH
same "the version that pkg-config tells" "$version" "$(pkg-config --modversion ruklog)"
examples=$prefix/share/doc/libruklog-dev/examples

# by_make FOLDER [VARIABLE]
by_make() {
    cp -r "$examples" "$work/$1"
    make -s -C "$work/$1" CFLAGS=-O0 CXXFLAGS=-O0 ${2:+"$2"} || fail "no $1 build of the examples"
}

# by_cmake FOLDER [OPTION]
by_cmake() {
    { cmake -G Ninja -S "$examples" -B "$work/$1" "-DCMAKE_PREFIX_PATH=$prefix" ${2:+"$2"} &&
        cmake --build "$work/$1"; } >"$work/log" 2>&1 ||
        fail "no $1 build of the examples: $(cat "$work/log")"
}

by_make make
by_make make-static STATIC=1
by_cmake cmake
by_cmake cmake-static -DRUKLOG_STATIC=ON

serve "$prefix/bin/ruklog-agentsim" --feed "$source/tests/packaging/events.txt"
same "the log's end as the installed tool shows it" \
    "Error no power" "$("$prefix/bin/ruklog" show last 1 | sed -n '2s/.* \(Error .*\)/\1/p')"

for way in make make-static cmake cmake-static; do
    cd "$work/$way"
    same "$way: bit_runs" "0-2,5,7-8
set: [0,2] [5,5] [7,8]
free: [3,4] [6,6] [9,255]" "$(./bit_runs 0 1 2 5 7 8)"
    same "$way: interface_names" "0x25004000  Ethernet2/1  Eth2/1
0x1a080000  Ethernet2/1  Eth2/1  (physical port)
0x09000064  Vlan100  Vlan100
0x17000000  Null0  Null0" "$(./interface_names "ethernet 2/1" 0x1a080000 0x09000064 null0)"
    same "$way: last_entries" "     1  module 1  level 0x08  link up
     2  module 1  level 0x01  no power" "$(./last_entries 2)"
    # The shared library is used where it should be, and only there.
    case $way in
    *-static) same "$way: libraries" "" "$(needed_libruklog last_entries)" ;;
    *) same "$way: libraries" libruklog.so.1 "$(needed_libruklog last_entries)" ;;
    esac
done
cd "$work"

# --- a program and the library see the same globals; a host's own functions are called ---

# Unquoted: pkg-config gives several options.
# shellcheck disable=SC2046
for linking in "" --static; do
    cc -o "$work/host" "$source/tests/packaging/embedding_host.c" \
        $(pkg-config --cflags ruklog) ${linking:+-static} $(pkg-config $linking --libs ruklog)
    same "a host that embeds the front end" embedded "$("$work/host")"
done

# --- the manual's program is built by the manual's command ---

page=$prefix/share/man/man3/libruklog.3
sed -n '/program: total.c/,/^\.Ed/p' "$page" | grep -v '^\.' | sed 's/\\e/\\/g' >total.c
command=$(sed -n 's/^\$ \(cc total\.c .*\)/\1/p' "$page" | sed 's/\\-/-/g')
eval "$command"
same "the manual's program" "3 entries" "$(./total)"

# --- and it goes as it came ---

(cd "$root" && sed 's|^/||' "$build/install_manifest.txt" | xargs rm)
same "what removing leaves behind" "" "$(find "$root" ! -type d)"

echo "installed, used by 4 builds of the examples and 2 of a host, removed"
