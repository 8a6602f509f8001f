#include "HostDialogs.h"

#include "ControlManager.h"
#include "EventSource.h"
#include "MemoryManager.h"
#include "Notices.h"
#include "PascalStrings.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <optional>

namespace {

ControlHandle ControlOf(DialogPtr dialog, short item) {
    const DialogItem* const found = dialog->Item(item);
    return found ? found->control : nullptr;
}

bool HoldsText(const DialogItem& item) {
    return item.BaseKind() == kEditTextItem || item.BaseKind() == kStaticTextItem;
}

std::string TextOf(DialogPtr dialog, short item) {
    const DialogItem* const found = dialog->Item(item);
    return found && HoldsText(*found) ? found->text : std::string();
}

void SetText(DialogPtr dialog, short number, const std::string& text) {
    DialogItem* const item = dialog->Item(number);
    if (!item || !HoldsText(*item) || item->text == text) return;
    item->text = text;
    item->invalid = true;
    if (item->BaseKind() == kEditTextItem) TellSource(dialog, number, ItemChange::text);
}

/// A sign, or none, and digits: the number they start with, and how many characters they are.
struct LeadingNumber {
    std::int64_t value = 0;
    std::size_t length = 0;
    bool hasDigits = false;
};

LeadingNumber ReadLeadingNumber(const std::string& text) {
    // Larger numbers stay beyond every 32-bit range, however many digits follow.
    constexpr std::int64_t kEnough = std::int64_t{1} << 40;
    LeadingNumber number;
    const bool isNegative = !text.empty() && text[0] == '-';
    if (isNegative || (!text.empty() && text[0] == '+')) ++number.length;
    for (; number.length < text.size(); ++number.length) {
        const char digit = text[number.length];
        if (digit < '0' || digit > '9') break;
        number.value = std::min(number.value * 10 + (digit - '0'), kEnough);
        number.hasDigits = true;
    }
    if (isNegative) number.value = -number.value;
    return number;
}

std::string WithoutBlanksAround(const std::string& text) {
    constexpr char kBlanks[] = " \t";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

std::optional<std::int64_t> ReadWholeNumber(const std::string& text) {
    const std::string bare = WithoutBlanksAround(text);
    const LeadingNumber number = ReadLeadingNumber(bare);
    if (!number.hasDigits || number.length != bare.size()) return std::nullopt;
    return number.value;
}

void SayCursorsStandStill(const char* call) {
    std::fprintf(stderr, "%s does nothing: this toolbox does not animate cursors.\n", call);
}

} // namespace

Boolean FetchNumber(DialogPtr dialog, short item, std::int32_t minimum, std::int32_t maximum,
                    std::int32_t* number) {
    const auto entered = ReadWholeNumber(TextOf(dialog, item));
    if (entered && *entered >= minimum && *entered <= maximum) {
        *number = static_cast<std::int32_t>(*entered);
        return true;
    }
    ShowCaution("Please enter a whole number from " + std::to_string(minimum) + " to " +
                std::to_string(maximum) + ".");
    SelectTextItem(dialog, item);
    return false;
}

void StuffNumber(DialogPtr dialog, short item, std::int32_t number) {
    SetText(dialog, item, std::to_string(number));
}

void FetchText(DialogPtr dialog, short item, StringPtr text) {
    ToPascal(TextOf(dialog, item), text);
}

void StuffText(DialogPtr dialog, short item, ConstStr255Param text) {
    SetText(dialog, item, FromPascal(text));
}

void SelectTextItem(DialogPtr dialog, short number) {
    const DialogItem* const item = dialog->Item(number);
    if (!item || item->BaseKind() != kEditTextItem) return;
    dialog->editItem = number;
    TellSource(dialog, number, ItemChange::focus);
}

void SetOutlineGroup(DialogPtr dialog, short number) {
    DialogItem* const item = dialog->Item(number);
    if (!item || item->isGroup) return;
    item->isGroup = true;
    item->invalid = true;
}

void SetCheckBoxState(DialogPtr dialog, short item, Boolean checked) {
    SetControlValue(ControlOf(dialog, item), checked != 0);
}

Boolean GetCheckBoxState(DialogPtr dialog, short item) {
    return GetControlValue(ControlOf(dialog, item)) != 0;
}

short GetPopUpMenuValue(DialogPtr dialog, short item) {
    return GetControlValue(ControlOf(dialog, item));
}

void StringToNumber(ConstStr255Param text, std::int32_t* number) {
    using Limits = std::numeric_limits<std::int32_t>;
    const std::int64_t value = ReadLeadingNumber(FromPascal(text)).value;
    *number =
        static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limits::min(), Limits::max()));
}

void NumberToString(std::int32_t number, StringPtr text) {
    ToPascal(std::to_string(number), text);
}

Boolean GetColor(Point where, ConstStr255Param prompt, const RGBColor* start, RGBColor* picked) {
    const RGBColor asked = *start;
    *picked = asked; // so that it is a colour whatever the answer
    EventSource* const source = CurrentEventSource();
    return source && !source->Failed() &&
           source->PickColor(where, FromPascal(prompt), asked, picked);
}

void InitCursorCtl(Handle) {
    SayCursorsStandStill("InitCursorCtl");
}

void RotateCursor(std::int32_t) {
    SayCursorsStandStill("RotateCursor");
}

void SpinCursor(short) {
    SayCursorsStandStill("SpinCursor");
}
