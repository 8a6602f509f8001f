#include "Plan.h"

#include "FewColors.h"
#include "Transparency.h"

#include <algorithm>
#include <bitset>
#include <charconv>

namespace gif89 {
namespace {

// Opacity from here on is opaque; with a matte, all that can be seen at all.
constexpr int kHalfOpaque = 128, kFaint = 1;
constexpr RGBtuple kWhite = {0, 255, 255, 255};

using Kind = Refusal::Kind;

bool IsIndexed(const Picture& picture) {
    return picture.kind == Picture::Kind::indexed;
}

int CountUsedEntries(const Picture& picture) {
    std::bitset<256> used;
    const std::uint8_t* const end = picture.pixels.get() + picture.PixelBytes();
    for (const std::uint8_t* index = picture.pixels.get(); index < end; ++index) used.set(*index);
    return static_cast<int>(used.count());
}

// The table as the dialog shows it: without the black entries at its top that no pixel uses.
int CountShownEntries(const Picture& picture) {
    const std::uint8_t* const end = picture.pixels.get() + picture.PixelBytes();
    const int highest = *std::max_element<const std::uint8_t*>(picture.pixels.get(), end);
    int last = 255;
    while (last > highest && PackColor(TableEntry(picture.table, last)) == 0) --last;
    return last + 1;
}

/// Makes the plan of one picture, one question after another. What refuses throws the Refusal.
class Planner {
  public:
    Planner(const Picture& thePicture, const Wishes& theWishes)
        : picture(thePicture), wishes(theWishes) {}

    Plan Make() {
        plan.way = FindWay();
        plan.interlace = wishes.interlace;
        if (!picture.comment.empty()) plan.comment = wishes.comment;
        if (plan.way == Way::module)
            PlanRGB();
        else if (plan.way == Way::reduced)
            PlanReduced();
        else
            PlanIndexed();
        return std::move(plan);
    }

  private:
    [[noreturn]] static void Refuse(Kind kind) { throw Refusal{kind}; }

    bool ChoosesModulePalette() const {
        using enum PaletteKind;
        if (wishes.resize || wishes.palette == exact || wishes.palette == adaptive) return true;
        const bool fixedOrFile = wishes.palette == fixed || wishes.palette == file;
        return fixedOrFile && !GivenPalette();
    }
    bool ChoosesOwnPalette() const { return GivenPalette() || !wishes.keptColors.empty(); }

    /// What our own reduction is to map to, if it does not look for the best palette.
    std::optional<Palette> GivenPalette() const {
        switch (wishes.palette) {
        case PaletteKind::file:
            return wishes.given;
        case PaletteKind::fixed:
            return wishes.leavesToModule ? std::nullopt : std::optional(FixedPalette());
        case PaletteKind::web:
            return WebPalette();
        case PaletteKind::grey:
            return GreyPalette(wishes.colors.value_or(kMostColors));
        default:
            return std::nullopt;
        }
    }

    Way FindWay() {
        const bool automatic = wishes.mode == Mode::automatic;
        if (wishes.mode == Mode::rgb || (automatic && ChoosesModulePalette())) return Way::module;
        const Way lossy = wishes.leavesToModule ? Way::module : Way::reduced;
        if (automatic && ChoosesOwnPalette()) return lossy;
        const std::optional<Way> lossless = IsIndexed(picture) ? Way::ownTable : FindTable();
        if (!lossless && wishes.mode == Mode::indexed) Refuse(Kind::noTable);
        return lossless && !(automatic && HasTooManyEntries(*lossless)) ? *lossless : lossy;
    }

    std::optional<Way> FindTable() {
        if (picture.visibleColors.value_or(0) > kMostColors) return std::nullopt;
        const auto few = FindFewColors(picture);
        if (!few) return std::nullopt;
        plan.table = few->table;
        plan.opaqueEntries = few->count;
        plan.hidesEntry = few->transparent;
        return Way::fewColors;
    }

    int TableEntries() const { return plan.opaqueEntries + (plan.hidesEntry ? 1 : 0); }

    bool HasTooManyEntries(Way way) const {
        const int most = wishes.colors.value_or(kMostColors);
        if (most >= kMostColors) return false;
        return (way == Way::fewColors ? TableEntries() : CountUsedEntries(picture)) > most;
    }

    // A picture that is to keep its table.
    void PlanIndexed() {
        if (wishes.mode == Mode::indexed &&
            (ChoosesModulePalette() || ChoosesOwnPalette() || HasTooManyEntries(plan.way)))
            Refuse(Kind::keepsTable);
        for (const EntryName& name : wishes.transparent) AddEntries(name);
        plan.channel = FindChannel();
        plan.inverted = wishes.invert;
        if (wishes.invert && plan.channel == 0) Refuse(Kind::nothingToInvert);
        // Where nothing is transparent no colour shows through, and there is nothing to choose.
        if (plan.channel > 0 || !plan.transparent.empty()) plan.matte = wishes.matte;
    }

    void AddEntries(const EntryName& name) {
        const bool made = plan.way == Way::fewColors;
        const RGBLookUpTable& table = made ? plan.table : picture.table;
        const int shown = made ? TableEntries() : CountShownEntries(picture);
        const auto add = [this](int entry) {
            auto& all = plan.transparent;
            if (std::find(all.begin(), all.end(), entry) == all.end()) all.push_back(entry);
        };
        if (const int* const number = std::get_if<int>(&name)) {
            if (*number < 0 || *number >= shown)
                throw Refusal{.kind = Kind::noEntry, .number = *number, .entries = shown};
            return add(*number);
        }
        const RGBtuple color = std::get<RGBtuple>(name);
        bool found = false;
        for (int entry = 0; entry < shown; ++entry)
            if (PackColor(TableEntry(table, entry)) == PackColor(color)) add(entry), found = true;
        if (!found) throw Refusal{.kind = Kind::noColor, .color = color};
    }

