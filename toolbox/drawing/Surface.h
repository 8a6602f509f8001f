// Where finished shapes go: a window, an offscreen picture, or a list in a test.
#pragma once

#include "ToolboxTypes.h"

#include <span>
#include <string>

#pragma GCC visibility push(default)

/// What a shape is filled with: one colour, a pattern of black and white, or the background that
/// an erased area shows.
struct Ink {
    enum class Kind : std::uint8_t { black, white, color, pattern, background };
    Kind kind = Kind::black;
    RGBColor color;               ///< of Kind::color
    std::uint8_t pattern[8] = {}; ///< of Kind::pattern: 8 x 8, aligned to local (0, 0)
};

/// True-colour pixels: 0x00RRGGBB, `columns` a row, no padding.
struct ColorPixels {
    int rows = 0;
    int columns = 0;
    std::span<const std::uint32_t> pixels;
};

/// Draws for one port, in its local coordinates; rectangles' bottom and right lie outside.
class Surface {
  public:
    virtual ~Surface() = default;
    virtual void Fill(const Rect& rect, const Ink& ink) = 0;
    /// A line one pixel wide; both ends are drawn.
    virtual void Line(Point from, Point to, const Ink& ink) = 0;
    /// UTF-8 with its baseline starting at `start`; returns the width in pixels.
    virtual int Text(Point start, const std::string& text, short font, short size) = 0;
    /// Ascent, descent and leading of a font in pixels.
    virtual void Metrics(short font, short size, short* ascent, short* descent, short* leading) = 0;
    /// Pixels scaled to the rectangle, which is in points; pictures of twice its size stay sharp on
    /// a screen of twice the resolution.
    virtual void Image(const Rect& rect, const ColorPixels& pixels) = 0;
};

#pragma GCC visibility pop
