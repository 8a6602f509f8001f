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

/// Gives out codes, -1 behind the last, and looks at the widths they are asked for in.
struct CodeSource {
    const std::vector<PlainCode>& codes;
    std::size_t next = 0;

    short Take(short width) {
        if (next == codes.size()) return -1;
        const PlainCode code = codes[next++];
        if (code.width != 0) {
            EXPECT_EQ(width, code.width) << "code " << next;
        }
        return static_cast<short>(code.code);
    }
};

struct Expansion {
    ByteVector symbols;
    int status;
};

/// Expands to the end, and a bit further to see that nothing more is asked for or comes.
Expansion Expand(int rootSize, bool earlyChange, const std::vector<PlainCode>& codes) {
    Coder coder;
    CodeSource source{codes};
    const LZWGetCode getCode = [](std::intptr_t refcon, short width) {
        return reinterpret_cast<CodeSource*>(refcon)->Take(width);
    };
    LZWExpandStart(&coder.lzw, static_cast<short>(rootSize), earlyChange, getCode,
                   reinterpret_cast<std::intptr_t>(&source));
    Expansion expansion;
    for (;;) {
        const short symbol = LZWExpand(&coder.lzw);
        if (LZWExpandEnded(&coder.lzw)) break;
        expansion.symbols.push_back(static_cast<std::uint8_t>(symbol));
    }
    const std::size_t taken = source.next;
    for (int i = 0; i < 3; ++i) EXPECT_EQ(LZWExpand(&coder.lzw), 0);
    EXPECT_EQ(source.next, taken) << "a code was asked for after the end";
    expansion.status = LZWExpandEnd(&coder.lzw);
    return expansion;
}

TEST(LZW, CompressesAsThePlainCoderAndExpandsBack) {
    std::mt19937 random(20240611);
    for (int n = 0; n < 84; ++n) {
        const PlainLzwOptions options = {2 + n % 7, n / 7 % 2 == 0, n / 14 % 2};
        const int runLength = n < 28 ? 1 : n < 56 ? 20 : 100000; // 1 fills the table several times
        SCOPED_TRACE(testing::Message()
                     << "root size " << options.rootSize << ", reset " << options.resetWhenFull
                     << ", early " << options.earlyChange << ", runs of " << runLength);
        const ByteVector symbols =
            RandomImage(random, 200, 199, 1 << options.rootSize, runLength).indices;
        const std::vector<PlainCode> codes = PlainLzwCodes(symbols, options);
        EXPECT_EQ(FirstDifference(Compress(symbols, options, symbols.size()), codes), "");
        EXPECT_EQ(FirstDifference(Compress(symbols, options, 1 + random() % 1000), codes), "");

        const Expansion expansion = Expand(options.rootSize, options.earlyChange != 0, codes);
        EXPECT_EQ(FirstDifference(expansion.symbols, symbols), "");
        EXPECT_EQ(expansion.status, 0);
    }
}

std::vector<PlainCode> OfAnyWidth(const std::vector<int>& codes) {
    std::vector<PlainCode> list;
    for (const int code : codes) list.push_back({code, 0});
    return list;
}

TEST(LZWExpand, StopsAtCodesThatCannotBe) {
    const struct {
        std::vector<int> codes; // root size 2: clear is 4, end is 5, strings start at 6
        ByteVector symbols;
        int status;
    } cases[] = {
        {{4, 1, 6, 5}, {1, 1, 1}, 0},  // the string that is just being learnt
        {{1, 2, 5}, {1, 2}, 0},        // no clear code in front
        {{4, 4, 4, 3, 5, 0}, {3}, 0},  // a run of clear codes; nothing after the end code
        {{4, 6}, {}, -1},              // a string right after the clear code
        {{4, 1, 1, 4, 6}, {1, 1}, -1}, // one that was forgotten
        {{4, 1, 7}, {1}, -1},          // one above the next
        {{4, 1, 2}, {1, 2}, -1},       // no end code
        {{4, 1, -7}, {1}, -1},
    };
    for (const auto& c : cases) {
        const Expansion expansion = Expand(2, false, OfAnyWidth(c.codes));
        SCOPED_TRACE(testing::PrintToString(c.codes));
        EXPECT_EQ(expansion.symbols, c.symbols);
        EXPECT_EQ(expansion.status, c.status);
    }
    std::vector<int> full(5000, 1);
    full.insert(full.end(), {4096, 5}); // the code above a full table, and a good end
    EXPECT_EQ(Expand(2, false, OfAnyWidth(full)).status, -1);
}

} // namespace
