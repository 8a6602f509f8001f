// Drawing into ports: pens, patterns, rectangles, lines, text, pictures and pixel maps.
//
// The calls keep the port's state and hand finished shapes to the port's surface. A port without a
// surface takes every call and draws nothing, at no cost worth mentioning.
#pragma once

#include "Surface.h"
#include "ToolboxTypes.h"

#pragma GCC visibility push(default)

/// An 8 x 8 pattern of black (1) and white (0) pixels, one byte a row, leftmost pixel on top.
struct Pattern {
    std::uint8_t rows[8];
    bool operator==(const Pattern&) const = default;
};
constexpr Pattern kBlackPattern = {{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}};
constexpr Pattern kGrayPattern = {{0xAA, 0x55, 0xAA, 0x55, 0xAA, 0x55, 0xAA, 0x55}};
constexpr Pattern kWhitePattern = {};

/// A pattern of one colour; made by NewPixPat, set by MakeRGBPat.
struct PixPat {
    RGBColor color;
};
using PixPatHandle = PixPat**;

/// What the pen is like and where it stands, local coordinates.
struct PenState {
    Point pnLoc;
    Pattern pnPat = kBlackPattern;
    PixPatHandle pnPixPat = nullptr; ///< when not null, drawn with instead of pnPat
};

/// What drawing calls work on. Dialogs are ports.
struct GrafPort {
    PenState pen;
    std::int16_t txFont = 0;    ///< 0 the system's font, 3 the small one for notes
    std::int16_t txSize = 0;    ///< 0 is the font's usual size
    Rect portRect;              ///< local coordinates
    Point origin;               ///< where local (0, 0) lies, global coordinates
    Surface* surface = nullptr; ///< not owned
};
using GrafPtr = GrafPort*;

/// A colour table: a header and ctSize + 1 entries, 8 bytes each.
struct ColorSpec {
    std::int16_t value;
    RGBColor rgb;
};
struct ColorTable {
    std::int32_t ctSeed;
    std::int16_t ctFlags;
    std::int16_t ctSize; ///< entries less one
    ColorSpec ctTable[256];
};
using CTabHandle = ColorTable**;
static_assert(sizeof(ColorTable) == 2056, "a header of 8 bytes and 256 entries of 8");

/// Indexed pixels in memory.
struct PixMap {
    Ptr baseAddr;          ///< pixel at the bounds' top left
    std::int16_t rowBytes; ///< bytes of a row, with the top bit (0x8000) set
    Rect bounds;
    std::int16_t pmVersion;
    std::int16_t packType;
    std::int32_t packSize;
    std::int32_t hRes; ///< 16.16 dots an inch
    std::int32_t vRes;
    std::int16_t pixelType;
    std::int16_t pixelSize; ///< 8
    std::int16_t cmpCount;
    std::int16_t cmpSize;
    CTabHandle pmTable;
};

/// Transfer mode of CopyBits that may dither where the screen has few colours; ours have enough.
constexpr std::int16_t ditherCopy = 64;

struct FontInfo {
    std::int16_t ascent, descent, widMax, leading; ///< pixels
};

/// A cursor of 16 x 16 pixels.
struct Cursor {
    std::uint16_t data[16]; ///< big-endian in resources, here in the machine's order
    std::uint16_t mask[16];
    Point hotSpot;
    bool operator==(const Cursor&) const = default;
};

// Ports

/// Drawing goes to `port` from now on, on this thread; null draws nothing.
void SetPort(GrafPtr port);
void GetPort(GrafPtr* port);
void GlobalToLocal(Point* point); ///< of the current port
void LocalToGlobal(Point* point);

// Rectangles; bottom and right lie outside

void SetRect(Rect* rect, short left, short top, short right, short bottom);
void InsetRect(Rect* rect, short dh, short dv);
void OffsetRect(Rect* rect, short dh, short dv);
Boolean PtInRect(Point point, const Rect* rect);
Boolean EmptyRect(const Rect* rect);

// Pen

void GetPenState(PenState* state);
void SetPenState(const PenState* state);
void PenNormal(); ///< black, one pixel
void PenPat(const Pattern* pattern);
void PenPixPat(PixPatHandle pattern);
void MoveTo(short h, short v);
void LineTo(short h, short v); ///< both end pixels are drawn

// Shapes

void FrameRect(const Rect* rect); ///< one pixel wide, inside the rectangle
void PaintRect(const Rect* rect); ///< with the pen's pattern
void FillRect(const Rect* rect, const Pattern* pattern);
void FillCRect(const Rect* rect, PixPatHandle pattern);
void EraseRect(const Rect* rect); ///< with the port's background

// Colour patterns

/// Null when there is no memory. The caller disposes of it with DisposePixPat.
PixPatHandle NewPixPat();
void MakeRGBPat(PixPatHandle pattern, const RGBColor* color); ///< null does nothing
/// Null does nothing. When the port's pen draws with it, the pen's plain pattern counts again.
void DisposePixPat(PixPatHandle pattern);

// Text

void TextFont(short font);
void TextSize(short size);
/// Of the port's font and size; without a surface what such a font usually has.
void GetFontInfo(FontInfo* info);
/// UTF-8, with the baseline at the pen, which moves on by the width; without a surface it stays.
void DrawString(ConstStr255Param text);

// Pictures and pixels

using PicHandle = Handle;

/// The picture resource, or null.
PicHandle GetPicture(short id);
/// Draws a picture resource scaled into the rectangle; null or a malformed picture draws nothing.
void DrawPicture(PicHandle picture, const Rect* rect);

/// Tells that a colour table was changed in place; CopyBits reads the table anew at every call.
void CTabChanged(CTabHandle table);

/// Draws `sourceRect` of 8-bit indexed pixels into `destRect` of the port, of equal size, through
/// the map's colour table (high bytes of its channels; entry i is that of index i, and indices past
/// the table's end are black). Parts of `sourceRect` outside the map's bounds are left out; other
/// maps and unequal sizes draw nothing. `mask` must be null.
void CopyBits(const PixMap* source, GrafPtr destination, const Rect* sourceRect,
              const Rect* destRect, short mode, const void* mask);

#pragma GCC visibility pop
