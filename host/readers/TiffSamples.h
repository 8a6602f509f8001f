// Where the samples of a TIFF pixel go in a picture.
#pragma once

#include "ColorProfile.h"
#include "Picture.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace gif89 {

/// What becomes of a photometric interpretation.
struct TiffColorForm {
    int photometric;
    Picture::Kind kind; // without alpha
    int colorants;      // the first samples of a pixel
};

/// What the fields of a directory say of its pixels.
struct TiffLayout {
    std::uint32_t columns = 0, rows = 0;
    std::uint16_t bits = 1, samples = 1; ///< of a sample, of a pixel
    std::uint16_t sampleFormat = 0;
    std::uint16_t photometric = 0;
    std::uint16_t compression = 0;
    bool separate = false;               ///< each sample in a plane of its own
    const TiffColorForm* form = nullptr; ///< null: left to the library
    int alpha = -1;                      ///< which sample it is
    bool guessed = false;                ///< that it is; the file does not say
    bool multiplied = false;             ///< the colorants, by alpha
};

/// Puts samples of 1 to 16 bits into their places, rounded to what the picture holds, and notes
/// whether more than 8 bits were lost to that.
class TiffSamplePlacer {
  public:
    /// Adds the picture's channels and takes its profile where it has inks; the table must be
    /// there. Both objects must outlive this one. Throws Problem without memory.
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
