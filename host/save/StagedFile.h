// Saves a file so that the old one stays whole until the new one is complete.
#pragma once

#include "FilePlace.h"

#include <string>

namespace gif89 {

/// Whether an existing file may give way.
enum class Existing : bool { keep, replace };

/// Which files are forced to the disk before they take their place: only those that replace another
/// file, because both could be lost when the machine fails, or all of them, with their folder.
enum class Sync : bool { replacements, everything };

/// A new file that is to take the place of its target. Until it is committed it has no name, so
/// that nothing is left in whatever way the process ends. On file systems without such files it has
/// a staging name beside the target, which is removed by the destructor and by the signals below. A
/// commit may take two steps of the system. If SIGKILL or a failing machine comes between them, the
/// file stays under its staging name beside the old one. Every failure is an OutputProblem.
class StagedFile {
  public:
    enum class Staging : bool { nameless, named };

    /// Creates the file, empty. A target that is a symbolic link stands for the place it leads to,
    /// whether a file is there or not. Throws when the target is a folder, a pipe or a device, its
    /// folder does not exist or cannot be written, or it exists and must be kept. `staging` can
    /// demand a file with a name even where one without a name is possible.
    StagedFile(const std::string& targetPath, Existing whatExists,
               Staging staging = Staging::nameless);
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;
    ~StagedFile();

    int FileDescriptor() const { return file.Get(); } ///< open for reading and writing
    const std::string& Target() const { return place.path; }

    /// Puts the file in the target's place, with the rights of the file that it replaces
    /// (FileRights.h). When this throws, the target is as it was, except that a failure to force
    /// the folder to the disk comes after the file has taken its place.
    void Commit(Sync sync = Sync::replacements);

  private:
    void CreateNameless(mode_t mode);
    void CreateNamed(mode_t mode);
    void TakeStagingName();
    bool TryToCommit(Sync sync);
    void Replace();
    bool PutInFreePlace();

    FilePlace place;
    Existing existing;
    Descriptor file;
    std::string stagingName; ///< in the target's folder; empty while the file has none
    int cleanupSlot = -1;
};

/// Prepares a program's signals for saving. The usual signals that end a process remove the staging
/// files first, unless they are ignored. A file that grows past the user's limit becomes an error
/// of the write instead of a signal.
void HandleSignalsWhileSaving();

} // namespace gif89
