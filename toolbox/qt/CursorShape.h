// Cursors of 16 x 16 pixels as the toolkit takes them.
#pragma once

#include "QuickDraw.h"

#include <QCursor>

/// The cursor for a screen of so many pixels a point; the arrow for null.
QCursor MakeCursor(const Cursor* cursor, qreal devicePixelRatio);
