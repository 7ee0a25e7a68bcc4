# Compares the interface of a library that has debug information (functions, their arguments, the layout of records) with
# the one on record: a program built against that must keep working.  Additions have to be put on record.
# Usage: interface.sh library include-directory mensura.abi          compares
#        interface.sh library include-directory --write mensura.abi  puts the library on record (see CONTRIBUTING.md)
set -eu
library=$1 include=$2
if [ "$3" = --write ]; then
    tmp=$(mktemp)
    trap 'rm -f "$tmp"' EXIT
    abidw --headers-dir "$include" --exported-interfaces-only --drop-private-types --no-corpus-path --no-architecture \
        --no-comp-dir-path --no-show-locs --no-elf-needed "$library" > "$tmp"
    sed "s%path='[^']*/\([^/']*/[^/']*'\)%path='\1%" "$tmp" > "$4"  # paths that do not tell where it was built
else
    readelf -SW "$library" | grep -q '\.debug_info'
    abidiff --harmless --no-architecture "$3" "$library"
fi
