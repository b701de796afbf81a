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

echo 0041:80 >short.hex
printf 'a\nb\377' >latin1.txt
while read -r status pattern arguments; do
    # shellcheck disable=SC2086 # words
    run "$status" "$(echo "$pattern" | tr _ ' ')" "$cbfconv" -o bad.cbf $arguments
done <<END
2 stands_after_the_last_font -s 16 $ttf tiny.hex -r 65
2 runs_backwards -s 16 -r 9-3 $ttf
2 no_range -s 16 -r 0x20- $ttf
2 needs_a_size $ttf
2 --size:_expected_a_number_from_0_to_1000,_not_.0x10 -s 0x10 $ttf
2 --size:_expected_a_number_from_0_to_1000,_not_.1001 -s 1001 $ttf
2 --letter-spacing:_.*_not_.1e1 -s 16 --letter-spacing 1e1 $ttf
2 font_is_required -s 16
1 nowhere.ttf -s 16 nowhere.ttf
1 text.txt:_is_not_a_font text.txt
1 U+0057:_is_wider_or_higher_than_127_pixels -s 128 -r 0x57 $ttf
1 none_of_the_characters -s 16 -r 0xE000 $ttf
2 only_of:_16 -s 12 tiny.hex
2 no_single_character -s 16 --fallback AB $ttf
1 latin1.txt:2:_is_not_UTF-8_at_offset_3 -s 16 -t latin1.txt $ttf
1 short.hex:_line_1: short.hex
END
run 1 'File too large' sh -c 'ulimit -f 1; "$@"' - "$cbfconv" -s 40 -o bad.cbf "$ttf"
run 1 'No space' "$cbfconv" -s 16 -o /dev/full "$ttf"
[ -z "$(ls -A | grep -e bad -e orn)" ] || fail "refused conversions leave files: $(ls -A)"

# A link leads to what is replaced, which keeps its mode; other files are written as they are.
umask 027
long=$(printf %0251d 0).cbf
ln -s real.cbf link.cbf
touch real.cbf
chmod 604 real.cbf
mkfifo pipe.cbf
timeout 20 cat pipe.cbf >piped.cbf &
for name in link.cbf pipe.cbf "$long"; do
    run 0 '^$' "$cbfconv" -s 16 -o $name "$ttf"
done
wait
"$cbfconv" -s 16 -o /dev/stdout "$ttf" >appended.cbf
"$cbfconv" -s 16 -o /dev/stdout "$ttf" >>appended.cbf
cat sans.cbf sans.cbf | cmp - appended.cbf || fail "standard output is not written to"
for name in real.cbf piped.cbf "$long"; do
    cmp sans.cbf $name || fail "$name is another font"
done
modes=$(stat -c '%A %N' link.cbf real.cbf pipe.cbf "$long" | cut -c1-10 | paste -sd' ')
[ "$modes" = 'lrwxrwxrwx -rw----r-- prw-r----- -rw-r-----' ] || fail "modes: $modes"

# What is read is not overwritten, whatever its name.
cp text.txt message.txt
ln message.txt same.txt
ln -s tiny.hex link.hex
run 2 'is read' "$cbfconv" -s 16 -t message.txt -o same.txt "$ttf"
run 2 'is read' "$cbfconv" -r all -o link.hex tiny.hex
cmp text.txt message.txt || fail "a text is overwritten"

full "$cbfconv" --help
full "$cbfconv" --version
full "$cbfconv" -v -s 16 -o new.cbf "$ttf"
# A closed stream is not taken for the file that is opened next.
run 0 '^$' sh -c '"$@" <&- >&- 2>&-' - "$cbfconv" -s 16 -r 65,0xE000 -o closed.cbf "$ttf"
run 0 'sound, 1 characters' "$cbfdump" --check closed.cbf
[ "$failures" = 0 ]
