// Who answers the module's dialogs.
#pragma once

#include "EventSource.h"
#include "Plan.h"
#include "StandardFile.h"

#include <string>

namespace gif89 {

/// For one export; whoever is named here outlives it.
struct DialogUser {
    EventSource* events;          ///< null cancels the dialogs
    StandardFileResponder* files; ///< for files to open; null cancels
    /// Where the user keeps the palette that the RGB dialog showed at its end; may be null.
    const PaletteKind* palette = nullptr;
};

/// Keeps the palette that an RGB options dialog shows; other dialogs leave it alone.
void KeepPaletteShown(DialogPtr dialog, PaletteKind& palette);

/// Has a person pick a palette file, and once more while that holds no colours, which an alert of
/// the display says. Returns the file's path, empty when none was picked.
std::string PickPaletteFile(StandardFileResponder& files, EventSource& display,
                            FileFilterProc filter, StandardFileReply* reply);

} // namespace gif89
