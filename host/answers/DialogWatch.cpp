#include "DialogWatch.h"

#include "ControlManager.h"
#include "DialogManager.h"
#include "ModuleResources.h"
#include "PaletteNames.h"

#include <iterator>

namespace gif89 {

void DialogWatch::DialogClosed(DialogPtr dialog) {
    if (dialog->resourceID == kRGBDialog) {
        const auto chosen =
            static_cast<std::size_t>(GetControlValue(dialog->Item(kRGBPalettePopUpItem)->control)) -
            1;
        palette = chosen < std::size(kPaletteNames) ? kPaletteNames[chosen] : "loaded";
    }
    EventRelay::DialogClosed(dialog);
}

} // namespace gif89
