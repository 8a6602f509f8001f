// The loaded module under hosts that keep to nothing: it may refuse and it may write what was asked
// for, but it ends, gives everything back, and does not read or write past what it was given.
#include "ExportWays.h"
#include "GiflibDecode.h"
#include "MemoryManager.h"
#include "ModuleResources.h"
#include "RandomPictures.h"
#include "ScriptedHost.h"
#include "TheModule.h"

#include <gtest/gtest.h>

#include <climits>
#include <deque>
#include <functional>
#include <memory>

namespace gif89 {
namespace {

constexpr short kUntouched = 12345;
constexpr std::uint32_t kSeed = 21;

enum class Kind : std::uint8_t { rgb, rgbAlpha, indexed, indexedWithChannels };
constexpr Kind kKinds[] = {Kind::rgb, Kind::rgbAlpha, Kind::indexed, Kind::indexedWithChannels};
constexpr int kPlanes[] = {3, 4, 1, 3};

bool IsIndexed(Kind kind) {
    return kind >= Kind::indexed;
}

/// One export. The user plays `acts`, presses OK, and saves, over a file if there is one. Every
/// call of the module gets a record that lies elsewhere than the one before.
class HostileRun {
  public:
    using Advance = std::function<OSErr(AdvanceProc* usual)>;

    explicit HostileRun(Kind kind, int rows = 20, int columns = 20)
        : host(rows, columns, kPlanes[static_cast<int>(kind)],
               RandomPixels(PictureKind::noise, rows, columns, kPlanes[static_cast<int>(kind)],
                            kSeed)) {
        if (IsIndexed(kind)) host.record.imageMode = kIndexedColorMode;
        usualAdvance = host.record.advanceProc.Get();
        host.record.advanceProc.Set(advanceKey);
        running = this;
    }
    HostileRun(const HostileRun&) = delete;
    HostileRun& operator=(const HostileRun&) = delete;
    ~HostileRun() {
        EXPECT_EQ(user.Failure(), "");
        EXPECT_EQ(data, 0);
    }

    /// The result word, which starts as kUntouched.
    short Call(short selector) {
        const auto moved = std::make_unique<ExportRecord>(host.record);
        lent = moved.get();
        short result = kUntouched;
        TheModule().Call(selector, lent, &data, &result);
        host.record = *moved;
        lent = nullptr;
        return result;
    }
    /// All calls of an export; the first code that is not 0.
    short Export() {
        for (const short selector : {kSelectorPrepare, kSelectorStart, kSelectorContinue})
            if (const short code = Call(selector)) return code;
        Call(kSelectorFinish);
        return noErr;
    }
    std::string File() const { return folder.Read("out.gif"); }
    GiflibPicture Decoded() const {
        std::string reason;
        const auto picture = GiflibDecode(folder.ReadBytes("out.gif"), &reason);
        EXPECT_TRUE(picture) << reason;
        return picture.value_or(GiflibPicture());
    }

    ScriptedHost host;
    std::deque<Act> acts;
    Advance advance; ///< instead of the host's own answer, if there is one
    std::intptr_t data = 0;

  private:
    static OSErr AnswerRunning() { return running->Answer(); }
    OSErr Answer() {
        host.record = *lent;
        const OSErr code = advance ? advance(usualAdvance) : usualAdvance();
        *lent = host.record;
        return code;
    }
    Act Next(DialogPtr dialog) {
        if (!dialog) return PickFile(folder.Path("out.gif"));
        if (acts.empty()) return PressItem(kOKItem);
        const Act act = acts.front();
        acts.pop_front();
        return act;
    }

