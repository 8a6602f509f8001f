#include "FolderTable.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include <fcntl.h>

namespace {

constexpr std::size_t kMostNameBytes = 63;
constexpr std::size_t kMostExtensionBytes = 16; // the dot counted; longer ones are no extensions

struct Folder {
    std::string path;
    std::map<std::string, std::string> aliasOf; // real name to alias
    std::map<std::string, std::string> nameOf;  // alias to real name
};

struct Folders {
    std::mutex lock;
    std::vector<Folder> folders; // id 1 comes first
    std::map<std::string, std::int32_t> idOf;
};

// Lives as long as the process: ids may still be in use while other statics are destroyed.
Folders& TheFolders() {
    static Folders& table = *new Folders;
    return table;
}

Folder* FindFolder(Folders& table, std::int32_t folder) {
    if (folder < 1 || static_cast<std::size_t>(folder) > table.folders.size()) return nullptr;
    return &table.folders[static_cast<std::size_t>(folder) - 1];
}

using SystemString = std::unique_ptr<char, decltype(&std::free)>;

// One spelling for every way to the same folder. A path that the system finds too long to resolve
// is only made absolute, and may then have an id for each spelling. Empty with errno on failure.
std::string CanonicalPath(const std::string& path) {
    const SystemString resolved(realpath(path.c_str(), nullptr), &std::free);
    if (resolved) return resolved.get();
    if (errno != ENAMETOOLONG) return {};
    if (path.front() == '/') return path;
    const SystemString working(getcwd(nullptr, 0), &std::free);
    return working ? JoinPath(working.get(), path) : std::string();
}

bool ContinuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

std::string ExtensionOf(const std::string& name) {
    const std::size_t dot = name.rfind('.');
    const bool usable = dot != std::string::npos && name.size() - dot <= kMostExtensionBytes;
    return usable ? name.substr(dot) : std::string();
}

std::string MakeAlias(const std::string& name, std::size_t number) {
    const std::string tail = '/' + std::to_string(number) + ExtensionOf(name);
    std::size_t head = kMostNameBytes - tail.size();
    // Not into the middle of a UTF-8 character, which has at most three bytes after its first.
    for (int step = 0; step < 3 && ContinuesCharacter(name[head]); ++step) --head;
    return name.substr(0, head) + tail;
}

} // namespace

std::int32_t EnterFolder(const std::string& path) {
    const std::string canonical = CanonicalPath(path);
    if (canonical.empty() || !OpenFolder(canonical).IsOpen()) return 0;
    Folders& table = TheFolders();
    const std::lock_guard guard(table.lock);
    const auto known = table.idOf.find(canonical);
    if (known != table.idOf.end()) return known->second;
    table.folders.push_back({canonical, {}, {}});
    const auto id = static_cast<std::int32_t>(table.folders.size());
    table.idOf.emplace(canonical, id);
    return id;
}

std::string FolderPath(std::int32_t folder) {
    Folders& table = TheFolders();
    const std::lock_guard guard(table.lock);
    const Folder* const entry = FindFolder(table, folder);
    return entry ? entry->path : std::string();
}

std::string ShortName(std::int32_t folder, const std::string& name) {
    if (name.size() <= kMostNameBytes) return name;
    Folders& table = TheFolders();
    const std::lock_guard guard(table.lock);
    Folder* const entry = FindFolder(table, folder);
    if (!entry) return {};
    const auto known = entry->aliasOf.find(name);
    if (known != entry->aliasOf.end()) return known->second;
    std::string alias = MakeAlias(name, entry->nameOf.size() + 1);
    entry->nameOf.emplace(alias, name);
    entry->aliasOf.emplace(name, alias);
    return alias;
}

std::string RealName(std::int32_t folder, const std::string& shortName) {
    if (shortName == "." || shortName == ".." || shortName.find('\0') != std::string::npos)
        return {};
    if (shortName.find('/') == std::string::npos) return shortName;
    Folders& table = TheFolders();
    const std::lock_guard guard(table.lock);
    const Folder* const entry = FindFolder(table, folder);
    if (!entry) return {};
    const auto known = entry->nameOf.find(shortName);
    return known != entry->nameOf.end() ? known->second : std::string();
}

std::string JoinPath(const std::string& folderPath, const std::string& name) {
    return folderPath.back() == '/' ? folderPath + name : folderPath + '/' + name;
}

Descriptor OpenFolder(const std::string& path) {
    Descriptor folder;
    std::size_t start = 0;
    while (start < path.size()) {
        std::size_t end = path.size();
        // The system takes less than PATH_MAX bytes at a time: go as far as the last slash in
        // reach.
        if (end - start >= PATH_MAX) end = path.rfind('/', start + PATH_MAX - 2) + 1;
        if (end <= start) {
            errno = ENAMETOOLONG;
            return Descriptor();
        }
        const std::string step = path.substr(start, end - start);
        const int from = folder.IsOpen() ? folder.Get() : AT_FDCWD;
        Descriptor next(Uninterrupted(
            [&] { return openat(from, step.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); }));
        if (!next.IsOpen()) return next;
        folder = std::move(next);
        // A second slash here would start again from the root.
        start = std::min(path.find_first_not_of('/', end), path.size());
    }
    return folder;
}
