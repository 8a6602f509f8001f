#include "TiffSamples.h"

#include "ScaleSample.h"

#include <algorithm>
#include <span>
#include <string>
#include <tiff.h>

namespace gif89 {

namespace {

/// A sample of the range 0..top, scaled to 0..whole and rounded.
std::uint8_t Scale(unsigned sample, unsigned whole, unsigned top) {
    if (whole == 0) return 0;
    return ScaleSample(std::min(sample, whole), whole, top);
}

} // namespace

TiffSamplePlacer::TiffSamplePlacer(Picture& target, const TiffLayout& fileLayout)
    : picture(target), layout(fileLayout), maximum((1U << layout.bits) - 1) {
    if (layout.photometric == PHOTOMETRIC_SEPARATED)
        converter.emplace(picture.notes, InkStorage::ink);
    if (picture.kind != Picture::Kind::indexed) {
        picture.notes.droppedSamples =
            layout.samples - layout.form->colorants - (layout.alpha >= 0 ? 1 : 0);
        return;
    }
    int others = 0;
    for (int sample = layout.form->colorants; sample < layout.samples; ++sample) {
        AddChannel(picture, sample == layout.alpha ? kTransparencyChannel
                                                   : "Alpha " + std::to_string(++others));
        channelsFrom.push_back(sample);
    }
}

inline std::uint8_t TiffSamplePlacer::Level(const std::uint16_t* pixel, int sample,
                                            unsigned top) const {
    return Scale(pixel[sample], layout.multiplied ? pixel[layout.alpha] : maximum, top);
}

void TiffSamplePlacer::Place(int row, int column, int count, const std::uint16_t* samples) {
    const auto first = static_cast<std::size_t>(row) * static_cast<std::size_t>(picture.columns) +
                       static_cast<std::size_t>(column);
    const int pixelBytes = picture.BytesPerPixel();
    std::uint8_t* const pixels =
        picture.pixels.get() + first * static_cast<std::size_t>(pixelBytes);
    if (picture.kind == Picture::Kind::indexed)
        PlaceIndices(pixels, count, samples);
    else if (converter)
        PlaceInks(pixels, count, samples);
    else
        PlaceColors(pixels, count, samples);
    if (picture.kind == Picture::Kind::rgbAlpha)
        PlaceOpacities(pixels + 3, pixelBytes, layout.alpha, count, samples);
    for (std::size_t n = 0; n < channelsFrom.size(); ++n)
        PlaceOpacities(picture.channels[n].bytes.get() + first, 1, channelsFrom[n], count, samples);
    if (layout.bits > 8) NoteRounding(count, samples);
}

void TiffSamplePlacer::PlaceIndices(std::uint8_t* indices, int count,
                                    const std::uint16_t* samples) const {
    const auto top = static_cast<unsigned>(picture.colors - 1);
    for (; count > 0; --count, samples += layout.samples) *indices++ = Level(samples, 0, top);
}

void TiffSamplePlacer::PlaceColors(std::uint8_t* pixels, int count,
                                   const std::uint16_t* samples) const {
    for (; count > 0; --count, samples += layout.samples, pixels += picture.BytesPerPixel())
        for (int n = 0; n < 3; ++n) pixels[n] = Level(samples, n, 255);
}

void TiffSamplePlacer::PlaceInks(std::uint8_t* pixels, int count, const std::uint16_t* samples) {
    const auto pixelCount = static_cast<std::size_t>(count);
    inks.clear();
    for (int left = count; left > 0; --left, samples += layout.samples)
        for (int n = 0; n < 4; ++n) inks.push_back(Level(samples, n, 255));
    colors.resize(3 * pixelCount);
    converter->ConvertRow(inks.data(), pixelCount, colors.data());
    for (std::size_t n = 0; n < colors.size(); n += 3, pixels += picture.BytesPerPixel())
        std::copy_n(colors.data() + n, 3, pixels);
}

void TiffSamplePlacer::PlaceOpacities(std::uint8_t* opacities, int step, int sample, int count,
                                      const std::uint16_t* samples) const {
    for (; count > 0; --count, samples += layout.samples, opacities += step)
        *opacities = Scale(samples[sample], maximum, 255);
}

void TiffSamplePlacer::NoteRounding(int count, const std::uint16_t* samples) {
    const int used = picture.kind == Picture::Kind::indexed
                         ? layout.samples
                         : std::max(layout.form->colorants, layout.alpha + 1);
    for (; count > 0 && !picture.notes.rounded; --count, samples += layout.samples)
        for (int n = 0; n < used; ++n)
            if (samples[n] * 255U % maximum != 0) picture.notes.rounded = true;
}

} // namespace gif89
