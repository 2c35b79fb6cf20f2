"""Sphinx's settings."""
import pathlib
import re

import furo
from docutils import nodes
from sphinx import addnodes
from sphinx.domains.cpp import CPPDomain
from sphinx.util.nodes import make_refnode

ROOT = pathlib.Path(__file__).resolve().parents[2]

project = "ko::filesystem"
author = "the ko::filesystem authors"
lists = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
version = release = re.search(r"project\([^)]*VERSION (\S+)", lists)[1]
extensions = ["myst_parser", "breathe", "sphinx_copybutton"]
myst_heading_anchors = 4
breathe_projects = {"ko": str(ROOT / "build/docs/xml")}
breathe_default_project = "ko"
breathe_show_include = False
primary_domain = "cpp"
highlight_language = "none"
default_role = "any"
add_function_parentheses = False
smartquotes = False  # in double quotes are texts of the library
html_theme = "furo"
html_title = f"ko::filesystem {version}"
html_static_path = ["static"]
html_css_files = ["site.css"]
html_copy_source = html_use_index = False
html_show_sphinx = False
html_show_copyright = False
pygments_style = "friendly"
pygments_dark_style = "github-dark"
# Debian's Furo lacks some steps of its build: its dark colours apply only once they are chosen by hand, its
# script imports another, which browsers refuse, and its sheet one from a folder of Debian's. The colours are
# repeated here, the files joined below.
FURO = pathlib.Path(furo.__file__).parent / "theme/furo/static"
dark = re.search(r'body\[data-theme="dark"\] \{(.*?)\}', (FURO / "styles/furo.css").read_text(encoding="utf-8"), re.S)
html_theme_options = {
    "light_css_variables": {"color-brand-primary": "#1f6feb", "color-brand-content": "#1158c7"},
    "dark_css_variables": dict(re.findall(r"--([\w-]+): ([^;]+);", dark[1])) | {
        "color-brand-primary": "#79b8ff", "color-brand-content": "#79b8ff"},
}


def known_names(app):
    """Where each name of ko::filesystem is documented; members only if no other name is the same."""
    places, members = {}, {}
    for name, _, kind, page, anchor, _ in app.env.get_domain("cpp").get_objects():
        parts = name.split("::")
        if parts[:2] != ["ko", "filesystem"]:
            continue
        if kind == "function":
            parts[-1] = parts[-1].split("(")[0]
        short = "::".join(parts[2:])
        if page.startswith("operations/"):
            places[short] = (page, "")
        places.setdefault(short, (page, anchor))
        if kind in ("enumerator", "member"):
            members.setdefault(parts[-1], set()).add(short)
    for name, longer in members.items():
        if len(longer) == 1 and len(name) > 4:
            places.setdefault(name, places[next(iter(longer))])
    if "basic_path" in places:
        places["upath"] = places["basic_path"]
    return places


def is_within(node, anchor):
    """Whether the node belongs to the description with this anchor."""
    while node := node.parent:
        if isinstance(node, addnodes.desc) and any(anchor in part.get("ids", ()) for part in node.children):
            return True
    return False


def link_names(app, doctree, page):
    """Links each literal that is a name of the library to where it is documented."""
    if not hasattr(app.env, "ko_names"):
        app.env.ko_names = known_names(app)
    for literal in list(doctree.findall(nodes.literal)):
        if isinstance(literal.parent, (nodes.reference, nodes.title)) or literal.astext() != literal.astext().strip():
            continue
        match = re.fullmatch(r"(?:fs::|ko::filesystem::)?((?:\w+::)*\w+)(?:\(.*\))?", literal.astext())
        target = app.env.ko_names.get(match[1]) if match else None
        if target and (target[0] != page or target[1] and not is_within(literal, target[1])):
            place = make_refnode(app.builder, page, *target, literal.deepcopy())
            place["classes"].append("name")
            literal.replace_self(place)


def merge_cells(app, doctree, page):
    """In a table of exceptions, a cell with nothing behind it takes the whole row."""
    for table in doctree.findall(nodes.table):
        if "throws" not in table["classes"]:
            continue
        for row in table.findall(nodes.row):
            cells = [cell for cell in row.children]
            while len(cells) > 1 and not cells[-1].astext().strip() and not cells[-1].children:
                row.remove(cells.pop())
            cells[-1]["morecols"] = 3 - len(cells)


def shorten_titles(app, doctree, page):
    """Everything shown is public."""
    for rubric in doctree.findall(nodes.rubric):
        if rubric.astext().startswith("Public "):
            rubric.children = [nodes.Text(rubric.astext().removeprefix("Public "))]


def complete_theme(app, failure):
    if failure:
        return
    static = pathlib.Path(app.outdir) / "_static"
    script = (static / "scripts/furo.js").read_text(encoding="utf-8")
    if script.startswith("import Gumshoe"):
        other = (static / "scripts/gumshoe-patched.js").read_text(encoding="utf-8")
        (static / "scripts/furo.js").write_text(other + script.partition("\n")[2], encoding="utf-8")
    sheet = (static / "styles/furo.css").read_text(encoding="utf-8")
    if imported := re.match(r"@import url\((/javascript/.*?)\);", sheet):
        other = pathlib.Path(f"/usr/share{imported[1]}").read_text(encoding="utf-8")
        (static / "styles/furo.css").write_text(other + sheet[imported.end():], encoding="utf-8")


def without_parameters(domain):
    """Nobody searches for a parameter."""
    return (entry for entry in all_objects(domain) if entry[2] not in ("functionParam", "templateParam"))


all_objects, CPPDomain.get_objects = CPPDomain.get_objects, without_parameters


def setup(app):
    app.connect("doctree-resolved", shorten_titles)
    app.connect("build-finished", complete_theme)
    app.connect("doctree-resolved", link_names)
    app.connect("doctree-resolved", merge_cells)
