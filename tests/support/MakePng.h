// Writes PNG pictures of every form for tests.
#pragma once

#include <cstdint>
#include <optional>
#include <png.h>
#include <string>
#include <utility>
#include <vector>

struct PngText {
    int compression; // PNG_TEXT_COMPRESSION_... or PNG_ITXT_COMPRESSION_...
    std::string key, text;
};

struct PngForm {
    int columns = 1, rows = 1;
    int colorType = PNG_COLOR_TYPE_GRAY;
    int depth = 8;
    bool interlaced = false;
    std::vector<png_color> palette = {};
    std::vector<std::uint8_t> opacities = {};     // of the palette's first entries
    std::optional<png_color_16> transparent = {}; // the color of grey and RGB pictures
    bool standard = false;                        // declared to be sRGB
    std::vector<std::uint8_t> profile = {};       // empty for none
    std::vector<std::pair<const char*, std::string>> chunks = {}; // written before the palette
    std::vector<std::uint8_t> exif = {};                          // empty for none
    std::vector<PngText> texts = {};                              // behind the pixels
};

/// @param samples row after row, each 0..2^depth - 1, as many per pixel as the color type has
std::vector<std::uint8_t> MakePng(const PngForm& form, const std::vector<unsigned>& samples);
