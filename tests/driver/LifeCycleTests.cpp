// The order of calls, right and wrong, and what each leaves behind.
#include "DriverRun.h"

#include "GIF89IndexedExport.h"
#include "MemoryManager.h"

#include <sys/xattr.h>

#include <cerrno>

namespace {

DriverRun SmallRun() {
    return {4, 5, 3, std::vector<std::uint8_t>(60, 77)};
}

TEST(LifeCycle, PrepareTakesTheNeedFromTheBudget) {
    // 128 KiB for the indices at least, the error rows, and both maps.
    const std::int32_t small = 131072 + 5 * 12 + 24 + 65536;
    const std::int32_t large = 160000 + 400 * 12 + 24 + 65536;
    // Side, budget, code, and what is left.
    const std::tuple<int, std::int32_t, short, std::int32_t> cases[] = {
        {5, small, noErr, 0}, {5, small - 1, memFullErr, small - 1}, {400, large, noErr, 0}};
    for (const auto& [side, budget, code, left] : cases) {
        DriverRun run(side, side, 3, std::vector<std::uint8_t>(480000));
        run.host.record.memoryBudget = budget;
        EXPECT_EQ(run.Call(kSelectorPrepare), code) << budget;
        EXPECT_EQ(run.host.record.memoryBudget, left) << budget;
        EXPECT_EQ(run.data == 0, code != noErr) << budget;
        if (run.data != 0) run.Call(kSelectorFinish);
    }
}

TEST(LifeCycle, OnlyKnownModesAndHostsWithHandlesMakeAContext) {
    for (const short mode : {short{1}, short{-3}}) {
        DriverRun run = SmallRun();
        run.host.record.imageMode = mode;
        EXPECT_EQ(run.Call(kSelectorPrepare), kModeNotExported) << mode;
        EXPECT_EQ(run.data, 0) << mode;
    }
    DriverRun run = SmallRun();
    run.host.record.handleProcs.Clear();
    EXPECT_EQ(run.Call(kSelectorPrepare), kHostLacksHandles);
    EXPECT_EQ(run.data, 0);
}

TEST(LifeCycle, AStartKnowsNothingOfTheOneBefore) {
    DriverRun run = {4, 5, 4, std::vector<std::uint8_t>(80, 77)};
    run.user.replaces = true;
    const std::string_view control = "\x21\xF9\x04"; // there only with a transparent index
    for (const bool transparent : {true, false}) {
        run.host.record.hasTransparency = transparent;
        EXPECT_EQ(run.Call(kSelectorStart), noErr);
        EXPECT_EQ(run.user.Output().find(control) != std::string::npos, transparent);
    }
    run.Call(kSelectorFinish);
}

TEST(OutputFile, CancellingTheSaveDialogEmptiesTheRequestAndEndsTheExport) {
    DriverRun run = SmallRun();
    run.user.cancels = true;
    EXPECT_EQ(run.Export(), userCanceledErr);
    EXPECT_EQ(run.host.record.requestRect.bottom, 0);
    EXPECT_EQ(run.data, 0);
    EXPECT_TRUE(run.user.folder.Names().empty());
}

TEST(OutputFile, ProposesTheDocumentsNameWithTheSuffix) {
    std::string accents = "x";
    while (accents.size() < 255) accents += "\xC3\xA9";
    const std::pair<std::string, std::string> cases[] = {
        {"", ".gif"},
        {std::string(251, 'a'), std::string(251, 'a') + ".gif"},
        {std::string(255, 'a'), std::string(251, 'a') + ".gif"},
        {accents.substr(1), accents.substr(1, 250) + ".gif"}};
    for (const auto& [document, proposed] : cases) {
        DriverRun run = SmallRun();
        run.host.record.documentName[0] = static_cast<std::uint8_t>(document.size());
        std::copy(document.begin(), document.end(), run.host.record.documentName + 1);
        EXPECT_EQ(run.Export(), noErr);
        EXPECT_EQ(run.user.proposed, proposed) << document.size();
        EXPECT_EQ(run.user.lastPrompt, "Save the picture as:");
    }
}

TEST(OutputFile, ReplacesAnExistingFileOnlyWhenTheUserSaidSo) {
    DriverRun run = SmallRun();
    run.user.folder.Write("out.gif", "old and longer than the picture" + std::string(4000, '.'));
    EXPECT_EQ(run.Export(), dupFNErr);
    EXPECT_TRUE(run.user.Output().starts_with("old"));
    run.user.replaces = true;
    EXPECT_EQ(run.Export(), noErr);
    EXPECT_TRUE(run.user.Output().starts_with("GIF89a"));
    EXPECT_TRUE(run.user.Output().ends_with(";"));
    char info[8] = {}; // type and creator, where files can carry them
    const ssize_t size = getxattr(run.user.OutputPath().c_str(), "user.finder.info", info, 8);
    if (size >= 0 || errno != ENOTSUP) {
        EXPECT_EQ(std::string(info, 8), "GIFfQ7IM");
    }
}

TEST(IndexedExport, ReportsAChannelWhoseDataAreGone) {
    GIF89IndexedExport context;
    context.alphaPlane = 1;
    int hidden = 0;
    EXPECT_EQ(context.GetMaskFromAlphaChannel(1, 0, &hidden), memFullErr);
}

TEST(IndexedExport, KeepsItsCommentUntilTheNextOne) {
    DriverRun run = SmallRun();
    const long blocks = LiveMemoryBlocks();
    for (int exports = 0; exports < 2; ++exports) {
        GIF89IndexedExport context;
        context.comment = reinterpret_cast<char*>(NewPtr(1));
        EXPECT_TRUE(context.Dispatch(kSelectorFinish, &run.host.record, &run.result));
        EXPECT_EQ(LiveMemoryBlocks() - blocks, 1);
    }
}

} // namespace
