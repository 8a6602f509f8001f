// Names, folders, files and their errors, checked against what the system itself shows.
#include "FileManager.h"
#include "PascalStrings.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

FSSpec SpecOf(const std::string& path) {
    FSSpec spec;
    EXPECT_EQ(PathToFSSpec(path, &spec), noErr) << path;
    return spec;
}

FSSpec Named(std::int32_t folder, const std::string& name) {
    FSSpec spec{0, folder, {}};
    ToPascal(name, spec.name);
    return spec;
}

std::string NameOf(const std::string& path) {
    return FromPascal(SpecOf(path).name);
}

std::string PathOf(const FSSpec& spec, OSErr want = noErr) {
    std::string path;
    EXPECT_EQ(FSSpecToPath(&spec, &path), want) << spec.parID << ' ' << FromPascal(spec.name);
    return path;
}

OSErr Create(const FSSpec& spec) {
    return FSpCreate(&spec, FourCC("Q7IM"), FourCC("Q7CT"), 0);
}

OSErr Delete(const FSSpec& spec) {
    return FSpDelete(&spec);
}

/// A reference number, or the error.
std::int16_t Open(const FSSpec& spec, std::int8_t permission) {
    std::int16_t refNum = 0;
    const OSErr error = FSpOpenDF(&spec, permission, &refNum);
    return error == noErr ? refNum : error;
}

OSErr Write(std::int16_t refNum, const std::string& bytes) {
    auto count = static_cast<std::int32_t>(bytes.size());
    const OSErr error = FSWrite(refNum, &count, bytes.data());
    EXPECT_EQ(count == static_cast<std::int32_t>(bytes.size()), error == noErr);
    return error;
}

CInfoPBRec Describe(FSSpec spec, OSErr want = noErr) {
    CInfoPBRec info;
    info.ioNamePtr = spec.name;
    info.ioDirID = spec.parID;
    EXPECT_EQ(PBGetCatInfoSync(&info), want) << FromPascal(spec.name);
    return info;
}

class Files : public testing::Test {
  protected:
    // Without links on the way to it, as paths come back.
    std::string At(const std::string& name) const {
        return std::filesystem::canonical(folder.Path()).string() + '/' + name;
    }
    TemporaryFolder folder;
};

} // namespace

TEST_F(Files, HaveFSSpecsThatLeadBackToPathsOfAnyBytesAndLengths) {
    for (const std::string& name :
         {std::string(63, 'b'), std::string(64, 'c'), std::string(251, 'd') + ".gif",
          std::string("line\nbreak\x01\xFF\x80"), std::string(200, '\x80'),
          "." + std::string(80, 'e'), std::string("...")}) {
        EXPECT_EQ(PathOf(SpecOf(At(name))), At(name));
        EXPECT_EQ(NameOf(At(name)).find('/') == std::string::npos, name.size() <= 63) << name;
        EXPECT_EQ(Create(SpecOf(At(name))), noErr) << name;
        EXPECT_TRUE(std::filesystem::exists(At(name))) << name;
    }
}

TEST_F(Files, OfLongNamesHaveAliasesOfTheirOwn) {
    std::string turtles;
    while (turtles.size() < 120) turtles += "\xF0\x9F\x90\xA2";
    for (std::size_t ascii = 0; ascii < 4; ++ascii) {
        const std::string name = std::string(ascii, 'x') + turtles;
        const std::string alias = NameOf(At(name + "1.gif"));
        const std::string head = alias.substr(0, alias.find('/'));
        EXPECT_TRUE(name.starts_with(head) && head.size() > 50) << alias;
        EXPECT_EQ((head.size() - ascii) % 4, 0U) << alias << " cuts a character";
        EXPECT_TRUE(alias.ends_with(".gif")) << alias;
        EXPECT_EQ(NameOf(At(name + "1.gif")), alias) << "asked again";
        EXPECT_NE(NameOf(At(name + "2.gif")), alias);
        PathOf(Named(SpecOf("/a").parID, alias), bdNamErr);
    }
}

TEST_F(Files, WorkBelowFoldersWhosePathIsTooLongForTheSystem) {
    const std::string step(200, 's');
    std::string path = At("");
    int deepest = open(path.c_str(), O_PATH);
    for (int depth = 0; depth < 30; ++depth, path += step + '/') {
        ASSERT_EQ(mkdirat(deepest, step.c_str(), 0777), 0);
        const int next = openat(deepest, step.c_str(), O_PATH);
        close(deepest);
        deepest = next;
    }
    const FSSpec spec = SpecOf(path + "deep.gif");
    EXPECT_EQ(PathOf(spec), path + "deep.gif");
    EXPECT_EQ(Create(spec), noErr);
    const std::int16_t file = Open(spec, fsWrPerm);
    EXPECT_EQ(Write(file, "deep"), noErr);
    EXPECT_EQ(FSClose(file), noErr);
    EXPECT_EQ(faccessat(deepest, "deep.gif", F_OK, 0), 0);
    EXPECT_EQ(Describe(spec).ioFlParID, spec.parID);
    EXPECT_EQ(Delete(spec), noErr);
    close(deepest);
}

