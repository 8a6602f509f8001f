// What the documents show is what happens.
#include "../apps/RunProgram.h"
#include "DecodeGif.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

// The bytes in the table of docs/format.md: the second column of the rows that start with a number.
std::string BytesOfPage() {
    std::ifstream page(DOCS "/format.md");
    std::string bytes;
    for (std::string line; std::getline(page, line) && line != "## The pixels";) {
        const std::size_t first = line.find('`'), last = line.find('`', first + 1);
        if (!line.starts_with("| ") || first == std::string::npos) continue;
        if (std::stoul(line.substr(2)) != bytes.size()) ADD_FAILURE() << "offset of " << line;
        std::istringstream column(line.substr(first + 1, last - first - 1));
        for (unsigned byte; column >> std::hex >> byte;) bytes += static_cast<char>(byte);
    }
    return bytes;
}

TEST(FormatPage, HasTheBytesThatAreWritten) {
    const TemporaryFolder folder;
    std::string file = "P7\nWIDTH 4\nHEIGHT 4\nDEPTH 4\nMAXVAL 255\nENDHDR\n";
    for (const char letter : std::string("RRRRRBBRRYY-----")) { // red, blue, yellow, nothing
        const char full = letter == '-' ? '\0' : '\xFF';
        file += {letter == 'B' ? '\0' : full, letter == 'Y' ? full : '\0',
                 letter == 'B' ? full : '\0', full};
    }
    folder.Write("tiny.pam", file);
    const ProgramRun run =
        RunProgram("gif89", {"--comment", "Hi", "tiny.pam"}, {folder.Path(), {}});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(testing::PrintToString(folder.Read("tiny.gif")),
              testing::PrintToString(BytesOfPage()));
}

TEST(MinimalHost, SavesItsGradient) {
    const TemporaryFolder folder;
    const ProgramRun run = RunProgram("minimal_host", {MODULE, folder.Path("g.gif")});
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    const gif89::DecodedGif gif = gif89::DecodeGif(folder.ReadBytes("g.gif"));
    ASSERT_EQ(gif.rows, 48);
    ASSERT_EQ(gif.columns, 64);
    EXPECT_EQ(gif.comment, "made by a minimal host");
    long error = 0;
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x) {
            const RGBtuple color =
                TableEntry(gif.table, gif.indices[static_cast<std::size_t>(y * 64 + x)]);
            error += std::abs(color.red - x * 4) + std::abs(color.green - y * 5) +
                     std::abs(color.blue - 128);
        }
    EXPECT_LT(error, 8 * 48 * 64 * 3) << "of all channels of all pixels";

    EXPECT_EQ(RunProgram("minimal_host", {MODULE, folder.Path("absent/g.gif")}).exitCode, 1);
}

} // namespace
