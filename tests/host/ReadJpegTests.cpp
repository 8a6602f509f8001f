// JPEG pictures against the library's own plain decoding, and what is refused.
#include "MakeExif.h"
#include "MakeProfile.h"
#include "PictureFromBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>

#include <jpeglib.h> // wants <cstdio> before

using gif89::Picture;

namespace {

struct JpegForm {
    int columns = 37, rows = 21;
    int samples = 3;
    J_COLOR_SPACE given = JCS_RGB, stored = JCS_YCbCr;
    bool adobe = true; // the marker that goes with ink colors
    bool progressive = false;
    bool separateScans = false; // one for each component
    std::string comment = {};
    Bytes profile = {}; // empty for none
    Bytes exif = {};    // empty for none
};

const JpegForm kGrey = {.samples = 1, .given = JCS_GRAYSCALE, .stored = JCS_GRAYSCALE};

void WriteMarker(jpeg_compress_struct& writer, int marker, const Bytes& content) {
    jpeg_write_marker(&writer, marker, content.data(), static_cast<unsigned>(content.size()));
}

// Soft shapes with some noise, so that transform, subsampling and smoothing all matter.
void WriteRows(jpeg_compress_struct& writer) {
    std::mt19937 random(7);
    for (unsigned y = 0; y < writer.image_height; ++y) {
        Bytes row;
        for (unsigned x = 0; x < writer.image_width; ++x)
            for (unsigned c = 0; c < static_cast<unsigned>(writer.input_components); ++c)
                row.push_back(static_cast<std::uint8_t>(x * (c + 3) + y * (7 - c) + random() % 32));
        JSAMPROW samples = row.data();
        jpeg_write_scanlines(&writer, &samples, 1);
    }
}

Bytes MakeJpeg(const JpegForm& form) {
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
        WriteMarker(writer, JPEG_COM, Bytes(form.comment.begin(), form.comment.end()));
    if (!form.profile.empty())
        jpeg_write_icc_profile(&writer, form.profile.data(),
                               static_cast<unsigned>(form.profile.size()));
    if (!form.exif.empty()) {
        WriteMarker(writer, JPEG_APP0 + 1, {'h', 't', 't', 'p'}); // others use this marker, too
        WriteMarker(writer, JPEG_APP0 + 1, Join({{'E', 'x', 'i', 'f', 0, 0}, form.exif}));
    }
    WriteRows(writer);
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
    for (const JpegForm& form : {kGrey, JpegForm{.columns = 400, .rows = 300}, // buffered in parts
                                 JpegForm{.progressive = true}, JpegForm{.stored = JCS_RGB}}) {
        const Bytes file = MakeJpeg(form);
        const Picture picture = PictureFromBytes(file);
        EXPECT_TRUE(picture.rows == form.rows && picture.columns == form.columns);
        EXPECT_EQ(PixelsOf(picture), DecodePlainly(file, form.given))
            << "stored as " << form.stored;
        EXPECT_EQ(picture.table.blue[200], form.samples == 1 ? 200 : 0);
    }
}

TEST(ReadJpeg, InkBecomesLight) {
    // Without the marker YCCK could not be told from CMYK.
    for (const auto& [stored, adobe] :
         {std::pair{JCS_CMYK, true}, {JCS_CMYK, false}, {JCS_YCCK, true}}) {
        JpegForm form = {.samples = 4, .given = JCS_CMYK, .stored = stored, .adobe = adobe};
        const Bytes file = MakeJpeg(form), inks = DecodePlainly(file, JCS_CMYK);
        form.profile = MakeInkProfile();
        const Bytes plain = PixelsOf(PictureFromBytes(file)),
                    profiled = PixelsOf(PictureFromBytes(MakeJpeg(form)));
        ASSERT_EQ(plain.size(), inks.size() / 4 * 3);
        for (std::size_t n = 0; n < inks.size() / 4; ++n) {
            double left[4]; // of the paper
            for (std::size_t c = 0; c < 4; ++c)
                left[c] = (adobe ? inks[4 * n + c] : 255 - inks[4 * n + c]) / 255.0;
            const auto what = testing::Message()
                              << "pixel " << n << ", stored as " << stored << ", Adobe " << adobe;
            for (std::size_t c = 0; c < 3; ++c)
                EXPECT_EQ(plain[3 * n + c], std::lround(255 * left[c] * left[3])) << what;
            const double lightness = 10 * left[0] + 20 * left[1] + 30 * left[2] + 40 * left[3];
            EXPECT_NEAR(profiled[3 * n], StandardLevel(LightOf(lightness)), 1) << what;
        }
    }
}

TEST(ReadJpeg, ProfileAndOrientationAreApplied) {
    using enum gif89::InputNotes::ProfileUse;
    JpegForm form = kGrey;
    form.profile = MakeGreyProfile(1);
    form.profile.resize(70'000); // goes into two markers
    form.exif = MakeExif(3);
    Bytes file = MakeJpeg(form);
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
        EXPECT_EQ(PictureFromBytes(MakeJpeg(form)).comment, comment) << stored;
    }
}

TEST(ReadJpeg, DamageIsRefusedOrHarmless) {
    for (const bool progressive : {false, true}) {
        const Bytes file = MakeJpeg({.columns = 9, .rows = 10, .progressive = progressive});
        EXPECT_GT(CountNoticedDamage(file), file.size());

        Bytes padded = file; // between the pixels and the end, and after it
        padded.insert(padded.end() - 2, 30, 0x55);
        padded.insert(padded.end(), 9, 0x55);
        EXPECT_EQ(PixelsOf(PictureFromBytes(padded)), PixelsOf(PictureFromBytes(file)));
        padded.resize(file.size() + 20); // all pixels are there, but no end
        EXPECT_EQ(ComplaintAbout(padded),
                  "all pixels were read, but behind them the file is damaged: its end is missing");
    }
}

TEST(ReadJpeg, RefusalsSayWhy) {
    Bytes file = MakeJpeg({.columns = 40, .rows = 40});
    EXPECT_EQ(RefusalOf(Bytes(file.begin(), file.begin() + 9)),
              "is a damaged JPEG picture: the file ends before the picture does");
    const Bytes cut = MakeJpeg({.columns = 40, .rows = 40, .progressive = true});
    const std::size_t second = FindMarker(cut, 0xDA) + 2;
    const Bytes rest(cut.data() + second, cut.data() + cut.size());
    EXPECT_EQ(RefusalOf(Bytes(cut.data(), cut.data() + second + FindMarker(rest, 0xDA))),
              "is a damaged JPEG picture: the file ends before the picture does");
    const Bytes remark = Join({{0xFF, 0xFE, 0xFF, 0xFF}, Bytes(65533, 'x')});
    std::vector<Bytes> wordy(520, remark);
    wordy.insert(wordy.begin(), Bytes{0xFF, 0xD8});
    EXPECT_EQ(RefusalOf(Join(wordy)), "has more than 32 megabytes of texts and profiles");

    file[FindMarker(file, 0xC0) + 7] = 0x80; // the high byte of the width
    EXPECT_EQ(RefusalOf(file), "is 32808 x 40 pixels; sides above 32767 cannot be stored");

    EXPECT_EQ(RefusalOf(MakeJpeg({.samples = 2, .given = JCS_UNKNOWN, .stored = JCS_UNKNOWN})),
              "is a JPEG picture of 2 components; 1 (grey), 3 (RGB) or 4 (CMYK) are expected");
}

TEST(ReadJpeg, EndlessScansAreRefused) {
    const Bytes file = MakeJpeg({.separateScans = true});
    // One scan with the tables of the next.
    const std::size_t scan = FindMarker(file, 0xDA);
    const Bytes before(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(scan));
    const Bytes rest(file.begin() + static_cast<std::ptrdiff_t>(scan), file.end());
    const auto scanBytes = static_cast<std::ptrdiff_t>(FindMarker(rest, 0xC4));
    std::vector<Bytes> parts(600, Bytes(rest.begin(), rest.begin() + scanBytes));
    parts.insert(parts.begin(), before);
    parts.emplace_back(rest.begin() + scanBytes, rest.end());
    EXPECT_EQ(RefusalOf(Join(parts)), "is a damaged JPEG picture: it has more than 500 scans");
}
