#!/bin/sh
# SPDX-License-Identifier: MIT
# Looking at fonts as a user does: cbfdump_test.sh CBFCONV CBFDUMP
. "$(dirname "$0")/support/font_tools.sh"

corner=$(printf '%012d80C0E0F0%012d' 0 0)
printf '%s:%s\n' 0041 "$corner" 0042 "$corner" 0043 "$corner" \
    4E00 "$(printf '%028dFFFF00018000%024d' 0 0)" 1F600 "$(printf %0128d 1)" >tiny.hex
run 0 '^$' "$cbfconv" -o both.cbf -s 16 -x U+42 "$ttf" -s 0 -r all tiny.hex
run 0 '^$' "$cbfconv" -r all -o tiny.cbf tiny.hex
same '#.../##../###./####/..../..../..../....' --text A tiny.cbf
same '....####/....###./....##../....#...' --text A --direction down tiny.cbf
same '...#..../..##..../.###..../####....' --text A --direction up tiny.cbf
same '..../..../..../..../####/.###/..##/...#' --text A --direction inverted tiny.cbf
outline=$("$cbfdump" --text A --outline tiny.cbf | head -n 5 | paste -sd/)
[ "$outline" = '........../.+++++..../.++++++.../.++#++++../.++##++++.' ] || fail "outline: $outline"
size=$("$cbfdump" both.cbf | awk '$4 == "%" { sum += $2 } END { print sum }')
[ "$size" = "$(wc -c <both.cbf)" ] || fail "the sections add up to $size bytes"
[ "$("$cbfdump" --sheet sheet.pgm both.cbf; head -c 2 sheet.pgm)" = P5 ] || fail "no sheet"
cp both.cbf font.pgm
run 2 'is read' "$cbfdump" --sheet ./font.pgm font.pgm
cmp both.cbf font.pgm || fail "a font is overwritten by its sheet"
head -c 300 both.cbf >cut.cbf
run 1 'offset 24: glyph data: .* past the end of the file, 300' "$cbfdump" --check cut.cbf
# What no text can draw: the line feed. U+000B's place in the index becomes U+000A's.
printf '000B:%s\n' "$corner" >feed.hex
"$cbfconv" -r all -o feed.cbf feed.hex
record=$(($("$cbfdump" feed.cbf | awk '$4 == "%" && /index records/ { print $1 }')))
printf '\012' | dd of=feed.cbf bs=1 seek=$record conv=notrunc 2>/dev/null
run 1 'U+000A: has a glyph, but is never drawn' "$cbfdump" --check feed.cbf
run 1 'stdin: is not a regular file' sh -c 'cat both.cbf | "$@"' - "$cbfdump" --check /dev/stdin
run 1 'both.cbf: the picture would have' "$cbfdump" --text "$(printf '%020000d%200s0' 0 '' | tr ' ' '\n')" \
    both.cbf
cp both.cbf "$(printf 'bell\a.cbf')"
run 0 '^bell.x07.cbf: sound' "$cbfdump" --check "$(printf 'bell\a.cbf')"
for arguments in --help --version both.cbf "--tables both.cbf" "--text A both.cbf"; do
    # shellcheck disable=SC2086 # words
    full "$cbfdump" $arguments
done
[ "$failures" = 0 ]
