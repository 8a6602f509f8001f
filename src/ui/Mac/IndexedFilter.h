// The indexed options dialog as it follows the mouse and the keys.
#pragma once

#include "DialogManager.h"
#include "EventManager.h"
#include "GetParameters.h"

/// Filter of the indexed dialog: draws what has changed, follows presses in the preview, the colour
/// table and on the tools, and keeps Cancel's title, the tool and the cursor in step with the keys.
/// Takes presses in the preview and null events that choose a cursor.
Boolean DialogFilter(DialogPtr dialog, EventRecord* event, short* itemHit);
