#include "ReducePicture.h"

#include "Reduce.h"

#include <algorithm>
#include <utility>

namespace gif89 {
Picture ReducePicture(const Picture& picture, const Reduction& how) {
    if (picture.kind == Picture::Kind::indexed) {
        Picture expanded = CopyPicture(picture);
        ExpandToRGB(expanded);
        return ReducePicture(expanded, how);
    }
    Reduced reduced =
        Reduce({picture.pixels.get(), picture.rows, picture.columns, picture.BytesPerPixel()}, how);
    Picture made;
    made.kind = Picture::Kind::indexed;
    made.rows = picture.rows;
    made.columns = picture.columns;
    made.pixels = std::move(reduced.indices);
    made.colors = static_cast<int>(reduced.palette.size());
    for (int entry = 0; entry < made.colors; ++entry) {
        const Color& color = reduced.palette[static_cast<std::size_t>(entry)];
        SetTableEntry(made.table, entry, {0, color.red, color.green, color.blue});
    }
    made.comment = picture.comment;
    made.notes = picture.notes;
    made.notes.madeIndexed = true;
    made.notes.reduced = !reduced.exact;
    if (reduced.transparent >= 0) {
        std::uint8_t* const opacities = AddChannel(made, kTransparencyChannel);
        std::transform(made.pixels.get(), made.pixels.get() + made.PixelBytes(), opacities,
                       [&](std::uint8_t index) { return index == reduced.transparent ? 0 : 255; });
    }
    return made;
}

} // namespace gif89
