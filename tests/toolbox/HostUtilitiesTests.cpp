// Streams, notices, the about box, the file dialogs' frame and colour conversion.
#include "FastStream.h"
#include "FaultInjection.h"
#include "FileManager.h"
#include "HSVColor.h"
#include "HostServices.h"
#include "NoticeResponder.h"
#include "Notices.h"
#include "ResourceBytes.h"
#include "ResourceManager.h"
#include "ScriptedHost.h"
#include "StandardFile.h"
#include "TemporaryFolder.h"

#include <array>
#include <random>

#include <gtest/gtest.h>

namespace {

std::int16_t OpenForWriting(const std::string& path) {
    FSSpec spec;
    EXPECT_EQ(PathToFSSpec(path, &spec), noErr) << path;
    std::int16_t refNum = 0;
    EXPECT_EQ(FSpOpenDF(&spec, fsWrPerm, &refNum), noErr) << path;
    return refNum;
}

struct RecordingNotices : NoticeResponder {
    RecordingNotices() : before(SetNoticeResponder(this)) {}
    ~RecordingNotices() override { SetNoticeResponder(before); }
    void Warn(const std::string& sentence) override { warnings.push_back(sentence); }
    void About(const std::vector<std::string>& texts) override { abouts.push_back(texts); }

    NoticeResponder* before;
    std::vector<std::string> warnings;
    std::vector<std::vector<std::string>> abouts;
};

} // namespace

TEST(Streams, WriteExactlyWhatWasPutInFullBuffers) {
    const TemporaryFolder folder;
    std::mt19937 random(20240229);
    const long blocks = LiveMemoryBlocks();
    for (const std::size_t total : {0U, 65535U, 65536U, 65537U, 300000U})
        for (const std::size_t step : {1U, 255U, 70000U}) {
            SCOPED_TRACE(testing::Message() << total << " bytes in steps of " << step);
            std::string bytes(total, 0);
            for (char& byte : bytes) byte = static_cast<char>(random());
            const std::int16_t refNum = OpenForWriting(folder.Write("a", ""));
            FastStream* const stream = FastOpen(refNum, 1);
            ASSERT_NE(stream, nullptr);
            ClearFaults();
            for (std::size_t i = 0; i < total; i += step) {
                const auto count = static_cast<std::int32_t>(std::min(step, total - i));
                ASSERT_EQ(FastWrite(stream, count, &bytes[i]), noErr);
            }
            EXPECT_EQ(FastClose(stream), noErr);
            EXPECT_EQ(FSClose(refNum), noErr);
            EXPECT_TRUE(folder.Read("a") == bytes);
            EXPECT_EQ(CallsSoFar(FaultPoint::writeFile), static_cast<int>((total + 65535) / 65536));
        }
    EXPECT_EQ(LiveMemoryBlocks(), blocks);
}

TEST(Streams, TellAFullDiskThatShowsWhenClosing) {
    const std::int16_t refNum = OpenForWriting("/dev/full");
    FastStream* const stream = FastOpen(refNum, 1);
    EXPECT_EQ(FastWrite(stream, 3, "GIF"), noErr);
    EXPECT_EQ(FastClose(stream), dskFulErr);
    FailNthCall(FaultPoint::closeFile, 1, ioErr);
    EXPECT_EQ(FSClose(refNum), ioErr);
    ClearFaults();
    EXPECT_EQ(TakeCloseError(), dskFulErr) << "the first of two";
    EXPECT_EQ(TakeCloseError(), noErr);
}

TEST(HandleServices, AreAvailableOnlyWhenCompleteElseTheUserIsTold) {
    RecordingNotices notices;
    const HostHandleProcs complete = MemoryManagerProcs();
    HostHandleProcs newer = complete;
    newer.version = 2;
    newer.count = 6;
    EXPECT_TRUE(WarnHostHandleProcsAvailable(&complete) && WarnHostHandleProcsAvailable(&newer));
    EXPECT_TRUE(notices.warnings.empty());
    std::array<HostHandleProcs, 6> lacking;
    lacking.fill(complete);
    lacking[0].version = 0;
    lacking[1].count = 3;
    lacking[2].newHandle = nullptr;
    lacking[3].disposeHandle = nullptr;
    lacking[4].getHandleSize = nullptr;
    lacking[5].setHandleSize = nullptr;
    EXPECT_FALSE(WarnHostHandleProcsAvailable(nullptr));
    for (const HostHandleProcs& procs : lacking)
        EXPECT_FALSE(WarnHostHandleProcsAvailable(&procs)) << &procs - lacking.data();
    EXPECT_EQ(notices.warnings.size(), 1 + lacking.size());
}

