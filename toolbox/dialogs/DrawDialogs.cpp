#include "DrawDialogs.h"

#include "DialogManager.h"
#include "EventSource.h"

namespace {

/// Makes a dialog the port, and leaves ports, pens and fonts as they were.
class DialogPort {
  public:
    explicit DialogPort(DialogPtr theDialog)
        : dialog(theDialog), pen(theDialog->pen), font(theDialog->txFont), size(theDialog->txSize) {
        GetPort(&before);
        SetPort(dialog);
    }
    DialogPort(const DialogPort&) = delete;
    DialogPort& operator=(const DialogPort&) = delete;
    ~DialogPort() {
        dialog->pen = pen;
        dialog->txFont = font;
        dialog->txSize = size;
        SetPort(before);
    }

  private:
    GrafPtr before = nullptr;
    DialogPtr dialog;
    PenState pen;
    std::int16_t font, size;
};

void FrameGroup(DialogPtr dialog, const Rect& rect) {
    const DialogPort port(dialog);
    PenNormal();
    FrameRect(&rect);
}

void DrawItem(DialogPtr dialog, short number) {
    const DialogItem& item = *dialog->Item(number);
    switch (item.BaseKind()) {
    case kUserItem:
        if (!dialog->surface) return;
        if (item.isGroup) return FrameGroup(dialog, item.rect);
        if (item.draw) {
            const DialogPort port(dialog);
            item.draw(dialog, number);
        }
        return;
    case kStaticTextItem:
        TellSource(dialog, number, ItemChange::look);
        return;
    default:
        return; // native widgets draw themselves
    }
}

} // namespace

void DrawInvalidItems() {
    // Draw procedures may ask for more, which the next call draws; they open and close no dialogs.
    for (const DialogPtr dialog : OpenDialogs()) {
        if (!dialog->visible) continue;
        for (std::size_t i = 0; i < dialog->items.size(); ++i) {
            if (!dialog->items[i].invalid) continue;
            dialog->items[i].invalid = false;
            DrawItem(dialog, static_cast<short>(i + 1));
        }
    }
}
