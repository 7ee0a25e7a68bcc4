# Compares what the library exports and what mensura.h declares with what the version script lists, and the names of its
# first version with those on record; checks the SONAME and what the library needs.
# Usage: exports.sh library exports.map mensura_1.txt include-directory cc nm readelf any-needed(yes|no)
set -eu
export LC_ALL=C
library=$1 map=$2 first=$3 include=$4 cc=$5 nm=$6 readelf=$7 any_needed=$8
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
cd "$tmp"
failed=0

# Statements of preprocessed text, one a line: no comments, no line breaks inside.
statements() { "$cc" -E -P -x c -I"$include" - | tr '\n' ' ' | tr ';' '\n'; }

# "exports.map" ends its nodes with "} PREVIOUS_NODE;", which is no symbol.
statements < "$map" | sed -n 's/.*[{:]//; s/^ *\([A-Za-z_][A-Za-z0-9_]*\) *$/\1/p' | sort > listed
test -s listed
# The name is the last word before the arguments or the array bounds.
echo '#include <mensura/mensura.h>' | statements |
    sed -n 's/.*visibility("default"))) *//; t name; d; :name; s/[([].*//; s/ *$//; s/.*[^A-Za-z0-9_]//p' |
    sort > declared
# Version nodes show as absolute symbols.  A name without a node has got past the version script.
"$nm" -D --defined-only "$library" |
    awk '$2 != "A" { if (!sub(/@@MENSURA_[0-9.]+$/, "", $3)) $3 = $3 " without version"; print $3 }' | sort > exported

diff -U0 listed exported || failed=1
diff -U0 listed declared || failed=1

# Programs ask for a name together with its version: none may move to another one.
"$nm" -D --defined-only "$library" | awk '$2 != "A"' > versioned
sed -n 's/.* \(.*\)@@MENSURA_1$/\1/p' versioned | sort | diff -U0 "$first" - || failed=1
grep '@@MENSURA_1\.1$' versioned > second
if grep -v ' T mensura_sos_' second; then
    echo "is no function of mensura/sos.h and has version MENSURA_1.1"
    failed=1
fi

"$readelf" -dW "$library" > dynamic
grep -qF 'soname: [libmensura.so.1]' dynamic || { echo "wrong SONAME: $(grep SONAME dynamic)"; failed=1; }
if [ "$any_needed" = no ] && sed -n 's/.*NEEDED.*\[\(.*\)\]/\1/p' dynamic |
        grep -vE '^(libstdc\+\+|libm|libgcc_s|libc|ld-linux.*)\.so\.[0-9]+$'; then
    echo "is needed beyond the C and C++ runtime"
    failed=1
fi
exit $failed
