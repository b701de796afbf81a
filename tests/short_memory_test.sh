#!/bin/sh
# SPDX-License-Identifier: MIT
# Where one allocation of a font tool fails, it says so, or does its work all the same:
# short_memory_test.sh CBFCONV CBFDUMP LIBRARY-THAT-LETS-IT-FAIL
. "$(dirname "$0")/support/font_tools.sh"
library=$3

# short COMMAND...: with about a hundred of its allocations failing, one at a time. The command may
# write the file result.
short() {
    COUNT_TO=count LD_PRELOAD=$library "$@" >expected 2>&1 || fail "fails with enough memory: $*"
    [ ! -e result ] || mv result expected.result
    allocations=$(cat count) number=1
    while [ $number -le "$allocations" ]; do
        FAIL_AT=$number LD_PRELOAD=$library "$@" >output 2>errors
        code=$?
        if [ $code = 1 ]; then
            grep -q : errors || fail "nothing is said with allocation $number failing: $*"
        else
            { [ $code = 0 ] && cmp -s output expected; } ||
                fail "exit $code, or another result, with allocation $number failing: $*"
        fi
        [ ! -e result ] || cmp result expected.result || fail "a bad file: allocation $number: $*"
        rm -f result
        number=$((number + allocations / 100 + 1))
    done
    rm -f expected.result
}

short "$cbfconv" -s 16 -r 0x41 -o result "$ttf"
"$cbfconv" -s 16 -r 0x41-0x4F -o font.cbf "$ttf"
short "$cbfdump" font.cbf
short "$cbfdump" --check font.cbf
short "$cbfdump" --text ABC --outline font.cbf
ln -s result result.pgm
short "$cbfdump" --sheet result.pgm font.cbf
[ "$failures" = 0 ]
