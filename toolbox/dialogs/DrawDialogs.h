// Draws what is invalid in the dialogs.
#pragma once

#pragma GCC visibility push(default)

/// Draws every invalid item of every visible dialog.
void DrawInvalidItems();

#pragma GCC visibility pop
