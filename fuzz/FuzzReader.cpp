// One reader of pictures (READER, compiled once for each) on any bytes, with what follows for every
// picture: the colour profile and the orientation.
#include "ColorProfile.h"
#include "InputFile.h"
#include "MemoryFile.h"
#include "Orient.h"
#include "Problem.h"
#include "ReadBmp.h"
#include "ReadGif.h"
#include "ReadJpeg.h"
#include "ReadPng.h"
#include "ReadPnm.h"
#include "ReadTiff.h"
#include "ReadWebp.h"
#include "Require.h"

#include <algorithm>
#include <cstring>
#include <zlib.h>

namespace gif89 {
namespace {

void CheckNotes(const Picture& picture) {
    const InputNotes& notes = picture.notes;
    Require(!notes.format.empty(), "the format is noted");
    Require(notes.bits >= 1 && notes.bits <= 64, "the depth is noted");
    Require(notes.pictures >= 1, "there is a picture");
    Require(notes.profile.empty(), "the profile has been applied");
    Require(picture.comment.find('\0') == std::string::npos, "the comment is a text");
}

void CheckPicture(const Picture& picture) {
    Require(picture.rows >= 1 && picture.columns >= 1, "there are pixels");
    Require(picture.kind == Picture::Kind::indexed || picture.channels.empty(),
            "only indexed pictures have channels");
    CheckNotes(picture);
    CopyPicture(picture); // every plane is as large as it should be
    if (picture.kind != Picture::Kind::indexed) return;
    Require(picture.colors >= 1 && picture.colors <= 256, "the table has 1 to 256 colours");
    const std::uint8_t* const end = picture.pixels.get() + picture.PixelBytes();
    Require(*std::max_element<const std::uint8_t*>(picture.pixels.get(), end) < picture.colors,
            "indices are entries of the table");
    for (int i = picture.colors; i < 256; ++i)
        Require(PackColor(TableEntry(picture.table, i)) == 0, "the table is black past its end");
}

void Read(std::span<const std::uint8_t> bytes) {
    const MemoryFile memory(bytes);
    try {
        InputFile input = InputFile::Open(memory.Path());
        Picture picture = READER(input);
        ApplyProfile(picture);
        TurnUpright(picture);
        CheckPicture(picture);
    } catch (const Problem& problem) {
        Require(*problem.what() != '\0', "a refusal has a reason");
    }
}

/// A PNG file whose chunks have the check sums that they should. Bytes are changed more easily than
/// sums are guessed, and the reader goes no further than to the first wrong one.
std::vector<std::uint8_t> MendChecksums(std::span<const std::uint8_t> file) {
    constexpr std::size_t kSignature = 8, kHead = 8, kSum = 4;
    std::vector<std::uint8_t> mended(file.begin(), file.end());
    const auto takeLong = [&](std::size_t at) {
        return std::size_t{mended[at]} << 24 | std::size_t{mended[at + 1]} << 16 |
               std::size_t{mended[at + 2]} << 8 | mended[at + 3];
    };
    for (std::size_t at = kSignature; at + kHead + kSum <= mended.size();) {
        const std::size_t length = takeLong(at);
        if (length > mended.size() - at - kHead - kSum) break;
        const std::size_t end = at + kHead + length;
        const auto sum = crc32(0, mended.data() + at + 4, static_cast<uInt>(length + 4));
        for (std::size_t i = 0; i < kSum; ++i)
            mended[end + i] = static_cast<std::uint8_t>(sum >> (24 - 8 * i));
        at = end + kSum;
    }
    return mended;
}

} // namespace
} // namespace gif89

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    if (count == 0) return 0; // no reader is asked about an empty file
    const std::span<const std::uint8_t> file(bytes, count);
    gif89::Read(file);
    if (count >= 8 && std::memcmp(bytes, "\x89PNG", 4) == 0)
        gif89::Read(gif89::MendChecksums(file));
    return 0;
}
