// The host's calls, as the module's entry receives them.
#pragma once

#include "GIF89Export.h"

/// Shows the module's about box. Needs neither record nor context.
void DoAbout(const ExportRecord* record);

/// Serves one call of the host: makes the context when `*data` is 0, runs the selector, and
/// destroys the context and clears `*data` when the export is over. Codes go to `*result`; an
/// unknown selector ends the export and leaves the result word alone. A call from inside one of the
/// host's own procedures, while the context is at work, is answered kExportAtWork and changes
/// nothing. The dialogs must outlive the context.
void RunSelector(short selector, ExportRecord* record, std::intptr_t* data, short* result,
                 const OptionsDialogs& dialogs);
