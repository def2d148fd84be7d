#!/usr/bin/env bash
# kx7text tests - the 32-bit tests of BUILD under valgrind: valgrind.sh BUILD
#
# Needs root and a Debian mirror: valgrind has to know the C library that the programs run with, which the 64-bit machine
# has no symbols of, so that they run in a 32-bit Debian. BUILD is one without vectors (preset portable32), since those
# read beside a text within its page. Valgrind is 50 times slower, so that the tests in SLOW are left out.
set -euo pipefail
export LC_ALL=C

# What takes most of a second by itself: all characters, all capacities of each set, texts of a megabyte and more.
SLOW='*xhaustive*:UTF8.EverySequenceOfThreeBytes:UTF8.EveryLeadOfFour*:UTF8.EveryCapacityAndLimit:RoundTrip.EveryCodePoint*'
SLOW+=':EverySet/Sizes.OfEncoderAreExact/*:StringFrom*.NothingAfterThe*:StringFrom*.NothingAfterThe*'
SLOW+=':HugeText*:EntryPointPieces.ManyPieces*:WideRuns.Utf*'

build=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."
[ "$(id -u)" -eq 0 ] || { echo "valgrind.sh: only root can make a Debian of its own" >&2 && exit 1; }
root=$(mktemp -d /var/tmp/kx7valgrind.XXXXXX)
trap 'umount "$root/proc" 2>/dev/null || true; rm -rf --one-file-system "$root"' EXIT

codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
debootstrap --arch=i386 --variant=minbase --include=valgrind,libc6-dbg,libstdc++6 \
    "$codename" "$root" "${KX7_MIRROR:-http://deb.debian.org/debian}" >"$root.log" 2>&1 || { tail "$root.log" >&2 && exit 1; }
rm -f "$root.log"
mount -t proc proc "$root/proc"
mkdir "$root/tests"
cp "$build"/libkx7text.so* "$build/tests/library_tests" "$build"/tests/fuzz/*Fuzz "$root/tests"
cp -r "$build/tests/fuzz/corpus" "$root/tests"
# Programs know it by its name.
mkdir -p "$root$build/tests/model/web"
cp -r "$build/tests/model/web/data" "$root$build/tests/model/web"

# checked SHARD SHARDS PROGRAM ARGUMENT…
checked() {
    local shard=$1 shards=$2
    shift 2
    echo "-- $*"
    chroot "$root" env -i PATH=/usr/bin:/bin LD_LIBRARY_PATH=/tests \
        GTEST_SHARD_INDEX="$shard" GTEST_TOTAL_SHARDS="$shards" sh -c \
        'cd /tests && exec valgrind -q --error-exitcode=9 --leak-check=full --show-leak-kinds=definite "$@"' sh "$@"
}

status=0
shards=$(nproc)
processes=()
for ((shard = 0; shard < shards; shard++)); do
    checked "$shard" "$shards" ./library_tests --gtest_brief=1 --gtest_filter="-$SLOW" >"$root/log$shard" 2>&1 &
    processes+=($!)
done
for shard in "${!processes[@]}"; do
    wait "${processes[$shard]}" || status=1
    cat "$root/log$shard"
done
for program in "$root"/tests/*Fuzz; do
    name=$(basename "$program")
    checked 0 1 "./$name" "corpus/$name" >"$root/log" || status=1
    sed -n '1p;$p' "$root/log"
done
exit "$status"
