#!/bin/sh
# SPDX-License-Identifier: MIT
# Making fonts as a user does: cbfconv_test.sh CBFCONV CBFDUMP
. "$(dirname "$0")/support/font_tools.sh"

run 0 '^$' "$cbfconv" -s 16 -r 0x20-0x7E,0xA0-0xFF -o sans.cbf "$ttf"
cp sans.cbf again.cbf
run 0 '^$' "$cbfconv" -s 16 -r 0x20-0x7E,0xA0-0xFF -o again.cbf "$ttf"
cmp -s sans.cbf again.cbf || fail "the same font is written differently"
run 0 'has 2 of the 3 characters' "$cbfconv" -s 16 -r 65,66,0xE000 -o some.cbf "$ttf"

corner=$(printf '%012d80C0E0F0%012d' 0 0)
printf '%s:%s\n' 0041 "$corner" 0042 "$corner" 0043 "$corner" \
    4E00 "$(printf '%028dFFFF00018000%024d' 0 0)" 1F600 "$(printf %0128d 1)" >tiny.hex
# Neighbours can't share one record, but two.
run 0 '(5 records)' "$cbfconv" -v -r all -o tiny.cbf tiny.hex
same 'tiny.cbf: sound, 5 characters' --check tiny.cbf
wide=$({ "$cbfdump" --glyph U+1F600 tiny.cbf; "$cbfdump" --glyph 一 tiny.cbf; } | grep -v ^rec | paste -sd/)
[ "$wide" = "box 1 x 1, left column 31, top row -1 above the pen, advance 32/#/box 16 x 3, left column 0, \
top row 7 above the pen, advance 16/################/...............#/#..............." ] || fail "$wide"

