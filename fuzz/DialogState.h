// What holds in the options dialogs whenever they wait for their user.
#pragma once

#include "DialogManager.h"

/// Requires that items agree with each other and the previews show a part of the picture.
void CheckDialogState(DialogPtr dialog);

/// True for the preview of RGB pictures.
bool IsPreview(DialogPtr dialog);
