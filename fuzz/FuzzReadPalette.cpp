// The readers of palettes on any bytes, once without a name that says anything and once as a colour
// table; what is read is the same when it is written in any format and read again.
#include "MemoryFile.h"
#include "Problem.h"
#include "ReadPalette.h"
#include "Require.h"
#include "TemporaryFolder.h"
#include "WritePalette.h"

#include <cstring>
#include <optional>

namespace gif89 {
namespace {

std::optional<Palette> Read(const std::string& path) {
    try {
        const Palette palette = ReadPaletteFile(path);
        Require(!palette.empty() && palette.size() <= kMostEntries, "there are 1 to 256 entries");
        return palette;
    } catch (const Problem& problem) {
        Require(std::strlen(problem.what()) > 0, "a refusal has a reason");
        return std::nullopt;
    }
}

void CheckRoundTrips(const Palette& palette, const std::string& name) {
    using enum PaletteFormat;
    for (const PaletteFormat format : {gpl, hex, jasc, act}) {
        const std::string text = PaletteText(format, palette, name);
        const MemoryFile file(std::vector<std::uint8_t>(text.begin(), text.end()));
        Require(Read(file.Path()) == palette, "what is written is read back");
    }
}

} // namespace
} // namespace gif89

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    static const TemporaryFolder folder;
    const std::string content(bytes, bytes + count);
    const MemoryFile memory({bytes, count});
    if (const auto palette = gif89::Read(memory.Path())) gif89::CheckRoundTrips(*palette, content);
    if (count == 768 || count == 772) gif89::Read(folder.Write("table.act", content));
    return 0;
}
