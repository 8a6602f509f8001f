#include "LZW.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>

namespace {

constexpr int kMaxCodeSize = 12;
// Deliberate: the compressor's last code is 4092, three below the largest code of 12 bits. A higher
// limit would be valid as well, but would change the bytes of our files.
constexpr int kCompressorLimit = 4093;
constexpr std::int16_t kNone = -1;
constexpr std::int16_t kEnded = -2; // value of outHead after the end, for LZWExpandEnded

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
    // The search always ends: half of the slots are empty, and steps of prefix + 1 reach every
    // slot.
    for (int h = (symbol << 5) + lzw->prefix;; h += lzw->prefix) {
        ++h;
        while (h >= kLZWHashSlots) h -= kLZWHashSlots;
        const int code = slots[h];
        if (code == 0) {
            // Without a code to assign, the slot must stay empty. Otherwise it would be lost for
            // good in a table that is not reset.
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
    // The expander learns a string one code later than the compressor. It counts the code before
    // the comparison and the compressor counts it afterwards, so that both widen at the same code.
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

namespace {

// A string of the table as one word, as it lies in memory.
constexpr std::uint32_t StringWord(std::ptrdiff_t prefix, std::ptrdiff_t suffix) {
    const bool little = std::endian::native == std::endian::little;
    return static_cast<std::uint32_t>(little ? suffix << 16 | prefix : prefix << 16 | suffix);
}
static_assert(std::bit_cast<std::uint32_t>(LZWString{0x123, 0x45}) == StringWord(0x123, 0x45));

std::uint32_t LoadWord(const unsigned char* strings, std::ptrdiff_t code) {
    std::uint32_t word;
    std::memcpy(&word, strings + code * std::ptrdiff_t{sizeof word}, sizeof word);
    return word;
}

// The slot `step` + 1 behind `slot`, going round at the end of the table. The hint makes the
// compiler use a branch instead of a conditional move: in long strings of one colour the processor
// predicts the branch and starts the next load early. Where the prediction fails, the branch in the
// search costs far more than this one.
std::ptrdiff_t NextSlot(std::ptrdiff_t slot, std::ptrdiff_t step) {
    slot += step + 1;
    if (__builtin_expect_with_probability(slot >= kLZWHashSlots, 1, 0.99)) slot -= kLZWHashSlots;
    return slot;
}

// SearchLZWTable and AddLZWTable for many symbols, while there are codes to assign. It is faster
// than those because the state is kept in registers, a string is compared and stored as one word,
// and codes go into a batch instead of a callback. What costs time in the end are two dependent
// loads and the branch on whether the string is in the table, which cannot be predicted.
const unsigned char* MatchAndAdd(LZWData* lzw, const unsigned char* data, const unsigned char* end,
                                 LZWCodes* batch) {
    std::uint16_t* const slots = HashSlots(lzw);
    auto* const strings = reinterpret_cast<unsigned char*>(*lzw->stringTable);
    std::ptrdiff_t prefix = lzw->prefix, nextCode = lzw->nextCode;
    const std::ptrdiff_t widened = (1 << lzw->codeSize) - lzw->earlyChange + 1;
    const std::ptrdiff_t stop =
        std::min({std::ptrdiff_t{kCompressorLimit}, widened, nextCode + LZWCodes::kMost});
    std::uint16_t* code = batch->codes;

    while (data != end) {
        const std::ptrdiff_t symbol = *data++;
        const std::uint32_t string = StringWord(prefix, symbol);
        std::ptrdiff_t slot = NextSlot(prefix, symbol << 5);
        std::ptrdiff_t found = slots[slot];
        const auto isString = [&] { return found != 0 && LoadWord(strings, found) == string; };
        if (isString()) { // a string that is in the table is mostly in its first slot
            prefix = found;
            continue;
        }
        while (found != 0) {
            slot = NextSlot(slot, prefix);
            found = slots[slot];
            if (isString()) break;
        }
        if (found != 0) {
            prefix = found;
            continue;
        }
        slots[slot] = static_cast<std::uint16_t>(nextCode);
        std::memcpy(strings + nextCode * std::ptrdiff_t{sizeof string}, &string, sizeof string);
        *code++ = static_cast<std::uint16_t>(prefix);
        prefix = symbol;
        if (++nextCode == stop) break;
    }

    lzw->prefix = static_cast<std::int16_t>(prefix);
    lzw->nextCode = static_cast<std::uint16_t>(nextCode);
    if (nextCode == widened)
        lzw->codeSize = static_cast<std::uint16_t>(std::min(lzw->codeSize + 1, kMaxCodeSize));
    batch->count = static_cast<int>(code - batch->codes);
    return data;
}

// The same, symbol by symbol, for a full table. Stops after the clear code if one is to be sent.
const unsigned char* MatchInFullTable(LZWData* lzw, const unsigned char* data,
                                      const unsigned char* end, LZWCodes* batch) {
    const auto put = [batch](int code) {
        batch->codes[batch->count++] = static_cast<std::uint16_t>(code);
    };
    while (data != end && batch->count < LZWCodes::kMost) {
        const unsigned char symbol = *data++;
        if (const short longer = SearchLZWTable(lzw, symbol); longer != -1) {
            lzw->prefix = longer;
            continue;
        }
        put(lzw->prefix);
        if (lzw->resetWhenFull) {
            put(lzw->clearCode);
            LZWInit(lzw, lzw->rootSize);
            end = data;
        }
        lzw->prefix = symbol;
    }
    return data;
}

} // namespace

std::int32_t LZWCompressSome(LZWData* lzw, std::int32_t count, const unsigned char* data,
                             LZWCodes* batch) {
    batch->count = 0;
    batch->width = static_cast<short>(lzw->codeSize);
    if (count <= 0) return 0;
    const unsigned char* const end = data + count;
    const unsigned char* rest = data;
    if (lzw->prefix == kNone) lzw->prefix = *rest++;
    const auto match = lzw->nextCode < kCompressorLimit ? MatchAndAdd : MatchInFullTable;
    return static_cast<std::int32_t>(match(lzw, rest, end, batch) - data);
}

short LZWCompress(LZWData* lzw, std::int32_t count, const unsigned char* data) {
    LZWCodes batch;
    while (count > 0) {
        const std::int32_t done = LZWCompressSome(lzw, count, data, &batch);
        for (int i = 0; i < batch.count; ++i)
            lzw->putCode(lzw->refcon, static_cast<short>(batch.codes[i]), batch.width);
        data += done;
        count -= done;
    }
    return 0;
}

short LZWCompressEnd(LZWData* lzw) {
    if (lzw->prefix != kNone) {
        EmitCode(lzw, lzw->prefix);
        // No string is added here, but the expander's width grows after this code, so this one's
        // has to as well.
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

// Right after a clear code only single symbols have codes. Later nextCode is possible too: its
// string is the previous one and that one's first symbol. When the table is full there is no such
// code.
bool IsPossible(const LZWData* lzw, int code) {
    if (lzw->prefix == kNone) return code >= 0 && code < lzw->clearCode;
    return code >= 0 && code <= lzw->nextCode && code < kLZWStrings;
}

// Reverses the chain of prefixes, so that it leads from the string's first symbol to its last.
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

// Takes one symbol from the queue and restores its link.
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
