// Saving in two steps: whatever happens in between, the old file is whole and nothing else is left.
#include "FileRights.h"
#include "Problem.h"
#include "StagedFile.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace gif89 {
namespace {

using Staging = StagedFile::Staging;
using Names = std::vector<std::string>;

void WriteTo(const StagedFile& file, const std::string& text) {
    ASSERT_EQ(write(file.FileDescriptor(), text.data(), text.size()),
              static_cast<ssize_t>(text.size()));
}

class StagedFileTest : public testing::TestWithParam<Staging> {
  protected:
    unsigned PermissionsOf(const std::string& name) const {
        struct stat status = {};
        EXPECT_EQ(stat(folder.Path(name).c_str(), &status), 0);
        return status.st_mode & 07777U;
    }
    const TemporaryFolder folder;
};
INSTANTIATE_TEST_SUITE_P(BothWays, StagedFileTest,
                         testing::Values(Staging::nameless, Staging::named));

TEST_P(StagedFileTest, TakesTheTargetsPlaceOnlyWhenCommitted) {
    const std::string target = folder.Write("picture.gif", "old");
    chmod(target.c_str(), 06640);
    setxattr(target.c_str(), "user.note", "mine", 4, 0);
    ASSERT_EQ(symlink("picture.gif", folder.Path("link.gif").c_str()), 0);
    for (const char* const name : {"picture.gif", "link.gif"}) {
        folder.Write("picture.gif", "old");
        {
            const StagedFile abandoned(folder.Path(name), Existing::replace, GetParam());
            WriteTo(abandoned, "half");
        }
        EXPECT_EQ(folder.Names(), (Names{"link.gif", "picture.gif"}));
        StagedFile finished(folder.Path(name), Existing::replace, GetParam());
        WriteTo(finished, "new");
        EXPECT_EQ(folder.Read("picture.gif"), "old");
        finished.Commit();
        EXPECT_EQ(folder.Read("picture.gif"), "new");
        EXPECT_EQ(folder.Names(), (Names{"link.gif", "picture.gif"}));
    }
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link.gif")));
    EXPECT_EQ(PermissionsOf("picture.gif"), 0640U) << "rights are handed on, powers are not";
    char note[5] = "";
    getxattr(target.c_str(), "user.note", note, 4);
    EXPECT_STREQ(note, "mine");
}

TEST_P(StagedFileTest, RefusesTargetsThatMustBeKeptOrCannotBe) {
    folder.Write("kept.gif", "old");
    mkdir(folder.Path("sub").c_str(), 0777);
    mkfifo(folder.Path("pipe").c_str(), 0666);
    ASSERT_EQ(symlink("loop", folder.Path("loop").c_str()), 0);
    ASSERT_EQ(symlink("/absent/new.gif", folder.Path("astray").c_str()), 0);
    const std::pair<const char*, const char*> cases[] = {
        {"kept.gif", "exists already"},
        {"sub", "is a folder; a file name was expected"},
        {"pipe", "is a pipe or a device, which no file replaces"},
        {"loop", "the link cannot be followed: Too many levels of symbolic links"},
        {"absent/new.gif", "its folder cannot be reached: No such file or directory"},
        {"astray", "it leads to /absent/new.gif, whose folder cannot be reached: No such file or "
                   "directory"}};
    for (const auto& [name, reason] : cases) {
        std::string said;
        try {
            const StagedFile file(folder.Path(name), Existing::keep, GetParam());
        } catch (const Problem& problem) {
            said = problem.what();
        }
        EXPECT_EQ(said, reason);
    }
}

TEST_P(StagedFileTest, KeepsWhatWasMadeInTheMeantimeUnlessItMayReplace) {
    for (const Existing existing : {Existing::keep, Existing::replace}) {
        StagedFile file(folder.Path("new.gif"), existing, GetParam());
        WriteTo(file, "ours");
        folder.Write("new.gif", "theirs");
        const bool keeps = existing == Existing::keep;
        if (keeps)
            EXPECT_THROW(file.Commit(), Problem);
        else
            file.Commit();
        EXPECT_EQ(folder.Read("new.gif"), keeps ? "theirs" : "ours");
        std::filesystem::remove(folder.Path("new.gif"));
    }
}

TEST_P(StagedFileTest, TakesAFreePlaceWithTheUsualPermissions) {
    const mode_t mask = umask(0027);
    mkdir(folder.Path("sub").c_str(), 0777);
    ASSERT_EQ(symlink("sub/first.gif", folder.Path("link.gif").c_str()), 0);
    ASSERT_EQ(symlink("../new.gif", folder.Path("sub/first.gif").c_str()), 0);
    StagedFile file(folder.Path("link.gif"), Existing::keep, GetParam());
    umask(mask);
    // A file without a name leaves nothing behind, however suddenly the program ends.
    EXPECT_EQ(folder.Names().size(), GetParam() == Staging::named ? 3U : 2U);
    file.Commit(Sync::everything);
    EXPECT_EQ(PermissionsOf("new.gif"), 0640U);
    EXPECT_EQ(folder.Names(), (Names{"link.gif", "new.gif", "sub"}));
}

// Entries of an access control list as the system stores it.
std::string AccessList(std::initializer_list<std::array<char, 3>> entries) {
    std::string list("\2\0\0\0", 4);
    for (const auto& [tag, rights, user] : entries)
        list += {tag, 0, rights, 0, user, user, user, user};
    return list;
}

TEST(FileRights, GiveNobodyMoreThanTheOldFileDid) {
    const TemporaryFolder folder;
    chmod(folder.Path().c_str(), 0777);
    const uid_t user = geteuid();
    ASSERT_EQ(seteuid(user ? user : 65534), 0); // the superuser may give files to every group
    // Tags 1, 2, 4, 16, 32: owner, a user, group, mask, others.
    const std::string list =
                          AccessList({{1, 6, -1}, {2, 4, 7}, {4, 6, -1}, {16, 6, -1}, {32, 4, -1}}),
                      narrow =
                          AccessList({{1, 6, -1}, {2, 4, 7}, {4, 4, -1}, {16, 6, -1}, {32, 4, -1}});
    const struct {
        mode_t mode;
        bool sameGroup;
        std::string list;
        mode_t wanted;
        std::string wantedList;
    } cases[] = {{06755, true, "", 0755, ""},    {0640, false, "", 0600, ""},
                 {0664, false, "", 0644, ""},    {0604, false, "", 0600, ""},
                 {0640, true, list, 0664, list}, {0640, false, list, 0664, narrow},
                 {0340, true, list, 0300, ""}};
    for (const auto& c : cases) {
        const std::string oldPath = folder.Write("old", "");
        if (!c.list.empty())
            setxattr(oldPath.c_str(), "system.posix_acl_access", c.list.data(), c.list.size(), 0);
        if (c.mode != 0640 || c.list.empty()) chmod(oldPath.c_str(), c.mode);
        OldFile old = {{}, Descriptor(open(oldPath.c_str(), O_RDONLY | O_CLOEXEC))};
        ASSERT_EQ(stat(oldPath.c_str(), &old.status), 0);
        if (!c.sameGroup) old.status.st_gid = 54321;
        const std::string newPath = folder.Path("new");
        const Descriptor file(open(newPath.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        // As from a folder that gives new files a list.
        setxattr(newPath.c_str(), "system.posix_acl_access", list.data(), list.size(), 0);
        HandOnRights(old, file.Get());
        struct stat status = {};
        fstat(file.Get(), &status);
        EXPECT_EQ(status.st_mode & 07777, c.wanted) << std::oct << c.mode << ' ' << c.sameGroup;
        char kept[100];
        const ssize_t size = fgetxattr(file.Get(), "system.posix_acl_access", kept, sizeof kept);
        EXPECT_EQ(std::string(kept, size < 0 ? 0 : static_cast<std::size_t>(size)), c.wantedList);
        std::filesystem::remove(oldPath);
        std::filesystem::remove(newPath);
    }
    ASSERT_EQ(seteuid(user), 0);
}

TEST(StagedFile, IsRemovedWhenASignalEndsTheProcess) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGQUIT, SIGXCPU}) {
        const TemporaryFolder folder;
        const std::string target = folder.Write("picture.gif", "old");
        const pid_t child = fork();
        if (child == 0) {
            HandleSignalsWhileSaving();
            const StagedFile file(target, Existing::replace, Staging::named);
            raise(signal);
            _exit(0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << "signal " << signal;
        EXPECT_EQ(folder.Names(), Names{"picture.gif"}) << "signal " << signal;
        EXPECT_EQ(folder.Read("picture.gif"), "old");
    }
}

} // namespace
} // namespace gif89
