"""Reads the module's resources with fontTools; exits with 77 where that is not installed."""

import sys

try:
    from fontTools.misc.macRes import ResourceReader
except ImportError:
    print("fontTools is not installed")
    sys.exit(77)

REQUIRED = {
    "STR#": {16002},
    "DLOG": {16010},
    "DITL": {16010},
    "CURS": {4, *range(2000, 2006)},
    "PICT": set(range(500, 516)),
    "PLUT": {3},
}

reader = ResourceReader(sys.argv[1])
for kind, ids in REQUIRED.items():
    found = {resource.id: resource.data for resource in reader.get(kind, [])}
    if missing := ids - found.keys():
        sys.exit(f"{kind}: {sorted(missing)} missing, found {sorted(found)}")
    if empty := [number for number in found if not found[number]]:
        sys.exit(f"{kind}: {empty} without data")

palette = next(resource.data for resource in reader["PLUT"] if resource.id == 3)
if (len(palette), palette[1::256]) != (768, bytes([255, 255, 255])):
    sys.exit(f"PLUT 3: {len(palette)} bytes, entry 1 is {list(palette[1::256])}")
