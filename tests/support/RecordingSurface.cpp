#include "RecordingSurface.h"

#include <sstream>
#include <utility>

namespace {

std::ostream& operator<<(std::ostream& out, const Rect& rect) {
    return out << rect.top << ' ' << rect.left << ' ' << rect.bottom << ' ' << rect.right;
}
std::ostream& operator<<(std::ostream& out, const Point& point) {
    return out << point.v << ' ' << point.h;
}

template <class... Parts> std::string Join(const Parts&... parts) {
    std::ostringstream line;
    (line << ... << parts);
    return line.str();
}

std::string InkName(const Ink& ink) {
    if (ink.kind == Ink::Kind::black) return "black";
    if (ink.kind == Ink::Kind::white) return "white";
    if (ink.kind == Ink::Kind::background) return "background";
    if (ink.kind == Ink::Kind::color)
        return Join("color ", ink.color.red, ' ', ink.color.green, ' ', ink.color.blue);
    std::string name = "pattern ";
    for (const int row : ink.pattern)
        for (const int digit : {row >> 4, row & 15}) name += "0123456789ABCDEF"[digit];
    return name;
}

} // namespace

std::vector<std::string> RecordingSurface::Take() {
    return std::exchange(calls, {});
}

void RecordingSurface::Fill(const Rect& rect, const Ink& ink) {
    calls.push_back(Join("fill ", rect, ' ', InkName(ink)));
}

void RecordingSurface::Line(Point from, Point to, const Ink& ink) {
    calls.push_back(Join("line ", from, " to ", to, ' ', InkName(ink)));
}

int RecordingSurface::Text(Point start, const std::string& text, short font, short size) {
    calls.push_back(Join("text ", start, " \"", text, "\" font ", font, " size ", size));
    return static_cast<int>(text.size()) * 6;
}

void RecordingSurface::Metrics(short, short, short* ascent, short* descent, short* leading) {
    *ascent = 10;
    *descent = 4;
    *leading = 2;
}

void RecordingSurface::Image(const Rect& rect, const ColorPixels& pixels) {
    calls.push_back(Join("image ", rect, " of ", pixels.rows, " x ", pixels.columns));
}
