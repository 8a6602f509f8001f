// What is decided for which picture and wishes, and that the ways without a loss have none.
#include "Plan.h"

#include <gtest/gtest.h>

#include <array>
#include <cctype>
#include <sstream>

namespace gif89 {
namespace {

/// A row of pixels from words: a kind; a number of neighbouring colours, or letters for a colour
/// each (of an indexed picture the entry, a is 0); "." for a transparent pixel, "~" for one of
/// opacity 64; "+name" for a further channel, which hides the first pixel.
Picture Describe(const std::string& line) {
    std::istringstream words(line);
    std::string kind, word;
    words >> kind;
    std::vector<std::array<std::uint8_t, 4>> row; // the last is opacity
    std::vector<std::string> channels;
    const auto add = [&row](int color, std::uint8_t opacity) {
        row.push_back({std::uint8_t(color), std::uint8_t(color / 256), 7, opacity});
    };
    while (words >> word) {
        if (word[0] == '+')
            channels.push_back(word.substr(1));
        else if (std::isdigit(word[0]))
            for (int i = 0; i < std::stoi(word); ++i) add(i, 255);
        else
            for (const char c : word) add(c - 'a', c == '.' ? 0 : c == '~' ? 64 : 255);
    }
    using enum Picture::Kind;
    Picture picture = MakePicture(kind == "rgb"    ? rgb
                                  : kind == "rgba" ? rgbAlpha
                                                   : indexed,
                                  1, static_cast<int>(row.size()));
    picture.colors = picture.kind == indexed ? 26 : 0;
    for (int i = 0; i < picture.colors; ++i)
        SetTableEntry(picture.table, i, {0, std::uint8_t(i), 0, 7});
    std::uint8_t* to = picture.pixels.get();
    for (const auto& pixel : row) to = std::copy_n(pixel.begin(), picture.BytesPerPixel(), to);
    for (const std::string& name : channels) {
        auto bytes = std::make_unique<std::uint8_t[]>(row.size());
        std::fill_n(bytes.get() + 1, row.size() - 1, 255);
        picture.channels.push_back({name, std::move(bytes)});
    }
    return picture;
}

std::string Tell(const Plan& plan) {
    constexpr const char* kWays[] = {"own table", "few colours", "module", "reduced"};
    constexpr const char* kPalettes[] = {"",       ", exact", ", adaptive", ", fixed",
                                         ", file", ", best",  ", web",      ", grey"};
    std::ostringstream text;
    text << kWays[int(plan.way)];
    if (plan.way == Way::reduced) text << " to " << plan.reduction.entries;
    for (const int entry : plan.transparent) text << ", entry " << entry;
    if (plan.channel > 0) text << ", channel " << plan.channel;
    if (plan.inverted) text << " inverted";
    text << kPalettes[int(plan.palette)] << plan.paletteFile;
    if (plan.colors) text << " of " << *plan.colors;
    if (plan.resize) text << " cut";
    if (plan.matte) text << ", matte";
    if (plan.comment) text << ", comment " << *plan.comment;
    return text.str();
}

std::string Tell(const Refusal& refusal) {
    constexpr const char* kKinds[] = {
        "has no table",      "keeps its table",  "no entry",          "no colour",
        "no channel",        "nothing inverted", "entries, no table", "channels, no table",
        "exact has a count", "exact is too few", "nothing to cut",    "not the module's",
        "too many kept"};
    std::string text = kKinds[int(refusal.kind)];
    if (refusal.entries > 0)
        text += " " + std::to_string(refusal.number) + " of " + std::to_string(refusal.entries);
    if (!refusal.name.empty()) text += " " + refusal.name + " of";
    for (const std::string& name : refusal.names) text += " " + name;
    return text;
}

std::string TellPlan(Picture picture, const Wishes& wishes) {
    ApplyWishes(picture, wishes);
    return std::visit([](const auto& made) { return Tell(made); }, MakePlan(picture, wishes));
}

TEST(Plan, DecidesFromPictureAndWishes) {
    using enum PaletteKind;
    constexpr RGBtuple kMatte = {0, 1, 2, 3}, kEntryC = {0, 2, 0, 7};
    const struct {
        const char* picture;
        Wishes wishes;
        const char* expected;
    } cases[] = {
        {"rgb 256", {}, "few colours"},
        {"rgb 257", {}, "reduced to 256, best"},
        {"rgb 257", {.leavesToModule = true}, "module"},
        {"rgba 255 .", {}, "few colours, channel 1"},
        {"rgba 256 .", {}, "reduced to 256, channel 1, best"},
        {"rgba a~", {}, "few colours, channel 1"},
        {"rgba a~", {.leavesToModule = true}, "module"},
        {"indexed ab", {}, "own table"},
        {"rgb 200", {.mode = Mode::rgb}, "module"},
        {"indexed ab", {.mode = Mode::rgb}, "module"},
        {"rgb 257", {.mode = Mode::indexed}, "has no table"},
        {"rgba a~", {.mode = Mode::indexed}, "few colours, channel 1"},
        // A number of colours reduces what has more, the entry of transparency among them.
        {"rgb 200", {.colors = 200}, "few colours"},
        {"rgb 200", {.colors = 199}, "reduced to 199, best"},
        {"rgba 200 .", {.colors = 200}, "reduced to 200, channel 1, best"},
        {"rgba 300 .", {.mode = Mode::rgb, .colors = 256}, "module, adaptive of 255"},
        {"indexed fj", {.colors = 2}, "own table"},
        {"indexed fjk", {.colors = 2}, "reduced to 2, best"},
        {"indexed fjk", {.mode = Mode::indexed, .colors = 2}, "keeps its table"},
        {"rgb ab", {.mode = Mode::indexed, .palette = fixed}, "keeps its table"},
        // Palettes
        {"rgb ab", {.palette = fixed}, "reduced to 256, fixed"},
        {"rgb ab", {.palette = fixed, .leavesToModule = true}, "module, fixed"},
        {"indexed ab", {.palette = file, .paletteFile = "x.pal"}, "module, filex.pal"},
        {"indexed ab", {.palette = file, .given = Palette(3)}, "reduced to 256, file"},
        {"rgb ab", {.colors = 9, .palette = fixed, .resize = true}, "module, fixed of 9 cut"},
        {"rgb ab", {.palette = adaptive, .resize = true}, "nothing to cut"},
        {"rgb ab", {.resize = true}, "nothing to cut"},
        {"rgb ab", {.palette = best}, "few colours"},
        {"indexed ab", {.colors = 9, .palette = grey}, "reduced to 9, grey"},
        {"rgb ab", {.mode = Mode::rgb, .palette = web}, "not the module's"},
        {"rgba a.", {.colors = 2, .keptColors = {{}, {}}}, "too many kept"},
        {"rgb 254", {.palette = exact}, "module, exact"},
        {"rgb 255", {.palette = exact}, "exact is too few"},
        {"rgba 254 .", {.palette = exact}, "exact is too few"},
        {"rgb ab", {.colors = 2, .palette = exact}, "exact has a count"},
        // Transparency
        {"indexed ab +Transparency", {.matte = kMatte}, "own table, channel 1, matte"},
        {"indexed ab", {.matte = kMatte}, "own table"},
        {"rgba a~", {.matte = kMatte}, "few colours"},
        {"rgba a~", {.leavesToModule = true, .matte = kMatte}, "module, matte"},
        {"rgba a~", {.matte = kMatte, .opaque = true}, "few colours"},
        {"rgba a~", {.alphaThreshold = 64}, "few colours"},
        {"rgba a~", {.alphaThreshold = 65}, "few colours, channel 1"},
        {"indexed ab +Transparency", {.opaque = true}, "few colours"},
        {"indexed ab +Transparency", {.dropOwn = true}, "own table"},
        {"indexed ab", {.transparent = {1, kEntryC, 1}}, "own table, entry 1, entry 2"},
        {"rgba a.", {.transparent = {0}}, "few colours, entry 0, channel 1"},
        {"indexed ab +Transparency", {.dropOwn = true, .transparent = {1}}, "own table, entry 1"},
        {"indexed ab", {.transparent = {26}}, "no entry 26 of 26"},
        {"indexed ab", {.transparent = {kMatte}}, "no colour"},
        {"rgb 257", {.transparent = {1}}, "entries, no table"},
        {"indexed ab +x +cut", {.alpha = "cut", .invert = true}, "own table, channel 2 inverted"},
        {"indexed ab +x +cut", {.alpha = "2"}, "own table, channel 2"},
        {"rgba a. +cut", {.channels = {"cut"}, .alpha = "cut"}, "few colours, channel 2"},
        {"rgb 257 +cut", {.channels = {"cut"}}, "channels, no table"},
        {"indexed ab +x", {.alpha = "y"}, "no channel y of x"},
        {"indexed ab", {.invert = true}, "nothing inverted"},
        // There is nothing to say of a comment that is not there.
        {"rgb ab", {.comment = true}, "few colours"},
        {"rgb ab", {.commentText = "some"}, "few colours"},
        {"rgb ab", {.comment = false, .commentText = "some"}, "few colours, comment 0"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TellPlan(Describe(c.picture), c.wishes), c.expected) << c.picture;
    Picture counted = Describe("rgb 2");
    counted.visibleColors = 257; // is not counted once more
    EXPECT_EQ(TellPlan(std::move(counted), {}), "reduced to 256, best");
}

/// What the module gets: entries, "." for hidden pixels.
std::string Shaped(const char* line, const Wishes& wishes) {
    Picture picture = Describe(line);
    ApplyWishes(picture, wishes);
    const auto plan = MakePlan(picture, wishes);
    BringIntoShape(picture, std::get<Plan>(plan));
    EXPECT_EQ(picture.kind, Picture::Kind::indexed);
    const std::uint8_t* const opacity = OpacityOf(picture);
    std::ostringstream text;
    for (std::size_t n = 0; n < picture.PixelCount(); ++n)
        text << (opacity && opacity[n] == 0 ? "." : std::to_string(picture.pixels[n]));
    text << ':';
    for (int i = 0; i < picture.colors; ++i)
        text << ' ' << std::hex << PackColor(TableEntry(picture.table, i));
    return text.str();
}

TEST(Plan, BringsPicturesIntoTheShape) {
    // Colours in the order in which they appear; what is hidden comes behind them, black.
    EXPECT_EQ(Shaped("rgb cacb", {}), "0102: 20007 7 10007");
    EXPECT_EQ(Shaped("rgba c.a", {}), "0.1: 20007 7 0");
    EXPECT_EQ(Shaped("rgba c.a", {.transparent = {1}}), "0..: 20007 7 0");
    EXPECT_EQ(Shaped("rgba c.", {.matte = RGBtuple{0, 1, 2, 3}, .opaque = true}),
              "01: 20007 10203");
    EXPECT_EQ(
        Shaped("rgba c~", {.matte = RGBtuple{0, 1, 2, 3}, .alphaThreshold = 65, .opaque = true}),
        "01: 20007 10203");
}

TEST(Wishes, CutOpacityOrBlendOverTheMatte) {
    constexpr RGBtuple kRed = {0, 110, 0, 0};
    const struct {
        Wishes wishes;
        std::vector<int> opacities, reds;
    } cases[] = {
        {{}, {0, 0, 255, 255}, {10, 10, 10, 10}},
        {{.alphaThreshold = 200}, {0, 0, 0, 255}, {10, 10, 10, 10}},
        {{.matte = kRed}, {0, 255, 255, 255}, {10, 60, 60, 10}},
        {{.matte = kRed, .alphaThreshold = 128}, {0, 0, 255, 255}, {10, 10, 60, 10}},
        {{.opaque = true}, {}, {255, 133, 132, 10}},
    };
    for (const auto& c : cases) {
        Picture picture = MakePicture(Picture::Kind::rgbAlpha, 1, 4);
        std::uint8_t* to = picture.pixels.get();
        for (const std::uint8_t opacity : std::to_array<std::uint8_t>({0, 127, 128, 255}))
            to = std::copy_n(std::array<std::uint8_t, 4>{10, 20, 30, opacity}.begin(), 4, to);
        ApplyWishes(picture, c.wishes);
        std::vector<int> opacities, reds;
        for (int n = 0; n < 4; ++n) {
            const std::uint8_t* const pixel = picture.pixels.get() + n * picture.BytesPerPixel();
            reds.push_back(pixel[0]);
            if (picture.kind == Picture::Kind::rgbAlpha) opacities.push_back(pixel[3]);
        }
        EXPECT_EQ(opacities, c.opacities);
        EXPECT_EQ(reds, c.reds);
    }
}

} // namespace
} // namespace gif89
