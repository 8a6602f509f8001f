// Saving in two steps: whatever happens in between, the old file is whole and nothing else is left.
#include "Problem.h"
#include "StagedFile.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

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
    chmod(folder.Write("picture.gif", "old").c_str(), 0640);
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
    EXPECT_EQ(PermissionsOf("picture.gif"), 0640U) << "a replaced file hands on its permissions";
}

TEST_P(StagedFileTest, RefusesTargetsThatMustBeKeptOrCannotBe) {
    folder.Write("kept.gif", "old");
    mkdir(folder.Path("sub").c_str(), 0777);
    const std::pair<const char*, const char*> cases[] = {
        {"kept.gif", "exists already"},
        {"sub", "is a folder; a file name was expected"},
        {"absent/new.gif", "cannot write into its folder: No such file or directory"}};
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
    StagedFile file(folder.Path("new.gif"), Existing::keep, GetParam());
    umask(mask);
    // A file without a name leaves nothing behind, however suddenly the program ends.
    EXPECT_EQ(folder.Names().size(), GetParam() == Staging::named);
    file.Commit();
    EXPECT_EQ(PermissionsOf("new.gif"), 0640U);
    EXPECT_EQ(folder.Names(), Names{"new.gif"});
}

TEST(StagedFile, IsRemovedWhenASignalEndsTheProcess) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
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
