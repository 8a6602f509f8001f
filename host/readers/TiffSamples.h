// Where the samples of a TIFF pixel go in a picture.
#pragma once

#include "ColorProfile.h"
#include "Picture.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace gif89 {

/// How pictures of a photometric interpretation are stored.
struct TiffColorForm {
    int photometric;
    Picture::Kind kind; // of a picture without opacity
    int colorants;      // number of samples, from the first on, that make up the colour
};

/// What the fields of a directory say about its pixels.
struct TiffLayout {
    std::uint32_t columns = 0, rows = 0;
    std::uint16_t bits = 1, samples = 1; ///< bits of a sample, samples of a pixel
    std::uint16_t sampleFormat = 0;
    std::uint16_t photometric = 0;
    std::uint16_t compression = 0;
    bool separate = false;               ///< each sample in a plane of its own
    const TiffColorForm* form = nullptr; ///< null: the library converts the pixels
    int alpha = -1;                      ///< the sample that holds the opacity, or -1
    bool guessed = false;                ///< the file does not state that this sample is opacity
    bool multiplied = false;             ///< the colours are multiplied by the opacity
};

/// Puts samples of 1 to 16 bits into their places, rounded to what the picture holds, and notes
/// whether more than 8 bits were lost to that.
class TiffSamplePlacer {
  public:
    /// Adds the picture's channels and, if it has inks, takes its profile. The picture must have
    /// its table already. Both objects must outlive this one. Throws Problem without memory.
    TiffSamplePlacer(Picture& target, const TiffLayout& fileLayout);

    /// A run of pixels of one row.
    ///
    /// @param samples count x layout.samples values of layout.bits bits
    void Place(int row, int column, int count, const std::uint16_t* samples);

  private:
    void PlaceIndices(std::uint8_t* indices, int count, const std::uint16_t* samples) const;
    void PlaceColors(std::uint8_t* pixels, int count, const std::uint16_t* samples) const;
    void PlaceInks(std::uint8_t* pixels, int count, const std::uint16_t* samples);
    void PlaceOpacities(std::uint8_t* opacities, int step, int sample, int count,
                        const std::uint16_t* samples) const;
    void NoteRounding(int count, const std::uint16_t* samples);
    std::uint8_t Level(const std::uint16_t* pixel, int sample, unsigned top) const;

    Picture& picture;
    const TiffLayout& layout;
    const unsigned maximum;        // of a sample
    std::vector<int> channelsFrom; // the sample of each channel
    std::optional<InkConverter> converter;
    std::vector<std::uint8_t> inks, colors; // of one run
};

} // namespace gif89
