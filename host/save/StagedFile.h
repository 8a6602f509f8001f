// Saves a file so that the old one stays whole until the new one is complete.
#pragma once

#include "FilePlace.h"

#include <string>

namespace gif89 {

/// Whether an existing file may give way.
enum class Existing : bool { keep, replace };

/// Which files are forced to the disk before they take their place: those that replace another,
/// which would else be lost with it when the machine fails, or all of them and their folder too.
enum class Sync : bool { replacements, everything };

/// A new file on its way to its target. Until it is committed it has no name, so that nothing is
/// left when the process ends, however it does; on file systems without such files it has one of
/// its own beside the target, which is removed with the object and by the signals below. A commit
/// may be two steps of the system; only SIGKILL or a failing machine comes between them, and leaves
/// the file under its staging name beside what was there. Every failure is an OutputProblem.
class StagedFile {
  public:
    enum class Staging : bool { nameless, named };

    /// Creates the file, empty. A target that is a symbolic link stands for the place it leads to,
    /// whether a file is there or not. Throws when the target is a folder, a pipe or a device, its
    /// folder does not exist or cannot be written, or it exists and must be kept. `staging` can
    /// only ask for less.
    StagedFile(const std::string& targetPath, Existing whatExists,
               Staging staging = Staging::nameless);
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;
    ~StagedFile();

    int FileDescriptor() const { return file.Get(); } ///< open for reading and writing
    const std::string& Target() const { return place.path; }

    /// Puts the file in the target's place. A file that is replaced hands on its rights
    /// (FileRights.h). Throws with the target as it was; only when its folder cannot be forced to
    /// the disk, the file is in its place already.
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

/// Prepares a program's signals for saving: the usual ones that end a process remove the
/// staged files first (unless they are ignored), and a file that grows past the user's limit is an
/// error of the write instead of a signal.
void HandleSignalsWhileSaving();

} // namespace gif89
