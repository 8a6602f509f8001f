// Looks over the shoulder of a person who answers the module's options dialogs, so that the same
// choices can be made again without one.
#pragma once

#include "DecodeGif.h"
#include "DialogUser.h"
#include "EventRelay.h"
#include "Picture.h"
#include "Plan.h"

#include <map>
#include <string>
#include <vector>

namespace gif89 {

/// Watches the dialogs of one export, and proposes one thing: where the picture's own transparency
/// is a channel, that channel is chosen when the dialog comes up, as Answers chooses it.
class ChoicesWatch final : public EventRelay, public StandardFileResponder {
  public:
    /// All three must outlive the watch. `files` may be null, which cancels.
    ChoicesWatch(EventSource& display, StandardFileResponder* files, const Picture& exported);

    DialogUser User() { return {this, this, &palette}; }

    /// What was chosen, once the export has come to its end; `gif` is its file. What was left as
    /// the dialog came up stays open, so that it also fits other pictures. Marked entries are
    /// named by their colours where a table's order is one that another picture would not have,
    /// else by their numbers.
    enum class Marks : bool { asNumbers, asColors };
    Wishes Choices(const DecodedGif& gif, Marks marks) const;

    void DialogShown(DialogPtr dialog) override;
    void DialogClosed(DialogPtr dialog) override;
    bool PickColor(Point where, const std::string& prompt, const RGBColor& start,
                   RGBColor* picked) override;
    void PutFile(ConstStr255Param prompt, ConstStr255Param defaultName,
                 StandardFileReply* reply) override;
    void GetFile(FileFilterProc filter, StandardFileReply* reply) override;

  private:
    /// An options dialog's items; values of controls by item number.
    struct Items {
        std::map<short, short> values;
        std::string count;       ///< the edit text, RGB only
        std::string paletteFile; ///< name of the palette entry, RGB only
    };

    static Items ReadItems(DialogPtr dialog);
    bool Changed(short item) const;
    void TakeIndexed(const DecodedGif& gif, Marks marks, Wishes& choices) const;
    void TakeRGB(Wishes& choices) const;
    std::vector<EntryName> MarkedEntries(const DecodedGif& gif, Marks marks) const;
    std::string PaletteFile() const;

    StandardFileResponder* files;
    const Picture& picture;
    Items opened, closed;
    PaletteKind palette = PaletteKind::open;
    bool pickedColor = false;
    std::vector<std::string> pickedFiles;
};

} // namespace gif89
