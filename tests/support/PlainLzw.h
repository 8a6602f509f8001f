// LZW coding written as plainly as it can be, against which the module's coder is compared.
#pragma once

#include <cstdint>
#include <ostream>
#include <span>
#include <vector>

using ByteVector = std::vector<std::uint8_t>;

/// One code of the stream and the bits it takes.
struct PlainCode {
    int code;
    int width;
    bool operator==(const PlainCode&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const PlainCode& item) {
        return out << item.code << " in " << item.width << " bits";
    }
};

struct PlainLzwOptions {
    int rootSize;
    bool resetWhenFull = true;
    int earlyChange = 0;
};

/// The codes, clear and end code included, that stand for the symbols. Codes up to 4092 are
/// assigned; a further one brings a clear code, or with resetWhenFull off nothing.
std::vector<PlainCode> PlainLzwCodes(std::span<const std::uint8_t> symbols,
                                     PlainLzwOptions options);

/// The codes' bits one after the other, least significant first, filled up with zeros.
ByteVector PackCodes(const std::vector<PlainCode>& codes);

/// What a stream of packed codes stands for.
struct PlainExpansion {
    ByteVector symbols;         ///< those before the end code, or before the first impossible code
    bool complete = false;      ///< the end code came, without an impossible code before it
    std::size_t spareBytes = 0; ///< whole bytes that follow the end code
};
PlainExpansion PlainLzwExpand(std::span<const std::uint8_t> packed, int rootSize,
                              int earlyChange = 0);
