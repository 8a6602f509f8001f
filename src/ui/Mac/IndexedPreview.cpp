#include "IndexedPreview.h"

#include "IndexedDialog.h"
#include "ItemDrawing.h"
#include "ModuleResources.h"
#include "PascalStrings.h"
#include "ResourceManager.h"

#include <algorithm>
#include <array>
#include <string>

namespace {

constexpr std::int32_t kScreenDots = 0x00480000; // 72 an inch
constexpr std::uint16_t kPixMapFlag = 0x8000;
constexpr int kNone = -1;

std::int32_t RoundUpTo4(std::int32_t bytes) {
    return (bytes + 3) / 4 * 4;
}

PixMap DescribePreview(const PreviewView& g, const Rect& bounds) {
    PixMap map = {};
    map.baseAddr = g.previewBuffer;
    map.rowBytes = static_cast<std::int16_t>(g.previewRowBytes | kPixMapFlag);
    map.bounds = bounds;
    map.hRes = map.vRes = kScreenDots;
    map.pixelSize = map.cmpSize = 8;
    map.cmpCount = 1;
    map.pmTable = g.previewColors;
    return map;
}

void RebuildPreview(PreviewView* g) {
    const bool isMasked = g->maskedData != nullptr;
    const std::uint8_t* const image = isMasked ? g->maskedData : g->imageData;
    const std::int32_t rowBytes = isMasked ? g->maskedRowBytes : g->rowBytes;
    const Rect& part = g->srcRect;
    MakePreviewBuffer(image + std::ptrdiff_t{part.top} * rowBytes + part.left, g->previewBuffer,
                      rowBytes, &g->previewRowBytes, part.bottom - part.top, part.right - part.left,
                      g->enlarge, g->shrink);
    g->previewDirty = 0;
}

std::int16_t Narrow(int value) {
    return static_cast<std::int16_t>(value);
}

} // namespace

std::int32_t MakePreviewBuffer(const unsigned char* src, unsigned char* dst,
                               std::int32_t srcRowBytes, std::int32_t* dstRowBytes,
                               std::int32_t rows, std::int32_t cols, std::int32_t enlarge,
                               std::int32_t shrink) {
    if (enlarge >= 2) {
        *dstRowBytes = RoundUpTo4(cols * enlarge);
        for (std::int32_t y = 0; y < rows; ++y, src += srcRowBytes)
            for (std::int32_t copy = 0; copy < enlarge; ++copy, dst += *dstRowBytes)
                for (std::int32_t x = 0; x < cols; ++x)
                    std::fill_n(dst + std::ptrdiff_t{x} * enlarge, enlarge, src[x]);
        return cols;
    }
    *dstRowBytes = RoundUpTo4(cols / shrink);
    for (std::int32_t y = 0; y < rows; y += shrink, dst += *dstRowBytes) {
        const unsigned char* const row = src + std::ptrdiff_t{y} * srcRowBytes;
        for (std::int32_t x = 0; x < cols; x += shrink) dst[x / shrink] = row[x];
    }
    return cols;
}

void DrawImageContent(PreviewView* g, Rect* viewRect) {
    const Rect view = OutsetRect(*viewRect, -1);
    if (g->previewDirty) RebuildPreview(g);

    // What runs over the view's far sides is cut off; the near sides never do.
    Rect area = g->dstRect;
    area.bottom = std::min(area.bottom, view.bottom);
    area.right = std::min(area.right, view.right);
    const Point corner = {Narrow(g->srcRect.top / g->shrink), Narrow(g->srcRect.left / g->shrink)};
    const Rect bounds = {corner.v, corner.h, Narrow(corner.v + area.bottom - area.top),
                         Narrow(corner.h + area.right - area.left)};
    const PixMap map = DescribePreview(*g, bounds);
    GrafPtr port = nullptr;
    GetPort(&port);
    CopyBits(&map, port, &bounds, &area, ditherCopy, nullptr);

    const Rect areaFrame = OutsetRect(area, 1), boxFrame = OutsetRect(*viewRect, 1);
    FrameRect(&areaFrame);
    FrameRect(&boxFrame);
}

void DrawImageBox(DialogPtr dialog, short item) {
    const UsualPen pen;
    Rect rect = ItemRect(dialog, item);
    FillRect(&rect, &kGrayPattern);
    DrawImageContent(ViewOf(dialog), &rect);
}

Boolean IsThereAnyTransparency(const unsigned char* transMap) {
    return std::any_of(transMap, transMap + 256, [](unsigned char mark) { return mark != 0; });
}

