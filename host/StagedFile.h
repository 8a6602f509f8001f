// Saves a file so that the old one stays whole until the new one is complete.
#pragma once

#include <string>

namespace gif89 {

/// Whether an existing file may give way.
enum class Existing : bool { keep, replace };

/// A new file beside its target, under a name of its own, until it takes the target's place. What
/// is not committed is removed with the object, and when a signal ends the process (below).
class StagedFile {
  public:
    /// Chooses the staging path; nothing is created yet. A target that is a symbolic link stands
    /// for the file it leads to. Throws Problem when the target is a folder, its folder does not
    /// exist, or it exists and must be kept.
    StagedFile(const std::string& targetPath, Existing whatExists);
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;
    ~StagedFile();

    const std::string& Path() const { return staging; } ///< write here
    const std::string& Target() const { return target; }

    /// Renames the staging file over the target. A file that is replaced hands on its permissions.
    /// Throws Problem, with the target as it was.
    void Commit();

  private:
    std::string target;
    std::string staging;
    Existing existing;
    int cleanupSlot;
};

/// Prepares a program's signals for saving: SIGINT, SIGTERM, SIGHUP and SIGPIPE remove the staged
/// files before they end the process (unless they are ignored), and a file that grows past the
/// user's limit is an error of the write instead of a signal.
void HandleSignalsWhileSaving();

} // namespace gif89
