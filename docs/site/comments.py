#!/usr/bin/env python3
"""Copies the public headers with their comments as reStructuredText, which Doxygen and Breathe pass on.

    docs/site/comments.py FOLDER

In a block of /// lines
- the lines behind "Throws" become a table: the class, when, and the path of the exception;
- a paragraph of code becomes a highlighted block;
- `code` becomes a literal, and so do the names of the exceptions;
- "the top of this file" becomes a link to the introduction of the header, which is the block before
  its namespace;
- a line of // before a run of constants becomes the title of their group.
"""
import functools
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
# A line at the indent of the table that begins a row: anything else continues the row above.
ROW = re.compile(r"(?P<classes>[A-Z]\w+(?:, [A-Z]\w+)*)(?:\s{2,}(?P<when>.*)|, path\(\) (?P<path>\w+):)$"
                 r"|(?P<other>(?:the class of the error number|what |(?:std|boost)::[\w:]+).*)$")
PATH = re.compile(r"(?:^|;?\s+)path\(\):\s*|; paths(?= as for)\s*")
CODE = re.compile(r"(?:for|if|while|switch|catch) \(|(?:[\w:<>&*]+ )*[\w:.]+[({]|[\w:<>&* ]+ \w+ = |[\w:<>]+ \w+;")


@functools.lru_cache(maxsize=None)
def exceptions():
    """Matches the name of an exception."""
    names = [name for header in ROOT.glob("ko/filesystem/exceptions/*.hpp")
             for name in re.findall(r"^class KO_FILESYSTEM_API (\w+)", header.read_text(encoding="utf-8"), re.M)]
    return re.compile(r"\b(?:" + "|".join(sorted(names)) + r")\b")


def literal(code, before, after):
    """`code` as a literal, which reStructuredText wants between spaces or punctuation."""
    start = "\\ " if before and not re.match(r"[\s'\"(\[{</:-]", before) else ""
    end = "\\ " if after and not re.match(r"[\s'\")\]}>/\\.,;!?:-]", after) else ""
    return f"{start}``{code}``{end}"


def inline(text, header):
    """A run of prose as reStructuredText."""
    text = " ".join(text.split())
    spans = re.compile(rf"`(?P<code>[^`]+)`|(?P<name>{exceptions().pattern})|(?P<call>\b(?:path|arguments|what)\(\))"
                       r"|(?P<top>see the top of this file)|(?P<special>[\\*|]|_(?=\W|$))")

    def marked(span):
        if span["special"]:
            return "\\" + span[0]
        if span["top"]:
            return f":ref:`see the introduction <header-{header}>`"
        return literal(span["code"] or span[0], text[:span.start()][-1:], text[span.end():][:1])

    return spans.sub(marked, text)


def list_table(rows, classes, widths=None, header=None):
    yield ".. list-table::"
    yield f"   :class: {classes}"
    if header:
        yield "   :header-rows: 1"
    if widths:
        yield f"   :widths: {widths}"
    yield ""
    for row in ([header] if header else []) + rows:
        for number, cell in enumerate(row):
            lines = cell if isinstance(cell, list) else [cell]
            yield ("   * - " if number == 0 else "     - ") + lines[0]
            yield from (f"       {line}".rstrip() for line in lines[1:])
    yield ""


def bullets(items):
    return [f"- {item}" for item in items]


