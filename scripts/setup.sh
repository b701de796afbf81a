# SPDX-License-Identifier: MIT
# Sourced by the scripts: installs Debian packages that are missing, through sudo where not root.

# The repository's root, whatever the caller's folder.
root=$(CDPATH='' cd -- "$(dirname -- "$0")/.." && pwd)

as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "$0: needs root or sudo to install packages: $*" >&2
        return 1
    fi
}

# Shows the comment at the head of the script, below the licence, as its help.
show_help() {
    sed -n '3,/^set/{s/^# \{0,1\}//p}' "$0"
}

# Runs a command quietly; shows what it printed only when it fails.
quietly() {
    quiet_log=$(mktemp)
    if ! "$@" >"$quiet_log" 2>&1; then
        cat "$quiet_log" >&2
        rm -f "$quiet_log"
        echo "$0: failed: $*" >&2
        return 1
    fi
    rm -f "$quiet_log"
}

# Installs those of the named packages that are not there yet.
need_packages() {
    missing=
    for package in "$@"; do
        dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed ||
            missing="$missing $package"
    done
    [ -z "$missing" ] && return 0
    echo "Installing$missing ..."
    quietly as_root apt-get update
    # shellcheck disable=SC2086 # a list of names
    quietly as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends $missing
}

build_packages="g++ cmake ninja-build libfreetype-dev libcli11-dev nlohmann-json3-dev pkgconf libavformat-dev \
libavcodec-dev libavfilter-dev libswscale-dev libavutil-dev"
gstreamer_packages="libgstreamer-plugins-base1.0-dev gstreamer1.0-plugins-base
    gir1.2-gst-plugins-base-1.0 python3-gst-1.0"
python_packages="python3-numpy python3-av python3-venv mypy"

# build FOLDER [--target TARGET] [CMAKE ARGUMENTS]: configures once (and again when the arguments
# change) and builds all, or the target alone.
build() {
    folder=$1
    target=all
    shift
    if [ "${1-}" = --target ]; then
        target=$2
        shift 2
    fi
    arguments="$root $*"
    if [ ! -f "$folder/build.ninja" ] || [ "$(cat "$folder/arguments" 2>/dev/null)" != "$arguments" ]; then
        quietly cmake -S "$root" -B "$folder" -G Ninja "$@"
        printf '%s' "$arguments" >"$folder/arguments"
    fi
    quietly cmake --build "$folder" --target "$target"
}

# run_tests FOLDER [CTEST ARGUMENTS]: shows the closing lines, and all of it when a test fails.
run_tests() {
    folder=$1
    shift
    (cd "$folder" && ctest --output-on-failure --timeout 600 --parallel "$(nproc)" "$@") >"$folder/tests.log" 2>&1 ||
        {
            cat "$folder/tests.log" >&2
            return 1
        }
    grep -E 'tests passed|Total Test time' "$folder/tests.log"
}
