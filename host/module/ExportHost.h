// Runs one export the way an image editor does: fills the record, answers the module's requests,
// and turns result codes into sentences.
#pragma once

#include "EventSource.h"
#include "ExportModule.h"
#include "Picture.h"
#include "StandardFile.h"

#include <cstdint>
#include <string>

namespace gif89 {

/// What is exported, and who answers the module's dialogs.
struct ExportJob {
    const Picture& picture;
    std::string documentName;              ///< the module proposes this name and its suffix
    StandardFileResponder& files;          ///< answers the module's file dialogs
    EventSource* events = nullptr;         ///< operates the other dialogs; null cancels them
    std::int32_t bandBudget = kWholeImage; ///< bytes that one request may deliver

    /// A budget with which every pass over the picture takes one band. With a smaller one the
    /// module leaves out the rows between two bands, which only tests want.
    static constexpr std::int32_t kWholeImage = -1;
};

/// Exports the picture: prepare, start, continue until the module wants no more, finish. Throws
/// Problem when the picture is too large for one band, or with a sentence for the first code that
/// the module, the host's own deliveries, or the closing of the file reported.
void ExportPicture(const ExportModule& module, const ExportJob& job);

/// One sentence for a result code of the module.
std::string DescribeCode(OSErr code);

} // namespace gif89
