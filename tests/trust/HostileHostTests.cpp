// The loaded module under hosts that keep to nothing: it may refuse and it may write what was asked
// for, but it ends, gives everything back, and does not read or write past what it was given.
#include "DialogRecord.h"
#include "ExportWays.h"
#include "GIF89Export.h"
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
#include <thread>

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
        properties.getProperty = GetProperty;
        host.record.propertyProcs.Set(propertyKey);
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

    /// Sends a selector from inside a call.
    short CallAgain(short selector) {
        short result = kUntouched;
        TheModule().Call(selector, lent, &data, &result);
        return result;
    }
    /// The context, which hosts know nothing of.
    const GIF89ExportContext& Context() const {
        return *reinterpret_cast<const GIF89ExportContext*>(data);
    }

    ScriptedHost host;
    std::deque<Act> acts;
    Advance advance;                              ///< instead of the host's own answer
    std::function<OSErr(Handle* value)> property; ///< answers what has no comment and no names
    HostPropertyProcs properties;
    std::intptr_t data = 0;
    ExportRecord* lent = nullptr; ///< where the record is during a call
    short lastDialog = 0;         ///< the resource id of the latest dialog

  private:
    static OSErr GetProperty(OSType, OSType, std::int32_t, Handle* value) {
        return running->property ? running->property(value) : OSErr{kServiceNotOffered};
    }
    static OSErr AnswerRunning() { return running->Answer(); }
    OSErr Answer() {
        host.record = *lent;
        const OSErr code = advance ? advance(usualAdvance) : usualAdvance();
        *lent = host.record;
        return code;
    }
    Act Next(DialogPtr dialog) {
        if (!dialog) return PickFile(folder.Path("out.gif"));
        lastDialog = dialog->resourceID;
        if (acts.empty()) return PressItem(kOKItem);
        const Act act = acts.front();
        acts.pop_front();
        return act;
    }

    static inline thread_local HostileRun* running = nullptr;
    TemporaryFolder folder;
    ScriptSource user{[this](DialogPtr dialog) { return Next(dialog); }};
    const Answering answering{user};
    AddressKey advanceKey{&AnswerRunning}, propertyKey{&properties};
    AdvanceProc* usualAdvance = nullptr;
};

/// Hands out a text as the host's property.
OSErr HandOut(const std::string& text, Handle* value) {
    *value = NewHandle(static_cast<Size>(text.size()));
    std::copy(text.begin(), text.end(), **value);
    return noErr;
}

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
                if (selector == kSelectorAbout) {
                    EXPECT_EQ(run.lastDialog, 16010);
                }
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
    mayKeep = 1; // the latest comment of an indexed picture
    // Without procedures, and with one missing that the module needs.
    const HostPropertyProcs noProperties;
    HostHandleProcs sizeless = MemoryManagerProcs();
    sizeless.getHandleSize = nullptr;
    const AddressKey noProperty(&noProperties), noSize(&sizeless);
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
        {"opacity no more", Kind::rgbAlpha, [](auto& r) { r.hasTransparency = 0; }, noErr},
        {"planes that are not", Kind::indexed, [](auto& r) { r.planeCount = 300; }, noErr},
        {"planes below 0", Kind::indexed, [](auto& r) { r.planeCount = -32768; }, noErr},
        {"no property procedure", Kind::rgb, [&](auto& r) { r.propertyProcs.Set(noProperty); },
         noErr},
        {"properties without handle services", Kind::indexedWithChannels,
         [](auto& r) { r.handleProcs.Clear(); }, noErr},
        {"properties without a size", Kind::indexed, [&](auto& r) { r.handleProcs.Set(noSize); },
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
        run.property = [](Handle* value) { return HandOut("x", value); };
        EXPECT_EQ(run.Call(kSelectorPrepare), noErr) << c.name;
        EXPECT_EQ(run.Call(kSelectorStart), noErr) << c.name; // nothing of it is kept
        c.change(run.host.record);
        EXPECT_EQ(run.Call(kSelectorStart), c.code) << c.name;
        EXPECT_EQ(run.data != 0, c.code == noErr) << c.name;
        if (run.data != 0) run.Call(kSelectorFinish);
        if (c.code != noErr) continue;
        EXPECT_EQ(run.Decoded().rows, run.host.record.imageRows) << c.name;
        EXPECT_EQ(run.Decoded().columns, run.host.record.imageColumns) << c.name;
        EXPECT_EQ(run.Decoded().transparentIndex >= 0, run.host.record.hasTransparency != 0)
            << c.name;
    }
}

