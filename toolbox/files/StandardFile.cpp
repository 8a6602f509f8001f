#include "StandardFile.h"

#include <cassert>
#include <utility>

namespace {

thread_local StandardFileResponder* theResponder = nullptr;

} // namespace

StandardFileResponder* SetStandardFileResponder(StandardFileResponder* responder) {
    return std::exchange(theResponder, responder);
}

void StandardPutFile(ConstStr255Param prompt, ConstStr255Param defaultName,
                     StandardFileReply* reply) {
    *reply = StandardFileReply();
    if (theResponder) theResponder->PutFile(prompt, defaultName, reply);
}

void StandardGetFile(FileFilterProc filter, [[maybe_unused]] std::int16_t typeCount,
                     [[maybe_unused]] const OSType* typeList, StandardFileReply* reply) {
    assert(typeCount < 0 && !typeList);
    *reply = StandardFileReply();
    if (theResponder) theResponder->GetFile(filter, reply);
}
