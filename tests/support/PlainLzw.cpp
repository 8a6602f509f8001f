#include "PlainLzw.h"

#include <algorithm>
#include <bit>
#include <map>
#include <utility>

namespace {

/// The width of the next code is known from how many codes came since the clear code: a decoder
/// has learnt one string less than that, and widens when its next free code needs another bit.
int WidthAfter(int codesSinceClear, int rootSize, int earlyChange) {
    const int nextFree = (1 << rootSize) + 2 + std::max(codesSinceClear - 1, 0);
    const auto bits =
        static_cast<int>(std::bit_width(static_cast<unsigned>(nextFree + earlyChange)));
    return std::clamp(bits, rootSize + 1, 12);
}

} // namespace

std::vector<PlainCode> PlainLzwCodes(std::span<const std::uint8_t> symbols,
                                     PlainLzwOptions options) {
    const int clearCode = 1 << options.rootSize;
    std::vector<PlainCode> codes;
    int sinceClear = 0;
    const auto put = [&](int code) {
        codes.push_back({code, WidthAfter(sinceClear, options.rootSize, options.earlyChange)});
        ++sinceClear;
    };

    std::map<std::pair<int, int>, int> longer; // string and symbol to string
    put(clearCode);
    sinceClear = 0;
    int matched = -1;
    for (const int symbol : symbols) {
        const auto found = longer.find({matched, symbol});
        if (matched == -1) {
            matched = symbol;
        } else if (found != longer.end()) {
            matched = found->second;
        } else {
            put(matched);
            const int free = clearCode + 2 + static_cast<int>(longer.size());
            if (free <= 4092) {
                longer[{matched, symbol}] = free;
            } else if (options.resetWhenFull) {
                put(clearCode);
                longer.clear();
                sinceClear = 0;
            }
            matched = symbol;
        }
    }
    if (matched != -1) put(matched);
    put(clearCode + 1);
    return codes;
}

ByteVector PackCodes(const std::vector<PlainCode>& codes) {
    ByteVector packed;
    std::size_t position = 0;
    for (const auto& [code, width] : codes)
        for (int bit = 0; bit < width; ++bit, ++position) {
            if (position % 8 == 0) packed.push_back(0);
            if (code >> bit & 1)
                packed.back() = static_cast<std::uint8_t>(packed.back() | 1 << position % 8);
        }
    return packed;
}

PlainExpansion PlainLzwExpand(std::span<const std::uint8_t> packed, int rootSize, int earlyChange) {
    const std::size_t clearCode = std::size_t{1} << rootSize;
    std::vector<ByteVector> strings;
    ByteVector last;
    int sinceClear = 0;
    const auto clear = [&] {
        strings.assign(clearCode + 2, {});
        for (std::size_t i = 0; i < clearCode; ++i) strings[i] = {static_cast<std::uint8_t>(i)};
        last.clear();
        sinceClear = 0;
    };

    PlainExpansion expansion;
    std::size_t position = 0;
    for (clear();;) {
        const int width = WidthAfter(sinceClear, rootSize, earlyChange);
        std::size_t code = 0;
        for (int bit = 0; bit < width; ++bit, ++position) {
            if (position / 8 >= packed.size()) return expansion;
            code |= std::size_t{packed[position / 8] >> position % 8 & 1U} << bit;
        }
        if (code == clearCode) {
            clear();
            continue;
        }
        if (code == clearCode + 1) break;
        ++sinceClear;

        if (!last.empty() && strings.size() < 4096) {
            // The string being learnt may be the very one that the code names.
            const ByteVector& current = code < strings.size() ? strings[code] : last;
            ByteVector learnt = last;
            learnt.push_back(current.front());
            strings.push_back(learnt);
        }
        if (code >= strings.size()) return expansion;
        last = strings[code];
        expansion.symbols.insert(expansion.symbols.end(), last.begin(), last.end());
    }
    expansion.complete = true;
    expansion.spareBytes = packed.size() - (position + 7) / 8;
    return expansion;
}
