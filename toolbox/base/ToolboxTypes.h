// The Toolbox's basic types and result codes, as every layer above uses them.
#pragma once

#include <cstddef>
#include <cstdint>

using Boolean = std::uint8_t; ///< 0 is false, anything else true
using OSErr = std::int16_t;   ///< 0 is success
using OSType = std::uint32_t; ///< four characters, the first in the top byte
using ScriptCode = std::int16_t;
using Size = std::ptrdiff_t; ///< bytes

using Ptr = std::uint8_t*; ///< a block that never moves
using Handle = Ptr*;       ///< the address of a block's master pointer

/// Length-prefixed strings: a length byte, then that many characters, any bytes.
using Str63 = std::uint8_t[64];
using Str255 = std::uint8_t[256];
using StringPtr = std::uint8_t*;
using ConstStr255Param = const std::uint8_t*;

/// Four characters as an OSType: FourCC("GIFf").
constexpr OSType FourCC(const char (&text)[5]) {
    OSType code = 0;
    for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<std::uint8_t>(text[i]);
    return code;
}

/// A position; the vertical coordinate comes first.
struct Point {
    std::int16_t v = 0;
    std::int16_t h = 0;
};

/// Top, left, bottom, right; bottom and right lie outside.
struct Rect {
    std::int16_t top = 0;
    std::int16_t left = 0;
    std::int16_t bottom = 0;
    std::int16_t right = 0;
};

constexpr bool operator==(const Point& a, const Point& b) {
    return a.v == b.v && a.h == b.h;
}
constexpr bool operator==(const Rect& a, const Rect& b) {
    return a.top == b.top && a.left == b.left && a.bottom == b.bottom && a.right == b.right;
}

/// A colour of three 16-bit channels, 0..65535.
struct RGBColor {
    std::uint16_t red = 0;
    std::uint16_t green = 0;
    std::uint16_t blue = 0;
};

/// Names a file: volume, a directory id (FileManager.h keeps the table of real folders behind
/// these ids) and a length-prefixed name of at most 63 bytes.
struct FSSpec {
    std::int16_t vRefNum = 0;
    std::int32_t parID = 0;
    Str63 name = {};
};

enum : OSErr {
    noErr = 0,
    dskFulErr = -34,        ///< the disk is full
    nsvErr = -35,           ///< no such volume
    ioErr = -36,            ///< the device failed
    bdNamErr = -37,         ///< a name that no file can have
    fnOpnErr = -38,         ///< the file is not open
    eofErr = -39,           ///< the file ended first
    posErr = -40,           ///< a position before the file's start
    tmfoErr = -42,          ///< too many files open
    fnfErr = -43,           ///< file not found
    wPrErr = -44,           ///< the volume is write-protected
    fBsyErr = -47,          ///< the file is in use
    dupFNErr = -48,         ///< a file or folder of that name exists
    opWrErr = -49,          ///< the file is already open for writing
    paramErr = -50,         ///< an argument makes no sense
    rfNumErr = -51,         ///< no open file has that reference number
    permErr = -54,          ///< permission denied
    memFullErr = -108,      ///< out of memory
    dirNFErr = -120,        ///< folder not found
    userCanceledErr = -128, ///< the user cancelled
    resNotFound = -192,     ///< resource not found
    resFNotFound = -193,    ///< resource file not found
    mapReadErr = -199,      ///< a resource file whose map makes no sense
};