TEST_F(Files, WithoutANameAreWrittenThroughTheirDescriptor) {
    const int descriptor = open(folder.Path().c_str(), O_TMPFILE | O_RDWR, 0600);
    ASSERT_GE(descriptor, 0);
    const FSSpec spec = DescriptorToFSSpec(descriptor);
    EXPECT_EQ(Create(spec), noErr);
    for (const char* text : {"first and longer", "second"}) { // each time from the start
        const std::int16_t file = Open(spec, fsWrPerm);
        EXPECT_EQ(Open(spec, fsWrPerm), opWrErr);
        EXPECT_EQ(Write(file, text), noErr);
        EXPECT_EQ(FSClose(file), noErr);
    }
    char bytes[32] = {};
    EXPECT_EQ(pread(descriptor, bytes, sizeof bytes, 0), 16);
    EXPECT_STREQ(bytes, "secondand longer");
    EXPECT_EQ(Delete(spec), noErr);
    EXPECT_EQ(lseek(descriptor, 0, SEEK_END), 0) << "deleted, but still the caller's";
    PathOf(spec, bdNamErr);
    close(descriptor);
}

TEST_F(Files, CannotHaveTheseNames) {
    folder.Write("file", "");
    FSSpec spec;
    for (const std::string& path :
         {std::string(), At(""), At("."), std::string(".."), At(std::string("a\0b", 3))})
        EXPECT_EQ(PathToFSSpec(path, &spec), bdNamErr) << path;
    for (const std::string& path : {At("missing/a"), At("file/a"), std::string(5000, 'x') + "/a"})
        EXPECT_EQ(PathToFSSpec(path, &spec), dirNFErr) << path.substr(0, 80);
    const std::int32_t id = SpecOf(At("a")).parID;
    for (const auto& name :
         {std::string(), std::string(".."), std::string("sub/a"), std::string(1, '\0')})
        PathOf(Named(id, name), bdNamErr);
    for (const std::int32_t unknown : {0, -1, 1 << 30}) PathOf(Named(unknown, "a"), dirNFErr);
}

TEST_F(Files, ReportTheCauseOfAFailure) {
    folder.Write("file", "bytes");
    for (const char* name : {"sub", "gone"}) std::filesystem::create_directory(At(name));
    std::filesystem::create_symlink(At("nowhere"), At("dangling"));
    std::filesystem::create_hard_link(At("file"), At("same"));
    ASSERT_EQ(mkfifo(At("pipe").c_str(), 0666), 0);
    const FSSpec gone = SpecOf(At("gone/a"));
    std::filesystem::remove(At("gone"));
    const std::int16_t reader = Open(SpecOf(At("same")), fsRdPerm);
    const std::int16_t writer = Open(SpecOf(At("file")), fsWrPerm);
    const std::int16_t full = Open(SpecOf("/dev/full"), fsWrPerm);
    const auto spec = [&](const std::string& name) { return SpecOf(At(name)); };
    EXPECT_EQ(Create(spec("file")), dupFNErr);
    EXPECT_EQ(Create(spec("dangling")), dupFNErr);
    EXPECT_EQ(Create(gone), dirNFErr);
    EXPECT_EQ(Create(spec(std::string(300, 'n'))), bdNamErr);
    EXPECT_EQ(Delete(spec("missing")), fnfErr);
    EXPECT_EQ(Delete(spec("sub")), fBsyErr);
    EXPECT_EQ(Open(spec("sub"), fsRdPerm), fnfErr);
    EXPECT_EQ(Open(spec("pipe"), fsRdPerm), fnfErr) << "without waiting";
    EXPECT_EQ(Open(spec("same"), fsWrPerm), opWrErr) << "being written";
    EXPECT_EQ(Open(spec("file"), 9), paramErr);
    EXPECT_EQ(Write(full, "x"), dskFulErr);
    EXPECT_EQ(Write(reader, "x"), permErr);
    EXPECT_EQ(SetFPos(reader, 2, 0), paramErr) << "from the end";
    for (const std::int16_t open : {reader, writer, full}) EXPECT_EQ(FSClose(open), noErr);
    EXPECT_EQ(FSClose(reader), rfNumErr);
    EXPECT_EQ(FSClose(Open(spec("same"), fsWrPerm)), noErr) << "written no more";
    EXPECT_EQ(TakeCloseError(), noErr);
    EXPECT_EQ(folder.Read("file"), "bytes");
}

