# Fails if the library imports a function that is not listed here, which holds no lock, thread or clock, or locks by an
# instruction of its own.  What libraries it needs is seen by exports.sh.
# Usage: imports.sh library nm [objdump, for x86]
set -eu
export LC_ALL=C
library=$1 nm=$2 objdump=${3-}
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

cat > "$tmp/listed" << 'END'
(a?cos|a?sin|a?tan|atan2|a?cosh|a?sinh|tanh|sincos|exp|expm1|log|log10|log1p|pow|sqrt|floor|ceil|fabs|fmod|ldexp|hypot|fma|copysign)[fl]?
malloc|calloc|free|aligned_alloc
memcpy|memmove|memset|memcmp|bcmp|strlen
printf|fprintf|puts|putc|putchar|fputc|fputs|fwrite|fopen|fclose|stdout
__(printf|fprintf|memcpy|memmove|memset|stack)_chk(_fail)?
_Unwind_Resume|__gxx_personality_v0|__cxa_begin_catch|_ZSt9terminatev|__tls_get_addr
__(add|sub|mul|div|eq|ne|ge|gt|le|lt|unord)tf[23]|__(extenddftf|trunctfdf|float(un)?[sd]itf|fixtf[sd]i)2?
__cxa_finalize|__gmon_start__|_ITM_(de)?registerTMCloneTable
END
"$nm" -D --undefined-only "$library" | sed 's/@.*//; s/.* //' > "$tmp/imported"
grep -qx malloc "$tmp/imported"
if grep -vxE -f "$tmp/listed" "$tmp/imported"; then
    echo "is imported and not listed"
    exit 1
fi

test -n "$objdump" || exit 0
"$objdump" -d "$library" > "$tmp/code"
grep -q '<FindRoots' "$tmp/code"
! grep -E '[[:space:]](lock[[:space:]]|xchg.*\()' "$tmp/code"  # an exchange with memory locks without a prefix
