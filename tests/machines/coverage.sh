# Fails if an exported function is not at work in the groups: those that print or write a file are tested elsewhere.
# Usage: coverage.sh nm exports.map objects...
set -eu
export LC_ALL=C
nm=$1 map=$2
shift 2
used=$("$nm" -u "$@" | awk '{ print $2 }')
test -n "$used"
exported=$(sed -n 's/^ *\([A-Za-z_][A-Za-z0-9_]*\);$/\1/p' "$map")
test -n "$exported"
! printf '%s\n' "$exported" | grep -vxF "$used" |
    grep -vxE 'rmatrix_printf(_ptr)?|matrix_show|QRtest|test_rkf45|in'
