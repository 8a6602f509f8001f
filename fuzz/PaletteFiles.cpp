#include "PaletteFiles.h"

#include "TemporaryFolder.h"

namespace {

constexpr const char* kNames[kPaletteFiles] = {"swatches.ZCO", "table.ZCT", "riff.PAL",
                                               "damaged.PAL"};

std::string MakeSwatches() {
    std::string file("\0\1\0\x28", 4); // version, 40 colours
    for (char i = 0; i < 40; ++i) {
        const char red = static_cast<char>(i * 6), green = static_cast<char>(255 - i * 5);
        for (const char level : {'\0', red, green, i, '\0'}) file += {level, level};
    }
    return file;
}

std::string MakeTable() {
    std::string file;
    for (int i = 0; i < 256; ++i)
        file += {static_cast<char>(i), static_cast<char>(i * 7), static_cast<char>(255 - i)};
    return file;
}

std::string MakeRiff() {
    std::string file("RIFF\x24\0\0\0PAL data\x18\0\0\0\0\3\5\0", 24);
    for (char i = 0; i < 5; ++i) file += {static_cast<char>(i * 50), i, '\x7F', '\0'};
    return file;
}

} // namespace

std::string PaletteFilePath(int number) {
    static const TemporaryFolder folder;
    static const std::string contents[kPaletteFiles] = {MakeSwatches(), MakeTable(), MakeRiff(),
                                                        MakeRiff().substr(0, 30)};
    return folder.Write(kNames[number], contents[number]);
}
