#!/bin/sh
# kx7text tests - the tables of kernels are constants: no object of the archive's kernels has static initialisers, since
# the choice of kernels is made before other static objects exist.
#
#     constant_kernels.sh OBJECT...
set -eu
seen=0
for object in "$@"; do
    case $object in
        */kx7/kernels/*) ;;
        *) continue ;;
    esac
    seen=$((seen + 1))
    if nm "$object" | grep -E '_GLOBAL__sub_I|__cxx_global_var_init'; then
        echo "$object is initialised at run time" >&2
        exit 1
    fi
done
[ "$seen" -gt 0 ] || {
    echo "no kernels among the objects" >&2
    exit 1
}
echo "$seen objects"
