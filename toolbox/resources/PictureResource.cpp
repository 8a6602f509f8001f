#include "PictureResource.h"

#include "BigEndian.h"
#include "ToolboxTypes.h"

#include <array>

namespace {

/// Reads on through bytes and remembers that they ended too early or were not what must stand
/// there; from then on everything reads as 0.
class PictureReader {
  public:
    explicit PictureReader(std::span<const std::uint8_t> content) : rest(content) {}

    std::span<const std::uint8_t> Take(std::size_t count) {
        if (count > rest.size()) failed = true;
        if (failed) return {};
        const auto taken = rest.first(count);
        rest = rest.subspan(count);
        position += count;
        return taken;
    }
    template <class T> T Get() {
        const auto bytes = Take(sizeof(T));
        return failed ? T{} : GetBE<T>(bytes.data());
    }
    Rect GetRect() {
        Rect rect;
        for (std::int16_t* side : {&rect.top, &rect.left, &rect.bottom, &rect.right})
            *side = Get<std::int16_t>();
        return rect;
    }
    void Expect(bool holds) { failed = failed || !holds; }
    void AlignToEven() { Take(position % 2); }
    bool Failed() const { return failed; }

  private:
    std::span<const std::uint8_t> rest;
    std::size_t position = 0;
    bool failed = false;
};

enum : std::uint16_t {
    kClip = 0x0001,
    kVersion = 0x0011,
    kVersion2 = 0x02FF,
    kPackedBits = 0x0098,
    kEnd = 0x00FF,
    kHeader = 0x0C00,
    kExtended = 0xFFFE,
};

/// The header up to the first drawing operation; returns the rectangle the drawing lies in.
Rect ReadHeader(PictureReader& reader) {
    reader.Take(2 + 8); // low word of the size, frame in points
    reader.Expect(reader.Get<std::uint16_t>() == kVersion);
    reader.Expect(reader.Get<std::uint16_t>() == kVersion2);
    reader.Expect(reader.Get<std::uint16_t>() == kHeader);
    reader.Expect(reader.Get<std::uint16_t>() == kExtended);
    reader.Take(2 + 4 + 4); // reserved, resolutions
    const Rect inner = reader.GetRect();
    reader.Take(4); // reserved
    return inner;
}

/// Goes past the clip operations to the pixel map.
void FindPackedBits(PictureReader& reader) {
    std::uint16_t operation = reader.Get<std::uint16_t>();
    for (; operation == kClip; operation = reader.Get<std::uint16_t>()) {
        const std::size_t regionBytes = reader.Get<std::uint16_t>();
        reader.Expect(regionBytes >= 10 && regionBytes % 2 == 0);
        if (!reader.Failed()) reader.Take(regionBytes - 2);
    }
    reader.Expect(operation == kPackedBits);
}

/// Bytes of an unpacked row and the rectangle of the pixels.
struct PixelLayout {
    std::size_t rowBytes;
    Rect bounds;
};

PixelLayout ReadPixelMap(PictureReader& reader) {
    // Rows of fewer than 8 bytes would lie unpacked.
    constexpr std::size_t kFewestPackedBytes = 8;
    const auto rowBytes = reader.Get<std::uint16_t>();
    reader.Expect((rowBytes & 0xC000) == 0x8000); // a pixel map, not a bit map
    const PixelLayout layout = {rowBytes & 0x3FFFU, reader.GetRect()};
    reader.Expect(layout.rowBytes >= kFewestPackedBytes);
    reader.Take(2);                                  // version
    reader.Expect(reader.Get<std::uint16_t>() == 0); // packed in the way usual for its depth
    reader.Take(4 + 4 + 4);                          // packed size, resolutions
    reader.Expect(reader.Get<std::uint16_t>() == 0); // pixels are indices
    reader.Expect(reader.Get<std::uint16_t>() == 8); // bits a pixel
    reader.Expect(reader.Get<std::uint16_t>() == 1); // components a pixel
    reader.Expect(reader.Get<std::uint16_t>() == 8); // bits a component
    reader.Take(4 + 4 + 4);                          // plane bytes, table, reserved
    return layout;
}

using Colors = std::array<std::uint32_t, 256>;

Colors ReadColorTable(PictureReader& reader) {
    Colors colors = {};
    reader.Take(4 + 2); // seed, flags
    const int last = reader.Get<std::int16_t>();
    reader.Expect(last >= 0 && last <= 255);
    for (int i = 0; i <= last && !reader.Failed(); ++i) {
        const auto index = reader.Get<std::uint16_t>();
        std::uint32_t color = 0;
        for (int channel = 0; channel < 3; ++channel)
            color = color << 8 | reader.Get<std::uint16_t>() >> 8;
        reader.Expect(index <= 255);
        if (!reader.Failed()) colors[index] = color;
    }
    return colors;
}

/// Appends the bytes that runs and stretches stand for; false when they are not `expected` many.
bool Unpack(std::span<const std::uint8_t> packed, std::size_t expected,
            std::vector<std::uint8_t>& row) {
    PictureReader reader(packed);
    row.clear();
    while (row.size() < expected && !reader.Failed()) {
        const int count = reader.Get<std::int8_t>();
        if (count == -128) continue; // stands for nothing
        if (count >= 0) {
            const auto stretch = reader.Take(static_cast<std::size_t>(count) + 1);
            row.insert(row.end(), stretch.begin(), stretch.end());
            continue;
        }
        const auto value = reader.Get<std::uint8_t>();
        row.insert(row.end(), static_cast<std::size_t>(1 - count), value);
    }
    return row.size() == expected && !reader.Failed();
}

/// Every row has a length of its own, so damaged sizes run out of bytes before they fill the
/// memory.
void ReadPackedRows(PictureReader& reader, std::size_t rowBytes, const Colors& colors,
                    DecodedPicture& picture) {
    constexpr std::size_t kLongestByteCounted = 250;
    const auto columns = static_cast<std::size_t>(picture.columns);
    reader.Expect(columns <= rowBytes);
    std::vector<std::uint8_t> row;
    for (int y = 0; y < picture.rows && !reader.Failed(); ++y) {
        const std::size_t length = rowBytes > kLongestByteCounted ? reader.Get<std::uint16_t>()
                                                                  : reader.Get<std::uint8_t>();
        reader.Expect(Unpack(reader.Take(length), rowBytes, row));
        if (reader.Failed()) return;
        for (std::size_t x = 0; x < columns; ++x) picture.pixels.push_back(colors[row[x]]);
    }
}

} // namespace

std::optional<DecodedPicture> DecodePicture(std::span<const std::uint8_t> bytes) {
    PictureReader reader(bytes);
    const Rect inner = ReadHeader(reader);
    FindPackedBits(reader);
    const auto [rowBytes, bounds] = ReadPixelMap(reader);
    const Colors colors = ReadColorTable(reader);
    reader.Expect(reader.GetRect() == bounds); // from: all of the map
    reader.Expect(reader.GetRect() == inner);  // to: all of the picture
    reader.Take(2);                            // mode
    DecodedPicture picture = {bounds.bottom - bounds.top, bounds.right - bounds.left, {}};
    reader.Expect(picture.rows > 0 && picture.columns > 0);
    if (!reader.Failed()) ReadPackedRows(reader, rowBytes, colors, picture);
    reader.AlignToEven();
    reader.Expect(reader.Get<std::uint16_t>() == kEnd);
    if (reader.Failed()) return std::nullopt;
    return picture;
}
