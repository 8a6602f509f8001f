#include "ReadPicture.h"

#include "ColorProfile.h"
#include "Orient.h"
#include "Problem.h"
#include "ReadBmp.h"
#include "ReadGif.h"
#include "ReadJpeg.h"
#include "ReadPng.h"
#include "ReadPnm.h"
#include "ReadTiff.h"
#include "ReadWebp.h"

#include <algorithm>
#include <string_view>

namespace gif89 {

namespace {

using namespace std::string_view_literals;

struct Format {
    std::string_view signature;  // a question mark stands for any byte
    std::string_view followedBy; // one of these, or anything if empty
    Picture (*read)(InputFile& input);
};
constexpr Format kFormats[] = {{"\x89PNG\r\n\x1a\n", "", ReadPng},
                               {"\xFF\xD8\xFF", "", ReadJpeg},
                               {"RIFF????WEBP", "", ReadWebp},
                               {"II*\0"sv, "", ReadTiff},
                               {"MM\0*"sv, "", ReadTiff},
                               {"II+\0"sv, "", ReadTiff}, // of 64 bits
                               {"MM\0+"sv, "", ReadTiff},
                               {"GIF87a", "", ReadGif},
                               {"GIF89a", "", ReadGif},
                               {"BM", "", ReadBmp},
                               {"P5", " \t\n\v\f\r#", ReadPnm},
                               {"P6", " \t\n\v\f\r#", ReadPnm},
                               {"P7", "\n", ReadPnm}}; // "P7 332" begins files of another format

bool Matches(const Format& format, std::string_view start) {
    const auto fits = [](char wanted, char byte) { return wanted == '?' || wanted == byte; };
    if (start.size() < format.signature.size() ||
        !std::equal(format.signature.begin(), format.signature.end(), start.begin(), fits))
        return false;
    start.remove_prefix(format.signature.size());
    return format.followedBy.empty() ||
           (!start.empty() && format.followedBy.find(start[0]) != std::string_view::npos);
}

const Format* FindFormat(InputFile& input) {
    const auto bytes = input.Peek();
    const std::string_view start(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const auto* const found =
        std::find_if(std::begin(kFormats), std::end(kFormats),
                     [start](const Format& format) { return Matches(format, start); });
    return found == std::end(kFormats) ? nullptr : found;
}

Picture ReadStored(InputFile& input) {
    if (const Format* const format = FindFormat(input)) return format->read(input);
    if (input.Peek().empty()) throw Problem("is empty");
    throw Problem("is not a PNG, JPEG, WebP, TIFF, GIF, BMP, PGM, PPM or PAM picture");
}

} // namespace

bool IsPicture(InputFile& input) {
    return FindFormat(input) != nullptr;
}

Picture ReadPicture(InputFile& input, Orientation orientation) {
    Picture picture = ReadStored(input);
    ApplyProfile(picture);
    if (orientation == Orientation::upright) TurnUpright(picture);
    return picture;
}

} // namespace gif89
