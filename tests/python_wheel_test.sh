#!/bin/sh
# SPDX-License-Identifier: MIT
# The wheel, built and installed without a network into a fresh virtual environment:
# python_wheel_test.sh LIBRARY SOURCE
set -eu
library=$1 source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
unset PYTHONPATH LD_LIBRARY_PATH
export PIP_CONFIG_FILE=/dev/null PIP_DISABLE_PIP_VERSION_CHECK=1 PIP_ROOT_USER_ACTION=ignore

fail() {
    echo "python_wheel_test: $*" >&2
    exit 1
}

wheel=$(/usr/bin/python3 "$source/python/make_wheel.py" "$library" once)
again=$(/usr/bin/python3 "$source/python/make_wheel.py" "$library" twice)
cmp "$wheel" "$again" || fail "the same files make another wheel"
newest=$(objdump -T "$library" | grep -o 'GLIBC_[0-9.]*' | sort -Vu | tail -n 1 | cut -d_ -f2)
case $wheel in
*-py3-none-manylinux_"${newest%%.*}_${newest#*.}"_"$(uname -m)".whl) ;;
*) fail "the library asks for glibc $newest, and the wheel is $wheel" ;;
esac
! /usr/bin/python3 "$source/python/make_wheel.py" "$source/README.md" once 2>log || fail "a page makes a wheel"

/usr/bin/python3 -m venv fresh
fresh/bin/pip install --quiet --no-index "$wheel"
fresh/bin/python - <<'PYTHON' || fail "it doesn't draw"
import importlib.metadata, orn_min_render
from orn_min_render import _library
buffer = bytearray(64 * 72)
with orn_min_render.Frame.nv12(buffer, 64, 48) as frame:
    orn_min_render.draw_detections(frame, [(4, 4, 40, 40)])
assert any(buffer) and _library.path().startswith(orn_min_render.__path__[0]), _library.path()
assert importlib.metadata.version("orn_min_render") == orn_min_render.__version__
PYTHON
fresh/bin/pip check --quiet || fail "pip finds it wanting"
fresh/bin/pip uninstall --quiet --yes orn_min_render
[ -z "$(find fresh -iname '*orn*min*')" ] || fail "it leaves something behind"
