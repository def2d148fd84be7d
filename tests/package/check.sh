#!/usr/bin/env bash
# kx7text tests - the package as its users meet it: check.sh BUILD [BUILD32]
#
# BUILD is the build that the Debian packages in build/package are of, BUILD32 one of 32-bit. Looks at what was built,
# installs it below a prefix and unpacks the packages below a root, and builds a consumer's program against both.
set -euo pipefail
export LC_ALL=C
cd "$(dirname "$0")/../.."
build=$PWD/$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "check.sh: $*" >&2
    exit 1
}

# quietly COMMAND…: what it prints is shown when it fails.
quietly() {
    "$@" >"$work/log" 2>&1 || {
        cat "$work/log" >&2
        fail "failed: $*"
    }
}

# consume NAME PREFIX…: the consumer project by CMake, run with the library of the prefix.
consume() {
    local folder=$work/$1 prefix=$2
    shift 2
    quietly cmake -S tests/consumer -B "$folder" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DKX7_WANTED_VERSION=1.0 "$@"
    quietly cmake --build "$folder"
    quietly ctest --test-dir "$folder" --output-on-failure --no-tests=error
}

library_folder=$(sed -n 's/^CMAKE_INSTALL_LIBDIR:PATH=//p' "$build/CMakeCache.txt")

echo "-- protections"
tests/package/hardening.sh "$build/libkx7text.a" "$build/libkx7text.so" "$build/cli/kx7conv"
[ -z "${2-}" ] || tests/package/hardening.sh "$2/libkx7text.a" "$2/libkx7text.so"
for folder in "$build" ${2:+"$2"}; do
    # What the third level finds does not show in a built file.
    unchecked=$(grep '"command": .* -c .*/\(kx7\|cli\)/' "$folder/compile_commands.json" | grep -vc -e '-D_FORTIFY_SOURCE=3') || true
    [ "$unchecked" -eq 0 ] || fail "$folder: $unchecked files are compiled without the third level of checked calls"
done
quietly cmake -B "$work/default" -DKX7_BUILD_TESTS=OFF
grep -qx 'CMAKE_BUILD_TYPE:.*=Release' "$work/default/CMakeCache.txt" || fail "what is built by default is not optimised"

echo "-- binary interface"
tests/package/abi.py "$build/libkx7text.so" ${2:+"$2/libkx7text.so"}
readelf -dW "$build/libkx7text.so" | grep 'SONAME.*\[libkx7text\.so\.1\]' >/dev/null || fail "the soname is not libkx7text.so.1"

