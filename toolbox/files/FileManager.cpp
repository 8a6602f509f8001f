// The File Manager's calls on POSIX files. Files are reached from their opened folder, so that
// paths may be longer than the system takes in one call.
#include "FileManager.h"

#include "BigEndian.h"
#include "FaultInjection.h"
#include "FileTypes.h"
#include "FolderTable.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <new>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace {

constexpr std::size_t kMostNameBytes = sizeof(Str63) - 1;

// Type and creator, big-endian, as this attribute of a file.
constexpr char kFinderInfoName[] = "user.finder.info";
constexpr std::size_t kFinderInfoBytes = 8;

struct SystemError {
    int systemError;
    OSErr error;
};
thread_local SystemError latestError = {0, noErr};

OSErr ErrorOf(int systemError) {
    static constexpr SystemError kErrors[] = {
        {ENOSPC, dskFulErr}, {EDQUOT, dskFulErr}, {EFBIG, dskFulErr},       {ENOENT, fnfErr},
        {EISDIR, fnfErr},    {ELOOP, fnfErr},     {ENAMETOOLONG, bdNamErr}, {EACCES, permErr},
        {EPERM, permErr},    {EBADF, permErr},    {EROFS, wPrErr},          {EEXIST, dupFNErr},
        {ENOTDIR, dirNFErr}, {EMFILE, tmfoErr},   {ENFILE, tmfoErr},        {ENOMEM, memFullErr},
        {EBUSY, fBsyErr},    {ETXTBSY, fBsyErr},
    };
    const auto* const known =
        std::find_if(std::begin(kErrors), std::end(kErrors),
                     [=](const auto& entry) { return entry.systemError == systemError; });
    latestError = {systemError, known != std::end(kErrors) ? known->error : OSErr{ioErr}};
    return latestError.error;
}

// Whatever keeps a path from leading to a folder, the folder is not found.
OSErr FolderErrorOf(int systemError) {
    const OSErr error = ErrorOf(systemError);
    return error == fnfErr || error == bdNamErr ? OSErr{dirNFErr} : error;
}

void PutName(const std::string& name, StringPtr string) {
    string[0] = static_cast<std::uint8_t>(name.size());
    std::copy(name.begin(), name.end(), string + 1);
}

struct FileName {
    std::string folderPath;
    std::string name;
};

OSErr FindName(std::int32_t folder, ConstStr255Param shortName, FileName* found) {
    found->folderPath = FolderPath(folder);
    if (found->folderPath.empty()) return dirNFErr;
    if (shortName[0] > kMostNameBytes) return bdNamErr;
    found->name = RealName(folder, std::string(shortName + 1, shortName + 1 + shortName[0]));
    return found->name.empty() ? OSErr{bdNamErr} : OSErr{noErr};
}

// No folder lies on this volume: the directory id of an FSSpec is an open descriptor there.
constexpr std::int16_t kDescriptorVolume = -1;

bool NamesDescriptor(const FSSpec* spec) {
    return spec->vRefNum == kDescriptorVolume;
}

// A name and its folder, opened.
struct FolderEntry {
    Descriptor folder;
    std::string name;
};

OSErr FindEntry(const FSSpec* spec, FolderEntry* entry) {
    FileName found;
    if (const OSErr error = FindName(spec->parID, spec->name, &found)) return error;
    entry->name = found.name;
    entry->folder = OpenFolder(found.folderPath);
    return entry->folder.IsOpen() ? OSErr{noErr} : FolderErrorOf(errno);
}

struct OpenFile {
    int descriptor = -1; // -1 marks a free reference number
    bool writes = false;
    dev_t device = 0;
    ino_t number = 0;
};

struct OpenFiles {
    std::mutex lock;
    std::vector<OpenFile> files; // reference number 1 comes first
};

// Lives as long as the process: files may be closed while other statics are destroyed.
OpenFiles& TheOpenFiles() {
    static OpenFiles& openFiles = *new OpenFiles;
    return openFiles;
}

OSErr EnterOpenFile(const OpenFile& file, std::int16_t* refNum) {
    OpenFiles& open = TheOpenFiles();
    const std::lock_guard guard(open.lock);
    for (const OpenFile& other : open.files)
        if (file.writes && other.descriptor >= 0 && other.writes && other.device == file.device &&
            other.number == file.number)
            return opWrErr;
    auto place = std::find_if(open.files.begin(), open.files.end(),
                              [](const OpenFile& other) { return other.descriptor < 0; });
    if (place == open.files.end()) {
        if (open.files.size() == std::numeric_limits<std::int16_t>::max()) return tmfoErr;
        place = open.files.insert(place, OpenFile());
    }
    *place = file;
    *refNum = static_cast<std::int16_t>(place - open.files.begin() + 1);
    return noErr;
}

