// Each palette entry is put into its own cell and spread from there along the three axes of the
// cube.
#include "InverseMap.h"

#include "PixelVector.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

constexpr int kCells = 32; // along each channel
constexpr int kMapBytes = kCells * kCells * kCells;
constexpr int kRedStride = 1024, kGreenStride = 32;
constexpr int kLanes = 16;               // lines that are processed together
constexpr std::uint8_t kUnreached = 255; // above every real distance, 3 x 31 at most

// From the highest entry down, so that of several entries in a cell the lowest one remains.
void SeedCells(const RGBLookUpTable& table, std::uint8_t* inverse, std::uint8_t* distance,
               int numColors) {
    for (int i = 255; i >= 0; --i) {
        const int cell = (table.red[i] >> 3) * kRedStride + (table.green[i] >> 3) * kGreenStride +
                         (table.blue[i] >> 3);
        inverse[cell] = static_cast<std::uint8_t>(std::min(i, numColors - 1));
        distance[cell] = 0;
    }
}

// SpreadAcross for 16 lines that lie side by side and do not depend on each other. A cell keeps its
// own entry when its distance equals the smaller of both distances, so ties are kept as well.
void SpreadManyAcross(std::uint8_t* inverse, std::uint8_t* distance, std::ptrdiff_t stride) {
    ByteVector carriedIndex = ByteVector::Load(inverse);
    ByteVector carriedDistance = ByteVector::Load(distance);
    for (int i = 1; i < kCells; ++i) {
        inverse += stride;
        distance += stride;
        const ByteVector own = ByteVector::Load(distance);
        carriedDistance = carriedDistance.Next().Min(own); // 255 stays unreached
        carriedIndex = own.Equal(carriedDistance).Choose(ByteVector::Load(inverse), carriedIndex);
        carriedIndex.Store(inverse);
        carriedDistance.Store(distance);
    }
}

// SpreadLine for 16 lines that lie side by side.
void SpreadLines(std::uint8_t* inverse, std::uint8_t* distance, std::ptrdiff_t stride) {
    SpreadManyAcross(inverse, distance, stride);
    const std::ptrdiff_t last = (kCells - 1) * stride;
    SpreadManyAcross(inverse + last, distance + last, -stride);
}

// Writes a square of 16 x 16 bytes with rows and columns exchanged. Interleaving the bytes of the
// upper and the lower half of the rows moves each byte from position p of 256 to 2 p modulo 255;
// after four rounds that is 16 p, the transposed position.
void Transpose(const std::uint8_t* from, std::ptrdiff_t fromStride, std::uint8_t* to,
               std::ptrdiff_t toStride) {
    ByteVector rows[kLanes], shuffled[kLanes];
    for (int i = 0; i < kLanes; ++i) rows[i] = ByteVector::Load(from + i * fromStride);
    for (int round = 0; round < 4; ++round) {
        for (std::ptrdiff_t i = 0; i < kLanes / 2; ++i) {
            shuffled[2 * i] = rows[i].InterleaveLower(rows[i + kLanes / 2]);
            shuffled[2 * i + 1] = rows[i].InterleaveUpper(rows[i + kLanes / 2]);
        }
        std::copy_n(shuffled, kLanes, rows);
    }
    for (int i = 0; i < kLanes; ++i) rows[i].Store(to + i * toStride);
}

// Lines along blue follow each other in memory. 16 of them are transposed, so that they lie side by
// side, and transposed back afterwards.
void SpreadAlongBlue(std::uint8_t* inverse, std::uint8_t* distance) {
    std::uint8_t turned[2][kCells * kLanes];
    std::uint8_t* const maps[2] = {inverse, distance};
    for (int m = 0; m < 2; ++m)
        for (std::ptrdiff_t blue = 0; blue < kCells; blue += kLanes)
            Transpose(maps[m] + blue, kGreenStride, turned[m] + blue * kLanes, kLanes);
    SpreadLines(turned[0], turned[1], kLanes);
    for (int m = 0; m < 2; ++m)
        for (std::ptrdiff_t blue = 0; blue < kCells; blue += kLanes)
            Transpose(turned[m] + blue * kLanes, kLanes, maps[m] + blue, kGreenStride);
}

} // namespace

void BuildInverse(const RGBLookUpTable* table, std::uint8_t* inverse, std::uint8_t* distance,
                  short numColors) {
    std::memset(distance, kUnreached, kMapBytes);
    SeedCells(*table, inverse, distance, numColors);
    // The order of the axes decides ties: green, red, blue.
    for (int red = 0; red < kCells; ++red)
        for (int blue = 0; blue < kCells; blue += kLanes) {
            const int line = red * kRedStride + blue;
            SpreadLines(inverse + line, distance + line, kGreenStride);
        }
    for (int line = 0; line < kRedStride; line += kLanes)
        SpreadLines(inverse + line, distance + line, kRedStride);
    for (int lines = 0; lines < kMapBytes; lines += kLanes * kGreenStride)
        SpreadAlongBlue(inverse + lines, distance + lines);
}

void SpreadLine(std::uint8_t* inverse, std::uint8_t* distance, short stride) {
    SpreadAcross(inverse, distance, stride);
    const int last = (kCells - 1) * stride;
    SpreadAcross(inverse + last, distance + last, static_cast<short>(-stride));
}

std::uint8_t SpreadAcross(std::uint8_t* inverse, std::uint8_t* distance, short stride) {
    std::uint8_t carriedIndex = 0;
    std::uint8_t carriedDistance = kUnreached;
    for (int i = 0, cell = 0; i < kCells; ++i, cell += stride) {
        if (carriedDistance != kUnreached) ++carriedDistance;
        if (carriedDistance < distance[cell]) {
            inverse[cell] = carriedIndex;
            distance[cell] = carriedDistance;
        } else {
            carriedIndex = inverse[cell];
            carriedDistance = distance[cell];
        }
    }
    return carriedIndex;
}
