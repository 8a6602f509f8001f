// Writes the sample pictures.
#pragma once

#include <cstdint>
#include <png.h>
#include <string>
#include <vector>

/// 8-bit samples row after row, as many per pixel as the colour type has.
struct Sample {
    int columns = 0, rows = 0;
    int colorType = PNG_COLOR_TYPE_RGB;
    std::vector<std::uint8_t> bytes = {};
    std::vector<png_color> palette = {};
    std::vector<std::uint8_t> opacities = {}; // of the palette's first entries
    std::string comment = {};
};

/// An RGB picture as JPEG. Throws std::runtime_error when it cannot be written.
void WriteJpeg(const std::string& path, const Sample& sample, int quality);

/// Any picture as PNG. Throws std::runtime_error when it cannot be written.
void WritePng(const std::string& path, const Sample& sample);
