#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes a wheel of the package with the shared object inside: make_wheel.py LIBRARY FOLDER

Nothing is downloaded and nothing compiled. Prints the wheel's path. Takes binutils."""
import base64
import hashlib
import pathlib
import re
import subprocess
import sys
import zipfile

PACKAGE = pathlib.Path(__file__).resolve().parent / "orn_min_render"
# As ELF names processors, and as wheels do.
MACHINES = {"Advanced Micro Devices X86-64": "x86_64", "AArch64": "aarch64", "ARM": "armv7l",
            "IBM S/390": "s390x", "RISC-V": "riscv64"}
METADATA = """Metadata-Version: 2.1
Name: orn_min_render
Version: {}
Summary: Burns overlays straight into video frames in memory
License: MIT
Requires-Python: >=3.9
"""
WHEEL = """Wheel-Version: 1.0
Generator: make_wheel.py
Root-Is-Purelib: false
Tag: {}
"""


def tag_of(library: pathlib.Path) -> str:
    """For any Python, and for systems with at least the glibc whose symbols the library asks for."""
    told = subprocess.run(["readelf", "-W", "-h", "-V", library], capture_output=True, text=True,
                          check=True, env={"LC_ALL": "C", "PATH": "/usr/bin:/bin"}).stdout
    machine = re.search(r"Machine: +(.*)", told)
    versions = [(int(major), int(minor)) for major, minor in re.findall(r"GLIBC_(\d+)\.(\d+)", told)]
    if not machine or machine[1] not in MACHINES or not versions:
        sys.exit(f"make_wheel.py: {library}: no shared object for glibc on a known processor")
    glibc = max((2, 5), *versions)  # the oldest that wheels have a tag for
    return f"py3-none-manylinux_{glibc[0]}_{glibc[1]}_{MACHINES[machine[1]]}"


def main(library: pathlib.Path, folder: pathlib.Path) -> None:
    version = re.search('__version__ = "(.*)"', (PACKAGE / "__init__.py").read_text())[1]
    tag, info = tag_of(library), f"orn_min_render-{version}.dist-info"
    files = {f"orn_min_render/{path.name}": path.read_bytes()
             for path in sorted([*PACKAGE.glob("*.py"), PACKAGE / "py.typed"])}
    files["orn_min_render/liborn_min_render.so.1"] = library.read_bytes()
    files[f"{info}/LICENSE"] = (PACKAGE.parent.parent / "LICENSE").read_bytes()
    files[f"{info}/METADATA"] = METADATA.format(version).encode()
    files[f"{info}/WHEEL"] = WHEEL.format(tag).encode()
    record = "".join(f"{name},sha256={digest(data)},{len(data)}\n" for name, data in files.items())
    files[f"{info}/RECORD"] = f"{record}{info}/RECORD,,\n".encode()
    folder.mkdir(parents=True, exist_ok=True)
    path = folder / f"orn_min_render-{version}-{tag}.whl"
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as wheel:
        for name, data in files.items():  # with one date, so that the same files make the same wheel
            wheel.writestr(zipfile.ZipInfo(name, (2020, 1, 1, 0, 0, 0)), data, zipfile.ZIP_DEFLATED)
    print(path)


def digest(data: bytes) -> str:
    return base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]))
