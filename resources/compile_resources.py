#!/usr/bin/env python3
"""From readable text and artwork to the bytes of one classic resource file.

README.md beside this file shows the language. The same inputs give the same bytes.
"""

import argparse
import os
import re
import struct
import sys
import zlib


class Problem(Exception):
    """A sentence: "file:line: what is wrong, what was expected"."""


def words(*values):
    return b"".join(struct.pack(">H", value & 0xFFFF) for value in values)


def longs(*values):
    return struct.pack(f">{len(values)}I", *values)


def string(text):
    return bytes([len(text.encode())]) + text.encode()


def padded(data):
    return data + bytes(len(data) % 2)


class Text:
    """One resource text, read from front to back; each call refuses what it cannot accept."""

    def __init__(self, path, definitions):
        self.path, self.definitions, self.position = path, definitions, 0
        self.references = []  # of dialog items: type, id, place
        try:
            with open(path, "rb") as file:
                data = file.read()
            self.source = data.decode()
        except OSError as error:
            raise Problem(f"{path}: {error.strerror}, expected a resource text")
        except UnicodeDecodeError as error:
            line = data.count(b"\n", 0, error.start) + 1
            raise Problem(f"{path}:{line}: a byte is no part of a character, expected UTF-8")
        self.take("")

    def here(self):
        return f"{self.path}:{self.source.count(chr(10), 0, self.position) + 1}"

    def take(self, pattern):
        """What the pattern matches here, or None; then goes on to what follows blanks."""
        found = re.compile(pattern).match(self.source, self.position)
        if found:
            blanks = re.compile(r"(?:[ \t\r\n]|#[^\n]*)*")
            self.position = blanks.match(self.source, found.end()).end()
        return found and found.group()

    def refuse(self, expected):
        thing = re.compile(r'"[^"\n]*"?|[\w-]+|.').match(self.source, self.position)
        what = f"{thing.group()} stands here" if thing else "the file ends here"
        raise Problem(f"{self.here()}: {what}, expected {expected}")

    def check(self, condition, problem):
        """Refuses what began at `place`: a statement, or an entry between its braces."""
        if not condition:
            raise Problem(f"{self.place}: {problem}")

    def expect(self, word):
        if not self.take(word + r"\b" if word.isalpha() else word):
            self.refuse(f"'{word}'")

    def choose(self, choices, more=""):
        word = self.take(rf"(?:{'|'.join(choices)})\b")
        return word or self.refuse(f"one of {', '.join(choices)}{more}")

    def number(self, what, least=-32768, most=32767):
        before = self.position
        number = self.take(r"-?[0-9]{1,9}\b")
        if number is None or not least <= int(number) <= most:
            self.position = before
            self.refuse(f"{what} from {least} to {most}")
        return int(number)

    def id(self):
        return self.number("a resource id")

    def text(self, what):
        place = self.here()
        quoted = self.take(r'"(?:[^"\\\n]|\\.)*"') or \
            self.refuse(f"{what} in double quotes, on one line")
        text = re.sub(r'\\.|\$\{[^}]*\}?', lambda match: self.expand(match, place), quoted[1:-1])
        if len(text.encode()) > 255:
            raise Problem(f"{place}: the text has {len(text.encode())} bytes, expected at most 255")
        return text

    def expand(self, match, place):
        meanings = {"\\n": "\n", '\\"': '"', "\\\\": "\\"}
        meanings.update((f"${{{name}}}", text) for name, text in self.definitions.items())
        if match.group() not in meanings:
            raise Problem(f"{place}: {match.group()} stands for nothing, "
                          r'expected \", \\, \n or a ${NAME} that is defined with -D NAME=TEXT')
        return meanings[match.group()]

    def entries(self):
        """Goes once through a loop for each entry between braces."""
        statement = self.place
        self.expect("{")
        while not self.take("}"):
            self.place = self.here()
            yield
        self.place = statement

    def size(self, left=0, top=0):
        self.expect("size")
        width = self.number("a width", 1, 32767 - left)
        height = self.number("a height", 1, 32767 - top)
        return top, left, top + height, left + width

    def bounds(self):
        self.expect("at")
        left, top = self.number("a left side", 0, 32766), self.number("a top side", 0, 32766)
        return self.size(left, top)


# Statements: each is called behind its first word and yields type, id and data of its resources.

