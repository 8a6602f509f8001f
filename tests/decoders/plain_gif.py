"""Decodes a GIF89a file of one image as plainly as the format's description puts it, and refuses
whatever that description does not allow. It knows nothing of the program whose files it judges."""

import dataclasses

STARTS_AND_STEPS = ((0, 8), (4, 8), (2, 4), (1, 2))  # of the four passes of an interlaced image


class Broken(Exception):
    """The file is no GIF89a file of one image that covers its screen."""


@dataclasses.dataclass
class Gif:
    columns: int
    rows: int
    table: bytes  # red, green and blue of each entry
    transparent: int | None  # an index
    interlaced: bool
    comment: bytes | None
    indices: bytes  # rows from top to bottom

    def rgba(self):
        """Four bytes a pixel; four zeros where the image is transparent."""
        entries = [self.table[i : i + 3] + b"\xff" for i in range(0, len(self.table), 3)]
        if self.transparent is not None:
            entries[self.transparent] = bytes(4)
        return b"".join([entries[index] for index in self.indices])


class Reader:
    def __init__(self, data):
        self.data = data
        self.at = 0

    def take(self, count):
        self.at += count
        if self.at > len(self.data):
            raise Broken("it ends early")
        return self.data[self.at - count : self.at]

    def byte(self):
        return self.take(1)[0]

    def word(self):
        return int.from_bytes(self.take(2), "little")

    def sub_blocks(self):
        blocks = []
        while size := self.byte():
            blocks.append(self.take(size))
        return b"".join(blocks)


def expect(condition, sentence):
    if not condition:
        raise Broken(sentence)


def decode_gif(data):
    reader = Reader(data)
    expect(reader.take(6) == b"GIF89a", "the signature is another one")
    columns, rows, flags = reader.word(), reader.word(), reader.byte()
    expect(flags & 0x80, "there is no global colour table")
    reader.byte()  # background index, for the parts of a screen that no image covers
    expect(reader.byte() == 0, "an aspect ratio is given")
    table = reader.take(3 << (flags & 7) + 1)

    comment = transparent = None
    while (introducer := reader.byte()) == 0x21:
        label, content = reader.byte(), reader.sub_blocks()
        if label == 0xFE:
            expect(comment is None, "there are two comments")
            comment = content
        else:
            expect(label == 0xF9 and len(content) == 4, f"there is an extension {label}")
            transparent = content[3] if content[0] & 1 else None
    expect(introducer == 0x2C, f"a block starts with {introducer}")
    frame = [reader.word() for _ in range(4)]
    expect(frame == [0, 0, columns, rows], f"the image lies at {frame}")
    flags = reader.byte()
    expect(flags & 0x80 == 0, "there is a local colour table")
    interlaced = bool(flags & 0x40)
    indices = expand(reader.byte(), reader.sub_blocks(), columns * rows)
    expect(reader.byte() == 0x3B and reader.at == len(data), "something follows the image")
    highest = max(max(indices), transparent or 0)
    expect(highest < len(table) // 3, f"index {highest} lies above the table")
    if interlaced:
        indices = in_order(indices, columns, rows)
    return Gif(columns, rows, table, transparent, interlaced, comment, indices)


def expand(root_size, data, pixels):
    """The indices behind LZW codes, in the order of the file."""
    clear, end = 1 << root_size, (1 << root_size) + 1
    roots = [bytes([value]) for value in range(clear)] + [b"", b""]
    strings, width, before = roots, root_size + 1, None
    out, count = [], 0
    at = bits = held = 0
    while True:
        while held < width:
            expect(at < len(data), "there is no end code")
            bits |= data[at] << held
            held += 8
            at += 1
        code = bits & (1 << width) - 1
        bits >>= width
        held -= width
        expect(code == clear or strings is not roots, "no clear code comes first")
        if code == clear:
            strings, width, before = list(roots), root_size + 1, None
            continue
        if code == end:
            break
        expect(code < (clear if before is None else len(strings) + 1), f"code {code} is impossible")
        string = strings[code] if code < len(strings) else before + before[:1]
        if before is not None and len(strings) < 4096:
            strings.append(before + string[:1])
            if len(strings) == 1 << width and width < 12:
                width += 1
        before = string
        out.append(string)
        count += len(string)
    expect(at == len(data) and bits == 0, "data follows the end code")
    expect(count == pixels, f"there are {count} pixels instead of {pixels}")
    return b"".join(out)


def in_order(stored, columns, rows):
    """The rows of an interlaced image from top to bottom."""
    lines = [b""] * rows
    at = 0
    for start, step in STARTS_AND_STEPS:
        for row in range(start, rows, step):
            lines[row] = stored[at : at + columns]
            at += columns
    return b"".join(lines)
