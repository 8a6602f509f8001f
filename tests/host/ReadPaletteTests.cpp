// Palette files of every kind, written out byte by byte.
#include "Problem.h"
#include "ReadPalette.h"
#include "TemporaryFolder.h"
#include "WritePalette.h"

#include <gtest/gtest.h>

using namespace gif89;
using namespace std::string_literals;

namespace {

/// The colours as rrggbb with blanks between, or the sentence of a refusal.
std::string Read(const std::string& content, const std::string& name = "palette") {
    const TemporaryFolder folder;
    try {
        std::string list;
        for (const Color& color : ReadPaletteFile(folder.Write(name, content))) {
            char digits[8];
            std::snprintf(digits, sizeof digits, "%06x ", color.Packed());
            list += digits;
        }
        return list;
    } catch (const Problem& problem) {
        return problem.what();
    }
}

std::string Repeat(const std::string& part, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += part;
    return all;
}

const std::string kHalf = "\x3f\0\0\0"s, kOne = "\x3f\x80\0\0"s, kZero = "\0\0\0\0"s,
                  kNan = "\x7f\xc0\0\0"s, kAse = "ASEF\0\1\0\0"s, kRiff = "RIFF\x24\0\0\0PAL "s,
                  kPam = "P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nENDHDR\n";

std::string AseColor(const std::string& model, const std::string& numbers) {
    const std::string block = "\0\2\0A\0\0"s + model + numbers + "\0\2"s;
    return "\0\1\0\0\0"s + static_cast<char>(block.size()) + block;
}

} // namespace

TEST(ReadPalette, TellsEveryKindByItsContent) {
    const std::string ramp = Repeat("\1\2\3\xfd"s, 192); // 768 bytes
    const std::string first = "010203 fd0102 03fd01 0203fd ";
    const struct {
        std::string file, want, name = "palette";
    } cases[] = {
        {"GIMP Palette\r\nName: a\nColumns: 4\n#\n\n255  0\t1 red\n 0 0 0", "ff0001 000000 "},
        {"\xEF\xBB\xBFGIMP Palette\n1 2 3 4\n", "010203 "},
        {"JASC-PAL\r\n0100\r\n2\r\n1 2 3\r\n255 0 9\r\n\r\n", "010203 ff0009 "},
        {"ff0000\n#00FF00, 0000ff;x\n\r\n#ff0000", "ff0000 00ff00 0000ff ff0000 "},
        {";paint.net Palette File\n; \xC3\xA4\nFF010203\n00FFFEFD\n", "010203 fffefd "},
        {kAse + "\0\0\0\4\xC0\1\0\0\0\4\0\1\0\0"s + AseColor("RGB ", kOne + kHalf + kNan) +
             AseColor("Gray", kHalf) + AseColor("CMYK", kZero + kHalf + kOne + kHalf),
         "ff8000 808080 804000 "},
        {"\0\1\0\3\0\0\xFF\xFF\x80\x80\0\1\0\0\0\1\xAA\xAA\xFF\xFF\xFF\xFF\0\0\0\2\xFF\xFF\0\0\xFF\xFF\xFF\xFF\0\2"s,
         "ff8000 0000ff ff00ff "},
        {"\0\2\0\1\0\0\1\1\2\2\3\3\0\0\0\0\0\2\0a\0\0"s, "010203 "},
        {kRiff + "junk\1\0\0\0xx"s + "data\x0C\0\0\0\0\3\2\0\1\2\3\0\3\2\1\4"s, "010203 030201 "},
        {ramp + "\0\4\0\1"s, first},
        {ramp + "\0\4\xFF\xFF"s, first, "p.act"},
        {ramp, Repeat(first, 64)},
        {"BM" + ramp.substr(2), "424d03 " + Repeat(first, 64).substr(7), "p.ACT"},
        {"P5 3 1 3\n\1\3\1", "000000 555555 aaaaaa ffffff "},
        {kPam + "abc\0ABC\1"s, "414243 "},
    };
    for (const auto& c : cases) EXPECT_EQ(Read(c.file, c.name), c.want) << c.file;
}

TEST(ReadPalette, RefusalsSayWhatIsWrongWhere) {
    const std::string swatch = "\0\0\1\1\2\2\3\3\0\0"s, table = Repeat("\1\2\3"s, 256);
    std::string different;
    for (int i = 0; i < 257; ++i) different += {char(i), char(i >> 8), 'b'};
    const struct {
        std::string file, want;
    } cases[] = {
        {"", "is empty"},
        {"102030\n#01020304", "line 2 is \"#01020304\"; a colour of six hexadecimal digits is"},
        {"RIFF\1", "is neither a palette nor a picture of a known kind"},
        {";nothing\n", "is a hexadecimal palette without a colour; 1 to 256 are expected"},
        {Repeat("1a2b3c ", 257), "is a hexadecimal palette of more than 256 colours"},
        {Repeat("ff000a\n", 109) + "11223", "line 110 is \"11223\""}, // 768 bytes, but a text
        {"GIMP Palette\n\n1 2 3\n1 256 3 x\n", "line 4 is \"1 256 3 x\"; red, green and blue of 0"},
        {"JASC-PAL\n0100\n2\n1 2 3\n", "line 5 is \"\"; red, green and blue"},
        {"JASC-PAL\n0100\n1\n1 2 3\n4 5 6", "line 5 is \"4 5 6\"; nothing more is"},
        {kAse + "\0\0\0\2"s + AseColor("RGB ", kOne + kOne + kOne), "byte 42 within a block"},
        {kAse + "\0\0\0\1"s + AseColor("RGB ", kOne), "ends at byte 34 within a swatch"},
        {kAse + "\0\0\0\1"s + AseColor("LAB ", kOne + kOne + kOne), "swatch 1 is in Lab; RGB"},
        {"\0\1\0\2"s + swatch, "an ACO swatch file: it ends at byte 14 within a swatch"},
        {"\0\1\0\1\0\7"s + swatch, "swatch 1 is in colour space 7; 0 (RGB), 1 (HSB) or 2 (CMYK)"},
        {"\0\2\0\1"s + swatch + "\xFF\xFF\xFF\xFF"s, "ends at byte 18 within the name of a swatch"},
        {table + "\1\1\0\0"s, "its count at byte 768 is 257; 1 to 256 is expected"},
        {kRiff + "data\x0C\0\0\0\0\3\2\0\1\2\3"s, "ends at byte 27 within its colours"},
        {"P6 257 1 255\n" + different, "is a picture of more than 256 colours"},
        {kPam + "abc\0ABC\0"s, "is a picture without a pixel that can be seen"},
    };
    for (const auto& c : cases) {
        const std::string got = Read(c.file);
        EXPECT_NE(got.find(c.want), std::string::npos) << c.file << "\n" << got;
    }
}

TEST(WritePalette, EveryFormatIsReadBack) {
    using enum PaletteFormat;
    const TemporaryFolder folder;
    for (const unsigned size : {1U, 2U, 255U, 256U})
        for (const auto format : {gpl, hex, jasc, act}) {
            Palette palette(size); // with black more than once, and unused entries
            for (unsigned i = 0; i < size; ++i) palette[i] = Color::Unpack(i % 200 * 0x1F3D7);
            const std::string file = PaletteText(format, palette, "two\nlines");
            EXPECT_EQ(ReadPaletteFile(folder.Write("p", file)), palette) << size << file;
        }
    EXPECT_EQ(PaletteText(gpl, {{1, 20, 255}}, "a\nb"), "GIMP Palette\nName: ab\n#\n  1  20 255\n");
}
