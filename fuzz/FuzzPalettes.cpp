// The readers of palette files: the same bytes through each of them, once as the type says and once
// as the name does.
#include "FuzzInput.h"
#include "LoadColorTable.h"
#include "MemoryFile.h"
#include "Require.h"
#include "TemporaryFolder.h"

#include <cstring>
#include <optional>

namespace {

struct Kind {
    OSType type;
    const char* name;
};
constexpr Kind kKinds[] = {{kSwatchFileType, "swatches.ZCO"},
                           {kTableFileType, "table.zct"},
                           {kRiffPaletteFileType, "riff.Pal"}};

struct Loaded {
    OSErr error = noErr;
    RGBLookUpTable table = {};
    std::int32_t count = -1;

    bool operator==(const Loaded& other) const {
        return error == other.error && count == other.count &&
               std::memcmp(&table, &other.table, sizeof table) == 0;
    }
};

Loaded Load(const FSSpec& file, OSType type) {
    Loaded loaded;
    loaded.error = LoadColorTable(&loaded.table, &loaded.count, &file, type);
    return loaded;
}

/// What a file of these bytes holds, worked out from the formats alone; nothing for one that must
/// be refused.
std::optional<Loaded> ReadPlainly(FuzzInput bytes, OSType type) {
    const auto rest = bytes.Rest();
    const auto word = [&](std::size_t at) { return rest[at] << 8 | rest[at + 1]; };
    std::size_t first = 0, step = 3;
    int colors = 256, red = 0, green = 1, blue = 2;
    if (type == kSwatchFileType) {
        if (rest.size() < 4 || word(0) != 1) return std::nullopt;
        colors = word(2) >= 0x8000 ? 0 : std::min(word(2), 256);
        first = 4, step = 10, red = 3, green = 5, blue = 7; // the low bytes
    } else if (type == kRiffPaletteFileType) {
        if (rest.size() < 24 || std::memcmp(rest.data(), "RIFF", 4) != 0 ||
            std::memcmp(rest.data() + 8, "PAL ", 4) != 0)
            return std::nullopt;
        colors = std::min(rest[22] | rest[23] << 8, 256);
        first = 24, step = 4;
    }
    if (rest.size() < first + step * static_cast<std::size_t>(colors)) return std::nullopt;
    Loaded loaded;
    loaded.count = colors;
    for (int i = 0; i < colors; ++i) {
        const auto color = rest.subspan(first + step * static_cast<std::size_t>(i), step);
        if (type == kSwatchFileType && (color[0] | color[1]) != 0) return std::nullopt;
        const auto channel = [&](int at) { return color[static_cast<std::size_t>(at)]; };
        SetTableEntry(loaded.table, i, {0, channel(red), channel(green), channel(blue)});
    }
    return loaded;
}

FSSpec WriteNamed(const char* name, const std::string& content) {
    static const TemporaryFolder folder;
    FSSpec file;
    Require(PathToFSSpec(folder.Write(name, content), &file) == noErr, "a file can be named");
    return file;
}

/// The type as the open dialog learns it.
OSType TypeByName(FSSpec file) {
    CInfoPBRec info;
    info.ioNamePtr = file.name;
    info.ioVRefNum = file.vRefNum;
    info.ioDirID = file.parID;
    Require(PBGetCatInfoSync(&info) == noErr, "the file is found");
    Require(LoadPaletteFileFilter(&info) == 0, "the open dialog offers palette files");
    return info.fdType;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    const std::string content(bytes, bytes + count);
    const MemoryFile memory({bytes, count});
    const FSSpec unnamed = DescriptorToFSSpec(memory.FileDescriptor());
    for (const Kind& kind : kKinds) {
        const Loaded loaded = Load(unnamed, kind.type);
        const auto wanted = ReadPlainly({bytes, count}, kind.type);
        Require((loaded.error == noErr) == wanted.has_value(), "well formed files are read");
        Require(loaded == wanted.value_or(Loaded{loaded.error}), "the colours are the file's");

        const FSSpec named = WriteNamed(kind.name, content);
        Require(TypeByName(named) == kind.type, "the extension tells the type");
        Require(Load(named, kind.type) == loaded, "any way to the file will do");
    }
    return 0;
}
