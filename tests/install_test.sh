#!/bin/sh
# SPDX-License-Identifier: MIT
# The installed tree, moved from where it was installed, as its users find it:
# install_test.sh BUILD SOURCE VERSION
set -eu
build=$1 source=$2 version=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export CMAKE_GENERATOR=Ninja # as everywhere here; make need not be installed

fail() {
    echo "install_test: $*" >&2
    exit 1
}

DESTDIR=$work/staged cmake --install "$build" >log
prefix=$(sed -n 's/^CMAKE_INSTALL_PREFIX:PATH=//p' "$build/CMakeCache.txt")
mv "staged$prefix" tree
so=$(find "$work/tree" -name liborn_min_render.so) lib=${so%/*}
# The pages, and what looks for fonts, may: they name folders that are the same everywhere.
! grep -rI --exclude-dir=man --exclude=_font.py -e "$work" -e "$prefix/" -e "$build" tree || fail "a file names a folder"
[ "$(readlink "$so"):$(readlink "$so.1")" = "${so##*/}.1:${so##*/}.$version" ] ||
    fail "the names of the shared object do not lead to ${so##*/}.$version"
readelf -d "$so" | grep -q 'SONAME.*\[liborn_min_render.so.1\]' || fail "another SONAME"
"$source/tests/check_shared_object.sh" "$so"
grep -q "^orn-min-render ($version)" "$source/packaging/debian/changelog" ||
    fail "packaging/debian/changelog does not begin with version $version"
for page in "$source"/docs/man/*.[1-9]; do
    [ -f "tree/share/man/man${page##*.}/${page##*/}" ] || fail "$page is not installed"
done

# The Python package finds the library of its own tree.
package=$(find "$work/tree" -path '*-packages/orn_min_render')
if [ "$package" ]; then
    (cd / && PYTHONPATH=${package%/*} python3 -B - "$so.1") <<'PYTHON' || fail "the Python package does not draw"
import sys, orn_min_render
orn_min_render.draw_detections(orn_min_render.Frame.nv12(bytearray(99), 8, 8), [(1, 1, 7, 7)])
assert orn_min_render._library.path() == sys.argv[1]
PYTHON
    ! find "$package" ! -name '*.py' ! -name py.typed -type f | grep . || fail "these are not of the package"
fi

# CMake finds it; the tools run without LD_LIBRARY_PATH, the examples in C and C++ as they are built.
export PKG_CONFIG_PATH="$lib/pkgconfig"
cmake -S "$source/examples" -B found -DCMAKE_PREFIX_PATH="$work/tree" >log
cmake --build found >log || fail "the examples do not build: $(cat log)"
python3 "$source/tests/examples_test.py" tree/bin found "$lib" "$source"

# pkg-config finds it, and as a part of another project it has the same names and installs nothing.
example=$source/examples/labelled_box.c
pkg-config --exact-version="$version" orn_min_render || fail "pkg-config: another version"
for static in '' --static; do
    cc -std=c99 ${static#-} $(pkg-config --cflags orn_min_render) "$example" \
        $(pkg-config $static --libs orn_min_render) -o "with_pkg-config$static"
done
cat >CMakeLists.txt <<CMAKE
cmake_minimum_required(VERSION 3.25)
project(part LANGUAGES C CXX)
add_subdirectory($source library)
foreach(kind orn_min_render orn_min_render_static)
  add_executable(with_\${kind} $example)
  target_link_libraries(with_\${kind} orn_min_render::\${kind})
endforeach()
install(FILES CMakeLists.txt DESTINATION share)
CMAKE
cmake -S . -B part >log
cmake --build part >log || fail "the subproject does not build: $(cat log)"
DESTDIR=$work/empty cmake --install part >log
[ "$(find part empty -name 'cbf*' -o -path 'empty/*' -type f)" = empty/usr/local/share/CMakeLists.txt ] ||
    fail "a subproject builds or installs what it was not asked for"

# Static alone: nothing shared is built or installed. Beside the shared one, it is a matter of asking.
cmake -S "$source" -B alone -DBUILD_SHARED_LIBS=OFF -DORN_MIN_RENDER_TOOLS=OFF \
    -DORN_MIN_RENDER_TESTS=OFF -DCMAKE_INSTALL_PREFIX="$work/static" >log
cmake --build alone >log || fail "the static library alone does not build: $(cat log)"
cmake --install alone >log
[ -z "$(find alone static -name '*.so*')" ] || fail "BUILD_SHARED_LIBS=OFF makes a shared object"
mkdir client
cat >client/CMakeLists.txt <<CMAKE
cmake_minimum_required(VERSION 3.20)
project(client LANGUAGES C)
find_package(orn_min_render 1.0 REQUIRED COMPONENTS \${kind})
add_executable(client $example)
target_link_libraries(client orn_min_render::orn_min_render)
CMAKE
for case in tree/shared tree/static static/static; do
    from=${case%/*} kind=${case#*/} folder=with_$(echo "$case" | tr / _)
    cmake -S client -B "$folder" -DCMAKE_PREFIX_PATH="$work/$from" -Dkind="$kind" >log
    cmake --build "$folder" >log || fail "a $kind client of $from does not build: $(cat log)"
    readelf -d "$folder/client" | grep -q liborn_min_render && linked=shared || linked=static
    [ $linked = "$kind" ] || fail "the client of $case links the $linked library"
done
PKG_CONFIG_PATH=$work/static/lib/pkgconfig
cc -static -std=c99 $(pkg-config --static --cflags orn_min_render) "$example" \
    $(pkg-config --static --libs orn_min_render) -o with_pkg-config_alone

tree/bin/cbfconv -s 16 -o sans.cbf /usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf
head -c 115200 /dev/zero >black.nv12
found/labelled_box sans.cbf 320 240 <black.nv12 >expected.nv12
for program in ./with_pkg-config* part/with_orn_min_render* with_*/client; do
    LD_LIBRARY_PATH=$lib "$program" sans.cbf 320 240 <black.nv12 | cmp - expected.nv12 ||
        fail "$program draws something else"
done
