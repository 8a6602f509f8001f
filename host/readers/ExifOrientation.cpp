#include "ExifOrientation.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <libexif/exif-data.h>

namespace gif89 {

namespace {

// The most bytes of a block that are read: as many as a marker of a JPEG file can hold. libexif
// copies the data of every field, and in a larger block many fields could share a lot of data.
constexpr std::size_t kMostBytes = 65533;

constexpr std::uint8_t kIntroduction[] = {'E', 'x', 'i', 'f', 0, 0};

struct ExifRelease {
    void operator()(ExifData* data) const { exif_data_unref(data); }
};

// libexif needs the introduction; without it, it takes the block for a whole JPEG file.
std::vector<std::uint8_t> WithIntroduction(std::span<const std::uint8_t> exif) {
    std::vector<std::uint8_t> block(exif.begin(), exif.end());
    if (exif.size() < sizeof kIntroduction ||
        !std::equal(std::begin(kIntroduction), std::end(kIntroduction), exif.begin()))
        block.insert(block.begin(), std::begin(kIntroduction), std::end(kIntroduction));
    return block;
}

} // namespace

int ExifOrientation(std::span<const std::uint8_t> exif) {
    const std::vector<std::uint8_t> block =
        WithIntroduction(exif.first(std::min(exif.size(), kMostBytes)));
    const std::unique_ptr<ExifData, ExifRelease> data(
        exif_data_new_from_data(block.data(), static_cast<unsigned>(block.size())));
    if (!data) return 1;
    // The other directories of a block describe its thumbnail. The library has converted integers
    // of other widths to 16 bits.
    const ExifEntry* entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (!entry || entry->format != EXIF_FORMAT_SHORT || entry->size < 2) return 1;
    const int orientation = exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
    return orientation >= 1 && orientation <= 8 ? orientation : 1;
}

} // namespace gif89
