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

void AppendRange(ByteVector& file, std::span<const std::uint8_t> bytes) {
    file.insert(file.end(), bytes.begin(), bytes.end());
}

ByteVector PackedPixels(const PlainImage& image, int rootSize) {
    PlainBitPacker packer;
    const auto pack = [](void* context, PlainCode code) {
        static_cast<PlainBitPacker*>(context)->Put(code);
    };
    PlainLzwCoder coder({.rootSize = rootSize}, pack, &packer);
    const auto columns = static_cast<std::size_t>(image.columns);
    const auto everyRow = [&](int first, int step) {
        for (int row = first; row < image.rows; row += step)
            coder.Compress(
                std::span(image.indices).subspan(static_cast<std::size_t>(row) * columns, columns));
    };
    if (!image.interlaced) everyRow(0, 1);
    for (const auto& [first, step] : {std::pair{0, 8}, {4, 8}, {2, 4}, {1, 2}})
        if (image.interlaced) everyRow(first, step);
    coder.End();
    return packer.Bytes();
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
        AppendRange(file, DataBlocks(ByteVector(image.comment->begin(), image.comment->end())));
    }
    if (image.transparentIndex >= 0)
        Append(file, {0x21, 0xF9, 4, 1, 0, 0, image.transparentIndex, 0});
    Append(file, {0x2C, 0, 0, 0, 0});
    Append(file, size);
    Append(file, {image.interlaced ? 0x40 : 0, std::max(bits, 2)});
    AppendRange(file, DataBlocks(PackedPixels(image, std::max(bits, 2))));
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
