// The display for dialogs in windows, found and loaded at run time.
#pragma once

#include "Display.h"

namespace gif89 {

/// Loads the display's library, which lies beside the module, and opens the display. Both stay open
/// until the process ends. Throws Problem when there is no screen to show windows on. Must be
/// called from the main thread.
DisplayParts OpenDisplay();

} // namespace gif89
