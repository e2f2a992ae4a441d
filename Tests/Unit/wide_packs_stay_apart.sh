#!/bin/sh
# A function that several files may define must not come from a file that is compiled for special processors: the linker
# would give it to all. Arguments: nm, and the object files of the library's units.
set -eu
nm=$1
shift
nbChecked=0
for object in "$@"; do
    case "$object" in
        *PackedSearchOf8*) size=8 ;;
        *PackedSearchOf16*) size=16 ;;
        *) continue ;;
    esac
    nbChecked=$((nbChecked + 1))
    if "$nm" -C "$object" | grep ' W ' | grep -v "packs_of_${size}::" | grep -v "[<, ]${size}ul" | grep -v ' asan\.'; then
        echo "$object defines the functions above, which do not belong to its packs alone." >&2
        exit 1
    fi
done
[ "$nbChecked" -eq 2 ]
