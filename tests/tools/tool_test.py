#!/usr/bin/env python3
"""Runs the fbcompose program as a user would and checks what it does."""
import argparse
import os
import pathlib
import shutil
import struct
import subprocess
import sys
import unittest

OPTIONS = None


def run(*args, expect=0, env=None, binary=False):
    command = ([OPTIONS.emulator] if OPTIONS.emulator else []) + [OPTIONS.tool, *map(str, args)]
    result = subprocess.run(command, capture_output=True, text=not binary, timeout=300,
                            env={**os.environ, **(env or {})})
    if expect is not None and result.returncode != expect:
        raise AssertionError(f"{args}: exit {result.returncode}, wanted {expect}\n"
                             f"stdout: {result.stdout}\nstderr: {result.stderr}")
    return result


def one_error_line(test, result, *parts):
    """A failure reports itself in one line on standard error, naming each part."""
    lines = result.stderr.splitlines()
    test.assertEqual(len(lines), 1, result.stderr)
    for part in parts:
        test.assertIn(str(part), lines[0])


def png_size(path):
    data = pathlib.Path(path).read_bytes()
    assert data[:8] == b"\x89PNG\r\n\x1a\n", f"{path} is not a PNG"
    return struct.unpack(">II", data[16:24])


def rotate90(words, width, height):
    """Canvas (x, y) goes to panel (height - 1 - y, x)."""
    out = [0] * (width * height)
    for y in range(height):
        for x in range(width):
            out[x * height + (height - 1 - y)] = words[y * width + x]
    return out


def words32(path):
    data = pathlib.Path(path).read_bytes()
    return list(struct.unpack(f"<{len(data) // 4}I", data))


