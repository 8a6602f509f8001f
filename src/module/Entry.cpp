// The module's one exported symbol. Hosts look it up as `main`; C++ reserves that name for
// programs, so the function has a name of its own and takes the symbol by an assembler label.
#include "GetIndexedParameters.h"
#include "GetRGBParameters.h"
#include "RunSelector.h"

extern "C" __attribute__((visibility("default"))) void ExportEntry(short selector,
                                                                   ExportRecord* record,
                                                                   std::intptr_t* data,
                                                                   short* result) __asm__("main");

extern "C" void ExportEntry(short selector, ExportRecord* record, std::intptr_t* data,
                            short* result) {
    static constexpr OptionsDialogs kDialogs = {GetRGB24Parameters, GetIndexedParameters};
    RunSelector(selector, record, data, result, kDialogs);
}
