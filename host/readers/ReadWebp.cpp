#include "ReadWebp.h"

#include "ExifOrientation.h"
#include "Frame.h"
#include "MetadataAllowance.h"
#include "Problem.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <webp/decode.h>
#include <webp/demux.h>

namespace gif89 {

namespace {

using Bytes = std::vector<std::uint8_t>;

struct DeleteDemuxer {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
using Demuxer = std::unique_ptr<WebPDemuxer, DeleteDemuxer>;

Problem DamageProblem(const std::string& what) {
    return Problem("is a damaged WebP picture: " + what);
}

void CheckStatus(VP8StatusCode status) {
    switch (status) {
    case VP8_STATUS_OK:
        return;
    case VP8_STATUS_OUT_OF_MEMORY:
        throw std::bad_alloc();
    case VP8_STATUS_SUSPENDED:
    case VP8_STATUS_NOT_ENOUGH_DATA:
        throw DamageProblem("its pixels end too early");
    case VP8_STATUS_UNSUPPORTED_FEATURE:
        throw DamageProblem("its pixels are stored in a way that the format does not have");
    default:
        throw DamageProblem("its pixels cannot be decoded");
    }
}

/// The demuxer's result, and the reason why it did not get to the end of the file, if it did not.
struct Opened {
    Demuxer demuxer;
    const char* damage = nullptr;
};

Opened Open(std::span<const std::uint8_t> file) {
    const WebPData data = {file.data(), file.size()};
    WebPDemuxState state = WEBP_DEMUX_PARSE_ERROR;
    Opened opened = {Demuxer(WebPDemuxPartial(&data, &state)), nullptr};
    if (state != WEBP_DEMUX_DONE) opened.damage = "the file ends before the picture does";
    if (state == WEBP_DEMUX_PARSE_ERROR) opened.damage = "its chunks make no picture";
    return opened;
}

// The number of bytes up to the end of the first chunk with pixels; 0 when there is none.
std::span<const std::uint8_t> UpToFirstPicture(std::span<const std::uint8_t> file) {
    constexpr std::size_t kFirstChunk = 12, kHead = 8;
    for (std::size_t at = kFirstChunk; at + kHead <= file.size();) {
        const std::uint8_t* const head = file.data() + at;
        const std::size_t size = std::size_t{head[7]} << 24 | std::size_t{head[6]} << 16 |
                                 std::size_t{head[5]} << 8 | head[4];
        at += kHead + size + size % 2;
        if (at > file.size()) break;
        for (const char* const name : {"ANMF", "VP8 ", "VP8L"})
            if (std::memcmp(head, name, 4) == 0) return file.first(at);
    }
    return {};
}

bool HasFirstPicture(const WebPDemuxer* demuxer) {
    WebPIterator found;
    const bool isWhole = WebPDemuxGetFrame(demuxer, 1, &found) != 0 && found.complete != 0;
    WebPDemuxReleaseIterator(&found);
    return isWhole;
}

Opened OpenFile(const Bytes& file) {
    Opened whole = Open(file);
    if (!whole.damage || (whole.demuxer && HasFirstPicture(whole.demuxer.get()))) return whole;
    Opened first = Open(UpToFirstPicture(file));
    if (!first.demuxer || !HasFirstPicture(first.demuxer.get())) throw DamageProblem(whole.damage);
    return first;
}

Bytes TakeChunk(const WebPDemuxer* demuxer, const char* name, MetadataAllowance& allowance) {
    WebPChunkIterator found;
    Bytes bytes;
    if (WebPDemuxGetChunk(demuxer, name, 1, &found) != 0) {
        allowance.Take(found.chunk.size);
        bytes.assign(found.chunk.bytes, found.chunk.bytes + found.chunk.size);
    }
    WebPDemuxReleaseChunkIterator(&found);
    return bytes;
}

InputNotes TakeNotes(const Opened& file) {
    const WebPDemuxer* const demuxer = file.demuxer.get();
    MetadataAllowance allowance;
    InputNotes notes;
    notes.format = "WebP";
    notes.pictures = static_cast<int>(WebPDemuxGetI(demuxer, WEBP_FF_FRAME_COUNT));
    notes.profile = TakeChunk(demuxer, "ICCP", allowance);
    notes.orientation = ExifOrientation(TakeChunk(demuxer, "EXIF", allowance));
    if (!file.damage) return notes;
    NoteDamage(notes, "its chunks are cut short or out of order");
    // The demuxer does not count a frame that is cut short.
    if ((WebPDemuxGetI(demuxer, WEBP_FF_FORMAT_FLAGS) & ANIMATION_FLAG) != 0)
        notes.pictures = std::max(notes.pictures, 2);
    return notes;
}

/// The place of the first picture on the canvas, and its data, which are part of the file's bytes.
struct FirstPicture {
    Frame frame;
    WebPData data;
};

FirstPicture FindFirst(const WebPDemuxer* demuxer) {
    WebPIterator found;
    if (WebPDemuxGetFrame(demuxer, 1, &found) == 0) throw DamageProblem("it has no picture");
    const FirstPicture first = {{.left = found.x_offset,
                                 .top = found.y_offset,
                                 .columns = found.width,
                                 .rows = found.height},
                                found.fragment};
    WebPDemuxReleaseIterator(&found);
    return first;
}

Plane PixelsOf(const Picture& picture) {
    return {picture.pixels.get(), picture.rows, picture.columns, picture.BytesPerPixel()};
}

void DecodeFirst(const FirstPicture& first, const WebPBitstreamFeatures& features,
                 const Picture& picture) {
    WebPDecoderConfig config;
    WebPInitDecoderConfig(&config);
    config.input = features;
    config.options.no_fancy_upsampling = 0;
    config.options.dithering_strength = 0;
    config.options.alpha_dithering_strength = 0;
    config.output.colorspace = picture.kind == Picture::Kind::rgb ? MODE_RGB : MODE_RGBA;
    config.output.is_external_memory = 1;
    std::uint8_t* const place = PixelsOf(picture).At(first.frame.top, first.frame.left);
    std::uint8_t* const end = picture.pixels.get() + picture.PixelBytes();
    config.output.u.RGBA = {place, static_cast<int>(picture.RowBytes()),
                            static_cast<std::size_t>(end - place)};
    CheckStatus(WebPDecode(first.data.bytes, first.data.size, &config));
}

} // namespace

Picture ReadWebp(InputFile& input) {
    const Bytes file = input.ReadRest();
    const Opened opened = OpenFile(file);
    const Demuxer& demuxer = opened.demuxer;
    const auto rows = static_cast<int>(WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_HEIGHT));
    const auto columns = static_cast<int>(WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_WIDTH));
    const FirstPicture first = FindFirst(demuxer.get());
    WebPBitstreamFeatures features;
    CheckStatus(WebPGetFeatures(first.data.bytes, first.data.size, &features));
    if (features.width != first.frame.columns || features.height != first.frame.rows)
        throw DamageProblem("its first frame does not have the sides that it states");

    const bool opaque = first.frame.Covers(rows, columns) && features.has_alpha == 0;
    Picture picture =
        MakePicture(opaque ? Picture::Kind::rgb : Picture::Kind::rgbAlpha, rows, columns);
    picture.notes = TakeNotes(opened);
    DecodeFirst(first, features, picture);
    FillAround(PixelsOf(picture), first.frame, 0);
    DropOpaqueAlpha(picture);
    return picture;
}

} // namespace gif89
