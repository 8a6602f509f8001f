// The module of the build tree, loaded once.
#pragma once

#include "ExportModule.h"

namespace gif89 {

inline const ExportModule& TheModule() {
    static const ExportModule module(ExportModule::DefaultPath());
    return module;
}

} // namespace gif89
