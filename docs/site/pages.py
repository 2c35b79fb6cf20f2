#!/usr/bin/env python3
"""Writes what Sphinx reads: the pages of the repository, and the reference by what Doxygen found in the headers.

    docs/site/pages.py XML SOURCE

A page of reference is made for each operation and for each header with anything else in it. An operation
is what the README's table lists; a function of a path that it does not list, or has no comment, is an error.
"""
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass, field

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROJECT_PAGES = ("CONTRIBUTING.md", "CHANGELOG.md", "SECURITY.md")
# Better titles than the names of the headers.
TITLES = {"path": "upath", "directory": "Directory iterators", "exceptions": "Exceptions",
          "time": "Times",
          "detail-encoding": "UTF-8 and UTF-16",
          "detail-path_decomposition": "Parts of path text", "detail-path_composition": "Building path text",
          "detail-path_expansion": "Tildes", "detail-path_cursor": "A cursor over elements", "detail-path_constants": "Constants of path text",
          "detail-path_traits": "Traits of a path class", "detail-current_directory": "The working directory"}
NAMES = {"path": "upath"}  # of pages


def slug(heading):
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


# --- what Doxygen found ------------------------------------------------------------------------------------


def comment_of(element):
    """The comment, which is reStructuredText."""
    text = []
    for part in (element.find("briefdescription"), element.find("detaileddescription")):
        for verbatim in part.iter("verbatim") if part is not None else ():
            text += [re.sub(r"^\s*/// ?", "", line) for line in verbatim.text.splitlines()[1:]]
    while text and not text[-1].strip():
        text.pop()
    return text


def first_sentence(comment):
    first = next((line for line in comment if line.strip()), "")
    return re.match(r"(?:.*?(?<!\b[A-Z])[.](?=\s|$)|.*)", first)[0]


@dataclass
class Function:
    name: str
    scope: str
    comment: list
    signatures: list
    header: str
    line: int

    def takes_path(self):
        return any(re.search(r"\b(?:upath|std::u16string) const ?&", signature) for signature in self.signatures)

    def overload_note(self):
        """What is said of an overload that is the same as the one before; else None."""
        match = re.match(r"The same for (text|texts|a path)\b(.*)$", " ".join(self.comment))
        return f"The second form is the same for {match[1]}{match[2]}" if match else None


@dataclass
class Header:
    path: str
    comment: list = field(default_factory=list)
    functions: list = field(default_factory=list)
    directives: list = field(default_factory=list)  # of Breathe, with their titles

    @property
    def key(self):
        return re.sub(r"\W", "-", self.path.removeprefix("ko/").removesuffix(".hpp").removeprefix("filesystem/"))

    @property
    def group(self):
        """The page: one for each header, but one for all exceptions."""
        return "exceptions" if self.key.startswith("exceptions") else self.key


def signature_of(member, scope):
    template = member.find("templateparamlist")
    prefix = ""
    if template is not None:
        parameters = []
        for parameter in template.findall("param"):
            text = "".join(parameter.find("type").itertext())
            name, default = parameter.findtext("declname"), parameter.find("defval")
            text += f" {name}" if name else ""
            parameters.append(text + (" = " + "".join(default.itertext()) if default is not None else ""))
        prefix = f"template <{', '.join(parameters)}> "
    definition = member.findtext("definition").replace(f" {scope}::", " ", 1)
    return prefix + definition + re.sub(r"(?<=\w)=(?=\S)", " = ", member.findtext("argsstring"))


