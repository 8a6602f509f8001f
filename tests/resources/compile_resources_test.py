"""The resource compiler: bytes of every type, its refusals, and the module's own resources."""

import itertools
import os
import struct
import sys
import tempfile
import unittest
import zlib

from compile_resources import Problem, read_resources, resource_file

MODULE_RESOURCES, VERSION = sys.argv[1:]


def from_hex(text):
    """Pairs of hexadecimal digits, and texts in single quotes."""
    parts = enumerate(text.split("'"))
    return b"".join(part.encode() if i % 2 else bytes.fromhex(part) for i, part in parts)


def write_png(path, rows, kind=2):
    """Rows of three bytes a pixel, each filtered in another way."""
    def predict(how, a, b, c):
        near = (abs(b - c), abs(a - c), abs(a + b - 2 * c))
        return (0, a, b, (a + b) // 2, (a, b, c)[near.index(min(near))])[how]
    above, filtered = bytes(len(rows[0]) + 3), b""
    for y, row in enumerate(bytes(3) + row for row in rows):
        how = y % 5
        filtered += bytes([how])
        filtered += bytes(row[i] - predict(how, row[i - 3], above[i], above[i - 3]) & 255
                          for i in range(3, len(row)))
        above = row
    header = struct.pack(">II5B", len(rows[0]) // 3, len(rows), 8, kind, 0, 0, 0)
    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n")
        for chunk in b"IHDR" + header, b"IDAT" + zlib.compress(filtered), b"IEND":
            length, check = struct.pack(">I", len(chunk) - 4), struct.pack(">I", zlib.crc32(chunk))
            file.write(length + chunk + check)


def unpack(packed):
    row = b""
    while packed:
        if packed[0] == 128:
            raise ValueError("128 stands for nothing")
        count, times = (1 + packed[0], 1) if packed[0] < 128 else (1, 257 - packed[0])
        row += packed[1:1 + count] * times
        packed = packed[1 + count:]
    return row


class CompilerTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        os.chdir(folder.name)
        self.addCleanup(os.chdir, "/")

    def read(self, source):
        with open("text.r", "wb") as file:
            file.write(source if isinstance(source, bytes) else source.encode())
        return read_resources(["text.r"], {"VERSION": "1.2"})

    def test_file_is_these_bytes_ordered_by_type_and_id(self):
        header = "00000100 00000118 00000018 00000052"  # offsets and lengths
        data = "00000008 0002 02'Hi' 02C3A9 00000001 FF 00000003 00FFA0"
        index = ("00000000 0000 0000 001C 0052"  # lists of types and names
                 "0001 'STR#' 0000 0012 'data' 0001 001E"  # one and two resources
                 "0080 FFFF 00000000 00000000"
                 "FFFE FFFF 0000000C 00000000 0002 FFFF 00000011 00000000")
        source = """bytes "data" 2 { "00 ff" "A0" } # a comment
                    bytes "data" -2 { "FF" } strings 128 { "Hi" "é" }"""
        self.assertEqual(resource_file(self.read(source)),
                         from_hex(header).ljust(256, b"\0") + from_hex(data + header + index))

    def test_resources_are_laid_out_by_the_book(self):
        resources = self.read("""
            dialog 300 "Title" size 200 100 {1 button "OK" at 10 20 size 80 16
                2 static "v${VERSION} \\"^0\\"" at 0 0 size 1 1 disabled
                3 user at 1 2 size 3 4 disabled
                4 popup 301 at 5 6 size 10 10
                5 edit "" at 0 0 size 1 1
                6 check "A" at 0 0 size 1 1
            }
            alert 400 size 10 20 { }
            menu 301 "M" { "One" "Two" disabled separator "Four" }
            bytes "PICT" 302 { }
            cursor 304 hotspot 3 15 { "#o.............."
            """ + '"................"' * 14 + '"oooooooooooooooo" }')
        expected = {
            ("DLOG", 300): "0000 0000 0064 00C8 0005 0000 0000 00000000 012C 05'Title'",
            ("DITL", 300): "0005 00000000 0014 000A 0024 005A 04 02'OK'"
                           "00000000 0000 0000 0001 0001 88 09'v1.2 \"^0\"' 00"
                           "00000000 0002 0001 0006 0004 80 00"
                           "00000000 0006 0005 0010 000F 07 02 012D"
                           "00000000 0000 0000 0001 0001 10 00"
                           "00000000 0000 0000 0001 0001 05 01'A' 00",
            ("CNTL", 301): "0006 0005 0010 000F 0000 0100 0000 012D 03F0 00000000 00",
            ("ALRT", 400): "0000 0000 0014 000A 0190 5555",
            ("DITL", 400): "FFFF",
            ("MENU", 301): "012D 0000 0000 0000 0000 FFFFFFF3 01'M' 03'One' 00000000"
                           "03'Two' 00000000 01'-' 00000000 04'Four' 00000000 00",
            ("PICT", 302): "",
            ("CURS", 304): "8000" + "0000" * 15 + "C000" + "0000" * 14 + "FFFF 000F 0003"}
        self.assertEqual(resources, {(kind.encode(), number): from_hex(data)
                                     for (kind, number), data in expected.items()})

    def test_refusals_say_where_and_what(self):
        write_png("clear.png", [bytes(6)] * 2, kind=6)
        write_png("wide.png", [bytes(9)] * 2)
        write_png("colors.png", [b"".join(struct.pack(">I", i)[1:] for i in range(257))])
        dialog, longest = 'dialog 1 "T" size 9 9 {\n', "x" * 255
        self.read(f'strings 1 {{ "{longest}" }}')
        for source, reason in (
                (f'strings 1 {{\n"{longest}x" }}', "2: the text has 256 bytes"),
                ("\nfoo 1", "2: foo stands here, expected one of strings, dialog"),
                ("strings 40000 { }", "1: 40000 stands here, expected a resource id from"),
                ("strings 1 { }\nstrings 1 { }", "2: the file has a STR# 1 already (text.r:1)"),
                ('strings 1 { "a\n" }', '1: "a stands here'),
                ('strings 1 { "a"\n', "2: the file ends here"),
                ('strings 1 { "${NAME}" }', "1: ${NAME} stands for nothing"),
                (b"# \xC3\xA9\n# \xC0\xAF", "2: a byte is no part of a character"),
                ("strings 1x { }", "1: 1x stands here"),
                (dialog + "2 user at 0 0 size 1 1 }", "2: the item's number is 2"),
                (dialog + "1 user at 32000 0 size 800 1 }", "2: 800 stands here"),
                (dialog + "1 popup 77 at 0 0 size 1 1 }", "2: the item refers to MENU 77"),
                ('cursor 1 hotspot 0 0 {\n"#" }', '2: the row is "#"'),
                ("cursor 1 hotspot 0 0 { }", "1: the cursor has 0 rows"),
                ('menu 1 "M" {' + '"e"\n' * 31 + "separator }", "32: entry 32 is disabled"),
                ("palette 1 {\ncolor 0 0 0 }", "1: the palette has 1 entries"),
                ('bytes "LONGER" 1 { }', '1: the type is "LONGER"'),
                ('bytes "DATA" 1 { "0" }', "1: the row is no list of bytes"),
                ('picture 1 "no.png" size 1 1', "1: no.png: No such file or directory"),
                ('picture 1\n"clear.png" size 1 1', "2: clear.png cannot be read"),
                ('picture 1 "wide.png" size 1 1', "1: wide.png has 3 x 2 pixels"),
                ('picture 1 "colors.png" size 257 1', "1: colors.png has more than 256 colours")):
            with self.subTest(source=source), self.assertRaises(Problem) as raised:
                self.read(source)
            self.assertTrue(str(raised.exception).startswith("text.r:" + reason), raised.exception)
            self.assertIn(", expected ", str(raised.exception))

    def test_pictures_keep_every_pixel(self):
        # Five rows, one for each filter, of letters that stand for colours.
        drawing = ["aaabcdaad", "abcdefghi", "bbbbbbbbb", "abcabcabc", "iighhhgab"]
        rows = [row * 29 for row in drawing]
        colors = [bytes([31 * i, 255 - 29 * i, i]) for i in range(9)]
        write_png("art.png", [b"".join(colors["abcdefghi".index(c)] for c in row) for row in rows])
        data = self.read('picture 9 "art.png" size 261 5')[b"PICT", 9]
        table = b"".join(struct.pack(">H6B", i, *(level for level in color for _ in "hl"))
                         for i, color in enumerate(colors))
        start = from_hex(
            "0000 0000 0000 0005 0105 0011 02FF 0C00 FFFE 0000 00480000 00480000"
            "0000 0000 0005 0105 00000000 0001 000A 0000 0000 0005 0105"
            "0098 8106 0000 0000 0005 0105 0000 0000 00000000 00480000 00480000"
            "0000 0008 0001 0008 00000000 00000000 00000000 00000000 0000 0008")
        start += table + from_hex("0000 0000 0005 0105" * 2 + "0000")
        self.assertEqual(data[:len(start)], start)
        rest = data[len(start):]
        for row in rows:
            end = 2 + int.from_bytes(rest[:2], "big")
            self.assertEqual(unpack(rest[2:end]), bytes("abcdefghi".index(c) for c in row + "a"))
            rest = rest[end:]
        self.assertIn(rest, (from_hex("00FF"), from_hex("00 00FF")))
        write_png("dot.png", [bytes(3)])  # shorter rows than eight bytes would have to lie unpacked
        self.assertEqual(self.read('picture 9 "dot.png" size 1 1')[b"PICT", 9][54:56], b"\x80\x08")


class ModuleResourcesTest(unittest.TestCase):
    def test_hold_the_fixed_palette_and_the_version(self):
        with open(MODULE_RESOURCES, "rb") as file:
            resources = file.read()
        # Black, a cube counted down in base six, then the multiples of 17 that are none of 51.
        cube = [color for color in itertools.product(range(255, -1, -51), repeat=3) if any(color)]
        ramps = [tuple(step * 17 * channel for channel in channels)
                 for channels in ((1, 0, 0), (0, 1, 0), (0, 0, 1), (1, 1, 1))
                 for step in range(15, 0, -1) if step % 3]
        palette = bytes(itertools.chain(*zip((0, 0, 0), *cube, *ramps)))
        self.assertTrue(struct.pack(">I", 768) + palette in resources, "the fixed palette")
        self.assertTrue(f"Version {VERSION}".encode() in resources, "the version")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
