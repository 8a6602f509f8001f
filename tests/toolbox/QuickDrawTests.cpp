// Shapes, pens, text and pixel maps, drawn on a surface of plain pixels or noted call by call.
#include "PixelSurface.h"
#include "QuickDraw.h"
#include "RecordingSurface.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using Lines = std::vector<std::string>;

class Drawing : public testing::Test {
  protected:
    Drawing() { SetPort(&port); }
    ~Drawing() override { SetPort(nullptr); }
    GrafPort port;
};

class Recorded : public Drawing {
  protected:
    Recorded() { port.surface = &surface; }
    RecordingSurface surface;
};

/// A colour pattern for one test.
class ColorPattern {
  public:
    explicit ColorPattern(const RGBColor& color) { MakeRGBPat(handle, &color); }
    ColorPattern(const ColorPattern&) = delete;
    ColorPattern& operator=(const ColorPattern&) = delete;
    ~ColorPattern() { DisposePixPat(handle); }
    const PixPatHandle handle = NewPixPat();
};

TEST_F(Recorded, ThePenDrawsWithWhatWasSetLast) {
    const Rect rect = {1, 2, 3, 4};
    const ColorPattern color({1, 2, 65535});
    const auto painted = [&] {
        PaintRect(&rect);
        return surface.Take();
    };
    PenPat(&kGrayPattern);
    EXPECT_EQ(painted(), Lines{"fill 1 2 3 4 pattern AA55AA55AA55AA55"});
    PenPixPat(color.handle);
    EXPECT_EQ(painted(), Lines{"fill 1 2 3 4 color 1 2 65535"});
    MoveTo(7, 8);
    PenState saved;
    GetPenState(&saved);
    PenPat(&kWhitePattern);
    LineTo(9, 10);
    EXPECT_EQ(surface.Take(), Lines{"line 8 7 to 10 9 white"});
    PenNormal();
    LineTo(9, 9);
    EXPECT_EQ(surface.Take(), Lines{"line 10 9 to 9 9 black"}) << "PenNormal leaves the place";
    SetPenState(&saved);
    LineTo(0, 0);
    EXPECT_EQ(surface.Take(), Lines{"line 8 7 to 0 0 color 1 2 65535"});
    const PixPatHandle second = NewPixPat();
    PenPixPat(second);
    DisposePixPat(second);
    EXPECT_EQ(painted(), Lines{"fill 1 2 3 4 pattern AA55AA55AA55AA55"}) << "after disposal";
}

TEST_F(Recorded, FillsTakeTheirOwnInkAndEmptyRectanglesNone) {
    const ColorPattern color({1, 2, 65535});
    PenPat(&kGrayPattern);
    for (const Rect& rect :
         {Rect{1, 2, 3, 4}, Rect{5, 5, 5, 9}, Rect{5, 5, 9, 5}, Rect{9, 9, 5, 5}}) {
        PaintRect(&rect);
        FillRect(&rect, &kBlackPattern);
        FillCRect(&rect, color.handle);
        FillCRect(&rect, nullptr);
        EraseRect(&rect);
    }
    EXPECT_EQ(surface.Take(), (Lines{"fill 1 2 3 4 pattern AA55AA55AA55AA55", "fill 1 2 3 4 black",
                                     "fill 1 2 3 4 color 1 2 65535", "fill 1 2 3 4 background"}));
}

TEST_F(Recorded, StringsStandAtThePenAndMoveItOn) {
    const std::uint8_t first[] = {3, 'a', 'b', 'c'}, second[] = {1, 'd'};
    TextFont(3);
    TextSize(9);
    MoveTo(20, 30);
    DrawString(first);
    DrawString(second);
    EXPECT_EQ(surface.Take(),
              (Lines{"text 30 20 \"abc\" font 3 size 9", "text 30 38 \"d\" font 3 size 9"}));
    FontInfo info;
    GetFontInfo(&info);
    EXPECT_EQ((std::vector<short>{info.ascent, info.descent, info.leading}),
              (std::vector<short>{10, 4, 2}));
}

TEST(Rectangles, AreEmptyOrHoldPointsUpToButNotAtTheirFarSides) {
    Rect rect;
    SetRect(&rect, 3, 5, 7, 8); // left, top, right, bottom
    EXPECT_EQ(rect, (Rect{5, 3, 8, 7}));
    OffsetRect(&rect, -1, 4);
    EXPECT_EQ(rect, (Rect{9, 2, 12, 6}));
    InsetRect(&rect, 2, -1);
    EXPECT_EQ(rect, (Rect{8, 4, 13, 4}));
    EXPECT_TRUE(EmptyRect(&rect));
    InsetRect(&rect, -1, 2);
    EXPECT_EQ(rect, (Rect{10, 3, 11, 5}));
    EXPECT_FALSE(EmptyRect(&rect));
    int held = 0;
    for (short v = 0; v < 20; ++v)
        for (short h = 0; h < 20; ++h) held += PtInRect({v, h}, &rect);
    EXPECT_EQ(held, 2);
    EXPECT_TRUE(PtInRect({10, 3}, &rect) && PtInRect({10, 4}, &rect));
}

/// A map of 2 x 3 pixels with a byte behind each row.
struct SmallMap {
    SmallMap() {
        // High and low bytes differ, so that taking the wrong one shows.
        table.ctSize = 1;
        table.ctTable[0].rgb = {0x1200, 0x3400, 0x56FF};
        table.ctTable[1].rgb = {0xAB01, 0xCD01, 0xEF01};
        table.ctTable[2].rgb = {0x9900, 0x9900, 0x9900}; // past the table's end
        map.baseAddr = indices;
        map.rowBytes = static_cast<std::int16_t>(4 | 0x8000);
        map.bounds = {-1, 4, 1, 7};
        map.pixelSize = 8;
        map.pmTable = &tableAddress;
    }
    std::uint8_t indices[8] = {0, 1, 2, 9, 1, 0, 1, 9};
    ColorTable table = {};
    ColorTable* tableAddress = &table;
    PixMap map = {};
};

TEST_F(Drawing, CopyBitsShowsThePartOfTheMapThatLiesInItsBounds) {
    const SmallMap source;
    SetPort(nullptr); // the destination is the port given
    const std::pair<Rect, Lines> cases[] = {
        {{-1, 4, 1, 7}, {".......", "..ab#..", "..bab..", ".......", "......."}},
        {{0, 5, 1, 6}, {".......", "..a....", ".......", ".......", "......."}},
        {{-2, 3, 2, 8}, {".......", ".......", "...ab#.", "...bab.", "......."}},
        {{5, 4, 7, 7}, Lines(5, ".......")}};
    for (const auto& [part, want] : cases) {
        PixelSurface surface(5, 7);
        port.surface = &surface;
        const Rect target = {1, 2, static_cast<short>(1 + part.bottom - part.top),
                             static_cast<short>(2 + part.right - part.left)};
        CopyBits(&source.map, &port, &part, &target, ditherCopy, nullptr);
        EXPECT_EQ(surface.Rows({{0x123456, 'a'}, {0xABCDEF, 'b'}}), want) << "from " << part.top;
    }
}

TEST_F(Drawing, EveryThreadHasAPortOfItsOwn) {
    GrafPtr other = &port;
    std::thread([&] { GetPort(&other); }).join();
    EXPECT_EQ(other, nullptr);
}

} // namespace
