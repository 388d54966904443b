#!/usr/bin/env python3
"""Runs the fbcompose program as a user would and checks what it does."""
import argparse
import pathlib
import shutil
import struct
import subprocess
import sys
import unittest

OPTIONS = None


def run(*args, expect=0):
    command = ([OPTIONS.emulator] if OPTIONS.emulator else []) + [OPTIONS.tool, *map(str, args)]
    result = subprocess.run(command, capture_output=True, text=True, timeout=300)
    if expect is not None and result.returncode != expect:
        raise AssertionError(f"{args}: exit {result.returncode}, wanted {expect}\n"
                             f"stdout: {result.stdout}\nstderr: {result.stderr}")
    return result


class ToolTest(unittest.TestCase):
    def setUp(self):
        self.scratch = pathlib.Path(OPTIONS.scratch) / self.id().split(".")[-1]
        shutil.rmtree(self.scratch, ignore_errors=True)
        self.scratch.mkdir(parents=True)

    def test_help_on_every_command(self):
        top = run("--help")
        commands = [line.split()[0] for line in top.stdout.splitlines()
                    if line.startswith("  ")]
        self.assertIn("demo", commands)
        self.assertIn("archive", commands)
        for command in commands:
            result = run(command, "--help")
            self.assertIn(f"usage: fbcompose {command}", result.stdout)

    def test_unknown_command_and_bad_arguments(self):
        result = run("frobnicate", expect=2)
        self.assertIn("unknown command 'frobnicate'", result.stderr)
        result = run("demo", "--size", "0x10", expect=2)
        self.assertIn("bad --size '0x10'", result.stderr)
        result = run("archive", "pack", expect=2)
        self.assertIn("fbcompose archive:", result.stderr)

    def test_archive_pack_list_extract_roundtrip(self):
        source = self.scratch / "icons"
        source.mkdir()
        files = {"b.png": b"\x89PNG second", "a.png": b"first file", "c.bmp": b"BM" * 100}
        for name, data in files.items():
            (source / name).write_bytes(data)
        (source / "name").write_bytes(b"reserved")
        archive = source / "img.ar"
        result = run("archive", "pack", source, "-o", archive)
        self.assertIn("packed 3 files", result.stdout)
        self.assertIn("reserved", result.stderr)

        raw = archive.read_bytes()
        self.assertEqual(raw[:8], b"IMGARCH0")
        (count,) = struct.unpack_from("<i", raw, 8)
        self.assertEqual(count, 3)
        at, names = 12, []
        for _ in range(count):
            offset, length = struct.unpack_from("<ii", raw, at)
            name = raw[at + 8:at + 8 + length].decode()
            names.append(name)
            self.assertTrue(raw[offset:].startswith(files[name]))
            at += 8 + length
        self.assertEqual(names, ["a.png", "b.png", "c.bmp"])
        first_offset = struct.unpack_from("<i", raw, 12)[0]
        self.assertEqual(first_offset, at)  # data starts right after the index

        listing = run("archive", "list", archive).stdout.splitlines()
        self.assertEqual([line.split()[-1] for line in listing[1:]], names)
        self.assertEqual(int(listing[3].split()[1]), len(files["c.bmp"]))

        out = self.scratch / "out"
        run("archive", "extract", archive, out)
        for name, data in files.items():
            self.assertEqual((out / name).read_bytes(), data)
        self.assertFalse((out / "name").exists())

    def test_archive_refuses_damaged_and_unsafe_archives(self):
        not_archive = self.scratch / "plain.png"
        not_archive.write_bytes(b"\x89PNG\r\n\x1a\n")
        result = run("archive", "list", not_archive, expect=1)
        self.assertIn(f"'{not_archive}' is not an image archive", result.stderr)

        cut = self.scratch / "cut.ar"
        cut.write_bytes(b"IMGARCH0" + struct.pack("<i", 5) + struct.pack("<ii", 40, 3))
        result = run("archive", "list", cut, expect=1)
        self.assertIn("damaged", result.stderr)

        name = b"../evil"
        body = b"payload"
        offset = 12 + 8 + len(name)
        unsafe = self.scratch / "unsafe.ar"
        unsafe.write_bytes(b"IMGARCH0" + struct.pack("<i", 1) +
                           struct.pack("<ii", offset, len(name)) + name + body)
        result = run("archive", "extract", unsafe, self.scratch / "x", expect=1)
        self.assertIn("unsafe name '../evil'", result.stderr)
        self.assertFalse((self.scratch / "evil").exists())

        result = run("archive", "list", self.scratch / "missing.ar", expect=1)
        self.assertIn("cannot read", result.stderr)


def main():
    global OPTIONS
    parser = argparse.ArgumentParser()
    parser.add_argument("--tool", required=True)
    parser.add_argument("--emulator", default="")
    parser.add_argument("--corpus", required=True)
    parser.add_argument("--scratch", required=True)
    OPTIONS, rest = parser.parse_known_args()
    unittest.main(argv=[sys.argv[0], *rest], verbosity=2)


if __name__ == "__main__":
    main()
