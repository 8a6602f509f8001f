// BMP pictures written out byte by byte.
#include "MakeProfile.h"
#include "PictureFromBytes.h"

#include <gtest/gtest.h>

using gif89::Picture;

namespace {

struct BmpForm {
    int columns = 1, rows = 1; // rows below 0: top row first
    int bits = 24;
    std::uint32_t compression = 0;        // 1 and 2: runs of 8 and 4 bits; 3: masks
    std::uint32_t colors = 0;             // as the header says
    std::vector<std::uint32_t> more = {}; // what the header has after its first 40 bytes, or masks
    std::size_t infoBytes = 40;
    Bytes table = {}; // blue, green, red, 0
    Bytes profile = {};
};

Bytes MakeBmp(const BmpForm& form, const Bytes& pixels) {
    const auto side = [&form](int value) {
        return LE(static_cast<std::uint32_t>(value), form.infoBytes == 12 ? 2 : 4);
    };
    Bytes info = Join({LE(form.infoBytes, 4), side(form.columns), side(form.rows), LE(1, 2),
                       LE(static_cast<std::size_t>(form.bits), 2)});
    if (form.infoBytes > 12)
        info = Join({info, LE(form.compression, 4), LE(pixels.size(), 4), LE(0, 4), LE(0, 4),
                     LE(form.colors, 4), LE(0, 4)});
    for (const std::uint32_t field : form.more) info = Join({info, LE(field, 4)});
    info.resize(std::max(info.size(), form.infoBytes));
    if (!form.profile.empty()) {
        const Bytes where = LE(info.size() + form.table.size() + pixels.size(), 4);
        std::copy(where.begin(), where.end(), info.begin() + 112);
    }
    const std::size_t first = 14 + info.size() + form.table.size();
    return Join({{'B', 'M'},
                 LE(first + pixels.size(), 4),
                 LE(0, 4),
                 LE(first, 4),
                 info,
                 form.table,
                 pixels,
                 form.profile});
}

const Bytes kFourColors = {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 250, 251, 252, 0};

} // namespace

TEST(ReadBmp, IndicesAndTableAreKept) {
    const struct {
        const char* name;
        BmpForm form;
        Bytes pixels, indices;
    } cases[] = {
        {"1 bit", {9, 1, 1, 0, 2}, {0xA0, 0x80, 0, 0}, {1, 0, 1, 0, 0, 0, 0, 0, 1}},
        {"4 bits", {3, 2, 4, 0, 4}, {0x32, 0x10, 0, 0, 0x01, 0x20, 0, 0}, {0, 1, 2, 3, 2, 1}},
        {"8 bits", {3, 2, 8, 0, 4}, {3, 2, 1, 0, 0, 1, 2, 0}, {0, 1, 2, 3, 2, 1}},
        {"top row first", {3, -2, 8, 0, 4}, {3, 2, 1, 0, 0, 1, 2, 0}, {3, 2, 1, 0, 1, 2}},
        // Runs, one of them with a pixel that pads the row; the end of a row; a step of one pixel
        // and one row; three pixels as they are, of which one is too many, up to a whole word.
        {"runs of 8 bits",
         {4, 3, 8, 1, 4},
         {2, 3, 3, 1, 0, 0, 1, 2, 0, 2, 1, 1, 0, 3, 3, 3, 0, 0, 0, 1},
         {0, 0, 3, 3, 2, 0, 0, 0, 3, 3, 1, 1}},
        {"runs of 4 bits that end early",
         {4, 3, 4, 2, 4},
         {4, 0x12, 0, 0, 0, 3, 0x32, 0x10, 1, 0x30, 0, 1},
         {0, 0, 0, 0, 3, 2, 1, 3, 1, 2, 1, 2}}};
    for (const auto& c : cases) {
        BmpForm form = c.form;
        form.table = Bytes(kFourColors.begin(), kFourColors.begin() + 4 * form.colors);
        form.table.resize(form.table.size() + 4); // a gap before the pixels
        const Picture picture = PictureFromBytes(MakeBmp(form, c.pixels));
        EXPECT_EQ(PixelsOf(picture), c.indices) << c.name;
        EXPECT_EQ(picture.colors, static_cast<int>(form.colors)) << c.name;
        EXPECT_EQ(PackColor(TableEntry(picture.table, 1)), 0x060504U) << c.name;
        EXPECT_EQ(picture.notes.bits, form.bits) << c.name;
        EXPECT_EQ(picture.notes.format, "BMP");
    }
    const BmpForm oldest = {.columns = 2, .bits = 1, .infoBytes = 12, .table = {1, 2, 3, 4, 5, 6}};
    const Picture picture = PictureFromBytes(MakeBmp(oldest, {0x40, 0, 0, 0}));
    EXPECT_EQ(PixelsOf(picture), (Bytes{0, 1}));
    EXPECT_EQ(PackColor(TableEntry(picture.table, 1)), 0x060504U);
}

