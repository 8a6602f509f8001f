// From a picture to a checked GIF file in its place: export, decode, compare, commit.
#pragma once

#include "EventSource.h"
#include "ExportModule.h"
#include "Picture.h"
#include "StagedFile.h"
#include "StandardFile.h"

#include <cstddef>
#include <functional>
#include <string>

namespace gif89 {

/// Where a GIF goes.
struct Destination {
    std::string folder;                 ///< gets the file under the module's proposed name
    std::string file;                   ///< when not empty: this very path instead
    int stream = -1;                    ///< when not negative: this descriptor instead
    Existing existing = Existing::keep; ///< whether a file there may be replaced
};

/// What was written.
struct SavedGif {
    std::string path; ///< empty for a stream
    int rows = 0;
    int columns = 0;
    int colors = 0; ///< entries of the colour table that pixels use
    std::size_t bytes = 0;
};

/// Who answers the module's dialogs; the save dialog is answered by SavePicture itself.
struct DialogUser {
    EventSource* events;          ///< null cancels them
    StandardFileResponder* files; ///< for files to open; null cancels
};

/// Exports the picture under the document's name and saves it. `mayWrite` is asked with the target
/// path before anything is written there and may throw. Throws Problem; whatever fails, what was at
/// the destination is whole and nothing else is left there.
SavedGif SavePicture(const ExportModule& module, const Picture& picture,
                     const std::string& documentName, const Destination& destination,
                     const DialogUser& user,
                     const std::function<void(const std::string&)>& mayWrite = {});

} // namespace gif89
