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
            reply->sfFile = DescriptorToFSSpec(OpenFor(
                {reinterpret_cast<const char*>(defaultName + 1), std::size_t{defaultName[0]}}));
            reply->sfGood = 1;
        } catch (const Problem& problem) {
            refusal = problem; // the module only hears "cancelled"
        }
    }
    void GetFile(FileFilterProc filter, StandardFileReply* reply) override {
        if (opener) opener->GetFile(filter, reply);
    }

    std::optional<Problem> refusal;

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
        return file.emplace(target, where.existing).FileDescriptor();
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

/// The finished file's bytes in memory.
class FileBytes {
  public:
    explicit FileBytes(int descriptor) {
        struct stat status;
        if (fstat(descriptor, &status) != 0) Fail();
        size = static_cast<std::size_t>(status.st_size);
        bytes = std::make_unique_for_overwrite<std::uint8_t[]>(size);
        for (std::size_t done = 0; done < size;) {
            const ssize_t got = Uninterrupted([&] {
                return pread(descriptor, bytes.get() + done, size - done, static_cast<off_t>(done));
            });
            if (got <= 0) Fail();
            done += static_cast<std::size_t>(got);
        }
    }
    std::span<const std::uint8_t> Span() const { return {bytes.get(), size}; }

  private:
    [[noreturn]] static void Fail() { throw Problem("the finished file cannot be read back"); }

    std::unique_ptr<std::uint8_t[]> bytes;
    std::size_t size = 0;
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
    return watch ? watch->Palette() : std::string();
}

// Decodes the whole file and compares it with what was to be written.
SavedGif CheckFile(const Export& job, std::span<const std::uint8_t> bytes, std::string palette) {
    SavedGif saved = {{}, {}, DecodeGif(bytes)};
    const DecodedGif& gif = saved.gif;
    if (gif.rows != job.picture.rows || gif.columns != job.picture.columns)
        throw Problem("the finished file has another size than the picture");
    if (gif.comment && *gif.comment != job.picture.comment)
        throw Problem("the finished file has another comment than the picture");
    const Picture& original = job.checks.original ? *job.checks.original : job.picture;
    if (job.picture.kind == Picture::Kind::indexed)
        palette = job.picture.notes.madeIndexed ? "found" : "own";
    saved.report = MakeReport(original, job.picture, gif, bytes.size(), std::move(palette));
    if (job.checks.accept) job.checks.accept(saved.report);
    return saved;
}

// A device or pipe cannot be replaced by a file; it is written to.
bool IsStream(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

SavedGif SaveToStream(const Export& job, int stream) {
    SaveToMemory dialog(job.user.files);
    const std::string palette = Run(job, dialog);
    const FileBytes bytes(dialog.file.Get());
    SavedGif saved = CheckFile(job, bytes.Span(), palette);
    WriteAll(stream, bytes.Span());
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
        if (!device.IsOpen()) throw Problem(std::string("cannot open it: ") + std::strerror(errno));
        return SaveToStream(job, device.Get());
    }

    SaveToFolder dialog(destination, user.files, checks);
    const std::string palette = Run(job, dialog);
    SavedGif saved = CheckFile(job, FileBytes(dialog.file->FileDescriptor()).Span(), palette);
    dialog.file->Commit();
    saved.path = dialog.file->Target();
    return saved;
}

} // namespace gif89