class ToolTest(unittest.TestCase):
    def setUp(self):
        self.scratch = pathlib.Path(OPTIONS.scratch) / self.id().split(".")[-1]
        shutil.rmtree(self.scratch, ignore_errors=True)
        self.scratch.mkdir(parents=True)

    def corpus(self, relative):
        return pathlib.Path(OPTIONS.corpus) / relative

    def test_help_and_version(self):
        top = run("--help")
        commands = [line.split()[0] for line in top.stdout.splitlines()
                    if line.startswith("  ")]
        self.assertIn("show", commands)
        self.assertIn("archive", commands)
        for command in commands:
            result = run(command, "--help")
            self.assertIn(f"usage: fbcompose {command}", result.stdout)
        # What a user needs before trusting the output, in each command's help.
        for command, phrase in (("convert", "little-endian"), ("convert", "top to bottom"),
                                ("fit", "landscape"), ("info", "transparency chunk")):
            self.assertIn(phrase, " ".join(run(command, "--help").stdout.split()))
        version = run("info", "--version").stdout
        self.assertRegex(version, r"^fbcompose \d+\.\d+\.\d+, library \d+\.\d+\.\d+$")
        self.assertEqual(run("--version").stdout, version)

    def test_usage_errors_exit_2_with_one_line_and_do_no_work(self):
        source = self.corpus("png/pngsuite/basn2c08.png")
        out = self.scratch / "out.raw"
        cases = [
            (["frobnicate"], "unknown command 'frobnicate'"),
            (["info", "--frobnicate", source], "unknown option '--frobnicate'"),
            (["info", source, "--verbose=1"], "option '--verbose' takes no value"),
            (["convert", source, "-o", out, "--depth"], "option '--depth' needs a value"),
            (["convert", source, "-o", out, "--depth=24"], "bad --depth '24'"),
            (["demo", "--size", "0x10"], "bad --size '0x10'"),
            (["demo", "-o", self.scratch / "x.bmp"], ".png, .jpg or .jpeg"),
            (["demo", "-o", "-"], "standard output"),
            (["demo", "--fb", "/dev/fb0", "--size", "100x100"], "from the device"),
            (["fit", source, "10x10", "--mode", "squash", "-o", "f.png"], "unknown --mode 'squash'"),
            (["fit", source, "10x10", "--mode", "crop", "-o", self.scratch / "f.bmp"], "f.bmp"),
            (["fit", source, "10x10", "--mode=crop", "-o", "-"], "standard output"),
            (["show", source], "needs --fb"),
            (["archive", "pack", self.scratch], "pack needs"),
            (["archive", "list", "-o", out, out], "list takes no -o"),
        ]
        for args, message in cases:
            result = run(*args, expect=2)
            one_error_line(self, result, message, "--help")
            self.assertEqual(result.stdout, "", args)  # not a frame drawn
        self.assertEqual(list(self.scratch.iterdir()), [])

    def test_failures_exit_1_with_the_cause_in_one_line(self):
        source = self.corpus("png/pngsuite/basn2c08.png")
        (self.scratch / "empty.jpg").write_bytes(b"")
        (self.scratch / "folder.png").mkdir()
        fit = ["fit", source, "10x10", "--mode", "crop", "-o"]
        cases = [
            (["info", self.scratch / "empty.jpg"], "cannot load", "empty.jpg': "),
            (["convert", self.scratch / "missing.png", "-o", self.scratch / "x.raw", "--depth", "16"],
             "missing.png': ", "No such file or directory"),
            (["fit", self.corpus("bad/png/cut-in-idat.png"), "10x10", "--mode", "crop", "-o",
              self.scratch / "f.png"], "cannot load", "cut-in-idat.png': libpng error"),
            (fit + [self.scratch / "nowhere" / "f.png"], "f.png': No such file or directory"),
            (fit + [self.scratch / "folder.png"], "folder.png': Is a directory"),
            (["convert", source, "-o", "/dev/full", "--depth", "16"], "No space left on device"),
            (["show", source, "--fb", self.scratch / "fb9"], "fb9", "No such file or directory"),
            (["show", source, "--fb", source], "not a frame-buffer device"),
            (["demo", "--fb", self.scratch / "fb9"], "cannot use the panel", "fb9"),
        ]
        for args, *parts in cases:
            result = run(*args, expect=1)
            one_error_line(self, result, "fbcompose: ", *parts)
            self.assertEqual(result.stdout, "", args)  # the library is quiet, no "0x0" line

    def test_outputs_are_checked_first_and_removed_on_failure(self):
        source = self.corpus("png/pngsuite/basn2c08.png")
        raw = self.scratch / "out.raw"
        convert = ["convert", source, "-o", raw, "--depth", "16", "--preview"]
        run(*convert, self.scratch / "missing" / "p.png", expect=1)
        self.assertFalse(raw.exists())  # refused before any work
        # A preview that passes the check but cannot be written after all: the
        # raw written before it goes again.
        (self.scratch / "p.png").symlink_to(self.scratch / "missing" / "p.png")
        result = run(*convert, self.scratch / "p.png", expect=1)
        one_error_line(self, result, "p.png': No such file or directory")
        self.assertFalse(raw.exists())

    def test_options_anywhere_and_raw_on_standard_output(self):
        source = self.corpus("png/pngsuite/basn2c08.png")
        run("convert", source, "-o", self.scratch / "a.raw", "--depth", "32", "--rotate", "90")
        run("convert", "--rotate=90", "--depth=32", "-o", self.scratch / "b.raw", source)
        piped = run("convert", "--depth", "32", source, "--rotate", "90", "-o", "-", binary=True)
        expected = (self.scratch / "a.raw").read_bytes()
        self.assertEqual((self.scratch / "b.raw").read_bytes(), expected)
        self.assertEqual(piped.stdout, expected)
        self.assertIn(b"-> -: 32x32", piped.stderr)  # the report stays off the stream

    def test_verbose_shows_the_library_and_progress(self):
        source = self.corpus("png/pngsuite/basn2c08.png")
        now = {"FBCOMPOSE_PROGRESS_MS": "0"}
        quiet = run("info", source, source, env=now)
        loud = run("--verbose", "info", source, source, env=now)
        self.assertEqual(quiet.stdout, loud.stdout)
        self.assertEqual(quiet.stderr, "")
        self.assertIn("loaders[0] ext = ", loud.stderr)
        self.assertRegex(loud.stderr, r"fbcompose info: finished, [0-9.]+ s")
        # With a short enough period the lines come while the work runs, saying what it does.
        ticking = run("fit", source, "600x600", "--mode", "distort", "-o", self.scratch / "f.png",
                      "--verbose", env={"FBCOMPOSE_PROGRESS_MS": "1"})
        self.assertRegex(ticking.stderr, r"fbcompose fit: (loading|fitting|saving), [0-9.]+ s")

    def test_archive_pack_list_extract_roundtrip(self):
        source = self.scratch / "icons"
        source.mkdir()
        files = {"b.png": b"\x89PNG second", "a.png": b"first file", "c.bmp": b"BM" * 100}
        for name, data in files.items():
            (source / name).write_bytes(data)
        # What pack skips, each named on standard error.
        skipped = {"name": "reserved", "sub": "folder", "dangling": "not a regular file"}
        (source / "name").write_bytes(b"reserved")
        (source / "sub").mkdir()
        (source / "dangling").symlink_to(source / "nowhere")
        if os.geteuid() != 0:  # root reads every file
            (source / "unreadable").write_bytes(b"secret")
            (source / "unreadable").chmod(0)
            skipped["unreadable"] = "Permission denied"
        archive = source / "img.ar"
        result = run("archive", "pack", source, "-o", archive)
        self.assertIn("packed 3 files", result.stdout)
        for name, why in skipped.items():
            self.assertRegex(result.stderr, f"skipping '{source / name}': .*{why}")

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

    def test_demo_writes_frame_buffer_preview_and_frame_lines(self):
        preview = self.scratch / "screen.png"
        result = run("demo", "-o", preview, "--size", "320x240", "--frames", "4")
        lines = [l for l in result.stdout.splitlines() if l.startswith("frame ")]
        self.assertEqual(len(lines), 4)
        self.assertTrue(lines[0].startswith("frame 0: 1 rect 0,0 320x240,"), lines[0])
        for line in lines[1:]:  # only the animated corners change
            self.assertRegex(line, r"frame \d: [1-4] rects?( \d+,\d+ \d+x\d+)+, [0-9.]+ ms$")
        raw = self.scratch / "screen.raw"
        self.assertEqual(raw.stat().st_size, 320 * 240 * 2)
        self.assertEqual(png_size(preview), (320, 240))
        self.assertIn(str(raw), result.stdout)
        self.assertTrue((self.scratch / "background.jpg").read_bytes().startswith(b"\xff\xd8"))

    def test_demo_rotation_permutes_the_panel_exactly(self):
        run("demo", "-o", self.scratch / "a.png", "--size", "96x64", "--frames", "2",
            "--depth", "32")
        result = run("demo", "-o", self.scratch / "b.png", "--size", "96x64", "--frames", "2",
                     "--depth", "32", "--rotate", "90")
        self.assertIn("(64x96, 32 bits", result.stdout)
        upright = words32(self.scratch / "a.raw")
        turned = words32(self.scratch / "b.raw")
        self.assertEqual(rotate90(upright, 96, 64), turned)
        self.assertEqual(png_size(self.scratch / "b.png"), (64, 96))

    def test_convert_writes_panel_pixels_at_each_depth(self):
        source = self.corpus("png/pngsuite/basn2c08.png")
        reference = self.corpus("ref/png/pngsuite/basn2c08.png.rgba").read_bytes()
        for depth, size in (("16", 2), ("18", 4), ("32", 4)):
            out = self.scratch / f"out{depth}.raw"
            result = run("convert", source, "-o", out, "--depth", depth)
            self.assertIn(f"{out}: 32x32, {depth} bits", result.stdout)
            self.assertEqual(out.stat().st_size, 32 * 32 * size)
        words = words32(self.scratch / "out32.raw")
        for i in (0, 100, 1023):
            r, g, b, _ = reference[4 * i:4 * i + 4]
            self.assertEqual(words[i] & 0xFFFFFF, r << 16 | g << 8 | b)
        run("convert", source, "-o", self.scratch / "r.raw", "--depth", "32", "--rotate", "90",
            "--preview", self.scratch / "r.png")
        self.assertEqual(words32(self.scratch / "r.raw"), rotate90(words, 32, 32))
        self.assertEqual(png_size(self.scratch / "r.png"), (32, 32))

    def test_fit_every_mode_to_png_and_jpeg(self):
        source = self.corpus("png/pngsuite/basn2c08.png")
        for mode in ("crop", "matte", "matte-both", "distort"):
            out = self.scratch / f"{mode}.png"
            run("fit", source, "50x30", "--mode", mode, "-o", out)
            self.assertEqual(png_size(out), (50, 30), mode)
        out = self.scratch / "matte.jpg"
        run("fit", source, "40x20", "--mode", "matte", "-o", out, "--quality", "90")
        data = out.read_bytes()
        self.assertTrue(data.startswith(b"\xff\xd8"))
        sof = data.index(b"\xff\xc0")
        self.assertEqual(struct.unpack(">HH", data[sof + 5:sof + 9]), (20, 40))

    def test_info_reports_type_size_alpha_and_frames(self):
        files = {
            "png/pngsuite/basn6a08.png": "png, 32x32, alpha",
            "jpeg/wuffs/peacock.default.jpeg": "jpg, 100x75, opaque",
            "bmp/bmpsuite/g/pal8.bmp": "bmp, 127x64, opaque",
            "png/pngsuite/tbbn3p08.png": "png, 32x32, opaque",  # transparency chunk: flagged opaque
        }
        paths = [self.corpus(f) for f in files] + [self.scratch / "missing.gif"]
        result = run("info", *paths, expect=1)  # one bad file: still reports the rest
        for name, summary in files.items():
            self.assertIn(f"{self.corpus(name)}: {summary}", result.stdout)
        self.assertIn("missing.gif", result.stderr)

        manifest = (pathlib.Path(OPTIONS.corpus) / "MANIFEST.tsv").read_text().splitlines()
        animations = [row.split("\t") for row in manifest[1:]
                      if row.startswith("gif/gif-test-suite/") and row.split("\t")[4] not in ("1", "-")]
        path, frames = animations[0][0], int(animations[0][4])
        result = run("info", self.corpus(path))
        self.assertRegex(result.stdout, rf", {frames} frames, delays \(ms\): (\d+ ?){{{frames}}}$")

    def test_archive_packed_images_load_through_the_library(self):
        source = self.scratch / "src"
        shutil.copytree(self.corpus("png/pngsuite"), source,
                        ignore=lambda d, names: [n for n in names if not n.startswith("basn")])
        packed = self.scratch / "packed"
        packed.mkdir()
        result = run("archive", "pack", source, "-o", packed / "img.ar")
        count = len(list(source.glob("*.png")))
        self.assertIn(f"packed {count} files", result.stdout)
        # basn2c08.png exists only inside packed/img.ar: the PNG loader finds it there.
        run("convert", packed / "basn2c08.png", "-o", self.scratch / "a.raw", "--depth", "32")
        run("convert", source / "basn2c08.png", "-o", self.scratch / "b.raw", "--depth", "32")
        self.assertEqual((self.scratch / "a.raw").read_bytes(), (self.scratch / "b.raw").read_bytes())
        listing = run("archive", "list", packed / "img.ar").stdout
        self.assertEqual(len(listing.splitlines()) - 1, count)


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
