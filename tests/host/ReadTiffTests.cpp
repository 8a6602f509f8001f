// TIFF pictures, written by the library from samples, against a plain computation from these.
#include "MakeProfile.h"
#include "PictureFromBytes.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <tiffio.h>

using gif89::Picture;

namespace {

using Samples = std::vector<unsigned>;

struct TiffForm {
    int columns = 1, rows = 1;
    int bits = 8;
    int photometric = PHOTOMETRIC_MINISBLACK;
    int samples = 1; // of a pixel
    std::vector<std::uint16_t> extra = {};
    int compression = COMPRESSION_NONE;
    int tileSide = 0; // 0 for strips
    bool separate = false;
    const char* mode = "wl"; // with the byte order, "8" for 64 bits
    int pictures = 1;
    std::function<void(TIFF*)> setMore = [](TIFF*) {}; // sets further fields
};

// All reds, then all greens, then all blues.
auto SetTable(const std::vector<std::uint16_t>& table) {
    return [table, colors = table.size() / 3](TIFF* tiff) {
        TIFFSetField(tiff, TIFFTAG_COLORMAP, table.data(), table.data() + colors,
                     table.data() + 2 * colors);
    };
}

void SetFields(TIFF* tiff, const TiffForm& form) {
    const std::pair<std::uint32_t, int> numbers[] = {
        {TIFFTAG_IMAGEWIDTH, form.columns},
        {TIFFTAG_IMAGELENGTH, form.rows},
        {TIFFTAG_BITSPERSAMPLE, form.bits},
        {TIFFTAG_SAMPLESPERPIXEL, form.samples},
        {TIFFTAG_PHOTOMETRIC, form.photometric},
        {TIFFTAG_COMPRESSION, form.compression},
        {TIFFTAG_PLANARCONFIG, form.separate ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG}};
    for (const auto& [tag, value] : numbers) TIFFSetField(tiff, tag, value);
    if (form.tileSide > 0) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, form.tileSide);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, form.tileSide);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 3);
    }
    if (!form.extra.empty())
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(form.extra.size()),
                     form.extra.data());
    form.setMore(tiff);
    if (form.photometric == PHOTOMETRIC_YCBCR && form.compression == COMPRESSION_JPEG)
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
}

// Some pixels of a row as the library wants them: high bits first; 16 bits in the order of this
// machine. Zeros where a tile leaves the picture.
Bytes PackRow(const TiffForm& form, const Samples& samples, int y, int left, int columns,
              int plane) {
    Bytes row;
    unsigned held = 0;
    int heldBits = 0;
    for (int x = left; x < left + columns; ++x)
        for (int n = 0; n < form.samples; ++n) {
            if (form.separate && n != plane) continue;
            const bool inside = y < form.rows && x < form.columns;
            const auto at = static_cast<std::size_t>((y * form.columns + x) * form.samples + n);
            const unsigned sample = inside ? samples[at] : 0;
            held =
                held << form.bits |
                (form.bits == 16 ? __builtin_bswap16(static_cast<std::uint16_t>(sample)) : sample);
            for (heldBits += form.bits; heldBits >= 8; heldBits -= 8)
                row.push_back(static_cast<std::uint8_t>(held >> (heldBits - 8)));
        }
    if (heldBits > 0) row.push_back(static_cast<std::uint8_t>(held << (8 - heldBits)));
    return row;
}

void WritePlane(TIFF* tiff, const TiffForm& form, const Samples& samples, int plane) {
    const auto sample = static_cast<std::uint16_t>(plane);
    const int step = form.tileSide > 0 ? form.tileSide : 1;
    for (int top = 0; top < form.rows; top += step) {
        const auto y = static_cast<std::uint32_t>(top);
        if (form.tileSide == 0) {
            Bytes row = PackRow(form, samples, top, 0, form.columns, plane);
            TIFFWriteScanline(tiff, row.data(), y, sample);
            continue;
        }
        for (int left = 0; left < form.columns; left += step) {
            std::vector<Bytes> rows;
            for (int n = 0; n < step; ++n)
                rows.push_back(PackRow(form, samples, top + n, left, step, plane));
            TIFFWriteTile(tiff, Join(rows).data(), static_cast<std::uint32_t>(left), y, 0, sample);
        }
    }
}

Bytes MakeTiff(const TiffForm& form, const Samples& samples) {
    const TemporaryFolder folder;
    TIFF* const tiff = TIFFOpen(folder.Path("a.tif").c_str(), form.mode);
    for (int n = 0; n < form.pictures; ++n) {
        SetFields(tiff, form);
        for (int plane = 0; plane < (form.separate ? form.samples : 1); ++plane)
            WritePlane(tiff, form, samples, plane);
        TIFFWriteDirectory(tiff);
    }
    TIFFClose(tiff);
    return folder.ReadBytes("a.tif");
}

