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
same "$("$cbfdump" --text '?' sans.cbf | paste -sd/)" --text x text.cbf

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
run 1 'File too large' sh -c 'trap "" XFSZ; ulimit -f 1; "$@"' - "$cbfconv" -s 40 -o bad.cbf "$ttf"
[ -z "$(ls -- *tmp* bad* 2>/dev/null)" ] || fail "refused conversions leave files: $(ls)"
[ "$failures" = 0 ]