class Throws:
    """The rows of the exceptions."""

    def __init__(self, header):
        self.header, self.rows = header, []

    def inline(self, text):
        return inline(text, self.header)

    def add(self, classes, when, path="", cases=()):
        """A row; the `cases` below it are those of its class, or of its path."""
        *before, after = PATH.split(when, 1) if PATH.search(when) and len(PATH.findall(when)) == 1 else (when,)
        if before:
            when, path = before[0], after
        when = re.sub(r"^(?:, )?(?:when|for|if) (?=the change|every|any)", r"\g<0>", when)
        path = re.sub(r", arguments\(\): ", "; arguments(): ", path)
        if cases and path:
            for case in cases:
                self.rows.append([classes, self.inline(case), self.inline(path)])
        elif cases:
            self.rows.append([classes, self.inline(when), bullets(self.inline(case) for case in cases)])
        else:
            self.rows.append([classes, self.inline(when), self.inline(path)])

    def parse(self, lines):
        """The lines below "Throws", without the indent that they share."""
        rows = []
        for line in lines:
            text, deeper = line.strip(), line.startswith("    ")
            match = None if deeper else ROW.match(text)
            if match:
                rows.append((match, [match["when"] or match["other"] or ""], []))
            elif not rows:
                sys.exit(f"{self.header}: not a row of exceptions: {text}")
            elif deeper and rows[-1][1][-1].endswith(":") or rows[-1][2] or rows[-1][0]["path"]:
                # Cases, one a line; a longer one goes on with a deeper indent.
                cases = rows[-1][2]
                if cases and line.startswith("        "):
                    cases[-1] += " " + text
                else:
                    cases.append(text)
            else:
                rows[-1][1].append(text)
        for match, text, cases in rows:
            text = " ".join(text)
            if match["classes"]:
                classes = ", ".join(f"``{name}``" for name in match["classes"].split(", "))
                self.add(classes, text, match["path"] or "", cases)
            else:
                self.sentence(text, cases)

    def sentence(self, text, cases=()):
        """What is thrown, as a sentence goes on behind "Throws"."""
        text = re.sub(r"^(?:and|also) ", "", text.strip().rstrip("."))
        name = rf"(?P<name>{exceptions().pattern}|(?:std|boost)::[\w:]+)"
        if match := re.match(r"the class of the error number\b,? ?(?P<when>.*)$", text):
            when = match["when"]
            if cases:
                when = re.sub(r"; ?path\(\):$", "", when)
            if when.startswith(("including", "such as")):
                when = f"any failure, {when}"
            elif not re.sub(r"^;? ?path\(\).*", "", when).strip():
                when = f"any failure{when if when.startswith(';') else ' ' + when}"
            self.add(":doc:`the class of the error number </docs/errors>`", when, "", cases)
        elif match := re.match(rf"(?:(?P<prelude>(?:after|unlike) .*?), )?(?:a )?{name},?\s+(?P<when>.*)$", text):
            when, semicolon, path = match["when"].partition("; path()")
            if match["prelude"]:
                when += ", " + match["prelude"]
            self.add(f"``{match['name']}``", when + semicolon + path, "", cases)
        else:
            self.rows.append([self.inline(text), "", ""])

    def sentences(self, text):
        """The same for several in one."""
        before = rf"(?={exceptions().pattern},? (?:as|below|for|if|with)\b)"
        parts = re.split(rf"[,;] (?:and )?{before}| (?=and the class of the error number)", text)
        if re.match("(?:after|unlike) ", parts[0]) and len(parts) > 1:
            parts[:2] = [f"{parts[0]}, {parts[1]}"]
        for part in parts:
            self.sentence(part)

    def lines(self):
        yield from list_table(self.rows, "throws", "28 48 24", ["Exception", "When", "``path()``"])


def is_code(paragraph):
    return bool(CODE.match(paragraph[0]) and not paragraph[0].startswith("path()") and
                any(re.search(r"(?:;|\{|\.\.\.)$|;  //", line) for line in paragraph))


def is_throws(line):
    return bool(re.match(r"Throws\b|\w.* throws$", line))


def parse_throws(paragraph, header):
    """The title of the table, its rows, and the lines behind it."""
    throws, line, below = Throws(header), paragraph[0], paragraph[1:]
    length = next((n for n, text in enumerate(below) if not text.startswith("  ")), len(below))
    if length:
        throws.parse([text[2:] for text in below[:length]])
        return line.rstrip(","), throws, below[length:]
    throws.sentences(" ".join([line.removeprefix("Throws").lstrip(", "), *below]))
    return "Throws", throws, []


def throws_section(title, rows, header):
    if not rows:
        return []
    throws = Throws(header)
    throws.rows = rows
    return [f".. rubric:: {title}", "   :class: part", "", *throws.lines()]


