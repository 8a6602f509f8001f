// The preview of RGB exports: what it shows is what is written, at every scale.
#include "Cursors.h"
#include "GiflibDecode.h"
#include "HostDialogs.h"
#include "IndexedDialog.h"
#include "PixelSurface.h"
#include "PreviewDialog.h"
#include "RGBPreview.h"
#include "RGBSession.h"
#include "RandomPictures.h"

#include <gtest/gtest.h>

namespace {

const Act kPreview = PressItem(kRGBPreviewItem), kDone = PressItem(kRGBPreviewDoneItem);

PreviewDialogGlobals& StateOf(DialogPtr dialog) {
    return *static_cast<PreviewDialogGlobals*>(ViewOf(dialog));
}

/// Remembers what a preview is of.
Look Remember(GiflibPicture* seen) {
    return [seen](DialogPtr dialog) {
        const GIF89RGBExport& context = *StateOf(dialog).context;
        const ExportRecord& record = *context.exportRecord;
        seen->indices.assign(context.gifBuffer,
                             context.gifBuffer + record.imageRows * record.imageColumns);
        seen->table = context.palette;
        seen->transparentIndex = context.transIndex;
    };
}

/// Remembers the palette of the options dialog, which has no transparent entry yet.
Look RememberPalette(RGBLookUpTable* table) {
    return [table](DialogPtr dialog) {
        const auto& context = *reinterpret_cast<GIF89RGBExport*>(GetWRefCon(dialog));
        *table = context.palette;
        EXPECT_EQ(context.transIndex, -1);
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
            GiflibPicture seen;
            RGBLookUpTable before, after;
            // The fixed palette is put in place by the first of two previews.
            const std::string file =
                ExportWith(50, 60, planes, pixels,
                           c.steps + Steps{kPreview, kDone, RememberPalette(&before), kPreview,
                                           Remember(&seen), kDone, RememberPalette(&after)});
            EXPECT_TRUE(file == ExportWith(50, 60, planes, pixels, c.steps)) << name;
            std::string reason;
            const auto written = GiflibDecode(
                std::span(reinterpret_cast<const std::uint8_t*>(file.data()), file.size()),
                &reason);
            ASSERT_TRUE(written) << name << ": " << reason;
            EXPECT_TRUE(seen.indices == written->indices) << name;
            EXPECT_EQ(TableColors(seen.table), TableColors(written->table)) << name;
            EXPECT_EQ(seen.transparentIndex, written->transparentIndex) << name;
            EXPECT_EQ(TableColors(before), TableColors(after)) << name;
        }
}

TEST(RGBPreview, FitsItsSmallestScaleAndItsPartToTheImage) {
    const struct {
        Point image, box;
        int maxShrink;
        Rect part;
    } cases[] = {
        {{4000, 4000}, {200, 200}, 16, {0, 0, 3200, 3200}},
        {{3000, 3201}, {200, 200}, 16, {0, 0, 3000, 3200}},
        {{401, 200}, {200, 200}, 3, {0, 0, 401, 200}},
        {{200, 150}, {200, 200}, 1, {0, 0, 200, 150}},
        {{32767, 1}, {338, 514}, 16, {0, 0, 5408, 1}},
    };
    for (const auto& c : cases) {
        PreviewDialogGlobals g(nullptr);
        g.imageSize = c.image;
        FitPreview(&g, c.box);
        EXPECT_EQ(g.maxShrink, c.maxShrink) << c.image.v << " x " << c.image.h;
        EXPECT_EQ(g.srcRect, c.part) << c.image.v << " x " << c.image.h;
    }
}

/// Runs the preview of a picture alone; the box draws on `surface`.
void ShowPreview(int rows, int columns, PixelSurface* surface, Steps steps) {
    RGBContext run(rows, columns, 3, RandomPixels(PictureKind::photo, rows, columns, 3, 5));
    run.context.numColors = 64;
    ScriptedUser user(std::move(steps));
    user.DrawOn(surface);
    EXPECT_EQ(DoPreview(run.context, 0, 0), noErr);
}

/// Expects scale and read-out, and that every point of the box shows its pixel of the image.
Look ExpectView(const PixelSurface* surface, int enlarge, int shrink, const char* scale) {
    return [=](DialogPtr dialog) {
        const PreviewDialogGlobals& g = StateOf(dialog);
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
    Point pressed;
    const Look notePressed = [&](DialogPtr dialog) {
        const Rect& box = dialog->Item(kRGBPreviewImageItem)->rect;
        const Rect& part = StateOf(dialog).srcRect;
        pressed.v = static_cast<short>(part.top + kInBox.v - box.top);
        pressed.h = static_cast<short>(part.left + kInBox.h - box.left);
    };
    const Look expectPressedInMiddle = [&](DialogPtr dialog) {
        const Rect& part = StateOf(dialog).srcRect;
        EXPECT_LE(std::abs(part.top + part.bottom - 2 * pressed.v), 2);
        EXPECT_LE(std::abs(part.left + part.right - 2 * pressed.h), 2);
    };
    const Steps click = {PressAt(kInBox), Idle(4)};
    Steps toLimit;
    for (int i = 0; i < 20; ++i) toLimit = toLimit + click;
    const Steps turnZoom = Holding({kKeyOption}, {PressAt(kZoom)}) + Steps{Idle(60)};
    const Steps twiceOnZoom = {PressAt(kZoom), PressAt(kZoom), Idle(60)};
    const Steps twiceOnHand = {PressAt(kHand), PressAt(kHand), Idle(60)};
    ShowPreview(900, 1200, &surface,
                Steps{Idle(4), view(1, 1, " 1:1"), PressAt(kZoom), Idle(60), notePressed} + click +
                    Steps{view(2, 1, " 2:1"), expectPressedInMiddle} + turnZoom + click +
                    Steps{view(1, 1, " 1:1")} + turnZoom + toLimit + Steps{view(16, 1, "16:1")} +
                    Holding({kKeyOption}, Steps{Idle(4)} + click + Steps{view(15, 1, "15:1")} +
                                              toLimit + Steps{view(1, 3, " 1:3")}) +
                    twiceOnZoom + Steps{view(1, 1, " 1:1")} + twiceOnHand +
                    Steps{view(1, 3, " 1:3")} + Holding({kKeyCommand}, Steps{Idle(4)} + click) +
                    Steps{view(1, 2, " 1:2")});
}

TEST(RGBPreview, DragsWithTheHandAndStopsAtTheEdges) {
    PixelSurface surface(508, 668);
    const auto expectCorner = [&](short top, short left) -> Look {
        return [&, top, left](DialogPtr dialog) {
            EXPECT_EQ(StateOf(dialog).srcRect.top, top);
            EXPECT_EQ(StateOf(dialog).srcRect.left, left);
            ExpectView(&surface, 1, 1, " 1:1")(dialog);
        };
    };
    const Look redraw = [&](DialogPtr dialog) {
        surface.Clear();
        InvalItem(dialog, kRGBPreviewImageItem); // the buffer is not stale
    };
    const Act away = Drag({{20, 30}, {360, 540}});
    // 350 x 530 pixels about the middle of the image, at first.
    ShowPreview(900, 1200, &surface,
                Steps{Idle(4), expectCorner(275, 335),
                      Drag({{200, 300}, {150, 280}, {190, 295}, {170, 260}}), Idle(4),
                      expectCorner(305, 375), redraw, Idle(4), expectCorner(305, 375),
                      PressAt(kZoom)} +
                    Holding({kKeySpace}, {Idle(60), away, away, Idle(4), expectCorner(0, 0)}));
}

TEST(RGBPreview, AnImageSmallerThanTheBoxLiesInItsMiddle) {
    PixelSurface surface(508, 668);
    const Look expectMiddle = [&](DialogPtr dialog) {
        ExpectView(&surface, 1, 1, " 1:1")(dialog);
        const Rect& box = dialog->Item(kRGBPreviewImageItem)->rect;
        const Rect& place = StateOf(dialog).dstRect;
        EXPECT_LE(std::abs(place.top + place.bottom - box.top - box.bottom), 1);
        EXPECT_LE(std::abs(place.left + place.right - box.left - box.right), 1);
    };
    const auto expectTool = [](ToolType tool, const char* where) -> Look {
        return [=](DialogPtr dialog) {
            EXPECT_EQ(StateOf(dialog).currentTool, tool) << where;
            const auto* user = static_cast<const ScriptSource*>(CurrentEventSource());
            const Cursor* const want = tool == handTool ? nullptr : *GetCursor(2003);
            EXPECT_EQ(user->ShownCursor(), want) << where;
        };
    };
    ShowPreview(40, 50, &surface,
                {Idle(4), expectMiddle, HoldKey(kKeyOption), MoveMouse({20, 20}), Idle(4),
                 expectTool(handTool, "beside the picture"), MoveMouse({190, 280}), Idle(4),
                 expectTool(zoomOutTool, "over it"), PressKey(kKeyEscape)});
}

TEST(RGBPreview, ThePaletteShowsItsColorsAndTheTransparentOne) {
    PixelSurface surface(508, 668);
    RGBContext run(30, 40, 4, RandomPixels(PictureKind::photo, 30, 40, 4, 5));
    run.context.numColors = 20;
    const Look look = [&](DialogPtr dialog) {
        const Rect& table = dialog->Item(kRGBPreviewTableItem)->rect;
        const auto at = [&](int cell, int h) {
            return surface.At(table.top + 5, table.left + 1 + 11 * cell + h);
        };
        for (int i = 0; i < 21; ++i)
            EXPECT_EQ(at(i, 4), PackColor(TableEntry(run.context.palette, i))) << i;
        EXPECT_EQ(run.context.transIndex, 20);
        // A frame two pixels outside the cell, where none is around others.
        EXPECT_EQ(at(20, 10), PixelSurface::kBlack);
        EXPECT_NE(at(10, 10), PixelSurface::kBlack);
        EXPECT_EQ(at(21, 4), PixelSurface::kBlack) << "the cross of an unused cell";
    };
    ScriptedUser user({Idle(4), look});
    user.DrawOn(&surface);
    EXPECT_EQ(DoPreview(run.context, 0, 0), noErr);
}

TEST(RGBPreview, WithoutItsDialogBuildsThePaletteAllTheSame) {
    RGBContext run(30, 40, 3, RandomPixels(PictureKind::photo, 30, 40, 3, 5));
    run.context.numColors = 16;
    EXPECT_EQ(DoPreview(run.context, 0, 0), -1);
    EXPECT_EQ(run.context.numColors, 16);
    EXPECT_EQ(run.context.palette.red[0], 255);
}

} // namespace
