#include "PlainGif.h"

#include <algorithm>

namespace {

void Append(ByteVector& file, std::initializer_list<int> bytes) {
    for (const int byte : bytes) file.push_back(static_cast<std::uint8_t>(byte));
}

int TableBits(int colors) {
    int bits = 1;
    while ((1 << bits) < colors) ++bits;
    return bits;
}

ByteVector InFileOrder(const PlainImage& image) {
    std::vector<int> order;
    const auto every = [&](int first, int step) {
        for (int row = first; row < image.rows; row += step) order.push_back(row);
    };
    if (!image.interlaced) every(0, 1);
    for (const auto& [first, step] : {std::pair{0, 8}, {4, 8}, {2, 4}, {1, 2}})
        if (image.interlaced) every(first, step);
    ByteVector pixels;
    for (const int row : order) {
        const auto start = image.indices.begin() + std::ptrdiff_t{row} * image.columns;
        pixels.insert(pixels.end(), start, start + image.columns);
    }
    return pixels;
}

} // namespace

ByteVector DataBlocks(std::span<const std::uint8_t> bytes) {
    ByteVector blocks;
    while (!bytes.empty()) {
        const std::size_t count = std::min<std::size_t>(bytes.size(), 255);
        blocks.push_back(static_cast<std::uint8_t>(count));
        blocks.insert(blocks.end(), bytes.begin(), bytes.begin() + static_cast<long>(count));
        bytes = bytes.subspan(count);
    }
    blocks.push_back(0);
    return blocks;
}

ByteVector PlainGif(const PlainImage& image) {
    const int bits = TableBits(image.colors);
    const auto size = {image.columns % 256, image.columns / 256, image.rows % 256,
                       image.rows / 256};
    ByteVector file;
    Append(file, {'G', 'I', 'F', '8', '9', 'a'});
    Append(file, size);
    Append(file, {0x80 | (bits - 1) << 4 | (bits - 1), 255, 0});
    for (int i = 0; i < 1 << bits; ++i) {
        const bool used = i < image.colors;
        Append(file, {used ? image.table.red[i] : 0, used ? image.table.green[i] : 0,
                      used ? image.table.blue[i] : 0});
    }
    if (image.comment) {
        Append(file, {0x21, 0xFE});
        const ByteVector text =
            DataBlocks(ByteVector(image.comment->begin(), image.comment->end()));
        file.insert(file.end(), text.begin(), text.end());
    }
    if (image.transparentIndex >= 0)
        Append(file, {0x21, 0xF9, 4, 1, 0, 0, image.transparentIndex, 0});
    Append(file, {0x2C, 0, 0, 0, 0});
    Append(file, size);
    Append(file, {image.interlaced ? 0x40 : 0, std::max(bits, 2)});
    const ByteVector data =
        DataBlocks(PackCodes(PlainLzwCodes(InFileOrder(image), {.rootSize = std::max(bits, 2)})));
    file.insert(file.end(), data.begin(), data.end());
    Append(file, {0x3B});
    return file;
}

PlainImage RandomImage(std::mt19937& random, int rows, int columns, int colors, int runLength) {
    const auto below = [&random](int limit) {
        return static_cast<std::uint8_t>(random() % static_cast<unsigned>(limit));
    };
    PlainImage image;
    image.rows = rows;
    image.columns = columns;
    image.colors = colors;
    for (auto* plane : {image.table.red, image.table.green, image.table.blue})
        std::generate_n(plane, 256, [&] { return below(256); });
    image.indices.resize(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
    std::uint8_t index = below(colors);
    for (std::uint8_t& pixel : image.indices) {
        pixel = index;
        if (random() % static_cast<unsigned>(runLength) == 0) index = below(colors);
    }
    return image;
}
