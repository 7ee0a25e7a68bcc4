#!/usr/bin/env bash
# Compares the bits that builds of the library give on this machine, on processor models of qemu-user, and on others.
#
#     tests/machines/compare.sh DIGEST...        build/release/tests/machines/digest, the same of other builds
#
# Builds for this machine must agree in every family.  Processors without AVX2 and FMA, glibc's functions for them, and
# builds for 64-bit ARM must agree in the exact families and keep a tolerance in the others; the differences are printed.
set -euo pipefail
mapfile -t programs < <(realpath "$@")
set -- "${programs[@]}"
cd "$(dirname "$0")"
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

elsewhere() {  # a name, then how to run a program there
    printf '\n%s\n' "$1"
    sh exact.sh exact.txt "${@:2}"
    "${@:2}" --compare "$tmp/values"
}

"$1" > "$tmp/first"
"$1" --write "$tmp/values"
for digest in "$@"; do
    if readelf -h "$digest" | grep -q AArch64; then
        elsewhere "$digest, qemu-user" qemu-aarch64 -L /usr/aarch64-linux-gnu "$digest"
    else
        printf '%s: the same bits in every family?\n' "$digest"
        "$digest" | diff "$tmp/first" -
    fi
done
elsewhere "glibc's functions without AVX2 and FMA" env GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX2,-FMA,-FMA4 "$1"
for model in qemu64 core2duo Nehalem SandyBridge Haswell; do
    elsewhere "$model, qemu-user" qemu-x86_64 -cpu "$model" "$1" 2> "$tmp/warnings"  # of features that it leaves out
done
