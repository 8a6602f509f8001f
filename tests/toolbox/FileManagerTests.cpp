// Names, folders, files and their errors, checked against what the system itself shows.
#include "FaultInjection.h"
#include "FileManager.h"
#include "TemporaryFolder.h"

#include <csignal>
#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

// Without links on the way to it, as paths come back.
std::string operator/(const TemporaryFolder& folder, const std::string& name) {
    return std::filesystem::canonical(folder.Path()).string() + '/' + name;
}

FSSpec SpecOf(const std::string& path) {
    FSSpec spec;
    EXPECT_EQ(PathToFSSpec(path, &spec), noErr) << path;
    return spec;
}

std::string NameOf(const FSSpec& spec) {
    return {spec.name + 1, spec.name + 1 + spec.name[0]};
}

FSSpec Named(std::int32_t folder, const std::string& name) {
    FSSpec spec;
    spec.parID = folder;
    spec.name[0] = static_cast<std::uint8_t>(name.size());
    std::copy(name.begin(), name.end(), spec.name + 1);
    return spec;
}

std::string PathOf(const FSSpec& spec) {
    std::string path;
    EXPECT_EQ(FSSpecToPath(&spec, &path), noErr);
    return path;
}

OSErr Create(const std::string& path) {
    const FSSpec spec = SpecOf(path);
    return FSpCreate(&spec, FourCC("Q7IM"), FourCC("GIFf"), 0);
}

OSErr Delete(const std::string& path) {
    const FSSpec spec = SpecOf(path);
    return FSpDelete(&spec);
}

struct Opened {
    OSErr error;
    std::int16_t refNum = 0;
};

Opened Open(const std::string& path, std::int8_t permission) {
    const FSSpec spec = SpecOf(path);
    Opened opened{};
    opened.error = FSpOpenDF(&spec, permission, &opened.refNum);
    return opened;
}

OSErr OpenAndClose(const std::string& path, std::int8_t permission) {
    const Opened opened = Open(path, permission);
    return opened.error == noErr ? FSClose(opened.refNum) : opened.error;
}

struct Transfer {
    OSErr error;
    std::int32_t count;
    bool operator==(const Transfer&) const = default;
};
void PrintTo(const Transfer& transfer, std::ostream* out) {
    *out << "error " << transfer.error << ", count " << transfer.count;
}

Transfer Write(std::int16_t refNum, const std::string& bytes) {
    auto count = static_cast<std::int32_t>(bytes.size());
    const OSErr error = FSWrite(refNum, &count, bytes.data());
    return {error, count};
}

std::string Repeat(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
}

CInfoPBRec Describe(const FSSpec& spec) {
    FSSpec name = spec;
    CInfoPBRec info;
    info.ioNamePtr = name.name;
    info.ioDirID = spec.parID;
    EXPECT_EQ(PBGetCatInfoSync(&info), noErr) << NameOf(spec);
    info.ioNamePtr = nullptr;
    return info;
}

} // namespace

TEST(FSSpecs, LeadBackToPathsOfAnyBytesAndLengths) {
    const TemporaryFolder folder;
    const std::string names[] = {"a",
                                 std::string(63, 'b'),
                                 std::string(64, 'c'),
                                 std::string(251, 'd') + ".gif",
                                 "B\xC3\xA4r.gif",
                                 "line\nbreak\x01\xFF\x80",
                                 std::string(200, '\x80'),
                                 "." + std::string(80, 'e'),
                                 "..."};
    for (const std::string& name : names) {
        const FSSpec spec = SpecOf(folder / name);
        EXPECT_EQ(PathOf(spec), folder / name);
        EXPECT_EQ(NameOf(spec).find('/') == std::string::npos, name.size() <= 63) << name;
        EXPECT_EQ(NameOf(SpecOf(folder / name)), NameOf(spec)) << "asked again";
        EXPECT_EQ(Create(folder / name), noErr) << name;
        EXPECT_TRUE(std::filesystem::exists(folder / name)) << name;
    }
}

TEST(FSSpecs, AliasesKeepTheBeginningInWholeCharactersAndTheExtension) {
    const TemporaryFolder folder;
    for (std::size_t ascii = 0; ascii < 4; ++ascii) {
        const std::string name = std::string(ascii, 'x') + Repeat("\xF0\x9F\x98\x80", 30) + ".gif";
        const std::string alias = NameOf(SpecOf(folder / name));
        const std::string head = alias.substr(0, alias.find('/'));
        EXPECT_TRUE(name.starts_with(head) && head.size() > 50) << alias;
        EXPECT_EQ((head.size() - ascii) % 4, 0U) << alias << " cuts a character";
        EXPECT_TRUE(alias.ends_with(".gif")) << alias;
    }
}