echo "-- recipes, manual"
tests/package/recipes.py
lint=$(mandoc -Tlint -Wwarning share/man/man?/*.[13] 2>&1) || fail "$lint"

echo "-- components"
for component in runtime development tools; do
    quietly cmake --install "$build" --prefix "$work/$component" --component $component
done
holds() {
    local actual
    actual=$(cd "$work/$1" && find . -type f -o -type l | sed 's,^\./,,' | grep -v '^share/doc/' | sort)
    [ "$actual" = "$2" ] || fail "component $1 holds: $actual"
}
holds runtime "$(printf '%s\n' "$library_folder"/libkx7text.so.1{,.0.0})"
[ -e "$work/tools/bin/kx7conv" ] || fail "component tools has no kx7conv"
(cd "$work/development/include" && find kx7 -name '*.h' | sort) >"$work/installed"
tests/headers/list.sh public | diff - "$work/installed" || fail "the headers installed are not the public ones"
for name in LocalToUTF8 UTF16ToLocal GetNullCharSize kx7text; do
    [ -e "$work/development/share/man/man3/$name.3.gz" ] || fail "no manual of $name"
done

echo "-- modes, whatever the umask of who builds"
# have_modes LISTING: whether each line, of "ls -l"'s kind, is of a folder or program (0755), a file (0644) or a link.
have_modes() {
    local others
    others=$(grep -v '^\(drwxr-xr-x\|-rw-r--r--\|-rwxr-xr-x\|lrwxrwxrwx\) ' "$1") && fail "modes: $others"
    [ -s "$1" ] || fail "modes: nothing is installed"
}
for mask in 077 000; do
    (
        umask "$mask"
        quietly cmake -S . -B "$build"
        quietly cmake --install "$build" --prefix "$work/umask-$mask"
        quietly cpack --config "$build/CPackConfig.cmake" -B "$work/packages-$mask"
    )
    find "$work/umask-$mask" -mindepth 1 -printf '%M %P\n' >"$work/modes"
    have_modes "$work/modes"
    for deb in "$work/packages-$mask"/*.deb; do
        { dpkg-deb --fsys-tarfile "$deb" && dpkg-deb --ctrl-tarfile "$deb"; } | tar -tvi >"$work/modes"
        have_modes "$work/modes"
    done
done

echo "-- a consumer of an installation"
stage=$work/stage
quietly cmake --install "$build" --prefix "$stage"
consume stage-cmake "$stage"
cmake -S tests/consumer -B "$work/wrong" -DCMAKE_PREFIX_PATH="$stage" -DKX7_WANTED_VERSION=2 >"$work/log" 2>&1 &&
    fail "version 2 was asked for and found"
grep -q 'compatible with requested' "$work/log" || fail "version 2: $(cat "$work/log")"
# An installation can be moved.
mv "$stage" "$work/moved"
stage=$work/moved
export PKG_CONFIG_PATH=$stage/$library_folder/pkgconfig
for standard in c++11 c++17; do
    read -r -a flags <<<"$(pkg-config --cflags --libs kx7text)"
    g++ -std=$standard tests/consumer/consumer.cpp -o "$work/program" "${flags[@]}"
    LD_LIBRARY_PATH=$stage/$library_folder "$work/program" || fail "the program by pkg-config, $standard"
done
ldd "$work/program" | grep 'libkx7text\.so\.1' >/dev/null || fail "the program by pkg-config is not linked with the library"
rm "$stage/$library_folder"/libkx7text.so*
read -r -a flags <<<"$(pkg-config --static --cflags --libs kx7text)"
g++ -std=c++11 tests/consumer/consumer.cpp -o "$work/program" "${flags[@]}"
"$work/program" || fail "the program by pkg-config with the archive"

# Where only the archive is installed, kx7text::kx7text is the archive.
configure() { quietly cmake -S . -B "$build" -DKX7_INSTALL_SHARED="$1"; }
configure OFF
trap 'configure ON; rm -rf "$work"' EXIT
quietly cmake --install "$build" --prefix "$work/archive"
[ -z "$(find "$work/archive" -name '*.so*')" ] || fail "the shared library is installed although it is not wanted"
consume archive-cmake "$work/archive"

echo "-- Debian packages"
version=$(sed -n '1s/.*(\(.*\)).*/\1/p' packaging/debian/changelog)
debs=()
for package in libkx7text1 libkx7text-dev kx7conv; do
    debs+=("build/package/${package}_${version}_$(dpkg --print-architecture).deb")
    dpkg -x "${debs[-1]}" "$work/root"
done
lintian --allow-root --fail-on error,warning "${debs[@]}" || fail "lintian is not content"
[ "$(dpkg-deb -f "${debs[1]}" Depends)" = "libkx7text1 (= $version)" ] || fail "libkx7text-dev depends on something else"
dpkg-deb -f "${debs[0]}" Depends | grep 'libstdc++6' >/dev/null || fail "libkx7text1 does not depend on libstdc++6"
dpkg-deb -I "${debs[0]}" symbols | grep -x ' LocalToUTF8@KX7TEXT_1.0 1.0.0' >/dev/null || fail "no symbols file"
consume deb-cmake "$work/root/usr"
[ "$(printf 'caf\351' | "$work/root/usr/bin/kx7conv" --from 1252 --to UTF8)" = "$(printf 'caf\303\251')" ] ||
    fail "kx7conv of the package converts wrongly"
