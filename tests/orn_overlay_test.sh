#!/bin/sh
# SPDX-License-Identifier: MIT
# orn-overlay as a user meets it: orn_overlay_test.sh CBFCONV ORN_OVERLAY REPOSITORY
set -u
cbfconv=$1 overlay=$2 repository=$3
ttf=/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failures=0

fail() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
    [ -z "${FAIL_FAST-}" ] || exit 1
}

# expect STATUS PATTERN COMMAND...: the exit status, and a line of standard error (or none for '').
expect() {
    status=$1 pattern=$2
    shift 2
    "$@" <"${input:-/dev/null}" >output 2>errors
    actual=$?
    [ "$actual" = "$status" ] || fail "exit $actual instead of $status: $*: $(head -n 3 errors)"
    if [ -z "$pattern" ]; then
        [ ! -s errors ] || fail "unexpected message: $*: $(head -n 3 errors)"
    else
        grep -q -- "$pattern" errors || fail "no '$pattern' in: $(head -n 3 errors)"
    fi
}

"$cbfconv" -s 16 -r 0x20-0x7E,0xA0-0xFF -o sans.cbf "$ttf"
export XDG_DATA_HOME="$work/home" XDG_DATA_DIRS="relative:$work/near:$work/far"
"$cbfconv" -s 16 -r 65,66,97,98 -o some.cbf "$ttf"

# ---- errors ----
cat >wrong.txt <<'SCRIPT'
# a comment, and further down an empty line
* box text.left 2 3 4 red
5 blob
* text 1 2 red "no end
* line 1 2 3 99999999999 red
font xsans.cbf"
* box 1 2 right- 4 red

* picture 0 0 3 3 "wrong.txt"
font "wrong.txt"
SCRIPT
expect 1 "wrong.txt:3: unknown command 'blob'" "$overlay" --size 8x6 --font sans.cbf wrong.txt
for line in 2 4 5 6 7 9 10; do
    grep -Eq "^orn-overlay: wrong.txt:$line:([0-9]+:)? " errors || fail "line $line is not refused"
done
# What is taken of a text, of a name and of a picture's header is all of it, and lines end at \r, too.
while IFS='=' read -r line reason; do
    printf "$line\n" >bytes.txt
    expect 1 "bytes.txt:$reason" "$overlay" --size 8x6 --font sans.cbf bytes.txt
done <<'TABLE'
* text 1 20 white "a\000b"=1: the string is not UTF-8
font "sans.cbf\000.txt"=1: expected the name of a file, found 'sans.cbf?.txt'
* hline 1 2 3 red thick 0=1: bad size '0': expected more than 0
* fill 1 2 3 4 red\r* blob=2: unknown command
TABLE
echo '* text 1 2 red "a"' >text.txt
expect 1 'text.txt:1: .*font' "$overlay" --size 8x6 text.txt
expect 1 'nowhere.txt: No such file' "$overlay" --size 8x6 nowhere.txt
expect 1 'wrong.txt: not a CBF font' "$overlay" --size 8x6 --font wrong.txt text.txt
expect 2 'size' "$overlay" text.txt
expect 2 'size' "$overlay" --size 0x6 text.txt
expect 2 'format' "$overlay" --size 8x6 --format rgb text.txt
expect 2 'terminal\|SCRIPT' "$overlay" --size 8x6
expect 2 'stride: expected at least 8' "$overlay" --size 7x6 --stride 7 text.txt
while read -r options; do # numbers are decimal and finite
    expect 2 'expected.* not .*' "$overlay" --check $options text.txt
done <<'TABLE'
--fps nan
--fps 1/1001
--min-confidence nan
--max-gap 0x20
--max-gap 1001
--size 8
--size 8x6 --stride 0x10
TABLE
expect 0 '' "$overlay" --check --size 010x6 --stride 010 --font sans.cbf text.txt
expect 0 'no frames' "$overlay" --size 8x6 --font sans.cbf text.txt
expect 0 '' "$overlay" --check --font sans.cbf text.txt

# ---- frames ----
# bytes COUNT VALUE(octal)
bytes() {
    head -c "$1" /dev/zero | tr '\0' "\\$2"
}

