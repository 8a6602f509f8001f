// The options of an RGB export: what the options dialog shows when it opens.
#include "GIF89Export.h"

namespace {

constexpr std::int32_t kMostColors = 256;
constexpr std::uint8_t kTransparentLevel = 192;

} // namespace

short GIF89RGBExport::GetRGB24Parameters(unsigned char* exact, unsigned char* supplied) {
    const bool transparency = exportRecord->hasTransparency != 0;
    const bool exactAllowed =
        exactInfo.count >= 0 && !(transparency && exactInfo.count >= kMostColors);

    *exact = exactAllowed;
    *supplied = 0;
    if (exactAllowed)
        numColors = exactInfo.count;
    else
        numColors = transparency ? kMostColors - 1 : kMostColors;
    suppliedPaletteFlag = 0;
    interlaced = 1;
    commentEnabled = comment != nullptr;
    transparentColor = {0, kTransparentLevel, kTransparentLevel, kTransparentLevel};
    return noErr;
}
