// What the indexed dialog draws, pixel by pixel, and the services it asks for a colour and names.
#include "IndexedSession.h"

#include "ChannelNames.h"
#include "EventSource.h"
#include "IndexedFilter.h"
#include "IndexedPreview.h"
#include "LumoGetColor.h"
#include "MemoryManager.h"
#include "RecordingSurface.h"
#include "TransparencyMap.h"

#include <array>
#include <cstring>

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
    const auto grow = [](int side, int by) { return static_cast<std::int16_t>(side + by); };
    if (IsOnFrame({grow(box.top, -1), grow(box.left, -1), grow(box.bottom, 1), grow(box.right, 1)},
                  v, h) ||
        IsOnFrame({grow(top, -1), grow(left, -1), grow(bottom, 1), grow(right, 1)}, v, h))
        return PixelSurface::kBlack;
    if (v < top || v >= bottom || h < left || h >= right)
        return IsGray(v, h) ? PixelSurface::kBlack : PixelSurface::kWhite;
    const int row = g.srcRect.top + (v - top) * g.shrink / g.enlarge;
    const int column = g.srcRect.left + (h - left) * g.shrink / g.enlarge;
    if (IsHidden(picture, choice, row, column)) return PackColor(choice.matte);
    return ColorOf(picture, picture.At(row, column));
}

std::string FirstWrongPixel(const PixelSurface& surface, const IndexedPicture& picture,
                            const Choice& choice, DialogPtr dialog) {
    const Rect box = dialog->Item(kIndexedPreviewItem)->rect;
    for (int v = box.top - 1; v <= box.bottom; ++v)
        for (int h = box.left - 1; h <= box.right; ++h) {
            const PackedColor want = PlainPreview(picture, choice, *GlobalsOf(dialog), box, v, h);
            if (surface.At(v, h) == want) continue;
            std::ostringstream text;
            text << std::hex << "got " << surface.At(v, h) << ", want " << want << std::dec
                 << " at " << v << ", " << h;
            return text.str();
        }
    return "";
}

