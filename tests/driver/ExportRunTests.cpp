// Whole exports against a plain export of the same picture.
#include "DriverRun.h"

#include "PlainAdaptivePalette.h"
#include "PlainDiffusion.h"
#include "PlainExactColors.h"
#include "PlainGif.h"
#include "PlainInverseMap.h"
#include "RandomPictures.h"

namespace {

constexpr PackedColor kTransparent = 0xC0C0C0;

struct Subject {
    int rows, columns, planes;
    ByteVector pixels;
    int bandRows = 32768; ///< after so many rows less one, one is never asked for

    bool IsSeen(int row) const { return row % bandRows != bandRows - 1; }
    const std::uint8_t* Row(int row) const {
        return pixels.data() + std::ptrdiff_t{row} * columns * planes;
    }
};

Subject MakeSubject(PictureKind kind, int rows, int columns, int planes, std::uint32_t seed) {
    return {rows, columns, planes, RandomPixels(kind, rows, columns, planes, seed)};
}

ByteVector SeenPixels(const Subject& subject) {
    ByteVector seen;
    for (int y = 0; y < subject.rows; ++y)
        if (subject.IsSeen(y)) seen.insert(seen.end(), subject.Row(y), subject.Row(y + 1));
    return seen;
}

ByteVector WithoutOpacity(const ByteVector& pixels, int planes) {
    ByteVector rgb;
    for (std::size_t i = 0; i < pixels.size(); ++i)
        if (planes == 3 || i % 4 != 3) rgb.push_back(pixels[i]);
    return rgb;
}

// The same choices, made by the plain versions of every step.
ByteVector PlainExport(const Subject& subject) {
    const ByteVector seen = SeenPixels(subject);
    const bool transparent = subject.planes == 4;
    const auto exact = PlainExactColors(WithoutOpacity(seen, subject.planes));
    PlainImage image;
    image.rows = subject.rows;
    image.columns = subject.columns;
    image.interlaced = true;
    image.colors = static_cast<int>(exact.size());
    if (exact.size() > 256 || (transparent && exact.size() == 256)) {
        image.colors = transparent ? 255 : 256;
        image.table =
            PlainAdaptivePalette(PlainHistogram(seen, subject.planes, kTransparent), image.colors);
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
    // Rows that are never asked for hold index 0.
    image.indices.resize(static_cast<std::size_t>(subject.rows * subject.columns));
    for (int y = 0; y < subject.rows; ++y)
        if (subject.IsSeen(y))
            diffusion.Rows(subject.Row(y), y, 1,
                           image.indices.data() + std::ptrdiff_t{y} * subject.columns);
    return PlainGif(image);
}

void ExpectPlainExport(const Subject& subject, std::int32_t budget = 0x7FFFFFFF) {
    DriverRun run(subject.rows, subject.columns, subject.planes, subject.pixels);
    run.host.record.memoryBudget = budget;
    ASSERT_EQ(run.Export(), noErr);
    const ByteVector expected = PlainExport(subject);
    EXPECT_TRUE(run.user.Output() == std::string(expected.begin(), expected.end()));
}

TEST(ExportRun, WritesTheBytesOfAPlainExport) {
    std::vector<Subject> subjects = {MakeSubject(PictureKind::noise, 1, 1, 4, 2),
                                     MakeSubject(PictureKind::photo, 3, 32767, 3, 4),
                                     MakeSubject(PictureKind::photo, 32767, 3, 3, 5),
                                     MakeSubject(PictureKind::photo, 4, 12000, 4, 6)};
    std::uint32_t seed = 100;
    for (const PictureKind kind : kPictureKinds)
        for (const int planes : {3, 4})
            for (const auto& [rows, columns] : {std::pair{7, 19}, {120, 200}})
                subjects.push_back(MakeSubject(kind, rows, columns, planes, seed++));
    for (const Subject& subject : subjects) {
        SCOPED_TRACE("subject " + std::to_string(&subject - subjects.data()));
        ExpectPlainExport(subject);
    }
}

TEST(ExportRun, RowsBetweenBandsAreNeverAskedForAndHoldIndexZero) {
    for (const int planes : {3, 4}) {
        Subject subject = MakeSubject(PictureKind::noise, 30, 20, planes, 9);
        // Of dark pixels, whose counts lay in the memory of such rows while the palette was made.
        for (std::uint8_t& level : subject.pixels) level &= 0x1F;
        subject.bandRows = 8;
        const std::int32_t need = 131072 + 20 * 12 + 24 + 65536;
        ExpectPlainExport(subject, need + 20 * (planes - 1) * 8);
    }
}

} // namespace
