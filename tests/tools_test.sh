#!/bin/sh
# The tools as a user meets them: tools_test.sh CBFCONV ORN_OVERLAY LABELLED_BOX REPOSITORY
set -u
cbfconv=$1 overlay=$2 example=$3 repository=$4
ttf=/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failures=0

fail() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
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

# ---- cbfconv ----
expect 0 '' "$cbfconv" -s 16 -r 0x20-0x7E,0xA0-0xFF -o sans.cbf "$ttf"
cp sans.cbf again.cbf
expect 0 '' "$cbfconv" -s 16 -r 0x20-0x7E,0xA0-0xFF -o again.cbf "$ttf"
cmp -s sans.cbf again.cbf || fail "the same font is written differently"
expect 0 'has 2 of the 3 characters' "$cbfconv" -s 16 -r 65,66,0xE000 -o some.cbf "$ttf"
expect 0 '' "$cbfconv" --help
expect 2 'runs backwards' "$cbfconv" -s 16 -r 9-3 -o bad.cbf "$ttf"
expect 2 'no range' "$cbfconv" -s 16 -r 0x20- -o bad.cbf "$ttf"
expect 2 '' sh -c '"$@" 2>/dev/null' - "$cbfconv" -o bad.cbf
expect 2 'size' "$cbfconv" -o bad.cbf "$ttf"
expect 1 'nowhere.ttf' "$cbfconv" -s 16 -o bad.cbf nowhere.ttf
expect 1 'tools_test.sh: ' "$cbfconv" -s 16 -o bad.cbf "$repository/tests/tools_test.sh"
expect 1 'U+0057: is wider or higher than 127 pixels' "$cbfconv" -s 128 -r 0x57 -o bad.cbf "$ttf"
expect 1 'none of the characters' "$cbfconv" -s 16 -r 0xE000 -o bad.cbf "$ttf"
[ -z "$(ls | grep -v -e cbf$ -e output -e errors)$(ls bad.cbf* 2>/dev/null)" ] ||
    fail "a failed conversion leaves files: $(ls)"

# ---- orn-overlay: errors ----
cat >wrong.txt <<'SCRIPT'
# a comment, then an empty line

5 blob
* box 1 2 3 red
* fill 1 2 3 4 #12
9-3 hline 1 2 3 red
* text 1 2 red "no end
* line 1 2 3 99999999999 red
* box 1 2 3 4 red dotted
SCRIPT
expect 1 "wrong.txt:3: unknown command 'blob'" "$overlay" --size 8x6 --font sans.cbf wrong.txt
for line in 4 5 6 7 8 9; do
    grep -q "^orn-overlay: wrong.txt:$line: " errors || fail "line $line is not refused"
done
echo '* text 1 2 red "a"' >text.txt
expect 1 'text.txt:1: .*font' "$overlay" --size 8x6 text.txt
expect 1 'nowhere.txt: No such file' "$overlay" --size 8x6 nowhere.txt
expect 1 'wrong.txt: not a CBF font' "$overlay" --size 8x6 --font wrong.txt text.txt
expect 2 'size' "$overlay" text.txt
expect 2 'size' "$overlay" --size 0x6 text.txt
expect 2 'format' "$overlay" --size 8x6 --format rgb text.txt
expect 0 'no frames' "$overlay" --size 8x6 --font sans.cbf text.txt
expect 0 '' "$overlay" --check --font sans.cbf text.txt

# ---- orn-overlay: frames ----
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
bytes $((2 * 15)) 000 >in
input=in expect 0 '' "$overlay" --size 5x3 --format y8 fill.txt
{ bytes 15 000; bytes 6 000; bytes 2 376; bytes 7 000; } >expected
cmp -s output expected || fail "Y8 frames are drawn wrongly"

echo '* label 0 0 white black "{frame} {time}"' >label.txt
bytes $((2 * 160 * 40 * 3 / 2)) 100 >in
input=in expect 0 '' "$overlay" --size 160x40 --font sans.cbf --fps 10 label.txt
head -c 9600 output >first
tail -c 9600 output | cmp -s - first && fail "{frame} shows the same in every frame"

# A disc is as wide as its rows say, a copy repeats it, half the bits of a bitmap stay clear.
printf 'P1\n2 1\n1 0\n' >half.pbm
printf 'P4\n9 9\n12345' >cut.pbm
cat >shapes.txt <<'SCRIPT'
* disc 4 4 12 12 white
* copy 20 4 28 12 4 4
* bitmap 40 4 44 8 white "half.pbm"
* roundfill 50 2 60 12 3 3 white
SCRIPT
bytes $((64 * 16)) 000 >in
input=in expect 0 '' "$overlay" --size 64x16 --format y8 shapes.txt
row=$(tail -c +$((64 * 8 + 1)) output | head -c 64 | od -An -v -tu1 | tr -d '\n' | tr -s ' ' | sed 's/ 254/#/g; s/ 0/./g')
[ "$row" = "....########........########......................##########...." ] ||
    fail "row 8 of the shapes is $row"
[ "$(tail -c +$((64 * 4 + 41)) output | head -c 4 | od -An -tu1 | tr -d ' ')" = 25425400 ] ||
    fail "a bitmap is not scaled to its rectangle"
echo '* bitmap 0 0 9 9 white "cut.pbm"' >pbm.txt
expect 1 'pbm.txt:1: cut.pbm: it is cut short' "$overlay" --size 8x6 pbm.txt
echo '* bitmap 0 0 9 9 white half "nowhere.pbm"' >pbm.txt
expect 1 'pbm.txt:1: nowhere.pbm: No such file' "$overlay" --size 8x6 pbm.txt
for script in "$repository"/docs/gallery/*.txt; do
    (cd "$repository/docs/gallery" && "$overlay" --check --font "$work/sans.cbf" "$script") ||
        fail "$script has errors"
done

# ---- The example, and its copy in the README ----
input=in expect 1 'no whole frame' "$example" sans.cbf 4000 4000
head -c 115200 "$repository/docs/demo.jpg" >in
input=in expect 0 '' "$example" sans.cbf 320 240
cmp -s in output && fail "the example draws nothing"
sed -n '/^static void/,/^}/p' "$repository/examples/labelled_box.c" >code
awk '/^```c/ { on = 1; next } /^```/ { on = 0 } on' "$repository/README.md" | cmp -s - code ||
    fail "README.md shows other code than examples/labelled_box.c"

[ $failures = 0 ] || echo "$failures failures" >&2
exit $((failures > 0))
