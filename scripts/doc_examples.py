#!/usr/bin/env python3
"""Extracts the C++ examples of README.md and docs/*.md, so that the tests can compile them.

    scripts/doc_examples.py FOLDER    writes them to FOLDER and prints the files, one per line

A block marked ```cpp is a complete program and becomes NAME_program_N.cpp. The blocks of a page marked
```cpp fragment become functions of one file, NAME_fragments.cpp. So do the rows of a table that follows
<!-- compiled after: CODE -->: CODE, then each piece of code in the second column, which is a statement
or the name of a type.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGES = [ROOT / "README.md", ROOT / "CONTRIBUTING.md", ROOT / "CHANGELOG.md", ROOT / "SECURITY.md",
         *sorted(ROOT.glob("docs/*.md"))]
PROLOGUE = """\
#include <cerrno>
#include <chrono>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <string>
#include <unordered_set>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <boost/exception_ptr.hpp>

#include <ko/filesystem.hpp>
#include <ko/filesystem/std_path.hpp>

namespace fs = ko::filesystem;

// A row of a table shows a call, whatever its result.
#pragma GCC diagnostic ignored "-Wunused-result"
"""


def blocks(page):
    """The C++ blocks of `page`: their mark, the number of their first line, their text."""
    mark, start, lines = None, 0, []
    for number, line in enumerate(page.read_text(encoding="utf-8").splitlines(), 1):
        if line.startswith("```"):
            if mark is not None and mark.split()[:1] == ["cpp"]:
                yield mark, start, "\n".join(lines) + "\n"
            mark, start, lines = (line[3:].strip() if mark is None else None), number + 1, []
        elif mark is not None:
            lines.append(line)
    if mark is not None:
        sys.exit(f"{page.relative_to(ROOT)}:{start - 1}: a block without an end")


def rows(page):
    """The rows of the compiled tables of `page`: the line number, and the body of a function."""
    before = None
    for number, line in enumerate(page.read_text(encoding="utf-8").splitlines(), 1):
        if marked := re.fullmatch(r"<!-- compiled after: (.*) -->", line):
            before = marked[1]
        elif line and not line.startswith("|"):
            before = None
        elif before is not None and len(cells := re.split(r"(?<!\\)\|", line)) > 2:
            body = before
            for code in re.findall(r"`([^`]+)`", cells[2].replace("\\|", "|")):
                is_type = re.fullmatch(r"(fs|boost)(::\w+)?::\w+", code) and "option::" not in code
                body += f" {{ using type = {code}; }}" if is_type else f" {{ {code}; }}"
            if body != before:
                yield number, body + "\n"


def examples(page):
    """The files for the blocks of `page`, by name."""
    stem, name, files, fragments = page.stem.lower(), page.relative_to(ROOT), {}, ""
    for mark, line, text in blocks(page):
        if mark == "cpp":
            files[f"{stem}_program_{len(files) + 1}.cpp"] = f'#line {line} "{name}"\n{text}'
        elif mark == "cpp fragment":
            fragments += f'\nvoid {stem}_line_{line}() {{\n#line {line} "{name}"\n{text}}}\n'
        else:
            sys.exit(f"{name}:{line - 1}: neither a program nor a fragment: {mark}")
    for line, text in rows(page):
        fragments += f'\nvoid {stem}_line_{line}() {{\n#line {line} "{name}"\n{text}}}\n'
    if fragments:
        files[f"{stem}_fragments.cpp"] = PROLOGUE + fragments
    return files


def write(folder):
    folder.mkdir(parents=True, exist_ok=True)
    wanted = {}
    for page in PAGES:
        wanted.update(examples(page))
    for old in folder.glob("*.cpp"):
        if old.name not in wanted:
            old.unlink()
    for name, text in sorted(wanted.items()):
        file = folder / name
        if not file.exists() or file.read_text(encoding="utf-8") != text:  # unchanged files are not rebuilt
            file.write_text(text, encoding="utf-8")
        print(file)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    write(pathlib.Path(sys.argv[1]))
