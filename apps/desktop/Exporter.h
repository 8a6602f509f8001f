// Exports a picture through the module: with its options dialogs in windows, or with the choices
// that were made in them before.
#pragma once

#include "Operator.h"
#include "SavePicture.h"
#include "Shape.h"

#include <functional>
#include <optional>

namespace gif89 {

/// What is exported, and to which file; an existing one is replaced.
struct ExportTask {
    const Picture& original;
    std::string name;   ///< of the document
    std::string source; ///< its file; empty for a picture without one
    Way way = Way::natural;
    std::string target;
    /// Called when the last dialog is answered and the work begins; may be empty.
    std::function<void()> working;
};

struct Exported {
    SavedGif saved;
    ExportChoices choices;
};

/// Throws Problem when the picture cannot have what was chosen.
void CheckChoices(const ExportTask& task, const ExportChoices& choices);

/// Asks with the module's dialogs. Empty when the user cancelled. Throws Problem and
/// std::bad_alloc; whatever happens, what was at the target is whole.
std::optional<Exported> ExportWithDialogs(const ExportTask& task);

/// Makes the choices without asking. Throws as above, also when they do not fit the picture.
SavedGif ExportWithChoices(const ExportTask& task, const ExportChoices& choices);

/// Shows the module's about box. Throws Problem when the module cannot be had.
void ShowModuleAbout();

/// The file proposed for a picture: beside it, or in `folder` when it has none. Never the picture's
/// own file.
std::string ProposeTarget(const std::string& path, const std::string& name,
                          const std::string& folder);

} // namespace gif89
