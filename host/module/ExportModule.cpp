#include "ExportModule.h"

#include "Problem.h"
#include "ResourceManager.h"

#include <dlfcn.h>

#include <filesystem>

namespace gif89 {

ExportModule::ExportModule(const std::string& path) {
    // RTLD_LOCAL, so that the module's `main` cannot be mistaken for the program's.
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) throw Problem(std::string("cannot load the export module: ") + dlerror());
    entry = reinterpret_cast<Entry*>(dlsym(library, "main"));
    if (!entry) throw Problem("the export module " + path + " has no entry");

    const std::string resourcePath = std::filesystem::path(path).replace_extension("rsrc");
    resources = OpenResFile(resourcePath);
    if (resources <= 0) throw Problem("cannot read the module's resources in " + resourcePath);
}

ExportModule::~ExportModule() {
    CloseResFile(resources);
}

std::string ExportModule::DefaultPath() {
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    return program.parent_path() / GIF89_MODULE_FROM_PROGRAM / "GIF89Export.so";
}

} // namespace gif89
