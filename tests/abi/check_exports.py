#!/usr/bin/env python3
"""Compares the shared library's exported names with the public headers.

Every name declared with FBC_API must be exported, and nothing else may be.
Names in the pending file are declared by a subsystem that has not landed
yet; they may be missing, but must not appear without leaving that file.
"""
import argparse
import pathlib
import re
import subprocess
import sys

# The identifier right before "(" (functions, also returning function
# pointers) or before "[" / ";" (data), in one FBC_API declaration.
DECLARATION = re.compile(r"^FBC_API\b(.*?);", re.S | re.M)
LINKER_NAMES = {"_init", "_fini", "__bss_start", "_edata", "_end", "__bss_start__",
                "__bss_end__", "_bss_end__", "__end__"}


def declared(headers: pathlib.Path) -> set[str]:
    names = set()
    for header in sorted(headers.glob("*.h")):
        if header.name == "export.h":
            continue
        text = re.sub(r"/\*.*?\*/", "", header.read_text(), flags=re.S)
        for body in DECLARATION.findall(text):
            body = body.strip() + ";"
            # Strip parameter lists: the name is the last identifier before
            # the first top-level parenthesis or bracket.
            head = re.split(r"[(\[;]", body, maxsplit=1)[0]
            name = re.findall(r"[A-Za-z_]\w*", head)[-1]
            names.add(name)
    return names


def exported(nm: str, library: str) -> set[str]:
    out = subprocess.run([nm, "-D", "--defined-only", library], check=True,
                         capture_output=True, text=True).stdout
    names = set()
    for line in out.splitlines():
        parts = line.split()
        if len(parts) >= 3:
            names.add(parts[2].split("@")[0])
    return names - LINKER_NAMES


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("--nm", required=True)
    parser.add_argument("--library", required=True)
    parser.add_argument("--headers", required=True, type=pathlib.Path)
    parser.add_argument("--pending", required=True, type=pathlib.Path)
    args = parser.parse_args()

    want = declared(args.headers)
    pending = {line.strip() for line in args.pending.read_text().splitlines()
               if line.strip() and not line.startswith("#")}
    have = exported(args.nm, args.library)

    failures = []
    for name in sorted(have - want):
        failures.append(f"exported but not declared in a public header: {name}")
    for name in sorted(want - have - pending):
        failures.append(f"declared but not exported: {name}")
    for name in sorted(pending & have):
        failures.append(f"exported now, remove from {args.pending.name}: {name}")
    for name in sorted(pending - want):
        failures.append(f"in {args.pending.name} but not declared: {name}")
    for failure in failures:
        print(failure)
    print(f"{len(have)} exported, {len(want)} declared, {len(pending)} pending")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
