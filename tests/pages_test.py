#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs every block of code in README.md and docs/*.md, or in the pages that are named, in a sandbox
with an installed tree: pages_test.py BUILD SOURCE [PAGE...]. Takes ffmpeg, and of GStreamer headers, modules and Python bindings."""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

build, source = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"
# Fenced, with a language, or indented.
BLOCK = re.compile(r"^```(.*)\n((?:.*\n)*?)```$|^\n((?:    .*\n)(?:(?:    .*)?\n)*)", re.M)
# Too heavy for here and only looked for. .ci/run runs test, demo and all checks, but not bench.
HEAVY = re.compile(r"scripts/[a-z-]+|\.ci/run")
# Indented blocks that are read, not run.
SHOWN = ("set alarm", "pixel = 0", "#...", "06 0a", "04 04", "43 42", "05 00", "02 00", "45 00")
CHECK_C = "cc -xc -Wall -Wextra -Werror -Wno-unused-function -I. "
RUN = {  # each block lies in a file of that name
    "sh": """bash -euo pipefail -c 'sudo() { [ "$1" = ldconfig ] || "$@"; }; . ./block'""",
    "overlays": "cp block overlays.txt; orn-overlay --check --font sans.cbf block",
    "cmake": "mkdir my; cd my; echo 'project(my C)' >CMakeLists.txt; cat ../block >>CMakeLists.txt;"
             "cp ../examples/labelled_box.c my_program.c; cmake . && make",
    "gst": "echo '#include <orn_min_render.h>' | cat - block >gst.c; " + CHECK_C +
           "-fsyntax-only gst.c $(pkg-config --cflags orn_min_render gstreamer-video-1.0)",
    "package": "/usr/bin/python3 -B block",
    "pipeline": "/usr/bin/python3 block && test -s ball.webm",
    "recipe": "cat block >>recipes.h",
    "end": CHECK_C + "tests/recipes_run.c -o run -pthread "
           "$(pkg-config --cflags --libs orn_min_render); ./run sans.cbf",
    "text": "true"}
SET_UP = f"""cp {FONT} . && cbfconv -s 16 -o sans.cbf {FONT}
ffmpeg -f lavfi -i testsrc2=1280x720:d=0.4 in.mp4"""
failures = []


def run(where, text, command):
    pathlib.Path("block").write_text(text)
    done = subprocess.run(["sh", "-euc", command], capture_output=True, text=True,
                          stdin=subprocess.DEVNULL, check=False)
    if done.returncode:
        failures.append(f"{where}: {done.stdout[-1000:]}{done.stderr[-1000:]}")


def kind_of(language, text, page):
    first = text.split()[0]
    if language:
        return ("package" if "from orn_min_render" in text else
                "gst" if "gst/" in text else "pipeline" if "import gi" in text
                else "recipe" if page == "docs/recipes.md" else language)
    return ("text" if text.startswith(SHOWN) else "overlays" if first[0] in "*0123456789"
            else "sh" if HEAVY.match(first) or shutil.which(first) else "unknown")


def run_page(page):
    text = (source / page).read_text()
    found = []
    for match in BLOCK.finditer(text):
        block = match[2] or re.sub("^    ", "", match[3], flags=re.M)
        found.append((kind_of(match[1], block, page), f"{page}: {block.splitlines()[0]}", block))
    for kind, where, block in sorted(found, key=lambda entry: entry[0] != "overlays"):
        if kind in RUN:
            run(where, HEAVY.sub(r"test -x \g<0> #", block) if kind == "sh" else block, RUN[kind])
        elif not any(block in path.read_text() for path in source.glob("examples/*.*")):
            failures.append(f"{where}: of no known kind, nor part of an example")
    if os.path.exists("recipes.h"):
        run(page, "", RUN["end"])
    for link in re.findall(r"\]\(([^)#:]+)[)#]", text):
        if not (source / page).parent.joinpath(link).exists():
            failures.append(f"{page}: no {link}")


def main(folder):
    tree = f"{folder}/tree"
    os.environ.update(
        PATH=f"{tree}/bin:{os.environ['PATH']}", LD_LIBRARY_PATH=f"{tree}/lib",
        GST_PLUGIN_PATH=f"{tree}/lib/gstreamer-1.0", GST_REGISTRY=f"{folder}/registry",
        PKG_CONFIG_PATH=f"{tree}/lib/pkgconfig", CMAKE_PREFIX_PATH=tree, DESTDIR=f"{folder}/root",
        PYTHONPATH=f"{tree}/lib/python3/dist-packages",
        XDG_DATA_DIRS=f"{tree}/share:/usr/share", CMAKE_BUILD_TYPE="Debug", MAKEFLAGS="-j2")
    subprocess.run(["cmake", "--install", build, "--prefix", tree], check=True,
                   env=dict(os.environ, DESTDIR=""), stdout=subprocess.DEVNULL)
    given = pathlib.Path(folder, "given")
    given.mkdir()
    os.chdir(given)
    run("given", "", SET_UP)
    for page in sys.argv[3:] or ["README.md", *sorted(f"docs/{path.name}" for path in source.glob("docs/*.md"))]:
        sandbox = pathlib.Path(folder, page.replace("/", "-"))
        sandbox.mkdir()
        os.chdir(sandbox)
        for entry in [*source.iterdir(), *given.iterdir()]:
            if not entry.name.startswith(("build", "out")):
                pathlib.Path(entry.name).symlink_to(entry)
        run_page(page)


with tempfile.TemporaryDirectory() as sandboxes:
    main(sandboxes)
sys.exit("\n".join(failures) or 0)
