#!/bin/sh
# SPDX-License-Identifier: MIT
# What orn-overlay does when a call fails: memory, open, read and write, the n-th one for n = 1, 2,
# ... After each it says why and exits with 1, or the output is as if nothing had happened.
# Usage: orn_overlay_fault_test.sh CBFCONV ORN_OVERLAY FAILING_CALLS_LIBRARY
set -u
cbfconv=$1 overlay=$2 library=$3
ttf=/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failures=0

"$cbfconv" -s 8 -r 0x20-0x7E -o small.cbf "$ttf"
printf 'P1\n2 1\n1 0\n' >half.pbm
printf abcdefghijkl >clip.raw
printf '1,7,10,4,4.6,3,0.9\n4,7,12,2,20,5\n' >tracks.csv
head -c $((64 * 24 * 3 / 2 * 2)) "$ttf" >in
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

# run CALL N ERROR
run() {
    LD_PRELOAD=$library FAULT_CALL=$1 FAULT_AT=$2 FAULT_ERROR=$3 FAULT_COUNT=$work/count \
        "$overlay" --size 64x24 --output-stride 66 --font small.cbf --tracks tracks.csv --max-gap 9 \
        script.txt <in >output 2>errors
}

# The kinds of calls, the error, the least number of calls that there must be, and whether the work
# must go on.
while read -r call error least goes_on; do
    : >count
    run "$call" 0 0 || { cat errors; exit 1; }
    cp output expected
    count=$(stat -c %s count)
    [ "$count" -ge "$least" ] || { echo "only $count calls: $call" >&2; failures=1; }
    n=0
    while [ $((n += 1)) -le "$count" ]; do
        run "$call" $n "$error"
        status=$?
        if [ $status = 0 ] && cmp -s output expected; then
            continue
        elif [ $status = 1 ] && [ "$goes_on" = no ] && grep -q '^orn-overlay: .' errors; then
            continue
        fi
        echo "FAILED: $call $n, error $error: exit $status: $(cat errors)" >&2
        failures=$((failures + 1))
    done
done <<'TABLE'
memory 12 300 no
open 24 6 no
stream 21 8 no
read 5 6 no
read 4 6 yes
read 11 6 yes
write 28 2 no
write 4 2 yes
write 11 2 yes
TABLE
[ $failures = 0 ]
