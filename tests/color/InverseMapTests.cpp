// The inverse colour map: nearest entries, and the entries that win ties.
#include "DiffuseColor.h"

#include "PlainInverseMap.h"
#include "RandomPictures.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using Colors = std::vector<PackedColor>;

std::vector<std::uint8_t> Inverse(const RGBLookUpTable& table, int colors) {
    std::vector<std::uint8_t> inverse(32768, 0xEE), distance(32768, 0xEE);
    BuildInverse(&table, inverse.data(), distance.data(), static_cast<short>(colors));
    return inverse;
}

// The colour of a cell, in packed form.
PackedColor CellColor(int red, int green, int blue) {
    return static_cast<PackedColor>(red << 19 | green << 11 | blue << 3);
}

TEST(BuildInverse, GivesTheseIndices) {
    const PackedColor black = CellColor(0, 0, 0);
    const struct {
        const char* name;
        Colors entries; // all 256 entries repeat the last one
        int colors;
        PackedColor cell;
        int index;
    } cases[] = {
        {"the lowest of a shared cell", {CellColor(9, 9, 9), 0x080808, 0x0F0F0F}, 3, 0x080808, 1},
        {"one used entry has every cell", {0x123456, black}, 1, 0xFFFFFF, 0},
        {"unused entries show as the last used", {0xFFFFFF, 0x808080, black}, 2, black, 1},
        {"unused entries in a used cell do not", {0xFFFFFF, black, 0x808080, black}, 3, black, 1},
        {"equally far along green: forward comes first",
         {CellColor(0, 2, 0), black},
         2,
         CellColor(0, 1, 0),
         1},
        {"equally far along green and red: green comes first",
         {CellColor(5, 4, 5), CellColor(4, 5, 5)},
         2,
         CellColor(5, 5, 5),
         0},
        {"equally far along red and blue: red comes first",
         {CellColor(5, 5, 4), CellColor(4, 5, 5)},
         2,
         CellColor(5, 5, 5),
         1},
    };
    for (const auto& c : cases) {
        RGBLookUpTable table = {};
        for (int i = 0; i < 256; ++i)
            SetTableEntry(table, i,
                          UnpackColor(c.entries[std::min<std::size_t>(static_cast<std::size_t>(i),
                                                                      c.entries.size() - 1)]));
        const PackedColor cell = c.cell >> 19 << 10 | (c.cell >> 11 & 31) << 5 | (c.cell >> 3 & 31);
        EXPECT_EQ(Inverse(table, c.colors)[cell], c.index) << c.name;
    }
}

TEST(BuildInverse, AgreesWithPlainSweepsAndWithEveryDistance) {
    for (std::uint32_t seed = 1; seed <= 12; ++seed)
        for (const int colors : {1, 2, 3, 16, 255, 256}) {
            RGBLookUpTable table = RandomTable(seed % 3 == 0 ? 256 : colors, seed);
            if (seed % 3 == 1) // crowd the entries into few cells
                for (int i = 0; i < 256; ++i) table.green[i] &= 0x1F, table.red[i] &= 0x8F;
            const auto inverse = Inverse(table, colors);
            ASSERT_EQ(inverse, PlainInverseMap(table, colors))
                << colors << " colours, seed " << seed;
            if (seed <= 3) {
                ASSERT_EQ(FindFarCell(table, colors, inverse), "") << colors << ", seed " << seed;
            }
        }
}

} // namespace
