#include "PaletteFile.h"

#include "BigEndian.h"
#include "FileManager.h"

#include <array>
#include <cstdint>
#include <fstream>

namespace gif89 {
namespace {

using Head = std::array<std::uint8_t, 24>;

// The module goes by the type and not by the content.
OSType TypeOf(const std::string& path) {
    FSSpec file;
    if (PathToFSSpec(path, &file) != noErr) return 0;
    CInfoPBRec info;
    info.ioNamePtr = file.name;
    info.ioVRefNum = file.vRefNum;
    info.ioDirID = file.parID;
    return PBGetCatInfoSync(&info) == noErr ? info.fdType : 0;
}

bool IsEmptySwatchFile(const Head& head) {
    return GetBE<std::uint16_t>(&head[0]) == 1 && GetBE<std::int16_t>(&head[2]) <= 0;
}

bool IsEmptyRiffPalette(const Head& head) {
    return GetBE<OSType>(&head[0]) == FourCC("RIFF") && GetBE<OSType>(&head[8]) == FourCC("PAL ") &&
           head[22] == 0 && head[23] == 0;
}

} // namespace

bool HoldsNoColors(const std::string& path) {
    const OSType type = TypeOf(path);
    const bool isSwatchFile = type == FourCC("Q7CO");
    if (!isSwatchFile && type != FourCC("PAL ")) return false;
    Head head = {};
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(head.data()), head.size());
    const std::streamsize needed = isSwatchFile ? 4 : 24; // the count ends there
    if (file.gcount() < needed) return false;
    return isSwatchFile ? IsEmptySwatchFile(head) : IsEmptyRiffPalette(head);
}

} // namespace gif89
