#include "Notices.h"

#include "DialogManager.h"
#include "DialogResources.h"
#include "EventSource.h"
#include "ModalDialog.h"
#include "NoticeResponder.h"
#include "ResourceManager.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <vector>

void ShowCaution(const std::string& sentence) {
    if (EventSource* const source = CurrentEventSource())
        source->Alert(EventSource::AlertKind::caution, sentence);
    else
        std::fprintf(stderr, "%s\n", sentence.c_str());
}

void ShowAlert(short id) {
    const auto listID = ReadAlertItemList(id);
    const auto items = listID ? ReadItemList(*listID) : std::nullopt;
    if (!items) return;
    const auto text = std::find_if(items->begin(), items->end(), [](const ItemTemplate& item) {
        return (item.kind & ~kItemDisabled) == kStaticTextItem;
    });
    if (text != items->end()) ShowCaution(SubstituteParamText(text->text));
}

void ShowNoticeDialog(short id) {
    constexpr short kDismiss = 1;
    const Handle resource = GetResource(FourCC("DLOG"), id);
    if (!resource) return;
    CenterDialog(resource);
    const DialogPtr dialog = GetNewDialog(id, nullptr, nullptr);
    if (!dialog) return;
    SetDialogDefaultItem(dialog, kDismiss);
    SetDialogCancelItem(dialog, kDismiss);
    ShowWindow(dialog);
    short item = 0;
    while (item != kDismiss) MoveableModalDialog(dialog, nullptr, nullptr, &item);
    DisposeDialog(dialog);
}

void ShowAbout(std::int16_t dialogID) {
    if (!HasNoticeResponder() && CurrentEventSource()) return ShowNoticeDialog(dialogID);
    const auto dialog = ReadDialogTemplate(dialogID);
    const auto items = dialog ? ReadItemList(dialog->itemList) : std::nullopt;
    if (!items) return;
    std::vector<std::string> texts;
    for (const ItemTemplate& item : *items)
        if ((item.kind & ~kItemDisabled) == kStaticTextItem) texts.push_back(item.text);
    CurrentNoticeResponder().About(texts);
}
