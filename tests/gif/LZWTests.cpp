// The coder against plain versions of both directions, and the expander against codes that no
// compressor makes.
#include "LZW.h"

#include "FirstDifference.h"
#include "MemoryManager.h"
#include "PlainGif.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

/// A coder with its tables.
struct Coder {
    Coder() {
        lzw.hashTable = NewHandle(kLZWHashBytes);
        lzw.stringTable = NewHandle(kLZWStringBytes);
    }
    ~Coder() {
        DisposeHandle(lzw.hashTable);
        DisposeHandle(lzw.stringTable);
    }
    LZWData lzw;
};

short KeepCode(std::intptr_t refcon, short code, short width) {
    reinterpret_cast<std::vector<PlainCode>*>(refcon)->push_back({code, width});
    return 77;
}

/// Compresses in pieces of `step` symbols, an empty one in front.
std::vector<PlainCode> Compress(const ByteVector& symbols, PlainLzwOptions options,
                                std::size_t step) {
    Coder coder;
    std::vector<PlainCode> codes;
    EXPECT_EQ(LZWCompressStart(&coder.lzw, static_cast<short>(options.rootSize),
                               options.resetWhenFull, options.earlyChange != 0, KeepCode,
                               reinterpret_cast<std::intptr_t>(&codes)),
              77);
    EXPECT_EQ(LZWCompress(&coder.lzw, 0, symbols.data()), 0);
    for (std::size_t i = 0; i < symbols.size(); i += step) {
        const auto count = static_cast<std::int32_t>(std::min(step, symbols.size() - i));
        EXPECT_EQ(LZWCompress(&coder.lzw, count, symbols.data() + i), 0);
    }
    EXPECT_EQ(LZWCompressEnd(&coder.lzw), 0);
    return codes;
}

/// Gives out codes from bits, like a file does; -1 when they run out.
struct BitSource {
    const ByteVector& packed;
    std::size_t position = 0;

    static short GetCode(std::intptr_t refcon, short width) {
        BitSource& source = *reinterpret_cast<BitSource*>(refcon);
        int code = 0;
        for (int bit = 0; bit < width; ++bit, ++source.position) {
            if (source.position / 8 >= source.packed.size()) return -1;
            code |= (source.packed[source.position / 8] >> source.position % 8 & 1) << bit;
        }
        return static_cast<short>(code);
    }
};

struct Expansion {
    ByteVector symbols;
    int status;
};

/// Expands to the end, and a bit further to see that nothing more comes.
Expansion Expand(Coder& coder, int rootSize, bool earlyChange, LZWGetCode getCode, void* source) {
    LZWExpandStart(&coder.lzw, static_cast<short>(rootSize), earlyChange, getCode,
                   reinterpret_cast<std::intptr_t>(source));
    Expansion expansion;
    for (;;) {
        const short symbol = LZWExpand(&coder.lzw);
        if (LZWExpandEnded(&coder.lzw)) break;
        expansion.symbols.push_back(static_cast<std::uint8_t>(symbol));
    }
    coder.lzw.getCode = [](std::intptr_t, short) -> short {
        ADD_FAILURE() << "a code was asked for after the end";
        return 0;
    };
    for (int i = 0; i < 3; ++i) EXPECT_EQ(LZWExpand(&coder.lzw), 0);
    expansion.status = LZWExpandEnd(&coder.lzw);
    return expansion;
}

std::string Name(PlainLzwOptions options) {
    return "root size " + std::to_string(options.rootSize) + ", reset " +
           std::to_string(options.resetWhenFull) + ", early " + std::to_string(options.earlyChange);
}

std::vector<PlainLzwOptions> AllOptions() {
    std::vector<PlainLzwOptions> all;
    for (int rootSize = 2; rootSize <= 8; ++rootSize)
        for (const bool reset : {true, false})
            for (const int early : {0, 1}) all.push_back({rootSize, reset, early});
    return all;
}

