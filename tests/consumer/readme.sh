# The README's program, compiled by the README's own lines: in place, by pkg-config, by CMake.  It must print what the README
# says.  Then what it says of projects that contain the sources.
# Usage: readme.sh cmake generator source-directory build-directory cc c++
set -eux
cmake=$1 generator=$2 source=$3 build=$4 cc=$5 cxx=$6
unset DESTDIR
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
cd "$tmp"

# The first code block in that language that has the text.
block() {
    awk -v language="$1" -v text="$2" '
        /^```/ && !inside   { inside = 1; wanted = $0 == "```" language; block = ""; next }
        /^```/              { if (wanted && index(block, text)) { printf "%s", block; exit } inside = 0; next }
        inside && wanted    { block = block $0 "\n" }
    ' "$source/README.md" > "$tmp/$3"
    test -s "$tmp/$3" || { echo "README.md has no block \`\`\`$1 with $2"; exit 1; }
}
cc() { command "$cc" -Wall -Wextra -Werror "$@"; }
prints_as_told() {
    LD_LIBRARY_PATH=${2-} "$1" > printed
    diff -u expected printed
}

block c 'int main' program.c
block text roots: expected
block sh -Lbuild/release in_place.sh
block sh "pkg-config --cflags" installed.sh
block cmake find_package found.cmake

mkdir build
ln -s "$source/include" include
ln -s "$build" build/release
. ./in_place.sh
prints_as_told ./program
rm program

"$cmake" --install "$build" --prefix "$tmp/prefix"
pc=$(find "$tmp/prefix" -name mensura.pc)
export PKG_CONFIG_PATH="${pc%/*}"
. ./installed.sh
prints_as_told ./program "${PKG_CONFIG_PATH%/*}"

configure() { "$cmake" -G "$generator" -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" "$@"; }
mkdir project
printf 'cmake_minimum_required(VERSION 3.16)\nproject(readme C)\n' | cat - found.cmake > project/CMakeLists.txt
cp program.c project
configure -S project -B found -DCMAKE_PREFIX_PATH="$tmp/prefix"
"$cmake" --build found
prints_as_told found/program

# A project that contains the sources gets the target, and installs what is its own.
mkdir container
cp program.c container
cat > container/CMakeLists.txt << END
cmake_minimum_required(VERSION 3.25)
project(container C CXX)
include(FetchContent)
FetchContent_Declare(mensura SOURCE_DIR "$source")
FetchContent_MakeAvailable(mensura)
add_executable(program program.c)
target_link_libraries(program PRIVATE mensura::mensura)
install(FILES program.c DESTINATION share)
END
configure -S container -B contained
test -z "$(grep -E '^MENSURA_[A-Z_]+:BOOL=ON' contained/CMakeCache.txt)"
"$cmake" --install contained --prefix "$tmp/own"
test "$(cd own && find . -type f)" = ./share/program.c
configure -S container -B contained -DMENSURA_INSTALL=ON
grep -q libmensura contained/_deps/mensura-build/cmake_install.cmake
