// JPEG pictures against the library's own plain decoding, and what is refused.
#include "MakeExif.h"
#include "MakeProfile.h"
#include "PictureFromBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>

#include <jpeglib.h> // wants <cstdio> before

using gif89::Picture;

namespace {

struct JpegForm {
    int columns = 37, rows = 21;
    J_COLOR_SPACE given = JCS_RGB, stored = JCS_YCbCr;
    int samples = 3;
    bool adobe = true; // the marker that goes with ink colors
    bool progressive = false;
    bool separateScans = false; // one for each component
    std::string comment = {};
    Bytes profile = {}; // empty for none
    Bytes exif = {};    // empty for none
};

// Soft shapes with some noise, so that transform, subsampling and smoothing all matter.
Bytes RandomRows(const JpegForm& form, unsigned seed) {
    std::mt19937 random(seed);
    Bytes samples;
    for (int y = 0; y < form.rows; ++y)
        for (int x = 0; x < form.columns; ++x)
            for (int c = 0; c < form.samples; ++c)
                samples.push_back(static_cast<std::uint8_t>(x * (c + 3) + y * (7 - c) +
                                                            static_cast<int>(random() % 32)));
    return samples;
}

Bytes MakeJpeg(const JpegForm& form, const Bytes& samples) {
    jpeg_compress_struct writer = {};
    jpeg_error_mgr errors = {};
    writer.err = jpeg_std_error(&errors);
    jpeg_create_compress(&writer);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&writer, &memory, &size);
    writer.image_width = static_cast<JDIMENSION>(form.columns);
    writer.image_height = static_cast<JDIMENSION>(form.rows);
    writer.input_components = form.samples;
    writer.in_color_space = form.given;
    jpeg_set_defaults(&writer);
    jpeg_set_colorspace(&writer, form.stored);
    if (!form.adobe) writer.write_Adobe_marker = FALSE;
    if (form.progressive) jpeg_simple_progression(&writer);
    const jpeg_scan_info scans[] = {
        {1, {0}, 0, 63, 0, 0}, {1, {1}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}};
    if (form.separateScans) {
        writer.scan_info = scans;
        writer.num_scans = 3;
    }
    jpeg_start_compress(&writer, TRUE);
    if (!form.comment.empty())
        jpeg_write_marker(&writer, JPEG_COM, reinterpret_cast<const JOCTET*>(form.comment.data()),
                          static_cast<unsigned>(form.comment.size()));
    if (!form.profile.empty())
        jpeg_write_icc_profile(&writer, form.profile.data(),
                               static_cast<unsigned>(form.profile.size()));
    for (const std::string start : {"http", "Exif"}) { // other things come in the same marker
        Bytes block(start.begin(), start.end());
        block.resize(6);
        block.insert(block.end(), form.exif.begin(), form.exif.end());
        if (!form.exif.empty())
            jpeg_write_marker(&writer, JPEG_APP0 + 1, block.data(),
                              static_cast<unsigned>(block.size()));
    }
    const auto rowBytes = static_cast<std::size_t>(form.columns * form.samples);
    while (writer.next_scanline < writer.image_height) {
        JSAMPROW row = const_cast<JSAMPROW>(samples.data() + rowBytes * writer.next_scanline);
        jpeg_write_scanlines(&writer, &row, 1);
    }
    jpeg_finish_compress(&writer);
    Bytes file(memory, memory + size);
    jpeg_destroy_compress(&writer);
    std::free(memory);
    return file;
}

Bytes DecodePlainly(const Bytes& file, J_COLOR_SPACE into) {
    jpeg_decompress_struct decoder = {};
    jpeg_error_mgr errors = {};
    decoder.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&decoder);
    jpeg_mem_src(&decoder, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&decoder, TRUE);
    decoder.out_color_space = into;
    jpeg_start_decompress(&decoder);
    const std::size_t rowBytes =
        decoder.output_width * static_cast<std::size_t>(decoder.output_components);
    Bytes samples(rowBytes * decoder.output_height);
    while (decoder.output_scanline < decoder.output_height) {
        JSAMPROW row = samples.data() + rowBytes * decoder.output_scanline;
        jpeg_read_scanlines(&decoder, &row, 1);
    }
    jpeg_destroy_decompress(&decoder);
    return samples;
}

