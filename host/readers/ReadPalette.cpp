#include "ReadPalette.h"

#include "InputFile.h"
#include "Problem.h"
#include "ReadBinaryPalette.h"
#include "ReadPicture.h"
#include "ReadTextPalette.h"

#include <algorithm>
#include <filesystem>
#include <span>
#include <string_view>
#include <vector>

namespace gif89 {
namespace {

/// Far more than 256 entries take, with names and remarks.
constexpr std::size_t kMostPaletteBytes = 1 << 20;

constexpr char kUnknown[] = "is neither a palette nor a picture of a known kind; expected a GIMP, "
                            "JASC, paint.net, RIFF, ASE, ACO or ACT palette, a list of colours, or "
                            "a picture";

bool HasExtension(const std::string& path, std::string_view first, std::string_view second) {
    std::string extension = std::filesystem::path(path).extension();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return extension == first || extension == second;
}

/// A colour table may begin with any bytes, those of swatches or of a picture among them.
bool IsNamedColorTable(const std::string& path) {
    std::error_code unknown; // a pipe has no size
    const std::uintmax_t size = std::filesystem::file_size(path, unknown);
    return !unknown && HasColorTableSize(size) && HasExtension(path, ".act", ".zct");
}

class DistinctColors {
  public:
    void Add(const std::uint8_t* pixel) {
        const Color color = {pixel[0], pixel[1], pixel[2]};
        if (seen[color.Packed()]) return;
        seen[color.Packed()] = true;
        if (palette.size() == kMostEntries)
            throw Problem("is a picture of more than 256 colours; 1 to 256 are expected");
        palette.push_back(color);
    }
    Palette Finish() {
        if (palette.empty()) throw Problem("is a picture without a pixel that can be seen");
        return std::move(palette);
    }

  private:
    std::vector<bool> seen = std::vector<bool>(1 << 24);
    Palette palette;
};

Palette PaletteOf(const Picture& picture) {
    if (picture.kind == Picture::Kind::indexed) return TableOf(picture);
    DistinctColors colors;
    const bool hasOpacity = picture.kind == Picture::Kind::rgbAlpha;
    const std::uint8_t* pixel = picture.pixels.get();
    const std::uint8_t* const end = pixel + picture.PixelBytes();
    for (; pixel < end; pixel += picture.BytesPerPixel())
        if (!hasOpacity || pixel[3] != 0) colors.Add(pixel);
    return colors.Finish();
}

bool IsText(std::span<const std::uint8_t> bytes) {
    // A colour table of ASCII characters alone is unlikely; one without control characters is not.
    const int highest = HasColorTableSize(bytes.size()) ? 0x7E : 0xFF;
    return std::all_of(bytes.begin(), bytes.end(), [highest](std::uint8_t c) {
        return (c >= ' ' && c <= highest) || (c >= '\t' && c <= '\r');
    });
}

/// Two bytes are a weak signature: where the size is a colour table's the name has to agree.
bool IsSwatches(std::string_view text, const std::string& path) {
    using namespace std::string_view_literals;
    return (text.starts_with("\0\1"sv) || text.starts_with("\0\2"sv)) &&
           (!HasColorTableSize(text.size()) || HasExtension(path, ".aco", ".zco"));
}

Palette ReadBytes(std::span<const std::uint8_t> bytes, const std::string& path) {
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (text.starts_with("ASEF")) return ReadSwatchExchange(bytes);
    if (text.starts_with("RIFF") && text.size() >= 12 && text.substr(8, 4) == "PAL ")
        return ReadRiffPalette(bytes);
    if (IsSwatches(text, path)) return ReadSwatches(bytes);
    if (constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
        text.starts_with(kByteOrderMark))
        text.remove_prefix(kByteOrderMark.size());
    if (text.starts_with("GIMP Palette")) return ReadGimpPalette(text);
    if (text.starts_with("JASC-PAL")) return ReadJascPalette(text);
    if (IsText(bytes)) return ReadHexPalette(text);
    if (HasColorTableSize(bytes.size())) return ReadColorTable(bytes);
    throw Problem(kUnknown);
}

} // namespace

Palette ReadPaletteFile(const std::string& path) {
    InputFile input = InputFile::Open(path);
    const bool isTable = IsNamedColorTable(path);
    if (!isTable && IsPicture(input)) return PaletteOf(ReadPicture(input));
    const auto bytes = input.ReadRest(kMostPaletteBytes);
    if (bytes.empty()) throw Problem("is empty");
    return isTable ? ReadColorTable(bytes) : ReadBytes(bytes, path);
}

} // namespace gif89
