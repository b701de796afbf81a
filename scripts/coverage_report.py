# SPDX-License-Identifier: MIT
"""Branches of src/ that the tests leave out, from llvm-cov's JSON, checked against a list.

coverage_report.py SOURCE-FOLDER LIST LEAST-PERCENT COVERAGE.JSON

Loops for instructions that the machine lacks are left out: a file of kernels/ that never ran.
A line of LIST names such a branch and the reason why it stays so: file, function, condition, and
the outcome that never came. A branch that is not listed fails, as does a line whose branch is
covered or gone, unless its reason begins with "machine:".
"""
import bisect
import json
import os
import subprocess
import sys


def load_functions(data, folder):
    """The functions of each file: (first line, last line, name)."""
    functions = {}
    for function in data["functions"]:
        path = function["filenames"][0]
        if path.startswith(folder + "/"):
            first, _, last = function["regions"][0][:3]
            name = function["name"].split(":")[-1]
            functions.setdefault(path, set()).add((first, last, name))
    return functions


def demangle(names):
    """The bare name of each function, without arguments."""
    names = sorted(names)
    text = subprocess.run(["c++filt", "-p"], input="\n".join(names), text=True,
                          capture_output=True, check=True).stdout
    return dict(zip(names, text.split("\n")))


def condition_text(lines, first_line, first_column, last_line, last_column):
    picked = lines[first_line - 1:last_line]
    picked[-1] = picked[-1][:last_column - 1]
    picked[0] = picked[0][first_column - 1:]
    return " ".join(" ".join(picked).split())


def count_at(segments, line, column):
    """How often the code at a place ran."""
    at = bisect.bisect_right(segments, [line, column, float("inf")]) - 1
    return segments[at][2] if at >= 0 else 0


def collect(data, folder):
    """How often each branch came, by (file, function, condition, outcome, place)."""
    branches = {}
    functions = load_functions(data, folder)
    bare = demangle({name for found in functions.values() for _, _, name in found})
    for file in data["files"]:
        path = file["filename"]
        if not path.startswith(folder + "/"):
            continue
        with open(path, encoding="utf-8") as source:
            lines = source.read().split("\n")
        for branch in file["branches"]:
            place, counts = tuple(branch[:4]), branch[4:6]
            if not any(counts) and count_at(file["segments"], *place[:2]) > 0:
                continue  # a constant to the compiler: a template argument
            around = [f for f in functions[path] if f[0] <= place[0] <= f[1]]
            name = bare[max(around)[2]].split("::")[-1].split("<")[0] if around else "?"
            text = condition_text(lines, *place)
            for outcome, count in zip(("true", "false"), counts):
                key = (os.path.relpath(path, folder), name, text, outcome, place)
                branches[key] = branches.get(key, 0) + count
    ran = {key[0] for key, count in branches.items() if count > 0}
    return {key: count for key, count in branches.items()
            if key[0] in ran or not key[0].startswith("kernels/")}


def read_list(path):
    """Reasons by (file, function, condition, outcome), and how many lines name each."""
    reasons = {}
    with open(path, encoding="utf-8") as listed:
        for number, line in enumerate(listed, 1):
            if not line.strip() or line.startswith("#"):
                continue
            fields = [field.strip() for field in line.split(" | ")]
            if len(fields) != 5 or fields[3] not in ("true", "false"):
                sys.exit(f"{path}:{number}: not file | function | condition | outcome | reason")
            reasons.setdefault(tuple(fields[:4]), []).append(fields[4])
    return reasons


def main():
    folder, listed, least = sys.argv[1], sys.argv[2], float(sys.argv[3])
    with open(sys.argv[4], encoding="utf-8") as file:
        branches = collect(json.load(file)["data"][0], os.path.realpath(folder))
    missing = sorted(key for key, count in branches.items() if count == 0)
    reasons = read_list(listed)
    failed = False
    for file in sorted({key[0] for key in branches}):
        own = [count for key, count in branches.items() if key[0] == file]
        print(f"{file:24} {sum(c > 0 for c in own):5} of {len(own):5} branches")
    for key in missing:
        named = reasons.get(key[:4])
        if named:
            named.pop()
        else:
            failed = True
            print(f"not covered, not listed: {' | '.join(key[:4])} (line {key[4][0]})", file=sys.stderr)
    for key, left in reasons.items():
        if any(not reason.startswith("machine:") for reason in left):
            failed = True
            print(f"{listed}: covered, or gone: {' | '.join(key)}", file=sys.stderr)
    percent = 100 * (1 - len(missing) / len(branches))
    print(f"{percent:.1f} % of {len(branches)} branches; {len(missing)} are not covered")
    if percent < least:
        failed = True
        print(f"that is less than {least} %", file=sys.stderr)
    sys.exit(failed)


main()
