#!/bin/sh
# SPDX-License-Identifier: MIT
# What the tests of cbfconv and cbfdump begin with, in a new folder: . support/font_tools.sh
set -u
cbfconv=$1 cbfdump=$2 ttf=/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf failures=0
support=$(CDPATH='' cd -- "$(dirname "$0")/support" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

fail() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
    [ -z "${FAIL_FAST-}" ] || exit 1
}

# run STATUS PATTERN COMMAND...: the exit status, and a line of what it says ('^$': nothing).
run() {
    status=$1 pattern=$2
    shift 2
    "$@" >output 2>&1
    [ $? = "$status" ] || fail "the exit status is not $status: $*: $(head -c 500 output)"
    [ -s output ] || echo >output
    grep -qe "$pattern" output || fail "no '$pattern' from: $*: $(head -c 500 output)"
}

# same EXPECTED CBFDUMP-ARGUMENTS...: what it prints, with slashes for the ends of lines.
same() {
    expected=$1
    shift
    actual=$("$cbfdump" "$@" 2>&1 | paste -sd/)
    [ "$actual" = "$expected" ] || fail "cbfdump $*: $actual, not $expected"
}

# full COMMAND...: it fails where standard output is full, and says so.
full() {
    run 1 'standard output: No space left' sh -c '"$@" >/dev/full' - "$@"
}
