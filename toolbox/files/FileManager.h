// Files by FSSpec and by reference number, on the file system of today.
//
// A directory id is a key into one process-wide table of real folders; ids are handed out when a
// path is made into an FSSpec and stay valid for the life of the process. A name of more than 63
// bytes gets a short alias in the same table. Every error code is the classic one for the cause
// that the system reports.
#pragma once

#include "ToolboxTypes.h"

#include <string>

#pragma GCC visibility push(default)

/// Permissions of FSpOpenDF.
enum : std::int8_t { fsRdPerm = 1, fsWrPerm = 2 };

/// Positions of SetFPos.
enum : std::int16_t { fsFromStart = 1, fsFromMark = 3 };

/// Finder flag of a file that dialogs do not show, and attribute bit of a folder.
enum : std::uint16_t { kIsInvisible = 0x4000 };
enum : std::uint8_t { kIsDirectory = 0x10 };

/// Makes an FSSpec for a path, any bytes, any length; the file itself need not exist.
/// noErr; bdNamErr for an empty path, one that ends in a slash, "." or "..", or one that holds a
/// zero byte; dirNFErr when its folder does not exist.
OSErr PathToFSSpec(const std::string& path, FSSpec* spec);

/// The path behind an FSSpec. noErr; dirNFErr for an unknown directory id; bdNamErr for a name
/// that is empty, or holds a slash or zero byte and is no alias.
OSErr FSSpecToPath(const FSSpec* spec, std::string* path);

/// Makes an FSSpec for a file that the caller has open for writing and that need not have a name.
/// The calls below then work on that file: creating finds it there, empty and free to take;
/// deleting empties it; opening starts at its first byte. The descriptor stays the caller's and
/// must be open as long as the FSSpec is used, which has no path and no catalogue entry.
FSSpec DescriptorToFSSpec(int descriptor);

/// Creates an empty file and records its type and creator in an extended attribute where the file
/// system has those. dupFNErr when anything of that name exists.
OSErr FSpCreate(const FSSpec* spec, OSType creator, OSType type, ScriptCode script);

/// Deletes a file; fnfErr when there is none. Folders are left alone (fBsyErr).
OSErr FSpDelete(const FSSpec* spec);

/// Opens a file's data for reading or writing from its start; the caller closes the reference
/// number with FSClose. opWrErr when this process has it open for writing already.
OSErr FSpOpenDF(const FSSpec* spec, std::int8_t permission, std::int16_t* refNum);

/// Reads up to *count bytes and sets *count to what was read; eofErr when that is less than asked.
OSErr FSRead(std::int16_t refNum, std::int32_t* count, void* buffer);

/// Writes *count bytes and sets *count to what was written. A program that wants dskFulErr at a
/// limit on file sizes, instead of its end by SIGXFSZ, ignores that signal.
OSErr FSWrite(std::int16_t refNum, std::int32_t* count, const void* buffer);

/// Moves the mark. A position past the end of the file puts the mark at the end and answers
/// eofErr; one before the start answers posErr and leaves the mark.
OSErr SetFPos(std::int16_t refNum, std::int16_t mode, std::int32_t offset);

/// Closes the file. The reference number is free again even when closing reports an error.
OSErr FSClose(std::int16_t refNum);

/// What the catalogue knows about a file or folder.
struct CInfoPBRec {
    StringPtr ioNamePtr = nullptr; ///< in and out: the name, room for a Str63; may be null
    std::int16_t ioVRefNum = 0;    ///< in: volume
    std::int16_t ioFDirIndex = 0;  ///< in: 0 look up the name; -1 the folder ioDirID itself
    std::int32_t ioDirID = 0;      ///< in: the folder; out: a folder's own id
    std::int32_t ioFlParID = 0;    ///< out: the id of the folder it lies in
    std::uint8_t ioFlAttrib = 0;   ///< out: kIsDirectory or 0
    OSType fdType = 0;             ///< out: from the extended attribute, else from the extension
    OSType fdCreator = 0;          ///< out: from the extended attribute, else 0
    std::uint16_t fdFlags = 0;     ///< out: kIsInvisible for names that begin with a dot
};

/// File filters of Standard File see a file through the same record.
using ParamBlockRec = CInfoPBRec;

/// Looks up a name in a folder (ioFDirIndex 0), or the folder itself (-1). noErr, fnfErr, dirNFErr.
OSErr PBGetCatInfoSync(CInfoPBRec* info);

/// The first error that a buffered stream or a file open for writing met while closing, on this
/// thread, since the last call of this function; 0 when all went well. Closing is the last chance
/// to learn that a disk is full, and callers that cannot act on it may ignore it there.
OSErr TakeCloseError();

/// The number of the system's error behind `error`, when that is what the latest call that failed
/// on this thread has answered; 0 otherwise. A code may stand for several of the system's errors.
int SystemErrorBehind(OSErr error);

/// For streams over files: keeps an error met while closing, if it is the first; 0 does nothing.
void KeepCloseError(OSErr error);

#pragma GCC visibility pop
