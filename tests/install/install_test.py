#!/usr/bin/env python3
"""Installs the build into a scratch prefix and uses it as a new user would.

Every ```c and ```cpp block of README.md is a whole program. Each is taken
verbatim and built against the installed copy with pkg-config and with
find_package(fbcompose) (the C ones also statically, from
pkg-config --static), then run in a folder holding the icon.png they load.
The build folder's own package builds them once more. The installed tool
runs with no environment help. Nothing sets LD_LIBRARY_PATH: programs find
the library through their run paths.
"""
import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys

FENCED = re.compile(r"^```(c|cpp)\n(.*?)^```$", re.M | re.S)


def run(*command, cwd=None, env=None) -> str:
    result = subprocess.run([str(part) for part in command], cwd=cwd, env=env,
                            capture_output=True, text=True)
    if result.returncode != 0:
        sys.exit(f"failed ({result.returncode}): {' '.join(map(str, command))}\n"
                 f"{result.stdout}{result.stderr}")
    return result.stdout + result.stderr


def extract_examples(readme: pathlib.Path, folder: pathlib.Path) -> list[pathlib.Path]:
    folder.mkdir(parents=True)
    sources = []
    for number, (language, code) in enumerate(FENCED.findall(readme.read_text()), 1):
        source = folder / f"readme_{number}.{language}"
        source.write_text(code)
        sources.append(source)
    if {s.suffix for s in sources} != {".c", ".cpp"}:
        sys.exit(f"{readme} should hold C and C++ examples, found {sources}")
    return sources


def check_runs(program: pathlib.Path, workdir: pathlib.Path, env) -> None:
    out = run(program, cwd=workdir, env=env)
    # The library reports a file or font it could not load on stdout.
    if "fail" in out.lower():
        sys.exit(f"{program.name} reported a failure:\n{out}")
    print(f"ran {program.name}")


def pkg_config_builds(sources, prefix, scratch, args, env) -> list[pathlib.Path]:
    def flags(*query):
        return run("pkg-config", *query, "fbcompose", env=env).split()

    libdir = next(prefix.glob("**/pkgconfig/fbcompose.pc")).parent.parent
    shared = flags("--cflags", "--libs") + [f"-Wl,-rpath,{libdir}"]
    static = [str(libdir / "libfbcompose.a") if f == "-lfbcompose" else f
              for f in flags("--static", "--cflags", "--libs")]
    programs = []
    for source in sources:
        c = source.suffix == ".c"
        compiler = [args.cc, "-std=c99"] if c else [args.cxx, "-std=c++17"]
        for kind, link in [("shared", shared)] + ([("static", static)] if c else []):
            program = scratch / f"{source.stem}_{source.suffix[1:]}_pkg_{kind}"
            run(*compiler, "-Wall", "-Wextra", "-Werror", source, *link, "-o", program, env=env)
            programs.append(program)
    return programs


def cmake_builds(examples, package_dir_setting, build, args, env) -> list[pathlib.Path]:
    run("cmake", "-S", args.consumer, "-B", build, "-G", args.generator,
        f"-DEXAMPLES={examples}", package_dir_setting, "-DCMAKE_BUILD_TYPE=Release",
        f"-DCMAKE_C_COMPILER={args.cc}", f"-DCMAKE_CXX_COMPILER={args.cxx}",
        "-DCMAKE_C_FLAGS=-Wall -Wextra -Werror", "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror",
        env=env)
    run("cmake", "--build", build, env=env)
    return sorted(p for p in build.glob("readme_*") if p.is_file() and os.access(p, os.X_OK))


def main() -> int:
    parser = argparse.ArgumentParser()
    for option in ("build", "scratch", "readme", "consumer", "icon"):
        parser.add_argument(f"--{option}", required=True, type=pathlib.Path)
    for option in ("generator", "cc", "cxx"):
        parser.add_argument(f"--{option}", required=True)
    args = parser.parse_args()

    scratch = args.scratch
    shutil.rmtree(scratch, ignore_errors=True)
    prefix = scratch / "prefix"
    env = {k: v for k, v in os.environ.items() if k != "LD_LIBRARY_PATH"}
    run("cmake", "--install", args.build, "--prefix", prefix, env=env)
    env["PKG_CONFIG_PATH"] = str(next(prefix.glob("**/pkgconfig/fbcompose.pc")).parent)

    examples = scratch / "examples"
    sources = extract_examples(args.readme, examples)
    workdir = scratch / "run"
    workdir.mkdir()
    shutil.copy(args.icon, workdir / "icon.png")

    programs = pkg_config_builds(sources, prefix, scratch, args, env)
    programs += cmake_builds(examples, f"-DCMAKE_PREFIX_PATH={prefix}",
                             scratch / "cmake-installed", args, env)
    programs += cmake_builds(examples, f"-Dfbcompose_DIR={args.build}",
                             scratch / "cmake-build-tree", args, env)
    # C: pkg-config shared and static, two CMake packages; C++: all but static.
    if len(programs) != sum(4 if s.suffix == ".c" else 3 for s in sources):
        sys.exit(f"expected every example built every way, got {programs}")
    for program in programs:
        check_runs(program, workdir, env)

    tool = prefix / "bin" / "fbcompose"
    if "demo" not in run(tool, "--help", env=env):
        sys.exit("the installed tool's --help does not name the demo")
    run(tool, "demo", "-o", scratch / "demo" / "screen.png", "--size", "160x120",
        "--frames", "2", env=env)
    if not (scratch / "demo" / "screen.raw").exists():
        sys.exit("the installed demo wrote no frame buffer")
    print(f"{len(programs)} example builds ran; the installed tool ran")
    return 0


if __name__ == "__main__":
    sys.exit(main())
