"""Draws pictures of every kind, and says what gif89 is to make of them: a few hundred cases from
one seed. Where nothing may be lost, a case carries the pixels that the file must show."""

import dataclasses
import random
import struct
import zlib

SIZES = ((1, 1), (2, 1), (1, 2), (5, 3), (4, 4), (3, 5), (8, 8), (7, 9), (17, 16), (300, 1),
         (1, 300), (256, 2), (3, 255), (33, 31), (64, 64), (100, 37), (37, 100), (320, 5), (5, 320),
         (150, 99), (256, 256), (301, 203))  # columns, rows
COLORS = (2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 33, 64, 65, 100, 127, 128, 129, 200, 254, 255, 256)
COMMENTS = (None, b"x", b"c" * 254, b"c" * 255, b"c" * 256, b"c" * 510, b"d" * 1000,
            "Größe: 100 %, «naïve» \\n".encode() * 9, bytes(range(1, 256)) * 3)
CLEAR = bytes(4)


@dataclasses.dataclass
class Case:
    files: dict  # name: bytes; the first is the picture
    options: list
    most_colors: int  # of the table, a transparent entry included
    rgba: bytes | None = None  # what the file must show; None where colours are reduced
    indices: bytes | None = None  # of an indexed picture
    table: list | None = None
    name: str = ""
    interlaced: bool = True
    comment: bytes | None = None


def make_cases(seed):
    chance = random.Random(seed)
    cases = []
    for columns, rows in SIZES:
        for draw in KINDS:
            case = draw(chance, columns, rows, chance.choice(COLORS))
            case.name = f"{len(cases):03}-{draw.__name__}-{columns}x{rows}"
            case.interlaced = chance.random() < 0.6
            case.options += [] if case.interlaced else ["--no-interlace"]
            case.comment = chance.choice(COMMENTS)
            case.options += ["--comment", case.comment] if case.comment else []
            cases.append(case)
    return cases


def ppm(columns, rows, pixels):
    return {"in.ppm": b"P6 %d %d 255\n" % (columns, rows) + b"".join(pixels)}


def pgm(columns, rows, levels, most=255):
    return b"P5 %d %d %d\n" % (columns, rows, most) + bytes(levels)


def pam(columns, rows, pixels):
    head = b"P7\nWIDTH %d\nHEIGHT %d\nDEPTH 4\nMAXVAL 255\nENDHDR\n" % (columns, rows)
    return {"in.pam": head + b"".join(pixels)}


def png(columns, rows, table, indices, opacities=b""):
    def chunk(name, content):
        check = struct.pack(">I", zlib.crc32(name + content))
        return struct.pack(">I", len(content)) + name + content + check

    lines = b"".join(b"\0" + indices[y * columns : (y + 1) * columns] for y in range(rows))
    form = struct.pack(">IIBBBBB", columns, rows, 8, 3, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", form)
            + chunk(b"PLTE", b"".join(table)) + (chunk(b"tRNS", opacities) if opacities else b"")
            + chunk(b"IDAT", zlib.compress(lines)) + chunk(b"IEND", b""))


