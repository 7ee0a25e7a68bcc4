# Compiles every public header alone, included twice, as C11 and as C++17, with the compilers given and with clang where
# it is installed; checks that it defines no macro but include guards, MENSURA_EXPORT and those of <stddef.h>.
# Usage: headers.sh include-directory cc c++
set -eu
export LC_ALL=C
include=$1 cc=$2 cxx=$3
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
failed=0

for header in "$include"/mensura/*.h; do
    # ISO C wants a declaration in a translation unit, and export.h has none.
    printf '#include "%s"\n#include "%s"\nextern int declaration;\n' "$header" "$header" > "$tmp/twice"
    for compile in "$cc -x c -std=c11" "$cxx -x c++ -std=c++17" "clang -x c -std=c11" "clang -x c++ -std=c++17"; do
        command -v "${compile%% *}" > "$tmp/found" || continue
        $compile -I"$include" -Wall -Wextra -pedantic -Werror -fsyntax-only "$tmp/twice" || failed=1
        echo '#include <stddef.h>' | $compile -dM -E - | sort > "$tmp/before"
        $compile -I"$include" -dM -E "$tmp/twice" | sort > "$tmp/after"
        if comm -13 "$tmp/before" "$tmp/after" | grep -vE '#define MENSURA_([A-Z0-9]+_H *$|EXPORT )'; then
            echo "$header leaves macros behind: $compile"
            failed=1
        fi
    done
done
exit $failed
