#!/bin/sh
# Making and looking at fonts as a user does: font_tools_test.sh CBFCONV CBFDUMP
set -u
cbfconv=$1 cbfdump=$2 failures=0
ttf=/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

fail() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
}

# run STATUS PATTERN COMMAND...: the exit status, and a line of what it says ('^$': nothing).
run() {
    status=$1 pattern=$2
    shift 2
    "$@" >output 2>&1
    [ $? = "$status" ] || fail "the exit status is not $status: $*: $(cat output)"
    [ -s output ] || echo >output
    grep -qe "$pattern" output || fail "no '$pattern' from: $*: $(cat output)"
}

# same EXPECTED CBFDUMP-ARGUMENTS...: what it prints, with slashes for the ends of lines.
same() {
    expected=$1
    shift
    actual=$("$cbfdump" "$@" 2>&1 | paste -sd/)
    [ "$actual" = "$expected" ] || fail "cbfdump $*: $actual, not $expected"
}

# ---- cbfconv ----
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
2 only_of:_16 -s 12 tiny.hex
2 no_single_character -s 16 --fallback AB $ttf
1 latin1.txt:2:_is_not_UTF-8_at_offset_3 -s 16 -t latin1.txt $ttf
1 short.hex:_line_1: short.hex
END
run 1 'File too large' sh -c 'trap "" XFSZ; ulimit -f 1; "$@"' - "$cbfconv" -s 40 -o bad.cbf "$ttf"
[ -z "$(ls -- *tmp* bad* 2>/dev/null)" ] || fail "refused conversions leave files: $(ls)"

# ---- cbfdump ----
same '#.../##../###./####/..../..../..../....' --text A tiny.cbf
same '....####/....###./....##../....#...' --text A --direction down tiny.cbf
same '...#..../..##..../.###..../####....' --text A --direction up tiny.cbf
same '..../..../..../..../####/.###/..##/...#' --text A --direction inverted tiny.cbf
outline=$("$cbfdump" --text A --outline tiny.cbf | head -n 5 | paste -sd/)
[ "$outline" = '........../.+++++..../.++++++.../.++#++++../.++##++++.' ] || fail "outline: $outline"
size=$("$cbfdump" both.cbf | awk '$4 == "%" { sum += $2 } END { print sum }')
[ "$size" = "$(wc -c <both.cbf)" ] || fail "the sections add up to $size bytes"
[ "$("$cbfdump" --sheet sheet.pgm sans.cbf; head -c 2 sheet.pgm)" = P5 ] || fail "no sheet"
head -c 300 both.cbf >cut.cbf
run 1 'offset 24: glyph data: .* past the end of the file, 300' "$cbfdump" --check cut.cbf
[ "$failures" = 0 ]
