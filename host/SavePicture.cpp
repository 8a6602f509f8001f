#include "SavePicture.h"

#include "DecodeGif.h"
#include "ExportHost.h"
#include "FileManager.h"
#include "Problem.h"
#include "StandardFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bitset>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <vector>

namespace gif89 {
namespace {

/// Answers the module's save dialog with a staging file beside the target, and hands on the
/// question for a file to open.
class SaveDialog final : public StandardFileResponder {
  public:
    SaveDialog(const Destination& destination, StandardFileResponder* openDialog,
               const std::function<void(const std::string&)>& check)
        : where(destination), opener(openDialog), mayWrite(check) {}

    void PutFile(ConstStr255Param, ConstStr255Param defaultName,
                 StandardFileReply* reply) override {
        try {
            const std::string proposed(reinterpret_cast<const char*>(defaultName + 1),
                                       defaultName[0]);
            std::string target = where.file;
            if (target.empty()) target = std::filesystem::path(where.folder) / proposed;
            if (mayWrite) mayWrite(target);
            file.emplace(target, where.existing);
            if (const OSErr error = PathToFSSpec(file->Path(), &reply->sfFile); error != noErr)
                throw Problem(DescribeCode(error));
            reply->sfGood = 1;
        } catch (const Problem& problem) {
            refusal = problem; // the module only hears "cancelled"
        }
    }
    void GetFile(FileFilterProc filter, StandardFileReply* reply) override {
        if (opener) opener->GetFile(filter, reply);
    }

    std::optional<StagedFile> file;
    std::optional<Problem> refusal;

  private:
    const Destination& where;
    StandardFileResponder* opener;
    const std::function<void(const std::string&)> mayWrite;
};

/// A descriptor that is closed with the object.
class Descriptor {
  public:
    explicit Descriptor(int number) : descriptor(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (descriptor >= 0) close(descriptor);
    }
    int Number() const { return descriptor; }

  private:
    int descriptor;
};

std::vector<std::uint8_t> ReadWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<std::uint8_t> bytes(std::filesystem::file_size(path));
    if (!file.read(reinterpret_cast<char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size())))
        throw Problem("the finished file cannot be read back");
    return bytes;
}

void WriteAll(int descriptor, const std::vector<std::uint8_t>& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t written = write(descriptor, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) throw Problem(std::string("cannot write: ") + std::strerror(errno));
        done += static_cast<std::size_t>(written);
    }
}

// Decodes the whole file and compares it with what was to be written.
SavedGif CheckFile(const std::vector<std::uint8_t>& bytes, const Picture& picture) {
    const DecodedGif gif = DecodeGif(bytes);
    if (gif.rows != picture.rows || gif.columns != picture.columns)
        throw Problem("the finished file has another size than the picture");
    if (gif.comment && *gif.comment != picture.comment)
        throw Problem("the finished file has another comment than the picture");
    std::bitset<256> used;
    const std::size_t pixels =
        static_cast<std::size_t>(gif.rows) * static_cast<std::size_t>(gif.columns);
    for (std::size_t i = 0; i < pixels; ++i) used.set(gif.indices[i]);
    return {{}, gif.rows, gif.columns, static_cast<int>(used.count()), bytes.size()};
}

// A device or pipe cannot be replaced by a file; it is written to.
bool IsStream(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

// Runs the export; a refusal of the save dialog is the better reason than the module's "cancelled".
void ExportThrough(SaveDialog& dialog, const ExportModule& module, const Picture& picture,
                   const std::string& documentName, const DialogUser& user) {
    try {
        ExportPicture(module, {picture, documentName, dialog, user.events});
    } catch (const Problem&) {
        if (dialog.refusal) throw *dialog.refusal;
        throw;
    }
}

// The module writes files; the stream gets the bytes once they have been checked.
SavedGif SaveToStream(const ExportModule& module, const Picture& picture,
                      const std::string& documentName, int stream, const DialogUser& user) {
    const Destination temporary = {
        {}, std::filesystem::temp_directory_path() / ".gif89-stream", -1, Existing::replace};
    SaveDialog dialog(temporary, user.files, {});
    ExportThrough(dialog, module, picture, documentName, user);
    const std::vector<std::uint8_t> bytes = ReadWholeFile(dialog.file->Path());
    SavedGif saved = CheckFile(bytes, picture);
    WriteAll(stream, bytes);
    return saved;
}

} // namespace

SavedGif SavePicture(const ExportModule& module, const Picture& picture,
                     const std::string& documentName, const Destination& destination,
                     const DialogUser& user,
                     const std::function<void(const std::string&)>& mayWrite) {
    if (destination.stream >= 0)
        return SaveToStream(module, picture, documentName, destination.stream, user);
    if (!destination.file.empty() && IsStream(destination.file)) {
        const Descriptor device(open(destination.file.c_str(), O_WRONLY | O_CLOEXEC));
        if (device.Number() < 0)
            throw Problem(std::string("cannot open it: ") + std::strerror(errno));
        return SaveToStream(module, picture, documentName, device.Number(), user);
    }

    SaveDialog dialog(destination, user.files, mayWrite);
    ExportThrough(dialog, module, picture, documentName, user);
    SavedGif saved = CheckFile(ReadWholeFile(dialog.file->Path()), picture);
    dialog.file->Commit();
    saved.path = dialog.file->Target();
    return saved;
}

} // namespace gif89
