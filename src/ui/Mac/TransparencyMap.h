// Palette entries marked transparent by hand: marking them with the mouse, and the colour table and
// the swatch that show them.
#pragma once

#include "DialogManager.h"
#include "GetParameters.h"

/// Marks an entry and shows it at once in the table, the swatch and the preview, in the current
/// port, which must be the dialog. Entries outside 0..255 and marked ones are left alone.
void AddToTransMap(DialogPtr dialog, IndexedDialogGlobals* g, int index);
/// Takes a mark away in the same way.
void RemoveFromTransMap(DialogPtr dialog, IndexedDialogGlobals* g, int index);

/// Follows a press in the preview to its release: the eyedropper marks the colour under the mouse,
/// or takes its mark away. With a channel in force it only waits. The port must be the dialog.
void EyeDropperTrackMouse(DialogPtr dialog, IndexedDialogGlobals* g);
/// Follows a press in the colour table likewise: dragging paints or erases marks across its cells.
/// Shift marks and command unmarks, whatever the selected tool; they are looked at once, at first.
void CLUTTrackMouse(DialogPtr dialog, IndexedDialogGlobals* g);

/// Frames the cell of an entry, 0..255, in the indexed dialog's colour table, or with `erase` takes
/// the frame away. Leaves the pen as it drew; the caller puts it back.
void HighlightCLUTSelection(DialogPtr dialog, int index, Boolean erase);

/// Draws a colour table of 8 rows of 32 cells, 11 pixels from one to the next, so that an item
/// needs 354 x 90 pixels with the frames of marks. Unused cells are crossed out. The pen is kept.
///
/// @param count    entries in use, 0..256
/// @param selected an entry with a frame around its cell, or -1
void DrawCLUT(DialogPtr dialog, const RGBLookUpTable* palette, int count, int selected, short item);
/// Draw procedure of the indexed dialog's colour table; marks show while no channel is in force.
void DrawIndexedCLUT(DialogPtr dialog, short item);

/// Draws the swatch: the transparent colour, or gray while nothing is transparent. The pen is kept.
void DrawColorBoxIndex(DialogPtr dialog, short item, IndexedDialogGlobals* g);
/// Draw procedure of the swatch.
void DrawColorBox(DialogPtr dialog, short item);

/// Goes back to no transparency and to the eyedropper that marks. Zoom, check boxes and the sides
/// of the tool buttons stay. Always true.
Boolean ResetAll(DialogPtr dialog, IndexedDialogGlobals* g);
