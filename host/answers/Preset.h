// Makes choices in the options dialog that comes up, then leaves the dialog to a person.
#pragma once

#include "EventRelay.h"
#include "Operator.h"
#include "StandardFile.h"

namespace gif89 {

/// Until the operator has done its part, the dialogs hear it instead of the display.
class Preset final : public EventRelay, public StandardFileResponder {
  public:
    /// All three must outlive this; the operator leaves the dialog open in the end. `openDialog`
    /// may be null, which cancels.
    Preset(Operator& theOperator, EventSource& theDisplay, StandardFileResponder* openDialog);

    void DialogOpened(DialogPtr dialog) override;
    void DialogShown(DialogPtr dialog) override;
    void DialogClosed(DialogPtr dialog) override;
    void ItemChanged(DialogPtr dialog, short item, ItemChange change) override;
    void Pump(int milliseconds) override;
    bool ButtonDown() override;
    Point MousePosition() override;
    void ReadKeys(KeyMap keys) override;
    DialogPtr DialogAt(Point global) override;
    bool Failed() override;
    bool PickColor(Point where, const std::string& prompt, const RGBColor& start,
                   RGBColor* picked) override;
    void Alert(AlertKind kind, const std::string& sentence) override;
    void PutFile(ConstStr255Param prompt, ConstStr255Param defaultName,
                 StandardFileReply* reply) override;
    void GetFile(FileFilterProc filter, StandardFileReply* reply) override;

  private:
    EventSource& InCharge();

    Operator& user;
    EventSource& display;
    StandardFileResponder* files;
};

} // namespace gif89
