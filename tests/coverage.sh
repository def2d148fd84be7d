#!/usr/bin/env bash
# Runs the library's tests, built to count, and prints what lines and branches of kx7/ they reach; the page of every source
# file goes to build/coverage/html. Not among them: kx7conv's tests, comparisons with other libraries, and programs that load
# and unload the library.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=build/coverage
mkdir -p "$build"
targets=(library_tests internal_tests concurrency_tests allocation_tests load_allocation_tests string_allocation_tests
    default_char_set default_char_set_tests path_names_tests os_default)
if ! { cmake --preset coverage && cmake --build --preset coverage --target "${targets[@]}"; } >"$build.log" 2>&1; then
    cat "$build.log" >&2
    exit 1
fi
rm -rf "$build/profiles"
LLVM_PROFILE_FILE="$PWD/$build/profiles/%p-%m.profraw" \
    ctest --test-dir "$build" -j "$(nproc)" \
    -R '^(library_tests|internal_tests|concurrency|environment.(default|path|string)|lifecycle.(allocation|load_all|os_))' --output-on-failure >"$build/ctest.log" 2>&1 ||
    { tail -40 "$build/ctest.log" >&2 && exit 1; }
find "$build/profiles" -name '*.profraw' >"$build/profiles.txt"
llvm-profdata merge -sparse -f "$build/profiles.txt" -o "$build/all.profdata"
rm -rf "$build/profiles"
# The shared library and the programs with the archive inside: the same sources.
objects=("$build/libkx7text.so" -object "$build/tests/internal_tests" -object "$build/tests/lifecycle/load_allocation_tests")
llvm-cov show "${objects[@]}" -instr-profile="$build/all.profdata" -format=html -output-dir="$build/html" -ignore-filename-regex='(^|/)(usr|tests)/' >/dev/null
llvm-cov export "${objects[@]}" -instr-profile="$build/all.profdata" -ignore-filename-regex='(^|/)(usr|tests)/' -format=lcov >"$build/all.lcov"
exec /usr/bin/python3 tests/coverage.py "$build/all.lcov" tests/coverage-exclusions.txt
