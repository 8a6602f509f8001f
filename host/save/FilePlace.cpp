#include "FilePlace.h"

#include "FolderTable.h"
#include "Problem.h"

#include <climits>

#include <fcntl.h>
#include <sys/stat.h>

namespace gif89 {
namespace {

constexpr int kMostLinks = 40; // as many as the system follows

[[noreturn]] void FailToFollow() {
    throw OutputProblem("the link cannot be followed: " + SystemReason());
}

bool IsLink(const FilePlace& place) {
    struct stat status;
    return fstatat(place.folder.Get(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISLNK(status.st_mode);
}

// The system refuses to follow some links, for instance another user's in a folder for everyone.
// Such a link is not followed here either. A link whose target does not exist yet is not a refusal.
std::string ReadLink(const FilePlace& place) {
    struct stat status;
    if (fstatat(place.folder.Get(), place.name.c_str(), &status, 0) != 0 && errno != ENOENT)
        FailToFollow();
    char text[PATH_MAX];
    const ssize_t length = readlinkat(place.folder.Get(), place.name.c_str(), text, sizeof text);
    if (length < 0) FailToFollow();
    return {text, static_cast<std::size_t>(length)};
}

} // namespace

FilePlace FindPlace(const std::string& path) {
    FilePlace place;
    place.path = path;
    for (int links = 0; links <= kMostLinks; ++links) {
        const std::size_t slash = place.path.rfind('/');
        const std::string before = place.path.substr(0, slash + 1); // empty without a slash
        place.name = place.path.substr(slash + 1);
        place.folder = OpenFolder(before.empty() ? "." : before);
        if (!place.folder.IsOpen())
            throw OutputProblem((links > 0 ? "it leads to " + place.path + ", whose" : "its") +
                                std::string(" folder cannot be reached: ") + SystemReason());
        if (!IsLink(place)) return place;
        const std::string leadsTo = ReadLink(place);
        place.path = leadsTo.starts_with('/') ? leadsTo : before + leadsTo;
    }
    errno = ELOOP;
    FailToFollow();
}

PlaceId Identify(const FilePlace& place) {
    struct stat status = {};
    fstat(place.folder.Get(), &status);
    return {status.st_dev, status.st_ino, place.name};
}

bool LeadToOneFile(const std::string& one, const std::string& other) {
    struct stat first, second;
    const bool isFirst = stat(one.c_str(), &first) == 0;
    const bool isSecond = stat(other.c_str(), &second) == 0;
    if (isFirst && isSecond)
        return first.st_dev == second.st_dev && first.st_ino == second.st_ino &&
               !S_ISCHR(first.st_mode);
    if (isFirst || isSecond) return false;
    try {
        return Identify(FindPlace(one)) == Identify(FindPlace(other));
    } catch (const OutputProblem&) {
        return false; // at least one of them cannot be reached
    }
}

} // namespace gif89