// The entry, or null. The caller holds the lock.
OpenFile* FindOpenFile(OpenFiles& open, std::int16_t refNum) {
    if (refNum < 1 || static_cast<std::size_t>(refNum) > open.files.size()) return nullptr;
    OpenFile& file = open.files[static_cast<std::size_t>(refNum) - 1];
    return file.descriptor >= 0 ? &file : nullptr;
}

int DescriptorOf(std::int16_t refNum) {
    OpenFiles& open = TheOpenFiles();
    const std::lock_guard guard(open.lock);
    const OpenFile* const file = FindOpenFile(open, refNum);
    return file ? file->descriptor : -1;
}

// The caller closes it.
OpenFile TakeOpenFile(std::int16_t refNum) {
    OpenFiles& open = TheOpenFiles();
    const std::lock_guard guard(open.lock);
    OpenFile* const file = FindOpenFile(open, refNum);
    return file ? std::exchange(*file, OpenFile()) : OpenFile();
}

OSType TypeFromExtension(const std::string& name) {
    static constexpr struct {
        std::string_view extension;
        OSType type;
    } kTypes[] = {{".ZCO", kSwatchFileType},
                  {".ZCT", kTableFileType},
                  {".PAL", kRiffPaletteFileType},
                  {".GIF", kGIFFileType}};
    std::string extension = name.substr(std::min(name.rfind('.'), name.size()));
    for (char& c : extension)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    for (const auto& entry : kTypes)
        if (entry.extension == extension) return entry.type;
    return 0;
}

