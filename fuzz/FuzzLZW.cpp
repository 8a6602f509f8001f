// The LZW coder: there and back with any symbols, and back with any codes, beside a plain version.
#include "FuzzInput.h"
#include "LZW.h"
#include "MemoryManager.h"
#include "PlainLzw.h"
#include "Require.h"

#include <random>

namespace {

/// An LZWData with its tables.
class Coder {
  public:
    Coder() {
        data.hashTable = NewHandle(kLZWHashBytes);
        data.stringTable = NewHandle(kLZWStringBytes);
    }
    Coder(const Coder&) = delete;
    Coder& operator=(const Coder&) = delete;
    ~Coder() {
        DisposeHandle(data.hashTable);
        DisposeHandle(data.stringTable);
    }

    LZWData data;
};

using Codes = std::vector<PlainCode>;

short NoteCode(std::intptr_t codes, short code, short width) {
    reinterpret_cast<Codes*>(codes)->push_back({code, width});
    return 0;
}

void Start(Coder& coder, const PlainLzwOptions& options, Codes& codes) {
    LZWCompressStart(&coder.data, static_cast<short>(options.rootSize), options.resetWhenFull,
                     options.earlyChange != 0, NoteCode, reinterpret_cast<std::intptr_t>(&codes));
}

/// In pieces of `pieceBytes`.
Codes Compress(const ByteVector& symbols, const PlainLzwOptions& options, std::size_t pieceBytes) {
    Coder coder;
    Codes codes;
    Start(coder, options, codes);
    for (std::size_t done = 0; done < symbols.size(); done += pieceBytes)
        LZWCompress(&coder.data,
                    static_cast<std::int32_t>(std::min(pieceBytes, symbols.size() - done)),
                    symbols.data() + done);
    Require(LZWCompressEnd(&coder.data) == 0, "compressing ends well");
    return codes;
}

Codes CompressInBatches(const ByteVector& symbols, const PlainLzwOptions& options) {
    Coder coder;
    Codes codes;
    Start(coder, options, codes);
    for (std::size_t done = 0; done < symbols.size();) {
        LZWCodes batch;
        const auto left = static_cast<std::int32_t>(symbols.size() - done);
        const std::int32_t taken =
            LZWCompressSome(&coder.data, left, symbols.data() + done, &batch);
        Require(taken >= 1 && taken <= left, "every batch goes on");
        Require(batch.count >= 0 && batch.count <= LZWCodes::kMost, "a batch has room for itself");
        for (int i = 0; i < batch.count; ++i) codes.push_back({batch.codes[i], batch.width});
        done += static_cast<std::size_t>(taken);
    }
    Require(LZWCompressEnd(&coder.data) == 0, "compressing ends well");
    return codes;
}

/// Hands out codes from packed bytes.
struct PackedCodes {
    std::span<const std::uint8_t> bytes;
    std::size_t bit = 0;

    static short Get(std::intptr_t refcon, short width) {
        PackedCodes& self = *reinterpret_cast<PackedCodes*>(refcon);
        if (self.bytes.size() * 8 - self.bit < static_cast<std::size_t>(width)) return -1;
        int code = 0;
        for (int i = 0; i < width; ++i, ++self.bit)
            code |= (self.bytes[self.bit / 8] >> self.bit % 8 & 1) << i;
        return static_cast<short>(code);
    }
};

PlainExpansion Expand(std::span<const std::uint8_t> packed, const PlainLzwOptions& options) {
    Coder coder;
    PackedCodes source{packed};
    LZWExpandStart(&coder.data, static_cast<short>(options.rootSize), options.earlyChange != 0,
                   PackedCodes::Get, reinterpret_cast<std::intptr_t>(&source));
    PlainExpansion expansion;
    for (short symbol = LZWExpand(&coder.data); !LZWExpandEnded(&coder.data);
         symbol = LZWExpand(&coder.data))
        expansion.symbols.push_back(static_cast<std::uint8_t>(symbol));
    expansion.complete = LZWExpandEnd(&coder.data) == 0;
    return expansion;
}

// A few bytes make many symbols, since codes widen and tables fill up late.
ByteVector TakeSymbols(FuzzInput& input, int rootSize) {
    constexpr std::size_t kMostSymbols = 40000;
    const auto mask = static_cast<std::uint8_t>((1 << rootSize) - 1);
    ByteVector symbols;
    while (!input.IsEmpty() && symbols.size() < kMostSymbols) {
        const int way = input.Number(0, 3);
        const std::size_t count = input.Byte();
        if (way == 0) { // as they stand
            for (const std::uint8_t byte : input.Take(count)) symbols.push_back(byte & mask);
        } else if (way == 1) { // one over and over
            symbols.insert(symbols.end(), count * 16, input.Byte() & mask);
        } else { // noise, of few symbols or of all
            std::mt19937 random(input.Byte());
            const auto kept = way == 2 ? std::uint8_t(mask & 1) : mask;
            for (std::size_t i = 0; i < count * 32; ++i)
                symbols.push_back(static_cast<std::uint8_t>(random()) & kept);
        }
    }
    return symbols;
}

void CheckRoundTrip(const ByteVector& symbols, const PlainLzwOptions& options,
                    std::size_t pieceBytes) {
    const Codes codes = PlainLzwCodes(symbols, options);
    Require(Compress(symbols, options, pieceBytes) == codes, "the codes are those of the format");
    Require(CompressInBatches(symbols, options) == codes, "so they are by the batch");
    const PlainExpansion expansion = Expand(PackCodes(codes), options);
    Require(expansion.complete && expansion.symbols == symbols, "the symbols come back");
}

void CheckAnyCodes(std::span<const std::uint8_t> packed, const PlainLzwOptions& options) {
    const PlainExpansion expansion = Expand(packed, options);
    const PlainExpansion plain = PlainLzwExpand(packed, options.rootSize, options.earlyChange);
    Require(expansion.complete == plain.complete, "impossible codes are found");
    Require(expansion.symbols == plain.symbols, "what comes before them is expanded");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    constexpr std::size_t kMostPacked = 1024; // each byte more can stand for thousands of symbols
    FuzzInput input(bytes, count);
    const int rootSize = input.Number(2, 8);
    const int flags = input.Byte();
    const PlainLzwOptions options = {rootSize, (flags & 1) != 0, (flags & 2) != 0 ? 1 : 0};
    if ((flags & 4) != 0) {
        CheckAnyCodes(input.Take(kMostPacked), options);
        return 0;
    }
    const auto pieceBytes = static_cast<std::size_t>(input.Number(1, 256));
    CheckRoundTrip(TakeSymbols(input, rootSize), options, pieceBytes);
    return 0;
}
