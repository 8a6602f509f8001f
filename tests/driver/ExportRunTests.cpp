// Whole exports against a plain export of the same picture.
#include "DriverRun.h"

#include "MemoryManager.h"
#include "PlainAdaptivePalette.h"
#include "PlainDiffusion.h"
#include "PlainExactColors.h"
#include "PlainGif.h"
#include "PlainInverseMap.h"
#include "RandomPictures.h"

namespace {

constexpr PackedColor kTransparent = 0xC0C0C0;

struct Subject {
    PictureKind kind;
    int rows, columns, planes;
    std::uint32_t seed;
    int opacity = -1; // of every pixel; -1 leaves the random one
    std::vector<std::uint8_t> Pixels() const {
        auto pixels = RandomPixels(kind, rows, columns, planes, seed);
        for (std::size_t i = 3; planes == 4 && opacity >= 0 && i < pixels.size(); i += 4)
            pixels[i] = static_cast<std::uint8_t>(opacity);
        return pixels;
    }
};

std::vector<std::uint8_t> WithoutOpacity(const std::vector<std::uint8_t>& pixels, int planes) {
    std::vector<std::uint8_t> rgb;
    for (std::size_t i = 0; i < pixels.size(); ++i)
        if (planes == 3 || i % 4 != 3) rgb.push_back(pixels[i]);
    return rgb;
}

// The same choices, made by the plain versions of every step.
ByteVector PlainExport(const Subject& subject) {
    const std::vector<std::uint8_t> pixels = subject.Pixels();
    const bool transparent = subject.planes == 4;
    const auto exact = PlainExactColors(WithoutOpacity(pixels, subject.planes));
    PlainImage image;
    image.rows = subject.rows;
    image.columns = subject.columns;
    image.interlaced = true;
    image.colors = static_cast<int>(exact.size());
    if (exact.size() > 256 || (transparent && exact.size() == 256)) {
        image.colors = transparent ? 255 : 256;
        image.table = PlainAdaptivePalette(PlainHistogram(pixels, subject.planes, kTransparent),
                                           image.colors);
    } else {
        for (int i = 0; i < image.colors; ++i)
            SetTableEntry(image.table, i, UnpackColor(exact[static_cast<std::size_t>(i)]));
    }
    if (transparent) {
        image.transparentIndex = image.colors;
        SetTableEntry(image.table, image.colors++, UnpackColor(kTransparent));
    }
    PlainDiffusion diffusion(image.table, PlainInverseMap(image.table, image.colors),
                             subject.columns, subject.planes, kTransparent,
                             static_cast<std::uint8_t>(image.transparentIndex));
    image.indices = diffusion.Rows(pixels.data(), 0, subject.rows);
    return PlainGif(image);
}

TEST(ExportRun, WritesTheBytesOfAPlainExport) {
    std::vector<Subject> subjects = {
        {PictureKind::noise, 1, 1, 3, 1},     {PictureKind::noise, 1, 1, 4, 2},
        {PictureKind::flat, 3, 3000, 4, 3},   {PictureKind::photo, 3, 32767, 3, 4},
        {PictureKind::photo, 32767, 3, 3, 5}, {PictureKind::photo, 4, 12000, 4, 6}};
    std::uint32_t seed = 100;
    for (const PictureKind kind : kPictureKinds)
        for (const int planes : {3, 4})
            for (const auto& [rows, columns] : {std::pair{7, 19}, {64, 33}, {120, 200}})
                subjects.push_back({kind, rows, columns, planes, seed++});
    for (const Subject& subject : subjects) {
        DriverRun run(subject.rows, subject.columns, subject.planes, subject.Pixels());
        ASSERT_EQ(run.Export(), noErr) << "seed " << subject.seed;
        const ByteVector expected = PlainExport(subject);
        EXPECT_TRUE(run.user.Output() == std::string(expected.begin(), expected.end()))
            << "seed " << subject.seed << ", " << subject.columns << " x " << subject.rows << " x "
            << subject.planes;
    }
}

// The colours of the pixels of a file that has a table of 256 entries.
std::vector<PackedColor> ColorsOf(const std::string& file, int planes) {
    const auto byte = [&](std::size_t at) { return static_cast<std::uint8_t>(file[at]); };
    ByteVector packed;
    const std::size_t firstBlock = 13 + 768 + (planes == 4 ? 8U : 0U) + 10 + 1;
    for (std::size_t at = firstBlock; byte(at) != 0; at += 1 + byte(at))
        for (std::size_t i = 1; i <= byte(at); ++i) packed.push_back(byte(at + i));
    std::vector<PackedColor> colors;
    for (const std::uint8_t index : PlainLzwExpand(packed, 8).symbols) {
        const std::size_t entry = 13 + 3U * index;
        colors.push_back(PackRGB(byte(entry), byte(entry + 1), byte(entry + 2)));
    }
    return colors;
}

TEST(ExportRun, KeepsEveryColorUpToTheExactLimit) {
    // So many colours, black and white not among them, each alone in its cell of the colour cube.
    const struct {
        int colors;
        bool blackAndWhiteToo;
        int planes;
        bool kept;
    } cases[] = {{254, true, 3, true},   {254, false, 3, true}, {255, true, 3, false},
                 {255, false, 3, false}, {253, true, 4, true},  {254, true, 4, false}};
    for (const auto& c : cases) {
        std::vector<PackedColor> colors;
        for (int i = 0; i < c.colors; ++i)
            colors.push_back(PackRGB(static_cast<std::uint8_t>(i % 16 * 16 + 3),
                                     static_cast<std::uint8_t>(i / 16 * 16 + 5), 77));
        if (c.blackAndWhiteToo) colors.insert(colors.end(), {0x000000, 0xFFFFFF});
        std::vector<std::uint8_t> pixels;
        for (const PackedColor color : colors) {
            const RGBtuple rgb = UnpackColor(color);
            pixels.insert(pixels.end(), {rgb.red, rgb.green, rgb.blue});
            if (c.planes == 4) pixels.push_back(255);
        }
        DriverRun run(1, static_cast<int>(colors.size()), c.planes, pixels);
        ASSERT_EQ(run.Export(), noErr);
        EXPECT_EQ(ColorsOf(run.user.Output(), c.planes) == colors, c.kept)
            << c.colors << " colours, " << c.planes << " planes";
    }
}

TEST(ExportRun, RowsBetweenBandsAreNeverAskedForAndHoldIndexZero) {
    const Subject subject = {PictureKind::photo, 30, 20, 3, 9};
    DriverRun run(30, 20, 3, subject.Pixels());
    const std::int32_t need = 131072 + 20 * 12 + 24 + 65536;
    run.host.record.memoryBudget = need + 20 * 2 * 8; // bands of eight rows
    ASSERT_EQ(run.Export(), noErr);
    // Black and white are always in the table, so index 0 is white; rows 7, 15 and 23 are missing.
    PlainImage image;
    image.rows = 30;
    image.columns = 20;
    std::vector<std::uint8_t> seen;
    const std::vector<std::uint8_t> pixels = subject.Pixels();
    for (int y = 0; y < 30; ++y)
        if (y % 8 != 7)
            seen.insert(seen.end(), pixels.begin() + y * 60, pixels.begin() + (y + 1) * 60);
    image.table = PlainAdaptivePalette(PlainHistogram(seen, 3), 256);
    image.interlaced = true;
    PlainDiffusion diffusion(image.table, PlainInverseMap(image.table, 256), 20, 3);
    for (int top = 0; top < 30; top += 8) {
        const int rows = std::min(7, 30 - top);
        const auto band = diffusion.Rows(pixels.data() + top * 60, top, rows);
        image.indices.insert(image.indices.end(), band.begin(), band.end());
        if (top + rows < 30) image.indices.insert(image.indices.end(), 20, 0);
    }
    const ByteVector expected = PlainGif(image);
    EXPECT_TRUE(run.user.Output() == std::string(expected.begin(), expected.end()));
}

TEST(ExportRun, TakesTheCommentFromTheHost) {
    DriverRun run(2, 2, 3, std::vector<std::uint8_t>(12, 5));
    HostPropertyProcs properties;
    properties.getProperty = [](OSType signature, OSType key, std::int32_t index, Handle* value) {
        if (signature != kModuleSignature || key != kCommentProperty || index != 0)
            return OSErr{noErr};
        *value = NewHandle(5);
        std::copy_n("hello", 5, **value);
        return OSErr{noErr};
    };
    const AddressKey key(&properties);
    run.host.record.propertyProcs.Set(key);
    const long before = LiveMemoryBlocks();
    EXPECT_EQ(run.Export(), noErr);
    EXPECT_NE(run.user.Output().find(std::string("\x21\xFE\x05hello\0", 9)), std::string::npos);
    EXPECT_EQ(LiveMemoryBlocks(), before);
}

} // namespace
