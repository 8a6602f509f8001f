#include "LZW.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>

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

// The slot `step` + 1 behind `slot`. In long strings of one colour a branch here is foreseen, and
// the next load need not wait for it; without the hint compilers make it a selection that has to be
// waited for. Where slots are scattered, the branch in the search costs far more than this one.
std::ptrdiff_t NextSlot(std::ptrdiff_t slot, std::ptrdiff_t step) {
    slot += step + 1;
    if (__builtin_expect_with_probability(slot >= kLZWHashSlots, 1, 0.99)) slot -= kLZWHashSlots;
    return slot;
}

// SearchLZWTable and AddLZWTable for many symbols, while there are codes to assign. What they read
// from the record at every symbol stays in registers here, a string is compared and stored as one
// word, and the codes are left in a batch, so that nothing is called in between. What remains are
// two loads, one after the other, and a branch that nobody can foresee: is the string there?
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
        if (isString()) { // mostly in the first slot, if at all
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

// The same, symbol by symbol, while the table is full; up to the clear code where that is wanted.
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
