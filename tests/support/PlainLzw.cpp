#include "PlainLzw.h"

#include <algorithm>

namespace {

constexpr int kSlots = 8191;
constexpr int kStrings = 4096;
constexpr int kLastCode = 4092;
constexpr int kMostWidth = 12;

} // namespace

PlainLzwCoder::PlainLzwCoder(PlainLzwOptions choices, PutCode putCode, void* putContext)
    : options(choices), put(putCode), context(putContext), slots(kSlots), strings(kStrings),
      clearCode(1 << choices.rootSize) {
    Clear();
    put(context, {clearCode, width});
}

void PlainLzwCoder::Compress(std::span<const std::uint8_t> symbols) {
    for (const std::uint8_t symbol : symbols) {
        if (matched == -1) {
            matched = symbol;
            continue;
        }
        const int longer = Search(symbol);
        if (longer != -1) {
            matched = longer;
            continue;
        }
        Put(matched);
        if (nextCode <= kLastCode) {
            strings[static_cast<std::size_t>(nextCode++)] = {static_cast<std::int16_t>(matched),
                                                             symbol};
        } else if (options.resetWhenFull) {
            Put(clearCode);
            Clear();
        }
        matched = symbol;
    }
}

void PlainLzwCoder::End() {
    if (matched != -1) Put(matched);
    Put(clearCode + 1);
}

void PlainLzwCoder::Clear() {
    std::fill(slots.begin(), slots.end(), std::uint16_t{0});
    nextCode = clearCode + 2;
    width = options.rootSize + 1;
    codesSinceClear = 0;
    matched = -1;
}

// The width is the decoder's: from the second code on it learns a string with every code, and it
// widens when its next free code needs another bit.
void PlainLzwCoder::Put(int code) {
    put(context, {code, width});
    if (++codesSinceClear < 2) return;
    const int decoderNext = clearCode + 2 + codesSinceClear - 1;
    if (decoderNext + options.earlyChange >= 1 << width) width = std::min(width + 1, kMostWidth);
}

// The code of the matched string with this symbol behind it, or -1 after giving it the next code.
int PlainLzwCoder::Search(int symbol) {
    for (int place = 32 * symbol + matched + 1;; place += matched + 1) {
        if (place >= kSlots) place -= kSlots;
        std::uint16_t& code = slots[static_cast<std::size_t>(place)];
        if (code == 0) {
            if (nextCode <= kLastCode) code = static_cast<std::uint16_t>(nextCode);
            return -1;
        }
        const String& string = strings[code];
        if (string.prefix == matched && string.symbol == symbol) return code;
    }
}

std::vector<PlainCode> PlainLzwCodes(std::span<const std::uint8_t> symbols,
                                     PlainLzwOptions options) {
    std::vector<PlainCode> codes;
    const auto keep = [](void* context, PlainCode code) {
        static_cast<std::vector<PlainCode>*>(context)->push_back(code);
    };
    PlainLzwCoder coder(options, keep, &codes);
    coder.Compress(symbols);
    coder.End();
    return codes;
}

void PlainBitPacker::Put(PlainCode code) {
    bits |= static_cast<unsigned>(code.code) << bitCount;
    for (bitCount += code.width; bitCount >= 8; bitCount -= 8, bits >>= 8)
        packed.push_back(static_cast<std::uint8_t>(bits));
}

ByteVector PlainBitPacker::Bytes() {
    if (bitCount > 0) Put({0, 8 - bitCount});
    return packed;
}

ByteVector PackCodes(const std::vector<PlainCode>& codes) {
    PlainBitPacker packer;
    for (const PlainCode code : codes) packer.Put(code);
    return packer.Bytes();
}

namespace {

/// Takes codes from packed bytes, a byte at a time.
struct BitReader {
    std::span<const std::uint8_t> packed;
    std::size_t bytesTaken = 0;
    unsigned bits = 0;
    int bitCount = 0;

    /// -1 when there are not enough bits.
    int Take(int width) {
        for (; bitCount < width; bitCount += 8) {
            if (bytesTaken == packed.size()) return -1;
            bits |= static_cast<unsigned>(packed[bytesTaken++]) << bitCount;
        }
        const auto code = static_cast<int>(bits & ((1U << width) - 1));
        bits >>= width;
        bitCount -= width;
        return code;
    }
};

/// A string: an earlier one and a symbol more.
struct ExpanderString {
    int before; ///< -1 for none
    std::uint8_t first, last;
    std::size_t length;
};

void AppendString(const std::vector<ExpanderString>& strings, int code, ByteVector& symbols) {
    std::size_t place = symbols.size() + strings[static_cast<std::size_t>(code)].length;
    symbols.resize(place);
    for (; code != -1; code = strings[static_cast<std::size_t>(code)].before)
        symbols[--place] = strings[static_cast<std::size_t>(code)].last;
}

} // namespace

PlainExpansion PlainLzwExpand(std::span<const std::uint8_t> packed, int rootSize, int earlyChange) {
    const int clearCode = 1 << rootSize;
    std::vector<ExpanderString> strings;
    int width = 0, last = -1;
    const auto clear = [&] {
        strings.clear();
        for (int i = 0; i < clearCode + 2; ++i) {
            const auto symbol = static_cast<std::uint8_t>(i);
            strings.push_back({-1, symbol, symbol, 1});
        }
        width = rootSize + 1;
        last = -1;
    };

    PlainExpansion expansion;
    BitReader reader{packed};
    for (clear();;) {
        const int code = reader.Take(width);
        if (code == clearCode) {
            clear();
            continue;
        }
        if (code == clearCode + 1) break;
        const int next = static_cast<int>(strings.size());
        if (code == -1 || code > next || (code == next && (last == -1 || next == 4096)))
            return expansion;
        if (last != -1 && next < 4096) {
            // The string being learnt may be the very one that the code names.
            const ExpanderString& before = strings[static_cast<std::size_t>(last)];
            const std::uint8_t symbol =
                code < next ? strings[static_cast<std::size_t>(code)].first : before.first;
            strings.push_back({last, before.first, symbol, before.length + 1});
            if (next + 1 + earlyChange >= 1 << width) width = std::min(width + 1, kMostWidth);
        }
        AppendString(strings, code, expansion.symbols);
        last = code;
    }
    expansion.complete = true;
    expansion.spareBytes = packed.size() - reader.bytesTaken;
    return expansion;
}
