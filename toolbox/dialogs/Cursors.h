// Cursors out of resources, and onto the screen of whoever shows the dialogs.
#pragma once

#include "QuickDraw.h"

#pragma GCC visibility push(default)

using CursHandle = Cursor**;

/// The cursor resource, decoded, or null. It belongs to the toolbox and stays valid.
CursHandle GetCursor(short id);
/// Shows a cursor; null does nothing.
void SetCursor(const Cursor* cursor);
void SetArrowCursor();

#pragma GCC visibility pop
