#include "OpenDisplay.h"

#include "ExportModule.h"
#include "Problem.h"

#include <dlfcn.h>

#include <filesystem>

namespace gif89 {

DisplayParts OpenDisplay() {
    const std::filesystem::path module = ExportModule::DefaultPath();
    const std::string path = module.parent_path() / kDisplayLibrary;
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library)
        throw Problem(std::string("cannot load the part that opens windows: ") + dlerror());
    auto* open = reinterpret_cast<OpenDisplayProc*>(dlsym(library, kOpenDisplaySymbol));
    if (!open) throw Problem(path + " cannot open a display");

    DisplayParts parts;
    if (const char* problem = open(&parts)) throw Problem(problem);
    return parts;
}

} // namespace gif89
