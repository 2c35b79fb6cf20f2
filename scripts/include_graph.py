#!/usr/bin/env python3
"""Checks and draws the includes of the library's files.

    scripts/include_graph.py            writes docs/design.svg
    scripts/include_graph.py --check    fails if docs/design.svg is not what would be written

A header and the .cpp that includes it first are one module. A module includes only modules of its own
floor and lower ones, without circles. A public header includes no internal header and no header of the
operating system. An internal one says so in its first line. The header of every std:: name is included, in
a .cpp perhaps by its own header. The next CMakeLists.txt above each .cpp, those of the tests and tools too,
names it.
"""
import collections
import graphlib
import html
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PICTURE = ROOT / "docs/design.svg"
# The layers from the lowest, each with its floors from the lowest.
LAYERS = [
    ("base", "records, operators, vector code, what calls of the system need", [
        "config file_status detail/callback detail/option_operators detail/text_scan posix/system_call"]),
    ("exceptions", "the classes, the form in which they are thrown, and error codes instead", [
        "exceptions/escape exceptions/fsys_exception_base exceptions/invalid_argument exceptions/path_errors "
        "exceptions/throw",
        "attempt"]),
    ("encoding", "UTF-16 to UTF-8 and back, and a failure in words", [
        "posix/iconv_converter", "detail/encoding posix/encoding", "exceptions exceptions/describe"]),
    ("path text", "parts, joining, native form, upath", [
        "detail/path_constants", "detail/path_algorithms",
        "detail/path_cursor detail/path_decomposition", "detail/path_expansion", "detail/path_composition",
        "detail/path_traits", "path std_path"]),
    ("operations", "what calls the system, and the error mapping", [
        "detail/current_directory detail/error_mapping posix/directory_stream posix/directory_maker posix/file_identity "
        "posix/foreign_rights posix/durability",
        "posix/native_text posix/system_path",
        "posix/device_move posix/status_reader", "posix/links",
        "access status", "posix/boost_error posix/fault_path",
        "attributes copy create current_path directory equivalent other_platforms read_symlink remove rename "
        "resolve space time", "options"]),
    ("public header", "includes every header that callers see", ["filesystem"]),
]
FLOORS = {module: (layer, floor) for layer, (_, _, floors) in enumerate(LAYERS)
          for floor, modules in enumerate(floors) for module in modules.split()}
STANDARD = {
    "atomic": "atomic", "algorithm": "adjacent_find|any_of|binary_search|copy|find|max|min|none_of|sort|transform|unique",
    "chrono": "chrono", "cstddef": "ptrdiff_t|size_t", "cstdint": r"u?int(\d+|ptr|max)_t", "cstdlib": "free|getenv", "cstring": "memcpy",
    "ctime": "time_t", "exception": "exception", "filesystem": "filesystem",
    "iterator": "back_inserter|.*_iterator_tag",
    "limits": "numeric_limits", "list": "list", "memory": "(make_)?unique(_ptr)?",
    "mutex": "lock_guard|mutex", "optional": "nullopt|optional", "iosfwd": "ostream",
    "string": "(basic_|u16)?string|hash", "string_view": "(basic_|u16)?string_view", "tuple": "tie",
    "system_error": "error_code|(generic|system)_category",
    "type_traits": "is_.*_v|.*_t", "utility": "pair|exchange|forward|move|swap", "vector": "vector",
}
WIDTH, LEFT, BOX, LANE, LINE, GAP = 860, 20, 560, 26, 17, 34