TEST(FSSpecs, AliasesBelongToOneNameInOneFolder) {
    const TemporaryFolder folder, other;
    const FSSpec first = SpecOf(folder / (std::string(100, 'n') + "1.gif"));
    const FSSpec second = SpecOf(folder / (std::string(100, 'n') + "2.gif"));
    EXPECT_NE(NameOf(first), NameOf(second));
    std::string path;
    const FSSpec elsewhere = Named(SpecOf(other / "a").parID, NameOf(first));
    EXPECT_EQ(FSSpecToPath(&elsewhere, &path), bdNamErr);
}

TEST(FSSpecs, HaveOneDirectoryIDForAFolderHoweverItIsReached) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "sub");
    std::filesystem::create_directory_symlink(folder / "sub", folder / "link");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder / "sub");
    const FSSpec here = SpecOf("x.gif");
    std::filesystem::current_path(before);
    EXPECT_EQ(PathOf(here), folder / "sub/x.gif") << "after a change of the working folder";
    for (const char* const way : {"sub/", "sub//", "link/", "sub/../link/./"})
        EXPECT_EQ(SpecOf(folder / way + "y").parID, here.parID) << way;
    for (int i = 0; i < 1000; ++i) SpecOf(folder / "sub/" + std::to_string(i));
    const std::int32_t next = SpecOf(folder / "z").parID;
    EXPECT_EQ(next, here.parID + 1) << "a thousand names entered nothing";
    EXPECT_EQ(PathOf(SpecOf("/top")), "/top");
}

TEST(FSSpecs, WorkBelowFoldersWhosePathIsTooLongForTheSystem) {
    const TemporaryFolder folder;
    const std::string step(200, 's');
    std::string path = std::filesystem::canonical(folder.Path());
    std::vector<int> folders{open(path.c_str(), O_PATH)};
    for (int depth = 0; depth < 30; ++depth) {
        ASSERT_EQ(mkdirat(folders.back(), step.c_str(), 0777), 0);
        folders.push_back(openat(folders.back(), step.c_str(), O_PATH));
        path += std::string(depth == 10 ? 9000 : 1, '/') + step; // many slashes are one
    }
    path += "/deep.gif";
    EXPECT_EQ(PathOf(SpecOf(path)), path);
    EXPECT_EQ(Create(path), noErr);
    const Opened opened = Open(path, fsWrPerm);
    EXPECT_EQ(Write(opened.refNum, "deep"), (Transfer{noErr, 4}));
    EXPECT_EQ(FSClose(opened.refNum), noErr);
    struct stat status;
    EXPECT_EQ(fstatat(folders.back(), "deep.gif", &status, 0), 0);
    EXPECT_EQ(status.st_size, 4);
    EXPECT_EQ(Describe(SpecOf(path)).fdType, FourCC("GIFf"));
    EXPECT_EQ(Delete(path), noErr);
    EXPECT_NE(fstatat(folders.back(), "deep.gif", &status, 0), 0);
    for (; folders.size() > 1; folders.pop_back()) {
        close(folders.back());
        EXPECT_EQ(unlinkat(folders[folders.size() - 2], step.c_str(), AT_REMOVEDIR), 0);
    }
    close(folders.front());
}

TEST(FSSpecs, RefuseWhatNoFileCanBeCalled) {
    const TemporaryFolder folder;
    folder.Write("file", "");
    const struct {
        std::string path;
        OSErr want;
    } paths[] = {
        {"", bdNamErr},
        {folder / "", bdNamErr},
        {folder / ".", bdNamErr},
        {"..", bdNamErr},
        {folder / std::string("a\0b", 3), bdNamErr},
        {folder / "missing/a", dirNFErr},
        {folder / "file/a", dirNFErr},
        {'/' + std::string(5000, 'x') + "/a", dirNFErr},
    };
    for (const auto& c : paths) {
        FSSpec spec;
        EXPECT_EQ(PathToFSSpec(c.path, &spec), c.want) << c.path.substr(0, 80);
    }
    const std::int32_t id = SpecOf(folder / "a").parID;
    const struct {
        std::int32_t folder;
        std::string name;
        OSErr want;
    } specs[] = {
        {id, "", bdNamErr},       {id, "..", bdNamErr},
        {id, "sub/a", bdNamErr},  {id, "a/1", bdNamErr},
        {0, "a", dirNFErr},       {-1, "a", dirNFErr},
        {1 << 30, "a", dirNFErr}, {id, std::string("\0", 1), bdNamErr},
    };
    for (const auto& c : specs) {
        const FSSpec spec = Named(c.folder, c.name);
        std::string path;
        EXPECT_EQ(FSSpecToPath(&spec, &path), c.want) << c.folder << ' ' << c.name;
    }
}

