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

TEST(StagedFile, TakesTheTargetsPlaceOnlyWhenCommitted) {
    const TemporaryFolder folder;
    const std::string target = folder.Write("picture.gif", "old");
    chmod(target.c_str(), 0640);
    {
        const StagedFile abandoned(target, Existing::replace);
        folder.WritePath(abandoned.Path(), "half");
    }
    EXPECT_EQ(folder.Read("picture.gif"), "old");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"picture.gif"});

    StagedFile finished(target, Existing::replace);
    folder.WritePath(finished.Path(), "new");
    EXPECT_EQ(folder.Read("picture.gif"), "old");
    finished.Commit();
    EXPECT_EQ(folder.Read("picture.gif"), "new");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"picture.gif"});
    struct stat status;
    ASSERT_EQ(stat(target.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640U) << "a replaced file hands on its permissions";
}

TEST(StagedFile, RefusesTargetsThatMustBeKeptOrCannotBe) {
    const TemporaryFolder folder;
    folder.Write("kept.gif", "old");
    mkdir(folder.Path("sub").c_str(), 0777);
    const struct {
        std::string target;
        std::string reason;
    } cases[] = {{folder.Path("kept.gif"), "exists already"},
                 {folder.Path("sub"), "is a folder"},
                 {folder.Path("absent/new.gif"), "folder"}};
    for (const auto& c : cases) {
        try {
            const StagedFile file(c.target, Existing::keep);
            ADD_FAILURE() << "expected a refusal with \"" << c.reason << "\"";
        } catch (const Problem& problem) {
            EXPECT_NE(std::string(problem.what()).find(c.reason), std::string::npos)
                << problem.what();
        }
    }
}

TEST(StagedFile, DoesNotReplaceAFileMadeInTheMeantime) {
    const TemporaryFolder folder;
    StagedFile file(folder.Path("new.gif"), Existing::keep);
    folder.WritePath(file.Path(), "ours");
    folder.Write("new.gif", "theirs");
    EXPECT_THROW(file.Commit(), Problem);
    EXPECT_EQ(folder.Read("new.gif"), "theirs");
}

TEST(StagedFile, FollowsALinkAndKeepsIt) {
    const TemporaryFolder folder;
    folder.Write("real.gif", "old");
    ASSERT_EQ(symlink("real.gif", folder.Path("link.gif").c_str()), 0);
    StagedFile file(folder.Path("link.gif"), Existing::replace);
    folder.WritePath(file.Path(), "new");
    file.Commit();
    EXPECT_EQ(folder.Read("real.gif"), "new");
    struct stat status;
    ASSERT_EQ(lstat(folder.Path("link.gif").c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST(StagedFile, IsRemovedWhenASignalEndsTheProcess) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
        const TemporaryFolder folder;
        const std::string target = folder.Write("picture.gif", "old");
        const pid_t child = fork();
        if (child == 0) {
            HandleSignalsWhileSaving();
            const StagedFile file(target, Existing::replace);
            folder.WritePath(file.Path(), "half");
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