: >empty.txt
for size in 8x6 7x5 1x1; do
    w=${size%x*} h=${size#*x}
    frame=$((w * h + (w + 1) / 2 * 2 * ((h + 1) / 2)))
    head -c $((3 * frame)) "$repository/tests/lines_test.cpp" >in
    input=in expect 0 '' "$overlay" --size $size empty.txt
    cmp -s in output || fail "frames of $size do not pass unchanged"
    head -c $((2 * frame + 1)) in >cut
    input=cut expect 1 "frame 2 is cut short: 1 of $frame bytes" "$overlay" --size $size empty.txt
    [ "$(wc -c <output)" = $((2 * frame)) ] || fail "whole frames before a short one are lost"
done

# Pipes that don't block are waited for.
open='import os, sys; [os.set_blocking(i, False) for i in (0, 1)]; os.execv(sys.argv[1], sys.argv[1:])'
{ sleep 0.1; bytes 200000 101; } |
    python3 -c "$open" "$overlay" --size 500x200 --format y8 empty.txt | { sleep 0.3; cat; } >output
[ "$(wc -c <output)" = 200000 ] || fail "a pipe that does not block ends the work"

# White (luma 254) over columns 1-2 of row 1, in frame 1 alone; odd width, one chroma sample pair.
echo '1 fill 1 1 3 2 white' >fill.txt
bytes $((3 * (5 * 3 + 6 * 2))) 000 >in
input=in expect 0 '' "$overlay" --size 5x3 fill.txt
{
    bytes 27 000
    bytes 6 000; bytes 2 376; bytes 7 000
    bytes 4 200; bytes 8 000
    bytes 27 000
} >expected
cmp -s output expected || fail "a fill does not land where the script says"
echo '* bitmap 0 0 9 9 white half "nowhere.pbm"' >pbm.txt
expect 1 'pbm.txt:1: nowhere.pbm: No such file' "$overlay" --size 8x6 pbm.txt
expect 1 'not a CBF font' timeout 20 "$overlay" --check --font /dev/zero empty.txt
echo '* bitmap 0 0 9 9 white "/dev/zero"' >pbm.txt
expect 1 'pbm.txt:1: /dev/zero: has more than' timeout 20 "$overlay" --check pbm.txt
awk 'BEGIN { for (i = 0; i < 30000; ++i) print 1000 * (i % 300) + 1 "," int(i / 300) ",1,1,9,9" }' >far.csv
bytes 1024 000 >in
input=in expect 0 '' timeout 9 "$overlay" --size 64x16 --format y8 --tracks far.csv --max-gap 1000
for script in "$repository"/docs/gallery/*.txt; do
    "$overlay" --check --font sans.cbf "$script" 2>errors || grep -q "without FFmpeg's libraries" errors ||
        fail "$script has errors: $(cat errors)"
done

# ---- sets of fonts ----
# A row: a size, a line before the text, arguments of the program, and the font that is to be taken.
mkdir -p home/orn-min-render/fonts near/orn-min-render/fonts far/orn-min-render/fonts
for size in 8 12 18; do
    "$cbfconv" -s $size -r 0x20-0x7E -o near/orn-min-render/fonts/set-$size.cbf "$ttf"
    cp near/orn-min-render/fonts/set-$size.cbf $size.cbf
done
cp 8.cbf far/orn-min-render/fonts/set-24.cbf # in a folder that comes too late
cp 8.cbf near/orn-min-render/fonts/sans-1.cbf
cp 18.cbf near/orn-min-render/fonts/sans-2.cbf
mv near/orn-min-render/fonts/set-8.cbf near/orn-min-render/fonts/set-008.cbf
cp 12.cbf set
while IFS='=' read -r size before options font; do
    printf '%s\n* text 2 22 white "ab"\n' "$before" >one.txt
    printf '* text 2 22 white "ab"\n' >other.txt
    bytes $((${size%x*} * ${size#*x})) 000 >in
    input=in expect 0 '' "$overlay" --size $size --format y8 $options one.txt
    mv output one.out
    input=in expect 0 '' "$overlay" --size $size --format y8 --font $font other.txt
    cmp -s output one.out || fail "$size, $before $options: not $font"
    cmp -s one.out in && fail "draws nothing: $size, $before $options"
done <<'TABLE'
64x24==--font set=18.cbf
64x24=font "set" 11 =--font 8.cbf=12.cbf
64x48=font "set" 25%==12.cbf
64x61===18.cbf
64x24=font "some.cbf"==some.cbf
TABLE
while IFS='=' read -r line reason; do
    printf '%s\n' "$line" >font.txt
    expect 1 "font.txt:1: $reason" "$overlay" --check font.txt
done <<'TABLE'
font "set" 24 px=unexpected 'px'
font "some.cbf" 24=some.cbf: is one font
font "/other"=/other: No such file
TABLE
expect 1 'other: no such file, and no set' "$overlay" --check --font other other.txt
rm -r near home
expect 1 'other.txt:1: .*needs a font: .*--font.*orn-min-render-fonts' "$overlay" --check other.txt

# ---- places, tracks and layouts ----
# The two scripts of a row (where | stands for the end of a line) draw the same into two frames.
printf '{id}\r\n' >braces.txt
printf '\357\273\277frame,id,left,top,width,height,conf\r1,7,10,4,4.6,3,0.9\r\r2, 2.0e0 ,60,2,20,5\r' >tracks.csv
printf '1,3,4,4,9,9,0.1\r\n# a gap\n1,1,8,4,4,4\r\n3,1,16,6,8,4,-1,-1,-1\n4,3,50,2,4,4\n1,4,40,2,4,4\n3,5,50,2,4,4\n' >gap.csv
while IFS='=' read -r files one other; do
    for script in one other; do
        eval "printf '%s' \"\$$script\"" | tr '|' '\n' >$script.txt
        bytes $((3 * 64 * 24)) 000 >in
        input=in expect 0 '' "$overlay" --size 64x24 --format y8 --font sans.cbf $files $script.txt
        mv output $script.out
        files=
    done
    cmp -s one.out other.out || fail "not the same: $one: $other"
    cmp -s one.out in && fail "draws nothing: $one"
done <<'TABLE'
=* fill right-8 bottom-4 right bottom white=* fill 56 20 64 24 white
=* fill 4 5 +10 +6 white # +1=* fill 4 5 14 11 white
=* paragraph 0 0 40 white red plain "ab cdefgh  ij "=* label 0 0 white red "ab\ncdef\ngh ij"
--fps 0.3=* text 60 20 white right "{time} {frame}"=0 text 60 20 white right "00:00:00.0 0"|1 text 60 20 white right "00:00:03.3 1"|2 text 60 20 white right "00:00:06.6 2"
--fps 2 --utc --start 2024-02-29T23:59:59.5Z=* text 3 20 white "{clock:%F %T.%3N} {fps}"=0 text 3 20 white "2024-02-29 23:59:59.500 0.0"|1 text 3 20 white "2024-03-01 00:00:00.000 2.0"|2 text 3 20 white "2024-03-01 00:00:00.500 2.0"
=* text 3 20 white "{file:braces.txt}"=* text 3 20 white "{{id}"
--tracks tracks.csv=tracks fill box.left box.top box.right box.bottom white=0 fill 10 4 15 7 white|1 fill 60 2 80 7 white
--tracks gap.csv --max-gap 2 --min-confidence 0.5=tracks fill box.left box.top box.right box.bottom white=0 fill 8 4 12 8 white|0 fill 40 2 44 6 white|2 fill 50 2 54 6 white
--tracks gap.csv --max-gap 2=tracks trail 1 white thick 3=1 line 15 9 10 8 white thick 3|2 line 20 10 15 9 white thick 3
--tracks gap.csv=tracks label box.left box.top white red fixed bottom "{id}"=0 label 8 4 white red bottom "1"|0 label 4 4 white red bottom "3"|0 label 40 2 white red bottom "4"|2 label 16 6 white red bottom "1"|2 label 50 2 white red bottom "5"
--tracks gap.csv --first-frame 0=tracks text box.center 20 white "{id} {conf}"=1 text 10 20 white center "1 1.00"|1 text 8 20 white center "3 0.10"|1 text 42 20 white center "4 1.00"
TABLE
printf 'frame,id\n0,1,2,3,4,5\n' >bad.csv
expect 1 "bad.csv:2: bad frame '0': the first one is 1" "$overlay" --check --tracks bad.csv
echo 'tracks fill 1 1 2 2 red' >tracks.txt
expect 1 'tracks.txt:1: .*needs tracked boxes' "$overlay" --check tracks.txt

# What is no error is noted, in a check and while it works. The font has A, B, a and b alone.
printf '1,3,4,4,9,9\n1,-1,4,4,9,9\n2,3,4,4,9,9\n1,-1,4,4,9,9\n' >once.csv
{ cat once.csv; echo 2,3,5,5,9,9; cat once.csv; } >twice.csv
while IFS='=' read -r options script note; do
    printf "$script\n" >note.txt
    expect 0 "$note" "$overlay" --check --font some.cbf $options note.txt
    [ "$(wc -l <errors)" = 1 ] || fail "not one note: $(cat errors)"
done <<'TABLE'
=* text 3 20 white "AЖ中Ж\\nB"=note: note.txt:1: the font lacks 2 characters of the text: Ж (U+0416), 中 (U+4E2D)$
=\n* label 3 20 red red down "B A"\n* label 3 20 red red "e"=note: note.txt:3: .*text: e (U+0065)$
--tracks once.csv=* text 3 20 white "f"=text: f (U+0066)$
--tracks twice.csv=* fill 0 0 1 1 red=note: twice.csv: frame 1 has two boxes of id 3, and there are 2 more like this$
TABLE
printf '* text 3 20 white "{frame} A"\n* text 3 40 white "{frame}e"\n' >note.txt
bytes $((4 * 64 * 24)) 000 >in
input=in expect 0 'note.txt:2: .*text: e (U+0065)$' "$overlay" --size 64x24 --format y8 --font some.cbf note.txt
[ "$(grep -c 'note.txt:1: .*: [0-3] (U+003[0-3])$' errors)$(wc -l <errors)" = 49 ] || fail "changing texts: $(cat errors)"

# Rows of 5 luma pixels in 8 bytes, of which the padding passes; then with other padding, or none.
echo '0 fill 4 0 5 1 white' >fill.txt
printf 'abcdeABCfghijDEFuvuvuvGHabcdeABCfghijDEFuvuvuvGH' >in
{ printf abcd; bytes 1 376; printf ABCfghijDEFuvuv; bytes 2 200; printf GHabcdeABCfghijDEFuvuvuvGH; } >padded
input=in expect 0 'times real time' "$overlay" --size 5x2 --stride 8 --stats --fps 9 fill.txt
cmp -s output padded || fail "padding does not pass unchanged"
{ printf abcdeA; printf fghijD; printf uvuvuv; } >expected
input=in expect 0 '' "$overlay" --size 5x2 --stride 8 --output-stride 6 empty.txt
head -c 18 output | cmp -s - expected || fail "rows are not cut to the output's stride"
printf abcdefghi >clip.raw
printf '1- picture 1 0 3 1 "clip.raw"\n' >picture.txt
bytes 25 056 >in
input=in expect 0 '' "$overlay" --size 5x1 --format y8 picture.txt
[ "$(cat output)" = ......abc..def..ghi..abc. ] || fail "pictures show as $(cat output)"
expect 1 'standard input: Bad file' sh -c '"$@" <&-' - "$overlay" --size 5x1 --format y8 picture.txt
expect 1 'clip\\x1B.cbf: No such file' "$overlay" --check --font "$(printf 'clip\033.cbf')" empty.txt
expect 1 'picture.txt:1: clip.raw: its 9 bytes' "$overlay" --size 5x1 picture.txt
for options in '--size 5x1 empty.txt' --help --version; do
    expect 1 'standard output: No space' sh -c '"$@" <in >/dev/full' - "$overlay" $options
done

[ $failures = 0 ] || echo "$failures failures" >&2
exit $((failures > 0))
