#include "DialogWatch.h"

#include "ControlManager.h"
#include "DialogManager.h"

namespace gif89 {

namespace {
constexpr short kRGBDialog = 16000, kPaletteItem = 10;
constexpr const char* kPalettes[] = {"exact", "adaptive", "fixed"};
} // namespace

void DialogWatch::DialogClosed(DialogPtr dialog) {
    if (dialog->resourceID == kRGBDialog) {
        const auto chosen =
            static_cast<std::size_t>(GetControlValue(dialog->Item(kPaletteItem)->control)) - 1;
        palette = chosen < std::size(kPalettes) ? kPalettes[chosen] : "loaded";
    }
    EventRelay::DialogClosed(dialog);
}

} // namespace gif89
