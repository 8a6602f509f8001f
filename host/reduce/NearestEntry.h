// Which entry of a palette is nearest to a colour: exactly, by squared distance at full precision.
#pragma once

#include "ColorVector.h"
#include "Target.h"

#include <memory>

namespace gif89 {

/// Knows for each of 32 x 32 x 32 cells which entries can be nearest to a colour in it; finds that
/// out when a cell is first met. Takes some 100 to 200 bytes a cell met, 128 KB beside.
class NearestEntry {
  public:
    /// The hidden entry is nearest to nothing.
    explicit NearestEntry(const Target& target);

    /// The entry nearest to a colour of levels 0..255; of several, the lowest.
    int Find(ColorVector color) {
        const std::uint32_t cell = color.Cell();
        if (lists[cell].groups == 0) MakeList(cell);
        const List list = lists[cell];
        return NearestSearch(color).Find(groups.data() + list.first, list.groups) &
               ((1 << kKeyBits) - 1);
    }

  private:
    /// Where a cell's candidates are among the groups; no groups: not made yet.
    struct List {
        std::uint32_t first : 24, groups : 8;
    };

    void MakeList(std::uint32_t cell);
    const std::vector<std::uint8_t>& BlockCandidates(std::uint32_t cell);

    const Palette palette;
    const int hidden;
    std::unique_ptr<List[]> lists; ///< by cell
    std::vector<FourEntries> groups;
    /// For each of 8 x 8 x 8 blocks of cells, the entries among which its cells look.
    std::vector<std::vector<std::uint8_t>> blocks;
};

} // namespace gif89
