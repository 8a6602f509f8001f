// Exports a picture through the module: with its options dialogs in windows, or with what
// was chosen in them before.
#pragma once

#include "Plan.h"
#include "SavePicture.h"

#include <functional>
#include <optional>

namespace gif89 {

/// What is exported, and to which file; an existing one is replaced.
struct ExportTask {
    const Picture& original;
    std::string name;   ///< of the document
    std::string source; ///< its file; empty for a picture without one
    Mode mode = Mode::automatic;
    std::string target;
    /// Called when the last dialog is answered and the work begins; may be empty.
    std::function<void()> working;
};

struct Exported {
    SavedGif saved;
    Wishes wishes; ///< as they were chosen in the dialogs
};

/// Throws Problem when the picture cannot have what is wished.
void CheckWishes(const ExportTask& task, const Wishes& wishes);

/// Asks with the module's dialogs. Empty when the user cancelled. Throws Problem and
/// std::bad_alloc; whatever happens, what was at the target is whole.
std::optional<Exported> ExportWithDialogs(const ExportTask& task);

/// Does what is wished without asking. Throws as above, also when it does not fit the picture.
SavedGif ExportWithWishes(const ExportTask& task, const Wishes& wishes);

/// Shows the module's about box. Throws Problem when the module cannot be had.
void ShowModuleAbout();

/// The file proposed for a picture: beside it, or in `folder` when it has none. Never the picture's
/// own file.
std::string ProposeTarget(const std::string& path, const std::string& name,
                          const std::string& folder);

} // namespace gif89
