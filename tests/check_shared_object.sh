#!/bin/sh
# SPDX-License-Identifier: MIT
# The shared object exports what exports.txt lists and nothing else, needs libc alone, and is small.
set -eu
library=$1
list=$(dirname "$0")/exports.txt
nm -D --defined-only --format=posix "$library" | cut -d' ' -f1 | LC_ALL=C sort | diff "$list" - || {
    echo "check_shared_object: the exported symbols differ from $list (<: listed, >: exported)" >&2
    exit 1
}
symbols=$(dirname "$0")/../packaging/debian/liborn-min-render1.symbols
sed -n 's/^ \(.*\)@Base .*/\1/p' "$symbols" | diff "$list" - || {
    echo "check_shared_object: $symbols differs from $list (<: in the list, >: in the package)" >&2
    exit 1
}
needed=$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
[ "$needed" = libc.so.6 ] || {
    echo "check_shared_object: needs '$needed' instead of libc.so.6 alone" >&2
    exit 1
}
strip -o "$library.stripped" "$library"
size=$(wc -c <"$library.stripped")
echo "The shared object: $size bytes stripped, of 65536 at the most"
[ "$size" -lt 65536 ]
