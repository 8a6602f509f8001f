#include "SavePicture.h"

#include "Descriptor.h"
#include "ExportHost.h"
#include "FileManager.h"
#include "Problem.h"
#include "StandardFile.h"
#include "Streams.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <exception>
#include <filesystem>
#include <optional>
#include <string_view>

namespace gif89 {
namespace {

/// Answers the module's save dialog with a file that the host has open. Questions for a file to
/// open are passed on.
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
        } catch (...) {
            refusal = std::current_exception(); // the module is told that the user cancelled
        }
    }
    void GetFile(FileFilterProc filter, StandardFileReply* reply) override {
        if (opener) opener->GetFile(filter, reply);
    }

    FileCheck* check = nullptr; ///< follows the file; set before the dialog comes up
    std::exception_ptr refusal;
    std::string target;          ///< what is written; empty until it is known
    bool replacesSource = false; ///< the target is the file that the picture was read from

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
        target = where.file;
        if (target.empty()) target = std::filesystem::path(where.folder) / proposedName;
        if (checks.mayWrite) checks.mayWrite(target);
        replacesSource = checks.source && FileIdOf(target) == checks.source;
        return file.emplace(target, where.existing).FileDescriptor();
    }

    const Destination& where;
    const SaveChecks& checks;
};

/// The output to a stream. The file stays in memory until it has been checked.
class SaveToMemory final : public SaveDialog {
  public:
    using SaveDialog::SaveDialog;
    Descriptor file;

  private:
    int OpenFor(const std::string&) override {
        file = Descriptor(memfd_create("gif89", MFD_CLOEXEC));
        if (!file.IsOpen())
            throw OutputProblem("there is no memory for the file: " + SystemReason());
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

    std::string_view Bytes() const { return {static_cast<const char*>(bytes), size}; }

  private:
    [[noreturn]] static void Fail() {
        throw OutputProblem("the finished file cannot be read back: " + SystemReason());
    }

    void* bytes;
    std::size_t size;
};

/// Saves one picture.
struct Export {
    const ExportModule& module;
    const Picture& picture;
    const std::string& documentName;
    const DialogUser& user;
    const SaveChecks& checks;
};

// If our answer to the save dialog was a refusal, its reason is thrown instead of the module's
// "cancelled".
void Run(const Export& job, SaveDialog& dialog) {
    try {
        ExportPicture(job.module, {job.picture, job.documentName, dialog, job.user.events});
    } catch (const Problem&) {
        if (dialog.refusal) std::rethrow_exception(dialog.refusal);
        throw;
    }
}

// Runs the export while the file is decoded and compared with what was to be written.
CheckedGif RunChecked(const Export& job, SaveDialog& dialog) {
    const SaveChecks& checks = job.checks;
    FileCheck check(checks.original ? *checks.original : job.picture, job.picture,
                    checks.keepIndices);
    dialog.check = &check; // the check ends before the dialog closes its file
    Run(job, dialog);
    CheckedGif checked = check.Finish(job.user.palette ? *job.user.palette : PaletteKind::open);
    if (checks.accept) checks.accept(checked.report);
    if (dialog.replacesSource && !checked.report.Lossless())
        throw Problem("is the picture's own file, of which something would be lost: " +
                          LossText(checked.report),
                      ProblemKind::fileIsInput)
            .About(dialog.target);
    return checked;
}

// Runs the export and then the last step. Problems with the written file name that file.
template <typename LastStep>
SavedGif Save(const Export& job, SaveDialog& dialog, const LastStep& lastStep) {
    try {
        SavedGif saved = {RunChecked(job, dialog), {}};
        lastStep();
        return saved;
    } catch (const OutputProblem& problem) {
        throw problem.About(dialog.target);
    }
}

SavedGif SaveToStream(const Export& job, int stream, const std::string& name) {
    SaveToMemory dialog(job.user.files);
    dialog.target = name;
    return Save(job, dialog, [&dialog, stream] {
        if (!WriteAll(stream, MappedFile(dialog.file.Get()).Bytes()))
            throw OutputProblem("cannot be written: " + SystemReason());
    });
}

} // namespace

SavedGif SavePicture(const ExportModule& module, const Picture& picture,
                     const std::string& documentName, const Destination& destination,
                     const DialogUser& user, const SaveChecks& checks) {
    const Export job = {module, picture, documentName, user, checks};
    if (destination.stream >= 0) return SaveToStream(job, destination.stream, "standard output");
    // A device or pipe cannot be replaced by a file; it is written to.
    if (!destination.file.empty() && IsStream(destination.file)) {
        const Descriptor device(open(destination.file.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC));
        if (!device.IsOpen())
            throw OutputProblem("cannot be opened: " + SystemReason()).About(destination.file);
        SavedGif saved = SaveToStream(job, device.Get(), destination.file);
        saved.path = destination.file;
        return saved;
    }

    SaveToFolder dialog(destination, user.files, checks);
    SavedGif saved = Save(job, dialog, [&] { dialog.file->Commit(destination.sync); });
    saved.path = dialog.file->Target();
    return saved;
}

} // namespace gif89
