// The decoder of BMP pictures. It lies in a library of its own, which is loaded only when such a
// picture comes, so that programs start without the toolkit that it uses.
#pragma once

#include <cstddef>
#include <cstdint>

namespace gif89 {

/// A decoded picture; it owns the memory that the pointers lead to.
class DecodedBmp {
  public:
    virtual ~DecodedBmp() = default;

    enum class Form : std::uint8_t {
        bits,    ///< indices, eight in a byte, the first one highest
        indices, ///< bytes
        colors   ///< words of eight unused bits, red, green and blue from high to low
    };
    Form form = Form::colors;
    int rows = 0, columns = 0;
    int tableColors = 0;                  ///< 0..256; 0 for colors
    const std::uint32_t* table = nullptr; ///< words like colors
    const std::uint8_t* pixels = nullptr; ///< top row first
    std::ptrdiff_t rowBytes = 0;          ///< from one row to the next
};

/// The library's file name and the name of its one function.
constexpr char kBmpDecoderLibrary[] = "picture_qt.so";
constexpr char kDecodeBmpSymbol[] = "GIF89DecodeBmp";

/// Decodes a BMP file of 1, 4, 8 or 24 bits a pixel; others come out inexact. Returns null and sets
/// the reason, at most `reasonBytes` with the zero at its end, when the file is damaged or ends
/// early. May ask for up to 8 bytes for each pixel that the header promises: the caller looks at
/// its sides before.
extern "C" __attribute__((visibility("default"))) DecodedBmp*
GIF89DecodeBmp(const std::uint8_t* file, std::size_t fileBytes, char* reason,
               std::size_t reasonBytes);

using DecodeBmpProc = decltype(GIF89DecodeBmp);

} // namespace gif89
