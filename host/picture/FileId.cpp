#include "FileId.h"

#include <sys/stat.h>

namespace gif89 {
namespace {

std::optional<FileId> IdOf(const struct stat& status) {
    if (!S_ISREG(status.st_mode)) return std::nullopt;
    return FileId{status.st_dev, status.st_ino};
}

} // namespace

std::optional<FileId> FileIdOf(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? IdOf(status) : std::nullopt;
}

std::optional<FileId> FileIdOf(int descriptor) {
    struct stat status;
    return fstat(descriptor, &status) == 0 ? IdOf(status) : std::nullopt;
}

} // namespace gif89
