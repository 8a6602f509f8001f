// The save and open dialogs, answered by whoever speaks for the user: a display, a command line, a
// test.
#pragma once

#include "FileManager.h"

#pragma GCC visibility push(default)

struct StandardFileReply {
    Boolean sfGood = 0;      ///< the user chose a file
    Boolean sfReplacing = 0; ///< put only: the chosen file exists and is to be replaced
    OSType sfType = 0;       ///< get only: the chosen file's type
    FSSpec sfFile;
    ScriptCode sfScript = 0;
};

/// Nonzero hides the file described by the block.
using FileFilterProc = Boolean (*)(ParamBlockRec* file);

/// Answers the two dialogs. Both start from a reply that means "cancelled".
class StandardFileResponder {
  public:
    virtual ~StandardFileResponder() = default;
    virtual void PutFile(ConstStr255Param prompt, ConstStr255Param defaultName,
                         StandardFileReply* reply) = 0;
    virtual void GetFile(FileFilterProc filter, StandardFileReply* reply) = 0;
};

/// Makes `responder` answer this thread's dialogs and returns the one before; null answers every
/// dialog with cancel. The caller keeps ownership.
StandardFileResponder* SetStandardFileResponder(StandardFileResponder* responder);

/// Asks where to save. `defaultName` is the name proposed.
void StandardPutFile(ConstStr255Param prompt, ConstStr255Param defaultName,
                     StandardFileReply* reply);

/// Asks for a file to open among those that `filter` (may be null) does not hide. Every type is
/// shown: typeCount is -1 and typeList null, since this toolbox has no lists of types.
void StandardGetFile(FileFilterProc filter, std::int16_t typeCount, const OSType* typeList,
                     StandardFileReply* reply);

#pragma GCC visibility pop