std::size_t FindMarker(const Bytes& file, std::uint8_t marker) {
    const std::uint8_t bytes[] = {0xFF, marker};
    return static_cast<std::size_t>(
        std::search(file.begin(), file.end(), std::begin(bytes), std::end(bytes)) - file.begin());
}

} // namespace

TEST(ReadJpeg, GreyAndColorAreTheLibrarysOwnPixels) {
    const std::pair<JpegForm, J_COLOR_SPACE> cases[] = {
        {{.given = JCS_GRAYSCALE, .stored = JCS_GRAYSCALE, .samples = 1}, JCS_GRAYSCALE},
        {{.columns = 400, .rows = 300}, JCS_RGB}, // more than is buffered at once
        {{.progressive = true}, JCS_RGB},
        {{.stored = JCS_RGB}, JCS_RGB}};
    for (const auto& [form, into] : cases) {
        const Bytes file = MakeJpeg(form, RandomRows(form, 7));
        const Picture picture = PictureFromBytes(file);
        EXPECT_TRUE(picture.rows == form.rows && picture.columns == form.columns);
        EXPECT_EQ(picture.kind, form.samples == 1 ? Picture::Kind::indexed : Picture::Kind::rgb);
        EXPECT_EQ(PixelsOf(picture), DecodePlainly(file, into)) << "stored as " << form.stored;
        EXPECT_EQ(picture.table.blue[200], form.samples == 1 ? 200 : 0);
    }
}

TEST(ReadJpeg, InkBecomesLight) {
    // Without the marker YCCK could not be told from CMYK.
    for (const auto& [stored, adobe] :
         {std::pair{JCS_CMYK, true}, {JCS_CMYK, false}, {JCS_YCCK, true}}) {
        const JpegForm form = {.given = JCS_CMYK, .stored = stored, .samples = 4, .adobe = adobe};
        const Bytes file = MakeJpeg(form, RandomRows(form, 8));
        const Bytes inks = DecodePlainly(file, JCS_CMYK);
        Bytes expected;
        for (std::size_t n = 0; n < inks.size(); n += 4)
            for (std::size_t c = 0; c < 3; ++c) {
                const double light = inks[n + c] / 255.0, rest = inks[n + 3] / 255.0;
                expected.push_back(static_cast<std::uint8_t>(
                    255 * (adobe ? light * rest : (1 - light) * (1 - rest)) + 0.5));
            }
        EXPECT_EQ(PixelsOf(PictureFromBytes(file)), expected)
            << "stored as " << stored << ", Adobe marker " << adobe;
    }
}

