#!/bin/sh
# cbfconv as a user meets it: tools_test.sh CBFCONV REPOSITORY
set -u
cbfconv=$1 repository=$2
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

[ $failures = 0 ] || echo "$failures failures" >&2
exit $((failures > 0))