def read_strings(text):
    number = text.id()
    strings = [string(text.text("a string or '}'")) for _ in text.entries()]
    text.check(len(strings) <= 32767, "the list is too long, expected 32767 strings at most")
    yield b"STR#", number, words(len(strings)) + b"".join(strings)


def read_dialog(text):
    number, title = text.id(), text.text("a title")
    # Movable and modal, invisible until its owner has set it up, without a close box; then the
    # reference constant and the id of the items.
    yield b"DLOG", number, words(*text.size(), 5, 0, 0, 0, 0, number) + string(title)
    yield from read_items(text, number)


def read_alert(text):
    number = text.id()
    # The id of the items; then four stages, each shown with one beep and item 1 as the default.
    yield b"ALRT", number, words(*text.size(), number, 0x5555)
    yield from read_items(text, number)


ITEMS = {  # code in item lists, and what follows the word: a text, nothing, or an id of that type
    "button": (4, "text"), "check": (5, "text"), "static": (8, "text"), "edit": (16, "text"),
    "user": (0, None), "popup": (7, b"MENU")}


def read_items(text, number):
    count, items = 0, b""
    for count, _ in enumerate(text.entries(), 1):
        stated = text.number("an item number or '}',", 1)
        text.check(stated == count, f"the item's number is {stated}, expected {count}")
        code, payload = ITEMS[text.choose(ITEMS)]
        data = b"\0"
        if payload == "text":
            data = string(text.text("the item's text"))
        elif payload:
            referred = text.id()
            text.references.append((payload, referred, text.place))
            data = b"\2" + words(referred)
        bounds = text.bounds()
        if payload == b"MENU":  # the pop-up's control has the menu's id, and that as its minimum
            visible = 0x0100  # a byte and its filler
            fields = words(*bounds, 0, visible, 0, referred, 1008)
            yield b"CNTL", referred, fields + longs(0) + string("")
        disabled = 128 if text.take(r"disabled\b") else 0
        items += padded(longs(0) + words(*bounds) + bytes([code + disabled]) + data)
    yield b"DITL", number, words(count - 1) + items


def read_menu(text):
    number, title = text.id(), text.text("a title")
    entries, enabled = b"", 0xFFFFFFFF
    for entry, _ in enumerate(text.entries(), 1):
        separator = text.take(r"separator\b")
        entries += string("-" if separator else text.text("'separator', '}' or an entry"))
        entries += longs(0)  # icon, command key, mark, style
        if separator or text.take(r"disabled\b"):
            # One bit each beside the bit of the whole menu.
            text.check(entry < 32, f"entry {entry} is disabled, expected only the first 31 to be")
            enabled &= ~(1 << entry)
    # Width and height are found when it is shown; the definition procedure is the standard one.
    yield b"MENU", number, words(number) + longs(0, 0, enabled) + string(title) + entries + b"\0"


def read_cursor(text):
    number = text.id()
    text.expect("hotspot")
    left, top = text.number("a column", 0, 15), text.number("a row", 0, 15)
    rows = []
    for _ in text.entries():
        rows.append(row := text.text("a row of the cursor or '}'"))
        text.check(re.fullmatch("[#o.]{16}", row),
                   f"the row is \"{row}\", expected 16 characters, each '#', 'o' or '.'")
    text.check(len(rows) == 16, f"the cursor has {len(rows)} rows, expected 16")
    black, opaque = ([sum(1 << 15 - x for x in range(16) if row[x] in inks) for row in rows]
                     for inks in ("#", "#o"))
    yield b"CURS", number, words(*black, *opaque, top, left)


def read_palette(text):
    number, colors = text.id(), []
    for _ in text.entries():
        colors += RULES[text.choose(RULES, " or '}'")](text)
    text.check(len(colors) == 256, f"the palette has {len(colors)} entries, expected 256")
    yield b"PLUT", number, bytes(level for plane in zip(*colors) for level in plane)


def read_levels(text):
    levels = [text.number("a level", 0, 255)]
    while text.take("(?=[-0-9])") is not None:
        levels.append(text.number("a level", 0, 255))
    return levels


def read_color(text):
    return tuple(text.number("a level", 0, 255) for _ in range(3))


def read_cube(text):
    levels = read_levels(text)
    without = read_color(text) if text.take(r"without\b") else None
    cube = ((red, green, blue) for red in levels for green in levels for blue in levels)
    return [color for color in cube if color != without]


