// What the report says of pictures and files put together by hand, and of random ones by counting
// again the slow way.
#include "MakeReport.h"
#include "RandomPictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <set>

namespace gif89 {
namespace {

// A file of 4 x 1 pixels: red, green, transparent, red.
DecodedGif MakeGif() {
    DecodedGif gif;
    gif.rows = 1;
    gif.columns = 4;
    gif.colors = 4;
    gif.transparentIndex = 2;
    SetTableEntry(gif.table, 0, {0, 255, 0, 0});
    SetTableEntry(gif.table, 1, {0, 0, 255, 0});
    gif.indices = std::make_unique<std::uint8_t[]>(4);
    const std::uint8_t indices[] = {0, 1, 2, 0};
    std::copy_n(indices, 4, gif.indices.get());
    return gif;
}

Picture MakeFour(const std::vector<std::uint8_t>& bytes) {
    Picture picture = MakePicture(Picture::Kind::rgbAlpha, 1, 4);
    std::copy(bytes.begin(), bytes.end(), picture.pixels.get());
    return picture;
}

// Off by 3 and 10; half opaque; opaque but transparent in the file; transparent but visible.
Picture MakeLossy() {
    return MakeFour({252, 10, 0, 255, 0, 255, 0, 128, 7, 8, 9, 255, 1, 2, 3, 0});
}

TEST(ExportReport, FindsNothingWhereOnlyHiddenColorsDiffer) {
    Picture picture = MakeFour({255, 0, 0, 255, 0, 255, 0, 255, 9, 9, 9, 0, 255, 0, 0, 255});
    const ExportReport report = MakeReport(picture, MakeGif());
    EXPECT_TRUE(report.KeepsPixels());
    EXPECT_EQ(report.sourceColors, 2);
    EXPECT_EQ(report.usedEntries, 3);
    EXPECT_EQ(report.shownColors, 2);
    EXPECT_EQ(report.tableEntries, 4);

    using enum InputNotes::ProfileUse;
    const std::pair<void (*)(Picture&), const char*> cases[] = {
        {[](Picture&) {}, ""},
        {[](Picture& p) { p.notes.profileUse = same; }, ""},
        {[](Picture& p) { p.notes.pictures = 2000; }, "only the first of 2,000 pictures kept"},
        {[](Picture& p) { p.notes.droppedSamples = 1; }, "1 sample of each pixel left out"},
        {[](Picture& p) { p.notes.bits = 16, p.notes.rounded = true; }, "16 bits rounded to 8"},
        {[](Picture& p) { p.notes.inks = true; }, "CMYK turned to RGB"},
        {[](Picture& p) { p.notes.profileUse = converted; }, "colour profile converted to sRGB"},
        {[](Picture& p) { p.notes.profileUse = unusable; }, "colour profile not usable, ignored"},
        {[](Picture& p) { p.comment = "left out"; }, "the comment was left out"}};
    for (const auto& [change, said] : cases) {
        picture.notes = {};
        change(picture);
        EXPECT_EQ(LossText(MakeReport(picture, MakeGif())), said);
        EXPECT_EQ(MakeReport(picture, MakeGif()).Lossless(), *said == '\0') << said;
    }
}

TEST(ExportReport, CountsEachKindOfLoss) {
    const Picture picture = MakeLossy();
    const ExportReport report = MakeReport(picture, MakeGif());
    EXPECT_EQ(report.changedPixels, 4);
    EXPECT_EQ(report.largestError, 10);
    EXPECT_DOUBLE_EQ(report.meanError, 13 / 3.0);
    EXPECT_EQ(report.partlyOpaque, 1);
    EXPECT_EQ(report.alphaLevels, 1);
    EXPECT_EQ(report.madeTransparent, 1);
    EXPECT_EQ(report.madeOpaque, 1);
    EXPECT_EQ(LossText(report),
              "3 colours became 2 (largest error 10, mean 4.33); 1 partly opaque pixel (1 level of "
              "opacity) became opaque or transparent; 1 visible pixel became transparent; 1 "
              "transparent pixel became visible");
}

std::string ReportText(const ExportReport& report) {
    std::string text;
    for (const ReportLine& line : ReportLines(report)) text += line.label + ": " + line.text + '\n';
    return text;
}

TEST(ExportReport, SaysInLinesWhatHappened) {
    Picture picture = MakeLossy();
    picture.comment = "left out";
    picture.notes.format = "TIFF";
    picture.notes.bits = 16;
    picture.notes.rounded = true;
    picture.notes.pictures = 2;
    picture.notes.profileName = "Wide";
    picture.notes.profileUse = InputNotes::ProfileUse::converted;
    picture.notes.oriented = true;
    EXPECT_EQ(
        ReportText(MakeReport(picture, MakeGif())),
        "picture: 4 x 1, TIFF, 3 colours\n"
        "reading: only the first of 2 pictures kept; 16 bits rounded to 8; profile "
        "\"Wide\" converted to sRGB; turned upright\n"
        "way: RGB, exact palette, error diffusion\n"
        "file: 50 bytes, 3 of 4 entries used, not interlaced, entry 2 transparent\n"
        "pixels: 4 of 4 changed; largest error 10, mean 4.33\n"
        "transparency: 1 partly opaque pixel (1 level of opacity) became opaque or "
        "transparent; 1 visible pixel became transparent; 1 transparent pixel became visible\n"
        "comment: dropped\n"
        "lossless: no\n");

    picture = MakePicture(Picture::Kind::indexed, 1, 4);
    std::copy_n(MakeGif().indices.get(), 4, picture.pixels.get());
    picture.colors = 3;
    picture.comment = "kept";
    picture.notes.format = "GIF";
    picture.notes.madeIndexed = true;
    DecodedGif gif = MakeGif();
    picture.table = gif.table;
    gif.transparentIndex = -1;
    gif.interlaced = true;
    gif.comment = picture.comment;
    EXPECT_EQ(ReportText(MakeReport(picture, gif)),
              "picture: 4 x 1, GIF, 3 colours\n"
              "way: indexed, a table made of the picture's colours\n"
              "file: 50 bytes, 3 of 4 entries used, interlaced\n"
              "pixels: all 4 as they were\n"
              "comment: kept\n"
              "lossless: yes\n");
}

class CountedAgain : public testing::TestWithParam<Picture::Kind> {};
INSTANTIATE_TEST_SUITE_P(PicturesOf, CountedAgain,
                         testing::Values(Picture::Kind::rgb, Picture::Kind::rgbAlpha));

TEST_P(CountedAgain, TheReportAgrees) {
    std::mt19937 random(11);
    constexpr int kSide = 40, kPixels = kSide * kSide;
    const bool hasAlpha = GetParam() == Picture::Kind::rgbAlpha;
    DecodedGif gif;
    gif.rows = gif.columns = kSide;
    gif.colors = 256;
    gif.transparentIndex = hasAlpha ? 77 : -1;
    gif.table = RandomTable(256, 11);
    gif.indices = std::make_unique<std::uint8_t[]>(kPixels);
    Picture picture = MakePicture(GetParam(), kSide, kSide);
    std::set<std::uint32_t> colors, shown;
    std::set<int> levels, used;
    std::int64_t changed = 0;
    std::vector<int> errors;
    std::uint8_t* pixel = picture.pixels.get();
    for (std::size_t n = 0; n < kPixels; ++n) {
        const auto index = static_cast<std::uint8_t>(random());
        gif.indices[n] = index;
        const RGBtuple is = TableEntry(gif.table, index);
        const int off = static_cast<int>(random() % 3) - 1; // now and then the very colour
        pixel[0] = static_cast<std::uint8_t>(is.red + off);
        pixel[1] = is.green;
        pixel[2] = is.blue;
        if (hasAlpha) pixel[3] = random() % 4 == 0 ? static_cast<std::uint8_t>(random()) : 255;
        const int opacity = hasAlpha ? pixel[3] : 255;
        const bool hidden = index == gif.transparentIndex;
        used.insert(index);
        if (!hidden) shown.insert(PackColor(is));
        if (opacity > 0) colors.insert(PackRGB(pixel[0], pixel[1], pixel[2]));
        if (opacity > 0 && opacity < 255) levels.insert(opacity);
        if (opacity == 255 && !hidden) {
            errors.push_back(std::abs(pixel[0] - is.red)); // 255 where the byte wrapped
            changed += off != 0;
        } else {
            changed += !(opacity == 0 && hidden);
        }
        pixel += hasAlpha ? 4 : 3;
    }
    const ExportReport report = MakeReport(picture, gif);
    EXPECT_EQ(report.changedPixels, changed);
    EXPECT_EQ(report.sourceColors, static_cast<std::int64_t>(colors.size()));
    EXPECT_EQ(report.usedEntries, static_cast<int>(used.size()));
    EXPECT_EQ(report.shownColors, static_cast<int>(shown.size()));
    EXPECT_EQ(report.alphaLevels, static_cast<int>(levels.size()));
    EXPECT_EQ(report.largestError, *std::max_element(errors.begin(), errors.end()));
    EXPECT_DOUBLE_EQ(report.meanError, std::accumulate(errors.begin(), errors.end(), 0.0) / 3.0 /
                                           static_cast<double>(errors.size()));
}

} // namespace
} // namespace gif89
