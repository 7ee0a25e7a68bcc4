# Installs the built library and uses it as strangers do: from C and C++, by find_package and by pkg-config; then the
# same with a static library, from a project that knows C alone.
# Usage: package.sh cmake generator source-directory build-directory cc c++
set -eux
cmake=$1 generator=$2 source=$3 build=$4 cc=$5 cxx=$6
project=$source/tests/consumer/project
unset DESTDIR
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
configure() { "$cmake" -G "$generator" -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" "$@"; }
package() { PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name mensura.pc)") pkg-config "$@" mensura; }

prefix=$tmp/shared
"$cmake" --install "$build" --prefix "$prefix"
version=$(package --modversion)
configure -S "$project" -B "$tmp/found" -DCMAKE_PREFIX_PATH="$prefix" -DVERSION="$version" -DWITH_CXX=ON
"$cmake" --build "$tmp/found"
"$tmp/found/from_c"
"$tmp/found/from_cpp"
libdir=$(package --variable=libdir)
test -e "$libdir/libmensura.so.1"
"$cxx" "$tmp/found/program.cpp" -o "$tmp/from_cpp" $(package --cflags --libs)  # in C: readme.sh
LD_LIBRARY_PATH=$libdir "$tmp/from_cpp"

# Unoptimised code inlines nothing and so calls all of the C++ runtime that the sources name.
prefix=$tmp/static
configure -S "$source" -B "$tmp/build" -DBUILD_SHARED_LIBS=OFF -DCMAKE_BUILD_TYPE=Debug -DMENSURA_BUILD_CLI=OFF \
    -DMENSURA_BUILD_TESTS=OFF -DMENSURA_BUILD_BENCH=OFF -DMENSURA_BUILD_EXAMPLES=OFF -DMENSURA_BUILD_DOCS=OFF
"$cmake" --build "$tmp/build" --parallel 2
"$cmake" --install "$tmp/build" --prefix "$prefix"
configure -S "$project" -B "$tmp/found_static" -DCMAKE_PREFIX_PATH="$prefix" -DVERSION="$version"
"$cmake" --build "$tmp/found_static"
"$tmp/found_static/from_c"
"$cc" "$project/program.c" -o "$tmp/from_c_static" $(package --static --cflags --libs)
"$tmp/from_c_static"