TEST(Files, ReportTheCauseOfAFailure) {
    const TemporaryFolder folder;
    folder.Write("file", "bytes");
    std::filesystem::create_directory(folder / "sub");
    std::filesystem::create_symlink(folder / "nowhere", folder / "dangling");
    std::filesystem::create_hard_link(folder / "file", folder / "same");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0666), 0);
    std::filesystem::create_directory(folder / "gone");
    const FSSpec gone = SpecOf(folder / "gone/a");
    std::filesystem::remove(folder / "gone");
    const Opened reader = Open(folder / "same", fsRdPerm);
    const Opened writer = Open(folder / "file", fsWrPerm);
    EXPECT_EQ(writer.error, noErr) << "beside a reader";
    const Opened full = Open("/dev/full", fsWrPerm);
    std::int32_t minus = -1;
    std::int16_t refNum = 0;
    const struct {
        const char* what;
        OSErr want;
        std::function<OSErr()> act;
    } cases[] = {
        {"create over a file", dupFNErr, [&] { return Create(folder / "file"); }},
        {"create over a folder", dupFNErr, [&] { return Create(folder / "sub"); }},
        {"create over a dangling link", dupFNErr, [&] { return Create(folder / "dangling"); }},
        {"create in a removed folder", dirNFErr, [&] { return FSpCreate(&gone, 0, 0, 0); }},
        {"create a name of 300 bytes", bdNamErr,
         [&] { return Create(folder / std::string(300, 'n')); }},
        {"delete nothing", fnfErr, [&] { return Delete(folder / "missing"); }},
        {"delete a folder", fBsyErr, [&] { return Delete(folder / "sub"); }},
        {"delete in a removed folder", dirNFErr, [&] { return FSpDelete(&gone); }},
        {"read nothing", fnfErr, [&] { return OpenAndClose(folder / "missing", fsRdPerm); }},
        {"write nothing", fnfErr, [&] { return OpenAndClose(folder / "missing", fsWrPerm); }},
        {"read a folder", fnfErr, [&] { return OpenAndClose(folder / "sub", fsRdPerm); }},
        {"write a folder", fnfErr, [&] { return OpenAndClose(folder / "sub", fsWrPerm); }},
        {"read a pipe without waiting", fnfErr,
         [&] { return OpenAndClose(folder / "pipe", fsRdPerm); }},
        {"open in a removed folder", dirNFErr, [&] { return FSpOpenDF(&gone, fsRdPerm, &refNum); }},
        {"write what is being written", opWrErr,
         [&] { return OpenAndClose(folder / "same", fsWrPerm); }},
        {"open with permission 9", paramErr, [&] { return OpenAndClose(folder / "file", 9); }},
        {"write to a full disk", dskFulErr, [&] { return Write(full.refNum, "x").error; }},
        {"write to a reader", permErr, [&] { return Write(reader.refNum, "x").error; }},
        {"write to no file", rfNumErr, [&] { return Write(999, "x").error; }},
        {"write fewer than 0 bytes", paramErr, [&] { return FSWrite(writer.refNum, &minus, ""); }},
        {"move the mark of no file", rfNumErr, [&] { return SetFPos(0, fsFromStart, 0); }},
        {"move the mark from the end", paramErr, [&] { return SetFPos(reader.refNum, 2, 0); }},
        {"close no file", rfNumErr, [&] { return FSClose(-1); }},
        {"close the reader", noErr, [&] { return FSClose(reader.refNum); }},
        {"close the reader again", rfNumErr, [&] { return FSClose(reader.refNum); }},
        {"close the writer", noErr, [&] { return FSClose(writer.refNum); }},
        {"write again after closing", noErr,
         [&] { return OpenAndClose(folder / "same", fsWrPerm); }},
        {"close the device", noErr, [&] { return FSClose(full.refNum); }},
    };
    for (const auto& c : cases) EXPECT_EQ(c.act(), c.want) << c.what;
    EXPECT_EQ(TakeCloseError(), noErr);
    EXPECT_TRUE(std::filesystem::exists(folder / "sub"));
    EXPECT_EQ(folder.Read("file"), "bytes");
}

