#include "StagedFile.h"

#include "Problem.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace gif89 {
namespace {

// Paths that a signal must remove. The handler may only read atomics and call unlink, so each slot
// holds the address of a string that outlives its stay here.
constexpr int kSlots = 16;
std::atomic<const char*> stagedPaths[kSlots];

int TakeSlot(const char* path) {
    for (int slot = 0; slot < kSlots; ++slot) {
        const char* none = nullptr;
        if (stagedPaths[slot].compare_exchange_strong(none, path)) return slot;
    }
    return -1; // more files at once than anyone stages; the destructor still removes it
}

void FreeSlot(int slot) {
    if (slot >= 0) stagedPaths[slot] = nullptr;
}

void RemoveAndEnd(int signal) {
    for (const auto& path : stagedPaths)
        if (const char* name = path.load()) unlink(name);
    // SA_RESETHAND has put the default action back.
    raise(signal);
}

std::string SystemReason() {
    return std::strerror(errno);
}

// A short name of its own: the target's may already be as long as names can be.
std::string StagingName() {
    std::uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number)
        throw Problem("no random numbers: " + SystemReason());
    char name[32];
    std::snprintf(name, sizeof name, ".gif89-%016llx.gif", static_cast<unsigned long long>(number));
    return name;
}

std::string FollowLinks(const std::string& path) {
    struct stat status;
    if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return path;
    std::error_code error;
    const auto end = std::filesystem::weakly_canonical(path, error);
    if (error) throw Problem("the link cannot be followed: " + error.message());
    return end;
}

} // namespace

StagedFile::StagedFile(const std::string& targetPath, Existing whatExists)
    : target(FollowLinks(targetPath)), existing(whatExists) {
    const std::size_t slash = target.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : target.substr(0, slash + 1);
    struct stat status;
    if (stat(folder.empty() ? "." : folder.c_str(), &status) != 0)
        throw Problem("cannot write into its folder: " + SystemReason());
    if (stat(target.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) throw Problem("is a folder; a file name was expected");
        if (existing == Existing::keep) throw Problem("exists already; -f replaces it");
    }
    staging = folder + StagingName();
    cleanupSlot = TakeSlot(staging.c_str());
}

StagedFile::~StagedFile() {
    if (!staging.empty()) unlink(staging.c_str());
    FreeSlot(cleanupSlot);
}

void StagedFile::Commit() {
    struct stat old;
    if (existing == Existing::replace && stat(target.c_str(), &old) == 0)
        chmod(staging.c_str(), old.st_mode & 07777); // best effort: another owner's file keeps ours
    int failed;
    if (existing == Existing::replace) {
        failed = rename(staging.c_str(), target.c_str());
    } else {
        // Somebody may have made the file since we looked. Not every file system can rename
        // without replacing; a second name for the staged file says the same.
        failed = renameat2(AT_FDCWD, staging.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE);
        if (failed && (errno == EINVAL || errno == ENOSYS)) {
            failed = link(staging.c_str(), target.c_str());
            if (!failed) unlink(staging.c_str());
        }
    }
    if (failed) throw Problem("cannot put the finished file in place: " + SystemReason());
    FreeSlot(cleanupSlot);
    cleanupSlot = -1;
    staging.clear();
}

void HandleSignalsWhileSaving() {
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        struct sigaction now = {};
        sigaction(signal, nullptr, &now);
        if (now.sa_handler == SIG_IGN) continue;
        struct sigaction action = {};
        action.sa_handler = RemoveAndEnd;
        action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
        sigaction(signal, &action, nullptr);
    }
}

} // namespace gif89
