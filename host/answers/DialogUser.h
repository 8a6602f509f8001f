// Who answers the module's dialogs.
#pragma once

#include "EventSource.h"
#include "Plan.h"
#include "StandardFile.h"

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

} // namespace gif89
