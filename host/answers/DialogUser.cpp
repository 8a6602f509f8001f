#include "DialogUser.h"

#include "ControlManager.h"
#include "ModuleResources.h"

namespace gif89 {

void KeepPaletteShown(DialogPtr dialog, PaletteKind& palette) {
    if (dialog->resourceID != kRGBDialog) return;
    switch (GetControlValue(dialog->Item(kRGBPalettePopUpItem)->control)) {
    case kExactEntry:
        palette = PaletteKind::exact;
        break;
    case kAdaptiveEntry:
        palette = PaletteKind::adaptive;
        break;
    case kFixedEntry:
        palette = PaletteKind::fixed;
        break;
    default:
        palette = PaletteKind::file;
    }
}

} // namespace gif89
