#include "Preset.h"

namespace gif89 {

Preset::Preset(Answers& theAnswers, EventSource& theDisplay, StandardFileResponder* openDialog)
    : EventRelay(theDisplay), answers(theAnswers), user(theAnswers.User()), display(theDisplay),
      files(openDialog) {}

EventSource& Preset::InCharge() {
    return answers.IsDone() ? display : *user.events;
}

// Both follow what the dialogs do; the display comes last where it decides what they draw on.

void Preset::DialogOpened(DialogPtr dialog) {
    user.events->DialogOpened(dialog);
    display.DialogOpened(dialog);
}

void Preset::DialogShown(DialogPtr dialog) {
    user.events->DialogShown(dialog);
    display.DialogShown(dialog);
}

void Preset::DialogClosed(DialogPtr dialog) {
    KeepPaletteShown(dialog, palette);
    user.events->DialogClosed(dialog);
    display.DialogClosed(dialog);
}

void Preset::ItemChanged(DialogPtr dialog, short item, ItemChange change) {
    user.events->ItemChanged(dialog, item, change);
    display.ItemChanged(dialog, item, change);
}

void Preset::Pump(int milliseconds) {
    InCharge().Pump(milliseconds);
}

bool Preset::ButtonDown() {
    return InCharge().ButtonDown();
}

Point Preset::MousePosition() {
    return InCharge().MousePosition();
}

void Preset::ReadKeys(KeyMap keys) {
    InCharge().ReadKeys(keys);
}

DialogPtr Preset::DialogAt(Point global) {
    return InCharge().DialogAt(global);
}

bool Preset::Failed() {
    return InCharge().Failed();
}

bool Preset::PickColor(Point where, const std::string& prompt, const RGBColor& start,
                       RGBColor* picked) {
    return InCharge().PickColor(where, prompt, start, picked);
}

void Preset::Alert(AlertKind kind, const std::string& sentence) {
    InCharge().Alert(kind, sentence);
}

void Preset::PutFile(ConstStr255Param prompt, ConstStr255Param defaultName,
                     StandardFileReply* reply) {
    if (files) files->PutFile(prompt, defaultName, reply);
}

void Preset::GetFile(FileFilterProc filter, StandardFileReply* reply) {
    if (!answers.IsDone())
        user.files->GetFile(filter, reply);
    else if (files)
        PickPaletteFile(*files, *this, filter, reply);
}

} // namespace gif89
