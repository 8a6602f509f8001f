#include "LZW.h"

#include <algorithm>
#include <cassert>

namespace {

constexpr int kMaxCodeSize = 12;
// Deliberate: the compressor's last code is 4092, three short of what 12 bits hold. Raising the
// limit would be valid GIF too, but other files.
constexpr int kCompressorLimit = 4093;
constexpr std::int16_t kNone = -1;
constexpr std::int16_t kEnded = -2; // in outHead, as LZWExpandEnded asks

std::uint16_t* HashSlots(const LZWData* lzw) {
    return reinterpret_cast<std::uint16_t*>(*lzw->hashTable);
}

LZWString* Strings(const LZWData* lzw) {
    return reinterpret_cast<LZWString*>(*lzw->stringTable);
}

short EmitCode(const LZWData* lzw, int code) {
    return lzw->putCode(lzw->refcon, static_cast<short>(code), static_cast<short>(lzw->codeSize));
}

} // namespace

void LZWInit(LZWData* lzw, std::uint16_t rootSize) {
    lzw->rootSize = rootSize;
    lzw->codeSize = static_cast<std::uint16_t>(rootSize + 1);
    lzw->clearCode = static_cast<std::uint16_t>(1 << rootSize);
    lzw->endCode = static_cast<std::uint16_t>(lzw->clearCode + 1);
    lzw->nextCode = static_cast<std::uint16_t>(lzw->clearCode + 2);
    lzw->prefix = kNone;

    assert(lzw->nextCode <= kLZWStrings);
    for (std::uint16_t code = 0; code < lzw->nextCode; ++code) Strings(lzw)[code] = {kNone, code};
    if (lzw->hashTable) std::fill_n(HashSlots(lzw), kLZWHashSlots, std::uint16_t{0});
}

short SearchLZWTable(LZWData* lzw, unsigned char symbol) {
    std::uint16_t* const slots = HashSlots(lzw);
    const LZWString* const strings = Strings(lzw);
    // Half of the slots stay empty, and a step of prefix + 1 comes to each of them: the search
    // ends.
    for (int h = (symbol << 5) + lzw->prefix;; h += lzw->prefix) {
        ++h;
        while (h >= kLZWHashSlots) h -= kLZWHashSlots;
        const int code = slots[h];
        if (code == 0) {
            // A slot that no code follows would stay taken for good in a table that is not reset.
            if (lzw->nextCode < kCompressorLimit) slots[h] = lzw->nextCode;
            return -1;
        }
        if (strings[code].prefix == lzw->prefix && strings[code].suffix == symbol)
            return static_cast<short>(code);
    }
}

void AddLZWTable(LZWData* lzw, std::uint16_t symbol) {
    if (lzw->nextCode >= kLZWStrings) return;
    Strings(lzw)[lzw->nextCode] = {lzw->prefix, symbol};
    // The expander learns a string one code later than the compressor assigned it. Counting before
    // the comparison there and after it here lets both widen at the same code.
    if (lzw->isExpander) ++lzw->nextCode;
    if ((1 << lzw->codeSize) - lzw->earlyChange == lzw->nextCode)
        lzw->codeSize = static_cast<std::uint16_t>(std::min(lzw->codeSize + 1, kMaxCodeSize));
    if (!lzw->isExpander) ++lzw->nextCode;
}

short LZWCompressStart(LZWData* lzw, short rootSize, Boolean resetWhenFull, Boolean earlyChange,
                       LZWPutCode putCode, std::intptr_t refcon) {
    LZWInit(lzw, static_cast<std::uint16_t>(rootSize));
    lzw->resetWhenFull = resetWhenFull;
    lzw->putCode = putCode;
    lzw->refcon = refcon;
    lzw->isExpander = 0;
    lzw->status = 0;
    lzw->earlyChange = earlyChange ? 1 : 0;
    return EmitCode(lzw, lzw->clearCode);
}

