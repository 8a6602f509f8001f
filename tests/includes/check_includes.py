#!/usr/bin/env python3
"""Holds the includes of the sources against cmake/folders.txt.

    check_includes.py [FOLDER]    the project's folder; this script's own when left out

Says nothing and returns 0 when every source includes headers of its own folder and of those that its
row allows only, every row names folders above it alone, and no files include each other in a circle.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parents[2])
faults = []


def read_rows():
    """The folders in their order, each with those that it may use; no arrow goes up."""
    rows = {}
    for line in (ROOT / "cmake/folders.txt").read_text().splitlines():
        folder, colon, used = line.partition(":")
        if line.startswith("#") or not colon:
            continue
        faults.extend(f"cmake/folders.txt: {folder} may use {each}, which does not stand above it"
                      for each in used.split() if each not in rows)
        rows[folder] = set(used.split()) | {folder}
    return rows


def find_circle(arrows):
    """The files between which circles run: takes away what uses none of the others, or is used by
    none of them, until no more goes."""
    while True:
        used = set().union(*arrows.values())
        rest = {file: uses & arrows.keys() for file, uses in arrows.items()
                if file in used and uses & arrows.keys()}
        if len(rest) == len(arrows):
            return sorted(rest)
        arrows = rest


def main():
    rows = read_rows()
    sources = {path: folder for folder in rows for path in (ROOT / folder).rglob("*")
               if path.suffix in (".cpp", ".h")}
    owners = {path.name: (path, folder) for path, folder in sources.items() if path.suffix == ".h"}
    arrows = {}  # a header and the source of its name are one file here
    for path, folder in sources.items():
        used = arrows.setdefault(path.with_suffix(""), set())
        for name in re.findall(r'^#include "(.+)"', path.read_text(), re.MULTILINE):
            header, owner = owners.get(name, (None, None))
            if owner not in rows[folder]:
                faults.append(f"{path.relative_to(ROOT)} includes {name} of {owner or 'no folder'}, "
                              f"which {folder} may not use")
            elif header.with_suffix("") != path.with_suffix(""):
                used.add(header.with_suffix(""))
    if circle := find_circle(arrows):
        faults.append("in a circle: " + ", ".join(str(each.relative_to(ROOT)) for each in circle))
    print("\n".join(faults), file=sys.stderr, end="\n" if faults else "")
    return bool(faults)


sys.exit(main())
