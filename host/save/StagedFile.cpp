#include "StagedFile.h"

#include "FileRights.h"
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
#include <optional>

namespace gif89 {
namespace {

// The staging files with names, which a signal must remove. The handler may only read atomics and
// call unlinkat. So a slot gets its folder before its name, and what both point to stays valid
// while they are here.
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
    return -1; // all slots are in use; the destructor still removes the file
}

void FreeSlot(int slot) {
    if (slot >= 0) slots[slot].name = nullptr;
}

void RemoveAndEnd(int signal) {
    for (const Slot& slot : slots)
        if (const char* name = slot.name.load()) unlinkat(slot.folder, name, 0);
    // SA_RESETHAND has restored the default action.
    raise(signal);
}

[[noreturn]] void Fail(const std::string& what) {
    throw OutputProblem(what + ": " + SystemReason());
}

// A short name of its own, because the target's name may already have the maximum length.
std::string MakeStagingName() {
    std::uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number) Fail("there are no random numbers");
    char name[32];
    std::snprintf(name, sizeof name, ".gif89-%016llx.gif", static_cast<unsigned long long>(number));
    return name;
}

// Blocks the signals of this thread during its life, because a commit may take two steps, between
// which the file lies in the folder under its staging name. A signal that comes meanwhile is
// handled afterwards; only SIGKILL and SIGSTOP cannot be blocked.
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

// The path of an open file without a name, on systems that show descriptors as paths.
std::string PathOfDescriptor(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

constexpr char kNotInPlace[] = "the finished file cannot be put in place";

// The file that is at the place, if there is one. Only regular files are opened, because opening a
// device may make it do something.
std::optional<OldFile> LookAtOldFile(const FilePlace& place) {
    const int folder = place.folder.Get();
    const char* const name = place.name.c_str();
    OldFile old;
    if (fstatat(folder, name, &old.status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno == ENOENT) return std::nullopt;
        Fail("the old file cannot be looked at");
    }
    if (S_ISREG(old.status.st_mode))
        old.file = Descriptor(openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (old.file.IsOpen()) fstat(old.file.Get(), &old.status); // the name may lead elsewhere by now
    if (S_ISDIR(old.status.st_mode)) throw OutputProblem("is a folder; a file name was expected");
    if (!S_ISREG(old.status.st_mode))
        throw OutputProblem("is a pipe or a device, which no file replaces");
    return old;
}

// Forces a file or folder to the disk. File systems that cannot do that say so, which is no error.
void ForceToDisk(int file) {
    if (fdatasync(file) != 0 && errno != EINVAL) Fail("the finished file cannot be stored");
}

void ForceFolderToDisk(const FilePlace& place) {
    const Descriptor folder(openat(place.folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.IsOpen() || (fsync(folder.Get()) != 0 && errno != EINVAL))
        Fail("is in its place, but its folder cannot be stored");
}

} // namespace

StagedFile::StagedFile(const std::string& targetPath, Existing whatExists, Staging staging)
    : place(FindPlace(targetPath)), existing(whatExists) {
    if (place.name.empty()) throw OutputProblem("is a folder; a file name was expected");
    const bool replaces = LookAtOldFile(place).has_value();
    if (replaces && existing == Existing::keep)
        throw OutputProblem("exists already", ProblemKind::fileExists);
    // Only the owner may read the new file until it has the rights of the old one.
    const mode_t mode = replaces ? 0600 : 0666;
    if (staging == Staging::nameless) CreateNameless(mode);
    if (!file.IsOpen()) CreateNamed(mode);
}

StagedFile::~StagedFile() {
    if (!stagingName.empty()) unlinkat(place.folder.Get(), stagingName.c_str(), 0);
    FreeSlot(cleanupSlot);
}

void StagedFile::CreateNameless(mode_t mode) {
    file = Descriptor(openat(place.folder.Get(), ".", O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
    // Without paths for descriptors the file could not get a name later.
    if (file.IsOpen() && access(PathOfDescriptor(file.Get()).c_str(), F_OK) != 0)
        file = Descriptor();
}

void StagedFile::CreateNamed(mode_t mode) {
    TakeStagingName();
    file = Descriptor(openat(place.folder.Get(), stagingName.c_str(),
                             O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (file.IsOpen()) return;
    const int error = errno;
    stagingName.clear();
    FreeSlot(cleanupSlot);
    errno = error;
    Fail("its folder cannot be written");
}

void StagedFile::TakeStagingName() {
    stagingName = MakeStagingName();
    cleanupSlot = TakeSlot(place.folder.Get(), stagingName.c_str());
}

void StagedFile::Commit(Sync sync) {
    while (!TryToCommit(sync)) {
        // Another program has created the target since we looked.
    }
    if (sync == Sync::everything) ForceFolderToDisk(place);
}

bool StagedFile::TryToCommit(Sync sync) {
    std::optional<OldFile> old;
    if (existing == Existing::replace) old = LookAtOldFile(place);
    if (old) HandOnRights(*old, file.Get());
    if (old || sync == Sync::everything) ForceToDisk(file.Get());
    const SignalsWait untilInPlace;
    if (old)
        Replace();
    else if (!PutInFreePlace())
        return false;
    FreeSlot(cleanupSlot);
    cleanupSlot = -1;
    stagingName.clear();
    return true;
}

// A file without a name can be linked to a free name directly, but it cannot replace another file.
// For that it needs a staging name first.
void StagedFile::Replace() {
    if (stagingName.empty()) {
        TakeStagingName();
        if (linkat(AT_FDCWD, PathOfDescriptor(file.Get()).c_str(), place.folder.Get(),
                   stagingName.c_str(), AT_SYMLINK_FOLLOW) != 0)
            Fail(kNotInPlace);
    }
    if (renameat(place.folder.Get(), stagingName.c_str(), place.folder.Get(), place.name.c_str()) !=
        0)
        Fail(kNotInPlace);
}

// Returns false when the place is not free any more and the file there may be replaced.
bool StagedFile::PutInFreePlace() {
    const int folder = place.folder.Get();
    const char* const name = place.name.c_str();
    int failed;
    if (stagingName.empty()) {
        failed =
            linkat(AT_FDCWD, PathOfDescriptor(file.Get()).c_str(), folder, name, AT_SYMLINK_FOLLOW);
    } else {
        failed = renameat2(folder, stagingName.c_str(), folder, name, RENAME_NOREPLACE);
        if (failed && (errno == EINVAL || errno == ENOSYS)) {
            // Some file systems cannot rename without replacing; a second link has the same effect.
            failed = linkat(folder, stagingName.c_str(), folder, name, 0);
            if (!failed) unlinkat(folder, stagingName.c_str(), 0);
        }
    }
    if (failed && errno == EEXIST && existing == Existing::replace) return false;
    if (failed) Fail(kNotInPlace);
    return true;
}

void HandleSignalsWhileSaving() {
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGQUIT, SIGXCPU}) {
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
