// A file is read and checked whole when it is opened, so that looking resources up cannot fail on
// its bytes later. Whatever the bytes are, memory stays in proportion to the file's length.
#include "ResourceManager.h"

#include "BigEndian.h"
#include "FaultInjection.h"
#include "OwnedHandle.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <span>
#include <utility>
#include <vector>

namespace {

/// Thrown while a file is read, and turned into the code at the door.
struct FileError {
    OSErr code;
};

/// Bytes of a file; whatever lies outside throws mapReadErr.
class CheckedBytes {
  public:
    explicit CheckedBytes(std::span<const std::uint8_t> content) : bytes(content) {}

    CheckedBytes Part(std::size_t offset, std::size_t count) const {
        if (offset > bytes.size() || count > bytes.size() - offset) throw FileError{mapReadErr};
        return CheckedBytes(bytes.subspan(offset, count));
    }
    CheckedBytes From(std::size_t offset) const {
        return Part(offset, bytes.size() - std::min(offset, bytes.size()));
    }
    template <class T> T Get(std::size_t offset) const {
        return GetBE<T>(Part(offset, sizeof(T)).bytes.data());
    }
    std::size_t Length() const { return bytes.size(); }
    const std::uint8_t* Data() const { return bytes.data(); }

  private:
    std::span<const std::uint8_t> bytes;
};

struct Resource {
    OSType type;
    std::int16_t id;
    OwnedHandle data;
};

struct ResourceFile {
    std::int16_t refNum;
    std::vector<Resource> resources;
};

/// The open files in the order of their opening.
struct ResourceFiles {
    std::mutex lock;
    std::vector<ResourceFile> files;
};

ResourceFiles& TheResourceFiles() {
    static ResourceFiles& open = *new ResourceFiles;
    return open;
}

// Resources are reached through 24-bit offsets, so no sensible file is much larger than this.
constexpr std::size_t kLongestFile = 64U << 20;

std::vector<std::uint8_t> ReadFile(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                               std::fclose);
    if (!file) throw FileError{resFNotFound};
    std::vector<std::uint8_t> content;
    std::uint8_t buffer[16384];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, file.get())) {
        content.insert(content.end(), buffer, buffer + count);
        if (content.size() > kLongestFile) throw FileError{mapReadErr};
    }
    if (std::ferror(file.get())) throw FileError{resFNotFound};
    return content;
}

OwnedHandle CopyToHandle(const CheckedBytes& bytes) {
    OwnedHandle handle(NewHandle(static_cast<Size>(bytes.Length())));
    if (!handle) throw FileError{memFullErr};
    BlockMove(bytes.Data(), *handle, static_cast<Size>(bytes.Length()));
    return handle;
}

constexpr std::size_t kTypeEntryBytes = 8;
constexpr std::size_t kReferenceBytes = 12;

/// Walks a file's map and copies its resources out of its data area.
class MapWalk {
  public:
    explicit MapWalk(const CheckedBytes& file)
        : data(file.Part(file.Get<std::uint32_t>(0), file.Get<std::uint32_t>(8))),
          map(file.Part(file.Get<std::uint32_t>(4), file.Get<std::uint32_t>(12))),
          types(map.From(map.Get<std::uint16_t>(24))), names(map.From(map.Get<std::uint16_t>(26))) {
    }

    std::vector<Resource> ReadAll() {
        const std::size_t typeCount = CountAt(0);
        for (std::size_t i = 0; i < typeCount; ++i) ReadType(2 + i * kTypeEntryBytes);
        return std::move(resources);
    }

  private:
    /// Counts are stored less one; 0xFFFF is none.
    std::size_t CountAt(std::size_t offset) const {
        return (types.Get<std::uint16_t>(offset) + 1U) & 0xFFFF;
    }

