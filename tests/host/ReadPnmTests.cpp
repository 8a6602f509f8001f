// Portable pictures written out in the test, headers as people and programs write them.
#include "PictureFromBytes.h"

#include <gtest/gtest.h>

#include <cmath>

using gif89::Picture;
using namespace std::string_literals;

namespace {

Bytes BytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

std::string Pam(int columns, int depth, int maximum, const std::string& more) {
    return "P7\nWIDTH " + std::to_string(columns) + "\nHEIGHT 1\nDEPTH " + std::to_string(depth) +
           "\nMAXVAL " + std::to_string(maximum) + "\n" + more;
}

} // namespace

TEST(ReadPnm, HeadersAndSamplesOfEveryForm) {
    const std::string remarks = "# x\n\nTUPLTYPE RGB_ALPHA \r\nENDHDR\n";
    const struct {
        std::string file;
        Bytes colors;
        const char* format;
        int bits;
        bool rounded = false;
    } cases[] = {
        {"P5\n#by hand\n2#two\n\t1\n# 7\r255\n\x0A\x20"s, {10, 10, 10, 32, 32, 32}, "PGM", 8},
        {"P5 1 1 255#no blank but a remark\n7"s, {'7', '7', '7'}, "PGM", 8},
        {"P5 2 1 256 \x01\x00\x00\x80"s, {255, 255, 255, 128, 128, 128}, "PGM", 9, true},
        {"P6 1 2 255\nabcdefP6 1 1 255\nxyz"s, {'a', 'b', 'c', 'd', 'e', 'f'}, "PPM", 8},
        {"P6 1 1 65535\n\x01\x01\xFF\xFF\x00\x00"s, {1, 255, 0}, "PPM", 16, false},
        {"P6 1 1 65535\n\xFF\xFF\x00\x00\x80\x00"s, {255, 0, 128}, "PPM", 16, true},
        {Pam(2, 1, 1, "ENDHDR\n\x01"s + "\0"s), {255, 255, 255, 0, 0, 0}, "PAM", 1},
        {Pam(1, 4, 3, remarks + "\x01\x02\x03"s + "\0"s), {85, 170, 255, 0}, "PAM", 2},
        {Pam(1, 4, 3, remarks + "\x01\x02\x03\x03"s), {85, 170, 255}, "PAM", 2},
        {Pam(2, 2, 255, "ENDHDR\nabcd"), {'a', 'a', 'a', 'b', 'c', 'c', 'c', 'd'}, "PAM", 8},
        {Pam(1, 2, 510, "ENDHDR\n\x01\xFE\x00\x02"s), {255, 255, 255, 1}, "PAM", 9, false},
        {Pam(1, 2, 510, "ENDHDR\n\x01\xFE\x00\x03"s), {255, 255, 255, 2}, "PAM", 9, true},
    };
    for (const auto& c : cases) {
        Picture picture = PictureFromBytes(BytesOf(c.file));
        EXPECT_EQ(picture.notes.format, c.format) << c.file;
        EXPECT_EQ(picture.notes.bits, c.bits) << c.file;
        EXPECT_EQ(picture.notes.rounded, c.rounded) << c.file;
        ExpandToRGB(picture);
        EXPECT_EQ(PixelsOf(picture), c.colors) << c.file;
    }
}

TEST(ReadPnm, GreyKeepsItsLevelsAsIndices) {
    const Picture few = PictureFromBytes(BytesOf("P5 3 1 15 \x0F\x00\x07"s));
    EXPECT_EQ(few.colors, 16);
    EXPECT_EQ(PixelsOf(few), (Bytes{15, 0, 7}));
    EXPECT_EQ(few.table.green[7], 7 * 17);
    EXPECT_EQ(PictureFromBytes(BytesOf("P5 1 1 1000 \x00\x00"s)).colors, 256);
}

TEST(ReadPnm, EveryMaximumRoundsToTheNearestLevel) {
    for (const int maximum : {1, 2, 3, 100, 254, 255, 256, 257, 1000, 65534, 65535}) {
        const bool wide = maximum > 255;
        std::string file = "P6 " + std::to_string(std::min(maximum, 9999) + 1) + " 1 " +
                           std::to_string(maximum) + "\n";
        Bytes expected;
        for (int value = 0; value <= std::min(maximum, 9999); ++value)
            for (const int sample : {value, maximum - value, 0}) {
                if (wide) file += static_cast<char>(sample >> 8);
                file += static_cast<char>(sample);
                expected.push_back(
                    static_cast<std::uint8_t>(std::floor(sample * 255.0 / maximum + 0.5)));
            }
        // Half steps may go either way only where maximum is even, and upwards here.
        EXPECT_EQ(PixelsOf(PictureFromBytes(BytesOf(file))), expected) << "maximum " << maximum;
    }
}

TEST(ReadPnm, FurtherPicturesAreCounted) {
    const std::pair<std::string, int> cases[] = {
        {"P5 1 1 255 a\n"s, 1},
        {"P5 1 1 65535 aaP6 2 1 255 aaabbbP5 1 1 255 a"s, 3},
        {"P5 1 1 255 aP6 1 1 255 aa"s, 2}}; // cut
    for (const auto& [file, pictures] : cases) {
        const gif89::InputNotes notes = PictureFromBytes(BytesOf(file)).notes;
        EXPECT_EQ(notes.pictures, pictures) << file;
        EXPECT_EQ(notes.warnings.size(), pictures == 2 ? 1U : 0U) << file;
    }
}

TEST(ReadPnm, RefusalsSayWhy) {
    const std::pair<std::string, const char*> cases[] = {
        {"P5 2 1 9 \x09\x0A"s, "a sample in row 0 is 10, above the largest value of 9"},
        {"P6 2 2 255 abcdefg"s, "its pixels end 5 bytes too early"},
        {"P5 32767 32767 255 "s, "its pixels end 1073676289 bytes too early"},
        {"P5 40000 20 255 "s, "is 40000 x 20 pixels; sides above 32767 cannot be stored"},
        {"P6 99999999999999999999 1 255 "s, "is 1000000000 x 1 pixels; sides above"},
        {"P5 0 1 255 "s, "is 0 x 1 pixels; at least one pixel is needed"},
        {"P5 1 1 65536 aa"s, "its largest sample value is 65536"},
        {"P5 -1 1 255 "s, "its header has no width"},
        {Pam(1, 1, 255, ""), "its header has no ENDHDR"},
        {"P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nENDHDR\na", "its header has no MAXVAL"},
        {Pam(1, 1, 255, "WIDE 1\nENDHDR\na"), "the header line \"WIDE 1\" is not understood"},
        {Pam(1, 5, 255, "ENDHDR\nabcde"), "depth 5, not 1 to 4"},
        {Pam(1, 4, 255, "TUPLTYPE RGB\nENDHDR\nabcd"), "type RGB has a depth of 3, not 4"},
        {Pam(1, 1, 255, std::string(5000, '#')), "a header line is too long"},
    };
    for (const auto& [file, want] : cases) {
        const std::string refusal = RefusalOf(BytesOf(file));
        EXPECT_NE(refusal.find(want), std::string::npos) << file << "\n" << refusal;
    }
}

TEST(ReadPnm, DamageNeverCrashes) {
    for (const std::string& file : {"P6#r\n1 2 300 \x01\x02\x00\x04\0\0\0\0\x01\x02\x01\x03"s,
                                    Pam(1, 2, 15, "TUPLTYPE GRAYSCALE_ALPHA\nENDHDR\n\x01\x02")})
        EXPECT_GT(CountNoticedDamage(BytesOf(file)), 0U);
}