# The first font that has a character provides it; each has its own characters and size.
run 0 '^$' "$cbfconv" -s 16 -o sans.cbf "$ttf"
run 0 '^$' "$cbfconv" -o both.cbf -s 16 -x U+42 "$ttf" -s 0 -r all tiny.hex
for pair in A=sans B=tiny 一=tiny; do
    same "$("$cbfdump" --text "${pair%=*}" "${pair#*=}.cbf" | paste -sd/)" --text "${pair%=*}" both.cbf
done
printf 'Ab\tA\r\n\302\265\n' >text.txt
run 0 '^$' "$cbfconv" -s 16 -t text.txt --fallback '?' --letter-spacing 3 -o text.cbf "$ttf"
run 0 'sound, 3 characters' "$cbfdump" --check text.cbf
run 0 'advance 15$' "$cbfdump" --glyph A text.cbf
run 0 '^$' "$cbfconv" -s 016 -r 065 --letter-spacing 010 -o zeros.cbf "$ttf" # decimal all the same
run 0 'advance 22$' "$cbfdump" --glyph A zeros.cbf
same "$("$cbfdump" --text '?' sans.cbf | paste -sd/)" --text x text.cbf

# bdf WIDTH HEIGHT BEARING-X [LINES OF BITMAP]...: a font of the letter A and nothing else.
bdf() {
    printf '%s\n' 'STARTFONT 2.1' 'FONT -a-a-a-r-normal--8-80-75-75-c-80-iso10646-1' 'SIZE 8 75 75' \
        'FONTBOUNDINGBOX 8 8 0 0' 'STARTPROPERTIES 4' 'FONT_ASCENT 8' 'FONT_DESCENT 0' \
        'CHARSET_REGISTRY "ISO10646"' 'CHARSET_ENCODING "1"' ENDPROPERTIES 'CHARS 1' 'STARTCHAR A' \
        'ENCODING 65' 'SWIDTH 1000 0' 'DWIDTH 8 0' "BBX $1 $2 $3 0"
    shift 3
    [ $# = 0 ] || printf '%s\n' BITMAP "$@"
    printf 'ENDCHAR\nENDFONT\n'
}

# A glyph without bitmap has no ink.
bdf 8 8 0 >bare.bdf
run 0 '^$' "$cbfconv" -r 65 -o bare.cbf bare.bdf
run 0 'box 0 x 0, .* advance 8$' "$cbfdump" --glyph A bare.cbf

# A glyph whose right edge is more than 125 pixels from the pen.
bdf 1 1 124 80 | sed 's/DWIDTH 8/DWIDTH 125/' >far.bdf
run 0 '^$' "$cbfconv" -r 65 -o far.cbf far.bdf
bdf 1 1 125 80 | sed 's/DWIDTH 8/DWIDTH 126/' >wrapped.bdf

# All that there is, but for what doesn't fit, of its own or with what is added.
bdf 1 1 0 80 | sed 's/DWIDTH 8/DWIDTH 32767/' >spaced.bdf
for font in 'wrapped.bdf which.reaches' 'spaced.bdf which.has.an.advance'; do
    set -- --letter-spacing 1 -o all.cbf -r all "${font% *}" -r U+4E00 tiny.hex
    run 0 "left out 1 character, ${font#* }.*: U+0041\$" "$cbfconv" "$@"
    run 0 'sound, 1 characters' "$cbfdump" --check all.cbf
    run 1 "${font% *}: U+0041: " "$cbfconv" --strict "$@"
done
"$cbfconv" -o all.cbf -r all wrapped.bdf tiny.hex 2>/dev/null # the next font that has it
run 0 'sound, 5 characters' "$cbfdump" --check all.cbf

# Faces and instances, told by the width of their A.
for font in one.ttf=Thin:100 two.ttc=Thin:100,Thick:500 var.ttf=Thin:100-500; do
    python3 "$support/make_font.py" "${font%=*}" "${font#*=}"
done
while read -r width arguments; do
    # shellcheck disable=SC2086 # words
    run 0 '^$' "$cbfconv" -s 20 -o face.cbf $arguments
    run 0 "box $width x 12" "$cbfdump" --glyph A face.cbf
done <<END
2 -r 65 two.ttc
10 -r 65 --face 1 two.ttc
10 -r 65 --face Box-Thick two.ttc
10 -r 65 --instance heavy var.ttf
6 -r 65 --instance wght=500 var.ttf
2 --instance Heavy -r 66 var.ttf --instance default -r 65 one.ttf
END
run 0 '^$' "$cbfconv" -s 20 -r 65 -o face.cbf --face 'Box Thick' two.ttc

echo 0041:80 >short.hex
printf 'a\nb\377' >latin1.txt
while read -r status pattern arguments; do
    # shellcheck disable=SC2086 # words
    run "$status" "$(echo "$pattern" | tr _ ' ')" "$cbfconv" -o bad.cbf $arguments
done <<END
2 stands_after_the_last_font -s 16 $ttf tiny.hex -r 65
2 --size:_expected_a_number_from_0_to_1000,_not_.0x10 -s 0x10 $ttf
2 --size:_expected_a_number_from_0_to_1000,_not_.1001 -s 1001 $ttf
2 --letter-spacing:_.*_not_.1e1 -s 16 --letter-spacing 1e1 $ttf
1 U+0057:_is_wider_or_higher_than_127_pixels -s 128 -r 0x57 $ttf
1 none_of_the_characters -s 16 -r 0xE000 $ttf
1 wrapped.bdf:_U+0041:_reaches_further_than_125 -r 65 wrapped.bdf
2 only_of:_16 -s 12 tiny.hex
2 no_single_character -s 16 --fallback AB $ttf
1 Bold.ttf:_fallback_glyph:_is_wider --fallback W tiny.hex -s 200 -r 0x57 $ttf
1 latin1.txt:2:_is_not_UTF-8_at_offset_3 -s 16 -t latin1.txt $ttf
1 wrapped.bdf:_has_none_of -r all wrapped.bdf
2 only:_0_.Box_Thin.,_1_.Box_Thick. -s 20 --face 2 two.ttc
2 only:_.Light.,_.Heavy. -s 20 --instance Bold var.ttf
2 .wght=901.,_only_axes:_wght_from_100_to_900 -s 20 --instance wght=901 var.ttf
2 no_variable_font -s 20 --instance Bold one.ttf
END
run 1 'File too large' sh -c 'ulimit -f 1; "$@"' - "$cbfconv" -s 40 -o bad.cbf "$ttf"
# A glyph of a million pixels is refused as it comes, and not once there are thousands of them.
run 1 'fallback glyph: is wider .*(500 x 882' sh -c 'ulimit -t 3; "$@"' - \
    "$cbfconv" -s 1000 -r all -o bad.cbf "$ttf"
run 1 'No space' "$cbfconv" -s 16 -o /dev/full "$ttf"
left=$(find . -name '*bad*' -o -name '*orn*')
[ -z "$left" ] || fail "refused conversions leave $left"

# A link leads to what is replaced, which keeps its mode; other files are written as they are.
umask 027
long=$(printf %0251d 0).cbf
ln -s real.cbf link.cbf
touch real.cbf
chmod 604 real.cbf
mkfifo pipe.cbf
timeout 20 cat pipe.cbf >piped.cbf &
for name in link.cbf pipe.cbf "$long"; do
    run 0 '^$' "$cbfconv" -s 16 -o "$name" "$ttf"
done
wait
ln -s /proc/self/fd/1 stdout # what /dev/stdout is, which a mistake would destroy
"$cbfconv" -s 16 -o stdout "$ttf" >appended.cbf
"$cbfconv" -s 16 -o stdout "$ttf" >>appended.cbf
cat sans.cbf sans.cbf | cmp - appended.cbf || fail "standard output is not written to"
for name in real.cbf piped.cbf "$long"; do
    cmp sans.cbf "$name" || fail "$name is another font"
done
modes=$(stat -c '%A %N' link.cbf real.cbf pipe.cbf "$long" | cut -c1-10 | paste -sd' ')
[ "$modes" = 'lrwxrwxrwx -rw----r-- prw-r----- -rw-r-----' ] || fail "modes: $modes"

# Waiting for a pipe's reader can be ended, and leaves nothing.
mkdir temporary
run 124 '^$' timeout -k 5 1 env TMPDIR=temporary "$cbfconv" -s 16 -o pipe.cbf "$ttf"
rmdir temporary || fail "a temporary file is left"

# What is read is not overwritten, whatever its name.
cp text.txt message.txt
ln message.txt same.txt
ln -s tiny.hex link.hex
run 2 'is read' "$cbfconv" -s 16 -t message.txt -o same.txt "$ttf"
run 2 'is read' "$cbfconv" -r all -o link.hex tiny.hex
cmp text.txt message.txt || fail "a text is overwritten"

run 2 'has no name' "$cbfconv" -s 16 -o '' "$ttf"
run 1 "'': No such file" "$cbfconv" -s 16 -t '' -o new.cbf "$ttf"
run 1 ': .x1B.31mred.x7F: No such file' "$cbfconv" -o new.cbf "$(printf '\033[31mred\177')"
run 2 'is a terminal' script -qec "$cbfconv -s 16 -o - $ttf" /dev/null
"$cbfconv" -v -s 16 -o - "$ttf" 2>told | cmp - sans.cbf || fail "another font on standard output"
grep -q 95.glyphs told || fail "nothing is told beside standard output"
run 1 'stdout: No space left' sh -c '"$@" >/dev/full' - "$cbfconv" -s 16 -o - "$ttf"
full "$cbfconv" --help
full "$cbfconv" --version
full "$cbfconv" -v -s 16 -o new.cbf "$ttf"
# A closed stream is not taken for the file that is opened next.
run 0 '^$' sh -c '"$@" <&- >&- 2>&-' - "$cbfconv" -s 16 -r 65,0xE000 -o closed.cbf "$ttf"
run 0 'sound, 1 characters' "$cbfdump" --check closed.cbf
[ "$failures" = 0 ]
