// The options dialog of RGB pictures: what every choice in it leads to.
#include "ControlManager.h"
#include "FaultInjection.h"
#include "GetRGBParameters.h"
#include "HostDialogs.h"
#include "LumoGetColor.h"
#include "PixelSurface.h"
#include "RGBSession.h"
#include "RandomPictures.h"
#include "ResourceManager.h"

#include <cstring>

#include <gtest/gtest.h>

namespace {

constexpr int kRows = 30, kColumns = 40;
constexpr auto kMany = PictureKind::noise, kFew = PictureKind::fewColors;

std::vector<std::uint8_t> Pixels(PictureKind kind, int planes) {
    return RandomPixels(kind, kRows, kColumns, planes, 7);
}

Look ExpectCount(const std::string& text) {
    return [text](DialogPtr dialog) { EXPECT_EQ(TextOf(dialog, kRGBCountItem), text); };
}

Look ExpectPalette(const std::string& entry) {
    return
        [entry](DialogPtr dialog) { EXPECT_EQ(ChosenText(dialog, kRGBPalettePopUpItem), entry); };
}

Steps LoadFile(const std::string& path) {
    return {PressItem(kRGBLoadItem), PickFile(path)};
}

Steps Count(const std::string& text) {
    return {SetText(kRGBCountItem, text)};
}

/// Folder with palettes that the tests load.
struct PaletteFiles {
    TemporaryFolder folder;
    RGBLookUpTable many = RandomTable(256, 1), some = RandomTable(40, 2), one = RandomTable(1, 3);
    std::string manyPath = folder.Write("many.zco", SwatchFile(many, 256));
    std::string somePath = folder.Write("some.ZCO", SwatchFile(some, 40));
    std::string onePath = folder.Write("one.ZCO", SwatchFile(one, 1));
    std::string otherSpacePath = folder.Write("other.ZCO", SwatchFile(some, 40, 2));
    std::string shortPath = folder.Write("short.PAL", "RIFF");
};

RGBLookUpTable FixedPalette() {
    const std::int16_t file = OpenResFile(MODULE_RESOURCES);
    RGBLookUpTable table;
    std::memcpy(&table, *GetResource(FourCC("PLUT"), 3), sizeof table);
    CloseResFile(file);
    return table;
}

/// What the dialog is to leave in the context, and the steps to it.
struct Choice {
    std::string name;
    PictureKind picture;
    Steps steps;
    bool exact = false;
    const RGBLookUpTable* supplied = nullptr;
    int suppliedCount = 0;
    int colors = 0; ///< 0: as many as there can be
    bool resize = false;
};
void Apply(const Choice& choice, RGBContext* core) {
    GIF89RGBExport& context = core->context;
    core->exact = choice.exact;
    core->supplied = choice.supplied != nullptr;
    const int most = core->record.hasTransparency ? 255 : 256;
    context.numColors = choice.exact         ? context.exactInfo.count
                        : choice.colors == 0 ? most
                                             : choice.colors;
    if (choice.supplied) context.palette = *choice.supplied;
    context.suppliedPaletteCount = choice.suppliedCount;
    std::memset(&context.suppliedPaletteFlag, choice.resize, 1);
    context.interlaced = 1;
    context.transparentColor = {0, 192, 192, 192};
}

TEST(RGBOptions, EveryPaletteIsWrittenAsTheCoreWritesIt) {
    const PaletteFiles files;
    const RGBLookUpTable cube = FixedPalette();
    const Act adaptive = ChooseEntry(10, "Adaptive"), fixed = ChooseEntry(10, "Fixed");
    const Act fit = PressItem(kRGBResizeItem);
    const Steps some = LoadFile(files.somePath), many = LoadFile(files.manyPath);
    const Steps preview = {PressItem(kRGBPreviewItem), PressItem(1)};
    const Choice choices[] = {
        {"exact again", kFew, Steps{adaptive} + Count("9") + Steps{ChooseEntry(10, 1)}, true},
        {"adaptive", kMany, {}},
        {"adaptive, not exact", kFew, Steps{adaptive} + Count("6"), false, nullptr, 0, 6},
        {"fixed", kMany, {fixed}, false, &cube, 256},
        {"fixed, not exact", kFew, {fixed}, false, &cube, 256},
        {"fixed to as many as there can be", kMany, {fixed, fit}, false, &cube, 256, 0, true},
        {"fixed to 16", kMany, Steps{fixed, fit} + Count("16"), false, &cube, 256, 16, true},
        {"file", kMany, many, false, &files.many, 256},
        {"file of 40, cut", kMany, some + Count("16"), false, &files.some, 40, 16},
        {"file of 40 to 60", kMany, some + Count("60") + Steps{fit, fit, fit}, false, &files.some,
         40, 60, true},
        {"file of one", kMany, LoadFile(files.onePath), false, &files.one, 1, 2},
        {"a second file", kMany, many + some, false, &files.some, 40, 40},
        {"file after a preview of less", kMany, some + Count("9") + preview + Count("40"), false,
         &files.some, 40, 40},
        {"file after a preview of another palette", kMany,
         some + Steps{fixed} + preview + Steps{ChooseEntry(10, 5)}, false, &files.some, 40, 40},
        {"fit without a palette to fit", kMany, some + Steps{fit, adaptive}, false, nullptr, 0, 40},
        {"adaptive after a preview", kMany, Steps{fixed} + preview + Steps{adaptive}},
    };
    for (const Choice& choice : choices)
        for (const int planes : {3, 4}) {
            const auto pixels = Pixels(choice.picture, planes);
            RGBContext core(kRows, kColumns, planes, pixels);
            Apply(choice, &core);
            const std::string want = core.Write();
            ASSERT_GT(want.size(), 20u) << choice.name;
            EXPECT_TRUE(ExportWith(kRows, kColumns, planes, pixels, choice.steps) == want)
                << choice.name << ", planes " << planes;
        }
}

TEST(RGBOptions, OpensWithWhatThePictureAllows) {
    const struct {
        PictureKind picture;
        int planes, exactCount; ///< 0: as counted
        bool exact;
        const char* count;
    } cases[] = {{kMany, 3, 0, false, "256"},  {kMany, 4, 0, false, "255"},
                 {kFew, 3, 0, true, ""},       {kFew, 4, 0, true, ""},
                 {kMany, 3, 256, true, "256"}, {kMany, 4, 256, false, "255"},
                 {kFew, 4, 255, true, "255"}};
    for (const auto& c : cases) {
        RGBContext run(kRows, kColumns, c.planes, Pixels(c.picture, c.planes));
        if (c.exactCount != 0) run.context.exactInfo.count = c.exactCount;
        char comment[] = "hello";
        run.context.comment = c.planes == 4 ? comment : nullptr;
        const std::string count = *c.count ? c.count : std::to_string(run.context.exactInfo.count);
        run.Ask({Look([&](DialogPtr dialog) {
            const bool alpha = c.planes == 4;
            const auto disabled = [&](int item) {
                return dialog->Item(static_cast<short>(item))->IsDisabled();
            };
            EXPECT_EQ(GetPopUpMenuValue(dialog, 10), c.exact ? 1 : 2);
            EXPECT_EQ((*dialog->Item(10)->menu)->CanChoose(1), c.exact);
            const auto& presets = (*dialog->Item(14)->menu)->entries;
            const std::size_t most = presets.size() - 4; // three lie behind it
            EXPECT_EQ(presets[most].text, "256");
            EXPECT_EQ(presets[most].enabled, !alpha);
            EXPECT_EQ(TextOf(dialog, 13), count);
            EXPECT_EQ(ChosenText(dialog, 14), count);
            EXPECT_TRUE(c.exact || GetPopUpMenuValue(dialog, 14) == (alpha ? 6 : 7));
            for (const int item : {11, 13, 14}) EXPECT_EQ(disabled(item), c.exact);
            EXPECT_EQ(dialog->editActive, !c.exact);
            for (const int item : {4, 5}) EXPECT_EQ(disabled(item), !alpha);
            EXPECT_TRUE(disabled(kRGBResizeItem));
            EXPECT_EQ(disabled(kRGBCommentItem), !alpha);
            EXPECT_EQ(GetCheckBoxState(dialog, kRGBCommentItem), alpha);
            EXPECT_TRUE(GetCheckBoxState(dialog, kRGBInterlaceItem));
        })});
        EXPECT_EQ(run.context.commentEnabled, c.planes == 4);
        run.context.comment = nullptr;
    }
}

TEST(RGBOptions, TakesOnlyCountsInRange) {
    const struct {
        const char* text;
        int colors[2]; ///< without and with transparency; 0 is refused
    } cases[] = {{"2", {2, 2}}, {"255", {255, 255}}, {"256", {256, 0}}, {"1", {0, 0}},
                 {"", {0, 0}},  {"257", {0, 0}},     {"16x", {0, 0}}};
    for (const short button : {kOKItem, kRGBPreviewItem})
        for (const auto& c : cases)
            for (const int planes : {3, 4}) {
                const int colors = c.colors[planes - 3];
                RGBContext run(kRows, kColumns, planes, Pixels(kMany, planes));
                Steps steps = Count(c.text) + Steps{PressItem(button)};
                if (colors == 0) steps = steps + Count("7");
                EXPECT_EQ(run.Ask(steps), noErr);
                EXPECT_EQ(run.alerts.size(), colors == 0 ? 1u : 0u) << c.text << ' ' << planes;
                EXPECT_EQ(run.context.numColors, colors == 0 ? 7 : colors) << c.text;
            }
}

TEST(RGBOptions, ThePopUpOfCountsFollowsTheTextAndLeadsIt) {
    RGBContext run(kRows, kColumns, 3, Pixels(kMany, 3));
    const struct {
        const char* typed;
        const char* chosen;
        std::size_t entries;
    } cases[] = {{"64", "64", 10}, {"300", "none", 10}, {"2", "2", 10},    {"100", "100", 12},
                 {"90", "90", 12}, {"", "none", 12},    {"256", "256", 12}};
    Steps steps;
    for (const auto& c : cases)
        steps = steps + Count(c.typed) + Steps{Look([=](DialogPtr dialog) {
                    const auto& entries = (*dialog->Item(kRGBCountPopUpItem)->menu)->entries;
                    EXPECT_EQ(ChosenText(dialog, kRGBCountPopUpItem), c.chosen);
                    EXPECT_EQ(entries.size(), c.entries) << c.typed;
                    EXPECT_EQ(entries[1].separator, c.entries == 12) << c.typed;
                })};
    run.Ask(steps + Steps{ChooseEntry(14, "32"), ExpectCount("32"), TypeText("128"),
                          ExpectCount("128"), PressItem(kRGBCountLabelItem), TypeText("4")});
    EXPECT_EQ(run.context.numColors, 4);
}

TEST(RGBOptions, ADisabledCountTakesNeitherPressesNorKeys) {
    RGBContext run(kRows, kColumns, 3, Pixels(kFew, 3));
    const std::string count = std::to_string(run.context.exactInfo.count);
    const Look activate = [](DialogPtr dialog) { TEActivate(dialog); };
    const Look expectInactive = [](DialogPtr dialog) { EXPECT_FALSE(dialog->editActive); };
    EXPECT_EQ(run.Ask({activate, Idle(4), expectInactive, TypeText("5"), PressKey(kKeyDelete),
                       PressAt({91, 130}), TypeText("7"), ExpectCount(count),
                       ExpectPalette("Exact colours"), ChooseEntry(10, "Adaptive"), TypeText("5"),
                       ExpectCount("5"), TypeText("\r")}),
              noErr);
    EXPECT_EQ(run.context.numColors, 5);
    const ScriptedUser user(Holding({kKeyCommand}, {TypeText(".")}) +
                            Steps{PressKey(kKeyEnter), PressKey(kKeyEscape)});
    for (const short code : {short{userCanceledErr}, short{noErr}, short{userCanceledErr}})
        EXPECT_EQ(GetRGB24Parameters(run.context, &run.exact, &run.supplied), code);
}

TEST(RGBOptions, AFileThatDoesNotLoadIsNamedAndChangesNothing) {
    const PaletteFiles files;
    const struct {
        std::string path;
        std::vector<std::string> alerts;
    } cases[] = {
        {files.otherSpacePath, {"The palette's colours are not RGB, so it cannot be used."}},
        {files.shortPath, {"The palette cannot be read from this file."}},
        {files.manyPath, {}}, // it cannot be opened
    };
    for (const auto& c : cases) {
        RGBContext run(kRows, kColumns, 3, Pixels(kMany, 3));
        const Look fail = [&](DialogPtr) {
            if (c.alerts.empty()) FailNthCall(FaultPoint::openFile, 1, permErr);
        };
        // Once before any file is loaded, once after one.
        EXPECT_EQ(run.Ask(Steps{fail} + LoadFile(c.path) +
                          Steps{ExpectPalette("Adaptive"), ExpectCount("256")} +
                          LoadFile(files.somePath) + Steps{fail} + LoadFile(c.path) +
                          Steps{ExpectPalette("some.ZCO"), ExpectCount("40")}),
                  noErr);
        ClearFaults();
        std::vector<std::string> twice = c.alerts;
        twice.insert(twice.end(), c.alerts.begin(), c.alerts.end());
        EXPECT_EQ(run.alerts, twice) << c.path;
        EXPECT_EQ(TableColors(run.context.palette), TableColors(files.some)) << c.path;
        EXPECT_EQ(run.context.suppliedPaletteCount, 40) << c.path;
    }
}

TEST(RGBOptions, AFileThatWentBadKeepsTheChoiceBefore) {
    const PaletteFiles files;
    RGBContext run(kRows, kColumns, 3, Pixels(kMany, 3));
    const Look spoil = [&](DialogPtr) { files.folder.Write("some.ZCO", "no palette"); };
    run.Ask(LoadFile(files.somePath) + Steps{spoil, ChooseEntry(10, "Fixed"),
                                             ChooseEntry(10, "some.ZCO"), ExpectPalette("Fixed"),
                                             ExpectCount("256")});
    EXPECT_EQ(run.alerts.size(), 1u);
    EXPECT_EQ(TableColors(run.context.palette), TableColors(FixedPalette()));
}

TEST(RGBOptions, OtherEntriesNameFilesBesideTheLastOne) {
    const PaletteFiles files;
    RGBContext run(kRows, kColumns, 3, Pixels(kMany, 3));
    const auto addEntry = [](const char* name) -> Look {
        return [=](DialogPtr dialog) {
            (*dialog->Item(kRGBPalettePopUpItem)->menu)->entries.push_back({name});
        };
    };
    const Look expectOneFileEntry = [](DialogPtr dialog) {
        EXPECT_EQ((*dialog->Item(kRGBPalettePopUpItem)->menu)->entries.size(), 6u);
    };
    run.Ask(Steps{addEntry("one.ZCO"), ChooseEntry(10, "one.ZCO"), ExpectPalette("Adaptive")} +
            LoadFile(files.somePath) + LoadFile(files.manyPath) +
            Steps{expectOneFileEntry, ChooseEntry(10, "one.ZCO"), ExpectPalette("one.ZCO"),
                  ExpectCount("2"), addEntry("gone.ZCO"), ChooseEntry(10, "gone.ZCO"),
                  ExpectPalette("one.ZCO")});
    EXPECT_EQ(run.alerts.size(), 2u) << "no folder before the first file; a missing file";
    EXPECT_TRUE(run.supplied);
    EXPECT_EQ(TableColors(run.context.palette), TableColors(files.one));
    EXPECT_EQ(run.context.suppliedPaletteCount, 1);
}

// What the user sees of every item, the entries' numbers aside.
std::vector<std::string> Snapshot(DialogPtr dialog) {
    std::vector<std::string> lines;
    for (short item = 1; dialog->Item(item) != nullptr; ++item) {
        const DialogItem& record = *dialog->Item(item);
        lines.push_back(std::to_string(item) + ' ' + std::to_string(record.kind) + ' ' +
                        (record.menu ? ChosenText(dialog, item)
                                     : record.text + std::to_string(GetCtlValue(record.control))));
    }
    return lines;
}

TEST(RGBOptions, CancelEndsAndOptionCancelPutsEverythingBack) {
    const PaletteFiles files;
    for (const PictureKind picture : {kMany, kFew})
        for (const int planes : {3, 4}) {
            RGBContext run(kRows, kColumns, planes, Pixels(picture, planes));
            char comment[] = "hello";
            run.context.comment = comment;
            std::vector<std::string> opened, changed, reset;
            const auto noteIn = [](std::vector<std::string>* lines) -> Look {
                return [=](DialogPtr dialog) { *lines = Snapshot(dialog); };
            };
            const Look expectReset = [](DialogPtr dialog) {
                EXPECT_EQ(TextOf(dialog, kCancelItem), "Reset");
            };
            Steps changes = LoadFile(files.somePath) + Count("77") +
                            Steps{PressItem(15), PressItem(16), PressItem(18)};
            if (planes == 4) changes = changes + Steps{PressItem(4), PickColor({1, 2, 3})};
            const Act cancel = PressItem(kCancelItem);
            EXPECT_EQ(run.Ask(Steps{noteIn(&opened)} + changes + Steps{noteIn(&changed)} +
                              Holding({kKeyOption}, {Idle(2), expectReset, cancel}) +
                              Steps{Idle(2), noteIn(&reset), cancel}),
                      userCanceledErr);
            EXPECT_EQ(reset, opened) << planes;
            EXPECT_NE(changed, opened);
            EXPECT_EQ(run.context.chosenColor.red, 49344);
            run.context.comment = nullptr;
        }
}

OSErr PickTeal(void* info) {
    auto& request = *static_cast<ColorServicesInfo*>(info);
    EXPECT_EQ(request.component[0], 192);
    request.component[0] = 0, request.component[1] = 128, request.component[2] = 127;
    return noErr;
}

TEST(RGBOptions, TheColorBoxAsksTheHostOrTheToolbox) {
    const AddressKey services(&PickTeal);
    const struct {
        const char* name;
        bool offered;
        Steps answer;
        PackedColor want;
    } cases[] = {
        {"host", true, {}, 0x00807F},
        {"toolbox", false, {PickColor({0xFFFF, 0, 0x80FF})}, 0xFF0080},
        {"toolbox, cancelled", false, {CancelColor()}, 0xC0C0C0},
        {"toolbox, then reset", false,
         Steps{PickColor({0xFFFF, 0, 0x80FF})} + Holding({kKeyOption}, {PressItem(kCancelItem)}),
         0xC0C0C0},
    };
    for (const auto& c : cases) {
        RGBContext run(kRows, kColumns, 4, Pixels(kMany, 4));
        if (c.offered) run.record.colorServicesProc.Set(services);
        PixelSurface surface(292, 452);
        const Look show = [&](DialogPtr dialog) {
            dialog->surface = &surface;
            InvalItem(dialog, kRGBColorBoxItem);
        };
        const Look expectColor = [&](DialogPtr dialog) {
            const Rect& box = dialog->Item(kRGBColorBoxItem)->rect;
            EXPECT_EQ(surface.At(box.top + 5, box.left + 5), c.want) << c.name;
        };
        run.Ask(Steps{show, PressItem(kRGBColorBoxItem)} + c.answer + Steps{Idle(2), expectColor});
        EXPECT_EQ(PackColor(run.context.transparentColor), c.want) << c.name;
    }
}

TEST(RGBOptions, TheItemColorsAreChangedOnlyWhileTheDialogIsOpen) {
    const auto labelStyle = [] {
        return GetBE<std::uint32_t>(*GetResource(FourCC("ictb"), 16000) + 16);
    };
    for (const int planes : {3, 4}) {
        RGBContext run(kRows, kColumns, planes, Pixels(kMany, planes));
        std::uint32_t open = 1;
        const ScriptedUser user({Look([&](DialogPtr) { open = labelStyle(); })});
        EXPECT_EQ(GetRGB24Parameters(run.context, &run.exact, &run.supplied), noErr);
        EXPECT_EQ(open, planes == 3 ? 0x00080040u : 0u);
        EXPECT_EQ(labelStyle(), 0u);
    }
}

} // namespace
