#!/usr/bin/env bash
# The Debian packages: what is in each and what it asks for; then, unpacked into an empty root, the library as a C program
# finds it there, by pkg-config and by CMake, and the program itself.
# Usage: packages.sh directory-with-the-packages
set -euo pipefail
debs=$(realpath "$1")
source=$(realpath "$(dirname "$0")/../..")
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
root=$tmp/root
mkdir "$root"

die() { printf 'packages.sh: %s\n' "$*" >&2; exit 1; }
field() { dpkg-deb -f "$debs/${1}_${version}_$arch.deb" "$2"; }
depends() { [[ ", $(field "$1" Depends)," == *", $2"[\ ,]* ]] || die "$1 does not depend on $2: $(field "$1" Depends)"; }
same_version() { [[ ", $(field "$1" Depends)," == *", libmensura1 (= $version),"* ]] || die "$1: $(field "$1" Depends)"; }
control_is() { [[ $(dpkg-deb -I "$debs/libmensura1_${version}_$arch.deb" "$1") == "$2" ]] || die "libmensura1: $1 is not $2"; }
says() { grep -q -- "$2" "$1" || { cat "$1" >&2; die "no \"$2\" above"; }; }
# Unpacks a package that must hold the files named on standard input, and no others.
unpack() {
    local deb=$debs/${1}_${version}_$arch.deb
    diff -u --label "$1 should hold" --label "$1 holds" <(sort) \
        <(dpkg-deb --fsys-tarfile "$deb" | tar -t | grep -v '/$' | sed 's|^\./||' | sort)
    dpkg-deb -x "$deb" "$root"
}

arch=$(dpkg --print-architecture)
libdir=usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)
version=$(sed -n 's/^project(mensura VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
diff -u <(printf "%s_${version}_$arch.deb\n" libmensura-dev libmensura1 mensura) <(cd "$debs" && ls -- *.deb | LC_ALL=C sort)

doc=usr/share/doc
printf '%s\n' "$libdir"/libmensura.so.1{,.1.0} $doc/libmensura1/changelog.gz | unpack libmensura1
{
    (cd "$source" && printf 'usr/%s\n' include/mensura/*.h)
    printf "$libdir/%s\n" libmensura.so pkgconfig/mensura.pc \
        cmake/mensura/mensura-{config,config-version,targets,targets-release}.cmake
    (cd "$source" && printf "$doc/libmensura-dev/%s\n" changelog.gz docs/*.md docs/{pictures,snippets}/* examples/*.c \
        examples/data/*) | grep -v '/docs/cli\.md$'
} | unpack libmensura-dev
completions=(usr/share/bash-completion/completions/mensura usr/share/zsh/vendor-completions/_mensura
    usr/share/fish/vendor_completions.d/mensura.fish)
printf '%s\n' usr/bin/mensura usr/share/man/man1/mensura.1.gz $doc/mensura/{changelog.gz,cli.md,uPlot-LICENSE} "${completions[@]}" |
    unpack mensura

for package in libc6 libstdc++6; do depends libmensura1 "$package"; done
for package in libc6 libstdc++6 libfmt9 libsndfile1 libzstd1 zlib1g; do depends mensura "$package"; done
same_version libmensura-dev
same_version mensura
[[ $(field mensura Recommends) == gnuplot-nox ]] || die "mensura does not recommend gnuplot-nox"
control_is shlibs "libmensura 1 libmensura1 (>= $version)"
control_is triggers "activate-noawait ldconfig"
for file in "$root/usr/bin/mensura" "$root/$libdir/libmensura.so.1"; do
    [[ $(readelf -WS "$file") != *.symtab* ]] || die "$file is not stripped"
done

for package in libmensura1 libmensura-dev mensura; do
    zcat "$root/$doc/$package/changelog.gz" | cmp - "$source/CHANGELOG.md"
done
guides=$(grep -oh 'guide [a-z]*\.md' "$root"/usr/include/mensura/*.h | sed 's,guide ,docs/,' | sort -u)
[[ $guides == *docs/iir.md* ]] || die "the headers name no guide"
for guide in $guides; do
    [[ -e $root/$doc/libmensura-dev/$guide ]] || die "the headers name $guide, which is not in libmensura-dev"
done

export PKG_CONFIG_SYSROOT_DIR=$root PKG_CONFIG_LIBDIR=$root/$libdir/pkgconfig
[[ $(pkg-config --modversion mensura) == "$version" ]] || die "pkg-config tells another version"
project=$source/tests/consumer/project
cc "$project/program.c" -o "$tmp/from_c" $(pkg-config --cflags --libs mensura)
cmake -S "$project" -B "$tmp/found" -DCMAKE_PREFIX_PATH="$root/usr" -DVERSION="$version"
says "$tmp/found/CMakeCache.txt" "^mensura_DIR:PATH=$root/$libdir/cmake/mensura$"
cmake --build "$tmp/found"

export LD_LIBRARY_PATH=$root/$libdir
"$tmp/from_c"
"$tmp/found/from_c"
mensura=$root/usr/bin/mensura
[[ $("$mensura" --version) == "mensura $version" ]] || die "mensura --version: $("$mensura" --version)"
"$mensura" design lowpass --cutoff 40Hz --rate 360Hz > "$tmp/design"
says "$tmp/design" '-3 dB at  *40 Hz$'

completed=$(bash -c 'source "$1"; COMP_WORDS=(mensura filter --family pap) COMP_CWORD=3; _mensura; echo $COMPREPLY' \
    - "$root/${completions[0]}")
[[ $completed == papoulis ]] || die "bash completes --family pap as \"$completed\""

# The page has a section and a line of the synopsis for every command, and no heading is lost in the text.
page=$tmp/page
zcat "$root/usr/share/man/man1/mensura.1.gz" > "$page"
for section in NAME SYNOPSIS DESCRIPTION OPTIONS QUANTITIES COMMANDS '"EXIT STATUS"' EXAMPLES; do
    says "$page" "^\.SH $section\$"
done
commands=$("$mensura" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]\{1,\}\) .*/\1/p')
[[ $commands == *design* ]] || die "no command in mensura --help"
for command in $commands; do
    sed -n "/^\.SH \"MENSURA ${command^^}\"/,/^\.SH [^M]/p" "$page" > "$tmp/section"
    says "$tmp/section" "^\.SS \"Options of $command:\""
    sed -n '/^\.SH SYNOPSIS/,/^\.SH D/p' "$page" > "$tmp/synopsis"
    says "$tmp/synopsis" "\\\\fI\\\\,$command "
done
! grep -E '^\*|Usage:|FAILED' "$page" || die "the page is garbled"