Samples RandomSamples(const TiffForm& form, std::mt19937& random) {
    Samples samples(static_cast<std::size_t>(form.columns * form.rows * form.samples));
    for (unsigned& sample : samples) sample = static_cast<unsigned>(random() % (1UL << form.bits));
    return samples;
}

void CheckForm(const TiffForm& form, std::mt19937& random) {
    const Samples samples = RandomSamples(form, random);
    Bytes expected;
    for (const unsigned sample : samples) {
        const double share = sample / ((1 << form.bits) - 1.0);
        const double light = form.photometric == PHOTOMETRIC_MINISWHITE ? 1 - share : share;
        expected.insert(expected.end(), form.samples == 1 ? 3 : 1,
                        static_cast<std::uint8_t>(std::lround(255 * light)));
    }
    Picture picture = PictureFromBytes(MakeTiff(form, samples));
    ExpandToRGB(picture);
    EXPECT_EQ(PixelsOf(picture), expected)
        << "photometric " << form.photometric << ", " << form.bits << " bits, tiles of "
        << form.tileSide << ", separate " << form.separate << ", mode " << form.mode;
}

} // namespace

TEST(ReadTiff, EveryFormKeepsItsValues) {
    std::mt19937 random(20240602);
    const std::pair<int, int> photometrics[] = {
        {PHOTOMETRIC_MINISWHITE, 1}, {PHOTOMETRIC_MINISBLACK, 1}, {PHOTOMETRIC_RGB, 3}};
    const std::pair<const char*, int> ways[] = {{"wl", COMPRESSION_NONE},
                                                {"wb", COMPRESSION_LZW},
                                                {"wb8", COMPRESSION_PACKBITS},
                                                {"wl8", COMPRESSION_ADOBE_DEFLATE}};
    for (const auto& [photometric, perPixel] : photometrics)
        for (const int bits : {1, 2, 4, 8, 12, 16})
            for (const int tileSide : {0, 16})
                for (const bool separate : {false, true})
                    for (const auto& [mode, compression] : ways)
                        CheckForm({.columns = 21,
                                   .rows = 19,
                                   .bits = bits,
                                   .photometric = photometric,
                                   .samples = perPixel,
                                   .compression = compression,
                                   .tileSide = tileSide,
                                   .separate = separate,
                                   .mode = mode},
                                  random);
}

TEST(ReadTiff, PaletteKeepsIndicesAndTable) {
    // Tables of 4 entries: the whole range, and what is found of 8 bits in the low or high byte.
    const std::pair<std::vector<std::uint16_t>, Bytes> cases[] = {
        {{0, 257, 65535, 65280, 1, 2, 3, 4, 128, 129, 385, 386}, {0, 1, 255, 254}},
        {{0, 1, 255, 9, 1, 2, 3, 4, 5, 6, 7, 8}, {0, 1, 255, 9}},
        {{0, 0x100, 0xFF00, 0x900, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 1, 255, 9}}};
    for (const auto& [table, reds] : cases) {
        const TiffForm form = {.columns = 5,
                               .bits = 2,
                               .photometric = PHOTOMETRIC_PALETTE,
                               .setMore = SetTable(table)};
        const Picture picture = PictureFromBytes(MakeTiff(form, {3, 0, 2, 2, 1}));
        EXPECT_EQ(PixelsOf(picture), (Bytes{3, 0, 2, 2, 1}));
        EXPECT_EQ(picture.colors, 4);
        EXPECT_EQ(Bytes(picture.table.red, picture.table.red + 4), reds);
        EXPECT_EQ(picture.notes.rounded, table[3] == 65280);
    }
}

