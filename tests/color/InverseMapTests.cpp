// The inverse colour map: nearest entries, and the entries that win ties.
#include "DiffuseColor.h"

#include "PlainInverseMap.h"
#include "RandomPictures.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using Bytes = std::vector<std::uint8_t>;

// The map, and the distance of each cell's entry. No buffer lies at a round address.
std::pair<Bytes, Bytes> InverseAndDistance(const RGBLookUpTable& table, int colors) {
    Bytes inverse(32769, 0xEE), distance(32769, 0xEE);
    BuildInverse(&table, inverse.data() + 1, distance.data() + 1, static_cast<short>(colors));
    EXPECT_EQ(inverse[0] & distance[0], 0xEE);
    return {{inverse.begin() + 1, inverse.end()}, {distance.begin() + 1, distance.end()}};
}

TEST(BuildInverse, GivesTheseIndices) {
    // Eight times cells such as 0x040505, which is red 4, green 5, blue 5.
    const auto at = [](PackedColor cell) { return cell * 8; };
    const struct {
        const char* name;
        std::vector<PackedColor> entries; // all 256 entries repeat the last one
        int colors;
        PackedColor color;
        int index;
    } cases[] = {
        {"the lowest of a shared cell", {at(0x090909), 0x080808, 0x0F0F0F}, 3, 0x080808, 1},
        {"unused entries show as the last used", {0xFFFFFF, 0x808080, 0}, 2, 0, 1},
        {"unused entries in a used cell do not", {0xFFFFFF, 0, 0x808080, 0}, 3, 0, 1},
        {"along green: forward comes first", {at(0x000200), 0}, 2, at(0x000100), 1},
        {"green before red", {at(0x050405), at(0x040505)}, 2, at(0x050505), 0},
        {"red before blue", {at(0x050504), at(0x040505)}, 2, at(0x050505), 1},
    };
    for (const auto& c : cases) {
        RGBLookUpTable table = {};
        for (std::size_t i = 0; i < 256; ++i)
            SetTableEntry(table, static_cast<int>(i),
                          UnpackColor(c.entries[std::min(i, c.entries.size() - 1)]));
        const auto cell = (c.color >> 19) * 1024 + (c.color >> 11 & 31) * 32 + (c.color >> 3 & 31);
        EXPECT_EQ(InverseAndDistance(table, c.colors).first[cell], c.index) << c.name;
    }
}

TEST(BuildInverse, AgreesWithPlainSweepsAndWithEveryDistance) {
    for (std::uint32_t seed = 1; seed <= 12; ++seed)
        for (const int colors : {1, 2, 3, 16, 255, 256}) {
            SCOPED_TRACE(testing::Message() << colors << " colours, seed " << seed);
            RGBLookUpTable table = RandomTable(seed % 3 == 0 ? 256 : colors, seed);
            if (seed % 3 == 1) // crowd the entries into few cells
                for (int i = 0; i < 256; ++i) table.green[i] &= 0x1F, table.red[i] &= 0x8F;
            const auto [inverse, distance] = InverseAndDistance(table, colors);
            ASSERT_EQ(inverse, PlainInverseMap(table, colors));
            if (seed > 3) continue;
            for (int cell = 0; cell < 32768; cell += 13) {
                const int index = inverse[static_cast<std::size_t>(cell)];
                std::vector<int> distances;
                for (int i = 0; i < 256; ++i) // unused entries stand for the last one
                    distances.push_back(std::abs(table.red[i] / 8 - cell / 1024) +
                                        std::abs(table.green[i] / 8 - cell / 32 % 32) +
                                        std::abs(table.blue[i] / 8 - cell % 32));
                const int own = index < colors - 1
                                    ? distances[static_cast<std::size_t>(index)]
                                    : *std::min_element(distances.begin() + index, distances.end());
                ASSERT_EQ(own, *std::min_element(distances.begin(), distances.end())) << cell;
                ASSERT_EQ(distance[static_cast<std::size_t>(cell)], own) << cell;
            }
        }
}

} // namespace
