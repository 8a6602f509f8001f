// LZW coding with codes of variable width, as GIF has it. Codes are passed through callbacks; there
// is no file access and no allocation here.
#pragma once

#include "ToolboxTypes.h"

/// Receives the next code of `width` bits from the compressor. Its result is ignored, except that
/// LZWCompressStart returns it.
using LZWPutCode = short (*)(std::intptr_t refcon, short code, short width);

/// Gives the expander the next code of `width` bits; any negative number when there is none.
using LZWGetCode = short (*)(std::intptr_t refcon, short width);

/// A string of symbols: an earlier string, or -1 for none, and the symbol that follows it.
struct LZWString {
    std::int16_t prefix;
    std::uint16_t suffix;
};
static_assert(sizeof(LZWString) == 4);

/// The two tables that the owner of an LZWData makes before the start call and disposes of after
/// the end call.
constexpr int kLZWHashSlots = 8191; ///< a prime, so that every step size reaches every slot
constexpr int kLZWStrings = 4096;
constexpr Size kLZWHashBytes = kLZWHashSlots * Size{sizeof(std::uint16_t)};
constexpr Size kLZWStringBytes = kLZWStrings * Size{sizeof(LZWString)};

/// The state of one stream, in one direction.
struct LZWData {
    std::uint16_t rootSize = 0;   ///< bits of an input symbol, 2..8
    std::uint16_t codeSize = 0;   ///< current width of a code, rootSize + 1..12
    std::uint16_t clearCode = 0;  ///< 1 << rootSize
    std::uint16_t endCode = 0;    ///< clearCode + 1
    std::uint16_t nextCode = 0;   ///< the next code to assign, from clearCode + 2
    std::int16_t prefix = -1;     ///< compressor: string matched so far; expander: the last; or -1
    std::int16_t outHead = -1;    ///< expander: first code to hand out, -1 none, -2 ended
    std::int16_t outLink = -1;    ///< expander: the code handed out before outHead, or -1
    LZWGetCode getCode = nullptr; ///< expander only
    LZWPutCode putCode = nullptr; ///< compressor only
    std::intptr_t refcon = 0;     ///< passed to both callbacks
    std::int16_t status = 0;      ///< -1 once the expander has met an impossible code
    Boolean isExpander = 0;       ///< changes the order of steps in AddLZWTable
    Boolean resetWhenFull = 0;    ///< compressor: start over when the table is full
    std::int16_t earlyChange = 0; ///< 1 widens one code earlier than GIF does, else 0
    Handle hashTable = nullptr;   ///< kLZWHashBytes: codes, 0 empty; expander: may be null
    Handle stringTable = nullptr; ///< kLZWStringBytes: an LZWString for every code
};

/// Forgets all strings but the single symbols and goes back to the first width.
///
/// @param rootSize bits of a symbol, 2..8; with 1, compressor and expander would widen at
///                 different codes
void LZWInit(LZWData* lzw, std::uint16_t rootSize);

/// The code of the string `prefix` + symbol, or -1 when it is not in the table. In that case the
/// hash table gets nextCode for it, if there is one left, and AddLZWTable must follow. `prefix`
/// must not be -1.
short SearchLZWTable(LZWData* lzw, unsigned char symbol);

/// Assigns nextCode to the string `prefix` + symbol and widens the codes where that is due. Does
/// nothing when all 4096 codes are assigned.
void AddLZWTable(LZWData* lzw, std::uint16_t symbol);

/// Starts compressing: emits the clear code and returns what putCode answered.
///
/// @param rootSize      bits of a symbol, 2..8
/// @param resetWhenFull nonzero clears the table when it is full, 0 goes on with it as it is
/// @param earlyChange   nonzero for the dialect that widens one code earlier; GIF has 0
///
/// Both tables must be there and stay until the end call.
short LZWCompressStart(LZWData* lzw, short rootSize, Boolean resetWhenFull, Boolean earlyChange,
                       LZWPutCode putCode, std::intptr_t refcon);

/// Compresses `count` further symbols, each below 1 << rootSize. Always 0.
short LZWCompress(LZWData* lzw, std::int32_t count, const unsigned char* data);

/// Codes of one width, in their order.
struct LZWCodes {
    static constexpr int kMost = 256;
    int count = 0;
    short width = 0; ///< bits of each
    std::uint16_t codes[kMost];
};

/// LZWCompress without callbacks: compresses some of the `count` symbols and stores the codes in
/// `batch`. It stops when the batch is full or the width of the codes changes, but not before it
/// has compressed one symbol. putCode is not called.
///
/// @return the number of symbols compressed
std::int32_t LZWCompressSome(LZWData* lzw, std::int32_t count, const unsigned char* data,
                             LZWCodes* batch);

/// Emits the string still held and the end code; returns `status`. No symbols may follow.
short LZWCompressEnd(LZWData* lzw);

/// Starts expanding, with the rootSize and earlyChange of the compressor. Only the string table
/// is needed. Any codes are safe to expand, whoever wrote them.
void LZWExpandStart(LZWData* lzw, short rootSize, Boolean earlyChange, LZWGetCode getCode,
                    std::intptr_t refcon);

/// The next symbol. At the end code, and at an impossible code or when getCode has none (`status`
/// becomes -1), the stream ends: this call and all later ones return 0 and read nothing more.
/// Since 0 is a symbol too, LZWExpandEnded tells whether the call just made met the end.
short LZWExpand(LZWData* lzw);

/// True once LZWExpand has met the end of the stream.
inline bool LZWExpandEnded(const LZWData* lzw) {
    return lzw->outHead == -2;
}

/// Returns `status`: 0, or -1 after an impossible code.
short LZWExpandEnd(LZWData* lzw);
