# Fails if an object file compiled for AVX2 defines a function that the linker may take for the whole library: one that
# is inline in a header and was not inlined.  Older processors would run it too.
# Usage: kernels.sh nm objects...
set -eu
nm=$1
shift
"$nm" -C --defined-only "$@" > /dev/null
! "$nm" -C --defined-only "$@" | grep -E ' [VWu] '