TEST(LZW, CompressesAsThePlainCoderAndExpandsBack) {
    std::mt19937 random(20240611);
    for (const PlainLzwOptions& options : AllOptions())
        for (const int runLength : {1, 20, 100000}) { // the first fills the table several times
            SCOPED_TRACE(Name(options) + ", runs of " + std::to_string(runLength));
            const ByteVector symbols =
                RandomImage(random, 200, 199, 1 << options.rootSize, runLength).indices;
            const std::vector<PlainCode> codes = PlainLzwCodes(symbols, options);
            EXPECT_EQ(FirstDifference(Compress(symbols, options, symbols.size()), codes), "");
            EXPECT_EQ(FirstDifference(Compress(symbols, options, 1 + random() % 1000), codes), "");

            const ByteVector packed = PackCodes(codes);
            BitSource source{packed};
            Coder coder;
            const Expansion expansion = Expand(coder, options.rootSize, options.earlyChange != 0,
                                               BitSource::GetCode, &source);
            EXPECT_EQ(FirstDifference(expansion.symbols, symbols), "");
            EXPECT_EQ(expansion.status, 0);
        }
}

// Which code comes last, and so whether the end code is the first of a new width, changes with
// every symbol.
TEST(LZW, EndsAtTheWidthThatTheExpanderHasThen) {
    std::mt19937 random(7);
    for (const int rootSize : {2, 8}) {
        const ByteVector all = RandomImage(random, 1, 5000, 1 << rootSize, 1).indices;
        bool wider = false;
        for (std::size_t count = 0; count < all.size(); count += count < 600 ? 1 : 7) {
            const ByteVector symbols(all.begin(), all.begin() + static_cast<long>(count));
            const std::vector<PlainCode> codes = Compress(symbols, {rootSize}, 64);
            const PlainExpansion expansion = PlainLzwExpand(PackCodes(codes), rootSize);
            ASSERT_TRUE(expansion.complete && expansion.spareBytes == 0)
                << "root size " << rootSize << ", " << count << " symbols";
            ASSERT_EQ(FirstDifference(expansion.symbols, symbols), "")
                << rootSize << ", " << count << " symbols";
            wider |= codes.back().width > codes[codes.size() - 2].width;
        }
        EXPECT_TRUE(wider) << "no stream ended where the width grows";
    }
}

TEST(LZW, StartsOverOrGoesOnWhenFull) {
    // Every symbol pair is new until the table is full: symbols 0 0 1 0 2 0 3 ... 1 1 2 1 3 ...
    ByteVector symbols;
    for (int first = 0; first < 128; ++first)
        for (int second = first; second < 256; ++second) {
            symbols.push_back(static_cast<std::uint8_t>(first));
            symbols.push_back(static_cast<std::uint8_t>(second));
        }
    const auto firstClear = [&](bool reset) {
        const std::vector<PlainCode> codes = Compress(symbols, {8, reset}, 1000);
        const auto clear = std::find_if(codes.begin() + 1, codes.end(),
                                        [](PlainCode code) { return code.code == 256; });
        EXPECT_TRUE(std::all_of(codes.begin(), codes.end(),
                                [](PlainCode code) { return code.code < 4093; }));
        return std::vector<PlainCode>(clear, std::min(clear + 2, codes.end()));
    };
    const std::vector<PlainCode> cleared = firstClear(true);
    ASSERT_EQ(cleared.size(), 2u);
    EXPECT_EQ(cleared[0].width, 12);
    EXPECT_EQ(cleared[1].width, 9);
    EXPECT_TRUE(firstClear(false).empty());
}

struct CodeList {
    std::vector<short> codes;
    std::size_t next = 0;

    static short GetCode(std::intptr_t refcon, short) {
        CodeList& list = *reinterpret_cast<CodeList*>(refcon);
        return list.next < list.codes.size() ? list.codes[list.next++] : short{-1};
    }
};

