#!/usr/bin/env bash
# Compares the bits that builds of the library give on this machine, on processor models of qemu-user, and on others.
#
#     tests/machines/compare.sh DIGEST...        build/release/tests/machines/digest, those of other builds
#
# Builds for this machine must agree in every group.  Processors without AVX2 and FMA, glibc's functions for them, and
# builds for 64-bit ARM must agree in the exact groups and keep a tolerance in the others; the differences are printed.
set -euo pipefail
paths=$(realpath -e "$@")
mapfile -t programs <<< "$paths"
cd "$(dirname "$0")"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

elsewhere() {  # a name, then how to run a program there
    printf '\n%s\n' "$1"
    sh exact.sh exact.txt "${@:2}"
    "${@:2}" --compare "$tmp/values"
}

is_for_arm() { readelf -h "$1" | grep -q AArch64; }

for first in "${programs[@]}"; do
    is_for_arm "$first" || break
done
"$first" > "$tmp/first"
"$first" --write "$tmp/values"
for digest in "${programs[@]}"; do
    if is_for_arm "$digest"; then
        elsewhere "$digest, qemu-user" qemu-aarch64 -L /usr/aarch64-linux-gnu "$digest"
    else
        printf '%s: the same bits in every group?\n' "$digest"
        "$digest" | diff "$tmp/first" -
    fi
done
elsewhere "glibc's functions without AVX2 and FMA" env GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX2,-FMA,-FMA4 "$first"
for model in qemu64 core2duo Nehalem SandyBridge Haswell; do
    elsewhere "$model, qemu-user" qemu-x86_64 -cpu "$model" "$first" 2> >(grep -v "TCG doesn't support" >&2)
done
