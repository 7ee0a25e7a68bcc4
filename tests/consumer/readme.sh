# Compiles and runs the first C program of the README.  A text block that follows it before the next code block and the
# next heading is what the program must print.
# Usage: readme.sh README.md cc include-directory library-directory
set -eux
readme=$1 cc=$2 include=$3 libdir=$4
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

awk -v out="$tmp" '
    into && /^```/       { close(into); into = ""; next }
    into                 { print > into; next }
    !program && /^```c$/ { program = into = out "/program.c"; next }
    program && /^```text$/ { into = out "/expected"; printf "" > into; printed = 1; next }
    program && (/^```/ || /^#/) { exit }
    printed { exit }
' "$readme"
test -s "$tmp/program.c" || { echo "$readme has no C program"; exit 1; }
"$cc" -Wall -Wextra -Werror -I"$include" "$tmp/program.c" -o "$tmp/program" \
    -L"$libdir" -Wl,-rpath,"$libdir" -lmensura -lm
"$tmp/program" > "$tmp/printed"
test ! -e "$tmp/expected" || diff -u "$tmp/expected" "$tmp/printed"