// What is changed from inside stays without effect, or the delivery is refused.
TEST_F(HostileHost, MayDoAnythingInsideItsProcedures) {
    const struct {
        const char* name;
        std::function<void(HostileRun&)> act;
        short code;
        bool ofAnswers = true; ///< done when a request has been answered, else in a property
    } cases[] = {
        {"more rows and columns",
         [](auto& run) { run.lent->imageRows = run.lent->imageColumns = 3000; }, noErr},
        {"no rows", [](auto& run) { run.lent->imageRows = 0; }, noErr},
        {"sides in a property", [](auto& run) { run.lent->imageRows = 3000; }, noErr, false},
        {"other transparency",
         [](auto& run) { run.lent->hasTransparency = !run.lent->hasTransparency; }, noErr},
        {"another mode and planes",
         [](auto& run) { run.lent->imageMode = run.lent->planeCount = 3; }, noErr},
        {"rows below those asked for", [](auto& run) { run.lent->requestRect.bottom = 21; },
         paramErr},
        {"rows above", [](auto& run) { run.lent->requestRect.top = -1; }, paramErr},
        {"columns beside", [](auto& run) { run.lent->requestRect.right = 4000; }, paramErr},
        {"columns to the left", [](auto& run) { run.lent->requestRect.left = -9; }, paramErr},
        {"columns backward", [](auto& run) { run.lent->requestRect.right = -9; }, paramErr},
        {"no services", [](auto& run) { run.host.handleProcs = {}; }, noErr, false},
        {"start inside", [](auto& run) { EXPECT_EQ(run.CallAgain(kSelectorStart), kExportAtWork); },
         noErr},
        {"finish inside",
         [](auto& run) { EXPECT_EQ(run.CallAgain(kSelectorFinish), kExportAtWork); }, noErr},
        {"an unknown one inside", [](auto& run) { EXPECT_EQ(run.CallAgain(99), kExportAtWork); },
         noErr, false},
        {"about inside",
         [](auto& run) {
             run.acts.push_front(PressItem(kOKItem));
             EXPECT_EQ(run.CallAgain(kSelectorAbout), kUntouched);
         },
         noErr},
    };
    mayKeep = 1;
    for (const Kind kind : kKinds)
        for (const auto& c : cases) {
            const auto what = testing::Message() << c.name << ", kind " << static_cast<int>(kind);
            const std::string usual = UsualFile(kind, ChooseChannels(kind));
            HostileRun run(kind);
            run.acts = ChooseChannels(kind);
            run.advance = [&](AdvanceProc* advance) {
                const OSErr code = advance();
                *run.lent = run.host.record;
                if (c.ofAnswers) c.act(run);
                run.host.record = *run.lent;
                return code;
            };
            run.property = [&](Handle* value) {
                if (!c.ofAnswers) c.act(run);
                return HandOut("", value);
            };
            EXPECT_EQ(run.Export(), c.code) << what;
            EXPECT_TRUE(run.File() == (c.code == noErr ? usual : "")) << what;
        }
}

// Run under the thread sanitizer this finds what exports of several threads share.
TEST_F(HostileHost, MayExportOnSeveralThreads) {
    mayKeep = 1;
    const auto exportAll = [] {
        for (int i = 0; i < 5; ++i)
            for (const Kind kind : kKinds) {
                HostileRun run(kind);
                run.property = [](Handle* value) { return HandOut("hello", value); };
                EXPECT_EQ(run.Export(), noErr);
                EXPECT_EQ(run.Decoded().comment, "hello");
            }
    };
    const std::jthread threads[] = {std::jthread(exportAll), std::jthread(exportAll),
                                    std::jthread(exportAll)};
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
    for (const Kind kind : {Kind::rgb, Kind::rgbAlpha, Kind::indexedWithChannels}) {
        const std::string usual = UsualFile(kind);
        const int shortest = IsIndexed(kind) ? 20 : 60; // the first walk wants three planes
        for (const std::int32_t rowBytes : {INT_MIN, -20, -1, 0, 1, shortest - 1})
            for (const int wrong : {1, 2}) {
                HostileRun run(kind);
                if (IsIndexed(kind)) run.acts = {ChooseEntry(kIndexedChannelItem, 2)};
                run.advance = [&](AdvanceProc* advance) {
                    const OSErr code = advance();
                    if (static_cast<int>(run.host.requests.size()) == wrong)
                        run.host.record.returnedRowBytes = rowBytes;
                    return code;
                };
                // A channel that cannot be had is not chosen, and the histogram's walk is not
                // looked at.
                const bool isRefused = wrong == 1;
                EXPECT_EQ(run.Export(), isRefused ? paramErr : noErr) << rowBytes;
                if (isRefused || IsIndexed(kind)) {
                    EXPECT_TRUE(run.File() == (isRefused ? "" : usual)) << rowBytes;
                }
            }
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

// The host serves some requests, if the picture has a side of at most 2, and cancels then.
TEST_F(HostileHost, SidesOfAnySizeEnd) {
    const short sides[] = {-32768, -1, 0, 1, 2, 32767};
    const auto pixels = RandomPixels(PictureKind::noise, 2, 32767, 4, kSeed);
    const AddressKey data(pixels.data());
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
                        cancels = cancels || ++asked > served || isHuge;
                        const auto& record = run.host.record;
                        const int planes = record.requestLastPlane - record.requestFirstPlane + 1;
                        run.host.record.returnedData.Set(data);
                        run.host.record.returnedRowBytes = columns * planes;
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

thread_local std::int32_t propertySize = 0; // what the host says a text's length is

TEST_F(HostileHost, PropertiesMayBeAnything) {
    mayKeep = 1; // the latest comment of an indexed picture
    const std::string large(70000, 'x');
    const struct {
        OSErr code;
        std::string text;
        bool hasHandle;
        std::int32_t size;
        std::string comment;
    } cases[] = {
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
    for (const auto& c : cases)
        for (const Kind kind : kKinds) {
            HostileRun run(kind);
            run.property = [&](Handle* value) {
                if (c.hasHandle) HandOut(c.text, value);
                return c.code;
            };
            propertySize = c.size;
            run.host.handleProcs.getHandleSize = [](Handle) { return propertySize; };
            EXPECT_EQ(run.Call(kSelectorStart), noErr);
            const char* const comment = run.Context().comment;
            run.Call(kSelectorFinish);
            // An indexed picture's comment stays until the next one.
            if (IsIndexed(kind) && comment) {
                EXPECT_EQ(comment, c.comment);
            }
            EXPECT_TRUE(run.Decoded().comment.value_or("") == c.comment)
                << "code " << c.code << ", size " << c.size;
        }
}

} // namespace
} // namespace gif89
