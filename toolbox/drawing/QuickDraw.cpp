#include "QuickDraw.h"

#include "MemoryManager.h"
#include "PictureResource.h"
#include "ResourceManager.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <new>
#include <vector>

namespace {

thread_local GrafPtr currentPort = nullptr;

Surface* CurrentSurface() {
    return currentPort ? currentPort->surface : nullptr;
}

// Coordinates have 16 bits and wrap.
std::int16_t Sum(int a, int b) {
    return static_cast<std::int16_t>(a + b);
}
std::int16_t Difference(int a, int b) {
    return static_cast<std::int16_t>(a - b);
}

Ink InkOf(const Pattern& pattern) {
    if (pattern == kBlackPattern) return {};
    Ink ink;
    ink.kind = pattern == kWhitePattern ? Ink::Kind::white : Ink::Kind::pattern;
    if (ink.kind == Ink::Kind::pattern) std::copy_n(pattern.rows, 8, ink.pattern);
    return ink;
}

Ink InkOf(const PixPat& pattern) {
    Ink ink;
    ink.kind = Ink::Kind::color;
    ink.color = pattern.color;
    return ink;
}

Ink InkOf(const PenState& pen) {
    return pen.pnPixPat ? InkOf(**pen.pnPixPat) : InkOf(pen.pnPat);
}

void FillWith(const Rect& rect, const Ink& ink) {
    if (!EmptyRect(&rect)) CurrentSurface()->Fill(rect, ink);
}

std::uint32_t PackHighBytes(const RGBColor& color) {
    return (color.red & 0xFF00U) << 8 | (color.green & 0xFF00U) | color.blue >> 8;
}

/// The colours of all 256 indices; those past the table's end are black.
std::array<std::uint32_t, 256> ReadColors(const ColorTable& table) {
    std::array<std::uint32_t, 256> colors = {};
    const int count = std::clamp(table.ctSize + 1, 0, 256);
    for (int i = 0; i < count; ++i)
        colors[static_cast<std::size_t>(i)] = PackHighBytes(table.ctTable[i].rgb);
    return colors;
}

/// Where pixels come from, in the coordinates of the map's bounds, and how far they move.
struct Transfer {
    int top, left, bottom, right;
    int down, across;
};

/// Cuts the source rectangle to the pixels that the map really has.
Transfer ClipToMap(const PixMap& map, int rowBytes, const Rect& source, const Rect& destination) {
    const Rect& bounds = map.bounds;
    return {std::max(source.top, bounds.top),
            std::max(source.left, bounds.left),
            std::min(source.bottom, bounds.bottom),
            std::min<int>({source.right, bounds.right, bounds.left + rowBytes}),
            destination.top - source.top,
            destination.left - source.left};
}

bool HaveEqualSize(const Rect& a, const Rect& b) {
    return a.bottom - a.top == b.bottom - b.top && a.right - a.left == b.right - b.left;
}

/// The true colours of a part of the map. They stay until the next call on this thread.
ColorPixels ReadPixels(const PixMap& map, int rowBytes, const Transfer& part) {
    static thread_local std::vector<std::uint32_t> pixels;
    pixels.clear();
    const auto colors = ReadColors(**map.pmTable);
    for (int row = part.top; row < part.bottom; ++row) {
        const std::uint8_t* const indices =
            map.baseAddr + std::ptrdiff_t{row - map.bounds.top} * rowBytes;
        for (int column = part.left; column < part.right; ++column)
            pixels.push_back(colors[indices[column - map.bounds.left]]);
    }
    return {part.bottom - part.top, part.right - part.left, pixels};
}

} // namespace

void SetPort(GrafPtr port) {
    currentPort = port;
}

void GetPort(GrafPtr* port) {
    *port = currentPort;
}

void GlobalToLocal(Point* point) {
    if (!currentPort) return;
    *point = {Difference(point->v, currentPort->origin.v),
              Difference(point->h, currentPort->origin.h)};
}

void LocalToGlobal(Point* point) {
    if (!currentPort) return;
    *point = {Sum(point->v, currentPort->origin.v), Sum(point->h, currentPort->origin.h)};
}

void SetRect(Rect* rect, short left, short top, short right, short bottom) {
    *rect = {top, left, bottom, right};
}

void InsetRect(Rect* rect, short dh, short dv) {
    *rect = {Sum(rect->top, dv), Sum(rect->left, dh), Difference(rect->bottom, dv),
             Difference(rect->right, dh)};
}

void OffsetRect(Rect* rect, short dh, short dv) {
    *rect = {Sum(rect->top, dv), Sum(rect->left, dh), Sum(rect->bottom, dv), Sum(rect->right, dh)};
}

Boolean PtInRect(Point point, const Rect* rect) {
    return point.v >= rect->top && point.v < rect->bottom && point.h >= rect->left &&
           point.h < rect->right;
}

Boolean EmptyRect(const Rect* rect) {
    return rect->bottom <= rect->top || rect->right <= rect->left;
}

void GetPenState(PenState* state) {
    *state = currentPort ? currentPort->pen : PenState{};
}

void SetPenState(const PenState* state) {
    if (currentPort) currentPort->pen = *state;
}

