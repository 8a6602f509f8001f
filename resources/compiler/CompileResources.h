// From readable text and artwork to the bytes of one classic resource file. The statements of the
// language are shown in README.md beside the resources.
#pragma once

#include "ResourceFile.h"
#include "Scanner.h"

namespace gif89 {

/// Compiles the files together: an id may be referred to from another file than its own. Artwork
/// is looked for beside the file that names it. The same inputs give the same bytes. Throws
/// SourceError at the first thing that is wrong, std::length_error when all is too much for one
/// file.
Bytes CompileResources(const std::vector<std::string>& inputs, const Definitions& definitions);

} // namespace gif89
