// A surface of plain pixels in memory, one a point, so that tests can compare what is drawn.
#pragma once

#include "Surface.h"

#include <map>
#include <vector>

class PixelSurface : public Surface {
  public:
    static constexpr std::uint32_t kBlack = 0x000000, kWhite = 0xFFFFFF;
    /// What the surface shows at first and where it was erased; told from white.
    static constexpr std::uint32_t kBackground = 0xE0E0E0;

    /// What lies outside of rows and columns is cut off.
    PixelSurface(int rowCount, int columnCount);

    std::uint32_t At(int v, int h) const;
    void Clear();
    /// A string for each row: '#' black, 'o' white, '.' background, and for other colours the
    /// letters that `colors` gives them, else '?'.
    std::vector<std::string> Rows(const std::map<std::uint32_t, char>& colors = {}) const;

    void Fill(const Rect& rect, const Ink& ink) override;
    void Line(Point from, Point to, const Ink& ink) override;
    /// Draws nothing; letters are 6 pixels wide.
    int Text(Point start, const std::string& text, short font, short size) override;
    void Metrics(short font, short size, short* ascent, short* descent, short* leading) override;
    /// Takes the pixel that lies under the middle of each point.
    void Image(const Rect& rect, const ColorPixels& source) override;

  private:
    void Put(int v, int h, std::uint32_t color);

    int rows, columns;
    std::vector<std::uint32_t> pixels;
};
