// The report of one export: what the file holds, and what was lost.
#pragma once

#include "Picture.h"
#include "Plan.h"

#include <cstdint>
#include <string>
#include <vector>

namespace gif89 {

enum class CommentFate : std::uint8_t { none, kept, dropped };

/// Something of the input file that its GIF does not have.
struct Loss {
    enum class Kind : std::uint8_t {
        // Lost when the input was read
        pictures,  ///< count: pictures of the file, of which the first was kept
        samples,   ///< count: samples of each pixel that a picture cannot hold
        bits,      ///< count: bits of a sample, rounded to 8
        inks,      ///< cyan, magenta, yellow and black became RGB
        converted, ///< the colour profile: its colours became those of sRGB
        unusable,  ///< the colour profile: left out, so that colours may look different
        // Lost in the export
        colors,      ///< count: colours of the picture, not all of which the file shows
        opacities,   ///< count: pixels that were neither opaque nor transparent
        transparent, ///< count: pixels that cannot be seen any more
        opaque,      ///< count: pixels that can be seen now
        comment,
    };
    Kind kind;
    std::int64_t count = 1;
};

struct ExportReport {
    // The file
    int rows = 0;
    int columns = 0;
    std::size_t bytes = 0;
    bool interlaced = false;
    int transparentIndex = -1; ///< -1 for none
    int tableEntries = 0;      ///< a power of two, 2..256
    int usedEntries = 0;       ///< entries that pixels use
    int shownColors = 0;       ///< distinct colours among those, the transparent one left out

    // The way
    Way way = Way::module;
    PaletteKind palette = PaletteKind::open; ///< that the module used; open where it used none

    // The pixels. A pixel of opacity 0 equals a transparent one of the file, whatever its colour.
    std::int64_t pixels = 0;
    std::int64_t sourceColors = 0;    ///< distinct colours of visible pixels (opacity above 0)
    std::int64_t changedPixels = 0;   ///< another colour or another opacity
    std::int64_t madeTransparent = 0; ///< had some opacity, transparent in the file
    std::int64_t madeOpaque = 0;      ///< had opacity 0, visible in the file
    std::int64_t partlyOpaque = 0;    ///< had an opacity of 1..254, which a GIF cannot say
    int alphaLevels = 0;              ///< distinct opacities of those pixels, all lost
    // Over pixels that are opaque in both:
    int largestError = 0; ///< of a channel, 0..255
    double meanError = 0; ///< of all their channels; 0 when there are none

    CommentFate comment = CommentFate::none;
    InputNotes notes;

    /// The file shows exactly the picture that was read.
    bool KeepsPixels() const { return changedPixels == 0; }
    /// Everything that was lost between the input file and the GIF file, in the order of the kinds.
    std::vector<Loss> Losses() const;
    bool Lossless() const { return Losses().empty(); }
};

/// What a person is told of one matter.
struct ReportLine {
    std::string label; ///< a word, "pixels"
    std::string text;
};
/// "exact", "adaptive", "fixed", "loaded"; empty for none.
const char* NameOf(PaletteKind palette);

std::vector<ReportLine> ReportLines(const ExportReport& report);

/// What was lost in one line ("52,340 colours became 256 (largest error 24); ..."); empty when
/// nothing was.
std::string LossText(const ExportReport& report);

} // namespace gif89
