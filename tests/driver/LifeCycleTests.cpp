// The order of calls, right and wrong, and what each leaves behind.
#include "DriverRun.h"

#include "MemoryManager.h"

namespace {

DriverRun SmallRun() {
    return {4, 5, 3, std::vector<std::uint8_t>(60, 77)};
}

// 128 KiB for the indices at least, the error rows, and both maps.
constexpr std::int32_t kNeedOfSmallRun = 131072 + 5 * 12 + 24 + 65536;

TEST(LifeCycle, PrepareTakesTheNeedFromTheBudget) {
    const struct {
        std::int32_t budget;
        short code;
        std::int32_t left;
    } cases[] = {{kNeedOfSmallRun + 100, noErr, 100},
                 {kNeedOfSmallRun, noErr, 0},
                 {kNeedOfSmallRun - 1, memFullErr, kNeedOfSmallRun - 1}};
    for (const auto& c : cases) {
        DriverRun run = SmallRun();
        run.host.record.memoryBudget = c.budget;
        EXPECT_EQ(run.Call(kSelectorPrepare), c.code) << c.budget;
        EXPECT_EQ(run.host.record.memoryBudget, c.left) << c.budget;
        EXPECT_EQ(run.data == 0, c.code != noErr) << c.budget;
        if (run.data != 0) run.Call(kSelectorFinish);
    }
    DriverRun large(400, 400, 3, std::vector<std::uint8_t>(480000));
    large.host.record.memoryBudget = 160000 + 400 * 12 + 24 + 65536;
    EXPECT_EQ(large.Call(kSelectorPrepare), noErr);
    EXPECT_EQ(large.host.record.memoryBudget, 0);
    large.Call(kSelectorFinish);
}

TEST(LifeCycle, OnlyKnownModesMakeAContext) {
    for (const short mode : {short{0}, short{1}, short{4}, short{-3}}) {
        DriverRun run = SmallRun();
        run.host.record.imageMode = mode;
        EXPECT_EQ(run.Call(kSelectorPrepare), kModeNotExported) << mode;
        EXPECT_EQ(run.data, 0) << mode;
    }
}

TEST(LifeCycle, AHostWithoutHandlesHasBeenTold) {
    DriverRun run = SmallRun();
    run.host.record.handleProcs.Clear();
    EXPECT_EQ(run.Call(kSelectorPrepare), kHostLacksHandles);
    EXPECT_EQ(run.data, 0);
}

TEST(LifeCycle, AnUnknownSelectorEndsTheExportAndSaysNothing) {
    const long before = LiveMemoryBlocks();
    for (const short selector : {short{5}, short{-1}, short{32767}}) {
        DriverRun run = SmallRun();
        EXPECT_EQ(run.Call(kSelectorPrepare), noErr);
        EXPECT_EQ(run.Call(selector), DriverRun::kUntouched) << selector;
        EXPECT_EQ(run.data, 0) << selector;
    }
    EXPECT_EQ(LiveMemoryBlocks(), before);
}

TEST(LifeCycle, AboutLeavesARunningExportAlone) {
    DriverRun run = SmallRun();
    EXPECT_EQ(run.Call(kSelectorPrepare), noErr);
    const std::intptr_t data = run.data;
    EXPECT_EQ(run.Call(kSelectorAbout), DriverRun::kUntouched);
    EXPECT_EQ(run.data, data);
    EXPECT_EQ(run.Call(kSelectorStart), noErr);
    run.Call(kSelectorFinish);
}

TEST(LifeCycle, AnyOrderOfCallsIsSafeAndGivesEverythingBack) {
    const short orders[][4] = {
        {kSelectorFinish, kSelectorFinish, kSelectorFinish, kSelectorFinish},
        {kSelectorStart, kSelectorFinish, kSelectorFinish, kSelectorFinish},
        {kSelectorStart, kSelectorStart, kSelectorContinue, kSelectorFinish},
        {kSelectorContinue, kSelectorPrepare, kSelectorPrepare, kSelectorFinish},
        {kSelectorPrepare, kSelectorFinish, kSelectorContinue, kSelectorFinish}};
    const long before = LiveMemoryBlocks();
    for (const auto& order : orders) {
        DriverRun run = SmallRun();
        run.user.replaces = true; // a second start writes the same file again
        for (const short selector : order) {
            const short code = run.Call(selector);
            EXPECT_EQ(code, selector == kSelectorFinish ? DriverRun::kUntouched : short{noErr})
                << "order " << order[0] << order[1] << order[2] << order[3];
        }
        EXPECT_EQ(run.data, 0);
    }
    EXPECT_EQ(LiveMemoryBlocks(), before);
}

TEST(LifeCycle, TheRecordMayMoveBetweenCalls) {
    DriverRun run = SmallRun();
    EXPECT_EQ(run.Call(kSelectorPrepare), noErr);
    std::intptr_t data = run.data;
    short result = noErr;
    DriverRun elsewhere = SmallRun(); // answers the requests and holds the record from here on
    elsewhere.host.record.memoryBudget = run.host.record.memoryBudget;
    run.host.record = {};
    RunSelector(kSelectorStart, &elsewhere.host.record, &data, &result);
    EXPECT_EQ(result, noErr);
    EXPECT_FALSE(elsewhere.user.Output().empty());
    RunSelector(kSelectorFinish, &elsewhere.host.record, &data, &result);
}

TEST(LifeCycle, CancellingTheSaveDialogEmptiesTheRequestAndEndsTheExport) {
    const long before = LiveMemoryBlocks();
    {
        DriverRun run = SmallRun();
        run.user.cancels = true;
        EXPECT_EQ(run.Export(), userCanceledErr);
        EXPECT_EQ(run.host.record.requestRect.bottom, 0);
        EXPECT_EQ(run.data, 0);
        EXPECT_TRUE(run.user.folder.Names().empty());
    }
    EXPECT_EQ(LiveMemoryBlocks(), before);
}

TEST(OutputFile, ProposesTheDocumentsNameWithTheSuffix) {
    const auto accents = [](int count) {
        std::string text;
        while (count-- > 0) text += "\xC3\xA9";
        return text;
    };
    const struct {
        std::string document, proposed;
    } cases[] = {{"Photo", "Photo.gif"},
                 {"photo.png", "photo.png.gif"},
                 {"", ".gif"},
                 {std::string(251, 'a'), std::string(251, 'a') + ".gif"},
                 {std::string(255, 'a'), std::string(251, 'a') + ".gif"},
                 {accents(127), accents(125) + ".gif"}};
    for (const auto& c : cases) {
        DriverRun run = SmallRun();
        run.host.record.documentName[0] = static_cast<std::uint8_t>(c.document.size());
        std::copy(c.document.begin(), c.document.end(), run.host.record.documentName + 1);
        EXPECT_EQ(run.Export(), noErr);
        EXPECT_EQ(run.user.proposed, c.proposed) << c.document.size();
        EXPECT_NE(run.user.lastPrompt, "");
    }
}

TEST(OutputFile, ReplacesAnExistingFileOnlyWhenTheUserSaidSo) {
    DriverRun run = SmallRun();
    run.user.folder.Write("out.gif",
                          "old and longer than the picture, by far, " + std::string(4000, '.'));
    EXPECT_EQ(run.Export(), dupFNErr);
    EXPECT_TRUE(run.user.Output().starts_with("old"));
    run.user.replaces = true;
    EXPECT_EQ(run.Export(), noErr);
    EXPECT_TRUE(run.user.Output().starts_with("GIF89a"));
    EXPECT_TRUE(run.user.Output().ends_with(";"));
}

TEST(OutputFile, AFolderOfThatNameIsAnError) {
    DriverRun run = SmallRun();
    std::filesystem::create_directory(run.user.OutputPath());
    run.user.replaces = true;
    EXPECT_EQ(run.Export(), dupFNErr);
}

} // namespace
