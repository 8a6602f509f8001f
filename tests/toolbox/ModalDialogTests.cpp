// The modal loop: who gets an event first, what counts as a hit, and what happens in between.
#include "DrawDialogs.h"
#include "EventManager.h"
#include "EventQueue.h"
#include "HostDialogs.h"
#include "MemoryManager.h"
#include "ModalDialog.h"
#include "PlainSource.h"
#include "SourceCalls.h"
#include "TestDialog.h"

#include <gtest/gtest.h>

namespace {

using Hits = std::vector<short>;

EventRecord Mouse(std::int16_t what, Point local) {
    EventRecord event;
    event.what = what;
    event.where = local; // dialogs that are not centred lie at the origin
    return event;
}
EventRecord Press(Point local) {
    return Mouse(mouseDown, local);
}
EventRecord Release(Point local) {
    return Mouse(mouseUp, local);
}
EventRecord Key(short code, char character, int modifiers = 0) {
    EventRecord event;
    event.what = keyDown;
    event.message = code << 8 | character;
    event.modifiers = static_cast<std::int16_t>(modifiers);
    return event;
}

// What the filter sees and answers.
std::vector<std::int16_t> seen;
std::function<Boolean(EventRecord*, short*)> answer;

Boolean NotingFilter(DialogPtr, EventRecord* event, short* item) {
    seen.push_back(event->what);
    EXPECT_EQ(*item, 0);
    return answer ? answer(event, item) : Boolean{0};
}

int foreignEvents = 0;
void NoteForeign(const void* event) {
    foreignEvents += static_cast<const EventRecord*>(event)->what == mouseDown;
}

constexpr Point kOnOK = {290, 290}, kOnCancel = {290, 200}, kOnCanvas = {30, 30};

class ModalDialogs : public testing::Test {
  protected:
    ModalDialogs() {
        SetEventSource(&source);
        dialog = GetNewDialog(kTestDialog, nullptr, nullptr);
        SetDialogDefaultItem(dialog, kTestOK);
        SetDialogCancelItem(dialog, kTestCancel);
        ShowWindow(dialog);
        seen.clear();
        answer = nullptr;
        foreignEvents = 0;
    }
    ~ModalDialogs() override {
        DisposeDialog(dialog);
        SetEventSource(nullptr);
    }
    short Run(ModalFilterProc filter = nullptr) {
        short item = -1;
        MoveableModalDialog(dialog, NoteForeign, filter, &item);
        return item;
    }
    /// Hits until all actions are done; the cancel item ends the list.
    Hits RunAll(std::deque<std::function<void()>> actions, ModalFilterProc filter = nullptr) {
        source.hasFailed = false;
        source.actions = std::move(actions);
        Hits hits;
        do hits.push_back(Run(filter));
        while (!source.hasFailed);
        return hits;
    }

