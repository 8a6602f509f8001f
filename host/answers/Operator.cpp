#include "Operator.h"

#include "ControlManager.h"
#include "ModuleResources.h"
#include "PaletteFile.h"
#include "PaletteNames.h"

#include <algorithm>
#include <bitset>
#include <charconv>

namespace gif89 {
namespace {

constexpr int kCellMiddle = 1 + kCellSize / 2;

std::optional<int> ParseNumber(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::optional<RGBtuple> ParseHexColor(std::string_view text) {
    std::uint32_t packed = 0;
    if (text.size() != 7 || text[0] != '#') return std::nullopt;
    const auto [end, error] = std::from_chars(text.data() + 1, text.data() + 7, packed, 16);
    if (error != std::errc() || end != text.data() + 7) return std::nullopt;
    return UnpackColor(packed);
}

bool IsEnabled(DialogPtr dialog, short item) {
    const DialogItem* const found = dialog->Item(item);
    return found && !found->IsDisabled();
}

bool IsChecked(DialogPtr dialog, short item) {
    return GetControlValue(dialog->Item(item)->control) != 0;
}

bool SameColor(RGBtuple a, RGBtuple b) {
    return PackColor(a) == PackColor(b);
}

// The table as the dialog shows it: without the black entries at its top that no pixel uses.
int ShownEntries(const Picture& picture) {
    const std::uint8_t* const end = picture.pixels.get() + picture.PixelBytes();
    const int highest = *std::max_element<const std::uint8_t*>(picture.pixels.get(), end);
    int last = 255;
    while (last > highest && PackColor(TableEntry(picture.table, last)) == 0) --last;
    return last + 1;
}

std::vector<int> EntriesNamed(const Picture& picture, const std::string& name) {
    const int shown = ShownEntries(picture);
    const auto color = ParseHexColor(name);
    if (!color) {
        const auto number = ParseNumber(name);
        if (!number)
            throw Problem("\"" + name + "\" is no entry; expected a number or #rrggbb", kUsage);
        if (*number < 0 || *number >= shown)
            throw Problem("the picture has no entry " + name + "; its entries are 0 to " +
                              std::to_string(shown - 1),
                          kUsage);
        return {*number};
    }
    std::vector<int> entries;
    for (int entry = 0; entry < shown; ++entry)
        if (SameColor(TableEntry(picture.table, entry), *color)) entries.push_back(entry);
    if (entries.empty()) throw Problem("no entry of the picture has the colour " + name, kUsage);
    return entries;
}

// The picture's own transparency counts unless something else was said.
std::string WantedChannel(const Picture& picture, const ExportChoices& choices) {
    if (!choices.alpha.empty()) return choices.alpha;
    if (choices.opaque || !choices.transparent.empty()) return {};
    return OwnTransparency(picture) > 0 ? kTransparencyChannel : "";
}

short ChannelNamed(const Picture& picture, const std::string& name) {
    const auto count = static_cast<int>(picture.channels.size());
    for (int i = 0; i < count; ++i)
        if (picture.channels[static_cast<std::size_t>(i)].name == name)
            return static_cast<short>(i + 1);
    const auto number = ParseNumber(name);
    if (number && *number >= 1 && *number <= count) return static_cast<short>(*number);
    std::string known;
    for (const Channel& channel : picture.channels)
        known += (known.empty() ? "" : ", ") + channel.name;
    throw Problem("the picture has no channel \"" + name + "\"; it has " +
                      (known.empty() ? "none" : known),
                  kUsage);
}

void CheckIndexed(const Picture& picture, const ExportChoices& choices) {
    const bool fewer = choices.colors && *choices.colors < UsedEntries(picture);
    if (!choices.palette.empty() || choices.resize || fewer)
        throw Problem("an indexed picture keeps its own palette", kUsage, Remedy::reduce);
    for (const std::string& name : choices.transparent) EntriesNamed(picture, name);
    const std::string channel = WantedChannel(picture, choices);
    if (!channel.empty())
        ChannelNamed(picture, channel);
    else if (choices.invert)
        throw Problem("there is no channel to invert", kUsage, Remedy::nameChannel);
}

void CheckRGB(const ExportChoices& choices) {
    if (!choices.transparent.empty() || !choices.alpha.empty() || choices.invert)
        throw Problem("transparent entries and channels are for indexed pictures", kUsage);
    if (choices.palette == "exact" && choices.colors)
        throw Problem("an exact palette has the picture's own number of colours", kUsage,
                      Remedy::leaveCount);
    const bool own =
        choices.palette.empty() || choices.palette == "exact" || choices.palette == "adaptive";
    if (choices.resize && own)
        throw Problem("only a fixed or loaded palette can be cut", kUsage, Remedy::namePalette);
}

} // namespace

Shaping ShapingFor(const ExportChoices& choices, Shaping wanted) {
    if (wanted.way != Way::natural) return wanted;
    if (!choices.palette.empty() || choices.resize)
        wanted.way = Way::rgb;
    else
        wanted.colors = choices.colors.value_or(wanted.colors);
    return wanted;
}

void CheckChoices(const Picture& picture, const ExportChoices& choices) {
    if (picture.kind == Picture::Kind::indexed)
        CheckIndexed(picture, choices);
    else
        CheckRGB(choices);
}

void HideEntries(Picture& picture, const std::vector<std::string>& names) {
    std::bitset<256> hidden;
    for (const std::string& name : names)
        for (const int entry : EntriesNamed(picture, name))
            hidden.set(static_cast<std::size_t>(entry));
    const auto own = static_cast<std::size_t>(OwnTransparency(picture) - 1);
    std::uint8_t* const opacity = picture.channels[own].bytes.get();
    for (std::size_t n = 0; n < picture.PixelBytes(); ++n)
        if (hidden[picture.pixels[n]]) opacity[n] = 0;
}

RGBtuple ParseColor(const std::string& text) {
    if (const auto color = ParseHexColor(text)) return *color;
    std::vector<std::uint8_t> channels;
    for (std::size_t start = 0; start <= text.size() && channels.size() < 4;) {
        const std::size_t end = std::min(text.find(',', start), text.size());
        const auto level = ParseNumber(std::string_view(text).substr(start, end - start));
        if (!level || *level < 0 || *level > 255) break;
        channels.push_back(static_cast<std::uint8_t>(*level));
        start = end + 1;
        if (end == text.size() && channels.size() == 3)
            return {0, channels[0], channels[1], channels[2]};
    }
    throw Problem("\"" + text + "\" is no colour; expected #rrggbb or red,green,blue of 0 to 255",
                  kUsage);
}

short OwnTransparency(const Picture& picture) {
    for (std::size_t i = 0; i < picture.channels.size(); ++i) {
        const Channel& channel = picture.channels[i];
        if (channel.name == kTransparencyChannel &&
            std::any_of(channel.bytes.get(), channel.bytes.get() + picture.PixelBytes(),
                        [](std::uint8_t opacity) { return opacity < kVisibleFrom; }))
            return static_cast<short>(i + 1);
    }
    return 0;
}

Operator::Operator(const Picture& thePicture, const ExportChoices& theChoices, End how)
    : picture(thePicture), choices(theChoices), end(how),
      script([this](DialogPtr dialog) { return NextAct(dialog); }) {}

void Operator::ThrowFailure() const {
    if (problem) throw *problem;
    if (script.Failure().empty()) return;
    // A file that the open dialog hides is the only thing that the plan cannot foresee.
    if (refusal == kFailed)
        throw Problem("the palette file " + choices.palette +
                      " cannot be taken for one; its name should end in .zco, .zct or .pal");
    throw Problem(script.Failure());
}

Act Operator::NextAct(DialogPtr dialog) {
    try {
        // What the dialog tells a person in an alert, it has refused.
        if (!script.Alerts().empty()) throw Problem(script.Alerts().back(), refusal);
        if (!planned) {
            planned = true;
            CheckChoices(picture, choices);
            if (dialog->resourceID == kIndexedDialog)
                PlanIndexed(dialog);
            else
                PlanRGB(dialog);
            if (end == End::confirms) acts.push_back(PressItem(kOKItem));
        }
    } catch (const Problem& found) {
        problem = found;
        return FailScript(found.what());
    }
    if (acts.empty() && end == End::confirms) return FailScript("The dialog stays open after OK.");
    done = acts.empty();
    if (done) return Idle(0);
    Act act = std::move(acts.front());
    acts.pop_front();
    // A wrong palette file is a failure of the file, everything else a wrong choice.
    refusal = act.kind == Act::Kind::pickFile ? kFailed : kUsage;
    return act;
}

void Operator::PlanIndexed(DialogPtr dialog) {
    PlanCheckBox(dialog, kIndexedInterlaceItem, choices.interlace, "interlacing");
    PlanCheckBox(dialog, kIndexedCommentItem, choices.comment, "a comment");
    PlanMarks(dialog);
    PlanChannel();
    if (choices.matte) PlanMatte(dialog, kIndexedSwatchItem);
}

void Operator::PlanRGB(DialogPtr dialog) {
    PlanPalette(dialog);
    PlanCheckBox(dialog, kRGBInterlaceItem, choices.interlace, "interlacing");
    PlanCheckBox(dialog, kRGBCommentItem, choices.comment, "a comment");
    if (choices.matte && !choices.opaque)
        PlanMatte(dialog, kRGBColorBoxItem); // else it is laid under
}

void Operator::PlanCheckBox(DialogPtr dialog, short item, const std::optional<bool>& wanted,
                            const char* name) {
    if (!wanted || *wanted == IsChecked(dialog, item)) return;
    if (!IsEnabled(dialog, item))
        throw Problem(std::string("the picture does not allow ") + name, kUsage);
    acts.push_back(PressItem(item));
}

void Operator::PlanMarks(DialogPtr dialog) {
    const Rect& table = dialog->Item(kIndexedTableItem)->rect;
    for (const std::string& name : choices.transparent)
        for (const int entry : EntriesNamed(picture, name)) {
            const int row = entry / kCellsInRow, column = entry % kCellsInRow;
            acts.push_back(PressAt(
                {static_cast<std::int16_t>(table.top + row * kCellPitch + kCellMiddle),
                 static_cast<std::int16_t>(table.left + column * kCellPitch + kCellMiddle)}));
        }
}

void Operator::PlanChannel() {
    const std::string wanted = WantedChannel(picture, choices);
    if (wanted.empty()) return;
    const auto entry = static_cast<short>(kNoChannelEntry + ChannelNamed(picture, wanted));
    if (choices.invert) acts.push_back(HoldKey(kKeyOption));
    acts.push_back(ChooseEntry(kIndexedChannelItem, entry));
    if (choices.invert) acts.push_back(ReleaseKey(kKeyOption));
}

void Operator::PlanPalette(DialogPtr dialog) {
    const auto* const named =
        std::find(std::begin(kPaletteNames), std::end(kPaletteNames), choices.palette);
    const auto entry = static_cast<short>(kExactEntry + (named - std::begin(kPaletteNames)));
    if (choices.palette.empty()) {
        // A number of colours is only asked for where it is not the picture's own.
        if (choices.colors && !IsEnabled(dialog, kRGBCountItem))
            acts.push_back(ChooseEntry(kRGBPalettePopUpItem, kAdaptiveEntry));
    } else if (named == std::end(kPaletteNames)) {
        if (HoldsNoColors(choices.palette))
            throw Problem("the palette file " + choices.palette + " holds no colours");
        acts.push_back(PressItem(kRGBLoadItem));
        acts.push_back(PickFile(choices.palette));
    } else {
        if (!(*dialog->Item(kRGBPalettePopUpItem)->menu)->CanChoose(entry))
            throw Problem("the picture has too many colours for an exact palette", kUsage);
        acts.push_back(ChooseEntry(kRGBPalettePopUpItem, entry));
    }
    // The most that the dialog takes beside transparency has 256 entries all told.
    const int most = picture.kind == Picture::Kind::rgbAlpha ? 255 : 256;
    if (choices.colors)
        acts.push_back(SetText(kRGBCountItem, std::to_string(std::min(*choices.colors, most))));
    if (choices.resize) acts.push_back(PressItem(kRGBResizeItem));
}

// Where nothing is transparent no colour shows through, and there is nothing to choose.
void Operator::PlanMatte(DialogPtr dialog, short item) {
    const bool indexed = dialog->resourceID == kIndexedDialog;
    const bool transparency =
        indexed ? !choices.transparent.empty() || !WantedChannel(picture, choices).empty()
                : IsEnabled(dialog, item);
    if (!transparency) return;
    const auto widen = [](std::uint8_t level) { return static_cast<std::uint16_t>(level * 257); };
    acts.push_back(PressItem(item));
    acts.push_back(PickColor(
        {widen(choices.matte->red), widen(choices.matte->green), widen(choices.matte->blue)}));
}

} // namespace gif89
