#include "StagedFile.h"

#include "FolderTable.h"
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

// Named files that a signal must remove. The handler may only read atomics and call unlinkat, so a
// slot is filled before its name is set, and what both lead to outlives its stay here.
struct Slot {
    std::atomic<const char*> name;
    std::atomic<int> folder;
};
constexpr int kSlots = 16;
Slot slots[kSlots];

int TakeSlot(int folder, const char* name) {
    for (int slot = 0; slot < kSlots; ++slot) {
        const char* none = nullptr;
        static const char taken[] = "";
        if (!slots[slot].name.compare_exchange_strong(none, taken)) continue;
        slots[slot].folder = folder;
        slots[slot].name = name;
        return slot;
    }
    return -1; // more files at once than anyone stages; the destructor still removes it
}

void FreeSlot(int slot) {
    if (slot >= 0) slots[slot].name = nullptr;
}

void RemoveAndEnd(int signal) {
    for (const Slot& slot : slots)
        if (const char* name = slot.name.load()) unlinkat(slot.folder, name, 0);
    // SA_RESETHAND has put the default action back.
    raise(signal);
}

std::string SystemReason() {
    return std::strerror(errno);
}

// A short name: the target's may already be as long as names can be.
std::string MakeStagingName() {
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

// Holds back the signals of this thread while it exists, because a commit may take two steps,
// between which the file lies there under another name. One that came meanwhile acts at its end;
// only SIGKILL and SIGSTOP do not wait.
class SignalsWait {
  public:
    SignalsWait() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
    }
    SignalsWait(const SignalsWait&) = delete;
    SignalsWait& operator=(const SignalsWait&) = delete;
    ~SignalsWait() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }

  private:
    sigset_t before;
};

// The way to a file without a name, where the system shows descriptors as paths.
std::string PathOfDescriptor(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

} // namespace

StagedFile::StagedFile(const std::string& targetPath, Existing whatExists, Staging staging)
    : target(FollowLinks(targetPath)), existing(whatExists) {
    const std::size_t slash = target.rfind('/');
    name = target.substr(slash + 1); // the whole when there is no slash
    folder = OpenFolder(slash == std::string::npos ? "." : target.substr(0, slash + 1));
    if (!folder.IsOpen()) throw Problem("cannot write into its folder: " + SystemReason());
    struct stat status;
    if (name.empty() ||
        (fstatat(folder.Get(), name.c_str(), &status, 0) == 0 && S_ISDIR(status.st_mode)))
        throw Problem("is a folder; a file name was expected");
    if (existing == Existing::keep &&
        fstatat(folder.Get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0)
        throw Problem("exists already", kFailed, Remedy::replaceFile);
    if (staging == Staging::nameless) CreateNameless();
    if (!file.IsOpen()) CreateNamed();
}

StagedFile::~StagedFile() {
    if (!stagingName.empty()) unlinkat(folder.Get(), stagingName.c_str(), 0);
    FreeSlot(cleanupSlot);
}

void StagedFile::CreateNameless() {
    file = Descriptor(openat(folder.Get(), ".", O_TMPFILE | O_RDWR | O_CLOEXEC, 0666));
    // It could not be given a name later where descriptors have no paths.
    if (file.IsOpen() && access(PathOfDescriptor(file.Get()).c_str(), F_OK) != 0)
        file = Descriptor();
}

void StagedFile::CreateNamed() {
    TakeStagingName();
    file = Descriptor(
        openat(folder.Get(), stagingName.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (file.IsOpen()) return;
    const std::string reason = SystemReason();
    stagingName.clear();
    FreeSlot(cleanupSlot);
    throw Problem("cannot write into its folder: " + reason);
}

void StagedFile::TakeStagingName() {
    stagingName = MakeStagingName();
    cleanupSlot = TakeSlot(folder.Get(), stagingName.c_str());
}

void StagedFile::Commit() {
    const SignalsWait untilInPlace;
    struct stat old;
    const bool replaces =
        existing == Existing::replace && fstatat(folder.Get(), name.c_str(), &old, 0) == 0;
    if (replaces) {
        // Best effort: another owner's file keeps our permissions.
        static_cast<void>(fchmod(file.Get(), old.st_mode & 07777));
        Replace();
    } else {
        PutInFreePlace();
    }
    FreeSlot(cleanupSlot);
    cleanupSlot = -1;
    stagingName.clear();
}

// A file without a name can take a free place at once but not another's; it needs a name of its
// own for a moment. The content is not forced to the disk first: that takes longer than most
// exports, and the usual file systems do it for a file that is renamed over another.
void StagedFile::Replace() {
    if (stagingName.empty()) {
        TakeStagingName();
        if (linkat(AT_FDCWD, PathOfDescriptor(file.Get()).c_str(), folder.Get(),
                   stagingName.c_str(), AT_SYMLINK_FOLLOW) != 0)
            FailToCommit();
    }
    if (renameat(folder.Get(), stagingName.c_str(), folder.Get(), name.c_str()) != 0)
        FailToCommit();
}

// Somebody may have made the target since we looked, and then it stays.
void StagedFile::PutInFreePlace() {
    if (stagingName.empty()) {
        if (linkat(AT_FDCWD, PathOfDescriptor(file.Get()).c_str(), folder.Get(), name.c_str(),
                   AT_SYMLINK_FOLLOW) == 0)
            return;
        if (errno == EEXIST && existing == Existing::replace) return Replace();
        FailToCommit();
    }
    const unsigned flags = existing == Existing::keep ? RENAME_NOREPLACE : 0;
    int failed = renameat2(folder.Get(), stagingName.c_str(), folder.Get(), name.c_str(), flags);
    if (failed && (errno == EINVAL || errno == ENOSYS)) {
        // Not every file system can rename without replacing; a second name says the same.
        failed = linkat(folder.Get(), stagingName.c_str(), folder.Get(), name.c_str(), 0);
        if (!failed) unlinkat(folder.Get(), stagingName.c_str(), 0);
    }
    if (failed) FailToCommit();
}

void StagedFile::FailToCommit() {
    throw Problem("cannot put the finished file in place: " + SystemReason());
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
