#!/bin/sh
# kx7text tests - prints the names of the headers below kx7/ that are public, or internal: list.sh public|internal.
#
# A header whose first line says "(internal)" is not for callers and is not installed; everything else is public.
set -eu
cd "$(dirname "$0")/../.."
find kx7 -name '*.h' | LC_ALL=C sort | while read -r header; do
    case $(head -n 1 "$header") in
        *'(internal)'*) kind=internal ;;
        *) kind=public ;;
    esac
    if [ "$kind" = "$1" ]; then echo "$header"; fi
done