def convert(lines, header, common=()):
    """The lines of a comment as lines of reStructuredText; `common` are rows that its table ends with."""
    result, position = [], 0

    def gap():
        if result and result[-1]:
            result.append("")

    while position < len(lines):
        line = lines[position]
        if not line.strip():
            gap()
            position += 1
            continue
        paragraph = [line]
        while position + len(paragraph) < len(lines) and lines[position + len(paragraph)].strip():
            paragraph.append(lines[position + len(paragraph)])
        if (not result or not result[-1]) and is_code(paragraph):
            gap()
            result += throws_section("Throws", common, header)
            common = ()
            rest = lines[position:]
            result += [".. rubric:: Example", "   :class: part", "", ".. code-block:: cpp", "",
                       *(f"   {text}".rstrip() for text in rest), ""]
            break
        if line.startswith("|"):
            cells = [[inline(cell, header) for cell in row.strip()[1:-1].split("|")] for row in paragraph]
            gap()
            result += list_table(cells[2:], "text", None, cells[0])
            position += len(paragraph)
            continue
        if line.startswith("- "):
            gap()
            length = 1
            while length < len(paragraph) and paragraph[length].startswith("  "):
                length += 1
            result.append("- " + inline(" ".join([line[2:], *paragraph[1:length]]), header))
            result.append("")
            position += length
            continue
        if is_throws(line):
            gap()
            title, throws, rest = parse_throws(paragraph, header)
            rows = [[*row[:2], row[2] or common[-1][2]] for row in throws.rows] if common else throws.rows
            result += throws_section(title, rows + list(common), header)
            common = ()
            if rest:
                result += [inline(" ".join(rest), header), ""]
            position += len(paragraph)
            continue
        length = 1
        while length < len(paragraph) and not re.match(r"- |\||Throws\b", paragraph[length]):
            length += 1
        result.append(inline(" ".join(paragraph[:length]), header))
        position += length
    gap()
    return result + throws_section("Throws", common, header)


def embedded(lines, indent=""):
    yield f"{indent}/// @verbatim embed:rst:leading-slashes"
    for line in lines:
        yield f"{indent}/// {line}".rstrip()
    yield f"{indent}/// @endverbatim"


def filtered(path):
    """The header with its comments converted."""
    name = path.resolve().relative_to(ROOT / "ko").with_suffix("").as_posix()
    header = re.sub(r"\W", "-", name.removeprefix("filesystem/"))
    lines, position, grouped, common = path.read_text(encoding="utf-8").splitlines(), 0, False, []
    while position < len(lines):
        block = []
        while position < len(lines) and (match := re.match(r"( *)///(?!<) ?(.*)$", lines[position])):
            block.append(match[2].rstrip())
            indent = match[1]
            position += 1
        if block:
            following = next((line for line in lines[position:] if line.strip()), "")
            if re.match(r"namespace |#include", following):
                yield f"{indent}/// @file"
                start = next((n for n, line in enumerate(block) if line == "Each function throws"), None)
                if start is not None:
                    common = parse_throws(block[start:], header)[1].rows
                yield from embedded(convert(block, header), indent)
            else:
                is_operation = "KO_FILESYSTEM_API" in following and not block[0].startswith("The same")
                yield from embedded(convert(block, header, common if is_operation else ()), indent)
            continue
        line = lines[position]
        if re.match(r" *// ", line):
            block = []
            while re.match(r" *// ", lines[position]):
                block.append(lines[position].strip()[3:])
                position += 1
            if re.match(r" *(?:static|inline) constexpr \S+ (?:\S+ )?\w+ =", lines[position]):
                indent = re.match(" *", line)[0]
                title, _, rest = " ".join(block).partition(". ")
                yield f"{indent}/// @name {title.rstrip('.').replace('`', '')}"
                if rest:
                    yield from embedded([inline(rest, header)], indent)
                yield f"{indent}///@{{"
                grouped = True
            continue
        if grouped and not line.strip():
            yield "///@}"
            grouped = False
        yield line
        position += 1


def main(folder):
    for header in sorted(ROOT.glob("ko/**/*.hpp")):
        if not header.read_text(encoding="utf-8").startswith("// Internal"):
            target = folder / header.relative_to(ROOT)
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_text("\n".join(filtered(header)) + "\n", encoding="utf-8")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(pathlib.Path(sys.argv[1]))
