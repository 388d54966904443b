#!/usr/bin/env python3
"""Checks what the shared library asks of the system at run time.

Its NEEDED entries may name only the C runtime and the image and font
libraries: the C++ runtime is linked in privately, so a device needs no
libstdc++.so for what is a C library to its callers. With --strip and
--max-bytes, a stripped copy must also fit the device's budget.
"""
import argparse
import pathlib
import re
import subprocess
import sys
import tempfile

ALLOWED = {"libc", "libm", "libdl", "libgcc_s",
           "libpng16", "libjpeg", "libgif", "libz", "libfreetype"}


def needed(readelf: str, library: str) -> list[str]:
    out = subprocess.run([readelf, "-d", library], check=True,
                         capture_output=True, text=True).stdout
    return re.findall(r"\(NEEDED\)\s+Shared library: \[([^\]]+)\]", out)


def stripped_size(strip: str, library: str) -> int:
    with tempfile.TemporaryDirectory() as scratch:
        copy = pathlib.Path(scratch) / "stripped.so"
        subprocess.run([strip, "-o", str(copy), library], check=True)
        return copy.stat().st_size


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("--readelf", required=True)
    parser.add_argument("--library", required=True)
    parser.add_argument("--strip")
    parser.add_argument("--max-bytes", type=int)
    args = parser.parse_args()

    names = needed(args.readelf, args.library)
    failures = [f"needs {name}" for name in names
                if name.split(".so", 1)[0] not in ALLOWED]
    if not names:
        failures.append("no NEEDED entries read")
    print("NEEDED:", " ".join(names))
    if args.strip and args.max_bytes:
        size = stripped_size(args.strip, args.library)
        print(f"stripped: {size} bytes (budget {args.max_bytes})")
        if size > args.max_bytes:
            failures.append(f"stripped library is {size} bytes, over {args.max_bytes}")
    for failure in failures:
        print(failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
