#!/usr/bin/env python3
"""Times whole commands, and writes a table into docs/performance.md.

    bench_commands.py headers             compiles each header alone, with g++ and clang++
    bench_commands.py walk PROGRAM        adds up the sizes of a tree by PROGRAM (bench/sizes.cpp) and by du(1),
                                          without what each takes to start

With --write at the end the table replaces the one after <!-- headers --> or <!-- walk -->. CPU times are the
least of several interleaved runs, so that other programs on the machine disturb them little.
"""
import os
import pathlib
import re
import resource
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/performance.md"
HEADERS = ["filesystem", "boost/filesystem.hpp", "boost/date_time/posix_time/ptime.hpp", "ko/filesystem.hpp",
           "ko/filesystem/path.hpp", "ko/filesystem/std_path.hpp", "ko/filesystem/directory.hpp",
           "ko/filesystem/file_status.hpp", "ko/filesystem/exceptions.hpp"]


def cpu_seconds(command, text=""):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    result = subprocess.run(command, input=text, capture_output=True, text=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    if result.returncode != 0:
        sys.exit(f"{' '.join(command)}: {result.stderr}")
    return after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime, result.stdout


def least(commands, rounds):
    """The least CPU time of each of the commands, a dictionary of command and input."""
    times = {name: [] for name in commands}
    for _ in range(rounds):
        for name, (command, text) in commands.items():
            times[name].append(cpu_seconds(command, text)[0])
    return {name: min(all_times) for name, all_times in times.items()}


def headers():
    compilers = [name for name in ("g++", "clang++") if shutil.which(name)]
    options = ["-std=c++17", "-fsyntax-only", f"-I{ROOT}", "-x", "c++", "-"]
    times = least({(compiler, header): ([compiler, *options], f"#include <{header}>\n")
                   for header in HEADERS for compiler in compilers}, 9)
    yield "| header | lines, preprocessed | " + " | ".join(f"{name}, ms | relative" for name in compilers) + " |"
    yield "|---|---:|" + "---:|---:|" * len(compilers)
    for header in HEADERS:
        lines = cpu_seconds(["g++", "-E", *options], f"#include <{header}>\n")[1].count("\n")
        cells = [f"`<{header}>`", f"{lines:,}"]
        for name in compilers:
            cells += [f"{1000 * times[name, header]:.0f}", f"{times[name, header] / times[name, 'filesystem']:.2f}"]
        yield "| " + " | ".join(cells) + " |"


def walk(program):
    place = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(dir=place) as tree:
        for outer in range(20):
            for inner in range(50):
                folder = pathlib.Path(tree, f"folder{outer}", f"folder{inner}")
                folder.mkdir(parents=True)
                for file in range(50):
                    (folder / f"file{file}.txt").write_bytes(b"x" * file)
        empty = pathlib.Path(tree, "empty")
        empty.mkdir()
        commands = {way: [program, way] for way in ("ko", "ko, by path", "std")}
        commands["du"] = ["du", "-s", "--apparent-size"]
        if len({cpu_seconds([*commands[way], tree])[1] for way in commands if way != "du"}) != 1:
            sys.exit("the sums differ")
        # Without the start of the program, which the same command takes for an empty directory.
        times = least({(way, place): ([*command, place], "") for way, command in commands.items()
                       for place in (tree, str(empty))}, 40)
        times = {way: times[way, tree] - times[way, str(empty)] for way in commands}
    yield "| sizes of a tree of 50,000 files | ms | relative to std |"
    yield "|---|---:|---:|"
    names = {"ko": "`recursive_directory_iterator` with `read_status`", "ko, by path": "without it",
             "std": "std::filesystem", "du": "du(1)"}
    for way, time in times.items():
        yield f"| {names[way]} | {1000 * time:.0f} | {time / times['std']:.2f} |"


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--write"]
    if arguments[:1] not in (["headers"], ["walk"]) or len(arguments) != (2 if arguments[0] == "walk" else 1):
        sys.exit(__doc__)
    table = "\n".join(headers() if arguments[0] == "headers" else walk(arguments[1]))
    print(table)
    if "--write" in sys.argv:
        mark = f"<!-- {arguments[0]} -->"
        text, found = re.subn(f"{mark}\n\n(\\|.*\n)*", lambda _: f"{mark}\n\n{table}\n",
                              PAGE.read_text(encoding="utf-8"))
        if found != 1:
            sys.exit(f"{PAGE}: no place for the table")
        PAGE.write_text(text, encoding="utf-8")


if __name__ == "__main__":
    main()