def read_headers(folder):
    headers, classes = {}, []
    for file in sorted(folder.glob("*.xml")):
        for compound in ElementTree.parse(file).getroot().findall("compounddef"):
            kind, name = compound.get("kind"), compound.findtext("compoundname")
            if kind == "file":
                path = compound.find("location").get("file")
                header = headers.setdefault(path, Header(path))
                header.comment = comment_of(compound)
                for member in compound.iter("memberdef"):
                    if member.get("kind") == "define":
                        header.directives.append((0, member.findtext("name"), "define", comment_of(member)))
            elif kind in ("class", "struct"):
                classes.append((compound, name))
            elif kind == "namespace":
                for member in compound.iter("memberdef"):
                    location = member.find("location")
                    path = location.get("declfile") or location.get("file")
                    line = int(location.get("declline") or location.get("line"))
                    header = headers.setdefault(path, Header(path))
                    comment, plain = comment_of(member), member.findtext("name")
                    if member.get("kind") == "function":
                        if not plain.startswith("operator"):
                            header.functions.append(
                                Function(plain, name, comment, [signature_of(member, name)], path, line))
                    else:
                        if member.get("kind") == "variable":
                            brief = "".join(member.find("briefdescription").itertext()).strip()
                            value = member.findtext("initializer").removeprefix("=").strip()
                            comment = [member.findtext("definition"), f"``{value}``" + (f", {brief}" if brief else "")]
                        header.directives.append((line, f"{name}::{plain}", member.get("kind"), comment))
    for compound, name in classes:
        location = compound.find("location")
        if any(name.startswith(f"{outer}::") for _, outer in classes) or not comment_of(compound):
            continue  # shown with its class; internal
        headers[location.get("file")].directives.append(
            (int(location.get("line")), name, compound.get("kind"), comment_of(compound)))
    for header in headers.values():
        header.functions.sort(key=lambda function: function.line)
        header.directives.sort()
    return headers


def merge_overloads(functions):
    """The functions, each with the signature and the remark of the overload that is the same for text."""
    merged = []
    for function in functions:
        note = function.overload_note()
        if note and merged and merged[-1].name == function.name:
            merged[-1].signatures += function.signatures
            comment = merged[-1].comment
            end = next((n for n, line in enumerate(comment) if line.startswith(".. rubric::")), len(comment))
            comment[end:end] = ["", note, ""]
        else:
            merged.append(function)
    return merged


# --- pages -------------------------------------------------------------------------------------------------


def title(text, line="="):
    return [text, line * len(text), ""]


def indented(lines):
    return [f"   {line}".rstrip() for line in lines]


def function_directive(function):
    """The declarations and what is said of them."""
    lines = [f".. cpp:namespace:: {function.scope}", ""]
    first, *others = function.signatures
    lines += [f".. cpp:function:: {first}", *indented(others), ""]
    return lines + indented(function.comment) + [""]


def breathe(name, kind, comment):
    if kind == "variable":  # Sphinx can't read the values of all
        return [f".. cpp:var:: {comment[0]}", "", *indented(comment[1:]), ""]
    if kind in ("class", "struct"):
        return [f".. doxygen{kind}:: {name}", "   :members:", "   :undoc-members:", ""]
    return [f".. doxygen{kind}:: {name}", ""]


