#!/bin/sh
# debian_test.sh BUILD SOURCE: the Debian packages are right by Debian's own judge, install into an
# empty root with their dependencies met, work there, and leave nothing behind when purged.
# Runs with a /var/tmp of its own.
set -eu
umask 022
build=$1
source=$2
. "$source/tests/packaging/common.sh"
needs cpack dpkg dpkg-deb dpkg-shlibdeps lintian

version=$(sed -n 's/^project(ruklog VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
arch=$(dpkg --print-architecture)
debs=$work/debs
root=$work/root

# --- the packages ---

cpack --config "$build/CPackConfig.cmake" -B "$debs" >"$work/log" 2>&1 || fail "$(cat "$work/log")"
same "the packages" "libruklog-dev_${version}_$arch.deb
libruklog1_${version}_$arch.deb
ruklog-agentsim_${version}_$arch.deb
ruklog_${version}_$arch.deb" "$(cd "$debs" && find . -name '*.deb' -type f ! -path '*/_CPack*' | sed 's|^\./||' | sort)"

# field PACKAGE FIELD
field() { dpkg-deb -f "$debs/$1_${version}_$arch.deb" "$2"; }
same "who needs the library" "libruklog1 (= $version)" "$(field libruklog-dev Depends)"
same "sections" "admin admin libs libdevel" \
    "$(field ruklog Section) $(field ruklog-agentsim Section) $(field libruklog1 Section) $(field libruklog-dev Section)"
same "the newest entry of the changelog" "ruklog ($version) unstable; urgency=medium" \
    "$(dpkg-deb --fsys-tarfile "$debs/ruklog_${version}_$arch.deb" |
        tar -xO ./usr/share/doc/ruklog/changelog.gz | gzip -d | head -1)"
lintian --allow-root --fail-on error,warning "$debs"/*.deb || fail "lintian complains"

# --- installed into a root that has the C library and nothing else ---

mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/triggers"
cat >"$root/var/lib/dpkg/status" <<STATUS
Package: libc6
Status: install ok installed
Maintainer: none <none@localhost>
Architecture: $arch
Multi-Arch: same
Version: $(dpkg-query -W -f '${Version}' "libc6:$arch")
Description: C library
STATUS
touch "$root/var/lib/dpkg/info/libc6:$arch.list"

# There is no shell in that root: the packages' scripts run outside of it and are told of it.
in_root() {
    dpkg --root="$root" --log="$work/dpkg.log" --force-script-chrootless "$@" >"$work/log" 2>&1 ||
        fail "dpkg $1: $(cat "$work/log")"
}
in_root --install "$debs"/*.deb
same "what is damaged" "" "$(dpkg --root="$root" --verify)"
same "enabled services" "" "$(find "$root/etc" -name '*.service' 2>/dev/null)"

# --- it works there ---

serve "$root/usr/bin/ruklog-agentsim" --feed "$source/tests/packaging/events.txt"
same "the log's end" "Error no power" \
    "$("$root/usr/bin/ruklog" show last 1 | sed -n '2s/.* \(Error .*\)/\1/p')"

if command -v systemd-analyze >/dev/null; then
    sed "s|^ExecStart=/usr|ExecStart=$root/usr|" "$root/usr/lib/systemd/system/ruklog-tail.service" \
        >"$work/ruklog-tail.service"
    systemd-analyze verify --man=no "$work/ruklog-tail.service" >"$work/log" 2>&1 ||
        fail "the service: $(cat "$work/log")"
    same "complaints about the service" "" "$(cat "$work/log")"
else
    echo "not tested: the service, since there is no systemd-analyze here"
fi

# --- and it goes as it came ---

in_root --purge ruklog ruklog-agentsim libruklog-dev libruklog1
same "what purging leaves behind" "" "$(find "$root" -mindepth 1 ! -type d ! -path "$root/var/lib/dpkg/*")"
same "folders that purging leaves behind" "$root/var" "$(find "$root" -mindepth 1 -maxdepth 1)"

echo "4 packages made, judged, installed, used and purged"
