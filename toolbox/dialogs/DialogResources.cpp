#include "DialogResources.h"

#include "BigEndian.h"
#include "ResourceManager.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <span>

namespace {

constexpr int kScreenWidth = 1024, kScreenHeight = 768;

/// Takes fields off a resource's start. Once one does not fit, it and all later ones read as 0.
class FieldReader {
  public:
    FieldReader(OSType type, short id) {
        const Handle resource = GetResource(type, id);
        complete = resource != nullptr;
        if (resource)
            rest = std::span<const std::uint8_t>(*resource,
                                                 static_cast<std::size_t>(GetHandleSize(resource)));
    }

    std::span<const std::uint8_t> TakeBytes(std::size_t count) {
        complete = complete && count <= rest.size();
        if (!complete) return {};
        const auto taken = rest.first(count);
        rest = rest.subspan(count);
        return taken;
    }
    template <class T> T Take() {
        const auto bytes = TakeBytes(sizeof(T));
        return complete ? GetBE<T>(bytes.data()) : T();
    }
    std::int16_t TakeWord() { return Take<std::int16_t>(); }
    Rect TakeRect() {
        Rect rect;
        for (std::int16_t* side : {&rect.top, &rect.left, &rect.bottom, &rect.right})
            *side = TakeWord();
        return rect;
    }
    std::string TakeString() {
        const auto bytes = TakeBytes(Take<std::uint8_t>());
        return std::string(bytes.begin(), bytes.end());
    }
    /// Leaves out a filler byte, which may be missing at the very end.
    void SkipFiller() {
        if (!rest.empty()) TakeBytes(1);
    }
    /// The value when every field so far was there.
    template <class T> std::optional<T> IfComplete(const T& value) const {
        return complete ? std::optional(value) : std::nullopt;
    }
    bool IsComplete() const { return complete; }

  private:
    std::span<const std::uint8_t> rest;
    bool complete;
};

ItemTemplate TakeItem(FieldReader& fields) {
    ItemTemplate item;
    fields.TakeBytes(4); // its handle or procedure, when in memory
    item.rect = fields.TakeRect();
    item.kind = fields.Take<std::uint8_t>();
    const std::size_t length = fields.Take<std::uint8_t>();
    const auto data = fields.TakeBytes(length);
    switch (item.kind & ~kItemDisabled) {
    case kButtonItem:
    case kCheckBoxItem:
    case kStaticTextItem:
    case kEditTextItem:
        item.text.assign(data.begin(), data.end());
        break;
    default:
        if (data.size() >= 2) item.data = GetBE<std::int16_t>(data.data());
    }
    if (length % 2 != 0) fields.SkipFiller();
    return item;
}

} // namespace

std::optional<DialogTemplate> ReadDialogTemplate(short id) {
    FieldReader fields(FourCC("DLOG"), id);
    DialogTemplate dialog;
    const std::lock_guard guard(ResourceBytesLock());
    dialog.bounds = fields.TakeRect();
    fields.TakeBytes(6); // procID, visible, goAway: the display decides
    dialog.refCon = fields.Take<std::int32_t>();
    dialog.itemList = fields.TakeWord();
    dialog.title = fields.TakeString();
    return fields.IfComplete(dialog);
}

std::optional<std::vector<ItemTemplate>> ReadItemList(short id) {
    FieldReader fields(FourCC("DITL"), id);
    std::vector<ItemTemplate> items;
    const int count = fields.TakeWord() + 1;
    for (int i = 0; i < count && fields.IsComplete(); ++i) items.push_back(TakeItem(fields));
    return count >= 0 ? fields.IfComplete(items) : std::nullopt;
}

std::optional<ControlTemplate> ReadControlTemplate(short id) {
    FieldReader fields(FourCC("CNTL"), id);
    ControlTemplate control;
    fields.TakeRect(); // the item's rectangle counts
    control.value = fields.TakeWord();
    fields.TakeBytes(2); // visible
    control.maximum = fields.TakeWord();
    control.minimum = fields.TakeWord();
    control.procID = fields.TakeWord();
    fields.TakeBytes(4); // refCon
    control.title = fields.TakeString();
    return fields.IfComplete(control);
}

std::optional<MenuInfo> ReadMenu(short id) {
    constexpr std::size_t kSwitches = 32; // bit 0 is the whole menu's
    FieldReader fields(FourCC("MENU"), id);
    MenuInfo menu;
    menu.id = fields.TakeWord();
    fields.TakeBytes(8); // width, height, definition procedure
    const auto enabled = fields.Take<std::uint32_t>();
    menu.title = fields.TakeString();
    menu.enabled = (enabled & 1) != 0;
    for (;;) {
        MenuEntry entry;
        entry.text = fields.TakeString();
        if (entry.text.empty()) break; // the end of the list, or of the bytes
        fields.TakeBytes(4);           // icon, command key, mark, style
        const std::size_t number = menu.entries.size() + 1;
        entry.enabled = number >= kSwitches || (enabled >> number & 1) != 0;
        entry.separator = entry.text == "-";
        menu.entries.push_back(entry);
    }
    return fields.IfComplete(menu);
}

std::optional<std::int16_t> ReadAlertItemList(short id) {
    FieldReader fields(FourCC("ALRT"), id);
    fields.TakeRect();
    const std::int16_t itemList = fields.TakeWord();
    fields.TakeBytes(2); // what each stage shows
    return fields.IfComplete(itemList);
}

void CenterDialog(Handle dialogResource) {
    constexpr int kBoundsBytes = 8; // top, left, bottom, right
    if (!dialogResource || GetHandleSize(dialogResource) < kBoundsBytes) return;
    const std::lock_guard guard(ResourceBytesLock());
    std::uint8_t* const bounds = *dialogResource;
    const auto center = [bounds](int nearSide, int farSide, int room) {
        const int extent =
            GetBE<std::int16_t>(bounds + farSide) - GetBE<std::int16_t>(bounds + nearSide);
        if (extent < 1 || extent > std::numeric_limits<std::int16_t>::max()) return;
        const int start = std::max(0, (room - extent) / 2);
        PutBE(bounds + nearSide, static_cast<std::int16_t>(start));
        PutBE(bounds + farSide, static_cast<std::int16_t>(start + extent));
    };
    center(0, 4, kScreenHeight);
    center(2, 6, kScreenWidth);
}
