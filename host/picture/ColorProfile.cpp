#include "ColorProfile.h"

#include <algorithm>
#include <cstdlib>
#include <lcms2.h>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

namespace gif89 {

namespace {

using ProfileUse = InputNotes::ProfileUse;
using Transform = std::unique_ptr<void, void (*)(void*)>;

// Preparing the library's shortcut takes longer than to convert this many colors without it.
constexpr std::size_t kFewColors = 10'000;

constexpr std::size_t kLongestName = 200; // in UTF-16 units

struct ProfileRelease {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, ProfileRelease>;

/// The colors that a conversion works on in place: red, green and blue lie at the start of every
/// `step` bytes.
struct Colors {
    std::uint8_t* first;
    std::size_t count;
    std::size_t step;
};

// A code point that is none becomes the sign for that.
void AppendUtf8(std::string& text, char32_t code) {
    if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) code = 0xFFFD;
    if (code < 0x80) {
        text += static_cast<char>(code);
        return;
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3; // bytes after the first
    constexpr unsigned kLead[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(kLead[more] | code >> 6 * more);
    for (int n = more - 1; n >= 0; --n) text += static_cast<char>(0x80 | (code >> 6 * n & 0x3F));
}

// The name ends up on terminals, so control characters are left out. The library hands out code
// points but counts UTF-16 units; where these are more, what follows the name is not set.
std::string NameOf(cmsHPROFILE profile) {
    wchar_t codes[kLongestName + 1] = {};
    std::size_t left =
        cmsGetProfileInfo(profile, cmsInfoDescription, "en", "US", codes, sizeof codes) /
        sizeof(wchar_t);
    std::string name;
    for (std::size_t n = 0; left > 1 && codes[n] != 0; ++n) {
        const auto code = static_cast<char32_t>(codes[n]);
        left -= code > 0xFFFF && code <= 0x10FFFF ? 2 : 1;
        if (code >= 0x20 && (code < 0x7F || code > 0x9F)) AppendUtf8(name, code);
    }
    return name;
}

// The profile in the notes, or null. Until somebody can use it, it is unusable.
Profile TakeProfile(InputNotes& notes) {
    const std::vector<std::uint8_t> bytes = std::exchange(notes.profile, {});
    Profile profile(
        cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
    notes.profileUse = ProfileUse::unusable;
    if (profile) notes.profileName = NameOf(profile.get());
    return profile;
}

// Profiles of curves and a matrix have a shortcut twenty times as fast and within one level of the
// plain computation. Those with tables do not: what the library makes of them to be faster is
// dozens of levels off in places, most of all in the shadows.
bool HasGoodShortcut(cmsHPROFILE profile) {
    return cmsIsMatrixShaper(profile) &&
           !cmsIsCLUT(profile, INTENT_PERCEPTUAL, LCMS_USED_AS_INPUT) &&
           !cmsIsCLUT(profile, INTENT_RELATIVE_COLORIMETRIC, LCMS_USED_AS_INPUT);
}

// From the profile's colors to sRGB, good for about `count` of them; null when the profile is
// damaged, is for other samples than `from`, or links devices instead of describing one.
Transform MakeTransform(cmsHPROFILE profile, cmsUInt32Number from, cmsUInt32Number into,
                        std::size_t count) {
    const Profile standard(cmsCreate_sRGBProfile());
    cmsUInt32Number flags = cmsFLAGS_BLACKPOINTCOMPENSATION;
    if (count <= kFewColors || !HasGoodShortcut(profile)) flags |= cmsFLAGS_NOOPTIMIZE;
    return {cmsCreateTransform(profile, from, standard.get(), into, INTENT_RELATIVE_COLORIMETRIC,
                               flags),
            cmsDeleteTransform};
}

void Convert(const Transform& transform, const void* from, void* into, std::size_t count) {
    cmsDoTransform(transform.get(), from, into, static_cast<cmsUInt32Number>(count));
}

bool AreClose(std::uint8_t one, std::uint8_t other) {
    return std::abs(one - other) <= 1;
}

// Tried on 16 levels of each channel in every combination, and on all greys.
bool MovesNothing(const Transform& transform, std::size_t step) {
    std::vector<std::uint8_t> given;
    const auto give = [&given, step](unsigned red, unsigned green, unsigned blue) {
        const std::uint8_t color[] = {static_cast<std::uint8_t>(red),
                                      static_cast<std::uint8_t>(green),
                                      static_cast<std::uint8_t>(blue), 0};
        given.insert(given.end(), color, color + step);
    };
    for (unsigned n = 0; n < 16 * 16 * 16; ++n)
        give((n >> 8) * 17, (n >> 4 & 15) * 17, (n & 15) * 17);
    for (unsigned grey = 0; grey < 256; ++grey) give(grey, grey, grey);
    std::vector<std::uint8_t> got = given;
    Convert(transform, given.data(), got.data(), given.size() / step);
    return std::equal(given.begin(), given.end(), got.begin(), AreClose);
}

ProfileUse ConvertColors(cmsHPROFILE profile, const Colors& colors) {
    const cmsUInt32Number layout = colors.step == 4 ? TYPE_RGBA_8 : TYPE_RGB_8;
    const Transform transform = MakeTransform(profile, layout, layout, colors.count);
    if (!transform) return ProfileUse::unusable;
    if (MovesNothing(transform, colors.step)) return ProfileUse::same;
    Convert(transform, colors.first, colors.first, colors.count);
    return ProfileUse::converted;
}

bool AreGrey(const Colors& colors) {
    const std::uint8_t* color = colors.first;
    for (std::size_t left = colors.count; left > 0; --left, color += colors.step)
        if (color[0] != color[1] || color[0] != color[2]) return false;
    return true;
}

ProfileUse ConvertGreys(cmsHPROFILE profile, const Colors& colors) {
    const Transform transform = MakeTransform(profile, TYPE_GRAY_8, TYPE_RGB_8, 256);
    if (!transform || !AreGrey(colors)) return ProfileUse::unusable;

    std::uint8_t levels[256], converted[256][3];
    std::iota(std::begin(levels), std::end(levels), std::uint8_t{0});
    Convert(transform, levels, converted, 256);
    if (std::all_of(std::begin(levels), std::end(levels), [&converted](std::uint8_t level) {
            return AreClose(level, converted[level][1]);
        }))
        return ProfileUse::same;
    // The three channels differ by rounding at most; grey is to stay grey.
    std::uint8_t* color = colors.first;
    for (std::size_t left = colors.count; left > 0; --left, color += colors.step)
        std::fill_n(color, 3, converted[color[0]][1]);
    return ProfileUse::converted;
}

ProfileUse ConvertAll(cmsHPROFILE profile, const Colors& colors) {
    switch (cmsGetColorSpace(profile)) {
    case cmsSigRgbData:
        return ConvertColors(profile, colors);
    case cmsSigGrayData:
        return ConvertGreys(profile, colors);
    default:
        return ProfileUse::unusable;
    }
}

ProfileUse ConvertTable(cmsHPROFILE profile, Picture& picture) {
    std::uint8_t entries[256][3];
    for (int index = 0; index < picture.colors; ++index) {
        const RGBtuple color = TableEntry(picture.table, index);
        const std::uint8_t channels[] = {color.red, color.green, color.blue};
        std::copy_n(channels, 3, entries[index]);
    }
    const ProfileUse use =
        ConvertAll(profile, {entries[0], static_cast<std::size_t>(picture.colors), 3});
    for (int index = 0; index < picture.colors; ++index)
        SetTableEntry(picture.table, index,
                      {0, entries[index][0], entries[index][1], entries[index][2]});
    return use;
}

} // namespace

void ApplyProfile(Picture& picture) {
    if (picture.notes.profile.empty()) return;
    const Profile profile = TakeProfile(picture.notes);
    if (!profile) return;
    if (picture.kind == Picture::Kind::indexed) {
        picture.notes.profileUse = ConvertTable(profile.get(), picture);
        return;
    }
    const auto step = static_cast<std::size_t>(picture.BytesPerPixel());
    picture.notes.profileUse =
        ConvertAll(profile.get(), {picture.pixels.get(), picture.PixelBytes() / step, step});
}

InkConverter::InkConverter(InputNotes& notes, InkStorage inkStorage)
    : storage(inkStorage), transform(nullptr, cmsDeleteTransform) {
    notes.inks = true;
    if (notes.profile.empty()) return;
    const Profile profile = TakeProfile(notes);
    if (!profile) return;
    constexpr std::size_t kAny = 0; // such profiles have tables
    const cmsUInt32Number from = storage == InkStorage::ink ? TYPE_CMYK_8 : TYPE_CMYK_8_REV;
    transform = MakeTransform(profile.get(), from, TYPE_RGB_8, kAny);
    if (transform) notes.profileUse = ProfileUse::converted;
}

void InkConverter::ConvertRow(const std::uint8_t* inks, std::size_t pixels,
                              std::uint8_t* rgb) const {
    if (transform) {
        Convert(transform, inks, rgb, pixels);
        return;
    }
    const unsigned flip = storage == InkStorage::ink ? 255 : 0;
    for (const std::uint8_t* const end = inks + 4 * pixels; inks < end; inks += 4) {
        const unsigned black = inks[3] ^ flip;
        for (int ink = 0; ink < 3; ++ink)
            *rgb++ = static_cast<std::uint8_t>(((inks[ink] ^ flip) * black + 127) / 255);
    }
}

} // namespace gif89
