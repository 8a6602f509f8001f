// The export module, found, loaded and given its resources at run time.
#pragma once

#include "ExportRecord.h"

#include <cstdint>
#include <string>

namespace gif89 {

/// A loaded module. Its resource file lies beside it under the same name with ".rsrc". The module
/// stays loaded for the life of the process; its resources are freed with this object.
class ExportModule {
  public:
    /// Throws Problem when the module, its entry or its resource file is missing or cannot be
    /// loaded.
    explicit ExportModule(const std::string& path);
    ExportModule(const ExportModule&) = delete;
    ExportModule& operator=(const ExportModule&) = delete;
    ~ExportModule();

    /// One call of the module's entry.
    void Call(short selector, ExportRecord* record, std::intptr_t* data, short* result) const {
        entry(selector, record, data, result);
    }

    /// The module's path for the running program, in the build tree and in an installation.
    static std::string DefaultPath();

  private:
    using Entry = void(short, ExportRecord*, std::intptr_t*, short*);

    Entry* entry = nullptr;
    std::int16_t resources = 0;
};

} // namespace gif89
