// A script in the place of a user: the session of the test dialog, every refusal, time and answers.
#include "EventManager.h"
#include "HostDialogs.h"
#include "MemoryManager.h"
#include "ModalDialog.h"
#include "ScriptSource.h"
#include "TemporaryFolder.h"
#include "TestDialog.h"

#include <gtest/gtest.h>

namespace {

class Scripts : public testing::Test {
  protected:
    Scripts() : before(LiveMemoryBlocks()) {}
    ~Scripts() override {
        SetEventSource(nullptr);
        SetStandardFileResponder(nullptr);
        EXPECT_EQ(LiveMemoryBlocks(), before) << "blocks were left over";
    }
    TestDialogLog Run(ScriptSource& script) {
        SetEventSource(&script);
        return RunTestDialog();
    }
    TestDialogResources resources;
    long before;
};

TEST_F(Scripts, PlayTheWholeSessionTheSameEachTime) {
    for (int round = 0; round < 2; ++round) {
        ScriptSource script(TestSession());
        EXPECT_EQ(Run(script), TestSessionLog()) << "round " << round;
        EXPECT_EQ(script.Failure(), "");
    }
}

TEST_F(Scripts, EndTheDialogWithOneSentenceWhenAnActCannotBe) {
    const std::pair<Act, const char*> cases[] = {
        {PressItem(99), "press item 99 in dialog 9000: there is no such item."},
        {PressItem(kTestUnavailable), "press item 14 in dialog 9000: it is disabled."},
        {PressItem(kTestGroup), "press item 13 in dialog 9000: no point of it can be pressed."},
        {SetText(kTestOK, "x"), "set the text of item 1 in dialog 9000: it is no edit text."},
        {ChooseEntry(kTestOK, 1), "choose entry 1 in item 1 in dialog 9000: it is no pop-up."},
        {ChooseEntry(kTestColours, 4), "choose entry 4 in item 4 in dialog 9000: its menu has no "
                                       "such entry that can be chosen."},
        {ChooseEntry(kTestColours, "Three"),
         "choose \"Three\" in item 4 in dialog 9000: its menu has no such entry that can be "
         "chosen."},
        {Drag({}), "drag in dialog 9000: no point is given."},
        {HoldKey(128), "hold key 128 in dialog 9000: keys are numbered from 0 to 127."},
        {CancelColor(), "cancel a colour dialog in dialog 9000: nothing asks for it."}};
    for (const auto& [act, reason] : cases) {
        // Option is held: a dialog that only resets on Cancel would never end.
        ScriptSource script({HoldKey(kKeyOption), act, PressItem(kTestStayOpen)});
        EXPECT_EQ(Run(script), (TestDialogLog{"hit 2", "cancelled"}));
        EXPECT_EQ(script.Failure(), std::string("The script cannot ") + reason);
    }
    const std::pair<std::vector<Act>, const char*> endings[] = {
        {{FailScript("Enough.")}, "Enough."},
        {{FailScript("")}, "The script failed."},
        {{}, "The script ran out of acts while dialog 9000 was waiting."}};
    for (const auto& [acts, reason] : endings) {
        ScriptSource script(acts);
        Run(script);
        EXPECT_EQ(script.Failure(), reason);
    }
    int asked = 0;
    ScriptSource endless([&](DialogPtr) {
        ++asked;
        return Idle(1);
    });
    EXPECT_EQ(Run(endless), (TestDialogLog{"hit 2", "cancelled"}));
    EXPECT_EQ(asked, 100000);
    EXPECT_EQ(endless.Failure(), "The script played 100000 acts in dialog 9000 without ending it.");
}

// What a filter sees that looks for more events by itself.
struct Watch {
    bool isInFilter = false;
    int nullEvents = 0; ///< since the last act
    Point nullPlace;    ///< of the last null event
    std::vector<EventRecord> presses;
    int releases = 0;
} watch;

Boolean WatchingFilter(DialogPtr, EventRecord* event, short*) {
    watch.isInFilter = true;
    EventRecord taken;
    if (event->what == nullEvent) {
        ++watch.nullEvents;
        watch.nullPlace = event->where;
    }
    if (event->what == mouseDown) {
        watch.presses.push_back(*event);
        EXPECT_EQ(watch.nullPlace, event->where) << "the mouse rested where it pressed";
    } else {
        GetNextEvent(1 << autoKey, &taken);
    }
    watch.releases += event->what == mouseUp;
    watch.isInFilter = false;
    return 0;
}

/// Until that item is hit or the script fails.
void RunWatched(ScriptSource& script, short item) {
    SetEventSource(&script);
    const DialogPtr dialog = GetNewDialog(kTestDialog, nullptr, nullptr);
    ShowWindow(dialog);
    for (short hit = -1; hit != item && script.Failure().empty();)
        MoveableModalDialog(dialog, nullptr, WatchingFilter, &hit);
    DisposeDialog(dialog);
}

TEST_F(Scripts, BeginActsOutsideOfFiltersAndAfterANullEvent) {
    watch = {};
    const std::vector<Act> acts = {PressAt(CanvasPoint(1, 1)), PressAt(CellPoint(1, 1)),
                                   HoldKey(kKeyShift), TypeText("12"), PressKey(kKeyEscape)};
    std::size_t asked = 0;
    ScriptSource script([&](DialogPtr) {
        EXPECT_FALSE(watch.isInFilter) << "act " << asked;
        EXPECT_GT(watch.nullEvents, 0) << "act " << asked;
        watch.nullEvents = 0;
        return asked < acts.size() ? acts[asked++] : FailScript("done");
    });
    RunWatched(script, kTestOK);
    EXPECT_EQ(asked, acts.size());
    EXPECT_EQ(watch.presses.size(), 2U);
    EXPECT_EQ(watch.releases, 2);
}

TEST_F(Scripts, LetGoOfTheButtonWhenTheDialogCloses) {
    watch = {};
    ScriptSource script({PressAt(CellPoint(1, 1)), PressAt(CanvasPoint(1, 1))});
    RunWatched(script, kTestCells); // closes on the press
    EXPECT_FALSE(script.ButtonDown());
    RunWatched(script, kTestCanvas);
    EXPECT_EQ(watch.presses.size(), 2U);
    EXPECT_EQ(watch.releases, 0);
    EXPECT_EQ(script.Failure(), "");
}

TEST_F(Scripts, PressTwiceInTheTimeOfADoubleClickUnlessTheyIdle) {
    watch = {};
    ScriptSource script({PressAt({160, 130}), PressAt({160, 130}), Idle(40), PressAt({160, 130})});
    RunWatched(script, kTestOK);
    ASSERT_EQ(watch.presses.size(), 3U);
    EXPECT_LT(watch.presses[1].when, watch.presses[0].when + GetDblTime());
    EXPECT_GT(watch.presses[2].when, watch.presses[1].when + GetDblTime());
    ScriptSource next(std::vector<Act>{});
    SetEventSource(&next);
    EXPECT_GT(TickCount(), watch.presses[2].when + GetDblTime())
        << "a new script is no second click";
}

TEST_F(Scripts, TypeIntoTheEditTextThatTakesKeys) {
    const struct {
        std::vector<Act> acts;
        const char* text;
    } cases[] = {
        {{TypeText("9")}, "9"}, // the text of a new dialog is selected
        {{PressItem(kTestNumber), TypeText("9")}, "169"},
        {{PressItem(kTestNumber), PressKey(kKeyDelete), PressKey(kKeySpace)}, "1 "},
        {{PressKey(kKeyDelete), PressKey(kKeyDelete), TypeText("\xC3\xA9x\xE2\x82\xAC\b\bz")},
         "\xC3\xA9z"},
        {{TypeText("4"), PressItem(kTestLabel), TypeText("5")}, "5"},
        {{SetText(kTestNumber, "1"), TypeText("2")}, "12"},
        {{HoldKey(kKeyCommand), TypeText("x"), ReleaseKey(kKeyCommand)}, "16"},
    };
    for (const auto& c : cases) {
        std::vector<Act> acts = c.acts;
        std::string text;
        ScriptSource script([&](DialogPtr dialog) {
            text = dialog->Item(kTestNumber)->text;
            if (acts.empty()) return PressKey(kKeyEscape);
            const Act act = acts.front();
            acts.erase(acts.begin());
            return act;
        });
        Run(script);
        EXPECT_EQ(text, c.text) << "case " << &c - cases;
        EXPECT_EQ(script.Failure(), "");
    }
    ScriptSource ending({PressItem(kTestStayOpen), TypeText("33\r")});
    EXPECT_EQ(Run(ending).back(), "number 33");
    ScriptSource command({HoldKey(kKeyCommand), TypeText(".")});
    EXPECT_EQ(Run(command).back(), "cancelled");
}

TEST_F(Scripts, GoOnInTheNextDialogWithTheActsThatAreLeft) {
    ScriptSource script({PressItem(kTestStayOpen), SetText(kTestNumber, "1"), PressKey(kKeyReturn),
                         TypeText("44"), PressKey(kKeyReturn), PressItem(kTestCancel)});
    EXPECT_EQ(Run(script).back(), "number 44");
    EXPECT_EQ(script.Alerts(),
              std::vector<std::string>{"Please enter a whole number from 2 to 256."});
    EXPECT_EQ(RunTestDialog(), (TestDialogLog{"hit 2", "cancelled"}));
    EXPECT_EQ(script.Failure(), "");
}

TEST_F(Scripts, PressAnItemWhereNothingLiesOverIt) {
    ScriptSource script({PressItem(kTestStayOpen), PressItem(kTestOK)});
    SetEventSource(&script);
    const DialogPtr dialog = GetNewDialog(kTestDialog, nullptr, nullptr);
    // OK covers all of "Stay open" but its right column, then all of it.
    Rect cover = dialog->Item(kTestStayOpen)->rect;
    --cover.right;
    SetDialogItem(dialog, kTestOK, kButtonItem,
                  reinterpret_cast<Handle>(dialog->Item(kTestOK)->control), &cover);
    ShowWindow(dialog);
    short item = 0;
    MoveableModalDialog(dialog, nullptr, nullptr, &item);
    EXPECT_EQ(item, kTestStayOpen);
    MoveableModalDialog(dialog, nullptr, nullptr, &item);
    EXPECT_EQ(item, kTestOK);
    DisposeDialog(dialog);
}

Boolean HideText(ParamBlockRec* file) {
    return file->fdType != FourCC("Q7CT");
}

TEST_F(Scripts, AnswerFileAndColourDialogs) {
    const TemporaryFolder folder;
    const std::string table = folder.Write("a.zct", "x"), text = folder.Write("b.txt", "x");
    const struct {
        Act act;
        bool put;
        int good; ///< 1 chosen, 2 replacing, 0 cancelled, -1 the script fails
    } cases[] = {{PickFile(table), true, 2},
                 {PickFile(folder.Path("new")), true, 1},
                 {PickFile(folder.Path("no/new")), true, -1},
                 {CancelFile(), true, 0},
                 {PickFile(table), false, 1},
                 {PickFile(text), false, -1},
                 {PickFile(folder.Path("none")), false, -1},
                 {PickFile(folder.Path()), false, -1},
                 {CancelFile(), false, 0},
                 {CancelColor(), false, -1},
                 {PressItem(1), true, -1}};
    const Str255 none = {0};
    for (const auto& c : cases) {
        SCOPED_TRACE("case " + std::to_string(&c - cases));
        ScriptSource script({c.act});
        SetStandardFileResponder(&script);
        StandardFileReply reply;
        if (c.put)
            StandardPutFile(none, none, &reply);
        else
            StandardGetFile(c.act.text == folder.Path() ? nullptr : HideText, -1, nullptr, &reply);
        EXPECT_EQ(reply.sfGood ? 1 + reply.sfReplacing : 0, std::max(0, c.good));
        EXPECT_EQ(script.Failed(), c.good < 0) << script.Failure();
        if (!reply.sfGood) continue;
        std::string path;
        EXPECT_EQ(FSSpecToPath(&reply.sfFile, &path), noErr);
        EXPECT_EQ(path, c.act.text);
        EXPECT_EQ(reply.sfType, c.put ? 0 : FourCC("Q7CT"));
    }
    const RGBColor start = {1, 2, 3};
    const std::pair<Act, RGBColor> colors[] = {{PickColor({7, 8, 9}), {7, 8, 9}},
                                               {CancelColor(), start}};
    for (const auto& [act, want] : colors) {
        ScriptSource script({act, Idle(1)});
        SetEventSource(&script);
        RGBColor picked;
        EXPECT_EQ(GetColor({}, none, &start, &picked), act.kind == Act::Kind::pickColor);
        EXPECT_EQ(picked.red, want.red);
        EXPECT_FALSE(GetColor({}, none, &start, &picked)) << "no answer";
        EXPECT_EQ(script.Failure(), "The script cannot wait while a colour dialog is open, "
                                    "expected an answer to it.");
    }
}

} // namespace