void FixupPmTable(CTabHandle previewColors, const unsigned char* transMap,
                  const RGBLookUpTable* palette, RGBtuple color, int maskIndex, Boolean useMask) {
    for (int i = 0; i < 256; ++i) {
        const bool isTransparent = useMask ? i == maskIndex : transMap[i] != 0;
        (*previewColors)->ctTable[i].rgb =
            WidenColor(isTransparent ? color : TableEntry(*palette, i));
    }
    CTabChanged(previewColors);
}

namespace {

constexpr short kSmallFont = 3, kSmallSize = 9;

std::string TextOfList(short index) {
    Str255 text;
    GetIndString(text, kDialogStrings, index);
    return FromPascal(text);
}

void DrawLine(short left, int baseline, const std::string& line) {
    Str255 text;
    ToPascal(line, text);
    MoveTo(left, Narrow(baseline));
    DrawString(text);
}

/// Changes a port's text style for the small texts and puts it back.
class SmallTextStyle {
  public:
    explicit SmallTextStyle(GrafPtr thePort)
        : port(thePort), font(port->txFont), size(port->txSize) {
        TextSize(kSmallSize);
        TextFont(kSmallFont);
    }
    SmallTextStyle(const SmallTextStyle&) = delete;
    SmallTextStyle& operator=(const SmallTextStyle&) = delete;
    ~SmallTextStyle() {
        port->txFont = font;
        port->txSize = size;
    }

  private:
    GrafPtr port;
    std::int16_t font, size;
};

} // namespace

void DrawSmallText(DialogPtr dialog, short item) {
    const UsualPen pen;
    const SmallTextStyle style(dialog);
    const Rect rect = ItemRect(dialog, item);
    FontInfo font;
    GetFontInfo(&font);
    const int middle = (rect.top + rect.bottom) / 2;
    const int first = middle - font.descent;
    if (item == kIndexedCountItem) {
        const std::string count = std::to_string(GlobalsOf(dialog)->numColors);
        DrawLine(rect.left, first, TextOfList(kCountString) + count);
        return;
    }
    DrawLine(rect.left, first, TextOfList(kHintString1));
    DrawLine(rect.left, middle + font.ascent + font.leading, TextOfList(kHintString2));
}

namespace {

/// Calls `change` with every pixel of the image.
template <class Change> void ForEachPixel(IndexedDialogGlobals* g, Change change) {
    std::uint8_t* row = g->imageData;
    for (int y = 0; y < g->imageSize.v; ++y, row += g->rowBytes)
        for (int x = 0; x < g->imageSize.h; ++x) change(row[x]);
}

/// Gives all marked pixels the lowest marked index, which is returned; kNone without marks.
int MergeMarked(IndexedDialogGlobals* g) {
    const auto* const first =
        std::find_if(g->transMap, g->transMap + 256, [](std::uint8_t mark) { return mark != 0; });
    if (first == g->transMap + 256) return kNone;
    const auto lowest = static_cast<std::uint8_t>(first - g->transMap);
    ForEachPixel(g, [&](std::uint8_t& pixel) {
        if (g->transMap[pixel] != 0) pixel = lowest;
    });
    return lowest;
}

/// Takes over the masked image; returns what its hidden pixels carry.
int TakeMaskedImage(IndexedDialogGlobals* g) {
    const std::uint8_t* from = g->maskedData;
    std::uint8_t* to = g->imageData;
    for (int y = 0; y < g->imageSize.v; ++y, from += g->maskedRowBytes, to += g->rowBytes)
        std::copy_n(from, g->imageSize.h, to);
    return g->maskIndex;
}

/// Numbers the indices that occur from 0 on and moves their colours with them. Returns the new
/// numbers, kNone for indices that do not occur.
std::array<int, 256> CompactPalette(IndexedDialogGlobals* g) {
    std::array<bool, 256> occurs = {};
    ForEachPixel(g, [&](std::uint8_t& pixel) { occurs[pixel] = true; });

    std::array<int, 256> numbers;
    int used = 0;
    for (int i = 0; i < 256; ++i) {
        int& number = numbers[static_cast<std::size_t>(i)];
        number = occurs[static_cast<std::size_t>(i)] ? used++ : kNone;
        if (number != kNone) SetTableEntry(*g->palette, number, TableEntry(*g->palette, i));
    }
    g->numColors = used;
    for (int i = used; i < 256; ++i) SetTableEntry(*g->palette, i, {});
    ForEachPixel(g,
                 [&](std::uint8_t& pixel) { pixel = static_cast<std::uint8_t>(numbers[pixel]); });
    return numbers;
}

} // namespace

short PrepareGIFBuffer(IndexedDialogGlobals* g) {
    const int transparent = g->maskedData ? TakeMaskedImage(g) : MergeMarked(g);
    if (transparent == kNone) return kNone;
    SetTableEntry(*g->palette, transparent, g->transparentColor);
    return Narrow(CompactPalette(g)[static_cast<std::size_t>(transparent)]);
}
