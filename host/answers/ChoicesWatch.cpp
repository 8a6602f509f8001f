#include "ChoicesWatch.h"

#include "ControlManager.h"
#include "ModuleResources.h"
#include "SourceCalls.h"
#include "Transparency.h"

#include <algorithm>
#include <bitset>
#include <charconv>
#include <filesystem>
#include <utility>

namespace gif89 {
namespace {

bool IsOptions(DialogPtr dialog) {
    return dialog->resourceID == kRGBDialog || dialog->resourceID == kIndexedDialog;
}

} // namespace

ChoicesWatch::ChoicesWatch(EventSource& display, StandardFileResponder* openDialog,
                           const Picture& exported)
    : EventRelay(display), files(openDialog), picture(exported) {}

// Watching

void ChoicesWatch::DialogShown(DialogPtr dialog) {
    EventRelay::DialogShown(dialog);
    if (!IsOptions(dialog)) return;
    opened = ReadItems(dialog);
    pickedColor = false;
    if (dialog->resourceID != kIndexedDialog) return;
    if (const int channel = OwnTransparency(picture))
        ChoosePopUpEntry(dialog, kIndexedChannelItem,
                         static_cast<short>(kNoChannelEntry + channel));
}

void ChoicesWatch::DialogClosed(DialogPtr dialog) {
    if (IsOptions(dialog)) closed = ReadItems(dialog);
    KeepPaletteShown(dialog, palette);
    EventRelay::DialogClosed(dialog);
}

bool ChoicesWatch::PickColor(Point where, const std::string& prompt, const RGBColor& start,
                             RGBColor* picked) {
    const bool chosen = EventRelay::PickColor(where, prompt, start, picked);
    pickedColor |= chosen;
    return chosen;
}

void ChoicesWatch::PutFile(ConstStr255Param prompt, ConstStr255Param defaultName,
                           StandardFileReply* reply) {
    if (files) files->PutFile(prompt, defaultName, reply);
}

void ChoicesWatch::GetFile(FileFilterProc filter, StandardFileReply* reply) {
    if (!files) return;
    std::string path = PickPaletteFile(*files, *this, filter, reply);
    if (!path.empty()) pickedFiles.push_back(std::move(path));
}

ChoicesWatch::Items ChoicesWatch::ReadItems(DialogPtr dialog) {
    Items read;
    for (std::size_t i = 0; i < dialog->items.size(); ++i)
        if (const ControlHandle control = dialog->items[i].control)
            read.values[static_cast<short>(i + 1)] = GetControlValue(control);
    if (dialog->resourceID != kRGBDialog) return read;
    read.count = dialog->Item(kRGBCountItem)->text;
    const MenuInfo& palettes = **dialog->Item(kRGBPalettePopUpItem)->menu;
    const short entry = read.values[kRGBPalettePopUpItem];
    if (entry > kFixedEntry && static_cast<std::size_t>(entry) <= palettes.entries.size())
        read.paletteFile = palettes.entries[static_cast<std::size_t>(entry) - 1].text;
    return read;
}

// What was chosen

Wishes ChoicesWatch::Choices(const DecodedGif& gif, Marks marks) const {
    Wishes choices = {.leavesToModule = true};
    const bool indexed = picture.kind == Picture::Kind::indexed;
    const short interlace = indexed ? kIndexedInterlaceItem : kRGBInterlaceItem;
    const short comment = indexed ? kIndexedCommentItem : kRGBCommentItem;
    if (Changed(interlace)) choices.interlace = closed.values.at(interlace) != 0;
    if (Changed(comment)) choices.comment = closed.values.at(comment) != 0;
    // The colour that was picked stands in the table of the file.
    if (pickedColor && gif.transparentIndex >= 0)
        choices.matte = TableEntry(gif.table, gif.transparentIndex);
    if (indexed)
        TakeIndexed(gif, marks, choices);
    else
        TakeRGB(choices);
    return choices;
}

bool ChoicesWatch::Changed(short item) const {
    const auto before = opened.values.find(item), after = closed.values.find(item);
    return after != closed.values.end() &&
           (before == opened.values.end() || before->second != after->second);
}

// Marks and the inverting of a channel show in no item, but the file tells them.
void ChoicesWatch::TakeIndexed(const DecodedGif& gif, Marks marks, Wishes& choices) const {
    const auto found = closed.values.find(kIndexedChannelItem);
    const short entry = found == closed.values.end() ? kNoChannelEntry : found->second;
    const int own = OwnTransparency(picture);
    if (entry <= kNoChannelEntry) {
        choices.transparent = MarkedEntries(gif, marks);
        choices.dropOwn = own != 0;
        return;
    }
    const auto channel = static_cast<std::size_t>(entry - kNoChannelEntry);
    if (channel > picture.channels.size()) return;
    const Channel& chosen = picture.channels[channel - 1];
    // A channel hides every pixel or shows it, so that the first one tells which way it is read.
    const bool hidden = gif.indices[0] == gif.transparentIndex;
    choices.invert = hidden != (chosen.bytes[0] < kVisibleFrom);
    if (choices.invert || static_cast<int>(channel) != own)
        choices.alpha = chosen.name.empty() ? std::to_string(channel) : chosen.name;
}

std::vector<EntryName> ChoicesWatch::MarkedEntries(const DecodedGif& gif, Marks marks) const {
    std::bitset<256> used, marked;
    for (std::size_t n = 0; n < picture.PixelCount(); ++n) {
        used.set(picture.pixels[n]);
        if (gif.indices[n] == gif.transparentIndex) marked.set(picture.pixels[n]);
    }
    std::vector<EntryName> names;
    for (int entry = 0; entry < 256; ++entry) {
        if (!marked[static_cast<std::size_t>(entry)]) continue;
        const RGBtuple color = TableEntry(picture.table, entry);
        bool wholeColor = marks == Marks::asColors;
        for (int other = 0; other < picture.colors && wholeColor; ++other) {
            const auto bit = static_cast<std::size_t>(other);
            const bool same = PackColor(TableEntry(picture.table, other)) == PackColor(color);
            wholeColor = !same || !used[bit] || marked[bit];
        }
        names.push_back(wholeColor ? EntryName(color) : EntryName(entry));
    }
    return names;
}

void ChoicesWatch::TakeRGB(Wishes& choices) const {
    if (!closed.values.contains(kRGBPalettePopUpItem)) return;
    const bool own = palette == PaletteKind::exact || palette == PaletteKind::adaptive;
    if (Changed(kRGBPalettePopUpItem)) choices.palette = palette;
    if (choices.palette == PaletteKind::file) choices.paletteFile = PaletteFile();
    const bool changedCount = closed.count != opened.count || Changed(kRGBPalettePopUpItem);
    int count = 0;
    const char* const end = closed.count.data() + closed.count.size();
    if (palette != PaletteKind::exact && changedCount &&
        std::from_chars(closed.count.data(), end, count).ptr == end)
        choices.colors = count;
    choices.resize = !own && closed.values.at(kRGBResizeItem) != 0;
}

// The menu shows the file's name; without a match a longer name is shown in short.
std::string ChoicesWatch::PaletteFile() const {
    const auto found =
        std::find_if(pickedFiles.rbegin(), pickedFiles.rend(), [this](const std::string& path) {
            return std::filesystem::path(path).filename() == closed.paletteFile;
        });
    if (found != pickedFiles.rend()) return *found;
    return pickedFiles.empty() ? std::string() : pickedFiles.back();
}

} // namespace gif89
