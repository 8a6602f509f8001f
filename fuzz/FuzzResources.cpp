// Resource files, and the parsers of what is in them. The input is taken for a whole file, and then
// for the content of one resource after the other among others that are sound.
#include "ControlManager.h"
#include "Cursors.h"
#include "DialogResources.h"
#include "DrawDialogs.h"
#include "EventSource.h"
#include "HostDialogs.h"
#include "MemoryFile.h"
#include "MemoryManager.h"
#include "MenuManager.h"
#include "Notices.h"
#include "QuickDraw.h"
#include "RecordingSurface.h"
#include "ResourceBytes.h"
#include "ResourceManager.h"
#include "ScriptSource.h"
#include "SourceCalls.h"

#include <algorithm>

namespace {

constexpr short kGiven = 128; // the resources made of the input
constexpr short kSound = 129; // those that lead to them
constexpr short kWithControls = 130;

const std::string kBounds = Word(40) + Word(40) + Word(240) + Word(340);

std::string DialogOf(short items) {
    return kBounds + Word(1) + Word(256) + Word(0) + Long(0) +
           Word(static_cast<std::size_t>(items)) + Counted("A dialog");
}

std::string ControlItem(std::size_t top, short control) {
    return Long(0) + Word(top) + Word(10) + Word(top + 20) + Word(110) + "\x07\x02" +
           Word(static_cast<std::size_t>(control));
}

std::string ResourcesAround(const std::string& given) {
    // Cursors are kept for good, so that only a few may ever be seen.
    const std::string cursor(given.size() % 80, given.empty() ? '\0' : given[0]);
    const std::string popUp =
        kBounds + Word(1) + Word(0) + Word(0) + Word(kGiven) + Word(1008) + Long(0) + Counted("");
    return ResourceFileOf({
        {"DLOG", kGiven, given},
        {"DLOG", kSound, DialogOf(kGiven)},
        {"DLOG", kWithControls, DialogOf(kSound)},
        {"DITL", kGiven, given},
        {"DITL", kSound, Word(1) + ControlItem(10, kGiven) + ControlItem(40, kSound)},
        {"CNTL", kGiven, given},
        {"CNTL", kSound, popUp},
        {"MENU", kGiven, given},
        {"ALRT", kGiven, given},
        {"ALRT", kSound, kBounds + Word(kGiven) + Word(0)},
        {"STR#", kGiven, given},
        {"PICT", kGiven, given},
        {"CURS", kGiven, cursor},
    });
}

void UseItem(DialogPtr dialog, short number) {
    short kind = 0;
    Handle handle = nullptr;
    Rect rect;
    GetDialogItem(dialog, number, &kind, &handle, &rect);
    SetDialogItem(dialog, number, kind, handle, &rect);
    InvalItem(dialog, number);
    FindDialogItem(dialog, {rect.top, rect.left});
    const DialogItem& item = *dialog->Item(number);
    if (item.control) SetControlValue(item.control, static_cast<short>(number * 3 - 4));
    if (item.menu) ChoosePopUpEntry(dialog, number, 1);
    if (!item.menu) return;
    Str255 text;
    for (short entry = 0; entry <= CountMenuItems(item.menu) + 1; ++entry)
        GetMenuItemText(item.menu, entry, text);
}

void UseDialog(short id) {
    const DialogPtr dialog = GetNewDialog(id, nullptr, nullptr);
    if (!dialog) return;
    ShowWindow(dialog);
    DrawInvalidItems();
    const auto items = static_cast<short>(std::min<std::size_t>(dialog->items.size(), 100));
    for (short number = 0; number <= items + 1; ++number)
        if (dialog->Item(number)) UseItem(dialog, number);
    DrawInvalidItems();
    DisposeDialog(dialog);
}

// Notices are run with a user who presses somewhere and then gives up.
void UseNotice(short id) {
    ScriptSource user({PressAt({20, 20}), PressKey(kKeyReturn)});
    EventSource* const outer = SetEventSource(&user);
    ShowNoticeDialog(id);
    SetEventSource(outer);
}

void UseStrings() {
    constexpr short kIndices[] = {-1, 0, 1, 2, 3, 255, 32767};
    for (const short index : kIndices) {
        Str255 string;
        GetIndString(string, kGiven, index);
    }
}

void UsePicture() {
    GrafPort port;
    RecordingSurface surface;
    port.surface = &surface;
    port.portRect = {0, 0, 100, 100};
    SetPort(&port);
    const Rect place = {10, 10, 50, 60};
    DrawPicture(GetPicture(kGiven), &place);
    SetPort(nullptr);
}

void UseAll() {
    RecordingSurface surface;
    ScriptSource user(std::vector<Act>{});
    user.DrawOn(&surface);
    EventSource* const outer = SetEventSource(&user);
    for (const short id : {kGiven, kSound, kWithControls}) {
        CenterDialog(GetResource(FourCC("DLOG"), id));
        UseDialog(id);
        UseNotice(id);
        ShowAlert(id);
    }
    UseStrings();
    UsePicture();
    SetEventSource(outer);
}

bool OpenAndUse(std::span<const std::uint8_t> bytes) {
    const MemoryFile memory(bytes);
    const std::int16_t file = OpenResFile(memory.Path());
    Require(file > 0 || file == mapReadErr, "what is no resource file is called so");
    if (file <= 0) return false;
    UseAll();
    CloseResFile(file);
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    const long blocks = LiveMemoryBlocks();
    OpenAndUse({bytes, count});
    const std::string around = ResourcesAround(std::string(bytes, bytes + count));
    const bool opened =
        OpenAndUse({reinterpret_cast<const std::uint8_t*>(around.data()), around.size()});
    Require(opened, "a sound file opens whatever its resources hold");
    if (const CursHandle cursor = GetCursor(kGiven)) SetCursor(*cursor);
    Require(LiveMemoryBlocks() == blocks, "all memory is given back");
    Require(OpenDialogs().empty(), "no dialog is left");
    return 0;
}