    static inline HostileRun* running = nullptr;
    TemporaryFolder folder;
    ScriptSource user{[this](DialogPtr dialog) { return Next(dialog); }};
    const Answering answering{user};
    AddressKey advanceKey{&AnswerRunning};
    AdvanceProc* usualAdvance = nullptr;
    ExportRecord* lent = nullptr;
};

class HostileHost : public testing::Test {
  protected:
    ~HostileHost() override { EXPECT_LE(LiveMemoryBlocks() - blocks, mayKeep); }
    long blocks = (TheModule(), LiveMemoryBlocks());
    long mayKeep = 0;
};

// What the module writes for a host that does nothing wrong.
std::string UsualFile(Kind kind, const std::deque<Act>& acts = {}) {
    HostileRun run(kind);
    run.acts = acts;
    EXPECT_EQ(run.Export(), noErr);
    EXPECT_NE(run.File(), "");
    return run.File();
}

/// Has each channel fetched, where there are any.
std::deque<Act> ChooseChannels(Kind kind) {
    if (kind != Kind::indexedWithChannels) return {};
    return {ChooseEntry(kIndexedChannelItem, 2), ChooseEntry(kIndexedChannelItem, 3)};
}

TEST_F(HostileHost, AnySequenceOfSelectorsIsServed) {
    const short selectors[] = {kSelectorAbout,  kSelectorStart,   kSelectorContinue,
                               kSelectorFinish, kSelectorPrepare, 5};
    constexpr int kLength = 4;
    int sequences = 0;
    for (const Kind kind : {Kind::rgbAlpha, Kind::indexedWithChannels}) {
        const std::string usual = UsualFile(kind);
        const std::int32_t need = (IsIndexed(kind) ? 400 : 131072 + 20 * 12 + 24) + 65536;
        for (int number = 0; number < 6 * 6 * 6 * 6; ++number, ++sequences) {
            HostileRun run(kind);
            run.host.record.memoryBudget = 2 * need + need / 2; // the third prepare is too many
            std::string calls;
            bool lives = false, wrote = false;
            for (int i = 0, left = number, prepared = 0; i < kLength; ++i, left /= 6) {
                const short selector = selectors[left % 6];
                calls += std::to_string(selector) + ' ';
                short expected = kUntouched;
                if (selector == kSelectorPrepare) expected = ++prepared <= 2 ? noErr : memFullErr;
                if (selector == kSelectorStart || selector == kSelectorContinue) expected = noErr;
                EXPECT_EQ(run.Call(selector), expected) << calls;
                wrote = wrote || selector == kSelectorStart;
                if (selector != kSelectorAbout)
                    lives = expected == noErr; // finish, an unknown one and an error end it
                EXPECT_EQ(run.data != 0, lives) << calls;
            }
            if (lives) run.Call(kSelectorFinish);
            EXPECT_TRUE(run.File() == (wrote ? usual : "")) << calls;
        }
    }
    std::printf("%d sequences of %d selectors\n", sequences, kLength);
}

TEST_F(HostileHost, MayChangeItsRecordBetweenPrepareAndStart) {
    HostPropertyProcs procedures[2]; // without one, and with one that answers
    procedures[1].getProperty = [](OSType, OSType, std::int32_t, Handle* value) {
        *value = NewHandle(1);
        return OSErr{noErr};
    };
    const AddressKey noProperty(&procedures[0]), property(&procedures[1]);
    const struct {
        const char* name;
        Kind kind;
        std::function<void(ExportRecord&)> change;
        short code;
    } cases[] = {
        // A context keeps to what it was made for, and takes its sizes from the record of the call.
        {"RGB becomes indexed", Kind::rgb, [](auto& r) { r.imageMode = kIndexedColorMode; }, noErr},
        {"indexed becomes RGB", Kind::indexed, [](auto& r) { r.imageMode = kRGBColorMode; }, noErr},
        {"no mode", Kind::indexed, [](auto& r) { r.imageMode = 77; }, noErr},
        {"fewer rows", Kind::rgbAlpha, [](auto& r) { r.imageRows = 3; }, noErr},
        {"fewer columns", Kind::indexed, [](auto& r) { r.imageColumns = 3; }, noErr},
        {"more rows than there are", Kind::rgb, [](auto& r) { r.imageRows = 3000; }, paramErr},
        {"more columns", Kind::indexed, [](auto& r) { r.imageColumns = 3000; }, paramErr},
        {"opacity that is not there", Kind::rgb, [](auto& r) { r.hasTransparency = -1; }, paramErr},
        {"planes that are not", Kind::indexed, [](auto& r) { r.planeCount = 300; }, noErr},
        {"planes below 0", Kind::indexed, [](auto& r) { r.planeCount = -32768; }, noErr},
        {"no property procedure", Kind::rgb, [&](auto& r) { r.propertyProcs.Set(noProperty); },
         noErr},
        {"properties without handle services", Kind::indexedWithChannels,
         [&](auto& r) {
             r.propertyProcs.Set(property);
             r.handleProcs.Clear();
         },
         noErr},
        {"no way to ask", Kind::rgb, [](auto& r) { r.advanceProc.Clear(); }, paramErr},
        {"no way to ask", Kind::indexed, [](auto& r) { r.advanceProc.Clear(); }, paramErr},
        {"keys to nothing", Kind::rgb,
         [](auto& r) {
             const AddressKey gone(nullptr);
             r.eventProc.Set(gone);
             r.colorServicesProc.Set(gone);
             r.propertyProcs.Set(gone);
             r.handleProcs.Set(gone);
         },
         noErr},
    };
    for (const auto& c : cases) {
        HostileRun run(c.kind);
        EXPECT_EQ(run.Call(kSelectorPrepare), noErr) << c.name;
        c.change(run.host.record);
        EXPECT_EQ(run.Call(kSelectorStart), c.code) << c.name;
        EXPECT_EQ(run.data != 0, c.code == noErr) << c.name;
        if (run.data != 0) run.Call(kSelectorFinish);
        if (c.code != noErr) continue;
        EXPECT_EQ(run.Decoded().rows, run.host.record.imageRows) << c.name;
        EXPECT_EQ(run.Decoded().columns, run.host.record.imageColumns) << c.name;
    }
}

TEST_F(HostileHost, RowsMayLieAnyDistanceApart) {
    const std::function<int(int)> distances[] = {
        [](int) { return 1; }, [](int) { return 4099; },
        [](int request) { return request * 7 % 13; }, // another one with each plane and each pass
        [](int request) { return request % 2 ? 40000 : 0; }};
    for (const Kind kind : kKinds) {
        const std::deque<Act> acts = ChooseChannels(kind);
        const std::string usual = UsualFile(kind, acts);
        for (const auto& distance : distances) {
            HostileRun run(kind);
            run.acts = acts;
            run.advance = [&](AdvanceProc* advance) {
                run.host.extraRowBytes = distance(static_cast<int>(run.host.requests.size()));
                return advance();
            };
            EXPECT_EQ(run.Export(), noErr);
            EXPECT_TRUE(run.File() == usual)
                << "kind " << static_cast<int>(kind) << ", " << distance(1) << " more";
        }
    }
}

TEST_F(HostileHost, RowsThatAreNotThereAreRefused) {
    const std::string usual = UsualFile(Kind::indexedWithChannels);
    for (const std::int32_t rowBytes : {INT_MIN, -20, -1, 0, 1, 19})
        for (const int wrong : {1, 2}) {
            HostileRun run(Kind::indexedWithChannels);
            run.acts = {ChooseEntry(kIndexedChannelItem, 2)};
            run.advance = [&](AdvanceProc* advance) {
                const OSErr code = advance();
                if (static_cast<int>(run.host.requests.size()) == wrong)
                    run.host.record.returnedRowBytes = rowBytes;
                return code;
            };
            // A channel that cannot be had is not chosen.
            EXPECT_EQ(run.Export(), wrong == 1 ? paramErr : noErr) << rowBytes;
            EXPECT_TRUE(run.File() == (wrong == 1 ? "" : usual)) << rowBytes;
        }
    for (const Kind kind : kKinds) {
        HostileRun run(kind);
        run.advance = [&](AdvanceProc* advance) {
            const OSErr code = advance();
            run.host.record.returnedData.Clear();
            return code;
        };
        EXPECT_EQ(run.Export(), paramErr) << static_cast<int>(kind);
    }
}

// 7 rows of 5 columns, without prepare, so that the budget is what one request may deliver.
TEST_F(HostileHost, AnyBudgetEndsIfTheHostEndsWhatNeverWould) {
    constexpr int kRowCost = 5 * 2; // one plane less than is delivered
    const struct {
        std::int32_t budget;
        short code;
        std::vector<std::pair<int, int>> bands; // of one pass
    } cases[] = {
        {-1, ScriptedHost::kSameRequestTooOften, {}},
        {kRowCost - 1, ScriptedHost::kSameRequestTooOften, {}},
        // A row in a band leaves nothing of it; two leave the first.
        {kRowCost, noErr, {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}, {6, 6}}},
        {2 * kRowCost, noErr, {{0, 1}, {2, 3}, {4, 5}, {6, 7}}},
        {7 * kRowCost - 1, noErr, {{0, 5}, {6, 7}}},
        {7 * kRowCost, noErr, {{0, 6}}},
        {8 * kRowCost, noErr, {{0, 7}}},
        {INT_MAX, noErr, {{0, 7}}},
        {INT_MIN, noErr, {{0, 7}}}, // the row count is compared without its sign
    };
    for (const auto& c : cases) {
        HostileRun run(Kind::rgb, 7, 5);
        run.host.record.memoryBudget = c.budget;
        EXPECT_EQ(run.Call(kSelectorStart), c.code) << c.budget;
        if (c.code == noErr) {
            run.Call(kSelectorFinish);
            EXPECT_EQ(run.Decoded().rows, 7) << c.budget;
        }
        std::vector<std::pair<int, int>> bands;
        for (const HostRequest& request : run.host.requests)
            if (bands.size() < c.bands.size())
                bands.emplace_back(request.rect.top, request.rect.bottom);
        EXPECT_EQ(bands, c.bands) << c.budget;
    }
    HostileRun pixels(Kind::rgb, 7, 1); // bands of one pixel
    pixels.host.record.memoryBudget = 2 * 2;
    EXPECT_EQ(pixels.Call(kSelectorStart), noErr);
    EXPECT_EQ(pixels.Call(kSelectorFinish), kUntouched);
    EXPECT_EQ(pixels.Decoded().rows, 7);
    for (const HostRequest& request : pixels.host.requests)
        EXPECT_EQ(request.rect.bottom - request.rect.top, 1) << request.rect.top;
}

// The host serves some requests, with the same row for all rows of a picture, and cancels then.
TEST_F(HostileHost, SidesOfAnySizeEnd) {
    const short sides[] = {-32768, -1, 0, 1, 2, 32767};
    const auto row = RandomPixels(PictureKind::noise, 1, 32767, 4, kSeed);
    const AddressKey data(row.data());
    int exports = 0;
    for (const Kind kind : kKinds)
        for (const short rows : sides)
            for (const short columns : sides)
                for (const int served : {0, 1, 9}) {
                    const bool isHuge = rows > 2 && columns > 2;
                    HostileRun run(kind, 1, 1);
                    run.host.record.imageRows = rows;
                    run.host.record.imageColumns = columns;
                    bool cancels = false;
                    int asked = 0;
                    run.advance = [&](AdvanceProc*) {
                        const bool hasRows = !isHuge && (rows == 1 || !IsIndexed(kind));
                        cancels = cancels || ++asked > served || !hasRows;
                        run.host.record.returnedData.Set(data);
                        run.host.record.returnedRowBytes = IsIndexed(kind) ? columns : 0;
                        return cancels ? OSErr{userCanceledErr} : OSErr{noErr};
                    };
                    const short code = run.Export();
                    const bool isPicture = rows > 0 && columns > 0;
                    EXPECT_EQ(code, !isPicture ? paramErr
                                    : cancels  ? userCanceledErr
                                               : noErr)
                        << rows << " x " << columns << ", kind " << static_cast<int>(kind);
                    EXPECT_EQ(asked > 0, isPicture) << rows << " x " << columns;
                    EXPECT_GE(run.host.record.memoryBudget, 0) << columns; // was INT_MAX
                    ++exports;
                }
    std::printf("%d sizes and answers\n", exports);
}

TEST_F(HostileHost, AnyAnswerEndsTheExportAsItIs) {
    constexpr short kCodes[] = {1, 2, 255, 256, 32767, -1, -108, -128, -30900, -32768};
    // What is passed over: a count of 1 means too many colours, the histogram's walk is not looked
    // at, and a channel that cannot be had is not chosen.
    const auto passedOver = [](Kind kind, int request, short code) {
        return IsIndexed(kind) ? request > 1 : request == 2 || (request == 1 && code == 1);
    };
    int failures = 0;
    for (const Kind kind : kKinds) {
        const std::deque<Act> acts = ChooseChannels(kind);
        HostileRun usual(kind);
        usual.acts = acts;
        usual.Export();
        const int requests = static_cast<int>(usual.host.requests.size());
        for (int n = 1; n <= requests; ++n)
            for (const short code : kCodes) {
                HostileRun run(kind);
                run.acts = acts;
                run.host.failAt = n;
                run.host.failCode = code;
                const bool goesOn = passedOver(kind, n, code);
                const auto what = testing::Message() << "kind " << static_cast<int>(kind)
                                                     << ", request " << n << ", code " << code;
                EXPECT_EQ(run.Export(), goesOn ? short{noErr} : code) << what;
                EXPECT_EQ(run.File() != "", goesOn) << what;
                EXPECT_EQ(run.host.requests.size(), goesOn ? requests : n) << what;
                // An index plane that does not come leaves its request standing.
                EXPECT_EQ(run.host.record.requestRect.bottom, goesOn || !IsIndexed(kind) ? 0 : 20)
                    << what;
                ++failures;
            }
    }
    std::printf("%d failing requests\n", failures);
}

struct OddProperty {
    OSErr code;
    std::string text;
    bool hasHandle;
    std::int32_t size; // what the host says the text's length is
    std::string comment;
};
const OddProperty* theProperty = nullptr;

TEST_F(HostileHost, PropertiesMayBeAnything) {
    mayKeep = 1; // the latest comment of an indexed picture
    const std::string large(70000, 'x');
    const OddProperty cases[] = {
        {noErr, "hello", true, 5, "hello"},
        {noErr, "hello", true, 3, "hel"},
        {noErr, "hello", true, 0, ""},
        {noErr, "hello", true, INT_MIN, ""},
        {noErr, std::string("he\0lo", 5), true, 5, "he"},
        {noErr, large, true, 70000, large},
        {noErr, "", false, 5, ""},
        {1, "hello", false, 5, ""},
        {kServiceNotOffered, "hello", false, 5, ""},
    };
    for (const OddProperty& c : cases)
        for (const Kind kind : kKinds) {
            HostileRun run(kind);
            theProperty = &c;
            HostPropertyProcs properties;
            properties.getProperty = [](OSType, OSType, std::int32_t, Handle* value) {
                if (theProperty->hasHandle) {
                    *value = NewHandle(static_cast<Size>(theProperty->text.size()));
                    std::copy(theProperty->text.begin(), theProperty->text.end(), **value);
                }
                return theProperty->code;
            };
            const AddressKey key(&properties);
            run.host.record.propertyProcs.Set(key);
            run.host.handleProcs.getHandleSize = [](Handle) { return theProperty->size; };
            EXPECT_EQ(run.Export(), noErr);
            EXPECT_TRUE(run.Decoded().comment.value_or("") == c.comment)
                << "code " << c.code << ", size " << c.size;
        }
}

} // namespace
} // namespace gif89
