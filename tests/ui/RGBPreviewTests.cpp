// The preview of RGB exports: what it shows is what is written, at every scale.
#include "FaultInjection.h"
#include "GiflibDecode.h"
#include "HostDialogs.h"
#include "PixelSurface.h"
#include "RGBPreview.h"
#include "RGBSession.h"
#include "RandomPictures.h"
#include "ToolRules.h"

#include <gtest/gtest.h>

namespace {

const Act kOK = PressItem(kRGBOKItem), kDone = PressItem(kRGBPreviewDoneItem);
const Act kPreview = PressItem(kRGBPreviewItem);

PreviewDialogGlobals& GlobalsOf(DialogPtr dialog) {
    return *reinterpret_cast<PreviewDialogGlobals*>(GetWRefCon(dialog));
}

/// What a preview is of.
struct Seen {
    std::vector<std::uint8_t> indices;
    std::vector<PackedColor> colors;
    int transIndex = 0;
};

Look Remember(Seen* seen) {
    return [seen](DialogPtr dialog) {
        const GIF89RGBExport& context = *GlobalsOf(dialog).context;
        seen->indices.assign(context.gifBuffer,
                             context.gifBuffer + context.exportRecord->imageRows *
                                                     context.exportRecord->imageColumns);
        seen->colors = TableColors(context.palette);
        seen->transIndex = context.transIndex;
    };
}

TEST(RGBPreview, ShowsWhatIsWrittenAndLeavesTheOptionsAsTheyWere) {
    const TemporaryFolder folder;
    const std::string palette = folder.Write("some.ZCO", SwatchFile(RandomTable(40, 2), 40));
    const struct {
        const char* name;
        PictureKind picture;
        Steps steps;
    } cases[] = {
        {"exact", PictureKind::fewColors, {}},
        {"adaptive", PictureKind::photo, {ChooseEntry(14, "16")}},
        {"fixed", PictureKind::photo, {ChooseEntry(10, "Fixed")}},
        {"fixed, resized",
         PictureKind::photo,
         {ChooseEntry(10, "Fixed"), PressItem(18), ChooseEntry(14, "32")}},
        {"file", PictureKind::photo, {PressItem(3), PickFile(palette)}},
    };
    for (const auto& c : cases)
        for (const int planes : {3, 4}) {
            const auto name = c.name + std::string(planes == 3 ? "" : " over alpha");
            const auto pixels = RandomPixels(c.picture, 50, 60, planes, 3);
            Seen seen;
            RGBLookUpTable before, after;
            int transBefore = -2, transAfter = -2;
            const auto note = [](RGBLookUpTable* table, int* transIndex) -> Look {
                return [=](DialogPtr dialog) {
                    const auto& context = *reinterpret_cast<GIF89RGBExport*>(GetWRefCon(dialog));
                    *table = context.palette;
                    *transIndex = context.transIndex;
                };
            };
            // The fixed palette is put in place by the first of two previews.
            const std::string file =
                ExportWith(50, 60, planes, pixels,
                           c.steps + Steps{kPreview, kDone, note(&before, &transBefore), kPreview,
                                           Remember(&seen), kDone, note(&after, &transAfter), kOK});
            EXPECT_TRUE(file == ExportWith(50, 60, planes, pixels, c.steps + Steps{kOK})) << name;
            std::string reason;
            const auto written = GiflibDecode(
                std::span(reinterpret_cast<const std::uint8_t*>(file.data()), file.size()),
                &reason);
            ASSERT_TRUE(written) << name << ": " << reason;
            EXPECT_TRUE(seen.indices == written->indices) << name;
            EXPECT_EQ(seen.colors, TableColors(written->table)) << name;
            EXPECT_EQ(seen.transIndex, written->transparentIndex) << name;
            EXPECT_EQ(TableColors(before), TableColors(after)) << name;
            EXPECT_EQ(transBefore, -1) << name;
            EXPECT_EQ(transAfter, -1) << name;
        }
}

TEST(RGBPreview, FitsItsSmallestScaleAndItsPartToTheImage) {
    const struct {
        Point image, box;
        int maxShrink;
        Rect part;
    } cases[] = {
        {{4000, 4000}, {200, 200}, 16, {0, 0, 3200, 3200}},
        {{4000, 100}, {200, 200}, 16, {0, 0, 3200, 100}},
        {{3200, 3200}, {200, 200}, 16, {0, 0, 3200, 3200}},
        {{3000, 3201}, {200, 200}, 16, {0, 0, 3000, 3200}},
        {{401, 200}, {200, 200}, 3, {0, 0, 401, 200}},
        {{100, 150}, {200, 200}, 1, {0, 0, 100, 150}},
        {{200, 300}, {100, 200}, 2, {0, 0, 200, 300}},
        {{32767, 1}, {338, 514}, 16, {0, 0, 5408, 1}},
    };
    for (const auto& c : cases) {
        PreviewDialogGlobals g;
        g.imageSize = c.image;
        FitPreview(&g, c.box);
        EXPECT_EQ(g.maxShrink, c.maxShrink) << c.image.v << " x " << c.image.h;
        EXPECT_EQ(g.srcRect, c.part) << c.image.v << " x " << c.image.h;
    }
}

/// Runs the preview of a picture alone; the box draws on `surface`.
short ShowPreview(int rows, int columns, Steps steps, PixelSurface* surface = nullptr) {
    RGBContext run(rows, columns, 3, RandomPixels(PictureKind::photo, rows, columns, 3, 5));
    run.context.numColors = 64;
    RGBUser user(std::move(steps));
    user.DrawOn(surface);
    const long blocks = LiveMemoryBlocks();
    const short code = run.context.DoPreview(0, 0);
    EXPECT_EQ(LiveMemoryBlocks(), blocks);
    return code;
}

/// Expects scale and read-out, and that every point of the box shows its pixel of the image.
Look ExpectView(const PixelSurface* surface, int enlarge, int shrink, const char* scale) {
    return [=](DialogPtr dialog) {
        const PreviewDialogGlobals& g = GlobalsOf(dialog);
        EXPECT_EQ(g.enlarge, enlarge);
        EXPECT_EQ(g.shrink, shrink);
        EXPECT_EQ(SubstituteParamText(TextOf(dialog, kRGBPreviewScaleItem)), scale);
        const Rect& box = dialog->Item(kRGBPreviewImageItem)->rect;
        int wrong = 0, looked = 0;
        for (int v = g.dstRect.top; v < std::min<int>(g.dstRect.bottom, box.bottom - 1); ++v)
            for (int h = g.dstRect.left; h < std::min<int>(g.dstRect.right, box.right - 1); ++h) {
                const int row = g.srcRect.top + (v - g.dstRect.top) / enlarge * shrink;
                const int column = g.srcRect.left + (h - g.dstRect.left) / enlarge * shrink;
                const std::uint8_t index = g.context->gifBuffer[row * g.imageSize.h + column];
                ++looked;
                wrong += surface->At(v, h) != PackColor(TableEntry(g.context->palette, index));
            }
        EXPECT_EQ(wrong, 0) << scale << ", of " << looked;
        EXPECT_GT(looked, 1000) << scale;
    };
}

// Where the parts of the dialog lie.
const Point kInBox = {150, 200}, kHand = {52, 580}, kZoom = {52, 608};

TEST(RGBPreview, ZoomsWithClicksKeysAndDoubleClicks) {
    PixelSurface surface(508, 668);
    const auto view = [&](int enlarge, int shrink, const char* scale) {
        return ExpectView(&surface, enlarge, shrink, scale);
    };
    const Steps zoomIn = {PressAt(kInBox), Idle(4)};
    Steps toLimit;
    for (int i = 0; i < 20; ++i) toLimit = toLimit + zoomIn;
    Point pressed;
    const Look notePressed = [&](DialogPtr dialog) {
        const Rect& box = dialog->Item(kRGBPreviewImageItem)->rect;
        const Rect& part = GlobalsOf(dialog).srcRect;
        pressed.v = static_cast<short>(part.top + kInBox.v - box.top);
        pressed.h = static_cast<short>(part.left + kInBox.h - box.left);
    };
    const Look expectPressedInMiddle = [&](DialogPtr dialog) {
        const Rect& part = GlobalsOf(dialog).srcRect;
        EXPECT_LE(std::abs(part.top + part.bottom - 2 * pressed.v), 2);
        EXPECT_LE(std::abs(part.left + part.right - 2 * pressed.h), 2);
    };
    const Steps turnZoom = {HoldKey(kKeyOption), PressAt(kZoom), ReleaseKey(kKeyOption), Idle(60)};
    ShowPreview(900, 1200,
                Steps{Idle(4), view(1, 1, " 1:1"), PressAt(kZoom), Idle(60), notePressed} + zoomIn +
                    Steps{view(2, 1, " 2:1"), expectPressedInMiddle} + turnZoom + zoomIn +
                    Steps{view(1, 1, " 1:1")} + turnZoom + zoomIn + zoomIn + zoomIn +
                    Steps{view(4, 1, " 4:1")} + toLimit +
                    Steps{view(16, 1, "16:1"), HoldKey(kKeyOption), Idle(4)} + zoomIn +
                    Steps{view(15, 1, "15:1")} + toLimit + Steps{view(1, 3, " 1:3")} + zoomIn +
                    Steps{view(1, 3, " 1:3"), ReleaseKey(kKeyOption), PressAt(kZoom),
                          PressAt(kZoom), Idle(60), view(1, 1, " 1:1"), PressAt(kHand),
                          PressAt(kHand), Idle(60), view(1, 3, " 1:3"), HoldKey(kKeyCommand),
                          Idle(4)} +
                    zoomIn + Steps{view(1, 2, " 1:2"), ReleaseKey(kKeyCommand), kDone},
                &surface);
}

TEST(RGBPreview, DragsWithTheHandAndStopsAtTheEdges) {
    PixelSurface surface(508, 668);
    Rect opened;
    const auto expectMoved = [&](int down, int across) -> Look {
        return [&, down, across](DialogPtr dialog) {
            const Rect& part = GlobalsOf(dialog).srcRect;
            EXPECT_EQ(part.top - opened.top, down);
            EXPECT_EQ(part.left - opened.left, across);
            ExpectView(&surface, 1, 1, " 1:1")(dialog);
        };
    };
    ShowPreview(900, 1200,
                {Idle(4), Look([&](DialogPtr dialog) {
                     opened = GlobalsOf(dialog).srcRect;
                     // Around the middle of the image.
                     EXPECT_LE(std::abs(opened.top + opened.bottom - 900), 1);
                     EXPECT_LE(std::abs(opened.left + opened.right - 1200), 1);
                 }),
                 Drag({{200, 300}, {150, 280}, {190, 295}, {170, 260}}), Idle(4),
                 expectMoved(30, 40), Look([&](DialogPtr dialog) {
                     surface.Clear();
                     InvalItem(dialog, kRGBPreviewImageItem); // the buffer is not stale
                 }),
                 Idle(4), expectMoved(30, 40), PressAt(kZoom), HoldKey(kKeySpace), Idle(60),
                 Drag({{20, 30}, {360, 540}}), Drag({{20, 30}, {360, 540}}), Idle(4),
                 Look([&](DialogPtr dialog) {
                     EXPECT_EQ(GlobalsOf(dialog).srcRect.top, 0);
                     EXPECT_EQ(GlobalsOf(dialog).srcRect.left, 0);
                     ExpectView(&surface, 1, 1, " 1:1")(dialog);
                 }),
                 ReleaseKey(kKeySpace), kDone},
                &surface);
}

TEST(RGBPreview, AnImageSmallerThanTheBoxLiesInItsMiddle) {
    PixelSurface surface(508, 668);
    ShowPreview(40, 50,
                {Idle(4), ExpectView(&surface, 1, 1, " 1:1"), Look([&](DialogPtr dialog) {
                     const Rect& box = dialog->Item(kRGBPreviewImageItem)->rect;
                     const Rect& place = GlobalsOf(dialog).dstRect;
                     EXPECT_LE(std::abs(place.top + place.bottom - box.top - box.bottom), 1);
                     EXPECT_LE(std::abs(place.left + place.right - box.left - box.right), 1);
                     EXPECT_EQ(GlobalsOf(dialog).maxShrink, 1);
                 }),
                 HoldKey(kKeyOption), MoveMouse({20, 20}), Idle(4), Look([](DialogPtr dialog) {
                     EXPECT_EQ(GlobalsOf(dialog).currentTool, handTool) << "beside the picture";
                 }),
                 MoveMouse({190, 280}), Idle(4), Look([](DialogPtr dialog) {
                     EXPECT_EQ(GlobalsOf(dialog).currentTool, zoomOutTool) << "over it";
                 }),
                 PressKey(kKeyEscape)},
                &surface);
}

TEST(RGBPreview, HeldKeysChooseToolAndCursorOverThePictureOnly) {
    const struct {
        std::vector<short> keys;
        ToolType tools[2]; ///< with the hand selected, with the zoom selected
    } cases[] = {{{}, {handTool, zoomInTool}},
                 {{kKeySpace}, {handTool, handTool}},
                 {{kKeyCommand}, {zoomInTool, zoomInTool}},
                 {{kKeyOption}, {zoomOutTool, zoomOutTool}},
                 {{kKeySpace, kKeyOption}, {zoomOutTool, zoomOutTool}},
                 {{kKeyShift}, {handTool, zoomInTool}}};
    for (const auto& c : cases)
        for (const int zoomSelected : {0, 1}) {
            Steps steps = {PressAt(zoomSelected ? kZoom : kHand), Idle(60)};
            for (const short key : c.keys) steps.push_back(HoldKey(key));
            steps =
                steps + Steps{MoveMouse(kInBox), Idle(4), Look([&](DialogPtr dialog) {
                                  EXPECT_EQ(GlobalsOf(dialog).currentTool, c.tools[zoomSelected]);
                                  const auto* source =
                                      static_cast<const ScriptSource*>(CurrentEventSource());
                                  const CursHandle want =
                                      GetCursor(GetToolCursorID(c.tools[zoomSelected]));
                                  ASSERT_NE(source->ShownCursor(), nullptr);
                                  EXPECT_TRUE(*source->ShownCursor() == **want);
                              })};
            for (const short key : c.keys) steps.push_back(ReleaseKey(key));
            ShowPreview(400, 600, steps + Steps{kDone});
        }
}

TEST(RGBPreview, ThePaletteShowsItsColorsAndTheTransparentOne) {
    PixelSurface surface(508, 668);
    RGBContext run(30, 40, 4, RandomPixels(PictureKind::photo, 30, 40, 4, 5));
    run.context.numColors = 20;
    RGBUser user({Idle(4), Look([&](DialogPtr dialog) {
                      const Rect& table = dialog->Item(kRGBPreviewTableItem)->rect;
                      const RGBLookUpTable& palette = run.context.palette;
                      for (int i = 0; i < 21; ++i)
                          EXPECT_EQ(surface.At(table.top + 5, table.left + 5 + 11 * i),
                                    PackColor(TableEntry(palette, i)))
                              << i;
                      EXPECT_EQ(run.context.transIndex, 20);
                      // A frame two pixels outside the cell, where none is around others.
                      EXPECT_EQ(surface.At(table.top + 5, table.left + 1 + 11 * 20 + 10), 0u);
                      EXPECT_NE(surface.At(table.top + 5, table.left + 1 + 11 * 10 + 10), 0u);
                      EXPECT_EQ(surface.At(table.top + 5, table.left + 5 + 11 * 21), 0u)
                          << "the cross of an unused cell";
                  }),
                  kDone});
    user.DrawOn(&surface);
    EXPECT_EQ(run.context.DoPreview(0, 0), noErr);
}

TEST(RGBPreview, WithoutItsDialogOrMemoryItAnswersAndLeavesNothing) {
    RGBContext run(30, 40, 3, RandomPixels(PictureKind::photo, 30, 40, 3, 5));
    run.context.numColors = 16;
    EXPECT_EQ(run.context.DoPreview(0, 0), -1) << "no resources";
    EXPECT_EQ(run.context.numColors, 16) << "the palette is built all the same";
    EXPECT_EQ(run.context.palette.red[0], 255);

    RGBUser user({kDone});
    const long blocks = LiveMemoryBlocks();
    std::vector<short> codes = {-1};
    for (int n = 1; codes.back() != noErr && n < 200; ++n) {
        FailNthCall(FaultPoint::allocate, n, memFullErr);
        codes.push_back(run.context.DoPreview(0, 0));
        EXPECT_EQ(LiveMemoryBlocks(), blocks) << "allocation " << n;
    }
    ClearFaults();
    ASSERT_GT(codes.size(), 4u);
    EXPECT_EQ(codes.back(), noErr);
    EXPECT_EQ(codes[codes.size() - 2], memFullErr) << "the colour table";
    EXPECT_EQ(codes[codes.size() - 3], memFullErr) << "the buffer";
    EXPECT_EQ(codes[codes.size() - 4], -1) << "the dialog";
}

} // namespace
