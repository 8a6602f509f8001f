#include "FuzzUser.h"

#include "DialogState.h"
#include "PaletteFiles.h"

#include <utility>

namespace {

constexpr short kFirstItem = 1, kSecondItem = 2;
constexpr short kKeys[] = {kKeyOption, kKeyShift,  kKeyCommand, kKeySpace,
                           kKeyReturn, kKeyEscape, kKeyDelete,  kKeyEnter};
constexpr int kModifiers = 4; // the first of them, which change what others do

} // namespace

FuzzUser::FuzzUser(const FuzzInput& theInput)
    : ScriptSource([this](DialogPtr dialog) { return NextAct(dialog); }), input(theInput) {}

Act FuzzUser::NextAct(DialogPtr dialog) {
    if (question != Question::none) return Answer();
    CheckDialogState(dialog);
    if (input.IsEmpty() || ++acts > kMostActs) return Leave(dialog);
    return TakeAct(dialog);
}

Act FuzzUser::TakeAct(DialogPtr dialog) {
    switch (input.Number(0, 15)) {
    case 0:
    case 1:
    case 2:
    case 3: {
        // By its place: it may be disabled or covered.
        const Rect& rect = dialog->Item(TakeItem(dialog))->rect;
        return PressAt({static_cast<std::int16_t>((rect.top + rect.bottom) / 2),
                        static_cast<std::int16_t>((rect.left + rect.right) / 2)});
    }
    case 4:
        return PressAt(TakePoint(dialog));
    case 5:
    case 6: {
        std::vector<Point> points;
        for (int left = input.Number(1, 4); left > 0; --left) points.push_back(TakePoint(dialog));
        return Drag(std::move(points));
    }
    case 7:
        return MoveMouse(TakePoint(dialog));
    case 8:
        return TypeText(input.Text());
    case 9: {
        const short item = TakeItem(dialog);
        const DialogItem& chosen = *dialog->Item(item);
        if (chosen.BaseKind() != kEditTextItem || chosen.IsDisabled()) return Idle(1);
        return SetText(item, input.Text());
    }
    case 10:
        return HoldKey(kKeys[input.Number(0, kModifiers - 1)]);
    case 11:
        return ReleaseKey(kKeys[input.Number(0, kModifiers - 1)]);
    case 12:
        return PressKey(TakeKey());
    case 13:
    case 14:
        return TakeChoice(dialog);
    default:
        return Idle(input.Byte());
    }
}

Act FuzzUser::TakeChoice(DialogPtr dialog) {
    const short item = TakeItem(dialog);
    const auto entry = static_cast<short>(input.Number(1, 12));
    const DialogItem& chosen = *dialog->Item(item);
    if (!chosen.menu || chosen.IsDisabled() || !(*chosen.menu)->CanChoose(entry)) return Idle(1);
    return ChooseEntry(item, entry);
}

Act FuzzUser::Leave(DialogPtr dialog) {
    // Held keys would make Cancel mean something else.
    if (!std::exchange(releasedKeys, true)) return ReleaseKey(kKeyOption);
    if (IsPreview(dialog) || !std::exchange(triedFirst, true)) return PressItem(kFirstItem);
    return PressItem(kSecondItem);
}

Act FuzzUser::Answer() {
    const bool cancels = input.Number(0, 3) == 0;
    if (question == Question::file)
        return cancels ? CancelFile()
                       : PickFile(PaletteFilePath(input.Number(0, kPaletteFiles - 1)));
    const auto level = [this] { return static_cast<std::uint16_t>(input.Byte() * 257); };
    const std::uint16_t red = level(), green = level(), blue = level();
    return cancels ? CancelColor() : ::PickColor({red, green, blue});
}

// Up to 16 points outside as well.
Point FuzzUser::TakePoint(DialogPtr dialog) {
    constexpr int kMargin = 16;
    const Rect& port = dialog->portRect;
    const int v = input.Number(port.top - kMargin, port.bottom + kMargin);
    const int h = input.Number(port.left - kMargin, port.right + kMargin);
    return {static_cast<std::int16_t>(v), static_cast<std::int16_t>(h)};
}

short FuzzUser::TakeItem(DialogPtr dialog) {
    return static_cast<short>(input.Number(1, static_cast<int>(dialog->items.size())));
}

short FuzzUser::TakeKey() {
    const std::uint8_t way = input.Byte();
    if (way < 128) return kKeys[way % std::size(kKeys)];
    return static_cast<short>(way - 128);
}

bool FuzzUser::PickColor(Point where, const std::string& prompt, const RGBColor& start,
                         RGBColor* picked) {
    question = Question::color;
    const bool isPicked = ScriptSource::PickColor(where, prompt, start, picked);
    question = Question::none;
    return isPicked;
}

void FuzzUser::GetFile(FileFilterProc filter, StandardFileReply* reply) {
    question = Question::file;
    ScriptSource::GetFile(filter, reply);
    question = Question::none;
}

void FuzzUser::PutFile(ConstStr255Param, ConstStr255Param, StandardFileReply* reply) {
    Require(!hasSaved, "where to save is asked once");
    if (input.Number(0, 7) == 1) return; // cancels
    reply->sfFile = DescriptorToFSSpec(file.FileDescriptor());
    reply->sfGood = hasSaved = true;
}
