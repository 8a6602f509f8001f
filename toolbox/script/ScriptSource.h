// A user without a display: plays acts in the dialogs that the module opens.
#pragma once

#include "EventSource.h"
#include "StandardFile.h"

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

/// One thing that a user does. Points are local to the dialog in front.
struct Act {
    enum class Kind : std::uint8_t {
        pressItem,   ///< press and release in the middle of `item`; it must be enabled
        pressAt,     ///< press and release at points[0]
        drag,        ///< press at points[0], move along the others, release at the last
        moveTo,      ///< the mouse goes to points[0], button up
        type,        ///< `text`, key by key: into the edit text that takes keys, at its end or in
                     ///< place of a selection; '\r' is Return
        setText,     ///< makes `text` the content of edit text `item`
        holdKey,     ///< key `key` goes down and stays down; types nothing
        releaseKey,  ///< and up again
        pressKey,    ///< key `key` down and up: Return, Escape, Delete
        chooseEntry, ///< entry `entry` of the pop-up `item`, or the one whose text is `text`
        idle,        ///< `ticks` pass
        pickFile,    ///< answers the next file dialog with path `text`
        cancelFile,
        pickColor, ///< answers the next colour dialog with `color`
        cancelColor,
        fail, ///< ends the script with `text` as its reason
    };
    Kind kind = Kind::idle;
    short item = 0;
    std::vector<Point> points;
    std::string text;
    short key = 0;
    short entry = 0;
    int ticks = 2;
    RGBColor color;
};

Act PressItem(short item);
Act PressAt(Point local);
Act Drag(std::vector<Point> points);
Act MoveMouse(Point local);
Act TypeText(const std::string& text);
Act SetText(short item, const std::string& text);
Act HoldKey(short key);
Act ReleaseKey(short key);
Act PressKey(short key);
Act ChooseEntry(short item, short entry);
Act ChooseEntry(short item, const std::string& text);
Act Idle(int ticks);
Act PickFile(const std::string& path);
Act CancelFile();
Act PickColor(RGBColor color);
Act CancelColor();
Act FailScript(const std::string& reason);

/// What an act does, as in "press item 7".
std::string DescribeAct(const Act& act);

/// Plays acts. Time is the script's own: two ticks pass whenever the toolbox looks for events, so
/// that runs repeat exactly. The mouse goes to its place before it presses, and a null event lies
/// between acts, so that the dialog can follow it with cursor and tools. A press is played while
/// the dialog follows it; acts that are left when a dialog closes are played in the next one. While
/// a file or colour dialog is open the next act must answer it.
class ScriptSource : public EventSource, public StandardFileResponder {
  public:
    /// Asked for the next act whenever the dialog in front waits for the user.
    using Decide = std::function<Act(DialogPtr dialog)>;

    explicit ScriptSource(Decide decide);
    /// Plays the list; running out of it while a dialog waits is a failure.
    explicit ScriptSource(std::vector<Act> acts);

    /// Why the script cannot go on, empty when it can: an item that is not there or disabled, a
    /// menu entry that is missing, acts that ran out, an answer nobody asked for.
    const std::string& Failure() const { return failure; }
    /// Sentences of alerts shown so far.
    const std::vector<std::string>& Alerts() const { return alerts; }
    /// The cursor shown last; null for the arrow.
    const Cursor* ShownCursor() const { return cursor; }
    /// Where new dialogs draw; null nowhere. Not owned.
    void DrawOn(Surface* surface) { target = surface; }

    void DialogOpened(DialogPtr dialog) override;
    void DialogShown(DialogPtr dialog) override;
    void DialogClosed(DialogPtr dialog) override;
    void ItemChanged(DialogPtr dialog, short item, ItemChange change) override;
    void Pump(int milliseconds) override;
    bool ButtonDown() override;
    Point MousePosition() override;
    void ReadKeys(KeyMap keys) override;
    std::uint32_t Ticks() override;
    std::uint32_t DoubleClickTicks() override;
    DialogPtr DialogAt(Point global) override;
    bool Failed() override;
    void ShowCursor(const Cursor* cursor) override;
    bool PickColor(Point where, const std::string& prompt, const RGBColor& start,
                   RGBColor* picked) override;
    void Alert(AlertKind kind, const std::string& sentence) override;
    void PutFile(ConstStr255Param prompt, ConstStr255Param defaultName,
                 StandardFileReply* reply) override;
    void GetFile(FileFilterProc filter, StandardFileReply* reply) override;

  private:
    /// A piece of an act that one call of Pump plays; places are global.
    struct Step {
        enum class Kind : std::uint8_t {
            move,
            press,
            release,
            keyDown,
            keyUp,
            typeKey,
            setText,
            chooseEntry,
            wait,
        };
        Kind kind;
        DialogPtr dialog = nullptr;
        Point where;
        short number = 0; ///< a key; an item; of a press, the edit text that it sets the caret in
        short entry = 0;  ///< of a pop-up
        std::string text = {}; ///< one character, or an edit text's content
        int ticks = 0;
    };
    struct DialogState {
        int acts = 0;
        bool textIsSelected = true; ///< the edit text; what is typed next replaces it
    };

    static DialogPtr DialogInFront();
    Act NextAct(DialogPtr dialog);
    Act NextAnswer(const char* question, Act::Kind pick, Act::Kind cancel);
    bool BeginAct();
    void Expand(DialogPtr dialog, const Act& act);
    void ExpandPress(DialogPtr dialog, Point local);
    void ExpandDrag(DialogPtr dialog, const Act& act);
    void ExpandKey(DialogPtr dialog, short key);
    void ExpandTyping(DialogPtr dialog, const std::string& text);
    void ExpandChoice(DialogPtr dialog, const Act& act);
    Step PointerStep(Step::Kind kind, DialogPtr dialog, Point local) const;
    Step PressStep(DialogPtr dialog, Point local) const;
    bool FindPressPoint(DialogPtr dialog, const Act& act, Point* local);
    DialogItem* RequireItem(DialogPtr dialog, const Act& act);
    void Play(const Step& step);
    void PlayKey(const Step& step);
    void PlayChoice(const Step& step);
    void EditText(DialogPtr dialog, const Step& step);
    EventRecord MakeEvent(std::int16_t what) const;
    bool KeyIsDown(short key) const;
    void SetKey(short key, bool isDown);
    void Fail(const std::string& reason);
    void Refuse(DialogPtr dialog, const Act& act, const std::string& reason);

    Decide decide;
    std::deque<Act> pending;
    std::deque<Step> steps; ///< the rest of the act under way
    std::map<DialogPtr, DialogState> dialogs;
    std::string failure;
    std::vector<std::string> alerts;
    const Cursor* cursor = nullptr;
    Surface* target = nullptr;
    Point mouse; ///< global
    bool buttonIsDown = false;
    bool hasRested = false; ///< a null event went by since the last act
    KeyMap keysDown = {};
};

#pragma GCC visibility pop
