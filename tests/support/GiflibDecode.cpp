#include "GiflibDecode.h"

#include <gif_lib.h>

#include <algorithm>
#include <memory>

namespace {

int ReadBytes(GifFileType* gif, GifByteType* bytes, int count) {
    auto& left = *static_cast<std::span<const std::uint8_t>*>(gif->UserData);
    const std::size_t taken = std::min(left.size(), static_cast<std::size_t>(count));
    std::copy_n(left.begin(), taken, bytes);
    left = left.subspan(taken);
    return static_cast<int>(taken);
}

struct CloseGif {
    void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
};

void CopyTable(const ColorMapObject& map, GiflibPicture& picture) {
    picture.colors = map.ColorCount;
    for (int i = 0; i < map.ColorCount; ++i)
        SetTableEntry(picture.table, i,
                      {0, map.Colors[i].Red, map.Colors[i].Green, map.Colors[i].Blue});
}

void CopyComment(const SavedImage& image, GiflibPicture& picture) {
    int label = 0;
    for (int i = 0; i < image.ExtensionBlockCount; ++i) {
        const ExtensionBlock& block = image.ExtensionBlocks[i];
        if (block.Function != CONTINUE_EXT_FUNC_CODE) label = block.Function;
        if (label != COMMENT_EXT_FUNC_CODE) continue;
        if (!picture.comment) picture.comment.emplace();
        picture.comment->append(block.Bytes, block.Bytes + block.ByteCount);
    }
}

} // namespace

std::optional<GiflibPicture> GiflibDecode(std::span<const std::uint8_t> file, std::string* reason) {
    int error = 0;
    const std::unique_ptr<GifFileType, CloseGif> gif(DGifOpen(&file, ReadBytes, &error));
    const bool read = gif && DGifSlurp(gif.get()) == GIF_OK;
    if (!read || gif->ImageCount < 1 || !gif->SColorMap) {
        const char* const text = GifErrorString(gif ? gif->Error : error);
        *reason = text ? text : "no image or no colour table";
        return std::nullopt;
    }
    const SavedImage& image = gif->SavedImages[0];
    GiflibPicture picture;
    picture.rows = image.ImageDesc.Height;
    picture.columns = image.ImageDesc.Width;
    picture.interlaced = image.ImageDesc.Interlace;
    picture.indices.assign(image.RasterBits,
                           image.RasterBits + std::ptrdiff_t{picture.rows} * picture.columns);
    CopyTable(*gif->SColorMap, picture);
    CopyComment(image, picture);
    GraphicsControlBlock control;
    if (DGifSavedExtensionToGCB(gif.get(), 0, &control) == GIF_OK)
        picture.transparentIndex = control.TransparentColor;
    return picture;
}
