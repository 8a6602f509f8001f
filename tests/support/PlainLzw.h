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

/// Compresses symbol after symbol and calls `put` for each code, clear and end code included.
/// Codes up to 4092 are assigned; a further one brings a clear code, or with resetWhenFull off
/// nothing. Looks strings up in the same two steps as the module, so that their speeds compare.
class PlainLzwCoder {
  public:
    using PutCode = void (*)(void* context, PlainCode code);

    PlainLzwCoder(PlainLzwOptions choices, PutCode putCode, void* putContext);
    void Compress(std::span<const std::uint8_t> symbols);
    void End();

  private:
    struct String {
        std::int16_t prefix;
        std::uint16_t symbol;
    };

    void Clear();
    void Put(int code);
    int Search(int symbol);

    PlainLzwOptions options;
    PutCode put;
    void* context;
    std::vector<std::uint16_t> slots; ///< codes, 0 where none is
    std::vector<String> strings;      ///< by code
    int clearCode, nextCode, width, codesSinceClear;
    int matched; ///< the string so far, or -1
};

/// All codes that stand for the symbols.
std::vector<PlainCode> PlainLzwCodes(std::span<const std::uint8_t> symbols,
                                     PlainLzwOptions options);

/// Packs codes' bits one after the other, least significant first.
class PlainBitPacker {
  public:
    void Put(PlainCode code);
    /// What is packed, filled up with zeros.
    ByteVector Bytes();

  private:
    ByteVector packed;
    unsigned bits = 0;
    int bitCount = 0;
};
ByteVector PackCodes(const std::vector<PlainCode>& codes);

/// What a stream of packed codes stands for.
struct PlainExpansion {
    ByteVector symbols;    ///< those before the end code, or before the first impossible code
    bool complete = false; ///< the end code came, without an impossible code before it
};
PlainExpansion PlainLzwExpand(std::span<const std::uint8_t> packed, int rootSize,
                              int earlyChange = 0);
