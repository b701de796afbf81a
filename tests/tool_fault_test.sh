#!/bin/sh
# SPDX-License-Identifier: MIT
# What a tool does when a call fails: memory, open, read, map, write, sync and rename, the n-th one
# for n = 1, 2, ... After each it says why and exits with 1, or all is as if nothing had happened. A
# file that it replaces is the old one or the new one, and nothing else is left behind.
# Usage: tool_fault_test.sh orn-overlay|cbfconv|cbfdump TOOLS FAILING_CALLS_LIBRARY
set -u
tool=$1 tools=$2 library=$3
ttf=/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf
support=$(CDPATH='' cd -- "$(dirname "$0")/support" && pwd)
work=$(mktemp -d -p /dev/shm 2>/dev/null || mktemp -d) # where syncing takes no time
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failures=0 targets='new.nut new.cbf new.pgm'
mkdir wanted
mkfifo numbers statuses

"$tools/cbfconv" -s 8 -r 0x20-0x7E -o small.cbf "$ttf"
python3 "$support/make_font.py" boxes.ttf Thin:100
printf '0041:%032d\n#%09999d\n0042:%032d\n' 18 0 42 >boxes.hex # more than streams buffer
"$tools/cbfconv" -r all -o boxes.cbf boxes.hex
printf AB >text.txt
printf 'P1\n2 1\n1 0\n' >half.pbm
printf abcdefghijkl >clip.raw
printf '1,7,10,4,4.6,3,0.9\n4,7,12,2,20,5\n' >tracks.csv
head -c $((64 * 24 * 3 / 2 * 2)) "$ttf" >in
{ echo YUV4MPEG2 W16 H8 F25:1 C420; echo FRAME; head -c 192 "$ttf"; } >in.y4m
cat >script.txt <<'SCRIPT'
* bitmap 40 4 44 8 white "half.pbm"
* picture 2 2 4 2 "clip.raw"
* copy 20 4 28 12 4 4
* polygon white 9,2 +20,+0 +-5,+50%
* paragraph 1 1 30 white red "ab c"
font "small.cbf"
* outlined 20 20 white red "{frame} x"
tracks trail 5 id
tracks label box.left box.top black id bottom "{id}"
SCRIPT
echo '* box 1 1 +5 +5 red' >box.txt

# start CASE CALL ERROR: what is tried of each tool; the file to write is new.* Runs wait for numbers.
start() {
    export FAULT_CALL="$2" FAULT_ERROR="$3" FAULT_COUNT="$work/count"
    case $1 in
    pipe) set -- --size 64x24 --output-stride 66 --font small.cbf --tracks tracks.csv --max-gap 9 script.txt ;;
    clip) set -- -i in.y4m -o new.nut --encoder ffv1 box.txt ;;
    outline) set -- -s 8 -r 65 -x 66 -t text.txt -o new.cbf boxes.ttf ;;
    digits) set -- -r 65,66 --fallback A -o new.cbf boxes.hex ;;
    pass) set -- -r 65,66 -o - boxes.hex ;;
    summary) set -- boxes.cbf ;;
    check) set -- --check boxes.cbf ;;
    show) set -- --text AB --outline boxes.cbf ;;
    sheet) set -- --sheet new.pgm boxes.cbf ;;
    esac
    LD_PRELOAD=$library "$tools/$tool" "$@" 3<numbers 4>statuses &
    exec 5>numbers 6<statuses
}

stop() {
    exec 5>&- 6<&-
    wait
}

# run N: from old files, and a count of calls of 0.
run() {
    for name in $targets; do
        echo old >$name
    done
    : >count
    echo "$1" >&5
    read -r status <&6
}

# From here on no other program is run as long as all is well: there are thousands of calls.

isOld() {
    read -r first <"$1" && [ "$first" = old ]
}

# Whether each file is the new one, or possibly the old one, and nothing lies beside them.
whole() {
    for name in $targets; do
        { [ "$1" = either ] && isOld $name; } || { isOld $name && isOld wanted/$name; } ||
            cmp -s $name wanted/$name || return 1
    done
    for name in .orn*; do
        [ ! -e "$name" ] || return 1
    done
}

saysWhy() {
    read -r message <errors
    case $message in
    "$tool: "?*) ;;
    *) return 1 ;;
    esac
}

# The case, the kind of calls, the error, the least number of calls that there must be, and whether
# the work must go on.
while read -r for_tool case call error least goes_on; do
    [ "$for_tool" = "$tool" ] || continue
    [ "$case" != clip ] || "$tools/$tool" --help | grep -q -e '-i CLIP' || continue # without videos
    start "$case" "$call" "$error"
    run 0
    [ "$status" = 0 ] || { cat errors; exit 1; }
    cp output new.* wanted/
    count=$(stat -c %s count)
    [ "$count" -ge "$least" ] || { echo "only $count calls: $case $call" >&2; failures=1; }
    n=0
    while [ $((n += 1)) -le "$count" ]; do
        run $n
        if [ "$status" = 0 ] && cmp -s output wanted/output && whole new; then
            continue
        elif [ "$status" = 1 ] && [ "$goes_on" = no ] && saysWhy && whole either; then
            continue
        fi
        echo "FAILED: $case, $call $n, error $error: exit $status: $(cat errors)" >&2
        failures=$((failures + 1))
    done
    stop
done <<'TABLE'
orn-overlay pipe memory 12 300 no
orn-overlay pipe open 24 6 no
orn-overlay pipe stream 21 8 no
orn-overlay pipe read 5 6 no
orn-overlay pipe read 4 6 yes
orn-overlay pipe read 11 6 yes
orn-overlay pipe write 28 2 no
orn-overlay pipe write 4 2 yes
orn-overlay pipe write 11 2 yes
orn-overlay clip sync 5 1 no
orn-overlay clip rename 18 1 no
cbfconv outline memory 12 300 no
cbfconv outline open 24 5 no
cbfconv outline read 5 3 no
cbfconv outline stream 21 1 no
cbfconv outline map 12 1 yes
cbfconv outline write 28 1 no
cbfconv outline sync 5 1 no
cbfconv outline rename 18 1 no
cbfconv digits memory 12 300 no
cbfconv digits open 24 4 no
cbfconv digits read 5 4 no
cbfconv pass open 24 4 no
cbfconv pass read 5 3 no
cbfconv pass write 28 2 no
cbfconv pass write 4 2 yes
cbfdump summary memory 12 200 no
cbfdump check memory 12 200 no
cbfdump show memory 12 200 no
cbfdump sheet memory 12 200 no
cbfdump show open 24 3 no
cbfdump show stream 21 4 no
cbfdump check map 12 1 no
cbfdump summary write 28 1 no
cbfdump sheet open 24 4 no
cbfdump sheet write 28 1 no
cbfdump sheet write 4 1 yes
cbfdump sheet sync 5 1 no
cbfdump sheet rename 18 1 no
TABLE
[ $failures = 0 ]
