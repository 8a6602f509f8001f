#include "FileRights.h"

#include <cerrno>
#include <cstring>
#include <string_view>
#include <vector>

#include <linux/limits.h>
#include <linux/posix_acl.h>
#include <linux/xattr.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace gif89 {
namespace {

using Bytes = std::vector<char>;

// The largest value that the system allows, so that one read is enough.
Bytes ReadAttribute(int file, const char* name) {
    Bytes value(XATTR_SIZE_MAX);
    const ssize_t size = fgetxattr(file, name, value.data(), value.size());
    value.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return value;
}

// Copies the user's attributes. The new file keeps its value of those that it has already, such as
// its type.
void CopyUserAttributes(int from, int to) {
    if (flistxattr(from, nullptr, 0) <= 0) return;
    Bytes names(XATTR_LIST_MAX);
    const ssize_t length = flistxattr(from, names.data(), names.size());
    names.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    for (std::size_t at = 0; at < names.size(); at += std::strlen(&names[at]) + 1) {
        const char* const name = &names[at];
        if (!std::string_view(name).starts_with(XATTR_USER_PREFIX)) continue;
        const Bytes value = ReadAttribute(from, name);
        static_cast<void>(fsetxattr(to, name, value.data(), value.size(), XATTR_CREATE));
    }
}

// Returns whether the new file has the old one's group. Only the superuser gives files away; other
// users give them to their own groups.
bool HandOnOwner(const struct stat& old, int newFile) {
    if (fchown(newFile, old.st_uid, old.st_gid) == 0) return true;
    return fchown(newFile, static_cast<uid_t>(-1), old.st_gid) == 0;
}

// An access control list as the system stores it: four bytes of version, then eight for each entry,
// which begin with its tag and its rights, two bytes each, the low one first.
constexpr std::size_t kListHead = 4, kListEntry = 8, kRights = 2;

// The new file has another group than the old one. Members of the new group used to be others, and
// members of the old group are others now. So group and others get only the rights that both had.
void NarrowList(Bytes& list) {
    char common = ACL_READ | ACL_WRITE | ACL_EXECUTE;
    const auto forEntries = [&list](int tags, auto act) {
        for (std::size_t at = kListHead; at + kListEntry <= list.size(); at += kListEntry)
            if (list[at] & tags) act(list[at + kRights]);
    };
    forEntries(ACL_GROUP_OBJ | ACL_MASK | ACL_OTHER,
               [&common](char rights) { common = static_cast<char>(common & rights); });
    forEntries(ACL_GROUP_OBJ | ACL_OTHER, [common](char& rights) { rights = common; });
}

mode_t NarrowMode(mode_t mode) {
    const mode_t common = mode >> 3 & mode & 07;
    return (mode & 0700) | common << 3 | common;
}

// A new file may have got a list from its folder, which could give rights to people who had none on
// the old file.
bool DropList(int file) {
    return fremovexattr(file, XATTR_NAME_POSIX_ACL_ACCESS) == 0 || errno == ENODATA ||
           errno == EOPNOTSUPP;
}

enum class HasList { no, yes, unknown };

HasList LookForList(const Descriptor& file) {
    if (!file.IsOpen()) return HasList::unknown;
    if (fgetxattr(file.Get(), XATTR_NAME_POSIX_ACL_ACCESS, nullptr, 0) >= 0) return HasList::yes;
    return errno == ENODATA || errno == EOPNOTSUPP ? HasList::no : HasList::unknown;
}

} // namespace

void HandOnRights(const OldFile& old, int newFile) {
    if (old.file.IsOpen()) CopyUserAttributes(old.file.Get(), newFile);
    const bool sameGroup = HandOnOwner(old.status, newFile);
    const HasList hasList = LookForList(old.file);
    if (hasList == HasList::yes) {
        Bytes list = ReadAttribute(old.file.Get(), XATTR_NAME_POSIX_ACL_ACCESS);
        if (!sameGroup) NarrowList(list);
        if (fsetxattr(newFile, XATTR_NAME_POSIX_ACL_ACCESS, list.data(), list.size(), 0) == 0)
            return;
    }
    mode_t mode = old.status.st_mode & 0777;
    if (!sameGroup) mode = NarrowMode(mode);
    // If the list could not be read or set, it may have forbidden what these bits allow.
    if (!DropList(newFile) || hasList != HasList::no) mode &= 0700;
    static_cast<void>(fchmod(newFile, mode));
}

} // namespace gif89