TEST(ReadJpeg, ProfileAndOrientationAreApplied) {
    using enum gif89::InputNotes::ProfileUse;
    JpegForm form = {.given = JCS_GRAYSCALE, .stored = JCS_GRAYSCALE, .samples = 1};
    form.profile = MakeGreyProfile(1);
    form.profile.resize(70'000); // goes into two markers
    form.exif = MakeExif(3);
    Bytes file = MakeJpeg(form, RandomRows(form, 13));
    Bytes stored = DecodePlainly(file, JCS_GRAYSCALE);
    std::reverse(stored.begin(), stored.end());
    Picture picture = PictureFromBytes(file);
    EXPECT_EQ(picture.notes.profileUse, converted);
    EXPECT_EQ(PixelsOf(picture), stored);
    EXPECT_EQ(picture.comment, ""); // none of the other markers' texts
    EXPECT_NEAR(picture.table.red[60], StandardLevel(60 / 255.0), 1);

    file[FindMarker(file, 0xE2) + 16] = 7; // the first part of the profile says it is the seventh
    picture = PictureFromBytes(file);
    EXPECT_EQ(picture.notes.profileUse, unusable);
    EXPECT_EQ(picture.table.red[60], 60);
}

TEST(ReadJpeg, InkProfileIsApplied) {
    for (const bool adobe : {true, false}) {
        JpegForm form = {.given = JCS_CMYK, .stored = JCS_CMYK, .samples = 4, .adobe = adobe};
        form.profile = MakeInkProfile();
        const Bytes file = MakeJpeg(form, RandomRows(form, 14));
        const Bytes inks = DecodePlainly(file, JCS_CMYK);
        const Bytes pixels = PixelsOf(PictureFromBytes(file));
        for (std::size_t n = 0; n < inks.size() / 4; ++n) {
            const std::uint8_t* ink = &inks[4 * n];
            const double stored = (10 * ink[0] + 20 * ink[1] + 30 * ink[2] + 40 * ink[3]) / 255.0;
            EXPECT_NEAR(pixels[3 * n], StandardLevel(LightOf(adobe ? stored : 100 - stored)), 1)
                << "pixel " << n << ", Adobe marker " << adobe;
        }
    }
}

TEST(ReadJpeg, CommentIsTheMarkersText) {
    const std::pair<std::string, std::string> cases[] = {
        {std::string("d\xC3\xA9j\xC3\xA0\0vu", 10), "d\xC3\xA9j\xC3\xA0"},
        {"\xE9t\xE9", "\xC3\xA9t\xC3\xA9"},           // Latin-1
        {"\xE0\x9F\xBF", "\xC3\xA0\xC2\x9F\xC2\xBF"}, // overlong
        {"\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xC2\x80"}, // surrogate
        {"\xF0\x9F\x90\xA2", "\xF0\x9F\x90\xA2"},
        {"\xE2\x82", "\xC3\xA2\xC2\x82"}}; // cut
    for (const auto& [stored, comment] : cases) {
        const JpegForm form = {.columns = 1, .rows = 1, .comment = stored};
        EXPECT_EQ(PictureFromBytes(MakeJpeg(form, {1, 2, 3})).comment, comment) << stored;
    }
}

TEST(ReadJpeg, DamageIsRefusedOrHarmless) {
    for (const bool progressive : {false, true}) {
        const JpegForm form = {.columns = 9, .rows = 10, .progressive = progressive};
        const Bytes file = MakeJpeg(form, RandomRows(form, 9));
        EXPECT_GT(CountRefusedDamage(file), file.size());

        Bytes padded = file; // between the pixels and the end, and after it
        padded.insert(padded.end() - 2, 30, 0x55);
        padded.insert(padded.end(), 9, 0x55);
        EXPECT_EQ(PixelsOf(PictureFromBytes(padded)), PixelsOf(PictureFromBytes(file)));
        padded.resize(file.size() + 20); // all pixels are there, but no end
        EXPECT_NE(RefusalOf(padded), "");
    }
}

TEST(ReadJpeg, RefusalsSayWhy) {
    const JpegForm form = {.columns = 40, .rows = 40};
    const Bytes file = MakeJpeg(form, RandomRows(form, 10));

    EXPECT_EQ(RefusalOf(Bytes(file.begin(), file.end() - 2)),
              "is a damaged JPEG picture: the file ends before the picture does");

    Bytes wide = file; // height and width stand five bytes behind the marker
    const std::size_t frame = FindMarker(wide, 0xC0);
    wide[frame + 7] = 0x80;
    wide[frame + 8] = 0;
    EXPECT_EQ(RefusalOf(wide), "is 32768 x 40 pixels; sides above 32767 cannot be stored");

    const JpegForm pair = {.given = JCS_UNKNOWN, .stored = JCS_UNKNOWN, .samples = 2};
    EXPECT_EQ(RefusalOf(MakeJpeg(pair, RandomRows(pair, 11))),
              "is a JPEG picture of 2 components; 1 (grey), 3 (RGB) or 4 (CMYK) are expected");
}

TEST(ReadJpeg, EndlessScansAreRefused) {
    const JpegForm form = {.separateScans = true};
    const Bytes file = MakeJpeg(form, RandomRows(form, 12));
    // One scan with the tables of the next.
    const auto scan = file.begin() + static_cast<std::ptrdiff_t>(FindMarker(file, 0xDA));
    const auto scanEnd =
        scan + static_cast<std::ptrdiff_t>(FindMarker(Bytes(scan, file.end()), 0xC4));
    Bytes endless(file.begin(), scan);
    for (int n = 0; n < 600; ++n) endless.insert(endless.end(), scan, scanEnd);
    endless.insert(endless.end(), scanEnd, file.end());
    EXPECT_EQ(RefusalOf(endless), "is a damaged JPEG picture: it has more than 500 scans");
}