def soft_pixels(chance, columns, rows):
    """Slopes of every colour with some noise."""
    a, b, c, d, noise = (chance.randrange(1, 9) for _ in range(5))
    return [bytes(((x * a + y * b) & 255, (x * y // c + chance.randrange(noise)) & 255, y * d & 255))
            for y in range(rows) for x in range(columns)]


def different_colors(chance, count):
    return [value.to_bytes(3, "big") for value in chance.sample(range(1 << 24), count)]


def spread(chance, count, columns, rows):
    """Numbers below `count`, noise or patches, each number at least once where there is room."""
    pixels = columns * rows
    if chance.random() < 0.5:
        numbers = [chance.randrange(count) for _ in range(pixels)]
    else:
        side = chance.randrange(1, 20)
        numbers = [(x // side * 7 + y // side * 3) % count
                   for y in range(rows) for x in range(columns)]
    numbers[: min(count, pixels)] = range(min(count, pixels))
    return bytes(numbers)


def blocks(chance, columns, rows):
    """True in patches."""
    side = chance.randrange(1, 12)
    return [(x // side + y // side) % 3 == 0 for y in range(rows) for x in range(columns)]


def opaque(pixels):
    return [pixel + b"\xff" for pixel in pixels]


def shown(table, indices):
    """The picture behind indices; the table's entries have four bytes."""
    return b"".join([table[index] for index in indices])


def with_holes(pixels, holes):
    return b"".join(CLEAR if hole else pixel + b"\xff" for pixel, hole in zip(pixels, holes))


def adaptive(chance, columns, rows, colors):
    return Case(ppm(columns, rows, soft_pixels(chance, columns, rows)),
                ["--mode", "rgb", "-p", "adaptive", "-n", str(colors)], colors)


def exact(chance, columns, rows, colors):
    # Black and white are always in an exact palette, and its colours are told apart by five bits.
    table = [bytes((cell >> 10 << 3 | 4, cell >> 2 & 0xF8 | 4, cell << 3 & 0xF8 | 4))
             for cell in chance.sample(range(1 << 15), max(1, colors - 2))]
    pixels = [table[i] for i in spread(chance, len(table), columns, rows)]
    return Case(ppm(columns, rows, pixels), ["--mode", "rgb", "-p", "exact"],
                len(table) + 2, b"".join(opaque(pixels)))


def soft_edges(chance, columns, rows, colors):
    colors = min(colors, 255)
    pixels = [pixel + bytes([chance.choice((0, 40, 200, 255))])
              for pixel in soft_pixels(chance, columns, rows)]
    return Case(pam(columns, rows, pixels),
                ["--mode", "rgb", "-n", str(colors), "--matte", "#336699"], colors + 1)


def few_colors(chance, columns, rows, colors):
    table = different_colors(chance, colors)
    pixels = [table[i] for i in spread(chance, colors, columns, rows)]
    return Case(ppm(columns, rows, pixels), [], colors, b"".join(opaque(pixels)))


def cut_out(chance, columns, rows, colors):
    table = different_colors(chance, min(colors, 255))
    pixels = [table[i] for i in spread(chance, len(table), columns, rows)]
    holes = blocks(chance, columns, rows)
    wanted = with_holes(pixels, holes)
    stored = [pixel + (b"\x30" if hole else b"\xd0") for pixel, hole in zip(pixels, holes)]
    return Case(pam(columns, rows, stored), ["--alpha-threshold", "128"],
                len(table) + 1, wanted)


def grey(chance, columns, rows, colors):
    levels = spread(chance, colors, columns, rows)
    most = colors - 1
    table = [bytes([(2 * 255 * i + most) // (2 * most)] * 3) for i in range(colors)]
    return Case({"in.pgm": pgm(columns, rows, levels, most)}, [], colors,
                shown(opaque(table), levels), levels, table)


def indexed(chance, columns, rows, colors):
    used = chance.randrange(1, colors + 1)
    indices = spread(chance, used, columns, rows)
    # No black entry, since those above the last one used would be left out.
    table = [bytes(chance.randrange(1, 256) for _ in range(3)) for _ in range(colors)]
    return Case({"in.png": png(columns, rows, table, indices)}, [], colors,
                shown(opaque(table), indices), indices, table)


def hidden_entry(chance, columns, rows, colors):
    case = indexed(chance, columns, rows, colors)
    hidden = chance.choice(case.indices)
    entries = opaque(case.table)
    entries[hidden] = CLEAR
    case.options = ["--transparent", str(hidden), "--matte", "#010203"]
    case.rgba = shown(entries, case.indices)
    # With transparency, entries in use move to the front and all others are black.
    case.table[hidden] = bytes((1, 2, 3))
    used = sorted(set(case.indices))
    case.indices = bytes(used.index(index) for index in case.indices)
    case.table = [case.table[index] for index in used] + [bytes(3)] * (colors - len(used))
    return case


def clear_entries(chance, columns, rows, colors):
    case = indexed(chance, columns, rows, min(colors, 255))
    opacities = bytes(chance.choice((0, 255, 255)) for _ in case.table)
    case.files["in.png"] = png(columns, rows, case.table, case.indices, opacities)
    entries = [entry if seen else CLEAR for entry, seen in zip(opaque(case.table), opacities)]
    case.rgba = shown(entries, case.indices)
    case.indices = case.table = None  # several entries become one
    case.most_colors += 1
    return case


def hidden_by_channel(chance, columns, rows, colors):
    case = indexed(chance, columns, rows, min(colors, 255))
    holes = blocks(chance, columns, rows)
    inverted = chance.random() < 0.5
    levels = [chance.choice((0, 127) if hole != inverted else (128, 255)) for hole in holes]
    case.files["cut.pgm"] = pgm(columns, rows, levels)
    case.options = ["--channel", "cut=cut.pgm", "--alpha", "cut"] + ["--invert"] * inverted
    case.rgba = with_holes([case.table[index] for index in case.indices], holes)
    case.indices = case.table = None  # the hidden pixels have another index
    case.most_colors += 1
    return case


KINDS = (adaptive, exact, soft_edges, few_colors, cut_out, grey, indexed, hidden_entry,
         clear_entries, hidden_by_channel)