TEST_F(Files, AreOverwrittenFromTheStartReadToTheEndAndKeepTheMarkBetween) {
    folder.Write("digits", "ab23456789");
    const std::int16_t writer = Open(SpecOf(At("digits")), fsWrPerm);
    EXPECT_EQ(Write(writer, "01"), noErr);
    EXPECT_EQ(FSClose(writer), noErr);
    const std::int16_t file = Open(SpecOf(At("digits")), fsRdPerm);
    using Step = std::tuple<std::int16_t, std::int32_t, OSErr, std::int32_t, OSErr, std::string>;
    const Step steps[] = {
        {fsFromMark, 0, noErr, 4, noErr, "0123"},  {fsFromMark, 2, noErr, 0, noErr, ""},
        {fsFromMark, 0, noErr, 5, eofErr, "6789"}, {fsFromStart, 8, noErr, 1, noErr, "8"},
        {fsFromMark, -10, posErr, 1, noErr, "9"},  {fsFromStart, 11, eofErr, 1, eofErr, ""},
        {fsFromMark, -1, noErr, 1, noErr, "9"},    {fsFromStart, 0, noErr, -1, paramErr, ""}};
    for (const auto& [mode, offset, moved, asked, error, want] : steps) {
        SCOPED_TRACE(testing::Message() << "mode " << mode << ", offset " << offset);
        EXPECT_EQ(SetFPos(file, mode, offset), moved);
        std::string bytes(16, '?');
        std::int32_t count = asked;
        EXPECT_EQ(FSRead(file, &count, bytes.data()), error);
        EXPECT_EQ(bytes.substr(0, static_cast<std::size_t>(count)), want);
    }
    EXPECT_EQ(FSClose(file), noErr);
}

TEST_F(Files, AreCreatedWithUsualAccessAndCarryTypeAndCreatorInAnAttribute) {
    const std::string path = At("a.zco");
    const mode_t before = umask(007);
    ASSERT_EQ(Create(SpecOf(path)), noErr);
    umask(before);
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0660U);
    char bytes[16];
    const ssize_t size = getxattr(path.c_str(), "user.finder.info", bytes, 16);
    if (size < 0 && errno == ENOTSUP) GTEST_SKIP() << "no attributes in " << folder.Path();
    ASSERT_EQ(size, 8);
    EXPECT_EQ(std::string(bytes, 8), "Q7CTQ7IM");
    EXPECT_EQ(Describe(SpecOf(path)).fdType, FourCC("Q7CT")) << "goes before the extension";
    EXPECT_EQ(Describe(SpecOf(path)).fdCreator, FourCC("Q7IM"));
    setxattr(path.c_str(), "user.finder.info", "longer than 8", 13, 0);
    EXPECT_EQ(Describe(SpecOf(path)).fdType, FourCC("Q7CO")) << "another's attribute";
}

TEST_F(Files, InTheCatalogueHaveTypesFromExtensionsAndFoldersAreTold) {
    const std::string longName = std::string(100, 'l') + ".ZCO";
    const std::pair<std::string, OSType> cases[] = {{"a.zct", FourCC("Q7CT")},
                                                    {"a.b.Pal", FourCC("PAL ")},
                                                    {".gif", FourCC("GIFf")},
                                                    {longName, FourCC("Q7CO")},
                                                    {"gif", 0},
                                                    {"a.", 0}};
    for (const auto& [name, type] : cases) {
        folder.Write(name, "");
        const CInfoPBRec info = Describe(SpecOf(At(name)));
        EXPECT_EQ(info.fdType, type) << name;
        EXPECT_EQ(info.fdFlags, name[0] == '.' ? kIsInvisible : 0) << name;
        EXPECT_EQ(info.ioFlAttrib, 0) << name;
    }
    const std::string folderName(100, 'f');
    std::filesystem::create_directory(At(folderName));
    const FSSpec sub = SpecOf(At(folderName)), inside = SpecOf(At(folderName) + "/a");
    EXPECT_EQ(Describe(sub).ioFlAttrib, kIsDirectory);
    EXPECT_EQ(Describe(sub).ioDirID, inside.parID);
    Str63 name;
    CInfoPBRec self;
    self.ioNamePtr = name;
    self.ioFDirIndex = -1;
    self.ioDirID = inside.parID;
    EXPECT_EQ(PBGetCatInfoSync(&self), noErr);
    EXPECT_EQ(PathOf(Named(self.ioFlParID, FromPascal(name))), At(folderName));
    Describe(Named(sub.parID, "missing"), fnfErr);
}