def read_ramp(text):
    rising = {"red": (1, 0, 0), "green": (0, 1, 0), "blue": (0, 0, 1), "grey": (1, 1, 1)}
    ramp = rising[text.choose(rising)]
    return [tuple(level * rises for rises in ramp) for level in read_levels(text)]


RULES = {"cube": read_cube, "ramp": read_ramp, "color": lambda text: [read_color(text)]}


def read_bytes(text):
    kind, data = text.text("a type"), b""
    text.check(len(kind.encode()) == 4, f'the type is "{kind}", expected four characters')
    number = text.id()
    for _ in text.entries():
        row = text.text("a row of bytes or '}'").replace(" ", "")
        text.check(re.fullmatch("([0-9A-Fa-f]{2})*", row),
                   "the row is no list of bytes, expected two hexadecimal digits for each")
        data += bytes.fromhex(row)
    yield kind.encode(), number, data


def read_picture(text):
    number, text.place = text.id(), text.here()
    path = os.path.join(os.path.dirname(text.path), text.text("the name of a PNG file"))
    top, left, height, width = text.size()
    try:
        columns, rows = read_png(path)
    except OSError as error:
        text.check(False, f"{path}: {error.strerror}, expected a PNG")
    except (KeyError, ValueError, struct.error, zlib.error):
        text.check(False, f"{path} cannot be read, expected a PNG of 8-bit RGB, not interlaced")
    scale = columns // width
    text.check(1 <= scale <= 8 and (columns, len(rows)) == (scale * width, scale * height),
               f"{path} has {columns} x {len(rows)} pixels, expected {width} x {height} or 2 to 8 "
               "times that")
    colors = list(dict.fromkeys(pixel for row in rows for pixel in row))
    text.check(len(colors) <= 256, f"{path} has more than 256 colours, expected at most 256")
    yield b"PICT", number, picture((top, left, height, width), scale, columns, rows, colors)


STATEMENTS = {
    "strings": read_strings, "dialog": read_dialog, "alert": read_alert, "menu": read_menu,
    "cursor": read_cursor, "picture": read_picture, "palette": read_palette, "bytes": read_bytes}


def read_png(path):
    """The number of columns, and rows of pixels of three bytes. Any error says that it is no PNG of
    the kind that is read."""
    with open(path, "rb") as file:
        data = file.read()
    position, chunks = 8, {b"IDAT": b""}
    while position < len(data):
        length, name = struct.unpack_from(">I4s", data, position)
        content = data[position + 8:position + 8 + length]
        if longs(zlib.crc32(name + content)) != data[position + 8 + length:position + 12 + length]:
            raise ValueError
        chunks[name] = chunks.get(name, b"") + content
        position += 12 + length
    columns, rows, *kind = struct.unpack(">II5B", chunks[b"IHDR"])
    stored = zlib.decompress(chunks[b"IDAT"])
    if kind != [8, 2, 0, 0, 0] or not 0 < max(columns, rows) <= 4096 or \
            len(stored) != rows * (columns * 3 + 1):
        raise ValueError
    above, result = bytes(columns * 3), []
    for start in range(0, len(stored), columns * 3 + 1):
        above = unfilter(stored[start], stored[start + 1:start + 1 + columns * 3], above)
        result.append([above[i:i + 3] for i in range(0, columns * 3, 3)])
    return columns, result