TEST(AboutBox, ShowsTheStaticTextsInTheirOrderAndNothingOfABrokenResource) {
    RecordingNotices notices;
    const auto shownFor = [&](const std::string& dialog, const std::string& items) {
        const TemporaryFolder folder;
        const std::int16_t file = OpenResFile(
            folder.Write("r", ResourceFileOf({{"DLOG", 16010, dialog}, {"DITL", 300, items}})));
        EXPECT_GT(file, 0);
        notices.abouts.clear();
        ShowAbout(16010);
        CloseResFile(file);
        return notices.abouts;
    };
    const auto item = [](int type, const std::string& text) {
        return std::string(12, 0) + static_cast<char>(type) + Counted(text);
    };
    const std::string dialog = std::string(18, 0) + Word(300) + '\0';
    const std::string items =
        Word(3) + item(4, "OK") + item(8, "odd") + '\0' + item(8 | 0x80, "even") + item(8, "last");
    EXPECT_EQ(shownFor(dialog, items),
              (std::vector<std::vector<std::string>>{{"odd", "even", "last"}}));
    for (std::size_t cut = 0; cut < items.size(); ++cut)
        EXPECT_TRUE(shownFor(dialog, items.substr(0, cut)).empty()) << "items cut at " << cut;
    for (std::size_t cut = 0; cut < 20; ++cut)
        EXPECT_TRUE(shownFor(dialog.substr(0, cut), items).empty()) << "dialog cut at " << cut;
    EXPECT_TRUE(shownFor(dialog, Word(0xFFFE) + items).empty());
}

TEST(FileDialogs, StartCancelledAndShowAndAcceptOnlyTheTypesAsked) {
    // Chooses a palette, after looking through the filter at a file of each kind.
    struct : StandardFileResponder {
        void PutFile(ConstStr255Param, ConstStr255Param, StandardFileReply*) override { FAIL(); }
        void GetFile(FileFilterProc filter, StandardFileReply* reply) override {
            EXPECT_FALSE(reply->sfGood);
            CInfoPBRec files[4];
            files[0].fdType = FourCC("GIFf");
            files[1].fdType = reply->sfType = FourCC("PAL ");
            files[2].fdFlags = kIsInvisible;
            files[3].ioFlAttrib = kIsDirectory;
            hidden.clear();
            for (CInfoPBRec& file : files) hidden += filter && filter(&file) ? 'h' : 's';
            reply->sfGood = 1;
        }
        std::string hidden;
    } user;
    const FileFilterProc hide = [](ParamBlockRec* file) -> Boolean {
        return (file->fdFlags & kIsInvisible) != 0;
    };
    StandardFileReply reply;
    SetStandardFileResponder(&user);
    for (const auto& [filter, hidden] : {std::pair{hide, "sshs"}, {FileFilterProc{}, "ssss"}}) {
        reply.sfGood = 1;
        StandardGetFile(filter, -1, nullptr, &reply);
        EXPECT_EQ(user.hidden, hidden);
        EXPECT_TRUE(reply.sfGood);
    }
    EXPECT_EQ(SetStandardFileResponder(nullptr), &user);
    reply.sfGood = 1;
    StandardPutFile(nullptr, nullptr, &reply);
    EXPECT_FALSE(reply.sfGood) << "nobody answers";
}

TEST(HueSaturationValue, IsAsComputedByHand) {
    using Triple = std::array<std::uint16_t, 3>;
    const std::pair<Triple, Triple> cases[] = {
        {{0, 0, 0}, {0, 0, 0}},
        {{65535, 65535, 65535}, {0, 0, 65535}},
        {{0, 65535, 0}, {21845, 65535, 65535}},     // 2 * 65536 / 6
        {{65535, 65535, 0}, {10922, 65535, 65535}}, // red before green: 65536 / 6
        {{0, 65535, 65535}, {32768, 65535, 65535}}, // green before blue: 3 * 65536 / 6
        {{65535, 0, 1}, {65535, 65535, 65535}},     // 65536 * 393209 / 393210
        {{1000, 200, 600}, {60074, 52428, 1000}},   // 65536 * 4400 / 4800, 65535 * 800 / 1000
    };
    for (const auto& [rgb, want] : cases) {
        const RGBColor color{rgb[0], rgb[1], rgb[2]};
        HSVColor hsv;
        RGB2HSV(&color, &hsv);
        EXPECT_EQ((Triple{hsv.hue, hsv.saturation, hsv.value}), want)
            << testing::PrintToString(rgb);
    }
}
