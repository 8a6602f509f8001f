// The RGB export: counts the colours, has the palette built, and maps the pixels band by band.
#include "GIF89RGBExport.h"

#include "DiffuseColor.h"
#include "InverseMap.h"
#include "IterateArea.h"
#include "MemoryManager.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::int32_t kCellCount = 32768;
// The histogram for the palette is counted in the GIF buffer, which holds no pixels yet. So the
// buffer is never smaller than a histogram.
constexpr std::int32_t kHistogramBytes = 131072;
// Each channel of the transparent colour before the user chooses another one.
constexpr std::uint8_t kInitialTransparentLevel = 193;
constexpr short kTooManyColors = 1;

std::uint8_t* FirstRowOf(const Rect& tile, const GIF89RGBExport& context) {
    return context.gifBuffer + std::ptrdiff_t{tile.top} * context.shape.columns;
}

short DitherNoTransparency(const Rect* tile, std::int32_t rowBytes, const std::uint8_t* data,
                           GIF89RGBExport* context) {
    DiffuseColorNoTransparency(data, FirstRowOf(*tile, *context),
                               static_cast<short>(tile->bottom - tile->top),
                               static_cast<short>(tile->right - tile->left), tile->top, rowBytes,
                               context->shape.columns, &context->palette, context->inverseMap,
                               reinterpret_cast<std::int16_t*>(context->errorBuffer));
    return 0;
}

short DitherWithTransparency(const Rect* tile, std::int32_t rowBytes, const std::uint8_t* data,
                             GIF89RGBExport* context) {
    DiffuseColorWithTransparency(data, FirstRowOf(*tile, *context),
                                 static_cast<short>(tile->bottom - tile->top),
                                 static_cast<short>(tile->right - tile->left), tile->top, rowBytes,
                                 context->shape.columns, &context->palette, context->inverseMap,
                                 reinterpret_cast<std::int16_t*>(context->errorBuffer),
                                 PackColor(context->transparentColor), context->transIndex);
    return 0;
}

} // namespace

std::int32_t GIF89RGBExport::ErrorBufferBytes() const {
    return shape.columns * 12 + 24;
}

std::int32_t GIF89RGBExport::SizeBuffers(std::int32_t& gifBufferSize) {
    const std::int32_t pixels = shape.columns * shape.rows;
    gifBufferSize = std::max(pixels, kHistogramBytes);
    return gifBufferSize + ErrorBufferBytes() + 2 * kCellCount;
}

short GIF89RGBExport::AllocateBuffers() {
    errorBuffer = NewPtr(ErrorBufferBytes());
    inverseMap = NewPtr(kCellCount);
    inverseWork = NewPtr(kCellCount);
    if (!errorBuffer || !inverseMap || !inverseWork) return memFullErr;
    return GIF89ExportContext::AllocateBuffers();
}

void GIF89RGBExport::DeallocateBuffers() {
    for (std::uint8_t** block : {&errorBuffer, &inverseMap, &inverseWork}) {
        DisposePtr(*block);
        *block = nullptr;
    }
    GIF89ExportContext::DeallocateBuffers();
}

void GIF89RGBExport::GetParameters() {
    ExactStart(&exactInfo);
    const Rect whole = shape.Bounds();
    const short counted =
        IterateArea(exportRecord, &whole, 0, 2, AsTileProc<ExactCount>, TileRefCon(&exactInfo));
    if (counted == kTooManyColors) {
        exactInfo.count = -1;
    } else if (counted != noErr) {
        error = counted;
        return;
    }

    transparentColor.red = kInitialTransparentLevel;
    transparentColor.green = kInitialTransparentLevel;
    transparentColor.blue = kInitialTransparentLevel;

    unsigned char exact = 0, supplied = 0;
    error = dialogs->rgb(*this, &exact, &supplied);
    if (error != noErr) return;
    SetupPalette(exact, supplied);
    if (error == noErr) GetOutputFile();
}

void GIF89RGBExport::MakeGIFBuffer() {
    std::memset(errorBuffer, 0, static_cast<std::size_t>(ErrorBufferBytes()));
    // The buffer may still hold the histogram, and rows that no band asks for must have index 0.
    std::memset(gifBuffer, 0, static_cast<std::size_t>(bufferSize));
    BuildInverse(&palette, inverseMap, inverseWork, static_cast<short>(numColors));
    const Rect whole = shape.Bounds();
    error = shape.hasTransparency
                ? IterateArea(exportRecord, &whole, 0, 3, AsTileProc<DitherWithTransparency>,
                              TileRefCon(this))
                : IterateArea(exportRecord, &whole, 0, 2, AsTileProc<DitherNoTransparency>,
                              TileRefCon(this));
    gifRowBytes = shape.columns;
}
