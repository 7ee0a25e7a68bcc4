# Compares the fingerprints of the exact groups (groups.h) with the ones on record, which hold for every machine.
# Usage: exact.sh exact.txt digest-program...
set -eu
export LC_ALL=C
record=$1
shift
fingerprints=$("$@")
printf '%s\n' "$fingerprints" | grep ' exact ' | diff "$record" -
