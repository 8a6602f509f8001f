#include "ExportPromises.h"

#include "Require.h"

#include <algorithm>
#include <set>

namespace gif89 {
namespace {

struct Pixel {
    PackedColor color;
    int opacity;
};

Pixel PixelOf(const Picture& picture, std::size_t n) {
    if (picture.kind == Picture::Kind::indexed) {
        const std::uint8_t* const opacity = OpacityOf(picture);
        return {PackColor(TableEntry(picture.table, picture.pixels[n])),
                opacity ? opacity[n] : 255};
    }
    const std::uint8_t* const pixel =
        picture.pixels.get() + n * static_cast<std::size_t>(picture.BytesPerPixel());
    return {PackRGB(pixel[0], pixel[1], pixel[2]),
            picture.kind == Picture::Kind::rgb ? 255 : pixel[3]};
}

bool IsHidden(const GiflibPicture& gif, std::size_t n) {
    return gif.indices[n] == gif.transparentIndex;
}

PackedColor ColorOf(const GiflibPicture& gif, std::size_t n) {
    return PackColor(TableEntry(gif.table, gif.indices[n]));
}

/// Which pixels of an indexed picture the plan hides.
class HidingRule {
  public:
    HidingRule(const Picture& thePicture, const Plan& thePlan)
        : picture(thePicture), plan(thePlan),
          marks(plan.transparent.begin(), plan.transparent.end()) {}
    bool IsAny() const { return plan.channel > 0 || !marks.empty(); }
    bool Hides(std::size_t n) const {
        if (plan.channel == 0) return marks.count(picture.pixels[n]) != 0;
        const auto number = static_cast<std::size_t>(plan.channel) - 1;
        return (picture.channels[number].bytes[n] < 128) != plan.inverted;
    }

  private:
    const Picture& picture;
    const Plan& plan;
    const std::set<int> marks;
};

void CheckIndexed(const Outcome& outcome) {
    const HidingRule rule(outcome.picture, outcome.plan);
    std::set<int> visible, changed;
    bool hidesAny = false;
    for (std::size_t n = 0; n < outcome.gif.indices.size(); ++n) {
        const int index = outcome.picture.pixels[n];
        const bool hides = rule.Hides(n);
        Require(IsHidden(outcome.gif, n) == hides, "what is planned is hidden, and nothing else");
        Require(rule.IsAny() || outcome.gif.indices[n] == index,
                "without transparency the indices stay");
        hidesAny = hidesAny || hides;
        if (hides) continue;
        visible.insert(index);
        if (PixelOf(outcome.picture, n).color != ColorOf(outcome.gif, n)) changed.insert(index);
    }
    Require(hidesAny || outcome.gif.transparentIndex == -1, "nothing hidden needs no index");
    // A channel that hides takes an index of its own; with 256 in use one is given up for it.
    const std::size_t givenUp = hidesAny && visible.size() == 256 ? 1 : 0;
    Require(changed.size() <= givenUp, "visible pixels keep their colours");
}

// Colours that share no cell of the map, which the diffusion must find again.
bool LieInCellsOfTheirOwn(const Picture& picture, std::size_t pixels) {
    std::set<PackedColor> colors = {0, 0xFFFFFF}, cells;
    for (std::size_t n = 0; n < pixels; ++n) {
        const auto [color, opacity] = PixelOf(picture, n);
        if (opacity != 0 && opacity != 255) return false;
        colors.insert(color);
    }
    for (const PackedColor color : colors) cells.insert(color & 0xF8F8F8);
    return cells.size() == colors.size();
}

void CheckRGB(const Outcome& outcome, PaletteKind palette) {
    const std::size_t pixels = outcome.gif.indices.size();
    Require(outcome.picture.kind == Picture::Kind::rgbAlpha || outcome.gif.transparentIndex == -1,
            "opaque pictures stay opaque");
    for (std::size_t n = 0; n < pixels; ++n)
        Require(PixelOf(outcome.picture, n).opacity != 0 || IsHidden(outcome.gif, n),
                "what is transparent stays so");
    if (palette != PaletteKind::exact || !LieInCellsOfTheirOwn(outcome.picture, pixels)) return;
    for (std::size_t n = 0; n < pixels; ++n) {
        const auto [color, opacity] = PixelOf(outcome.picture, n);
        Require(opacity == 0 || (!IsHidden(outcome.gif, n) && ColorOf(outcome.gif, n) == color),
                "an exact palette keeps colours that are far enough apart");
    }
}

std::int64_t CountChanged(const Picture& original, const GiflibPicture& gif) {
    std::int64_t changed = 0;
    for (std::size_t n = 0; n < gif.indices.size(); ++n) {
        const auto [color, opacity] = PixelOf(original, n);
        const bool isKept =
            IsHidden(gif, n) ? opacity == 0 : opacity == 255 && color == ColorOf(gif, n);
        if (!isKept) ++changed;
    }
    return changed;
}

void CheckReport(const Outcome& outcome, const ExportReport& report) {
    const std::int64_t changed = CountChanged(outcome.original, outcome.gif);
    Require(report.changedPixels == changed, "the report counts what changed");
    Require(report.KeepsPixels() == (changed == 0), "the report says whether anything was lost");
    Require(!ReportLines(report).empty(), "there is something to report");
    Require(changed == 0 || !LossText(report).empty(), "a loss is told");
}

} // namespace

void CheckPromises(const Outcome& outcome, const ExportReport& report) {
    const GiflibPicture& gif = outcome.gif;
    const Picture& picture = outcome.picture;
    const Plan& plan = outcome.plan;
    Require(gif.rows == picture.rows && gif.columns == picture.columns, "the sides are kept");
    Require(gif.interlaced == plan.interlace.value_or(true), "the rows are stored as chosen");
    const bool keepsComment = plan.comment.value_or(true);
    Require(gif.comment.value_or("") == (keepsComment ? picture.comment : ""),
            "the comment is kept as chosen");
    if (picture.kind == Picture::Kind::indexed)
        CheckIndexed(outcome);
    else
        CheckRGB(outcome, report.palette);
    CheckReport(outcome, report);
}

} // namespace gif89