TEST(Files, ReportTheLimitsOfTheProcess) {
    const TemporaryFolder folder;
    ASSERT_EQ(Create(folder / "a"), noErr);
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    rlimit files, bytes;
    getrlimit(RLIMIT_NOFILE, &files);
    getrlimit(RLIMIT_FSIZE, &bytes);
    const Opened opened = Open(folder / "a", fsWrPerm);
    const rlimit fewBytes{100, bytes.rlim_max};
    setrlimit(RLIMIT_FSIZE, &fewBytes);
    const Transfer written = Write(opened.refNum, std::string(150, 'x'));
    setrlimit(RLIMIT_FSIZE, &bytes);
    const rlimit noFiles{0, files.rlim_max};
    const FSSpec spec = SpecOf(folder / "a");
    std::int16_t refNum = 0;
    setrlimit(RLIMIT_NOFILE, &noFiles);
    const OSErr error = FSpOpenDF(&spec, fsRdPerm, &refNum);
    setrlimit(RLIMIT_NOFILE, &files);
    std::signal(SIGXFSZ, before);
    EXPECT_EQ(written, (Transfer{dskFulErr, 100}));
    EXPECT_EQ(error, tmfoErr);
    EXPECT_EQ(FSClose(opened.refNum), noErr);
}

TEST(Files, AreOverwrittenFromTheStartReadToTheEndAndKeepTheMarkBetween) {
    const TemporaryFolder folder;
    folder.Write("digits", "ab23456789");
    const Opened writer = Open(folder / "digits", fsWrPerm);
    EXPECT_EQ(Write(writer.refNum, "01"), (Transfer{noErr, 2}));
    EXPECT_EQ(FSClose(writer.refNum), noErr);
    const Opened opened = Open(folder / "digits", fsRdPerm);
    ASSERT_EQ(opened.error, noErr);
    const struct {
        std::int16_t mode;
        std::int32_t offset;
        OSErr wantMoved;
        std::int32_t count;
        OSErr wantRead;
        std::string want;
    } steps[] = {
        {fsFromMark, 0, noErr, 4, noErr, "0123"},  {fsFromMark, 2, noErr, 0, noErr, ""},
        {fsFromMark, 0, noErr, 5, eofErr, "6789"}, {fsFromMark, 0, noErr, 1, eofErr, ""},
        {fsFromStart, 8, noErr, 2, noErr, "89"},   {fsFromMark, -3, noErr, 1, noErr, "7"},
        {fsFromStart, -1, posErr, 1, noErr, "8"},  {fsFromMark, -10, posErr, 1, noErr, "9"},
        {fsFromStart, 10, noErr, 1, eofErr, ""},   {fsFromStart, 11, eofErr, 1, eofErr, ""},
        {fsFromMark, -1, noErr, 1, noErr, "9"},    {fsFromStart, 0, noErr, -1, paramErr, ""},
    };
    for (std::size_t i = 0; i < std::size(steps); ++i) {
        const auto& c = steps[i];
        EXPECT_EQ(SetFPos(opened.refNum, c.mode, c.offset), c.wantMoved) << "step " << i;
        std::string bytes(16, '?');
        std::int32_t count = c.count;
        EXPECT_EQ(FSRead(opened.refNum, &count, bytes.data()), c.wantRead) << "step " << i;
        bytes.resize(static_cast<std::size_t>(count));
        EXPECT_EQ(bytes, c.want) << "step " << i;
    }
    EXPECT_EQ(FSClose(opened.refNum), noErr);
}

