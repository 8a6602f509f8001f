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
constexpr Staging kStagings[] = {Staging::nameless, Staging::named};

void WriteTo(const StagedFile& file, const std::string& text) {
    ASSERT_EQ(write(file.FileDescriptor(), text.data(), text.size()),
              static_cast<ssize_t>(text.size()));
}

class StagedFileTest : public testing::TestWithParam<Staging> {
  protected:
    const TemporaryFolder folder;
};
INSTANTIATE_TEST_SUITE_P(BothWays, StagedFileTest, testing::ValuesIn(kStagings));

TEST_P(StagedFileTest, TakesTheTargetsPlaceOnlyWhenCommitted) {
    const std::string target = folder.Write("picture.gif", "old");
    chmod(target.c_str(), 0640);
    ASSERT_EQ(symlink("picture.gif", folder.Path("link.gif").c_str()), 0);
    const std::vector<std::string> both = {"link.gif", "picture.gif"};
    for (const char* const name : {"picture.gif", "link.gif"}) {
        folder.Write("picture.gif", "old");
        {
            const StagedFile abandoned(folder.Path(name), Existing::replace, GetParam());
            WriteTo(abandoned, "half");
        }
        EXPECT_EQ(folder.Names(), both);
        StagedFile finished(folder.Path(name), Existing::replace, GetParam());
        WriteTo(finished, "new");
        EXPECT_EQ(folder.Read("picture.gif"), "old");
        finished.Commit();
        EXPECT_EQ(folder.Read("picture.gif"), "new");
        EXPECT_EQ(folder.Names(), both);
    }
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link.gif")));
    struct stat status;
    ASSERT_EQ(stat(target.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640U) << "a replaced file hands on its permissions";
}

TEST_P(StagedFileTest, RefusesTargetsThatMustBeKeptOrCannotBe) {
    folder.Write("kept.gif", "old");
    mkdir(folder.Path("sub").c_str(), 0777);
    const std::pair<const char*, const char*> cases[] = {
        {"kept.gif", "exists already"}, {"sub", "is a folder"}, {"absent/new.gif", "folder"}};
    for (const auto& [name, reason] : cases) {
        try {
            const StagedFile file(folder.Path(name), Existing::keep, GetParam());
            ADD_FAILURE() << "expected a refusal with \"" << reason << "\"";
        } catch (const Problem& problem) {
            EXPECT_NE(std::string(problem.what()).find(reason), std::string::npos)
                << problem.what();
        }
    }
    for (const Existing existing : {Existing::keep, Existing::replace}) {
        StagedFile file(folder.Path("new.gif"), existing, GetParam());
        WriteTo(file, "ours");
        folder.Write("new.gif", "made in the meantime");
        if (existing == Existing::keep) {
            EXPECT_THROW(file.Commit(), Problem);
        } else {
            file.Commit();
        }
        EXPECT_EQ(folder.Read("new.gif"),
                  existing == Existing::keep ? "made in the meantime" : "ours");
        std::filesystem::remove(folder.Path("new.gif"));
    }
}

TEST_P(StagedFileTest, TakesAFreePlaceWithTheUsualPermissions) {
    const mode_t mask = umask(0027);
    StagedFile file(folder.Path("new.gif"), Existing::keep, GetParam());
    WriteTo(file, "ours");
    file.Commit();
    umask(mask);
    struct stat status;
    ASSERT_EQ(stat(folder.Path("new.gif").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"new.gif"});
}

TEST(StagedFile, HasNoNameThatAnEndAtOnceCouldLeaveBehind) {
    const TemporaryFolder folder;
    const StagedFile file(folder.Path("new.gif"), Existing::keep);
    WriteTo(file, "half");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{});
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
        EXPECT_EQ(folder.Names(), std::vector<std::string>{"picture.gif"}) << "signal " << signal;
        EXPECT_EQ(folder.Read("picture.gif"), "old");
    }
}

} // namespace
} // namespace gif89
