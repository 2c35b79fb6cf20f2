#!/usr/bin/env python3
"""Checks the house's floors: a file includes only headers of a lower floor, so there are no circles.

A .cpp counts with its header, which it includes first, and may include what its header may. Public
headers include no internal one and no header of the operating system.
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FLOORS = [
    {"config", "file_status", "options", "detail/current_directory", "detail/path_constants",
     "detail/text_scan", "posix/file_identity", "posix/foreign_rights", "posix/handles"},
    {"exceptions", "exceptions/describe", "exceptions/fsys_exception_base", "exceptions/invalid_argument",
     "exceptions/path_errors", "exceptions/throw", "posix/iconv_converter"},
    {"detail/encoding", "posix/encoding", "detail/path_algorithms"},
    {"detail/error_mapping", "detail/path_decomposition"},
    {"detail/path_expansion"},
    {"detail/path_composition"},
    {"detail/path_traits"},
    {"path"},
    {"access", "attributes", "copy", "create", "current_path", "directory", "equivalent", "other_platforms",
     "read_symlink", "remove", "rename", "space", "status", "std_path", "posix/boost_error", "posix/device_move",
     "posix/directory_stream", "posix/fault_path",
     "posix/link_maker", "posix/link_reader", "posix/native_text", "posix/status_reader"},
    {"resolve"},
]
# Headers of a floor may stand on these of the same one.
SAME_FLOOR = {"exceptions", "exceptions/describe", "exceptions/invalid_argument", "exceptions/path_errors",
              "posix/encoding", "exceptions/throw", "file_status", "detail/current_directory", "detail/path_constants"}
SYSTEM = re.compile(r"#include <([a-z_/]+\.h)>")


def floor_of(stem):
    return next((i for i, names in enumerate(FLOORS) if stem in names), None)


def main():
    installed = set(re.findall(r"ko/filesystem/([\w/]+)\.hpp", (ROOT / "CMakeLists.txt").read_text()))
    tracked = subprocess.run(
        ["git", "-C", ROOT, "ls-files", "--cached", "--others", "--exclude-standard", "ko/filesystem/"],
        check=True, capture_output=True, text=True).stdout.split()
    complaints, files = [], 0
    for name in tracked:
        path, text = pathlib.PurePath(name), (ROOT / name).read_text()
        stem = str(path.relative_to("ko/filesystem").with_suffix(""))
        files += 1
        if path.suffix == ".hpp" and floor_of(stem) is None:
            complaints.append(f"{name}: on no floor")
        included = re.findall(r"#include <ko/filesystem/([\w/]+)\.hpp>", text)
        if path.suffix == ".hpp":
            for other in included:
                lower = floor_of(other) is not None and floor_of(other) < (floor_of(stem) or 0)
                if not lower and not (stem in SAME_FLOOR and floor_of(other) == floor_of(stem)):
                    complaints.append(f"{name}: includes {other}, which is not below it")
                if stem in installed and other not in installed:
                    complaints.append(f"{name}: is public and includes {other}, which is not")
            if stem in installed and SYSTEM.search(text):
                complaints.append(f"{name}: is public and includes {SYSTEM.search(text)[1]}")
        elif not text.startswith("#include <ko/filesystem/"):
            complaints.append(f"{name}: does not include its own header first")
    print("\n".join(complaints) or f"{files} files keep to their floors")
    return 1 if complaints or not files else 0


if __name__ == "__main__":
    sys.exit(main())