// False when the file carries no attribute, or one of another shape.
bool ReadFinderInfo(const FolderEntry& entry, CInfoPBRec* info) {
    const Descriptor file(Uninterrupted([&] {
        return openat(entry.folder.Get(), entry.name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    }));
    std::uint8_t bytes[kFinderInfoBytes];
    if (!file.IsOpen() || fgetxattr(file.Get(), kFinderInfoName, bytes, sizeof bytes) !=
                              static_cast<ssize_t>(sizeof bytes))
        return false;
    info->fdType = GetBE<OSType>(bytes);
    info->fdCreator = GetBE<OSType>(bytes + 4);
    return true;
}

// Where attributes cannot be kept the extension tells the type, so failing here is harmless.
void SetFinderInfo(int descriptor, OSType type, OSType creator) {
    std::uint8_t bytes[kFinderInfoBytes];
    PutBE(bytes, type);
    PutBE(bytes + 4, creator);
    static_cast<void>(fsetxattr(descriptor, kFinderInfoName, bytes, sizeof bytes, 0));
}

OSErr DescribeFolder(CInfoPBRec* info) {
    const std::string path = FolderPath(info->ioDirID);
    if (path.empty()) return dirNFErr;
    if (!OpenFolder(path).IsOpen()) return FolderErrorOf(errno);
    // The root lies in itself and has no name.
    const std::size_t slash = path.rfind('/');
    const std::string name = path.substr(slash + 1);
    const std::int32_t parent = EnterFolder(path.substr(0, std::max<std::size_t>(slash, 1)));
    if (parent == 0) return FolderErrorOf(errno);
    if (info->ioNamePtr) PutName(ShortName(parent, name), info->ioNamePtr);
    info->ioFlParID = parent;
    info->ioFlAttrib = kIsDirectory;
    info->fdFlags = name.starts_with('.') ? kIsInvisible : 0;
    info->fdType = info->fdCreator = 0;
    return noErr;
}

OSErr DescribeEntry(CInfoPBRec* info) {
    if (!info->ioNamePtr) return bdNamErr;
    FileName found;
    if (const OSErr error = FindName(info->ioDirID, info->ioNamePtr, &found)) return error;
    const FolderEntry entry{OpenFolder(found.folderPath), found.name};
    if (!entry.folder.IsOpen()) return FolderErrorOf(errno);
    struct stat status;
    if (fstatat(entry.folder.Get(), entry.name.c_str(), &status, 0) != 0) return ErrorOf(errno);
    const std::int32_t folder = info->ioDirID;
    if (S_ISDIR(status.st_mode)) {
        const std::int32_t own = EnterFolder(JoinPath(found.folderPath, found.name));
        if (own == 0) return FolderErrorOf(errno);
        info->ioDirID = own;
    }
    info->ioFlParID = folder;
    info->ioFlAttrib = S_ISDIR(status.st_mode) ? kIsDirectory : 0;
    info->fdFlags = entry.name.starts_with('.') ? kIsInvisible : 0;
    info->fdType = info->fdCreator = 0;
    if (S_ISREG(status.st_mode) && !ReadFinderInfo(entry, info))
        info->fdType = TypeFromExtension(entry.name);
    return noErr;
}

// Without waiting, as a pipe would keep the caller until somebody opens its other end.
OSErr OpenNamed(const FSSpec* spec, std::int8_t permission, Descriptor* file) {
    FolderEntry entry;
    if (const OSErr error = FindEntry(spec, &entry)) return error;
    const int access = permission == fsWrPerm ? O_WRONLY : O_RDONLY;
    *file = Descriptor(Uninterrupted([&] {
        return openat(entry.folder.Get(), entry.name.c_str(),
                      access | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }));
    return file->IsOpen() ? OSErr{noErr} : ErrorOf(errno);
}

OSErr OpenAgain(int descriptor, Descriptor* file) {
    *file = Descriptor(fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
    if (!file->IsOpen() || lseek(file->Get(), 0, SEEK_SET) != 0) return ErrorOf(errno);
    return noErr;
}

thread_local OSErr closeError = noErr;

} // namespace

OSErr PathToFSSpec(const std::string& path, FSSpec* spec) try {
    const std::size_t slash = path.rfind('/');
    const std::string name = path.substr(slash + 1); // the whole path when it has no slash
    if (name.empty() || name == "." || name == ".." || path.find('\0') != std::string::npos)
        return bdNamErr;
    std::string folderPath = ".";
    if (slash != std::string::npos) folderPath = path.substr(0, std::max<std::size_t>(slash, 1));
    const std::int32_t folder = EnterFolder(folderPath);
    if (folder == 0) return FolderErrorOf(errno);
    *spec = FSSpec();
    spec->parID = folder;
    PutName(ShortName(folder, name), spec->name);
    return noErr;
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr FSSpecToPath(const FSSpec* spec, std::string* path) try {
    FileName found;
    if (const OSErr error = FindName(spec->parID, spec->name, &found)) return error;
    *path = JoinPath(found.folderPath, found.name);
    return noErr;
} catch (const std::bad_alloc&) {
    return memFullErr;
}

FSSpec DescriptorToFSSpec(int descriptor) {
    FSSpec spec;
    spec.vRefNum = kDescriptorVolume;
    spec.parID = descriptor;
    return spec;
}

OSErr FSpCreate(const FSSpec* spec, OSType creator, OSType type, ScriptCode) try {
    if (const OSErr error = FaultAt(FaultPoint::createFile)) return error;
    if (NamesDescriptor(spec)) {
        SetFinderInfo(spec->parID, type, creator);
        return noErr;
    }
    FolderEntry entry;
    if (const OSErr error = FindEntry(spec, &entry)) return error;
    const Descriptor file(Uninterrupted([&] {
        return openat(entry.folder.Get(), entry.name.c_str(),
                      O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    }));
    if (!file.IsOpen()) return ErrorOf(errno);
    SetFinderInfo(file.Get(), type, creator);
    return noErr;
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr FSpDelete(const FSSpec* spec) try {
    if (const OSErr error = FaultAt(FaultPoint::deleteFile)) return error;
    if (NamesDescriptor(spec))
        return ftruncate(spec->parID, 0) == 0 ? OSErr{noErr} : ErrorOf(errno);
    FolderEntry entry;
    if (const OSErr error = FindEntry(spec, &entry)) return error;
    if (unlinkat(entry.folder.Get(), entry.name.c_str(), 0) == 0) return noErr;
    return errno == EISDIR ? OSErr{fBsyErr} : ErrorOf(errno);
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr FSpOpenDF(const FSSpec* spec, std::int8_t permission, std::int16_t* refNum) try {
    if (permission != fsRdPerm && permission != fsWrPerm) return paramErr;
    if (const OSErr error = FaultAt(FaultPoint::openFile)) return error;
    Descriptor file;
    const OSErr opening =
        NamesDescriptor(spec) ? OpenAgain(spec->parID, &file) : OpenNamed(spec, permission, &file);
    if (opening != noErr) return opening;
    struct stat status;
    if (fstat(file.Get(), &status) != 0) return ErrorOf(errno);
    // Only files have data; folders and pipes that bear the name are not what was looked for.
    if (S_ISDIR(status.st_mode) || S_ISFIFO(status.st_mode)) return fnfErr;
    const OSErr error =
        EnterOpenFile({file.Get(), permission == fsWrPerm, status.st_dev, status.st_ino}, refNum);
    if (error == noErr) file.Release();
    return error;
} catch (const std::bad_alloc&) {
    return memFullErr;
}

OSErr FSRead(std::int16_t refNum, std::int32_t* count, void* buffer) {
    const std::int32_t wanted = std::exchange(*count, 0);
    if (wanted < 0) return paramErr;
    const int descriptor = DescriptorOf(refNum);
    if (descriptor < 0) return rfNumErr;
    if (const OSErr error = FaultAt(FaultPoint::readFile)) return error;
    while (*count < wanted) {
        const ssize_t got = Uninterrupted([&] {
            return read(descriptor, static_cast<Ptr>(buffer) + *count,
                        static_cast<std::size_t>(wanted - *count));
        });
        if (got < 0) return ErrorOf(errno);
        if (got == 0) return eofErr;
        *count += static_cast<std::int32_t>(got);
    }
    return noErr;
}

OSErr FSWrite(std::int16_t refNum, std::int32_t* count, const void* buffer) {
    const std::int32_t wanted = std::exchange(*count, 0);
    if (wanted < 0) return paramErr;
    const int descriptor = DescriptorOf(refNum);
    if (descriptor < 0) return rfNumErr;
    if (const OSErr error = FaultAt(FaultPoint::writeFile)) return error;
    while (*count < wanted) {
        const ssize_t put = Uninterrupted([&] {
            return write(descriptor, static_cast<const std::uint8_t*>(buffer) + *count,
                         static_cast<std::size_t>(wanted - *count));
        });
        if (put < 0) return ErrorOf(errno);
        if (put == 0) return ioErr;
        *count += static_cast<std::int32_t>(put);
    }
    return noErr;
}

OSErr SetFPos(std::int16_t refNum, std::int16_t mode, std::int32_t offset) {
    if (mode != fsFromStart && mode != fsFromMark) return paramErr;
    const int descriptor = DescriptorOf(refNum);
    if (descriptor < 0) return rfNumErr;
    if (const OSErr error = FaultAt(FaultPoint::seekFile)) return error;
    struct stat status;
    const off_t mark = lseek(descriptor, 0, SEEK_CUR);
    if (mark < 0 || fstat(descriptor, &status) != 0) return ErrorOf(errno);
    const off_t wanted = (mode == fsFromMark ? mark : 0) + offset;
    if (wanted < 0) return posErr;
    if (lseek(descriptor, std::min(wanted, status.st_size), SEEK_SET) < 0) return ErrorOf(errno);
    return wanted > status.st_size ? OSErr{eofErr} : OSErr{noErr};
}

OSErr FSClose(std::int16_t refNum) {
    const OpenFile file = TakeOpenFile(refNum);
    if (file.descriptor < 0) return rfNumErr;
    const OSErr fault = FaultAt(FaultPoint::closeFile);
    // An interrupted close has closed all the same; doing it again could hit another's descriptor.
    const bool closed = close(file.descriptor) == 0 || errno == EINTR;
    const OSErr error = fault != noErr || closed ? fault : ErrorOf(errno);
    if (file.writes) KeepCloseError(error); // a file that was only read has nothing to lose
    return error;
}

OSErr PBGetCatInfoSync(CInfoPBRec* info) try {
    switch (info->ioFDirIndex) {
    case 0:
        return DescribeEntry(info);
    case -1:
        return DescribeFolder(info);
    default:
        return paramErr;
    }
} catch (const std::bad_alloc&) {
    return memFullErr;
}

void KeepCloseError(OSErr error) {
    if (closeError == noErr) closeError = error;
}

int SystemErrorBehind(OSErr error) {
    return latestError.error == error ? latestError.systemError : 0;
}

OSErr TakeCloseError() {
    return std::exchange(closeError, OSErr{noErr});
}