def read_code():
    """The modules of each layer, the number of includes by (from, to), and what is wrong."""
    installed = set(re.findall(r"\bko/(?:filesystem/)?([\w/]+)\.hpp", (ROOT / "CMakeLists.txt").read_text()))
    members, edges, wrong = collections.defaultdict(set), collections.Counter(), []
    graph, standard = collections.defaultdict(set), collections.defaultdict(set)
    for file in sorted((ROOT / "ko").rglob("*.[hc]pp"), key=lambda file: (file.suffix == ".cpp", file)):
        name, text = file.relative_to(ROOT).as_posix(), file.read_text(encoding="utf-8")
        code = re.sub("//.*", "", text)
        included = re.findall(r"^#include <ko/filesystem/([\w/]+)\.hpp>", code, re.M)
        module = re.sub(r"^ko/(filesystem/)?|\.hpp$", "", name)
        if file.suffix == ".cpp":
            module = included[0] if code.startswith("#include <ko/") else name
        if module not in FLOORS:
            wrong.append(f"{name}: " + ("on no floor" if module != name else "doesn't include its header first"))
            continue
        own = FLOORS[module]
        members[own[0]].add(module)
        for other in set(included) - {module}:
            lower = FLOORS.get(other, own)
            if lower > own:
                wrong.append(f"{name}: includes {other}, which is on a higher floor")
            if lower[0] < own[0]:
                edges[own[0], lower[0]] += 1
            graph[module].add(other)
        standard[module] |= set(re.findall(r"^#include <(\w+)>", code, re.M))
        for used in sorted(set(re.findall(r"\bstd::(\w+)", code))):
            header = next((header for header, names in STANDARD.items() if re.fullmatch(names, used)), None)
            if header not in standard[module]:
                wrong.append(f"{name}: uses std::{used} without <{header or 'a header that STANDARD has'}>")
        if file.suffix == ".hpp" and (module in installed) == text.startswith("// Internal: not installed."):
            wrong.append(f"{name}: its first line and CMakeLists.txt disagree about whether it is installed")
        if file.suffix == ".hpp" and module in installed:
            wrong += [f"{name}: is public and includes {other}" for other in sorted(
                set(included) - installed | set(re.findall(r"^#include <([\w/]+\.h)>", code, re.M)))]
    for file in sorted(file for top in ("bench", "ko", "tests", "tools") for file in (ROOT / top).rglob("*.cpp")):
        build = next(folder / "CMakeLists.txt" for folder in file.parents if (folder / "CMakeLists.txt").exists())
        if not re.search(rf"(?<!\w){file.relative_to(build.parent)}\b", build.read_text()):
            wrong.append(f"{file.relative_to(ROOT)}: is not in {build.relative_to(ROOT)}")
    wrong += [f"{name}: is on a floor and nowhere else" for name in sorted(FLOORS.keys() - set().union(*members.values()))]
    wrong += [f"ko/filesystem.hpp: lacks {name}" for name in sorted(
        installed - graph["filesystem"] - {"filesystem", "std_path"})]
    try:
        graphlib.TopologicalSorter(graph).prepare()
    except graphlib.CycleError as circle:
        wrong.append("a circle: " + " <- ".join(circle.args[1]))
    return members, edges, wrong


def wrapped(words, width):
    lines = [""]
    for word in words:
        if lines[-1] and len(lines[-1]) + 2 + len(word) > width:
            lines.append("")
        lines[-1] += (", " if lines[-1] else "") + word
    return lines


def picture(members, edges):
    out, tops, bottoms, y = [], {}, {}, 20
    for i in reversed(range(len(LAYERS))):
        title, what, _ = LAYERS[i]
        lines = wrapped(sorted(members[i]), 84)
        height = 30 + LINE * len(lines) + 8
        tops[i], bottoms[i] = y, y + height
        out.append(f'<rect x="{LEFT}" y="{y}" width="{BOX}" height="{height}" rx="4" fill="#f6f8fa" '
                   'stroke="#57606a"/>')
        out.append(f'<text x="{LEFT + 12}" y="{y + 20}" font-weight="bold">{title} '
                   f'<tspan font-weight="normal" fill="#57606a">– {html.escape(what)}</tspan></text>')
        for n, line in enumerate(lines):
            out.append(f'<text x="{LEFT + 12}" y="{y + 40 + LINE * n}" font-size="11">'
                       f'{html.escape(line)}</text>')
        y += height + GAP
    # Each edge has its own lane at the right, and its own end at each box.
    leaving, arriving = collections.Counter(), collections.Counter()
    order = sorted(edges, key=lambda edge: (edge[0] - edge[1], -edge[0]))
    for lane, (upper, lower) in enumerate(order):
        x = LEFT + BOX + 20 + LANE * lane * 0.62
        y1 = bottoms[upper] - 8 - 7 * leaving[upper]
        y2 = tops[lower] + 10 + 7 * arriving[lower]
        leaving[upper] += 1
        arriving[lower] += 1
        edge = LEFT + BOX
        out.append(f'<path d="M{edge} {y1} H{x:.0f} V{y2} H{edge + 2}" fill="none" stroke="#1f6feb" '
                   'marker-end="url(#tip)"/>')
        middle = (y1 + y2) / 2 + 14 * (lane % 3 - 1)
        out.append(f'<text x="{x:.0f}" y="{middle:.0f}" font-size="10" text-anchor="middle" stroke="white" '
                   f'stroke-width="4" paint-order="stroke">{edges[upper, lower]}</text>')
    head = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{y - GAP + 20}" '
            'font-family="sans-serif" font-size="13">',
            '<defs><marker id="tip" viewBox="0 0 8 8" refX="7" refY="4" markerWidth="7" '
            'markerHeight="7" orient="auto"><path d="M0 0 L8 4 L0 8 z" fill="#1f6feb"/></marker></defs>',
            '<rect width="100%" height="100%" fill="white"/>']
    return "\n".join([*head, *out, "</svg>", ""])


def main():
    if sys.argv[1:] not in ([], ["--check"]):
        sys.exit(__doc__)
    members, edges, wrong = read_code()
    drawn = picture(members, edges)
    if not sys.argv[1:]:
        PICTURE.write_text(drawn, encoding="utf-8")
    elif not PICTURE.exists() or PICTURE.read_text(encoding="utf-8") != drawn:
        wrong.append("docs/design.svg is stale: run scripts/include_graph.py")
    count = sum(len(names) for names in members.values())
    print("\n".join(wrong) or f"{count} modules keep to {sum(len(layer[2]) for layer in LAYERS)} floors")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
