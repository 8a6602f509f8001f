// The inverse colour map: nearest entries, and which of them wins a tie.
#include "DiffuseColor.h"

#include "InverseMap.h"
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
