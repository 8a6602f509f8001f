#include "ReadPicture.h"

#include "Problem.h"
#include "ReadJpeg.h"
#include "ReadPng.h"
#include "ReadPnm.h"

#include <string_view>

namespace gif89 {

namespace {

struct Format {
    std::string_view signature;
    std::string_view followedBy; // one of these, or anything if empty
    Picture (*read)(InputFile& input);
};
constexpr Format kFormats[] = {{"\x89PNG\r\n\x1a\n", "", ReadPng},
                               {"\xFF\xD8\xFF", "", ReadJpeg},
                               {"P5", " \t\n\v\f\r#", ReadPnm},
                               {"P6", " \t\n\v\f\r#", ReadPnm},
                               {"P7", "\n", ReadPnm}}; // "P7 332" is something else

bool Matches(const Format& format, std::string_view start) {
    if (!start.starts_with(format.signature)) return false;
    start.remove_prefix(format.signature.size());
    return format.followedBy.empty() ||
           (!start.empty() && format.followedBy.find(start[0]) != std::string_view::npos);
}

} // namespace

Picture ReadPicture(InputFile& input, Orientation) {
    const auto bytes = input.Peek();
    const std::string_view start(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (start.empty()) throw Problem("is empty");
    for (const Format& format : kFormats)
        if (Matches(format, start)) return format.read(input);
    throw Problem("is not a PNG, JPEG, PGM, PPM or PAM picture");
}

} // namespace gif89
