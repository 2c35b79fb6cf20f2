#!/usr/bin/env python3
"""Checks that each exported operation has its rows in the pages, in the change log and in the tests."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGES = ["README.md", "docs/operations.md", "CHANGELOG.md"]
SWEEP = "tests/fault_sweep_test.cpp"


def read(name):
    return (ROOT / name).read_text(encoding="utf-8")


def main():
    exported = set(re.findall(r"^_ZN2ko10filesystem\d+([a-z_]+)", read("abi/linux-64-libstdc++.txt"), re.M))
    exported -= {"create_shortcut", "get_unc_path", "describe", "detail", "pathname_traits", "to_ptime",
                 "to_time_point"}  # make no call
    listed = {page: re.findall(r"`(\w+)`", read(page)) for page in PAGES}
    sweep = re.findall(r'(?:scenario|list)\(\s*"([^"]*)"', read(SWEEP))
    listed[SWEEP] = re.findall(r"\w+", " ".join(sweep))
    listed["tests/"] = set().union(*(re.findall(r"\w+", file.read_text(encoding="utf-8"))
                                     for file in ROOT.glob("tests/*.cpp") if file != ROOT / SWEEP))
    lacking = [f"{place}: no row for {name}" for place, names in listed.items() for name in sorted(exported - set(names))]
    print("\n".join(lacking) or f"{len(exported)} operations have their rows in {len(listed)} places")
    return 1 if lacking else 0


if __name__ == "__main__":
    sys.exit(main())
