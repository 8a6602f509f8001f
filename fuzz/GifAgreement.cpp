#include "GifAgreement.h"

#include "Require.h"

#include <algorithm>

GiflibPicture RequireAgreement(const gif89::DecodedGif& gif, std::span<const std::uint8_t> file) {
    std::string reason;
    const auto other = GiflibDecode(file, &reason);
    if (!other) std::fprintf(stderr, "giflib says: %s\n", reason.c_str());
    Require(other.has_value(), "giflib reads what our decoder accepts");
    Require(other->rows == gif.rows && other->columns == gif.columns, "the sides agree");
    Require(other->interlaced == gif.interlaced, "the interlacing agrees");
    Require(other->transparentIndex == gif.transparentIndex, "the transparent index agrees");
    Require(other->colors == gif.colors, "the sizes of the table agree");
    for (int i = 0; i < gif.colors; ++i)
        Require(PackColor(TableEntry(other->table, i)) == PackColor(TableEntry(gif.table, i)),
                "the table agrees");
    // giflib does not tell an empty comment from none.
    Require(other->comment.value_or("") == gif.comment.value_or(""), "the comment agrees");
    Require(std::equal(other->indices.begin(), other->indices.end(), gif.indices.get()),
            "the indices agree");
    return *other;
}
