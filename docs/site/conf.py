"""Sphinx's settings."""
import pathlib
import re

from docutils import nodes
from sphinx.util.nodes import make_refnode

ROOT = pathlib.Path(__file__).resolve().parents[2]

project = "ko::filesystem"
author = "the ko::filesystem authors"
version = release = re.search(r"VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8").split("project(")[1])[1]
extensions = ["myst_parser", "breathe", "sphinx_copybutton"]
exclude_patterns = []
myst_heading_anchors = 4
suppress_warnings = []
breathe_projects = {"ko": str(ROOT / "build/docs/xml")}
breathe_default_project = "ko"
breathe_show_include = False
primary_domain = "cpp"
highlight_language = "none"
default_role = "any"
add_function_parentheses = False
html_theme = "furo"
html_title = f"ko::filesystem {version}"
html_static_path = ["static"]
html_css_files = ["site.css"]
html_copy_source = False
html_show_sphinx = False
html_show_copyright = False
pygments_style = "friendly"
pygments_dark_style = "github-dark"
html_theme_options = {
    "light_css_variables": {"color-brand-primary": "#1f6feb", "color-brand-content": "#1158c7"},
    "dark_css_variables": {"color-brand-primary": "#79b8ff", "color-brand-content": "#79b8ff"},
}


def known_names(app):
    """Where each name of ko::filesystem is documented; members only if no other name is the same."""
    places, members = {}, {}
    for name, _, kind, page, anchor, _ in app.env.get_domain("cpp").get_objects():
        parts = name.split("::")
        if parts[:2] != ["ko", "filesystem"] or kind in ("functionParam", "templateParam"):
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


def link_names(app, doctree, page):
    """Links each literal that is a name of the library to where it is documented."""
    if not hasattr(app.env, "ko_names"):
        app.env.ko_names = known_names(app)
    for literal in list(doctree.findall(nodes.literal)):
        if isinstance(literal.parent, (nodes.reference, nodes.title)) or literal.astext() != literal.astext().strip():
            continue
        match = re.fullmatch(r"(?:fs::|ko::filesystem::)?((?:\w+::)*\w+)(?:\(.*\))?", literal.astext())
        target = app.env.ko_names.get(match[1]) if match else None
        if target and target[0] != page:
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


def setup(app):
    app.connect("doctree-resolved", link_names)
    app.connect("doctree-resolved", merge_cells)