TEST(Files, AreCreatedWithUsualAccessAndCarryTypeAndCreatorInAnAttribute) {
    const TemporaryFolder folder;
    const FSSpec spec = SpecOf(folder / "a.zco");
    const mode_t before = umask(007);
    ASSERT_EQ(FSpCreate(&spec, FourCC("Q7IM"), FourCC("Q7CT"), 0), noErr);
    umask(before);
    struct stat status;
    ASSERT_EQ(stat((folder / "a.zco").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0660U);
    char bytes[16];
    const ssize_t size = getxattr((folder / "a.zco").c_str(), "user.finder.info", bytes, 16);
    if (size < 0 && errno == ENOTSUP) GTEST_SKIP() << "no attributes in " << folder.Path();
    ASSERT_EQ(size, 8);
    EXPECT_EQ(std::string(bytes, 8), "Q7CTQ7IM");
    EXPECT_EQ(Describe(spec).fdType, FourCC("Q7CT")) << "the attribute goes before the extension";
    EXPECT_EQ(Describe(spec).fdCreator, FourCC("Q7IM"));
    setxattr((folder / "a.zco").c_str(), "user.finder.info", "longer than 8", 13, 0);
    EXPECT_EQ(Describe(spec).fdType, FourCC("Q7CO")) << "another's attribute";
}

TEST(Catalogue, DerivesTypesFromExtensionsAndTellsFoldersAndHiddenFiles) {
    const TemporaryFolder folder;
    const std::string longName(100, 'l');
    const struct {
        std::string name;
        OSType type;
        std::uint16_t flags;
    } cases[] = {
        {"a.ZCO", FourCC("Q7CO"), 0},
        {"a.zct", FourCC("Q7CT"), 0},
        {"a.b.Pal", FourCC("PAL "), 0},
        {".gif", FourCC("GIFf"), 0x4000},
        {"a.gif ", 0, 0},
        {"gif", 0, 0},
        {"a.", 0, 0},
        {".hidden", 0, 0x4000},
        {longName + ".gif", FourCC("GIFf"), 0},
    };
    for (const auto& c : cases) {
        folder.Write(c.name, "");
        const FSSpec spec = SpecOf(folder / c.name);
        const CInfoPBRec info = Describe(spec);
        EXPECT_EQ(info.fdType, c.type) << c.name;
        EXPECT_EQ(info.fdFlags, c.flags) << c.name;
        EXPECT_EQ(info.ioFlAttrib, 0) << c.name;
        EXPECT_EQ(info.ioFlParID, spec.parID) << c.name;
    }
    std::filesystem::create_directory(folder / longName);
    const FSSpec inside = SpecOf(folder / longName + "/a");
    const FSSpec sub = SpecOf(folder / longName);
    const CInfoPBRec found = Describe(sub);
    EXPECT_EQ(found.ioFlAttrib, kIsDirectory);
    EXPECT_EQ(found.ioDirID, inside.parID);
    Str63 name;
    CInfoPBRec self;
    self.ioNamePtr = name;
    self.ioFDirIndex = -1;
    self.ioDirID = inside.parID;
    EXPECT_EQ(PBGetCatInfoSync(&self), noErr);
    EXPECT_EQ(self.ioFlAttrib, kIsDirectory);
    EXPECT_EQ(self.ioFlParID, sub.parID);
    EXPECT_EQ(PathOf(Named(self.ioFlParID, {name + 1, name + 1 + name[0]})), folder / longName);

    std::filesystem::remove(folder / longName);
    EXPECT_EQ(PBGetCatInfoSync(&self), dirNFErr);
    FSSpec missing = Named(sub.parID, "missing");
    self = CInfoPBRec();
    self.ioDirID = missing.parID;
    self.ioNamePtr = missing.name;
    EXPECT_EQ(PBGetCatInfoSync(&self), fnfErr);
}

TEST(Files, FailWhereAFaultIsArmedAndLeaveNothingBehind) {
    const TemporaryFolder folder;
    FailNthCall(FaultPoint::createFile, 1, dskFulErr);
    EXPECT_EQ(Create(folder / "a"), dskFulErr);
    EXPECT_FALSE(std::filesystem::exists(folder / "a"));
    EXPECT_EQ(Create(folder / "a"), noErr) << "a fault is met once";

    FailNthCall(FaultPoint::openFile, 2, permErr);
    EXPECT_EQ(OpenAndClose(folder / "a", fsWrPerm), noErr);
    EXPECT_EQ(OpenAndClose(folder / "a", fsWrPerm), permErr);

    const Opened opened = Open(folder / "a", fsWrPerm);
    FailNthCall(FaultPoint::writeFile, 1, ioErr);
    EXPECT_EQ(Write(opened.refNum, "x"), (Transfer{ioErr, 0}));
    FailNthCall(FaultPoint::seekFile, 1, ioErr);
    EXPECT_EQ(SetFPos(opened.refNum, fsFromStart, 0), ioErr);
    FailNthCall(FaultPoint::closeFile, 1, dskFulErr);
    EXPECT_EQ(FSClose(opened.refNum), dskFulErr);
    EXPECT_EQ(FSClose(opened.refNum), rfNumErr) << "closed all the same";
    EXPECT_EQ(TakeCloseError(), dskFulErr);
    EXPECT_EQ(TakeCloseError(), noErr) << "taken";

    FailNthCall(FaultPoint::deleteFile, 1, ioErr);
    EXPECT_EQ(Delete(folder / "a"), ioErr);
    EXPECT_EQ(folder.Read("a"), "");
    EXPECT_TRUE(std::filesystem::exists(folder / "a"));
    ClearFaults();
}
