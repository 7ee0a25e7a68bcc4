# Compares the interface of a library that has debug information (functions, their arguments, the layout of records) with
# the one on record: a program built against that must keep working.  Additions are fine, and wanted on record too.
# Usage: interface.sh library include-directory mensura.abi          compares
#        interface.sh library include-directory --write mensura.abi  puts the library on record (see CONTRIBUTING.md)
set -eu
library=$1 include=$2
if [ "$3" = --write ]; then
    abidw --headers-dir "$include" --exported-interfaces-only --drop-private-types --no-corpus-path --no-architecture \
        --no-comp-dir-path --no-show-locs --no-elf-needed "$library" |
        sed "s%path='[^']*/\([^/']*/[^/']*'\)%path='\1%" > "$4"  # paths that do not tell where it was built
else
    abidiff --no-architecture "$3" "$library"
fi
