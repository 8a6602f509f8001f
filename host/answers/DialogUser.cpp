#include "DialogUser.h"

#include "ControlManager.h"
#include "FileManager.h"
#include "ModuleResources.h"
#include "PaletteFile.h"

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

std::string PickPaletteFile(StandardFileResponder& files, EventSource& display,
                            FileFilterProc filter, StandardFileReply* reply) {
    for (;;) {
        std::string path;
        files.GetFile(filter, reply);
        if (!reply->sfGood || FSSpecToPath(&reply->sfFile, &path) != noErr) return {};
        if (!HoldsNoColors(path)) return path;
        *reply = StandardFileReply();
        display.Alert(EventSource::AlertKind::caution,
                      "The palette file " + path + " holds no colours.");
    }
}

} // namespace gif89