TEST(IndexedPreview, ShowsThePictureAsItWillBeWritten) {
    OpenResources resources;
    const Point middle = InPreview(150, 200);
    const std::vector<Act> in = {PressItem(kIndexedZoomItem), PressAt(middle), PressAt(middle)};
    const std::vector<Act> out =
        Holding({kKeyOption}, {PressItem(kIndexedZoomItem), PressAt(middle)});
    const std::vector<Act> drag = {PressItem(kIndexedHandItem),
                                   Drag({middle, InPreview(110, 260), InPreview(180, 170)})};
    const Act mark3 = PressAt(Cell(3)), channel = ChooseEntry(kIndexedChannelItem, 2);
    const std::vector<Act> unmark = Holding({kKeyCommand}, {mark3});
    const std::vector<Act> red = {PressItem(kIndexedSwatchItem), PickColor({0xFF00, 0x1200, 0})};
    const RGBtuple redMatte = {0, 255, 0x12, 0};
    const struct {
        const char* name;
        const char* scale;
        int rows, columns;
        std::vector<Act> acts;
        Choice choice;
    } cases[] = {
        {"small", "1:1", 31, 45, {mark3, PressAt(Cell(5))}, {{3, 5}}},
        {"large", "1:1", 500, 700, {mark3}, {{3}}},
        {"unmarked again", "1:1", 31, 45, Acts({{mark3}, unmark}), {}},
        {"small enlarged", "3:1", 20, 61, Acts({{mark3}, in}), {{3}}},
        {"large enlarged", "3:1", 500, 700, in, {}},
        {"dragged", "3:1", 500, 700, Acts({in, drag}), {}},
        {"dragged to the edge",
         "1:1",
         500,
         700,
         {PressItem(kIndexedHandItem), Drag({middle, {-900, -900}})},
         {}},
        {"reduced", "1:2", 603, 901, Acts({{mark3}, red, out}), {{3}, 0, false, redMatte}},
        {"reduced below the box", "1:2", 90, 805, Acts({{mark3}, out}), {{3}}},
        {"a channel over marks", "1:1", 31, 45, {mark3, channel}, {{}, 1}},
        {"a channel reduced",
         "1:2",
         603,
         901,
         Acts({out, {channel}, red}),
         {{}, 1, false, redMatte}},
        {"a channel inverted",
         "3:1",
         500,
         700,
         Acts({in, Holding({kKeyOption}, {channel}), red}),
         {{}, 1, true, redMatte}},
        {"back from a channel",
         "1:1",
         31,
         45,
         {mark3, channel, ChooseEntry(kIndexedChannelItem, 1)},
         {{3}}},
        {"a colour for marks", "1:1", 31, 45, Acts({{mark3}, red}), {{3}, 0, false, redMatte}},
        {"reset",
         "1:1",
         31,
         45,
         Acts({{mark3}, red, {channel}, Holding({kKeyOption}, {PressItem(kIndexedCancelItem)})}),
         {}},
    };
    for (const auto& c : cases) {
        const IndexedPicture picture = MakePicture(c.rows, c.columns, IndicesUpTo(9), 9, 1, kSeed);
        IndexedSession session(picture);
        EXPECT_EQ(
            session.Play(
                c.acts,
                [&](DialogPtr dialog) {
                    const IndexedDialogGlobals& g = *GlobalsOf(dialog);
                    EXPECT_EQ(std::to_string(g.enlarge) + ":" + std::to_string(g.shrink), c.scale)
                        << c.name;
                    EXPECT_EQ(FirstWrongPixel(session.surface, picture, c.choice, dialog), "")
                        << c.name << ", seed " << kSeed;
                    return std::nullopt;
                }),
            "0")
            << c.name;
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

/// An open dialog with a state of its own, drawing on a surface.
class IndexedItems : public testing::Test {
  protected:
    IndexedItems() : picture(MakePicture(4, 4, IndicesUpTo(8), 200, 0, kSeed)) {
        dialog = GetNewDialog(kIndexedDialog, nullptr, nullptr);
        SetWRefCon(dialog, reinterpret_cast<std::intptr_t>(&g));
        dialog->surface = &surface;
        SetPort(dialog);
        g.palette = &picture.table;
        g.numColors = 200;
    }
    ~IndexedItems() override { DisposeDialog(dialog); }

    OpenResources resources;
    IndexedPicture picture;
    IndexedDialogGlobals g;
    PixelSurface surface{504, 652};
    DialogPtr dialog = nullptr;
};

enum class Mark { none, shown, erased, selected };

/// A point of a colour table, from its top left corner.
PackedColor PlainTable(const IndexedPicture& picture, int count, const std::map<int, Mark>& marks,
                       int v, int h) {
    for (int i = 0; i < 256; ++i) {
        const int y = v - 1 - i / 32 * 11, x = h - 1 - i % 32 * 11; // in the cell
        const auto found = marks.find(i);
        const Mark mark = found == marks.end() ? Mark::none : found->second;
        const auto isFrame = [&](int out) {
            return y >= -out && y < 9 + out && x >= -out && x < 9 + out &&
                   (y == -out || y == 8 + out || x == -out || x == 8 + out);
        };
        if (mark == Mark::selected && isFrame(2)) return PixelSurface::kBlack;
        if (mark == Mark::shown && isFrame(1)) return PixelSurface::kBlack;
        if (mark == Mark::erased && isFrame(1)) return PixelSurface::kWhite;
        if (y < 0 || y > 8 || x < 0 || x > 8) continue;
        if (isFrame(0) || (i >= count && (y == x || y == 8 - x))) return PixelSurface::kBlack;
        return i < count ? ColorOf(picture, i) : PixelSurface::kWhite;
    }
    return PixelSurface::kBackground;
}

TEST_F(IndexedItems, TheColourTableHasACellForEachEntryAndAFrameForEachMark) {
    for (const int i : {0, 31, 32, 100, 199, 200}) g.transMap[i] = 1; // 200 is not in use
    std::uint8_t mask = 0;
    const struct {
        const char* name;
        std::map<int, Mark> marks;
        std::function<void()> draw;
    } cases[] = {
        {"marks",
         {{0, Mark::shown},
          {31, Mark::shown},
          {32, Mark::shown},
          {100, Mark::shown},
          {199, Mark::shown}},
         [&] { DrawIndexedCLUT(dialog, kIndexedTableItem); }},
        {"marks behind a channel",
         {{0, Mark::erased},
          {31, Mark::erased},
          {32, Mark::erased},
          {100, Mark::erased},
          {199, Mark::erased}},
         [&] {
             g.maskedData = &mask;
             DrawIndexedCLUT(dialog, kIndexedTableItem);
         }},
        {"one selected",
         {{70, Mark::selected}},
         [&] { DrawCLUT(dialog, g.palette, 200, 70, kIndexedTableItem); }},
    };
    const Rect table = dialog->Item(kIndexedTableItem)->rect;
    for (const auto& c : cases) {
        PenPat(&kGrayPattern);
        c.draw();
        for (int v = 0; v < 90; ++v)
            for (int h = 0; h < 354; ++h)
                ASSERT_EQ(surface.At(table.top + v, table.left + h),
                          PlainTable(picture, 200, c.marks, v, h))
                    << c.name << " at " << v << ", " << h << ", seed " << kSeed;
        PenState pen;
        GetPenState(&pen);
        EXPECT_EQ(pen.pnPat, kGrayPattern) << c.name;
    }
}

TEST_F(IndexedItems, TheSwatchIsGrayUntilSomethingIsTransparent) {
    std::uint8_t mask = 0;
    g.transparentColor = {0, 10, 20, 30};
    const Rect box = dialog->Item(kIndexedSwatchItem)->rect;
    for (const int state : {0, 1, 2}) {
        g.transMap[7] = state == 1;
        g.maskedData = state == 2 ? &mask : nullptr;
        DrawColorBox(dialog, kIndexedSwatchItem);
        for (int v = box.top; v < box.bottom; ++v)
            for (int h = box.left; h < box.right; ++h) {
                PackedColor want = IsGray(v, h) ? PixelSurface::kBlack : PixelSurface::kWhite;
                if (state != 0) want = 0x0A141E;
                if (IsOnFrame(box, v, h)) want = PixelSurface::kBlack;
                ASSERT_EQ(surface.At(v, h), want) << "state " << state << " at " << v << ", " << h;
            }
    }
}

TEST_F(IndexedItems, SmallTextsStandAboutTheMiddleOfTheirItems) {
    RecordingSurface recorder; // ascent 10, descent 4, leading 2
    dialog->surface = &recorder;
    dialog->txFont = 1, dialog->txSize = 17;
    dialog->Item(kIndexedHintItem)->rect = {100, 20, 131, 300};
    dialog->Item(kIndexedCountItem)->rect = {40, 30, 60, 100};
    DrawSmallText(dialog, kIndexedHintItem);
    DrawSmallText(dialog, kIndexedCountItem);
    Str255 line1, line2;
    GetIndString(line1, kIndexedStrings, 1);
    GetIndString(line2, kIndexedStrings, 2);
    const auto text = [](ConstStr255Param line) {
        return "\"" + std::string(line + 1, line + 1 + line[0]) + "\"";
    };
    EXPECT_EQ(recorder.calls,
              (std::vector<std::string>{"text 111 20 " + text(line1) + " font 3 size 9",
                                        "text 127 20 " + text(line2) + " font 3 size 9",
                                        "text 46 30 \"Colours: 200\" font 3 size 9"}));
    EXPECT_EQ(dialog->txFont, 1);
    EXPECT_EQ(dialog->txSize, 17);
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
    OpenResources resources;
    IndexedSession session(picture);
    session.run.host.record.colorServicesProc.Set(key);
    colorAnswer = {noErr, 1, 2, 3, {}, true};
    EXPECT_EQ(session.Play({PressAt(Cell(4)), PressItem(kIndexedSwatchItem), PressAt(Cell(5))}),
              "0");
    EXPECT_EQ(Difference(session.File(), ExportPlainly(picture, {{4, 5}, 0, false, {0, 1, 2, 3}})),
              "");
}

struct NameAnswer {
    OSErr code = noErr;
    std::string name;
} nameAnswer;

OSErr AnswerName(OSType, OSType, std::int32_t, Handle* value) {
    *value =
        nameAnswer.name.empty() ? nullptr : NewHandle(static_cast<Size>(nameAnswer.name.size()));
    if (*value) std::memcpy(**value, nameAnswer.name.data(), nameAnswer.name.size());
    return nameAnswer.code;
}

TEST(ChannelNames, AreTheHostsOrItsErrors) {
    ScriptedHost host(1, 1, 2, {0, 0});
    HostPropertyProcs properties;
    properties.getProperty = AnswerName;
    const AddressKey key(&properties);
    char name[kChannelNameBytes];
    EXPECT_EQ(GetChannelName(1, name, &host.record), -30900) << "no property services";
    host.record.propertyProcs.Set(key);
    const struct {
        OSErr code;
        std::size_t length;
        short want;
        std::size_t kept;
    } cases[] = {
        {0, 0, -30900, 0}, {-1234, 0, -1234, 0}, {0, 1, 0, 1}, {0, 180, 0, 180}, {0, 181, 0, 180}};
    for (const auto& c : cases) {
        const long before = LiveMemoryBlocks();
        nameAnswer = {c.code, std::string(c.length, 'n')};
        EXPECT_EQ(GetChannelName(1, name, &host.record), c.want) << c.length;
        if (c.want == 0) {
            EXPECT_EQ(std::string(name), std::string(c.kept, 'n'));
        }
        EXPECT_EQ(LiveMemoryBlocks(), before) << "the name's handle was not given back";
    }
}

} // namespace
