#include "MakeProfile.h"

#include <cmath>
#include <lcms2.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes SaveAndClose(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    Bytes bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

} // namespace

Bytes MakeRgbProfile(double gamma, Primaries primaries) {
    const cmsCIExyY white = {0.3127, 0.3290, 1}, red = {0.64, 0.33, 1}, green = {0.30, 0.60, 1},
                    blue = {0.15, 0.06, 1};
    const bool swapped = primaries == Primaries::redAndGreenSwapped;
    const cmsCIExyYTRIPLE colors = {swapped ? green : red, swapped ? red : green, blue};
    cmsToneCurve* const curve = cmsBuildGamma(nullptr, gamma);
    cmsToneCurve* const curves[] = {curve, curve, curve};
    const cmsHPROFILE profile = cmsCreateRGBProfile(&white, &colors, curves);
    cmsFreeToneCurve(curve);
    return SaveAndClose(profile);
}

Bytes MakeStandardProfile() {
    const cmsHPROFILE profile = cmsCreate_sRGBProfile();
    cmsMLU* const name = cmsMLUalloc(nullptr, 1);
    const wchar_t units[] = {'B', 0xFC, 'r', 'o', 0x1B, 0xD83D, 0xDE00, 0};
    cmsMLUsetWide(name, "en", "US", units);
    cmsWriteTag(profile, cmsSigProfileDescriptionTag, name);
    Bytes bytes = SaveAndClose(profile);
    cmsMLUfree(name);
    return bytes;
}

Bytes MakeGreyProfile(double gamma) {
    cmsToneCurve* const curve = cmsBuildGamma(nullptr, gamma);
    const cmsHPROFILE profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
    cmsFreeToneCurve(curve);
    return SaveAndClose(profile);
}

Bytes MakeInkProfile() {
    const cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 2.1);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    const auto sample = [](const cmsUInt16Number inks[], cmsUInt16Number lab[], void*) {
        const double cover = 10 * inks[0] + 20 * inks[1] + 30 * inks[2] + 40 * inks[3];
        lab[0] = static_cast<cmsUInt16Number>(0xFF00 * (1 - cover / 6553500) + 0.5);
        lab[1] = lab[2] = 0x8000; // grey
        return 1;
    };
    cmsStage* const table = cmsStageAllocCLut16bit(nullptr, 9, 4, 3, nullptr);
    cmsStageSampleCLut16bit(table, sample, nullptr, 0);
    cmsPipeline* const pipeline = cmsPipelineAlloc(nullptr, 4, 3);
    cmsPipelineInsertStage(pipeline, cmsAT_END, table);
    cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
    Bytes bytes = SaveAndClose(profile);
    cmsPipelineFree(pipeline);
    return bytes;
}

Bytes MakeLinkProfile() {
    cmsToneCurve* const curve = cmsBuildGamma(nullptr, 2);
    cmsToneCurve* const curves[] = {curve, curve, curve};
    const cmsHPROFILE profile = cmsCreateLinearizationDeviceLink(cmsSigRgbData, curves);
    cmsFreeToneCurve(curve);
    return SaveAndClose(profile);
}

int StandardLevel(double light) {
    const double level =
        light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
    return static_cast<int>(std::lround(255 * level));
}

double LightOf(double lightness) {
    return lightness > 8 ? std::pow((lightness + 16) / 116, 3) : lightness / 903.2963;
}
