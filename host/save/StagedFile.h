// Saves a file so that the old one stays whole until the new one is complete.
#pragma once

#include "Descriptor.h"

#include <string>

namespace gif89 {

/// Whether an existing file may give way.
enum class Existing : bool { keep, replace };

/// A new file on its way to its target. Until it is committed it has no name, so that nothing is
/// left when the process ends, however it does; on file systems without such files it has one of
/// its own beside the target, which is removed with the object and by the signals below. A commit
/// may be two steps of the system; only SIGKILL or a failing machine comes between them, and leaves
/// the file under its staging name beside what was there.
class StagedFile {
  public:
    enum class Staging : bool { nameless, named };

    /// Creates the file, empty. A target that is a symbolic link stands for the file it leads to.
    /// Throws Problem when the target is a folder, its folder does not exist or cannot be written,
    /// or it exists and must be kept. `staging` can only ask for less.
    StagedFile(const std::string& targetPath, Existing whatExists,
               Staging staging = Staging::nameless);
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;
    ~StagedFile();

    int FileDescriptor() const { return file.Get(); } ///< open for reading and writing
    const std::string& Target() const { return target; }

    /// Puts the file in the target's place. A file that is replaced hands on its permissions.
    /// Throws Problem, with the target as it was.
    void Commit();

  private:
    void CreateNameless();
    void CreateNamed();
    void TakeStagingName();
    void Replace();
    void PutInFreePlace();
    [[noreturn]] static void FailToCommit();

    std::string target;
    std::string name; ///< of the target in `folder`
    Existing existing;
    Descriptor folder;
    Descriptor file;
    std::string stagingName; ///< in `folder`; empty while the file has none
    int cleanupSlot = -1;
};

/// Prepares a program's signals for saving: SIGINT, SIGTERM, SIGHUP and SIGPIPE remove the staged
/// files before they end the process (unless they are ignored), and a file that grows past the
/// user's limit is an error of the write instead of a signal.
void HandleSignalsWhileSaving();

} // namespace gif89
