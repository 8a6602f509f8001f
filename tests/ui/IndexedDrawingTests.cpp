// What the indexed dialog draws, pixel by pixel, and the services it asks for a colour.
#include "DrawDialogs.h"
#include "IndexedSession.h"

#include "IndexedFilter.h"
#include "IndexedPreview.h"
#include "ItemDrawing.h"
#include "LumoGetColor.h"
#include "ModuleResources.h"
#include "PascalStrings.h"
#include "RecordingSurface.h"
#include "ResourceManager.h"

#include <array>

namespace {

constexpr unsigned kSeed = 4242;

bool IsGray(int v, int h) {
    return (v + h) % 2 == 0; // the pattern's first pixel is black
}

bool IsOnFrame(const Rect& r, int v, int h) {
    const bool inside = v >= r.top && v < r.bottom && h >= r.left && h < r.right;
    return inside && (v == r.top || v == r.bottom - 1 || h == r.left || h == r.right - 1);
}

/// What the preview should show at a point of its box or of the frame around it.
PackedColor PlainPreview(const IndexedPicture& picture, const Choice& choice,
                         const IndexedDialogGlobals& g, const Rect& box, int v, int h) {
    const Rect& drawn = g.dstRect;
    const auto top = drawn.top, left = drawn.left;
    const auto bottom = std::min<std::int16_t>(drawn.bottom, box.bottom - 1);
    const auto right = std::min<std::int16_t>(drawn.right, box.right - 1);
    if (IsOnFrame(OutsetRect(box, 1), v, h) ||
        IsOnFrame(OutsetRect({top, left, bottom, right}, 1), v, h))
        return PixelSurface::kBlack;
    if (v < top || v >= bottom || h < left || h >= right)
        return IsGray(v, h) ? PixelSurface::kBlack : PixelSurface::kWhite;
    const int row = g.srcRect.top + (v - top) * g.shrink / g.enlarge;
    const int column = g.srcRect.left + (h - left) * g.shrink / g.enlarge;
    if (IsHidden(picture, choice, row, column)) return PackColor(choice.matte);
    return picture.ColorOf(picture.At(row, column));
}

constexpr int kMarked = 3;

/// What the colour table should show at a point from its top left corner: a cell for each entry,
/// and around the marked one a frame, which is wiped out in white.
PackedColor PlainTable(const IndexedPicture& picture, int count, PackedColor frame, int v, int h) {
    const auto isOnSide = [](int at, int out) { return at == -out || at == 8 + out; };
    for (int i = 0; i < 256; ++i) {
        const int y = v - 1 - i / 32 * 11, x = h - 1 - i % 32 * 11; // in the cell
        if (y < -1 || y > 9 || x < -1 || x > 9) continue;
        if (isOnSide(y, 1) || isOnSide(x, 1)) {
            if (i == kMarked) return frame;
            continue;
        }
        if (isOnSide(y, 0) || isOnSide(x, 0)) return PixelSurface::kBlack;
        if (i < count) return picture.ColorOf(i);
        return y == x || y == 8 - x ? PixelSurface::kBlack : PixelSurface::kWhite;
    }
    return PixelSurface::kBackground;
}

/// What the swatch should show at a point: gray until something is transparent.
PackedColor PlainSwatch(const Choice& choice, const Rect& box, int v, int h) {
    if (IsOnFrame(box, v, h)) return PixelSurface::kBlack;
    if (choice.channel != 0 || !choice.marks.empty()) return PackColor(choice.matte);
    return IsGray(v, h) ? PixelSurface::kBlack : PixelSurface::kWhite;
}

template <class Plain>
void ExpectPixels(const PixelSurface& surface, const Rect& area, const char* name, Plain plain) {
    for (int v = area.top; v < area.bottom; ++v)
        for (int h = area.left; h < area.right; ++h)
            ASSERT_EQ(surface.At(v, h), plain(v, h))
                << name << " at " << v << ", " << h << ", seed " << kSeed;
}

TEST(IndexedPreview, ShowsThePictureAsItWillBeWritten) {
    constexpr int kColors = 40;
    const Point middle = InPreview(150, 200);
    const Act zoom = PressItem(kIndexedZoomItem), hand = PressItem(kIndexedHandItem);
    const Steps in = {zoom, PressAt(middle), PressAt(middle)};
    const Steps out = Holding({kKeyOption}, {zoom, PressAt(middle)});
    const Steps drag = {hand, Drag({middle, InPreview(110, 260), InPreview(180, 170)})};
    const Act toEdge = Drag({middle, {-900, -900}});
    const Act mark3 = PressAt(Cell(kMarked)), channel = ChooseEntry(kIndexedChannelItem, 2);
    const Act noChannel = ChooseEntry(kIndexedChannelItem, 1);
    const Steps unmark = Holding({kKeyCommand}, {mark3});
    const Steps red = {PressItem(kIndexedSwatchItem), PickColor({0xFF00, 0x1200, 0})};
    const Steps reset = Holding({kKeyOption}, {PressItem(kCancelItem)});
    const RGBtuple redMatte = {0, 255, 0x12, 0};
    constexpr PackedColor kFramed = PixelSurface::kBlack, kWiped = PixelSurface::kWhite;
    const struct {
        const char* name;
        const char* scale;
        int rows, columns;
        Steps steps;
        Choice choice;
        PackedColor frame = PixelSurface::kBackground;
    } cases[] = {
        {"nothing chosen", "1:1", 31, 45, {}, {}},
        {"large", "1:1", 500, 700, {mark3}, {{kMarked}}, kFramed},
        {"unmarked again", "1:1", 31, 45, Steps{mark3} + unmark, {}, kWiped},
        {"small enlarged", "3:1", 20, 61, Steps{mark3} + in, {{kMarked}}, kFramed},
        {"dragged", "3:1", 500, 700, in + drag, {}},
        {"dragged to the edge", "1:1", 500, 700, {hand, toEdge}, {}},
        {"actual pixels again", "1:1", 500, 700, in + Steps{Idle(60), zoom, zoom}, {}},
        {"fitted", "1:2", 500, 700, in + Steps{Idle(60), hand, hand}, {}},
        {"reduced",
         "1:2",
         603,
         901,
         Steps{mark3} + red + out,
         {{kMarked}, 0, false, redMatte},
         kFramed},
        {"reduced below the box", "1:2", 90, 805, out, {}},
        {"a channel over marks", "1:1", 31, 45, {mark3, channel}, {{}, 1}, kWiped},
        {"a channel reduced", "1:2", 603, 901, out + Steps{channel}, {{}, 1}},
        {"a channel inverted",
         "3:1",
         500,
         700,
         in + Holding({kKeyOption}, {channel}) + red,
         {{}, 1, true, redMatte}},
        {"back from a channel", "1:1", 31, 45, {mark3, channel, noChannel}, {{kMarked}}, kFramed},
        {"reset", "1:1", 31, 45, Steps{mark3} + red + Steps{channel} + reset, {}},
    };
    for (const auto& c : cases) {
        const IndexedPicture picture =
            MakePicture(c.rows, c.columns, IndicesUpTo(kColors), kColors, 1, kSeed);
        IndexedSession session(picture);
        const Look look = [&](DialogPtr dialog) {
            const auto rectOf = [&](short item) { return dialog->Item(item)->rect; };
            const IndexedDialogGlobals& g = *GlobalsOf(dialog);
            EXPECT_EQ(std::to_string(g.enlarge) + ":" + std::to_string(g.shrink), c.scale)
                << c.name;
            const Rect box = rectOf(kIndexedPreviewItem), swatch = rectOf(kIndexedSwatchItem);
            ExpectPixels(session.surface, OutsetRect(box, 1), c.name, [&](int v, int h) {
                return PlainPreview(picture, c.choice, g, box, v, h);
            });
            ExpectPixels(session.surface, swatch, c.name,
                         [&](int v, int h) { return PlainSwatch(c.choice, swatch, v, h); });
            const Rect table = rectOf(kIndexedTableItem);
            ExpectPixels(session.surface, table, c.name, [&](int v, int h) {
                return PlainTable(picture, kColors, c.frame, v - table.top, h - table.left);
            });
        };
        EXPECT_EQ(session.Play(c.steps + Steps{Idle(1), look}), noErr) << c.name;
    }
}

// The last column of a row may run into the next row, and of the last row one byte past its end.
TEST(IndexedPreview, ScalesBlocksOfAnySize) {
    std::mt19937 random(kSeed);
    for (int round = 0; round < 300; ++round) {
        const int rows = 1 + static_cast<int>(random() % 20),
                  cols = 1 + static_cast<int>(random() % 40);
        const int factor = 1 + static_cast<int>(random() % 16),
                  stride = cols + static_cast<int>(random() % 5);
        const bool enlarges = round % 2 == 0;
        const int enlarge = enlarges ? factor : 1, shrink = enlarges ? 1 : factor;
        ByteVector source(static_cast<std::size_t>(rows * stride));
        for (auto& byte : source) byte = static_cast<std::uint8_t>(random());
        const int width = cols * enlarge / shrink, rowBytes = (width + 3) & ~3;
        const int height = enlarges ? rows * enlarge : (rows + shrink - 1) / shrink;
        ByteVector got(static_cast<std::size_t>(height * rowBytes + 1), 0xEE);
        std::int32_t gotRowBytes = 0;
        MakePreviewBuffer(source.data(), got.data(), stride, &gotRowBytes, rows, cols, enlarge,
                          shrink);
        ASSERT_EQ(gotRowBytes, rowBytes) << "seed " << kSeed << ", round " << round;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(got[static_cast<std::size_t>(y * rowBytes + x)],
                          source[static_cast<std::size_t>(y * shrink / enlarge * stride +
                                                          x * shrink / enlarge)])
                    << "seed " << kSeed << ", round " << round << " at " << y << ", " << x;
    }
}

TEST(IndexedItems, SmallTextsStandAboutTheMiddleOfTheirItems) {
    RecordingSurface recorder; // ascent 10, descent 4, leading 2
    ScriptedUser user({});
    user.DrawOn(&recorder);
    IndexedDialogGlobals g;
    g.numColors = 200;
    const DialogPtr dialog = GetNewDialog(kIndexedDialog, nullptr, nullptr);
    SetWRefCon(dialog, reinterpret_cast<std::intptr_t>(&g));
    SetPort(dialog);
    dialog->txFont = 1, dialog->txSize = 17;
    dialog->Item(kIndexedHintItem)->rect = {100, 20, 131, 300};
    dialog->Item(kIndexedCountItem)->rect = {40, 30, 60, 100};
    DrawSmallText(dialog, kIndexedHintItem);
    DrawSmallText(dialog, kIndexedCountItem);
    Str255 line1, line2;
    GetIndString(line1, kDialogStrings, 1);
    GetIndString(line2, kDialogStrings, 2);
    EXPECT_EQ(recorder.calls,
              (std::vector<std::string>{"text 111 20 \"" + FromPascal(line1) + "\" font 3 size 9",
                                        "text 127 20 \"" + FromPascal(line2) + "\" font 3 size 9",
                                        "text 46 30 \"Colours: 200\" font 3 size 9"}));
    EXPECT_EQ(dialog->txFont, 1);
    EXPECT_EQ(dialog->txSize, 17);
    DisposeDialog(dialog);
}

// The host's services

struct ColorAnswer {
    OSErr code = noErr;
    std::uint8_t red = 0, green = 0, blue = 0;
    ByteVector request;
    bool looksAtDialog = false;
} colorAnswer;

OSErr AnswerColor(void* info) {
    auto* const bytes = static_cast<std::uint8_t*>(info);
    colorAnswer.request.assign(bytes, bytes + 36);
    bytes[19] = colorAnswer.red, bytes[21] = colorAnswer.green, bytes[23] = colorAnswer.blue;
    if (!colorAnswer.looksAtDialog) return colorAnswer.code;
    // Hosts that keep the dialog drawn find whom to call behind its reference constant.
    const DialogPtr dialog = OpenDialogs().front();
    const auto& record = *reinterpret_cast<const DialogDuringPicker*>(GetWRefCon(dialog));
    EXPECT_EQ(record.globals, GlobalsOf(dialog));
    EXPECT_EQ(record.filter, &DialogFilter);
    for (short item = 1; dialog->Item(item) != nullptr; ++item) InvalItem(dialog, item);
    DrawInvalidItems();
    return colorAnswer.code;
}

TEST(ColorServices, AnswerInTheLayoutOfTheirRecordOrLeaveItToThePicker) {
    const RGBColor in = {0x12FF, 0x34FF, 0xFF00};
    ByteVector request(36);
    request[3] = 36, request[19] = 0x12, request[21] = 0x34, request[23] = 0xFF;
    using Channels = std::array<std::uint16_t, 3>;
    const struct {
        OSErr code;
        bool chosen;
        Channels want;
    } cases[] = {
        {noErr, true, {0x0101, 0x8080, 0xFFFF}},
        {userCanceledErr, false, {7, 8, 9}},
        {1, false, {7, 8, 9}},
        {kServiceNotOffered, true, {0xAB01, 0xCD02, 0xEF03}},
    };
    for (const auto& c : cases) {
        ScriptSource script(std::vector<Act>{PickColor({0xAB01, 0xCD02, 0xEF03})});
        EventSource* const outer = SetEventSource(&script);
        colorAnswer = {c.code, 1, 128, 255, {}};
        RGBColor out = {7, 8, 9};
        constexpr std::uint8_t prompt[] = {0};
        EXPECT_EQ(LumoGetColor(AnswerColor, {}, prompt, &in, &out) != 0, c.chosen) << c.code;
        EXPECT_EQ(colorAnswer.request, request) << c.code;
        EXPECT_EQ((Channels{out.red, out.green, out.blue}), c.want) << c.code;
        EXPECT_EQ(LumoGetColor(nullptr, {}, prompt, &in, &out) != 0, c.code != kServiceNotOffered)
            << "without services the picker is asked, which answers once";
        SetEventSource(outer);
    }
}

TEST(ColorServices, ReachTheDialogWhileTheyRun) {
    const AddressKey key(&AnswerColor);
    const IndexedPicture picture = MakePicture(20, 30, IndicesUpTo(12), 12, 1, kSeed);
    IndexedSession session(picture);
    session.record.colorServicesProc.Set(key);
    colorAnswer = {noErr, 1, 2, 3, {}, true};
    EXPECT_EQ(session.Play({PressAt(Cell(4)), PressItem(kIndexedSwatchItem), PressAt(Cell(5))}),
              noErr);
    EXPECT_EQ(Difference(session.File(), ExportPlainly(picture, {{4, 5}, 0, false, {0, 1, 2, 3}})),
              "");
}

} // namespace
