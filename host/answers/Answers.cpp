#include "Answers.h"

#include "ControlManager.h"
#include "ModuleResources.h"
#include "PaletteFile.h"

namespace gif89 {
namespace {

constexpr int kCellMiddle = 1 + kCellSize / 2;

short EntryOf(PaletteKind palette) {
    switch (palette) {
    case PaletteKind::exact:
        return kExactEntry;
    case PaletteKind::adaptive:
        return kAdaptiveEntry;
    default:
        return kFixedEntry;
    }
}

} // namespace

Answers::Answers(const Plan& thePlan, End how)
    : plan(thePlan), end(how), script([this](DialogPtr dialog) { return NextAct(dialog); }),
      palette(plan.way == Way::reduced ? plan.palette : PaletteKind::open) {}

void Answers::ThrowFailure() const {
    if (problem) throw *problem;
    if (script.Failure().empty()) return;
    // A file that the open dialog hides is the only thing that the plan cannot foresee.
    if (refusal == ProblemKind::failed)
        throw Problem("the palette file " + plan.paletteFile +
                      " cannot be taken for one; its name should end in .zco, .zct or .pal");
    throw Problem(script.Failure());
}

Act Answers::NextAct(DialogPtr dialog) {
    try {
        // What the dialog tells a person in an alert, it has refused.
        if (!script.Alerts().empty()) throw Problem(script.Alerts().back(), refusal);
        KeepPaletteShown(dialog, palette); // the last time before OK is pressed
        if (!begun) {
            begun = true;
            if (dialog->resourceID == kIndexedDialog)
                AnswerIndexed(dialog);
            else
                AnswerRGB(dialog);
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
    refusal = act.kind == Act::Kind::pickFile ? ProblemKind::failed : ProblemKind::usage;
    return act;
}

void Answers::AnswerIndexed(DialogPtr dialog) {
    SetCheckBox(dialog, kIndexedInterlaceItem, plan.interlace);
    SetCheckBox(dialog, kIndexedCommentItem, plan.comment);
    if (plan.channel > 0)
        ChooseChannel();
    else
        MarkEntries(dialog);
    ChooseMatte(kIndexedSwatchItem);
}

void Answers::AnswerRGB(DialogPtr dialog) {
    ChoosePalette();
    SetCheckBox(dialog, kRGBInterlaceItem, plan.interlace);
    SetCheckBox(dialog, kRGBCommentItem, plan.comment);
    ChooseMatte(kRGBColorBoxItem);
}

void Answers::SetCheckBox(DialogPtr dialog, short item, const std::optional<bool>& wanted) {
    const bool isSet = GetControlValue(dialog->Item(item)->control) != 0;
    if (wanted.value_or(isSet) != isSet) acts.push_back(PressItem(item));
}

void Answers::MarkEntries(DialogPtr dialog) {
    const Rect& table = dialog->Item(kIndexedTableItem)->rect;
    for (const int entry : plan.transparent) {
        const int row = entry / kCellsInRow, column = entry % kCellsInRow;
        acts.push_back(
            PressAt({static_cast<std::int16_t>(table.top + row * kCellPitch + kCellMiddle),
                     static_cast<std::int16_t>(table.left + column * kCellPitch + kCellMiddle)}));
    }
}

void Answers::ChooseChannel() {
    if (plan.inverted) acts.push_back(HoldKey(kKeyOption));
    acts.push_back(
        ChooseEntry(kIndexedChannelItem, static_cast<short>(kNoChannelEntry + plan.channel)));
    if (plan.inverted) acts.push_back(ReleaseKey(kKeyOption));
}

void Answers::ChoosePalette() {
    if (plan.palette == PaletteKind::file) {
        if (HoldsNoColors(plan.paletteFile))
            throw Problem("the palette file " + plan.paletteFile + " holds no colours");
        acts.push_back(PressItem(kRGBLoadItem));
        acts.push_back(PickFile(plan.paletteFile));
    } else if (plan.palette != PaletteKind::open && plan.palette != palette) {
        acts.push_back(ChooseEntry(kRGBPalettePopUpItem, EntryOf(plan.palette)));
    }
    if (plan.colors) acts.push_back(SetText(kRGBCountItem, std::to_string(*plan.colors)));
    if (plan.resize) acts.push_back(PressItem(kRGBResizeItem));
}

void Answers::ChooseMatte(short item) {
    if (!plan.matte) return;
    const auto widen = [](std::uint8_t level) { return static_cast<std::uint16_t>(level * 257); };
    acts.push_back(PressItem(item));
    acts.push_back(
        PickColor({widen(plan.matte->red), widen(plan.matte->green), widen(plan.matte->blue)}));
}

} // namespace gif89