TEST(ReadTiff, OpacityIsDividedOutAndInkBecomesLight) {
    constexpr std::uint16_t kMultiplied = EXTRASAMPLE_ASSOCALPHA, kPlain = EXTRASAMPLE_UNASSALPHA,
                            kOther = EXTRASAMPLE_UNSPECIFIED;
    const struct {
        int photometric, bits;
        std::vector<std::uint16_t> extra;
        Samples pixels;
        Bytes expected;
        int dropped = 0;
    } cases[] = {
        {PHOTOMETRIC_RGB, 8, {kMultiplied}, {10, 50, 100, 100}, {26, 128, 255, 100}},
        {PHOTOMETRIC_RGB, 8, {kMultiplied}, {3, 4, 5, 0}, {0, 0, 0, 0}},
        {PHOTOMETRIC_RGB, 8, {kMultiplied}, {200, 7, 0, 100}, {255, 18, 0, 100}}, // too much
        {PHOTOMETRIC_RGB, 16, {kMultiplied}, {5, 500, 999, 1000}, {1, 128, 255, 4}},
        {PHOTOMETRIC_RGB, 8, {kOther, kPlain}, {9, 8, 7, 1, 100}, {9, 8, 7, 100}, 1},
        {PHOTOMETRIC_RGB, 8, {kPlain}, {9, 8, 7, 255}, {9, 8, 7}},
        {PHOTOMETRIC_RGB, 8, {kOther}, {9, 8, 7, 100}, {9, 8, 7, 100}},
        {PHOTOMETRIC_RGB, 8, {}, {9, 8, 7, 100}, {9, 8, 7, 100}},
        {PHOTOMETRIC_RGB, 8, {kOther}, {9, 8, 7, 0}, {9, 8, 7}, 1}, // unused
        {PHOTOMETRIC_SEPARATED, 8, {kOther}, {0, 255, 51, 102, 9}, {153, 0, 122}, 1},
        {PHOTOMETRIC_MINISBLACK, 8, {kPlain}, {9, 100}, {9, 9, 9, 100}},
        {PHOTOMETRIC_MINISBLACK, 4, {kMultiplied}, {4, 8}, {136, 136, 136, 136}},
        {PHOTOMETRIC_SEPARATED, 8, {kPlain}, {0, 255, 51, 102, 100}, {153, 0, 122, 100}},
        {PHOTOMETRIC_SEPARATED, 16, {}, {0, 0xFF80, 0x3333, 0x6666}, {153, 0, 122}}};
    for (const auto& c : cases)
        for (const bool separate : {false, true}) {
            const TiffForm form = {.bits = c.bits,
                                   .photometric = c.photometric,
                                   .samples = static_cast<int>(c.pixels.size()),
                                   .extra = c.extra,
                                   .separate = separate};
            Picture picture = PictureFromBytes(MakeTiff(form, c.pixels));
            EXPECT_EQ(picture.notes.inks, c.photometric == PHOTOMETRIC_SEPARATED);
            EXPECT_EQ(picture.notes.droppedSamples, c.dropped);
            ExpandToRGB(picture);
            EXPECT_EQ(PixelsOf(picture), c.expected) << testing::PrintToString(c.pixels);
        }
}

TEST(ReadTiff, FurtherSamplesBecomeChannels) {
    constexpr std::uint16_t kOther = EXTRASAMPLE_UNSPECIFIED;
    const TiffForm form = {
        .columns = 2, .bits = 4, .samples = 4, .extra = {kOther, EXTRASAMPLE_UNASSALPHA, kOther}};
    const Picture picture = PictureFromBytes(MakeTiff(form, {1, 2, 3, 15, 5, 6, 7, 8}));
    EXPECT_EQ(PixelsOf(picture), (Bytes{1, 5}));
    const std::pair<const char*, Bytes> expected[] = {
        {"Alpha 1", {34, 102}}, {"Transparency", {51, 119}}, {"Alpha 2", {255, 136}}};
    ASSERT_EQ(picture.channels.size(), std::size(expected));
    for (std::size_t n = 0; n < std::size(expected); ++n) {
        EXPECT_EQ(picture.channels[n].name, expected[n].first);
        const std::uint8_t* const bytes = picture.channels[n].bytes.get();
        EXPECT_EQ(Bytes(bytes, bytes + 2), expected[n].second);
    }
}

TEST(ReadTiff, SubsampledColorsAreTheLibrarysOwn) {
    for (const int compression : {COMPRESSION_JPEG, COMPRESSION_NONE}) {
        TiffForm form = {.columns = 32, .rows = 16, .photometric = PHOTOMETRIC_YCBCR, .samples = 3};
        form.compression = compression;
        form.setMore = [](TIFF* t) { TIFFSetField(t, TIFFTAG_ORIENTATION, ORIENTATION_TOPRIGHT); };
        const TemporaryFolder folder;
        TIFF* tiff = TIFFOpen(folder.Path("a.tif").c_str(), "wl");
        SetFields(tiff, form);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, form.rows);
        // Without compression: four lights, then the two colors, of each square of pixels.
        Bytes strip = RandomBytes(static_cast<std::size_t>(TIFFStripSize(tiff)), 3);
        TIFFWriteEncodedStrip(tiff, 0, strip.data(), static_cast<tmsize_t>(strip.size()));
        TIFFClose(tiff);

        std::uint32_t words[32 * 16];
        tiff = TIFFOpen(folder.Path("a.tif").c_str(), "r");
        ASSERT_EQ(TIFFReadRGBAImageOriented(tiff, 32, 16, words, ORIENTATION_TOPLEFT), 1);
        TIFFClose(tiff);
        Bytes expected;
        for (const std::uint32_t word : words)
            for (const int shift : {0, 8, 16})
                expected.push_back(static_cast<std::uint8_t>(word >> shift));
        const Picture picture = PictureFromBytes(folder.ReadBytes("a.tif"));
        EXPECT_EQ(PixelsOf(picture), expected) << compression;
        EXPECT_TRUE(picture.notes.oriented) << compression;
    }
}