def unfilter(kind, row, above):
    row, above = bytearray(3) + row, bytes(3) + above  # a black pixel before each
    for i in range(3, len(row)):
        left, up, corner = row[i - 3], above[i], above[i - 3]
        nearest = min(left, up, corner, key=lambda value: abs(left + up - corner - value))
        row[i] = row[i] + [0, left, up, (left + up) // 2, nearest][kind] & 0xFF
    return bytes(row[3:])


def picture(frame, scale, columns, rows, colors):
    """A picture of version 2 whose frame is in points and whose one drawing is a packed 8-bit pixel
    map of `scale` pixels a point."""
    row_bytes = max(8, columns + columns % 2)  # shorter rows would have to lie unpacked
    box, resolution = (0, 0, len(rows), columns), 72 * scale << 16  # the latter is 16.16
    index = {color: number for number, color in enumerate(colors)}
    packed = [pack(bytes(index[pixel] for pixel in row).ljust(row_bytes, b"\0")) for row in rows]
    return padded(b"".join([
        words(0, *frame),                              # size, of no use in version 2; frame
        words(0x0011, 0x02FF, 0x0C00, -2, 0),          # version 2; header operation, extended
        longs(resolution, resolution),
        words(*box, 0, 0),
        words(0x0001, 10, *box),                       # clip operation: a rectangle
        words(0x0098, row_bytes | 0x8000, *box),       # packed bits operation: a pixel map
        words(0, 0, 0, 0),                             # version, packing as usual, packed size
        longs(resolution, resolution),
        words(0, 8, 1, 8), longs(0, 0, 0),             # indices of one component of 8 bits
        words(0, 0, 0, len(colors) - 1),               # colour table: seed, flags, last entry
        *(words(index[color], *(level * 0x101 for level in color)) for color in colors),
        words(*box, *box, 0),                          # from, to, mode: copy
        *(struct.pack(">H" if row_bytes > 250 else "B", len(row)) + row for row in packed),
    ])) + words(0x00FF)                                # end operation


def pack(row):
    """Runs of equal bytes and stretches of different ones, of at most 128 bytes each."""
    packed = b""
    while row:
        run = re.match(rb"(?s)(.)\1{0,127}", row).group()
        if len(run) > 1:
            packed += bytes([257 - len(run)]) + run[:1]
        else:
            run = re.match(rb"(?s).(?:(?!(.)\1\1).)*", row[:128]).group()
            packed += bytes([len(run) - 1]) + run
        row = row[len(run):]
    return packed


def read_resources(paths, definitions):
    """The data of each type and id; a dialog may refer to what stands in another text."""
    resources, places, references = {}, {}, []
    for path in paths:
        text = Text(path, definitions)
        while text.position < len(text.source):
            text.place = text.here()
            for kind, number, data in STATEMENTS[text.choose(STATEMENTS)](text):
                text.check((kind, number) not in resources,
                           f"the file has a {kind.decode()} {number} already "
                           f"({places.get((kind, number))}), expected another id")
                resources[kind, number], places[kind, number] = data, text.place
        references += text.references
    for kind, number, place in references:
        if (kind, number) not in resources:
            raise Problem(f"{place}: the item refers to {kind.decode()} {number}, "
                          "expected one in these files")
    return resources


def resource_file(resources):
    """The classic layout, ordered by type and id: header, data, map."""
    data, lists = b"", {}
    for (kind, number), content in sorted(resources.items()):
        # The reference: id, no name, no attributes, 24 bits of data offset, handle in memory.
        lists[kind] = lists.get(kind, b"") + words(number, -1) + longs(len(data), 0)
        data += longs(len(content)) + content
    types, references = words(len(lists) - 1), b""
    for kind, entries in lists.items():
        types += kind + words(len(entries) // 12 - 1, 2 + 8 * len(lists) + len(references))
        references += entries
    map_length = 28 + len(types) + len(references)
    if len(data) > 0xFFFFFF or map_length > 0xFFFF:
        raise Problem("too much for one file, expected less than 16 MB and 5000 resources")
    header = longs(256, 256 + len(data), len(data), map_length)
    # The map opens with a copy of the header; then what counts in memory, and where the lists of
    # types and of names lie. There are no names.
    return (header.ljust(256, b"\0") + data + header + words(0, 0, 0, 0, 28, map_length)
            + types + references)


def definition(argument):
    name, equals, text = argument.partition("=")
    if not name or not equals:
        raise ValueError
    return name, text.encode().decode()  # refuses what is no UTF-8


def main():
    parser = argparse.ArgumentParser(description="Compiles resource texts into one resource file.")
    parser.add_argument("-D", action="append", type=definition, default=[], metavar="NAME=TEXT")
    parser.add_argument("output")
    parser.add_argument("inputs", nargs="+")
    arguments = parser.parse_args()
    try:
        content = resource_file(read_resources(arguments.inputs, dict(arguments.D)))
        with open(arguments.output, "wb") as file:
            file.write(content)
    except Problem as problem:
        sys.exit(str(problem))
    except OSError as error:
        sys.exit(f"{arguments.output}: {error.strerror}, expected a file that can be written")


if __name__ == "__main__":
    main()
