// A surface that notes what is drawn, one readable line a call.
#pragma once

#include "Surface.h"

#include <vector>

class RecordingSurface : public Surface {
  public:
    /// "fill TOP LEFT BOTTOM RIGHT INK", "line V H to V H INK", "text V H "CHARACTERS" font FONT
    /// size SIZE", "image TOP LEFT BOTTOM RIGHT of ROWS x COLUMNS". INK is black, white,
    /// background, color RED GREEN BLUE, or pattern and its rows in hexadecimal.
    std::vector<std::string> calls;

    /// What was noted since the last call of Take.
    std::vector<std::string> Take();

    void Fill(const Rect& rect, const Ink& ink) override;
    void Line(Point from, Point to, const Ink& ink) override;
    /// Letters are 6 wide, rise 10 and fall 4; 2 lie between lines.
    int Text(Point start, const std::string& text, short font, short size) override;
    void Metrics(short font, short size, short* ascent, short* descent, short* leading) override;
    void Image(const Rect& rect, const ColorPixels& pixels) override;
};
