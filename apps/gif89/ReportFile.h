// Where the report's lines go.
#pragma once

#include "Descriptor.h"
#include "StagedFile.h"

#include <optional>
#include <string>

namespace gif89 {

/// Standard output, a pipe or a device gets each line at once. A file takes its place when it is
/// finished, so that an older report is whole until then.
class ReportFile {
  public:
    /// An empty path is standard output. Throws Problem that names the file.
    ReportFile(const std::string& thePath, Existing existing);

    /// What cannot be written is told by Finish.
    void Add(const std::string& line);
    /// Throws Problem when a line was lost or the file cannot take its place.
    void Finish(Sync sync);

  private:
    int OutputDescriptor() const;

    std::string path;
    std::optional<StagedFile> staged;
    Descriptor stream;
    int firstError = 0; ///< the system's
};

} // namespace gif89
