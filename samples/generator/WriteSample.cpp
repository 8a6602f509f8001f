#include "WriteSample.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

#include <jpeglib.h> // wants <cstdio> before

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

File Create(const std::string& path) {
    File file(std::fopen(path.c_str(), "wb"));
    if (!file) throw std::runtime_error(path + " cannot be written");
    return file;
}

void Flush(const File& file, const std::string& path) {
    if (std::fflush(file.get()) != 0) throw std::runtime_error(path + " cannot be written");
}

} // namespace

// The libraries' own error handlers end the program with a message, which suits a generator.
void WriteJpeg(const std::string& path, const Sample& sample, int quality) {
    const File file = Create(path);
    jpeg_compress_struct writer = {};
    jpeg_error_mgr errors = {};
    writer.err = jpeg_std_error(&errors);
    jpeg_create_compress(&writer);
    jpeg_stdio_dest(&writer, file.get());
    writer.image_width = static_cast<JDIMENSION>(sample.columns);
    writer.image_height = static_cast<JDIMENSION>(sample.rows);
    writer.input_components = 3;
    writer.in_color_space = JCS_RGB;
    jpeg_set_defaults(&writer);
    jpeg_set_quality(&writer, quality, TRUE);
    writer.optimize_coding = TRUE;
    jpeg_start_compress(&writer, TRUE);
    if (!sample.comment.empty())
        jpeg_write_marker(&writer, JPEG_COM, reinterpret_cast<const JOCTET*>(sample.comment.data()),
                          static_cast<unsigned>(sample.comment.size()));
    while (writer.next_scanline < writer.image_height) {
        // The library reads the row but does not say so.
        auto* row = const_cast<JSAMPROW>(sample.bytes.data() + std::size_t{writer.next_scanline} *
                                                                   writer.image_width * 3);
        jpeg_write_scanlines(&writer, &row, 1);
    }
    jpeg_finish_compress(&writer);
    jpeg_destroy_compress(&writer);
    Flush(file, path);
}

void WritePng(const std::string& path, const Sample& sample) {
    const File file = Create(path);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file.get());
    png_set_compression_level(png, 9);
    png_set_IHDR(png, info, static_cast<png_uint_32>(sample.columns),
                 static_cast<png_uint_32>(sample.rows), 8, sample.colorType, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!sample.palette.empty())
        png_set_PLTE(png, info, sample.palette.data(), static_cast<int>(sample.palette.size()));
    if (!sample.opacities.empty())
        png_set_tRNS(png, info, sample.opacities.data(), static_cast<int>(sample.opacities.size()),
                     nullptr);
    std::string key = "Comment", comment = sample.comment;
    png_text text = {};
    text.compression = PNG_TEXT_COMPRESSION_NONE;
    text.key = key.data();
    text.text = comment.data();
    if (!comment.empty()) png_set_text(png, info, &text, 1);
    png_write_info(png, info);
    const std::size_t rowBytes = sample.bytes.size() / static_cast<std::size_t>(sample.rows);
    for (std::size_t first = 0; first < sample.bytes.size(); first += rowBytes)
        png_write_row(png, sample.bytes.data() + first);
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    Flush(file, path);
}