TEST(ReadBmp, SamplesOfEveryWidthReachTheFullRange) {
    const std::vector<std::uint32_t> bytes = {0xFF, 0xFF00, 0xFF0000, 0xFF000000};
    const struct {
        const char* name;
        BmpForm form;
        Bytes pixels, expected;
        int bits;
    } cases[] = {{"24", {1, 2}, {1, 2, 3, 0, 4, 5, 6, 0}, {6, 5, 4, 3, 2, 1}, 8},
                 {"24, top row first", {1, -2}, {1, 2, 3, 0, 4, 5, 6, 0}, {3, 2, 1, 6, 5, 4}, 8},
                 {"32", {1, 1, 32}, {1, 2, 3, 0}, {3, 2, 1}, 8},
                 {"555", {2, 1, 16}, {0xFF, 0x7F, 0x01, 0x40}, {255, 255, 255, 132, 0, 8}, 5},
                 {"565, top row first",
                  {1, -2, 16, 3, 0, {0xF800, 0x7E0, 0x1F}},
                  {0xE0, 0x07, 0, 0, 0x30, 0xF8, 0, 0},
                  {0, 255, 0, 255, 4, 132},
                  6},
                 {"4444",
                  {1, 1, 16, 3, 0, {0xF00, 0xF0, 0xF, 0xF000}, 108},
                  {0x23, 0x81, 0, 0},
                  {17, 34, 51, 136},
                  4},
                 {"alpha", {1, 1, 32, 3, 0, bytes, 56}, {1, 2, 3, 4}, {1, 2, 3, 4}, 8},
                 {"opaque", {1, 1, 32, 3, 0, bytes, 56}, {1, 2, 3, 255}, {1, 2, 3}, 8},
                 {"10 bits",
                  {1, 1, 32, 3, 0, {0x3FF, 0xFFC00, 0x3FF00000}},
                  {0xFF, 0x07, 0x04, 0x20},
                  {255, 64, 128},
                  10}};
    for (const auto& c : cases) {
        const Picture picture = PictureFromBytes(MakeBmp(c.form, c.pixels));
        EXPECT_EQ(PixelsOf(picture), c.expected) << c.name;
        EXPECT_EQ(picture.notes.bits, c.bits) << c.name;
        EXPECT_EQ(picture.notes.rounded, c.bits == 10) << c.name;
    }
}

TEST(ReadBmp, EmbeddedProfileIsUsed) {
    BmpForm form = {.columns = 1, .rows = 1, .infoBytes = 124};
    form.profile = MakeRgbProfile(1.0, Primaries::redAndGreenSwapped);
    form.more = std::vector<std::uint32_t>(21);
    form.more[4] = 0x4D424544; // 'MBED'
    form.more[19] = static_cast<std::uint32_t>(form.profile.size());
    const Picture picture = PictureFromBytes(MakeBmp(form, {0, 255, 0, 0}));
    EXPECT_EQ(picture.notes.profileUse, gif89::InputNotes::ProfileUse::converted);
    EXPECT_GT(picture.pixels[0], 250);
    form.more[4] = 0x4C494E4B; // 'LINK'
    EXPECT_EQ(PictureFromBytes(MakeBmp(form, {0, 255, 0, 0})).notes.profileUse,
              gif89::InputNotes::ProfileUse::unusable);
}

TEST(ReadBmp, DamageIsRefusedOrHarmless) {
    testing::internal::CaptureStderr();
    const std::pair<BmpForm, Bytes> cases[] = {
        {{.columns = 3, .rows = 2, .bits = 8, .colors = 4, .table = kFourColors}, Bytes(8, 3)},
        {{.columns = 2, .rows = 2}, Bytes(16, 7)},
        {{.columns = 2, .rows = -2, .bits = 16, .compression = 3, .more = {0xF800, 0x7E0, 0x1F}},
         Bytes(8, 7)}};
    for (const auto& [form, pixels] : cases)
        EXPECT_GT(CountNoticedDamage(MakeBmp(form, pixels)), 50U);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ReadBmp, RefusalsSayWhy) {
    BmpForm form = {.columns = 4, .bits = 8, .colors = 4, .table = kFourColors};
    EXPECT_EQ(RefusalOf(MakeBmp(form, {0, 1, 2, 4})),
              "is a damaged BMP picture: a pixel has colour 4 of a table of 4");
    EXPECT_EQ(RefusalOf(MakeBmp(form, {0, 1, 2})),
              "is a damaged BMP picture: the file ends before the picture does");
    BmpForm runs = {.columns = 4, .bits = 8, .compression = 1, .colors = 4, .table = kFourColors};
    EXPECT_EQ(ComplaintAbout(MakeBmp(runs, {4, 2})),
              "all pixels were read, but behind them the file is damaged: its end is missing");
    form.columns = 40000;
    EXPECT_EQ(RefusalOf(MakeBmp(form, {})),
              "is 40000 x 1 pixels; sides above 32767 cannot be stored");
    EXPECT_EQ(RefusalOf(MakeBmp({.columns = 20000, .rows = -30000, .bits = 32}, {})),
              "is a damaged BMP picture: the file ends before the picture does");
    EXPECT_EQ(RefusalOf(MakeBmp({.columns = 32767, .rows = -32767, .bits = 32}, {})),
              "is 32767 x 32767 pixels of 3 bytes, more than the 2 GiB that one export may use");
    EXPECT_EQ(RefusalOf(MakeBmp({.bits = 16, .compression = 3, .more = {0, 1, 2}}, Bytes(4))),
              "is a damaged BMP picture: a colour has no bits");
}
