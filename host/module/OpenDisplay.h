// The display for dialogs in windows, found and loaded at run time.
#pragma once

#include "Display.h"

namespace gif89 {

/// Loads the display's library, which lies beside the module, and opens the display. The library
/// and the display stay to the end of the process. Throws Problem when no window can be had. Must
/// be called from the main thread.
DisplayParts OpenDisplay();

} // namespace gif89