TEST(ReadTiff, FieldsBecomeNotes) {
    TiffForm form = {.columns = 2, .bits = 16, .photometric = PHOTOMETRIC_RGB, .samples = 3};
    form.pictures = 3;
    form.setMore = [](TIFF* tiff) {
        const Bytes profile = MakeRgbProfile(1.0, Primaries::redAndGreenSwapped);
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(profile.size()),
                     profile.data());
        TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, "d\xE9j\xC3\xA0");
        TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPRIGHT);
    };
    const Picture picture = PictureFromBytes(MakeTiff(form, {65535, 0, 0, 257, 514, 0x8000}));
    EXPECT_EQ(picture.comment, "d\xC3\xA9j\xC3\x83\xC2\xA0"); // no UTF-8, so Latin-1
    EXPECT_EQ(picture.notes.format, "TIFF");
    EXPECT_EQ(picture.notes.bits, 16);
    EXPECT_TRUE(picture.notes.rounded);
    EXPECT_EQ(picture.notes.pictures, 3);
    EXPECT_EQ(picture.notes.orientation, 2);
    EXPECT_TRUE(picture.notes.oriented);
    EXPECT_EQ(picture.notes.profileUse, gif89::InputNotes::ProfileUse::converted);
    EXPECT_GT(picture.pixels[4], 250); // red at first, on the left
}

TEST(ReadTiff, DamageIsRefusedOrHarmless) {
    testing::internal::CaptureStderr();
    for (const int compression : {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_CCITTFAX4})
        for (const int tileSide : {0, 16}) {
            TiffForm form = {.columns = 9, .rows = 5, .bits = 1};
            form.compression = compression;
            form.tileSide = tileSide;
            std::mt19937 random(4);
            EXPECT_GT(CountNoticedDamage(MakeTiff(form, RandomSamples(form, random))), 100U);
        }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ReadTiff, RefusalsSayWhy) {
    const std::pair<TiffForm, const char*> cases[] = {
        {{.columns = 32768}, "is 32768 x 1 pixels; sides above 32767 cannot be stored"},
        {{.bits = 16,
          .photometric = PHOTOMETRIC_PALETTE,
          .setMore = SetTable(std::vector<std::uint16_t>(3 << 16))},
         "is a TIFF picture with samples of 16 bits, not 1 to 8"},
        {{.setMore = [](TIFF* t) { TIFFSetField(t, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_INT); }},
         "is a TIFF picture of signed or floating-point samples; unsigned ones are expected"},
        {{.photometric = PHOTOMETRIC_CIELAB, .samples = 3},
         "is a TIFF picture of photometric interpretation 8 and 3 samples a pixel; grey, palette, "
         "RGB, CMYK or YCbCr without more is expected"},
        {{.setMore =
              [](TIFF* t) {
                  TIFFSetField(t, TIFFTAG_IMAGEDESCRIPTION, std::string(33 << 20, 'x').c_str());
              }},
         "has more than 32 megabytes of texts and profiles"},
        {{.samples = 65}, "is a TIFF picture of 65 samples a pixel, not 1 to 64"}};
    for (const auto& [form, reason] : cases) {
        const auto count = static_cast<std::size_t>(form.columns * form.samples);
        EXPECT_EQ(RefusalOf(MakeTiff(form, Samples(count))), reason);
    }
    Bytes pages = MakeTiff({.pictures = 2}, {7});
    pages.pop_back(); // in the directory of the second
    EXPECT_EQ(PixelsOf(PictureFromBytes(pages)), Bytes{7});
    EXPECT_NE(ComplaintAbout(pages), "");
    Bytes cut = MakeTiff({.rows = 6, .compression = COMPRESSION_LZW}, Samples(6));
    cut.resize(cut.size() - 1);
    EXPECT_EQ(RefusalOf(cut).rfind("is a damaged TIFF picture: ", 0), 0U) << RefusalOf(cut);
}
