// Streams, notices, the about box, the file dialogs' frame and colour conversion.
#include "BigEndian.h"
#include "FaultInjection.h"
#include "FileManager.h"
#include "HostUtilities.h"
#include "ResourceManager.h"
#include "StandardFile.h"
#include "TemporaryFolder.h"

#include <array>
#include <random>

#include <gtest/gtest.h>

namespace {

// A new file, or a device that exists, open for writing.
std::int16_t OpenForWriting(const std::string& path) {
    FSSpec spec;
    EXPECT_EQ(PathToFSSpec(path, &spec), noErr) << path;
    FSpCreate(&spec, 0, 0, 0);
    std::int16_t refNum = 0;
    EXPECT_EQ(FSpOpenDF(&spec, fsWrPerm, &refNum), noErr) << path;
    return refNum;
}

std::string SeededBytes(std::mt19937& random, std::size_t count) {
    std::string bytes(count, 0);
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
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

template <class T> std::string BE(T value) {
    std::array<std::uint8_t, sizeof(T)> bytes;
    PutBE<T>(bytes.data(), value);
    return {bytes.begin(), bytes.end()};
}

struct RawResource {
    const char (&type)[5];
    std::int16_t id;
    std::string data;
};

// A resource file with one resource of each type, no names, no attributes.
std::string ResourceFileOf(const std::vector<RawResource>& resources) {
    const auto count = static_cast<std::uint32_t>(resources.size());
    std::string data, types = BE<std::uint16_t>(static_cast<std::uint16_t>(count - 1)), references;
    for (const RawResource& resource : resources) {
        types += resource.type + BE<std::uint16_t>(0) +
                 BE(static_cast<std::uint16_t>(2 + 8 * count + references.size()));
        references += BE(resource.id) + BE<std::uint16_t>(0xFFFF) +
                      BE(static_cast<std::uint32_t>(data.size())) + BE<std::uint32_t>(0);
        data += BE(static_cast<std::uint32_t>(resource.data.size())) + resource.data;
    }
    const std::string lists = types + references;
    const std::string map = std::string(24, 0) + BE<std::uint16_t>(28) +
                            BE(static_cast<std::uint16_t>(28 + lists.size())) + lists;
    return BE<std::uint32_t>(16) + BE(static_cast<std::uint32_t>(16 + data.size())) +
           BE(static_cast<std::uint32_t>(data.size())) +
           BE(static_cast<std::uint32_t>(map.size())) + data + map;
}

std::string ItemOf(int type, const std::string& text) {
    return std::string(12, 0) + static_cast<char>(type) + static_cast<char>(text.size()) + text;
}

std::vector<std::vector<std::string>> AboutShownFor(const std::string& dialog,
                                                    const std::string& items) {
    const TemporaryFolder folder;
    const std::int16_t file = OpenResFile(
        folder.Write("r", ResourceFileOf({{"DLOG", 16010, dialog}, {"DITL", 300, items}})));
    EXPECT_GT(file, 0);
    RecordingNotices notices;
    ShowAbout(16010);
    CloseResFile(file);
    return notices.abouts;
}

HSVColor ToHSV(std::uint16_t red, std::uint16_t green, std::uint16_t blue) {
    const RGBColor rgb{red, green, blue};
    HSVColor hsv;
    RGB2HSV(&rgb, &hsv);
    return hsv;
}

} // namespace

TEST(Streams, WriteExactlyWhatWasPutInFullBuffers) {
    const TemporaryFolder folder;
    const unsigned seed = 20240229;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::size_t totals[] = {0, 1, 65535, 65536, 65537, 300000};
    const std::size_t steps[] = {1, 2, 255, 70000};
    const long blocks = LiveMemoryBlocks();
    for (const std::size_t total : totals)
        for (const std::size_t step : steps) {
            const std::string bytes = SeededBytes(random, total);
            const std::string name = std::to_string(total) + '-' + std::to_string(step);
            const std::int16_t refNum = OpenForWriting(folder.Path(name));
            FastStream* const stream = FastOpen(refNum, 1);
            ASSERT_NE(stream, nullptr);
            ClearFaults();
            for (std::size_t i = 0; i < total; i += step) {
                const auto count = static_cast<std::int32_t>(std::min(step, total - i));
                ASSERT_EQ(FastWrite(stream, count, &bytes[i]), noErr);
            }
            EXPECT_EQ(FastClose(stream), noErr);
            EXPECT_EQ(FSClose(refNum), noErr);
            EXPECT_EQ(folder.Read(name) == bytes, true) << name;
            EXPECT_EQ(CallsSoFar(FaultPoint::writeFile), static_cast<int>((total + 65535) / 65536))
                << name;
        }
    EXPECT_EQ(LiveMemoryBlocks(), blocks);
}

TEST(Streams, KeepTheirFirstErrorAndWriteNothingMore) {
    const TemporaryFolder folder;
    const std::string buffer(65536, 'x');
    const std::int16_t refNum = OpenForWriting(folder.Path("a"));
    FastStream* const stream = FastOpen(refNum, 1);
    FailNthCall(FaultPoint::writeFile, 2, ioErr);
    EXPECT_EQ(FastWrite(stream, 65536, buffer.data()), noErr);
    EXPECT_EQ(FastWrite(stream, 65536, buffer.data()), noErr);
    EXPECT_EQ(FastWrite(stream, 1, "y"), ioErr);
    FailNthCall(FaultPoint::writeFile, 1, dskFulErr);
    for (const std::int32_t count : {1, 0, 2, 65536, -1})
        EXPECT_EQ(FastWrite(stream, count, buffer.data()), ioErr) << count;
    EXPECT_EQ(FastClose(stream), ioErr);
    EXPECT_EQ(CallsSoFar(FaultPoint::writeFile), 0);
    EXPECT_EQ(TakeCloseError(), noErr) << "it was reported while writing";
    ClearFaults();
    EXPECT_EQ(FSClose(refNum), noErr);
    EXPECT_EQ(folder.Read("a"), buffer);
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

TEST(Streams, AreNullWithoutMemory) {
    FailNthCall(FaultPoint::allocate, 1, memFullErr);
    EXPECT_EQ(FastOpen(1, 1), nullptr);
    ClearFaults();
    EXPECT_EQ(FastOpen(1, 0), nullptr) << "not for reading";
}

TEST(HandleServices, AreAvailableOnlyWhenCompleteElseTheUserIsTold) {
    const HostHandleProcs complete{
        1,
        4,
        [](std::int32_t size) { return NewHandle(size); },
        DisposeHandle,
        [](Handle handle) { return static_cast<std::int32_t>(GetHandleSize(handle)); },
        [](Handle handle, std::int32_t size) { return SetHandleSize(handle, size); }};
    HostHandleProcs cases[7];
    std::fill(std::begin(cases), std::end(cases), complete);
    cases[0].version = 0;
    cases[1].count = 3;
    cases[2].newHandle = nullptr;
    cases[3].disposeHandle = nullptr;
    cases[4].getHandleSize = nullptr;
    cases[5].setHandleSize = nullptr;
    cases[6].version = -1;
    RecordingNotices notices;
    EXPECT_FALSE(WarnHostHandleProcsAvailable(nullptr));
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_FALSE(WarnHostHandleProcsAvailable(&cases[i])) << i;
        EXPECT_EQ(notices.warnings.size(), i + 2) << i;
    }
    HostHandleProcs newer = complete;
    newer.version = 2;
    newer.count = 6;
    for (const HostHandleProcs* procs : std::array<const HostHandleProcs*, 2>{&complete, &newer})
        EXPECT_TRUE(WarnHostHandleProcsAvailable(procs));
    EXPECT_EQ(notices.warnings.size(), 8U) << "silent when all is there";

    const long blocks = LiveMemoryBlocks();
    const Handle handle = complete.newHandle(12);
    EXPECT_EQ(HostGetHandleSize(&complete, handle), 12);
    EXPECT_EQ(HostGetHandleSize(&complete, nullptr), 0);
    HostDisposeHandle(&complete, handle);
    HostDisposeHandle(&complete, nullptr);
    EXPECT_EQ(LiveMemoryBlocks(), blocks);
}

TEST(AboutBox, ShowsTheStaticTextsInTheirOrderAndNothingOfABrokenResource) {
    const std::string dialog = std::string(18, 0) + BE<std::int16_t>(300) + '\0';
    const std::string items = BE<std::int16_t>(3) + ItemOf(4, "OK") + ItemOf(8, "odd") + '\0' +
                              ItemOf(8 | 0x80, "even") + ItemOf(8, "last");
    const std::vector<std::vector<std::string>> want{{"odd", "even", "last"}};
    EXPECT_EQ(AboutShownFor(dialog, items), want);
    for (std::size_t cut = 0; cut < items.size(); ++cut)
        EXPECT_TRUE(AboutShownFor(dialog, items.substr(0, cut)).empty()) << "items cut at " << cut;
    for (std::size_t cut = 0; cut < 20; ++cut)
        EXPECT_TRUE(AboutShownFor(dialog.substr(0, cut), items).empty()) << "dialog cut at " << cut;
    EXPECT_TRUE(AboutShownFor(std::string(18, 0) + BE<std::int16_t>(301), items).empty());
    EXPECT_TRUE(AboutShownFor(dialog, BE<std::int16_t>(-2) + items).empty());
    RecordingNotices notices;
    ShowAbout(16010);
    EXPECT_TRUE(notices.abouts.empty()) << "no resource";
}

namespace {

// Chooses a file of one type, after looking through the filter at a file of each kind.
struct ChoosingUser : StandardFileResponder {
    void PutFile(ConstStr255Param, ConstStr255Param name, StandardFileReply* reply) override {
        before = *reply;
        reply->sfGood = name[0];
    }
    void GetFile(FileFilterProc filter, StandardFileReply* reply) override {
        before = *reply;
        hidden.clear();
        CInfoPBRec files[4];
        files[0].fdType = FourCC("GIFf");
        files[1].fdType = FourCC("PAL ");
        files[2].fdFlags = kIsInvisible;
        files[3].ioFlAttrib = kIsDirectory;
        for (CInfoPBRec& file : files) hidden += filter && filter(&file) ? 'h' : 's';
        reply->sfGood = 1;
        reply->sfType = FourCC("PAL ");
    }
    StandardFileReply before;
    std::string hidden;
};

Boolean HideInvisible(ParamBlockRec* file) {
    return (file->fdFlags & kIsInvisible) != 0;
}

} // namespace

TEST(FileDialogs, StartCancelledAndShowAndAcceptOnlyTheTypesAsked) {
    const OSType palette[] = {FourCC("Q7CO"), FourCC("PAL ")}, none[] = {FourCC("Q7CO"), 0};
    const struct {
        const char* what;
        FileFilterProc filter;
        std::int16_t count;
        const OSType* types;
        const char* hidden;
        bool good;
    } cases[] = {
        {"any type, no filter", nullptr, -1, nullptr, "ssss", true},
        {"any type, filter", HideInvisible, -1, nullptr, "sshs", true},
        {"types, no filter", nullptr, 2, palette, "hshs", true},
        {"other types, filter", HideInvisible, 2, none, "hhhs", false},
        {"other types, no filter", nullptr, 2, none, "hhss", false},
        {"no type", nullptr, 0, nullptr, "hhhs", false},
    };
    StandardFileReply reply;
    reply.sfGood = 1;
    StandardGetFile(nullptr, -1, nullptr, &reply);
    EXPECT_FALSE(reply.sfGood) << "nobody answers";
    ChoosingUser user;
    EXPECT_EQ(SetStandardFileResponder(&user), nullptr);
    for (const auto& c : cases) {
        reply.sfGood = 1;
        StandardGetFile(c.filter, c.count, c.types, &reply);
        EXPECT_FALSE(user.before.sfGood) << c.what;
        EXPECT_EQ(user.hidden, c.hidden) << c.what;
        EXPECT_EQ(reply.sfGood != 0, c.good) << c.what;
    }
    const Str255 name = {1, 'a'};
    StandardPutFile(name, name, &reply);
    EXPECT_FALSE(user.before.sfGood);
    EXPECT_TRUE(reply.sfGood);
    EXPECT_EQ(SetStandardFileResponder(nullptr), &user);
    StandardPutFile(name, name, &reply);
    EXPECT_FALSE(reply.sfGood);
}

TEST(HueSaturationValue, IsAsComputedByHand) {
    const struct {
        std::array<std::uint16_t, 3> rgb, hsv;
    } cases[] = {
        {{0, 0, 0}, {0, 0, 0}},
        {{65535, 65535, 65535}, {0, 0, 65535}},
        {{257, 257, 257}, {0, 0, 257}},
        {{65535, 0, 0}, {0, 65535, 65535}},
        {{0, 65535, 0}, {21845, 65535, 65535}},     // 2 * 65536 / 6
        {{0, 0, 65535}, {43690, 65535, 65535}},     // 4 * 65536 / 6
        {{65535, 65535, 0}, {10922, 65535, 65535}}, // red before green: 65536 / 6
        {{0, 65535, 65535}, {32768, 65535, 65535}}, // green before blue: 3 * 65536 / 6
        {{65535, 0, 65535}, {54613, 65535, 65535}}, // red before blue: 5 * 65536 / 6
        {{65535, 0, 1}, {65535, 65535, 65535}},     // 65536 * 393209 / 393210
        {{1000, 200, 600}, {60074, 52428, 1000}},   // 65536 * 4400 / 4800, 65535 * 800 / 1000
        {{100, 300, 200}, {27306, 43690, 300}},     // 65536 * 500 / 1200, 65535 * 200 / 300
        {{1, 0, 0}, {0, 65535, 1}},
    };
    for (const auto& c : cases) {
        const HSVColor got = ToHSV(c.rgb[0], c.rgb[1], c.rgb[2]);
        EXPECT_EQ((std::array{got.hue, got.saturation, got.value}), c.hsv)
            << c.rgb[0] << ' ' << c.rgb[1] << ' ' << c.rgb[2];
    }
}

TEST(HueSaturationValue, GrowsAlongTheColourCircle) {
    const std::uint16_t low = 1234, high = 54321;
    const std::uint16_t corners[7][3] = {{high, low, low},  {high, high, low}, {low, high, low},
                                         {low, high, high}, {low, low, high},  {high, low, high},
                                         {high, low, low}};
    int last = -1;
    for (int sixth = 0; sixth < 6; ++sixth)
        for (int step = 0; step < 1000; ++step) {
            std::uint16_t at[3];
            for (int c = 0; c < 3; ++c)
                at[c] = static_cast<std::uint16_t>(
                    corners[sixth][c] + (corners[sixth + 1][c] - corners[sixth][c]) * step / 1000);
            const HSVColor got = ToHSV(at[0], at[1], at[2]);
            ASSERT_GT(got.hue, last) << "sixth " << sixth << ", step " << step;
            ASSERT_NEAR(got.hue, (sixth * 1000 + step) * 65536.0 / 6000, 2);
            ASSERT_EQ(got.value, high);
            ASSERT_EQ(got.saturation, 64046); // 65535 * 53087 / 54321
            last = got.hue;
        }
}
