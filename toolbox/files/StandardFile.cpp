#include "StandardFile.h"

#include <algorithm>
#include <span>
#include <utility>

namespace {

thread_local StandardFileResponder* theResponder = nullptr;

// What the dialog that is open on this thread shows; filters carry no reference to it themselves.
struct Choice {
    FileFilterProc filter = nullptr;
    std::span<const OSType> types;
};
thread_local Choice theChoice;

bool IsChosenType(OSType type) {
    return std::find(theChoice.types.begin(), theChoice.types.end(), type) != theChoice.types.end();
}

// Folders have no type and stay in sight, as the way to the files in them.
Boolean HideOtherTypes(ParamBlockRec* file) {
    if (!(file->ioFlAttrib & kIsDirectory) && !IsChosenType(file->fdType)) return 1;
    return theChoice.filter ? theChoice.filter(file) : Boolean{0};
}

} // namespace

StandardFileResponder* SetStandardFileResponder(StandardFileResponder* responder) {
    return std::exchange(theResponder, responder);
}

void StandardPutFile(ConstStr255Param prompt, ConstStr255Param defaultName,
                     StandardFileReply* reply) {
    *reply = StandardFileReply();
    if (theResponder) theResponder->PutFile(prompt, defaultName, reply);
}

void StandardGetFile(FileFilterProc filter, std::int16_t typeCount, const OSType* typeList,
                     StandardFileReply* reply) {
    *reply = StandardFileReply();
    if (!theResponder) return;
    if (typeCount < 0) {
        theResponder->GetFile(filter, reply);
        return;
    }
    const Choice outer = std::exchange(
        theChoice, Choice{filter, std::span(typeList, static_cast<std::size_t>(typeCount))});
    theResponder->GetFile(HideOtherTypes, reply);
    if (reply->sfGood && !IsChosenType(reply->sfType)) *reply = StandardFileReply();
    theChoice = outer;
}
