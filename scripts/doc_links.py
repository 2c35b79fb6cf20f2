#!/usr/bin/env python3
"""Checks the links between the pages, and those to headings."""
import re
import sys

from doc_examples import PAGES, ROOT


def anchors(page):
    """The valid targets of links to headings of `page`."""
    headings = re.findall(r"^#+ +(.*)$", page.read_text(encoding="utf-8"), re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def main():
    complaints = links = 0
    for page in PAGES:
        text = re.sub(r"^```.*?^```", "", page.read_text(encoding="utf-8"), flags=re.M | re.S)
        for target in re.findall(r"\]\(([^)\s]+)\)", text):
            if re.match(r"[a-z]+:", target):
                continue
            links += 1
            file, _, anchor = target.partition("#")
            other = (page.parent / file).resolve() if file else page
            if not other.exists() or (anchor and anchor not in anchors(other)):
                complaints += 1
                print(f"{page.relative_to(ROOT)}: broken link: {target}")
    if not complaints:
        print(f"{links} links are valid")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
