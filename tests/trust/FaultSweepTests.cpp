// Whole exports of both kinds, their dialogs operated and the preview used, with every outside step
// failing in turn: what is said, what is written, and that nothing is left behind.
#include "ExportWays.h"
#include "FaultInjection.h"
#include "MemoryManager.h"
#include "StagedFile.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>

namespace {

// The last steps of saving are the system's own. They are counted, failed and disturbed here, in
// the place of the library's functions.
int commitSteps = 0, failingCommitStep = 0, signalAtRename = 0;

bool CommitStepFails() {
    errno = EIO;
    return ++commitSteps == failingCommitStep;
}

} // namespace

extern "C" int linkat(int oldFolder, const char* oldName, int newFolder, const char* newName,
                      int flags) noexcept {
    if (CommitStepFails()) return -1;
    return static_cast<int>(syscall(SYS_linkat, oldFolder, oldName, newFolder, newName, flags));
}
extern "C" int renameat2(int oldFolder, const char* oldName, int newFolder, const char* newName,
                         unsigned flags) noexcept {
    if (signalAtRename) raise(signalAtRename);
    if (CommitStepFails()) return -1;
    return static_cast<int>(syscall(SYS_renameat2, oldFolder, oldName, newFolder, newName, flags));
}
extern "C" int fdatasync(int file) {
    return CommitStepFails() ? -1 : static_cast<int>(syscall(SYS_fdatasync, file));
}
extern "C" int renameat(int oldFolder, const char* oldName, int newFolder,
                        const char* newName) noexcept {
    return renameat2(oldFolder, oldName, newFolder, newName, 0);
}

