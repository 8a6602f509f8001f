// How the dialogs with a preview are opened, and closed again.
#pragma once

#include "DialogManager.h"
#include "GetParameters.h"

#include <functional>
#include <span>

/// An item and what draws it.
struct DrawnItem {
    short item;
    UserItemProc draw;
};

/// What such a dialog is made of.
struct PreviewDialog {
    short id;
    short cancelItem;
    std::span<const DrawnItem> drawnItems;
};

/// Sets `maxShrink` to the reduction that shows the whole image, at most 16, and `srcRect` to the
/// part of the image that is left when what does not fit then is cut off at the bottom and right.
///
/// @param box size of the image box, v rows, h columns, at least 1 each
void FitPreview(PreviewView* g, Point box);

/// Opens the view at 1:1 about the middle of what FitPreview leaves of the image.
void OpenView(DialogPtr dialog, PreviewView* g);

/// Makes the dialog and the preview's blocks, calls `run`, and frees both. The colours of the
/// preview are black.
///
/// @return the code of `run`, which opens the view, shows the window and serves it; -1 when the
///         dialog cannot be had, or memFullErr
short RunPreviewDialog(const PreviewDialog& parts, PreviewView* g,
                       const std::function<short(DialogPtr)>& run);