    // The picture's own transparency counts unless something else is wished.
    int FindChannel() const {
        if (!wishes.alpha.empty()) return ChannelNamed(wishes.alpha);
        if (wishes.opaque || wishes.dropOwn) return 0;
        return plan.hidesEntry ? 1 : OwnTransparency(picture);
    }

    int ChannelNamed(const std::string& name) const {
        std::vector<std::string> names;
        if (plan.hidesEntry) names.emplace_back(kTransparencyChannel);
        for (const Channel& channel : picture.channels) names.push_back(channel.name);
        const auto found = std::find(names.begin(), names.end(), name);
        if (found != names.end()) return static_cast<int>(found - names.begin()) + 1;
        int number = 0;
        const char* const end = name.data() + name.size();
        const bool isNumber = std::from_chars(name.data(), end, number).ptr == end;
        if (isNumber && number >= 1 && number <= static_cast<int>(names.size())) return number;
        throw Refusal{.kind = Kind::noChannel, .name = name, .names = std::move(names)};
    }

    void CheckNeedsNoTable() const {
        if (!wishes.channels.empty()) Refuse(Kind::channelsNeedTable);
        if (!wishes.transparent.empty() || !wishes.alpha.empty() || wishes.invert)
            Refuse(Kind::entriesNeedTable);
    }

    void PlanReduced() {
        CheckNeedsNoTable();
        Reduction& how = plan.reduction;
        how.entries = wishes.colors.value_or(kMostColors);
        how.kept = wishes.keptColors;
        how.dithering = wishes.dithering;
        how.amount = wishes.ditherAmount;
        how.given = GivenPalette();
        plan.palette = wishes.palette == PaletteKind::open ? PaletteKind::best : wishes.palette;
        plan.channel = HasTransparent(picture) ? 1 : 0;
        if (plan.channel > 0) plan.matte = wishes.matte;
        if (static_cast<int>(how.kept.size()) > how.entries - plan.channel)
            Refuse(Kind::tooManyKept);
    }

    void PlanRGB() {
        using enum PaletteKind;
        CheckNeedsNoTable();
        if (wishes.palette >= best || !wishes.keptColors.empty()) Refuse(Kind::notTheModules);
        const bool own =
            wishes.palette == open || wishes.palette == exact || wishes.palette == adaptive;
        if (wishes.palette == exact && wishes.colors) Refuse(Kind::exactIsCounted);
        if (wishes.resize && own) Refuse(Kind::nothingToCut);
        if (wishes.palette == exact && !FitsExactPalette(picture)) Refuse(Kind::tooManyForExact);
        plan.palette = wishes.palette;
        plan.paletteFile = wishes.paletteFile;
        plan.resize = wishes.resize;
        // A number of colours is only asked for where it is not the picture's own.
        if (wishes.colors && wishes.palette == open) plan.palette = adaptive;
        // The most that the dialog takes beside transparency has 256 entries all told.
        const bool hasOpacity = HasOpacity(picture);
        if (wishes.colors)
            plan.colors = std::min(*wishes.colors, hasOpacity ? kMostColors - 1 : kMostColors);
        if (hasOpacity) plan.matte = wishes.matte;
    }

    const Picture& picture;
    const Wishes& wishes;
    Plan plan;
};

} // namespace

bool ChangesPixels(const Picture& picture, const Wishes& wishes) {
    if (!wishes.transparent.empty()) return true;
    if (!HasOpacity(picture)) return false;
    return wishes.opaque || wishes.alphaThreshold > 0 ||
           (!wishes.leavesToModule && HasPartlyOpaque(picture));
}

void ApplyWishes(Picture& picture, const Wishes& wishes) {
    if (wishes.commentText) picture.comment = *wishes.commentText;
    const int threshold = wishes.alphaThreshold;
    if (wishes.opaque) {
        if (threshold > 0) CutOpacity(picture, threshold);
        LayOver(picture, wishes.matte.value_or(kWhite));
    } else if (wishes.leavesToModule) {
        if (threshold > 0) CutOpacity(picture, threshold);
    } else if (wishes.matte) {
        BlendOver(picture, *wishes.matte, threshold > 0 ? threshold : kFaint);
    } else {
        CutOpacity(picture, threshold > 0 ? threshold : kHalfOpaque);
    }
}

std::variant<Plan, Refusal> MakePlan(const Picture& picture, const Wishes& wishes) {
    try {
        return Planner(picture, wishes).Make();
    } catch (Refusal& refusal) {
        return std::move(refusal);
    }
}

void BringIntoShape(Picture& picture, const Plan& plan) {
    if (plan.way == Way::reduced) return;
    if (plan.way == Way::module) return ExpandToRGB(picture);
    if (plan.way == Way::fewColors)
        MakeIndexed(picture, {plan.table, plan.opaqueEntries, plan.hidesEntry});
    if (plan.channel > 0 && !plan.transparent.empty())
        HideEntries(picture, plan.transparent, plan.channel);
}

} // namespace gif89