namespace gif89 {
namespace {

/// A kind of step: how its n-th occurrence is made to fail (0: none), and how many there were.
struct Step {
    const char* name;
    std::function<void(int n)> fail;
    std::function<int()> count;
};

Step ToolboxStep(const char* name, FaultPoint point, OSErr code) {
    return {name, [=](int n) { FailNthCall(point, n, code); }, [=] { return CallsSoFar(point); }};
}

std::size_t OpenDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// The files of an order and of what it comes down to when a part of it cannot be had.
std::map<std::string, std::string> ExpectedFiles(ExportWay& way, const Order& order) {
    Order uncommented = order, plain = order;
    uncommented.comment = false;
    plain.paletteFile = plain.channel = false;
    return {{way.Run(order).file, "as ordered"},
            {way.Run(uncommented).file, "without comment"},
            {way.Run(plain).file, order.indexed ? "without channel" : "without palette file"}};
}

/// How often a sweep must end in which way: with a sentence, or with one of the expected files.
using Endings = std::map<std::string, int>;
constexpr int kSome = 0; ///< at least once

/// Fails every step of a kind, one export each, and expects these endings and no other.
void Sweep(ExportWay& way, const Order& order, const Step& step, const Endings& expected) {
    step.fail(0);
    std::map<std::string, std::string> files = ExpectedFiles(way, order);
    const std::string sweep =
        std::string(way.Name()) + (order.indexed ? ", indexed, " : ", RGB, ") + step.name + ": ";
    Endings endings;
    int failures = 0;
    for (bool failed = true; failed; failures += failed) {
        const int n = failures + 1;
        const long blocks = LiveMemoryBlocks();
        const std::size_t descriptors = OpenDescriptors();
        step.fail(n);
        const Ending end = way.Run(order);
        failed = step.count() >= n;
        step.fail(0);
        std::string ending = end.said;
        if (ending == "done") ending = files.contains(end.file) ? files[end.file] : "a wrong file";
        EXPECT_TRUE(failed ? expected.contains(ending) : ending == "as ordered")
            << sweep << n << ": " << ending;
        EXPECT_EQ(LiveMemoryBlocks(), blocks) << sweep << n;
        EXPECT_EQ(OpenDescriptors(), descriptors) << sweep << n;
        if (failed) {
            const auto wanted = expected.find(ending);
            int& times = endings[ending];
            if (wanted == expected.end() || wanted->second != kSome) ++times;
            EXPECT_EQ(files[way.Run(order).file], "as ordered") << "after " << sweep << n;
        }
    }
    EXPECT_EQ(endings, expected) << sweep;
    std::printf("%s%d failures\n", sweep.c_str(), failures);
}

const std::string kFullDisk = "the disk is full", kDenied = "permission denied",
                  kBadDisk = "the disk could not be written or read",
                  kExists = "a file of that name exists already",
                  kNotCommitted = "the finished file cannot be put in place: Input/output error",
                  kNotStored = "the finished file cannot be stored: Input/output error",
                  kNoDialog = "the options dialog cannot be opened",
                  kNoMemory = "not enough memory", kRequestLeft = ", request left",
                  kHostCode = "the export failed with code -1234",
                  kBadPalette = "The palette cannot be read from this file.";

class FaultSweep : public testing::TestWithParam<bool> {
  protected:
    FaultSweep() { order.indexed = GetParam(); }
    Order order;
    OwnHost own;
    Saving over{true}, fresh{false};
};
INSTANTIATE_TEST_SUITE_P(Kinds, FaultSweep, testing::Bool(), [](const auto& kind) {
    return std::string(kind.param ? "Indexed" : "RGB");
});

TEST_P(FaultSweep, OfMemory) {
    const Step step = ToolboxStep("allocate", FaultPoint::allocate, memFullErr);
    // A preview that cannot be shown, and pieces of drawings, are passed over; a host that cannot
    // hand out the comment is one without.
    Endings endings = {{"as ordered", kSome}, {"without comment", 1}, {kNoDialog, kSome}};
    if (!order.indexed) { // context, four buffers, comment, stream, two tables
        endings[kNoMemory] = 9;
        Sweep(over, order, step, endings);
        Sweep(own, order, step, endings);
        return;
    }
    // Context, indices, comment, the preview's pixels and colours, stream, two tables.
    endings[kNoMemory] = 8;
    Sweep(over, order, step, endings);
    endings[kNoMemory] = 7;
    endings[kNoMemory + kRequestLeft] = 1; // the indices are copied first of all
    Sweep(own, order, step, endings);
}

TEST_P(FaultSweep, OfResources) {
    const Step step = ToolboxStep("resource", FaultPoint::loadResource, resNotFound);
    Endings endings = {{"as ordered", kSome}, {kNoDialog, kSome}};
    Sweep(own, order, step, endings);
    endings["done without a suffix"] = 1;
    Sweep(over, order, step, endings);
}

TEST_P(FaultSweep, OfFiles) {
    Order large = order; // more than the stream holds back, so that writes come before the last
    large.rows = 400;
    large.columns = 400;
    large.paletteFile = false;
    large.colors = "255";
    for (ExportWay* way : {static_cast<ExportWay*>(&over), static_cast<ExportWay*>(&own)}) {
        Sweep(*way, order, ToolboxStep("create", FaultPoint::createFile, dskFulErr),
              {{kFullDisk, 1}});
        Sweep(*way, large, ToolboxStep("write", FaultPoint::writeFile, dskFulErr),
              {{kFullDisk, order.indexed ? 2 : 3}});
        const Step open = ToolboxStep("open", FaultPoint::openFile, permErr);
        const Step close = ToolboxStep("close", FaultPoint::closeFile, ioErr);
        if (order.indexed) {
            Sweep(*way, order, open, {{kDenied, 1}});
            Sweep(*way, order, close, {{kBadDisk, 1}});
            continue;
        }
        // A palette file that cannot be opened is passed over, and closing it can lose nothing.
        Sweep(*way, order, open, {{kDenied, 1}, {"without palette file", 1}});
        Sweep(*way, order, close, {{kBadDisk, 1}, {"as ordered", 1}});
        Sweep(*way, order, ToolboxStep("read", FaultPoint::readFile, eofErr), {{kBadPalette, 11}});
        Sweep(*way, order, ToolboxStep("seek", FaultPoint::seekFile, posErr), {{kBadPalette, 2}});
    }
    Sweep(own, order, ToolboxStep("delete", FaultPoint::deleteFile, permErr), {{kExists, 1}});
}

TEST_P(FaultSweep, OfCommits) {
    const Step step = {"commit",
                       [](int n) {
                           commitSteps = 0;
                           failingCommitStep = n;
                       },
                       [] { return commitSteps; }};
    // A name, and the old file's place.
    Sweep(over, order, step, {{kNotStored, 1}, {kNotCommitted, 2}});
    Sweep(fresh, order, step, {{kNotCommitted, 1}});
}

// A replacement takes two steps; between them the new file lies beside the old one.
TEST(Commit, IsNotCutInTwoByASignal) {
    const TemporaryFolder folder;
    const std::string target = folder.Write("picture.gif", "old");
    for (const int signal : {SIGALRM, SIGTERM}) {
        const pid_t child = fork();
        if (child == 0) {
            StagedFile file(target, Existing::replace);
            if (write(file.FileDescriptor(), "new", 3) != 3) _exit(1);
            signalAtRename = signal;
            file.Commit();
            _exit(0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << "signal " << signal;
        EXPECT_EQ(folder.Names(), std::vector<std::string>{"picture.gif"});
        EXPECT_EQ(folder.Read("picture.gif"), "new");
    }
}

TEST_P(FaultSweep, OfTheHost) {
    const Step property = {"property", [&](int n) { own.failingProperty = n; },
                           [&] { return own.properties; }};
    // A channel without a name gets its number.
    Endings endings = {{"without comment", 1}};
    if (order.indexed) endings["as ordered"] = 1;
    Sweep(own, order, property, endings);

    const Step request = {"request", [&](int n) { own.failingRequest = n; },
                          [&] { return own.requests; }};
    // The preview's requests and the histogram's do not count: two colours are white and black
    // whatever the picture.
    order.paletteFile = false;
    order.colors = "2";
    Sweep(own, order, request,
          order.indexed ? Endings{{kHostCode + kRequestLeft, 1}, {"without channel", 1}}
                        : Endings{{kHostCode, 2}, {"as ordered", 3}});
}

} // namespace
} // namespace gif89
