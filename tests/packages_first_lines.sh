#!/bin/sh
# SPDX-License-Identifier: MIT
# What a newcomer's first lines do with the packages, run inside the fresh Debian.
cd /tmp

fail() {
    echo "packages_first_lines: $*" >&2
    exit 1
}

# A film, without a word about fonts. Its text is what the file of the fonts' package draws.
gst-launch-1.0 -q videotestsrc num-buffers=20 ! video/x-raw,format=I420,width=320,height=240 ! theoraenc ! oggmux ! \
    filesink location=clip.ogv
echo '* label 8 8 white #203040 "first overlay"' >overlays.txt
orn-overlay -i clip.ogv -o film.mp4 overlays.txt
orn-overlay -i clip.ogv -o same.mp4 --font /usr/share/orn-min-render/fonts/sans-8.cbf overlays.txt
cmp film.mp4 same.mp4 || fail "another font than sans-8 was found"
orn-overlay -i clip.ogv -o bare.mp4 /dev/null
! cmp -s film.mp4 bare.mp4 || fail "nothing was drawn into the film"

for script in overlays.txt /dev/null; do
    gst-launch-1.0 -q videotestsrc pattern=black num-buffers=2 ! video/x-raw,format=NV12,width=320,height=240 ! \
        ornoverlay script-location="$script" ! filesink location="$(basename "$script").nv12"
done
[ "$(wc -c <overlays.txt.nv12)" = 230400 ] || fail "not two frames came out of the pipeline"
! cmp -s overlays.txt.nv12 null.nv12 || fail "nothing was drawn in the pipeline"

python3 -c 'from orn_min_render import Frame, draw_detections
pixels = bytearray(320 * 240 * 3 // 2)
draw_detections(Frame.nv12(pixels, 320, 240), [(40, 80, 110, 230)], labels=["person 0.97"])
open("python.nv12", "wb").write(pixels)'
head -c 115200 /dev/zero >black.nv12
! cmp -s python.nv12 black.nv12 || fail "nothing was drawn from Python"

font=/usr/share/orn-min-render/fonts/sans-16.cbf examples=/usr/share/doc/liborn-min-render-dev/examples
cc $examples/labelled_box.c $(pkg-config --cflags --libs orn_min_render) -o labelled_box
cc -static $examples/labelled_box.c $(pkg-config --static --cflags --libs orn_min_render) -o labelled_box_static
cmake -G Ninja -S $examples -B examples >/dev/null 2>log || { cat log; fail "CMake does not find the library"; }
cmake --build examples >/dev/null
for program in ./labelled_box ./labelled_box_static examples/labelled_box; do
    $program $font 320 240 <black.nv12 >"$(echo $program | tr / _).nv12"
    ! cmp -s black.nv12 "$(echo $program | tr / _).nv12" || fail "$program draws nothing"
    cmp .*labelled_box.nv12 "$(echo $program | tr / _).nv12" || fail "$program draws something else"
done