void PenNormal() {
    PenPat(&kBlackPattern);
}

void PenPat(const Pattern* pattern) {
    if (!currentPort) return;
    currentPort->pen.pnPat = *pattern;
    currentPort->pen.pnPixPat = nullptr;
}

void PenPixPat(PixPatHandle pattern) {
    if (currentPort) currentPort->pen.pnPixPat = pattern;
}

void MoveTo(short h, short v) {
    if (currentPort) currentPort->pen.pnLoc = {v, h};
}

void LineTo(short h, short v) {
    if (!currentPort) return;
    PenState& pen = currentPort->pen;
    const Point end = {v, h};
    if (Surface* const surface = currentPort->surface) surface->Line(pen.pnLoc, end, InkOf(pen));
    pen.pnLoc = end;
}

void FrameRect(const Rect* rect) {
    // An empty rectangle would otherwise have sides that are not empty.
    if (!CurrentSurface() || EmptyRect(rect)) return;
    const Ink ink = InkOf(currentPort->pen);
    const auto [top, left, bottom, right] = *rect;
    FillWith({top, left, Sum(top, 1), right}, ink);
    FillWith({Difference(bottom, 1), left, bottom, right}, ink);
    FillWith({top, left, bottom, Sum(left, 1)}, ink);
    FillWith({top, Difference(right, 1), bottom, right}, ink);
}

void PaintRect(const Rect* rect) {
    if (CurrentSurface()) FillWith(*rect, InkOf(currentPort->pen));
}

void FillRect(const Rect* rect, const Pattern* pattern) {
    if (CurrentSurface()) FillWith(*rect, InkOf(*pattern));
}

void FillCRect(const Rect* rect, PixPatHandle pattern) {
    if (CurrentSurface() && pattern) FillWith(*rect, InkOf(**pattern));
}

void EraseRect(const Rect* rect) {
    if (!CurrentSurface()) return;
    Ink ink;
    ink.kind = Ink::Kind::background;
    FillWith(*rect, ink);
}

PixPatHandle NewPixPat() {
    const Handle handle = NewHandle(sizeof(PixPat));
    if (!handle) return nullptr;
    new (*handle) PixPat{};
    return reinterpret_cast<PixPatHandle>(handle);
}

void MakeRGBPat(PixPatHandle pattern, const RGBColor* color) {
    if (pattern) (*pattern)->color = *color;
}

void DisposePixPat(PixPatHandle pattern) {
    // Callers may dispose of the pattern they still draw with and make the pen normal afterwards.
    if (pattern && currentPort && currentPort->pen.pnPixPat == pattern)
        currentPort->pen.pnPixPat = nullptr;
    DisposeHandle(reinterpret_cast<Handle>(pattern));
}

void TextFont(short font) {
    if (currentPort) currentPort->txFont = font;
}

void TextSize(short size) {
    if (currentPort) currentPort->txSize = size;
}

void GetFontInfo(FontInfo* info) {
    constexpr short kUsualSize = 12;
    const short size = currentPort && currentPort->txSize > 0 ? currentPort->txSize : kUsualSize;
    *info = {size, static_cast<short>(size / 4), Sum(size, 3), 1};
    if (Surface* const surface = CurrentSurface())
        surface->Metrics(currentPort->txFont, currentPort->txSize, &info->ascent, &info->descent,
                         &info->leading);
}

void DrawString(ConstStr255Param text) {
    Surface* const surface = CurrentSurface();
    if (!surface) return;
    Point& pen = currentPort->pen.pnLoc;
    const std::string characters(text + 1, text + 1 + text[0]);
    const int width = surface->Text(pen, characters, currentPort->txFont, currentPort->txSize);
    pen.h = Sum(pen.h, width);
}

PicHandle GetPicture(short id) {
    return GetResource(FourCC("PICT"), id);
}

void DrawPicture(PicHandle picture, const Rect* rect) {
    Surface* const surface = CurrentSurface();
    if (!surface || !picture || EmptyRect(rect)) return;
    const auto decoded =
        DecodePicture({*picture, static_cast<std::size_t>(GetHandleSize(picture))});
    if (decoded) surface->Image(*rect, {decoded->rows, decoded->columns, decoded->pixels});
}

void CTabChanged(CTabHandle) {}

void CopyBits(const PixMap* source, GrafPtr destination, const Rect* sourceRect,
              const Rect* destRect, [[maybe_unused]] short mode,
              [[maybe_unused]] const void* mask) {
    assert(!mask);
    if (!destination || !destination->surface) return;
    if (!source || !source->baseAddr || !source->pmTable || source->pixelSize != 8) return;
    if (!HaveEqualSize(*sourceRect, *destRect)) return;
    const int rowBytes = source->rowBytes & 0x3FFF; // the two top bits are flags
    const Transfer part = ClipToMap(*source, rowBytes, *sourceRect, *destRect);
    if (part.top >= part.bottom || part.left >= part.right) return;
    destination->surface->Image({Sum(part.top, part.down), Sum(part.left, part.across),
                                 Sum(part.bottom, part.down), Sum(part.right, part.across)},
                                ReadPixels(*source, rowBytes, part));
}
