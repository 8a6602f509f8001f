// A dialog, its controls and its menus are blocks of the Memory Manager with records built in them,
// so that running out of memory shows and what is not given back is counted.
#include "DialogManager.h"

#include "ControlManager.h"
#include "DialogResources.h"
#include "EventQueue.h"
#include "EventSource.h"
#include "MemoryManager.h"
#include "MenuManager.h"
#include "OwnedHandle.h"
#include "PascalStrings.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <mutex>
#include <new>

namespace {

/// Thrown while a dialog is built, and turned into null at the door.
struct CannotBuild {};

OwnedHandle RequireHandle(std::size_t size) {
    OwnedHandle handle(NewHandle(static_cast<Size>(size)));
    if (!handle) throw CannotBuild();
    return handle;
}

template <class T> T Require(std::optional<T> part) {
    if (!part) throw CannotBuild();
    return *std::move(part);
}

void DisposeItem(const DialogItem& item) {
    if (item.menu) {
        std::destroy_at(*item.menu);
        DisposeHandle(reinterpret_cast<Handle>(item.menu));
    }
    if (item.control) {
        DisposeHandle((*item.control)->contrlData);
        DisposeHandle(reinterpret_cast<Handle>(item.control));
    }
}

struct DialogDisposer {
    void operator()(DialogPtr dialog) const {
        for (const DialogItem& item : dialog->items) DisposeItem(item);
        std::destroy_at(dialog);
        DisposePtr(reinterpret_cast<Ptr>(dialog));
    }
};
using OwnedDialog = std::unique_ptr<DialogRecord, DialogDisposer>;

OwnedDialog MakeDialog(short id, const DialogTemplate& source) {
    const int width = source.bounds.right - source.bounds.left;
    const int height = source.bounds.bottom - source.bounds.top;
    constexpr int kMost = std::numeric_limits<std::int16_t>::max();
    if (width < 1 || width > kMost || height < 1 || height > kMost) throw CannotBuild();
    const Ptr block = NewPtr(sizeof(DialogRecord));
    if (!block) throw CannotBuild();
    OwnedDialog dialog(new (block) DialogRecord);
    dialog->portRect = {0, 0, static_cast<std::int16_t>(height), static_cast<std::int16_t>(width)};
    dialog->origin = {source.bounds.top, source.bounds.left};
    dialog->title = source.title;
    dialog->refCon = source.refCon;
    dialog->resourceID = id;
    return dialog;
}

/// The part of building that can fail is behind us when the item takes the handle.
void AddControl(DialogRecord& dialog, DialogItem& item, short number) {
    OwnedHandle handle = RequireHandle(sizeof(ControlRecord));
    auto* const control = new (*handle) ControlRecord{};
    control->contrlOwner = &dialog;
    control->contrlRect = item.rect;
    control->contrlMax = 1;
    control->contrlHilite = item.IsDisabled() ? kControlInactive : kControlActive;
    control->item = number;
    ToPascal(item.text, control->contrlTitle);
    item.control = reinterpret_cast<ControlHandle>(handle.release());
}

void AddMenu(DialogRecord& dialog, DialogItem& item, short number, short id) {
    MenuInfo menu = Require(ReadMenu(id));
    menu.owner = &dialog;
    menu.ownerItem = number;
    OwnedHandle handle = RequireHandle(sizeof(MenuInfo));
    new (*handle) MenuInfo(std::move(menu));
    item.menu = reinterpret_cast<MenuHandle>(handle.release());
}

void AddPopUp(DialogRecord& dialog, DialogItem& item, short number, short id) {
    const ControlTemplate source = Require(ReadControlTemplate(id));
    if (source.procID != kPopUpMenuProc) throw CannotBuild();
    item.text = source.title;
    AddControl(dialog, item, number);
    AddMenu(dialog, item, number, source.minimum);
    ControlRecord& control = **item.control;
    control.contrlMin = 0; // no entry
    control.contrlMax = CountMenuItems(item.menu);
    control.contrlValue = std::max<short>(1, std::min(control.contrlMax, source.value));
    OwnedHandle data = RequireHandle(sizeof(MenuHandle));
    BlockMove(&item.menu, *data, sizeof(MenuHandle));
    control.contrlData = data.release();
}

void AddItem(DialogRecord& dialog, const ItemTemplate& source) {
    DialogItem& item = dialog.items.emplace_back();
    item.kind = source.kind;
    item.rect = source.rect;
    item.text = source.text;
    const auto number = static_cast<short>(dialog.items.size());
    switch (item.BaseKind()) {
    case kUserItem:
    case kStaticTextItem:
        return;
    case kButtonItem:
    case kCheckBoxItem:
        return AddControl(dialog, item, number);
    case kResourceControlItem:
        return AddPopUp(dialog, item, number, source.data);
    case kEditTextItem:
        if (dialog.editItem == 0) dialog.editItem = number;
        return;
    default:
        throw CannotBuild(); // a kind that no display has
    }
}

OwnedDialog BuildDialog(short id) {
    const DialogTemplate source = Require(ReadDialogTemplate(id));
    const std::vector<ItemTemplate> items = Require(ReadItemList(source.itemList));
    OwnedDialog dialog = MakeDialog(id, source);
    dialog->items.reserve(items.size());
    for (const ItemTemplate& item : items) AddItem(*dialog, item);
    return dialog;
}

std::vector<DialogPtr>& TheDialogs() {
    static thread_local std::vector<DialogPtr> dialogs;
    return dialogs;
}

DialogPtr BuildInFront(short id) {
    try {
        OwnedDialog built = BuildDialog(id);
        TheDialogs().insert(TheDialogs().begin(), built.get());
        return built.release();
    } catch (const CannotBuild&) {
        return nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void SetItemEnabled(DialogPtr dialog, short number, bool enabled) {
    DialogItem& item = *dialog->Item(number);
    if (item.IsDisabled() != enabled) return;
    if (item.control)
        return HiliteControl(item.control, enabled ? kControlActive : kControlInactive);
    item.kind = static_cast<std::int16_t>(item.kind ^ kItemDisabled);
    TellSource(dialog, number, ItemChange::state);
}

void SetItemRect(DialogPtr dialog, short number, const Rect& rect) {
    DialogItem& item = *dialog->Item(number);
    if (item.rect == rect) return;
    item.rect = rect;
    if (item.control) (*item.control)->contrlRect = rect;
    item.invalid = true;
    TellSource(dialog, number, ItemChange::rect);
}

/// The texts of ^0 to ^3, shared by every dialog of the process.
struct ParamTexts {
    std::mutex lock;
    std::array<std::string, 4> texts;
};

ParamTexts& TheParamTexts() {
    static ParamTexts& shared = *new ParamTexts;
    return shared;
}

} // namespace

DialogPtr GetNewDialog(short id, void*, WindowPtr) {
    const DialogPtr dialog = BuildInFront(id);
    EventSource* const source = CurrentEventSource();
    if (dialog && source) source->DialogOpened(dialog);
    return dialog;
}

void DisposeDialog(DialogPtr dialog) {
    if (!dialog) return;
    if (EventSource* const source = CurrentEventSource()) source->DialogClosed(dialog);
    ForgetHits(dialog);
    std::erase(TheDialogs(), dialog);
    GrafPtr port = nullptr;
    GetPort(&port);
    if (port == dialog) SetPort(nullptr);
    DialogDisposer()(dialog);
}

void ShowWindow(WindowPtr window) {
    if (window->visible) return;
    window->visible = true;
    for (DialogItem& item : window->items) item.invalid = true;
    if (EventSource* const source = CurrentEventSource()) source->DialogShown(window);
}

void SetWRefCon(WindowPtr window, std::intptr_t value) {
    window->refCon = value;
}

std::intptr_t GetWRefCon(WindowPtr window) {
    return window->refCon;
}

void SetDialogDefaultItem(DialogPtr dialog, short item) {
    dialog->defaultItem = item;
}

void SetDialogCancelItem(DialogPtr dialog, short item) {
    dialog->cancelItem = item;
}

void SetDialogTracksCursor(DialogPtr dialog, Boolean tracks) {
    dialog->tracksCursor = tracks != 0;
}

void ParamText(ConstStr255Param text0, ConstStr255Param text1, ConstStr255Param text2,
               ConstStr255Param text3) {
    ParamTexts& shared = TheParamTexts();
    const std::lock_guard guard(shared.lock);
    shared.texts = {FromPascal(text0), FromPascal(text1), FromPascal(text2), FromPascal(text3)};
}

std::string SubstituteParamText(const std::string& text) {
    ParamTexts& shared = TheParamTexts();
    const std::lock_guard guard(shared.lock);
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char digit = text[i] == '^' && i + 1 < text.size() ? text[i + 1] : ' ';
        if (digit < '0' || digit > '3') {
            result += text[i];
            continue;
        }
        result += shared.texts[static_cast<std::size_t>(digit - '0')];
        ++i;
    }
    return result;
}

void GetDialogItem(DialogPtr dialog, short number, short* kind, Handle* handle, Rect* rect) {
    const DialogItem none;
    const DialogItem* const found = dialog->Item(number);
    const DialogItem& item = found ? *found : none;
    *kind = item.kind;
    *handle = item.draw ? ProcToHandle(item.draw) : reinterpret_cast<Handle>(item.control);
    *rect = item.rect;
}

void SetDialogItem(DialogPtr dialog, short number, short kind, Handle handle, const Rect* rect) {
    DialogItem* const item = dialog->Item(number);
    if (!item) return;
    if (item->BaseKind() == kUserItem) item->draw = reinterpret_cast<UserItemProc>(handle);
    SetItemRect(dialog, number, *rect);
    SetItemEnabled(dialog, number, (kind & kItemDisabled) == 0);
}

void InvalItem(DialogPtr dialog, short number) {
    if (DialogItem* const item = dialog->Item(number)) item->invalid = true;
}

short FindDialogItem(DialogPtr dialog, Point local) {
    const auto holds = [&](const DialogItem& item) {
        return !item.isGroup && PtInRect(local, &item.rect);
    };
    const auto& items = dialog->items;
    const auto found = std::find_if(items.begin(), items.end(), holds);
    return found == items.end() ? short{-1} : static_cast<short>(found - items.begin());
}

void DisableControl(DialogPtr dialog, short item) {
    if (DialogItem* const found = dialog->Item(item))
        HiliteControl(found->control, kControlInactive);
}

void EnableControl(DialogPtr dialog, short item) {
    if (DialogItem* const found = dialog->Item(item)) HiliteControl(found->control, kControlActive);
}

void TEActivate(TEHandle text) {
    if (text->editActive) return;
    text->editActive = true;
    if (text->editItem != 0) TellSource(text, text->editItem, ItemChange::focus);
}

void TEDeactivate(TEHandle text) {
    if (!text->editActive) return;
    text->editActive = false;
    if (text->editItem != 0) TellSource(text, text->editItem, ItemChange::focus);
}

short FindWindow(Point global, WindowPtr* window) {
    EventSource* const source = CurrentEventSource();
    *window = source ? source->DialogAt(global) : nullptr;
    return *window ? inContent : short{0};
}

const std::vector<DialogPtr>& OpenDialogs() {
    return TheDialogs();
}
