#!/usr/bin/env bash
# kx7text tests - the Debian packages and ./dev in a Debian that has nothing yet: chroot.sh
#
# Needs root and a Debian mirror. The packages in build/package are installed, used, and purged without a trace;
# ./dev convert sets itself up; a consumer's program is built with the packages.
set -euo pipefail
export LC_ALL=C
cd "$(dirname "$0")/../.."
[ "$(id -u)" -eq 0 ] || { echo "chroot.sh: only root can make a fresh Debian" >&2 && exit 1; }
root=$(mktemp -d /var/tmp/kx7chroot.XXXXXX)
trap 'rm -rf --one-file-system "$root"' EXIT

fail() {
    echo "chroot.sh: $*" >&2
    exit 1
}

inside() {
    chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root DEBIAN_FRONTEND=noninteractive "$@"
}

# Every file but caches, logs and dpkg's own records.
files() {
    (cd "$root" && find . -path ./proc -prune -o -path ./var/cache -prune -o -path ./var/log -prune -o \
        -path ./var/lib/dpkg -prune -o -path ./var/lib/apt -prune -o -path ./debs -prune -o -print | sort)
}

echo "-- a fresh Debian"
codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
debootstrap --variant=minbase "$codename" "$root" "${KX7_MIRROR:-http://deb.debian.org/debian}" >"$root.log" 2>&1 ||
    { tail "$root.log" >&2 && fail "debootstrap"; }
rm -f "$root.log"
cp /etc/resolv.conf "$root/etc/resolv.conf"
mkdir "$root/debs"
cp build/package/*.deb "$root/debs"

echo "-- install, use, purge"
files >"$root/debs/before"
inside sh -c 'dpkg -i /debs/*.deb' >/dev/null
inside ldconfig -p | grep 'libkx7text\.so\.1' >/dev/null || fail "the library is not in the loader's cache"
[ "$(printf '\317\360\350\342\345\362' | inside kx7conv --from 1251 --to UTF8)" = 'Привет' ] || fail "kx7conv"
inside dpkg --verify || fail "files that differ from the packages"
inside dpkg --purge kx7conv libkx7text-dev libkx7text1 >/dev/null
files | diff "$root/debs/before" - || fail "files are left"
inside ldconfig -p | grep kx7text >/dev/null && fail "the library is still in the loader's cache"

echo "-- ./dev convert"
mkdir "$root/kx7text"
git ls-files -co --exclude-standard -z | tar --null -T - -c | tar -x -C "$root/kx7text"
sed -n 's,^    \(\./dev convert [^#]*[^# ]\) *#.*,\1,p' README.md >"$root/debs/commands"
[ -s "$root/debs/commands" ] || fail "README.md has no ./dev convert"
while read -r command; do
    inside sh -c "cd /kx7text && $command" >"$root/debs/output" 2>"$root/debs/errors" ||
        { tail "$root/debs/errors" >&2 && fail "failed: $command"; }
    cmp "$root/debs/output" samples/russian.utf8.txt || fail "wrong output: $command"
done <"$root/debs/commands"

echo "-- a consumer of the packages"
inside sh -c 'dpkg -i /debs/*.deb' >/dev/null
inside sh -ec '
    cmake -S /kx7text/tests/consumer -B /tmp/consumer -G Ninja -DKX7_WANTED_VERSION=1.0 >/dev/null
    cmake --build /tmp/consumer >/dev/null
    ctest --test-dir /tmp/consumer --output-on-failure --no-tests=error >/dev/null
    g++ /kx7text/tests/consumer/consumer.cpp -o /tmp/program -lkx7text && /tmp/program'
