// Draws what is invalid in the dialogs.
#pragma once

/// Draws every invalid item of every visible dialog.
void DrawInvalidItems();
