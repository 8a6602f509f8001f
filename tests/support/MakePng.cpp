#include "MakePng.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// The rows as the format packs them: high bits first, rows starting at a byte.
std::vector<Bytes> PackRows(const PngForm& form, const std::vector<unsigned>& samples) {
    const std::size_t perRow = samples.size() / static_cast<std::size_t>(form.rows);
    std::vector<Bytes> rows;
    for (std::size_t first = 0; first < samples.size(); first += perRow) {
        Bytes& row = rows.emplace_back();
        unsigned bits = 0;
        int held = 0;
        for (std::size_t n = 0; n < perRow; ++n) {
            bits = bits << form.depth | samples[first + n];
            for (held += form.depth; held >= 8; held -= 8)
                row.push_back(static_cast<std::uint8_t>(bits >> (held - 8)));
        }
        if (held > 0) row.push_back(static_cast<std::uint8_t>(bits << (8 - held)));
    }
    return rows;
}

void AddTexts(png_structp png, png_infop info, const std::vector<PngText>& texts) {
    for (const PngText& each : texts) {
        std::string key = each.key, text = each.text, none;
        png_text entry = {};
        entry.compression = each.compression;
        entry.key = key.data();
        entry.text = text.data();
        entry.text_length = text.size();
        entry.lang = none.data();
        entry.lang_key = none.data();
        png_set_text(png, info, &entry, 1);
    }
}

} // namespace

Bytes MakePng(const PngForm& form, const std::vector<unsigned>& samples) {
    Bytes file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    const auto append = [](png_structp writer, png_bytep bytes, std::size_t count) {
        auto& into = *static_cast<Bytes*>(png_get_io_ptr(writer));
        into.insert(into.end(), bytes, bytes + count);
    };
    png_set_write_fn(png, &file, append, [](png_structp) {});
    // Tests want pictures that the library would rather not write.
    png_set_check_for_invalid_index(png, 0);
    png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_IHDR(png, info, static_cast<png_uint_32>(form.columns),
                 static_cast<png_uint_32>(form.rows), form.depth, form.colorType,
                 form.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (form.standard) png_set_sRGB(png, info, PNG_sRGB_INTENT_RELATIVE);
    if (!form.profile.empty())
        png_set_iCCP(png, info, "given", PNG_COMPRESSION_TYPE_BASE, form.profile.data(),
                     static_cast<png_uint_32>(form.profile.size()));
    Bytes exif = form.exif;
    if (!exif.empty())
        png_set_eXIf_1(png, info, static_cast<png_uint_32>(exif.size()), exif.data());
    if (!form.palette.empty())
        png_set_PLTE(png, info, form.palette.data(), static_cast<int>(form.palette.size()));
    if (!form.opacities.empty() || form.transparent)
        png_set_tRNS(png, info, form.opacities.data(), static_cast<int>(form.opacities.size()),
                     form.transparent ? &*form.transparent : nullptr);
    png_write_info_before_PLTE(png, info);
    for (const auto& [name, bytes] : form.chunks)
        png_write_chunk(png, reinterpret_cast<png_const_bytep>(name),
                        reinterpret_cast<png_const_bytep>(bytes.data()), bytes.size());
    png_write_info(png, info);
    const int passes = form.interlaced ? png_set_interlace_handling(png) : 1;
    for (int pass = 0; pass < passes; ++pass)
        for (const Bytes& row : PackRows(form, samples)) png_write_row(png, row.data());
    AddTexts(png, info, form.texts);
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}
