#include "LumoGetColor.h"

#include "HostDialogs.h"

namespace {

ColorServicesInfo MakeRequest(const RGBColor& start) {
    ColorServicesInfo info = {};
    info.infoSize = sizeof info;
    const std::uint16_t channels[] = {start.red, start.green, start.blue};
    for (int i = 0; i < 3; ++i) info.component[i] = static_cast<std::int16_t>(channels[i] >> 8);
    return info;
}

std::uint16_t Widen(std::int16_t component) {
    return static_cast<std::uint16_t>(component * 257);
}

} // namespace

Boolean LumoGetColor(ColorServicesProc* services, Point where, ConstStr255Param prompt,
                     const RGBColor* inColor, RGBColor* outColor) {
    if (services) {
        ColorServicesInfo info = MakeRequest(*inColor);
        const OSErr code = services(&info);
        if (code == noErr)
            *outColor = {Widen(info.component[0]), Widen(info.component[1]),
                         Widen(info.component[2])};
        if (code != kServiceNotOffered) return code == noErr;
    }
    return GetColor(where, prompt, inColor, outColor);
}
