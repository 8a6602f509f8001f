#include "ReadTiff.h"

#include "CommentText.h"
#include "MetadataAllowance.h"
#include "Problem.h"
#include "ScaleSample.h"
#include "TiffFile.h"
#include "TiffSamples.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <deque>

namespace gif89 {

namespace {

constexpr int kMostSamples = 64; // of a pixel

// The library has more decoders, but only these are in wide use. Some of the others have no limit
// on the memory and the time that damaged data can make them use.
constexpr std::uint16_t kCompressions[] = {
    COMPRESSION_NONE,          COMPRESSION_LZW,  COMPRESSION_PACKBITS, COMPRESSION_DEFLATE,
    COMPRESSION_ADOBE_DEFLATE, COMPRESSION_JPEG, COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3,
    COMPRESSION_CCITTFAX4,     COMPRESSION_LZMA, COMPRESSION_ZSTD,     COMPRESSION_WEBP};

using enum Picture::Kind;
constexpr TiffColorForm kColorForms[] = {{PHOTOMETRIC_MINISWHITE, indexed, 1},
                                         {PHOTOMETRIC_MINISBLACK, indexed, 1},
                                         {PHOTOMETRIC_PALETTE, indexed, 1},
                                         {PHOTOMETRIC_RGB, rgb, 3},
                                         {PHOTOMETRIC_SEPARATED, rgb, 4}};

// The library's decoder converts the colours of JPEG pictures if it is told to before it starts.
bool IsJpegOfRGB(const TiffLayout& layout) {
    return layout.photometric == PHOTOMETRIC_YCBCR && layout.compression == COMPRESSION_JPEG &&
           layout.samples == 3 && !layout.separate;
}

// Photometric interpretations in which a sample of colour may belong to several pixels.
bool IsLeftToLibrary(const TiffLayout& layout) {
    return layout.photometric == PHOTOMETRIC_YCBCR && !IsJpegOfRGB(layout);
}

const TiffColorForm* FindForm(const TiffLayout& layout) {
    if (IsLeftToLibrary(layout)) return nullptr;
    const int photometric = IsJpegOfRGB(layout) ? PHOTOMETRIC_RGB : layout.photometric;
    const auto* const found =
        std::find_if(std::begin(kColorForms), std::end(kColorForms),
                     [=](const TiffColorForm& each) { return each.photometric == photometric; });
    return found == std::end(kColorForms) ? nullptr : found;
}

void FindAlpha(const TiffFile& file, TiffLayout& layout) {
    std::uint16_t count = 0;
    const std::uint16_t* kinds = nullptr;
    TIFFGetFieldDefaulted(file.Get(), TIFFTAG_EXTRASAMPLES, &count, &kinds);
    for (int n = 0; n < count && layout.form->colorants + n < layout.samples; ++n) {
        if (kinds[n] != EXTRASAMPLE_ASSOCALPHA && kinds[n] != EXTRASAMPLE_UNASSALPHA) continue;
        layout.alpha = layout.form->colorants + n;
        layout.multiplied =
            kinds[n] == EXTRASAMPLE_ASSOCALPHA && layout.photometric != PHOTOMETRIC_PALETTE;
        return;
    }
    // Many writers do not state what the fourth sample of an RGB picture is.
    layout.guessed = layout.form->colorants == 3 && layout.samples > 3 &&
                     (count == 0 || kinds[0] == EXTRASAMPLE_UNSPECIFIED);
    if (layout.guessed) layout.alpha = 3;
}

TiffLayout ReadLayout(const TiffFile& file) {
    TiffLayout layout;
    layout.columns = file.Field(TIFFTAG_IMAGEWIDTH, layout.columns);
    layout.rows = file.Field(TIFFTAG_IMAGELENGTH, layout.rows);
    layout.bits = file.Field(TIFFTAG_BITSPERSAMPLE, layout.bits);
    layout.samples = file.Field(TIFFTAG_SAMPLESPERPIXEL, layout.samples);
    layout.sampleFormat = file.Field(TIFFTAG_SAMPLEFORMAT, layout.sampleFormat);
    if (TIFFGetField(file.Get(), TIFFTAG_PHOTOMETRIC, &layout.photometric) == 0)
        throw Problem("is a damaged TIFF picture: it does not say what its samples mean");
    layout.compression = file.Field(TIFFTAG_COMPRESSION, layout.compression);
    layout.separate = file.Field(TIFFTAG_PLANARCONFIG, std::uint16_t{PLANARCONFIG_CONTIG}) ==
                      PLANARCONFIG_SEPARATE;
    layout.form = FindForm(layout);
    if (IsJpegOfRGB(layout)) TIFFSetField(file.Get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (layout.form) FindAlpha(file, layout);
    return layout;
}

void CheckLayout(const TiffFile& file, const TiffLayout& layout) {
    const auto refuse = [](const std::string& what) { throw Problem("is a TIFF picture " + what); };
    if (std::find(std::begin(kCompressions), std::end(kCompressions), layout.compression) ==
            std::end(kCompressions) ||
        TIFFIsCODECConfigured(layout.compression) == 0)
        refuse("with compression number " + std::to_string(layout.compression) +
               ", which is not known");
    if (IsLeftToLibrary(layout) && layout.samples == 3) return;
    if (!layout.form)
        refuse("of photometric interpretation " + std::to_string(layout.photometric) + " and " +
               std::to_string(layout.samples) +
               " samples a pixel; grey, palette, RGB, CMYK or YCbCr without more is expected");
    if (layout.sampleFormat != SAMPLEFORMAT_UINT && layout.sampleFormat != SAMPLEFORMAT_VOID)
        refuse("of signed or floating-point samples; unsigned ones are expected");
    const int mostBits = layout.photometric == PHOTOMETRIC_PALETTE ? 8 : 16;
    if (layout.bits < 1 || layout.bits > mostBits)
        refuse("with samples of " + std::to_string(layout.bits) + " bits, not 1 to " +
               std::to_string(mostBits));
    if (layout.samples < layout.form->colorants || layout.samples > kMostSamples)
        refuse("of " + std::to_string(layout.samples) + " samples a pixel, not " +
               std::to_string(layout.form->colorants) + " to " + std::to_string(kMostSamples));
    if (layout.photometric == PHOTOMETRIC_SEPARATED &&
        file.Field(TIFFTAG_INKSET, std::uint16_t{INKSET_CMYK}) != INKSET_CMYK)
        refuse("of other inks than cyan, magenta, yellow and black");
}

InputNotes TakeNotes(const TiffFile& file, const TiffLayout& layout) {
    InputNotes notes;
    notes.format = "TIFF";
    notes.bits = layout.bits;
    notes.orientation = file.Field(TIFFTAG_ORIENTATION, std::uint16_t{ORIENTATION_TOPLEFT});
    std::uint32_t size = 0;
    const void* bytes = nullptr;
    if (TIFFGetField(file.Get(), TIFFTAG_ICCPROFILE, &size, &bytes) != 0 && bytes) {
        const auto* const first = static_cast<const std::uint8_t*>(bytes);
        notes.profile.assign(first, first + size);
    }
    file.Check();
    return notes;
}

std::string TakeComment(const TiffFile& file) {
    const char* text = nullptr;
    TIFFGetField(file.Get(), TIFFTAG_IMAGEDESCRIPTION, &text);
    return text ? CommentText(text) : std::string();
}

/// How the 16 bits of a table's entries are used. They should fill the whole range, but some
/// writers put levels of 8 bits into the low or the high byte.
enum class TableRange : std::uint8_t { whole, lowByte, highByte };

TableRange FindRange(std::span<std::uint16_t* const> channels, int colors) {
    unsigned low = 0, high = 0;
    for (const std::uint16_t* const channel : channels)
        for (int index = 0; index < colors; ++index) {
            low |= channel[index] & 0xFF;
            high |= channel[index] >> 8;
        }
    if (high == 0) return TableRange::lowByte;
    return low == 0 ? TableRange::highByte : TableRange::whole;
}

void SetTable(const TiffFile& file, Picture& picture, int bits) {
    std::uint16_t* channels[3] = {};
    TIFFGetField(file.Get(), TIFFTAG_COLORMAP, &channels[0], &channels[1], &channels[2]);
    file.Check(channels[0] && channels[1] && channels[2]);
    picture.colors = 1 << bits;
    const TableRange range = FindRange(channels, picture.colors);
    const auto level = [range, &picture](unsigned value) {
        if (range == TableRange::highByte) return static_cast<std::uint8_t>(value >> 8);
        if (range == TableRange::lowByte) return static_cast<std::uint8_t>(value);
        if (value % 257 != 0) picture.notes.rounded = true;
        return ScaleSample(value, 65535U);
    };
    for (int index = 0; index < picture.colors; ++index)
        SetTableEntry(
            picture.table, index,
            {0, level(channels[0][index]), level(channels[1][index]), level(channels[2][index])});
}

void SetRamp(Picture& picture, const TiffLayout& layout) {
    SetGreyRamp(picture, 1 << std::min<int>(layout.bits, 8));
    if (layout.photometric != PHOTOMETRIC_MINISWHITE) return;
    for (std::uint8_t* const plane : {picture.table.red, picture.table.green, picture.table.blue})
        std::reverse(plane, plane + picture.colors);
}

/// Takes `count` samples out of packed bytes and stores them `step` apart.
void Unpack(const std::uint8_t* bytes, int bits, int count, std::uint16_t* samples, int step) {
    if (bits == 8) {
        for (; count > 0; --count, samples += step) *samples = *bytes++;
        return;
    }
    if (bits == 16) { // the library has brought them into this machine's byte order
        for (; count > 0; --count, samples += step, bytes += 2) std::memcpy(samples, bytes, 2);
        return;
    }
    unsigned held = 0;
    int heldBits = 0;
    for (; count > 0; --count, samples += step) {
        for (; heldBits < bits; heldBits += 8) held = held << 8 | *bytes++;
        heldBits -= bits;
        *samples = static_cast<std::uint16_t>(held >> heldBits & ((1U << bits) - 1));
    }
}

/// Reads the rows or tiles of a picture whose samples we store ourselves.
class SampleReader {
  public:
    SampleReader(std::span<const std::uint8_t> bytes, MetadataAllowance& left,
                 const TiffFile& opened, const TiffLayout& fileLayout, Picture& picture)
        : content(bytes), allowance(left), file(opened), layout(fileLayout),
          placer(picture, layout), planes(layout.separate ? layout.samples : 1),
          samplesOfPlane(layout.separate ? 1 : layout.samples) {}

    void Read() {
        if (TIFFIsTiled(file.Get()) != 0)
            ReadTiles();
        else
            ReadRows();
    }

  private:
    void ReadRows();
    void ReadTiles();
    void MakeBuffers(std::uint64_t bufferBytes, std::uint64_t rowBytes, std::uint32_t rowPixels);
    void PlaceBuffers(std::uint64_t offset, std::uint32_t row, std::uint32_t column,
                      std::uint32_t count);

    std::span<const std::uint8_t> content;
    MetadataAllowance& allowance;
    const TiffFile& file;
    const TiffLayout& layout;
    TiffSamplePlacer placer;
    const int planes, samplesOfPlane;
    std::vector<std::vector<std::uint8_t>> buffers; // a row or a tile of each plane
    std::vector<std::uint16_t> samples;             // unpacked from one row of the buffers
};

// Reads row by row, because a strip may be the whole picture. The library can only read on in the
// present strip, so the file is opened once for each plane.
void SampleReader::ReadRows() {
    std::deque<TiffFile> others;
    std::vector<const TiffFile*> files = {&file};
    while (files.size() < static_cast<std::size_t>(planes))
        files.push_back(&others.emplace_back(content, allowance));
    const std::uint64_t rowBytes = TIFFScanlineSize64(file.Get());
    MakeBuffers(rowBytes, rowBytes, layout.columns);
    for (std::uint32_t row = 0; row < layout.rows; ++row) {
        for (std::size_t plane = 0; plane < files.size(); ++plane)
            files[plane]->Check(TIFFReadScanline(files[plane]->Get(), buffers[plane].data(), row,
                                                 static_cast<std::uint16_t>(plane)) == 1);
        PlaceBuffers(0, row, 0, layout.columns);
    }
}

void SampleReader::ReadTiles() {
    TIFF* const tiff = file.Get();
    const auto tileColumns = file.Field(TIFFTAG_TILEWIDTH, std::uint32_t{0});
    const auto tileRows = file.Field(TIFFTAG_TILELENGTH, std::uint32_t{0});
    const std::uint64_t tileBytes = TIFFTileSize64(tiff), rowBytes = TIFFTileRowSize64(tiff);
    file.Check(tileColumns > 0 && tileRows > 0);
    MakeBuffers(tileBytes, rowBytes, tileColumns);
    for (std::uint64_t top = 0; top < layout.rows; top += tileRows)
        for (std::uint64_t left = 0; left < layout.columns; left += tileColumns) {
            const auto firstRow = static_cast<std::uint32_t>(top);
            const auto column = static_cast<std::uint32_t>(left);
            for (std::uint16_t plane = 0; plane < planes; ++plane) {
                const std::uint32_t tile = TIFFComputeTile(tiff, column, firstRow, 0, plane);
                const auto wanted = static_cast<tmsize_t>(tileBytes);
                file.Check(TIFFReadEncodedTile(tiff, tile, buffers[plane].data(), wanted) ==
                           wanted);
            }
            const std::uint32_t rows = std::min(tileRows, layout.rows - firstRow);
            const std::uint32_t columns = std::min(tileColumns, layout.columns - column);
            for (std::uint32_t row = 0; row < rows; ++row)
                PlaceBuffers(row * rowBytes, firstRow + row, column, columns);
        }
}

void SampleReader::MakeBuffers(std::uint64_t bufferBytes, std::uint64_t rowBytes,
                               std::uint32_t rowPixels) {
    const auto planeCount = static_cast<std::uint64_t>(planes);
    if (bufferBytes > TiffFile::kLargestBlock / planeCount)
        throw Problem("is a TIFF picture with tiles of " +
                      std::to_string(bufferBytes * planeCount >> 20) + " megabytes, not up to " +
                      std::to_string(TiffFile::kLargestBlock >> 20));
    const std::uint64_t rowSamples =
        std::uint64_t{rowPixels} * static_cast<std::uint64_t>(samplesOfPlane);
    file.Check(bufferBytes >= rowBytes && rowBytes >= (rowSamples * layout.bits + 7) / 8);
    buffers.resize(planeCount);
    for (std::vector<std::uint8_t>& buffer : buffers) buffer.resize(bufferBytes);
    samples.resize(std::size_t{std::min(rowPixels, layout.columns)} * layout.samples);
}

// One row of the buffers, `offset` bytes from their start.
void SampleReader::PlaceBuffers(std::uint64_t offset, std::uint32_t row, std::uint32_t column,
                                std::uint32_t count) {
    const auto pixels = static_cast<int>(count);
    for (std::size_t plane = 0; plane < buffers.size(); ++plane)
        Unpack(buffers[plane].data() + offset, layout.bits, pixels * samplesOfPlane,
               samples.data() + plane, planes);
    placer.Place(static_cast<int>(row), static_cast<int>(column), pixels, samples.data());
}

Picture MakeTarget(const TiffFile& file, const TiffLayout& layout) {
    Picture::Kind kind = layout.form->kind;
    if (kind == rgb && layout.alpha >= 0) kind = rgbAlpha;
    Picture picture = MakePicture(kind, layout.rows, layout.columns);
    picture.notes = TakeNotes(file, layout);
    if (layout.photometric == PHOTOMETRIC_PALETTE)
        SetTable(file, picture, layout.bits);
    else if (kind == indexed)
        SetRamp(picture, layout);
    return picture;
}

Picture ReadThroughLibrary(const TiffFile& file, const TiffLayout& layout) {
    char reason[1024] = "";
    if (TIFFRGBAImageOK(file.Get(), reason) == 0)
        throw Problem("is a TIFF picture of a kind that cannot be read: " + std::string(reason));
    Picture picture = MakePicture(rgbAlpha, layout.rows, layout.columns);
    picture.notes = TakeNotes(file, layout);
    // The library packs each pixel into a word, red in the lowest byte.
    static_assert(std::endian::native == std::endian::little);
    auto* const words = reinterpret_cast<std::uint32_t*>(picture.pixels.get());
    constexpr int kStopOnError = 1;
    file.Check(TIFFReadRGBAImageOriented(file.Get(), layout.columns, layout.rows, words,
                                         picture.notes.orientation, kStopOnError) != 0);
    return picture;
}

// If a sample of unstated meaning is 0 everywhere, it is more likely unused than meant to make the
// whole picture transparent.
void DropUnusedSample(Picture& picture) {
    std::uint8_t* const pixels = picture.pixels.get();
    for (std::size_t at = 3; at < picture.PixelBytes(); at += 4)
        if (pixels[at] != 0) return;
    for (std::size_t at = 3; at < picture.PixelBytes(); at += 4) pixels[at] = 255;
    ++picture.notes.droppedSamples;
}

void CountPictures(TiffFile& file, InputNotes& notes) {
    notes.pictures = static_cast<int>(TIFFNumberOfDirectories(file.Get()));
    const std::string complaint = file.TakeComplaint();
    if (!complaint.empty()) NoteDamage(notes, complaint);
}

} // namespace

Picture ReadTiff(InputFile& input) {
    const std::vector<std::uint8_t> content = input.ReadRest();
    MetadataAllowance allowance;
    TiffFile file(content, allowance);
    const TiffLayout layout = ReadLayout(file);
    CheckLayout(file, layout);
    Picture picture;
    if (layout.form) {
        picture = MakeTarget(file, layout);
        SampleReader(content, allowance, file, layout, picture).Read();
    } else {
        picture = ReadThroughLibrary(file, layout);
    }
    file.Check();
    if (layout.guessed) DropUnusedSample(picture);
    DropOpaqueAlpha(picture);
    CountPictures(file, picture.notes);
    picture.comment = TakeComment(file);
    return picture;
}

} // namespace gif89