TEST(LZWExpand, StopsAtCodesThatCannotBe) {
    const struct {
        std::vector<short> codes; // root size 2: clear is 4, end is 5, strings start at 6
        ByteVector symbols;
        int status;
    } cases[] = {
        {{4, 1, 6, 5}, {1, 1, 1}, 0},  // the string that is just being learnt
        {{1, 2, 5}, {1, 2}, 0},        // no clear code in front
        {{4, 4, 4, 3, 5, 0}, {3}, 0},  // a run of clear codes; nothing after the end code
        {{4, 5}, {}, 0},               // no symbols
        {{4, 6}, {}, -1},              // a string right after the clear code
        {{4, 1, 1, 4, 6}, {1, 1}, -1}, // one that was forgotten
        {{4, 1, 7}, {1}, -1},          // one above the next
        {{4, 1, 2}, {1, 2}, -1},       // no end code
        {{4, 1, 4095}, {1}, -1},
        {{4, 1, 32767}, {1}, -1},
        {{4, 1, -7}, {1}, -1},
    };
    for (const auto& c : cases) {
        CodeList list{c.codes};
        Coder coder;
        const Expansion expansion = Expand(coder, 2, false, CodeList::GetCode, &list);
        SCOPED_TRACE(testing::PrintToString(c.codes));
        EXPECT_EQ(expansion.symbols, c.symbols);
        EXPECT_EQ(expansion.status, c.status);
    }
}

TEST(LZWExpand, StopsAtTheCodeAboveAFullTable) {
    CodeList list{std::vector<short>(5000, 1)};
    list.codes.push_back(4096);
    Coder coder;
    const Expansion expansion = Expand(coder, 2, false, CodeList::GetCode, &list);
    EXPECT_EQ(expansion.symbols.size(), 5000u);
    EXPECT_EQ(expansion.status, -1);
}

// Codes that are mostly possible lead deep into the tables, so the source looks at the expander's
// state; it gives the end code when `left` codes are given.
struct RandomCodes {
    const LZWData& lzw;
    std::mt19937& random;
    unsigned left;
    std::vector<PlainCode> given = {};

    static short GetCode(std::intptr_t refcon, short width) {
        RandomCodes& source = *reinterpret_cast<RandomCodes*>(refcon);
        source.given.push_back({source.Choose(width), width});
        return static_cast<short>(source.given.back().code);
    }
    int Choose(int width) {
        if (left-- == 0) return lzw.endCode;
        const auto below = [this](int limit) {
            return static_cast<int>(random() % static_cast<unsigned>(limit));
        };
        if (below(3000) == 0) return below(1 << width);
        const int limit = lzw.prefix == -1 ? lzw.clearCode : lzw.nextCode + 1;
        const int code = below(std::min(limit, 1 << width));
        return code == lzw.clearCode || code == lzw.endCode ? 0 : code;
    }
};

TEST(LZWExpand, AgreesWithThePlainExpanderOnRandomCodes) {
    std::mt19937 random(99);
    int full = 0, impossible = 0;
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE("stream " + std::to_string(i));
        const int rootSize = 2 + i % 7;
        Coder coder;
        RandomCodes source{coder.lzw, random, static_cast<unsigned>(random() % 6000)};
        const Expansion expansion =
            Expand(coder, rootSize, i % 2 != 0, RandomCodes::GetCode, &source);
        const PlainExpansion plain = PlainLzwExpand(PackCodes(source.given), rootSize, i % 2);
        ASSERT_EQ(expansion.status, plain.complete ? 0 : -1);
        ASSERT_EQ(FirstDifference(expansion.symbols, plain.symbols), "");
        full += coder.lzw.nextCode == kLZWStrings;
        impossible += !plain.complete;
    }
    EXPECT_GT(full, 20) << "too few streams filled the table";
    EXPECT_GT(impossible, 20) << "too few streams held an impossible code";
}

} // namespace
