#include "SavePicture.h"

#include "Descriptor.h"
#include "DialogWatch.h"
#include "ExportHost.h"
#include "FileManager.h"
#include "Problem.h"
#include "StandardFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <span>

namespace gif89 {
namespace {

/// Answers the module's save dialog with a file that the host has open, and hands on the question
/// for a file to open.
class SaveDialog : public StandardFileResponder {
  public:
    explicit SaveDialog(StandardFileResponder* openDialog) : opener(openDialog) {}

    void PutFile(ConstStr255Param, ConstStr255Param defaultName,
                 StandardFileReply* reply) override {
        try {
            const int file = OpenFor(
                {reinterpret_cast<const char*>(defaultName + 1), std::size_t{defaultName[0]}});
            reply->sfFile = DescriptorToFSSpec(file);
            reply->sfGood = 1;
            check->Begin(file);
        } catch (const Problem& problem) {
            refusal = problem; // the module only hears "cancelled"
        }
    }
    void GetFile(FileFilterProc filter, StandardFileReply* reply) override {
        if (opener) opener->GetFile(filter, reply);
    }

    FileCheck* check = nullptr; ///< set before the dialog comes up; follows the file
    std::optional<Problem> refusal;
    std::string replacedSource; ///< empty when the picture's own file stays

  protected:
    ~SaveDialog() override = default;
    /// The descriptor of the new, empty file; throws Problem.
    virtual int OpenFor(const std::string& proposedName) = 0;

  private:
    StandardFileResponder* opener;
};

class SaveToFolder final : public SaveDialog {
  public:
    SaveToFolder(const Destination& destination, StandardFileResponder* openDialog,
                 const SaveChecks& theChecks)
        : SaveDialog(openDialog), where(destination), checks(theChecks) {}

    std::optional<StagedFile> file;

  private:
    int OpenFor(const std::string& proposedName) override {
        std::string target = where.file;
        if (target.empty()) target = std::filesystem::path(where.folder) / proposedName;
        if (checks.mayWrite) checks.mayWrite(target);
        if (checks.source && FileIdOf(target) == checks.source) replacedSource = target;
        try {
            return file.emplace(target, where.existing).FileDescriptor();
        } catch (const Problem& problem) {
            throw problem.About(target);
        }
    }

    const Destination& where;
    const SaveChecks& checks;
};

/// A stream gets its bytes only when they have been checked; until then they stay in memory.
class SaveToMemory final : public SaveDialog {
  public:
    using SaveDialog::SaveDialog;
    Descriptor file;

  private:
    int OpenFor(const std::string&) override {
        file = Descriptor(memfd_create("gif89", MFD_CLOEXEC));
        if (!file.IsOpen())
            throw Problem(std::string("no memory for the file: ") + std::strerror(errno));
        return file.Get();
    }
};

/// A file in memory, as bytes.
class MappedFile {
  public:
    explicit MappedFile(int descriptor) {
        struct stat status = {};
        if (fstat(descriptor, &status) != 0) Fail();
        size = static_cast<std::size_t>(status.st_size);
        bytes = mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
        if (bytes == MAP_FAILED) Fail();
    }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    ~MappedFile() { munmap(bytes, size); }

    std::span<const std::uint8_t> Span() const {
        return {static_cast<const std::uint8_t*>(bytes), size};
    }

  private:
    [[noreturn]] static void Fail() { throw Problem("the finished file cannot be read back"); }

    void* bytes;
    std::size_t size;
};

void WriteAll(int descriptor, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t written =
            Uninterrupted([&] { return write(descriptor, bytes.data(), bytes.size()); });
        if (written < 0) throw Problem(std::string("cannot write: ") + std::strerror(errno));
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
}

/// One picture's way into a file.
struct Export {
    const ExportModule& module;
    const Picture& picture;
    const std::string& documentName;
    const DialogUser& user;
    const SaveChecks& checks;
};

// Runs the export and returns the palette's kind. A refusal of the save dialog is the better reason
// than the module's "cancelled".
std::string Run(const Export& job, SaveDialog& dialog) {
    std::optional<DialogWatch> watch;
    if (job.user.events) watch.emplace(*job.user.events);
    try {
        ExportPicture(job.module,
                      {job.picture, job.documentName, dialog, watch ? &*watch : nullptr});
    } catch (const Problem&) {
        if (dialog.refusal) throw *dialog.refusal;
        throw;
    }
    if (job.picture.kind == Picture::Kind::indexed)
        return job.picture.notes.madeIndexed ? "found" : "own";
    return watch ? watch->Palette() : std::string();
}

// Runs the export while the file is decoded and compared with what was to be written.
CheckedGif RunChecked(const Export& job, SaveDialog& dialog) {
    const SaveChecks& checks = job.checks;
    FileCheck check(checks.original ? *checks.original : job.picture, job.picture,
                    checks.keepIndices);
    dialog.check = &check; // which ends before the dialog closes its file
    std::string palette = Run(job, dialog);
    CheckedGif checked = check.Finish(std::move(palette));
    if (checks.accept) checks.accept(checked.report);
    if (!dialog.replacedSource.empty() && !checked.report.Lossless())
        throw Problem("is the picture's own file, of which something would be lost: " +
                          LossText(checked.report),
                      kUsage, Remedy::nameOther)
            .About(dialog.replacedSource);
    return checked;
}

// A device or pipe cannot be replaced by a file; it is written to.
bool IsStream(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

SavedGif SaveToStream(const Export& job, int stream) {
    SaveToMemory dialog(job.user.files);
    SavedGif saved = {RunChecked(job, dialog), {}};
    WriteAll(stream, MappedFile(dialog.file.Get()).Span());
    return saved;
}

} // namespace

SavedGif SavePicture(const ExportModule& module, const Picture& picture,
                     const std::string& documentName, const Destination& destination,
                     const DialogUser& user, const SaveChecks& checks) {
    const Export job = {module, picture, documentName, user, checks};
    if (destination.stream >= 0) return SaveToStream(job, destination.stream);
    if (!destination.file.empty() && IsStream(destination.file)) {
        const Descriptor device(open(destination.file.c_str(), O_WRONLY | O_CLOEXEC));
        if (!device.IsOpen())
            throw Problem(std::string("cannot be opened: ") + std::strerror(errno))
                .About(destination.file);
        return SaveToStream(job, device.Get());
    }

    SaveToFolder dialog(destination, user.files, checks);
    SavedGif saved = {RunChecked(job, dialog), {}};
    try {
        dialog.file->Commit();
    } catch (const Problem& problem) {
        throw problem.About(dialog.file->Target());
    }
    saved.path = dialog.file->Target();
    return saved;
}

} // namespace gif89
