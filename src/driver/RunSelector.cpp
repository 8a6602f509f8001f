#include "RunSelector.h"

#include "GIF89IndexedExport.h"
#include "GIF89RGBExport.h"
#include "MemoryManager.h"
#include "ModuleResources.h"
#include "Notices.h"

#include <new>
#include <type_traits>

namespace {

static_assert(std::is_trivially_destructible_v<GIF89RGBExport> &&
                  std::is_trivially_destructible_v<GIF89IndexedExport>,
              "the context's memory is released without a destructor");

template <class Context> GIF89ExportContext* MakeContext() {
    Ptr memory = NewPtr(sizeof(Context));
    return memory ? new (memory) Context : nullptr;
}

// Returns null, and the reason in *code, when the mode cannot be exported or memory is short.
GIF89ExportContext* MakeContextForMode(const ExportRecord& record, OSErr* code) {
    *code = memFullErr;
    if (record.imageMode == kRGBColorMode) return MakeContext<GIF89RGBExport>();
    if (record.imageMode == kIndexedColorMode) return MakeContext<GIF89IndexedExport>();
    *code = kModeNotExported;
    return nullptr;
}

} // namespace

void DoAbout(const ExportRecord*) {
    ShowAbout(kAboutDialog);
}

void RunSelector(short selector, ExportRecord* record, std::intptr_t* data, short* result,
                 const OptionsDialogs& dialogs) {
    if (selector == kSelectorAbout) return DoAbout(record);
    auto* context = reinterpret_cast<GIF89ExportContext*>(*data);
    if (!context) {
        OSErr code = noErr;
        context = MakeContextForMode(*record, &code);
        if (!context) {
            *result = code;
            return;
        }
        *data = reinterpret_cast<std::intptr_t>(context);
    }
    if (context->isAtWork) {
        *result = kExportAtWork;
        return;
    }
    context->dialogs = &dialogs;
    context->isAtWork = true;
    const Boolean isOver = context->Dispatch(selector, record, result);
    context->isAtWork = false;
    if (isOver) {
        DisposePtr(reinterpret_cast<Ptr>(context));
        *data = 0;
    }
}
