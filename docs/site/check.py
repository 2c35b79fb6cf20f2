#!/usr/bin/python3
"""Checks the built site as a reader meets it, in headless Chromium, on a wide and a narrow screen.

    docs/site/check.py HTML [PICTURES]    puts screenshots, light and dark, into the folder PICTURES

No link is dead, no page is empty, nothing is wider than the screen, and the pages that readers start with show
what they are opened for.
"""
import functools
import html.parser
import http.server
import pathlib
import sys
import threading
import urllib.parse

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

SCREENS = {"wide": (1500, 1000), "narrow": (390, 844)}
complaints = []


def expect(condition, complaint):
    if not condition:
        complaints.append(complaint)


class Page(html.parser.HTMLParser):
    """The links of a page, the places to link to, and the length of its text."""

    def __init__(self, file):
        super().__init__()
        self.links, self.anchors, self.words, self.article, self.ignored = [], set(), 0, 0, 0
        self.feed(file.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        self.anchors.update(attributes[name] for name in ("id", "name") if attributes.get(name))
        self.links += [attributes[name] for name in ("href", "src") if attributes.get(name)]
        self.article += tag == "article"
        self.ignored += tag in ("script", "style")

    def handle_endtag(self, tag):
        self.article -= tag == "article"
        self.ignored -= tag in ("script", "style")

    def handle_data(self, data):
        if self.article and not self.ignored:
            self.words += len(data.split())


def check_files(site):
    pages = {file.resolve(): Page(file) for file in site.rglob("*.html")}
    count = 0
    for file, page in pages.items():
        name = file.relative_to(site.resolve())
        expect(page.words >= 5 or name.name == "search.html", f"{name}: empty")
        for link in page.links:
            parts = urllib.parse.urlsplit(link)
            if parts.scheme or parts.netloc:
                continue
            count += 1
            target = (file.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else file
            expect(target.is_file(), f"{name}: dead link: {link}")
            if parts.fragment and target in pages:
                expect(urllib.parse.unquote(parts.fragment) in pages[target].anchors, f"{name}: no such place: {link}")
    print(f"{len(pages)} pages, {count} links")
    return sorted(file.relative_to(site.resolve()).as_posix() for file in pages)


class Server(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        pass


class Reader:
    def __init__(self, site):
        options = webdriver.ChromeOptions()
        for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Server, directory=str(site)))
        server.handle_error = lambda *_: None  # the browser leaves when it has seen enough
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.site = f"http://127.0.0.1:{server.server_port}"

    def screen(self, width, height, scheme="light"):
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 600})
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": scheme}]})

    def open(self, page):
        self.page = page
        self.browser.get(f"{self.site}/{page}")

    def texts(self, selector):
        """What a reader sees of the elements."""
        return [element.text for element in self.browser.find_elements(By.CSS_SELECTOR, selector)
                if element.is_displayed()]

    def expect(self, condition, complaint):
        expect(condition, f"{self.page}: {complaint}")


def check_copy(reader):
    rows = reader.texts("table.throws tbody tr")
    reader.expect(len(rows) >= 10, f"{len(rows)} exceptions are listed")
    reader.expect(any(row.startswith("FileExistsError") and row.rstrip().endswith("to") for row in rows),
                  "no row of FileExistsError with its path")
    reader.expect(sum("copy(" in text for text in reader.texts("dt.sig")) >= 4, "a signature is missing")
    reader.expect(any("copy_option::recursive" in text for text in reader.texts("div.highlight-cpp")), "no example")
    reader.expect(reader.texts("div.highlight-cpp span"), "an example without colours")
    reader.expect(any("Copies" in text for text in reader.texts("p.more + ul a")), "no link to the page that explains it")


def check_front(reader):
    reader.expect(reader.texts("h1")[:1] == ["ko::filesystem"], "no heading")
    links = [link.get_attribute("href") for link in reader.browser.find_elements(By.CSS_SELECTOR, "article a")]
    for target in ("operations/copy.html", "reference/upath.html", "docs/errors.html"):
        reader.expect(any(link and target in link for link in links), f"no link to {target}")


def check_upath(reader):
    names = " ".join(reader.texts("dt.sig .sig-name"))
    for name in ("upath", "parent_path", "replace_extension", "operator/="):
        reader.expect(name in names, f"{name} is missing")


def check_errors(reader):
    rows = reader.texts("article table tbody tr")
    reader.expect(any("SystemError" in row and "13" in row for row in rows), "no row of SystemError")
    reader.expect(reader.texts("div.highlight-cpp"), "no code")


START = {"index.html": check_front, "operations/copy.html": check_copy, "reference/upath.html": check_upath,
         "docs/errors.html": check_errors}


# Nothing may be beyond the edge, unless a part of the article can be scrolled to show it.
CUT_OFF = """
    const scrolls = e => e.tagName != 'ARTICLE' &&
        (/auto|scroll/.test(getComputedStyle(e).overflowX) || scrolls(e.parentElement));
    return [...document.querySelectorAll('article *')].filter(e => e.getClientRects().length &&
        e.getBoundingClientRect().right > arguments[0] + 1 && !scrolls(e.parentElement))
        .map(e => e.outerHTML.slice(0, 100))
"""


def check_page(reader, page, pictures):
    reader.open(page)
    for screen, size in SCREENS.items():
        reader.screen(*size)
        width = reader.browser.execute_script("return document.documentElement.scrollWidth")
        reader.expect(width <= size[0], f"{width} pixels on a screen of {size[0]}")
        cut = reader.browser.execute_script(CUT_OFF, size[0])
        reader.expect(not cut, f"cut off on a screen of {size[0]}: {cut[:1]}")
        if page in START:
            START[page](reader)
            reader.expect(screen == "narrow" or "Errors" in reader.texts(".sidebar-tree a"), "no pages at the side")
        for scheme in ("light", "dark") if pictures and page in START else ():
            reader.screen(*size, scheme)
            reader.browser.save_screenshot(str(pictures / f"{pathlib.Path(page).stem}-{screen}-{scheme}.png"))


def check_screens(site, pages, pictures):
    reader = Reader(site)
    if pictures:
        pictures.mkdir(parents=True, exist_ok=True)
    for page in pages:
        check_page(reader, page, pictures)
    reader.screen(*SCREENS["wide"], "dark")
    reader.open("index.html")
    colour = reader.browser.execute_script("return getComputedStyle(document.body).backgroundColor")
    reader.expect(max(map(int, colour[4:-1].split(","))) < 64, f"not dark on a dark screen: {colour}")
    reader.open("search.html?q=remove_all")
    WebDriverWait(reader.browser, 30).until(lambda _: "operations/remove_all.html" in reader.browser.page_source)
    severe = [entry["message"] for entry in reader.browser.get_log("browser")
              if entry["level"] == "SEVERE" and "/favicon.ico" not in entry["message"]]
    expect(not severe, f"a script complains, or finds nothing: {severe[:2]}")
    reader.browser.quit()


if __name__ == "__main__":
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    folder = pathlib.Path(sys.argv[1])
    check_screens(folder, check_files(folder), pathlib.Path(sys.argv[2]) if len(sys.argv) == 3 else None)
    if complaints:
        sys.exit("\n".join(complaints))
    print("no complaints, on a wide and on a narrow screen")
