// Makes choices in the options dialog that comes up, then leaves the dialog to a person.
#pragma once

#include "Answers.h"
#include "EventRelay.h"

namespace gif89 {

/// Until all answers are given, the dialogs hear them instead of the display.
class Preset final : public EventRelay, public StandardFileResponder {
  public:
    /// All three must outlive this; the answers leave the dialog open in the end. `openDialog`
    /// may be null, which cancels.
    Preset(Answers& theAnswers, EventSource& theDisplay, StandardFileResponder* openDialog);

    DialogUser User() { return {this, this, &palette}; }

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

    Answers& answers;
    const DialogUser user; ///< the answers' own
    EventSource& display;
    StandardFileResponder* files;
    PaletteKind palette = PaletteKind::open;
};

} // namespace gif89