short LZWCompress(LZWData* lzw, std::int32_t count, const unsigned char* data) {
    for (const unsigned char* const end = data + std::max(count, 0); data != end; ++data) {
        const unsigned char symbol = *data;
        if (lzw->prefix == kNone) {
            lzw->prefix = symbol;
            continue;
        }
        const short longer = SearchLZWTable(lzw, symbol);
        if (longer != -1) {
            lzw->prefix = longer;
            continue;
        }
        EmitCode(lzw, lzw->prefix);
        if (lzw->nextCode < kCompressorLimit) {
            AddLZWTable(lzw, symbol);
        } else if (lzw->resetWhenFull) {
            EmitCode(lzw, lzw->clearCode);
            LZWInit(lzw, lzw->rootSize);
        }
        lzw->prefix = symbol;
    }
    return 0;
}

short LZWCompressEnd(LZWData* lzw) {
    if (lzw->prefix != kNone) {
        EmitCode(lzw, lzw->prefix);
        // No string follows; only the width advances, as the expander's does after that code.
        AddLZWTable(lzw, 0);
    }
    EmitCode(lzw, lzw->endCode);
    return lzw->status;
}

namespace {

std::uint16_t FirstSymbol(const LZWData* lzw, int code) {
    const LZWString* const strings = Strings(lzw);
    while (strings[code].prefix != kNone) code = strings[code].prefix;
    return strings[code].suffix;
}

// Right after a clear code only single symbols have codes. Later, nextCode itself may come before
// its string is complete, unless the table is full and will never have it.
bool IsPossible(const LZWData* lzw, int code) {
    if (lzw->prefix == kNone) return code >= 0 && code < lzw->clearCode;
    return code >= 0 && code <= lzw->nextCode && code < kLZWStrings;
}

// Turns the chain of prefixes around, so that it leads from a string's first symbol to its last.
void QueueString(LZWData* lzw, std::int16_t code) {
    LZWString* const strings = Strings(lzw);
    lzw->outHead = kNone;
    lzw->outLink = kNone;
    while (code != kNone) {
        const std::int16_t before = strings[code].prefix;
        strings[code].prefix = lzw->outHead;
        lzw->outHead = code;
        code = before;
    }
}

void ExpandNextCode(LZWData* lzw) {
    const auto nextCode = [lzw] {
        return lzw->getCode(lzw->refcon, static_cast<short>(lzw->codeSize));
    };
    std::int16_t code = nextCode();
    for (; code == lzw->clearCode; code = nextCode()) LZWInit(lzw, lzw->rootSize);

    if (code == lzw->endCode || !IsPossible(lzw, code)) {
        if (code != lzw->endCode) lzw->status = -1;
        lzw->outHead = kEnded;
        return;
    }
    if (lzw->prefix != kNone)
        AddLZWTable(lzw, FirstSymbol(lzw, code < lzw->nextCode ? code : lzw->prefix));
    lzw->prefix = code;
    QueueString(lzw, code);
}

// Hands out one symbol and turns its link back to what it was.
short TakeSymbol(LZWData* lzw) {
    LZWString& string = Strings(lzw)[lzw->outHead];
    const std::int16_t following = string.prefix;
    string.prefix = lzw->outLink;
    lzw->outLink = lzw->outHead;
    lzw->outHead = following;
    return static_cast<short>(string.suffix);
}

} // namespace

void LZWExpandStart(LZWData* lzw, short rootSize, Boolean earlyChange, LZWGetCode getCode,
                    std::intptr_t refcon) {
    LZWInit(lzw, static_cast<std::uint16_t>(rootSize));
    lzw->getCode = getCode;
    lzw->refcon = refcon;
    lzw->isExpander = 1;
    lzw->outHead = kNone;
    lzw->status = 0;
    lzw->earlyChange = earlyChange ? 1 : 0;
}

short LZWExpand(LZWData* lzw) {
    if (lzw->outHead == kNone) ExpandNextCode(lzw);
    return LZWExpandEnded(lzw) ? short{0} : TakeSymbol(lzw);
}

short LZWExpandEnd(LZWData* lzw) {
    return lzw->status;
}
