#!/usr/bin/env python3
"""Draws the library's layers, and the includes between them, as they stand in the code.

    scripts/include_graph.py            writes docs/design.svg
    scripts/include_graph.py --check    fails when a file includes one of a higher layer, or belongs
                                        to no layer, or docs/design.svg is not what would be written
"""
import collections
import html
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PICTURE = ROOT / "docs/design.svg"
# From the lowest. A file may include what lies in its own layer and below.
LAYERS = [
    ("base", "constants, records, vector code, owners of handles",
     r"config|file_status|options|detail/path_constants|detail/text_scan|posix/handles"),
    ("exceptions", "the classes, and the one throw",
     r"exceptions/(fsys_exception_base|invalid_argument|path_errors|throw)"),
    ("encoding", "UTF-16 to UTF-8 and back, and a failure in words",
     r"detail/encoding|posix/encoding|posix/iconv_converter|exceptions|exceptions/describe"),
    ("path text", "parts, joining, native form, upath",
     r"detail/path_(algorithms|composition|decomposition|expansion|traits)|path|std_path"),
    ("operations", "what asks the system, and the error mapping",
     r"detail/(error_mapping|current_directory)|posix/\w+|access|attributes|copy|create|current_path|directory|"
     r"equivalent|other_platforms|read_symlink|remove|rename|resolve|space|status"),
    ("public header", "includes every header that callers see", r"\.\./filesystem"),
]
WIDTH, LEFT, BOX, LANE, LINE, GAP = 860, 20, 560, 26, 17, 34


def layer_of(stem):
    return next((i for i, layer in enumerate(LAYERS) if re.fullmatch(layer[2], stem)), None)


def read_code():
    """The stems of each layer, the number of includes by (from, to), and what is wrong."""
    members, edges, wrong = collections.defaultdict(set), collections.Counter(), []
    files = [ROOT / "ko/filesystem.hpp", *sorted((ROOT / "ko/filesystem").rglob("*.[hc]pp"))]
    for file in files:
        name = file.relative_to(ROOT).as_posix()
        stem = re.sub(r"^filesystem/", "", name.removeprefix("ko/").rsplit(".", 1)[0])
        own = layer_of("../filesystem" if name == "ko/filesystem.hpp" else stem)
        if own is None:
            wrong.append(f"{name}: belongs to no layer")
            continue
        members[own].add(stem)
        for other in re.findall(r"^#include <ko/filesystem/([\w/]+)\.hpp>", file.read_text(), re.M):
            lower = layer_of(other)
            if lower is None or lower > own:
                wrong.append(f"{name}: includes {other}, which lies above it")
            elif lower < own:
                edges[own, lower] += 1
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
    # Each edge has a lane of its own at the right, and an end of its own at each box.
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
    print("\n".join(wrong) or f"{count} modules keep to {len(LAYERS)} layers")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
