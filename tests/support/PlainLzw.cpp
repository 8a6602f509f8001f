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
    std::span<const std::uint8_t> rest;
    unsigned bits = 0;
    int bitCount = 0;

    /// -1 when there are not enough bits.
    int Take(int width) {
        for (; bitCount < width; bitCount += 8) {
            if (rest.empty()) return -1;
            bits |= static_cast<unsigned>(rest.front()) << bitCount;
            rest = rest.subspan(1);
        }
        const auto code = static_cast<int>(bits & ((1U << width) - 1));
        bits >>= width;
        bitCount -= width;
        return code;
    }
};

} // namespace

PlainExpansion PlainLzwExpand(std::span<const std::uint8_t> packed, int rootSize, int earlyChange) {
    const int clearCode = 1 << rootSize;
    std::vector<ByteVector> strings; // by code
    ByteVector last;
    int width = 0;
    const auto clear = [&] {
        strings.clear();
        for (int i = 0; i < clearCode + 2; ++i) strings.push_back({static_cast<std::uint8_t>(i)});
        width = rootSize + 1;
        last.clear();
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
        if (code == -1 || code > next || (code == next && (last.empty() || next == kStrings)))
            return expansion;
        if (!last.empty() && next < kStrings) {
            // The string being learnt may be the very one that the code names.
            strings.push_back(last);
            strings.back().push_back(strings[static_cast<std::size_t>(code)].front());
            if (next + 1 + earlyChange >= 1 << width) width = std::min(width + 1, kMostWidth);
        }
        last = strings[static_cast<std::size_t>(code)];
        expansion.symbols.insert(expansion.symbols.end(), last.begin(), last.end());
    }
    expansion.complete = true;
    return expansion;
}