class Site:
    def __init__(self, headers, source):
        self.headers, self.source = headers, source
        self.tasks = self.read_tasks()
        listed = {name for names, _ in self.tasks for name in names}
        self.operations = {}  # by name
        for header in headers.values():
            header.functions = merge_overloads(header.functions)
            for function in header.functions:
                if function.name in listed or function.takes_path() and not function.scope.endswith("detail"):
                    self.operations.setdefault(function.name, []).append(function)
        self.sections = self.read_sections()
        self.check(listed)

    def read_tasks(self):
        """The rows of the README's table: the names, and what they do."""
        text = (ROOT / "README.md").read_text(encoding="utf-8")
        table = re.search(r"^\| operation \| does \|\n\|[-|]+\|\n((?:\|.*\n)+)", text, re.M)
        return [(re.findall(r"`(\w+)`", names), does.strip())
                for _, names, does, _ in (row.split("|") for row in table[1].splitlines())]

    def read_sections(self):
        """The sections of the pages of docs/ in the order of the README: page, title, heading, code in it."""
        text = (ROOT / "README.md").read_text(encoding="utf-8")
        sections = []
        for page in re.findall(r"^\| \[\w+\]\(docs/(\w+)\.md\)", text, re.M):
            parts = re.split(r"^#+ (.*)$", re.sub(r"^```.*?^```", "", (ROOT / f"docs/{page}.md").read_text(
                encoding="utf-8"), flags=re.M | re.S), flags=re.M)
            for heading, body in zip(parts[1::2], parts[2::2]):
                sections.append((page, parts[1], heading, re.findall(r"`([^`]+)`", body)))
        return sections

    def check(self, listed):
        complaints = [f"README.md: no row for {name}" for name in sorted(self.operations.keys() - listed)]
        complaints += [f"{function.header}: no comment for {function.name}"
                       for header in self.headers.values() for function in header.functions
                       if not function.comment and not function.scope.endswith("detail")]
        version = re.search(r"project\([^)]*VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"))[1]
        for place, shown in (("CHANGELOG.md", f"\n## {version} - "),
                             ("packaging/vcpkg/ko-filesystem/vcpkg.json", f'"version": "{version}"')):
            if shown not in (ROOT / place).read_text(encoding="utf-8"):
                complaints.append(f"{place}: not of version {version}")
        if complaints:
            sys.exit("\n".join(complaints))

    def write(self, name, lines):
        file = self.source / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text("\n".join(lines).rstrip() + "\n", encoding="utf-8")

    def explained_in(self, name):
        """The sections of docs/ that mention an operation, page by page."""
        pages = {}
        for page, page_title, heading, codes in self.sections:
            if page in ("performance", "testing", "design"):
                continue
            if any(re.match(rf"(?:fs::)?{name}(?:\(|$)", code) for code in codes):
                pages.setdefault((page, page_title), []).append(heading)
        for (page, page_title), headings in pages.items():
            links = [f":ref:`{heading} <{page}-{slug(heading)}>`" for heading in headings if heading != page_title]
            yield f"- :doc:`{page_title} </docs/{page}>`" + (": " + ", ".join(links) if links else "")

    def write_operations(self):
        for name, functions in self.operations.items():
            header = self.headers[functions[0].header]
            lines = title(name) + [".. rst-class:: include", "",
                                   f":doc:`\\<{header.path}\\> </reference/{self.page_of(header.group)}>`", ""]
            for function in functions:
                lines += function_directive(function)
            if more := list(self.explained_in(name)):
                lines += [".. rubric:: Explained in", "   :class: more", "", *more, ""]
            self.write(f"operations/{name}.rst", lines)
        lines = title("Operations by task")
        lines += ["Each takes a ``upath``, or a text that is first converted to native form. "
                  "See :doc:`/docs/operations` for the system calls, :doc:`/docs/errors` for what is thrown.", ""]
        lines += [".. list-table::", "   :class: tasks", "   :widths: 30 70", ""]
        for names, does in self.tasks:
            known = [name for name in names if name in self.operations]
            others = [name for name in names if name not in self.operations]
            lines += [f"   * - {does[0].upper()}{does[1:]}".replace("`", "``")]
            entries = [f"- ``{name}``: {self.summary(name)}" for name in known] + [f"- ``{name}``" for name in others]
            lines += [f"     - {entries[0]}", *(f"       {entry}" for entry in entries[1:])]
        lines += ["", ".. toctree::", "   :hidden:", "", *(f"   {name}" for name in sorted(self.operations)), ""]
        self.write("operations/index.rst", lines)

    def summary(self, name):
        return first_sentence(self.operations[name][0].comment)

    @staticmethod
    def page_of(group):
        return NAMES.get(group, group)

    def write_headers(self):
        """Returns the names of the pages for types, for path text, and for headers of operations."""
        groups = {}
        for header in self.headers.values():
            groups.setdefault(header.group, []).append(header)
        kinds = {"types": [], "detail": [], "headers": []}
        for group, headers in sorted(groups.items()):
            own = [function for header in headers for function in header.functions
                   if function.name in self.operations and not function.scope.endswith("detail")]
            kind = "headers" if own else "detail" if group.startswith("detail") else "types"
            if group in ("filesystem", "config", "std_path"):
                kind = "headers"
            kinds[kind].append(self.page_of(group))
            path = headers[0].path if len(headers) == 1 else "ko/filesystem/exceptions.hpp"
            heading = TITLES.get(group, group if kind == "types" else headers[0].path.removeprefix("ko/filesystem/"))
            lines = [f".. _header-{group}:", "", *title(heading)]
            lines += [".. rst-class:: include", "", f"``#include <{path}>``", ""]
            for header in headers:
                lines += [*header.comment, ""]
            if own:
                lines += [".. rubric:: Operations", "   :class: more", ""]
                for name in dict.fromkeys(function.name for function in own):
                    lines += [f"- ``{name}``: {self.summary(name)}"]
                lines += [""]
            entries = [(header, *entry) for header in headers for entry in header.directives]
            entries.sort(key=lambda entry: (not entry[2].endswith(f"::{self.page_of(group)}"), "::detail::" in entry[2]))
            variables = False
            for header, _, name, what, comment in entries:
                if what == "variable":
                    if not variables:
                        lines += title("Constants", "-")
                    variables = True
                elif not name.endswith(f"::{heading}"):
                    lines += title(re.sub(r"^(?:ko::filesystem::|detail::)+", "", name), "-")
                lines += breathe(name, what, comment)
            functions = [function for header in headers for function in header.functions
                         if function not in own and function.comment and
                         (kind == "detail" or not function.scope.endswith("detail"))]
            if functions and entries:
                lines += title("Functions", "-")
            for function in functions:
                lines += function_directive(function)
            self.write(f"reference/{self.page_of(group)}.rst", lines)
        return kinds

    # --- the pages of the repository

    def relink(self, page, text):
        """The links of a page of the repository, as the site needs them; and a label for each heading."""
        def link(match):
            target, _, anchor = match[1].partition("#")
            if re.match(r"[a-z]+:", match[1]) or not target:
                return match[0]
            file = (page.parent / target).resolve()
            path = file.relative_to(ROOT).as_posix()
            if path == "README.md":
                target = "index.md"
            elif path == "LICENSE":
                target = "license.md"
            elif path.endswith(".hpp"):
                target = f"reference/{self.page_of(self.headers[path].group)}.rst"
            elif path == "docs" or not (path.endswith((".md", ".svg"))):
                sys.exit(f"{page.relative_to(ROOT)}: the site has no page for {path}")
            else:
                target = path
            depth = len(page.relative_to(ROOT).parts) - 1
            return f"]({'../' * depth}{target}{'#' + anchor if anchor else ''})"

        lines, labels, fenced = [], set(), False
        for line in re.sub(r"^<!--.*-->\n", "", text, flags=re.M).splitlines():
            if line.startswith("```"):
                fenced = not fenced
            if not fenced:
                line = re.sub(r"\]\(([^)\s]+)\)", link, line)
                heading = re.match(r"#+ (.*)", line)
                if heading and slug(heading[1]) not in labels:
                    labels.add(slug(heading[1]))
                    lines += ["", f"({page.stem.lower()}-{slug(heading[1])})="]
            lines.append(line)
        return lines

    def write_pages(self, kinds):
        guides = list(dict.fromkeys(page for page, *_ in self.sections))
        for page in [*ROOT.glob("docs/*.md"), *(ROOT / name for name in PROJECT_PAGES)]:
            self.write(page.relative_to(ROOT), self.relink(page, page.read_text(encoding="utf-8")))
        for picture in ROOT.glob("docs/*.svg"):
            (self.source / "docs" / picture.name).write_bytes(picture.read_bytes())
        self.write("license.md", ["# Licence", "", *(ROOT / "LICENSE").read_text(encoding="utf-8").splitlines()])
        readme = ROOT / "README.md"
        toctrees = {"Guide": [f"docs/{page}" for page in guides],
                    "Reference": ["operations/index", *(f"reference/{page}" for page in sorted(
                        kinds["types"], key=lambda page: (page != "upath", page)))],
                    "Path text": [f"reference/{page}" for page in kinds["detail"]],
                    "Headers": [f"reference/{page}" for page in kinds["headers"]],
                    "Project": [*(name.removesuffix(".md") for name in PROJECT_PAGES), "license"]}
        lines = self.relink(readme, readme.read_text(encoding="utf-8"))
        for caption, pages in toctrees.items():
            lines += ["", "```{toctree}", ":hidden:", f":caption: {caption}", "", *pages, "```"]
        self.write("index.md", lines)


def main(xml, source):
    for file in xml.glob("*.xml"):  # that a function is inline matters to nobody
        file.write_text(file.read_text(encoding="utf-8").replace('inline="yes"', 'inline="no"'), encoding="utf-8")
    site = Site(read_headers(xml), source)
    site.write_operations()
    site.write_pages(site.write_headers())


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*map(pathlib.Path, sys.argv[1:]))