    TestDialogResources resources;
    PlainSource source;
    DialogPtr dialog;
};

TEST_F(ModalDialogs, MapKeysToTheDefaultAndCancelItemsWhileTheseAreEnabled) {
    const std::pair<EventRecord, short> cases[] = {
        {Key(kKeyReturn, '\r'), kTestOK},   {Key(kKeyEnter, 3), kTestOK},
        {Key(kKeyEscape, 27), kTestCancel}, {Key(0, '.', cmdKey), kTestCancel},
        {Key(0, '.'), kTestStayOpen},       {Key(0, 'a', cmdKey), kTestStayOpen}};
    for (const auto& [key, item] : cases)
        for (const bool enabled : {true, false}) {
            (enabled ? EnableControl : DisableControl)(dialog, kTestOK);
            (enabled ? EnableControl : DisableControl)(dialog, kTestCancel);
            source.actions = {[&key = key] { PostEvent(key); },
                              [&] { PostItemHit(dialog, kTestStayOpen); }};
            EXPECT_EQ(Run(), enabled ? item : short{kTestStayOpen})
                << "key " << key.message << " enabled " << enabled;
        }
}

TEST_F(ModalDialogs, TrackPressesOnControlsToTheirRelease) {
    const struct {
        const char* name;
        Point press, release;
        Hits hits;
    } cases[] = {{"button", kOnOK, {300, 350}, {kTestOK}},
                 {"released beside it", kOnOK, kOnCancel, {}},
                 {"check box", {25, 225}, {25, 300}, {kTestAutomatic}},
                 {"pop-up", {50, 230}, {50, 230}, {}},
                 {"edit text", {80, 310}, {80, 310}, {}},
                 {"disabled", {236, 60}, {236, 60}, {}},
                 {"static text", {84, 230}, {0, 0}, {kTestLabel}},
                 {"disabled user item", {200, 30}, {0, 0}, {}},
                 {"no item", {270, 10}, kOnOK, {}}};
    const Rect cells = dialog->Item(kTestCells)->rect;
    SetDialogItem(dialog, kTestCells, kItemDisabled, nullptr, &cells);
    dialog->editItem = 0;
    for (const auto& c : cases) {
        const auto press = [&] {
            source.buttonIsDown = true;
            PostEvent(Press(c.press));
        };
        const auto release = [&] {
            source.buttonIsDown = false;
            PostEvent(Release(c.release));
        };
        Hits want = c.hits;
        want.push_back(kTestCancel);
        EXPECT_EQ(RunAll({press, [] {}, release}), want) << c.name;
    }
    EXPECT_EQ(dialog->editItem, kTestNumber) << "the press gave it the keys";
    source.buttonIsDown = true;
    EXPECT_EQ(RunAll({[&] { PostEvent(Press(kOnOK)); }}), Hits(1, kTestCancel)) << "not released";
}

TEST_F(ModalDialogs, LetNativeWidgetsOfferTheirEvents) {
    answer = [](EventRecord* event, short* item) {
        if (event->what == keyDown) *item = kTestUnavailable;
        return static_cast<Boolean>(event->what == keyDown || event->what == mouseUp);
    };
    EXPECT_EQ(RunAll({[&] { EXPECT_FALSE(OfferEvent(dialog, Press(kOnOK))); },
                      [&] { EXPECT_TRUE(OfferEvent(dialog, Release(kOnOK))); },
                      [&] {
                          EXPECT_TRUE(OfferEvent(dialog, Key(0, 'x')));
                          PostItemHit(dialog, kTestOK);
                      }},
                     NotingFilter),
              (Hits{kTestUnavailable, kTestOK, kTestCancel}));
    EXPECT_FALSE(OfferEvent(dialog, Key(0, 'x'))) << "no loop runs";
}

// A filter that follows a drag is not entered again by keys typed meanwhile.
TEST_F(ModalDialogs, OfferNothingToAFilterThatIsAtWork) {
    int depth = 0, keys = 0;
    answer = [&](EventRecord* event, short*) {
        EXPECT_EQ(depth++, 0);
        while (event->what == mouseDown && StillDown()) {
        }
        keys += event->what == keyDown;
        --depth;
        return static_cast<Boolean>(event->what == mouseDown);
    };
    source.buttonIsDown = true;
    EXPECT_EQ(RunAll({[&] { PostEvent(Press(kOnCanvas)); },
                      [&] { EXPECT_TRUE(OfferEvent(dialog, Key(0, 'x'))); },
                      [&] { PostEvent(Release(kOnCanvas)); }, [] {}},
                     NotingFilter),
              (Hits{0, kTestCancel}));
    EXPECT_EQ(keys, 1);
}

TEST_F(ModalDialogs, RunInsideEachOtherAndKeepTheirHitsApart) {
    DialogPtr inner = nullptr;
    Hits innerHits;
    answer = [&](EventRecord* event, short*) {
        if (event->what != mouseDown) return Boolean{0};
        inner = GetNewDialog(kTestDialog, nullptr, nullptr);
        ShowWindow(inner);
        for (short item = 0; item != kTestOK; innerHits.push_back(item))
            MoveableModalDialog(inner, nullptr, nullptr, &item);
        PostItemHit(inner, kTestCancel);
        DisposeDialog(inner);
        return Boolean{0};
    };
    EXPECT_EQ(RunAll({[&] { PostEvent(Press(kOnCanvas)); },
                      [&] {
                          PostItemHit(dialog, kTestStayOpen);
                          PostItemHit(inner, kTestLabel);
                          EXPECT_FALSE(OfferEvent(inner, Key(0, 'x'))) << "it has no filter";
                      },
                      [&] { PostItemHit(inner, kTestOK); }},
                     NotingFilter),
              (Hits{kTestCanvas, kTestStayOpen, kTestCancel}));
    EXPECT_EQ(innerHits, (Hits{kTestLabel, kTestOK}));
}

TEST_F(ModalDialogs, HandPressesElsewhereToTheEventProcedure) {
    const DialogPtr other = GetNewDialog(kTestDialog, nullptr, nullptr); // DialogAt's answer
    EXPECT_EQ(RunAll({[&] { PostEvent(Press(kOnOK)); }}), Hits(1, kTestCancel));
    EXPECT_EQ(foreignEvents, 1);
    DisposeDialog(other);
}

TEST_F(ModalDialogs, EndWithCancelWithoutAWorkingSource) {
    source.hasFailed = true;
    source.buttonIsDown = true;
    EXPECT_EQ(Run(), kTestCancel);
    EXPECT_FALSE(StillDown());
    KeyMap keys;
    GetKeys(keys);
    EXPECT_EQ(keys[kKeyOption >> 3], 0);
    SetEventSource(nullptr);
    EXPECT_EQ(Run(), kTestCancel);
    SetDialogCancelItem(dialog, 0);
    EXPECT_EQ(Run(), 1);
    EXPECT_FALSE(StillDown());
    EventRecord event;
    EXPECT_FALSE(GetNextEvent(-1, &event));
    WindowPtr window = dialog;
    EXPECT_EQ(FindWindow({10, 10}, &window), 0);
}

TEST_F(ModalDialogs, FollowThePressOfTheButtonUntilItsReleaseWaits) {
    EventRecord event;
    source.buttonIsDown = true;
    const auto down = [&](const std::function<void()>& meanwhile) {
        source.actions = {meanwhile};
        return StillDown() != 0;
    };
    DrawInvalidItems();
    source.changes.clear();
    InvalItem(dialog, kTestScale);
    EXPECT_TRUE(down([] {}));
    EXPECT_EQ(source.changes, std::vector<std::string>{"6 look"}) << "drawn while it is held";
    EXPECT_TRUE(down([&] { PostItemHit(dialog, kTestOK); })) << "hits do not end a press";
    EXPECT_FALSE(down([] { PostEvent(Release({7, 8})); }));
    const int pumps = source.pumps;
    EXPECT_FALSE(StillDown());
    EXPECT_EQ(source.pumps, pumps) << "nothing to wait for";
    PostEvent(Key(0, 'x'));
    EXPECT_TRUE(GetNextEvent(mUpMask, &event));
    EXPECT_EQ(event.where, (Point{7, 8}));
    EXPECT_FALSE(GetNextEvent(mUpMask, &event)) << "the key stays";
    EXPECT_EQ(event.what, nullEvent);
    EXPECT_FALSE(down([] { PostEvent(Press({1, 1})); })) << "a second press";
    EXPECT_TRUE(GetNextEvent(-1, &event));
    EXPECT_EQ(event.what, keyDown) << "not the hit, which waits before it";
}

} // namespace