    void ReadType(std::size_t entry) {
        const auto type = types.Get<OSType>(entry);
        const std::size_t count = CountAt(entry + 4);
        const std::size_t first = types.Get<std::uint16_t>(entry + 6);
        for (std::size_t i = 0; i < count; ++i)
            ReadReference(type, types.Part(first + i * kReferenceBytes, kReferenceBytes));
    }

    void ReadReference(OSType type, const CheckedBytes& reference) {
        if (const auto name = reference.Get<std::int16_t>(2); name != -1)
            CheckName(static_cast<std::uint16_t>(name));
        // One byte of attributes, then 24 bits of offset.
        const std::size_t offset = reference.Get<std::uint32_t>(4) & 0xFFFFFF;
        const CheckedBytes content = data.Part(offset + 4, data.Get<std::uint32_t>(offset));
        // Lists that overlap could make a small file ask for any amount of memory, so contents may
        // not add up to more than the data area; counted with their lengths, they bound the number
        // of references too.
        contentBytes += 4 + content.Length();
        if (contentBytes > data.Length()) throw FileError{mapReadErr};
        resources.push_back({type, reference.Get<std::int16_t>(0), CopyToHandle(content)});
    }

    void CheckName(std::size_t offset) const {
        names.Part(offset + 1, names.Get<std::uint8_t>(offset));
    }

    CheckedBytes data, map, types, names;
    std::vector<Resource> resources;
    std::size_t contentBytes = 0;
};

std::int16_t AddFile(std::vector<Resource> resources) {
    ResourceFiles& open = TheResourceFiles();
    const std::lock_guard guard(open.lock);
    const auto isTaken = [&](int number) {
        return std::any_of(open.files.begin(), open.files.end(),
                           [&](const ResourceFile& file) { return file.refNum == number; });
    };
    int number = 1;
    while (isTaken(number)) ++number;
    if (number > std::numeric_limits<std::int16_t>::max()) throw FileError{memFullErr};
    open.files.push_back({static_cast<std::int16_t>(number), std::move(resources)});
    return static_cast<std::int16_t>(number);
}

Handle FindResource(OSType type, std::int16_t id) {
    ResourceFiles& open = TheResourceFiles();
    const std::lock_guard guard(open.lock);
    for (auto file = open.files.rbegin(); file != open.files.rend(); ++file)
        for (const Resource& resource : file->resources)
            if (resource.type == type && resource.id == id) return resource.data.get();
    return nullptr;
}

} // namespace

std::int16_t OpenResFile(const std::string& path) {
    if (const OSErr error = FaultAt(FaultPoint::loadResource)) return error;
    try {
        const std::vector<std::uint8_t> content = ReadFile(path);
        return AddFile(MapWalk(CheckedBytes(content)).ReadAll());
    } catch (const FileError& error) {
        return error.code;
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

void CloseResFile(std::int16_t refNum) {
    ResourceFiles& open = TheResourceFiles();
    const std::lock_guard guard(open.lock);
    std::erase_if(open.files, [&](const ResourceFile& file) { return file.refNum == refNum; });
}

Handle GetResource(OSType type, std::int16_t id) {
    const Handle found = FindResource(type, id);
    return found && FaultAt(FaultPoint::loadResource) == noErr ? found : nullptr;
}

std::mutex& ResourceBytesLock() {
    static std::mutex& lock = *new std::mutex;
    return lock;
}

void GetIndString(StringPtr string, std::int16_t list, std::int16_t index) {
    string[0] = 0;
    const Handle strings = GetResource(FourCC("STR#"), list);
    if (!strings) return;
    // A count, then length-prefixed strings one after the other.
    const std::uint8_t* const bytes = *strings;
    const Size length = GetHandleSize(strings);
    if (length < 2 || index < 1 || index > GetBE<std::int16_t>(bytes)) return;
    Size offset = 2;
    for (int i = 1; i < index && offset < length; ++i) offset += 1 + bytes[offset];
    if (offset < length && offset + bytes[offset] < length)
        BlockMove(bytes + offset, string, 1 + bytes[offset]);
}
