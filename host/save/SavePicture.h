// From a picture to a checked GIF file in its place: export, decode, compare, commit.
#pragma once

#include "DialogUser.h"
#include "ExportModule.h"
#include "FileCheck.h"
#include "FileId.h"
#include "Picture.h"
#include "StagedFile.h"

#include <functional>
#include <optional>
#include <string>

namespace gif89 {

/// Where a GIF goes.
struct Destination {
    std::string folder;                 ///< gets the file under the module's proposed name
    std::string file;                   ///< when not empty: this very path instead
    int stream = -1;                    ///< when not negative: this descriptor instead
    Existing existing = Existing::keep; ///< whether a file there may be replaced
    Sync sync = Sync::replacements;     ///< what is forced to the disk
};

/// What was written.
struct SavedGif : CheckedGif {
    std::string path; ///< empty for a descriptor
};

/// The conditions of a save. Each function may throw Problem; then nothing is written.
struct SaveChecks {
    const Picture* original = nullptr; ///< to compare with; null is the exported picture itself
    bool keepIndices = false;          ///< whether the result has the file's indices
    /// The file that the picture was read from; it is not replaced where anything is lost.
    std::optional<FileId> source;
    /// Called with the target's path before anything is written there.
    std::function<void(const std::string&)> mayWrite;
    /// Called before the finished file takes its place.
    std::function<void(const ExportReport&)> accept;
};

/// Exports the picture under the document's name through the dialogs that `user` answers (the save
/// dialog is answered here), decodes the file, compares it with the picture and saves it. Throws
/// Problem, or OutputProblem when it is about the file. After a failure the target is as it was,
/// and nothing else is left in its folder.
SavedGif SavePicture(const ExportModule& module, const Picture& picture,
                     const std::string& documentName, const Destination& destination,
                     const DialogUser& user, const SaveChecks& checks = {});

} // namespace gif89
