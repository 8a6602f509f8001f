#include "DialogWindow.h"

#include "CursorShape.h"
#include "EventTranslation.h"
#include "ItemWidgets.h"

#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace {

QSize SizeOf(const Rect& rect) {
    return QSize(rect.right - rect.left, rect.bottom - rect.top);
}

void InvalidateAll(DialogPtr dialog) {
    for (std::size_t i = 0; i < dialog->items.size(); ++i)
        InvalItem(dialog, static_cast<short>(i + 1));
}

} // namespace

DialogWindow::DialogWindow(DialogPtr theDialog, Postings& thePostings)
    : dialog(theDialog), postings(thePostings),
      canvas(new Canvas(this, SizeOf(theDialog->portRect),
                        [theDialog] { InvalidateAll(theDialog); })) {
    setFixedSize(canvas->size());
    setFont(FontFor(0, 0));
    setModal(true);
    dialog->surface = canvas;
}

DialogWindow::~DialogWindow() {
    dialog->surface = nullptr;
}

void DialogWindow::Present(QWindow* parent) {
    MakeWidgets();
    setWindowTitle(QString::fromStdString(dialog->title));
    winId(); // makes the native window
    windowHandle()->setTransientParent(parent);
    move(PlaceOver(parent));
    GiveKeys();
    show();
    activateWindow();
    UpdateOrigin();
}

// In the middle of the window it belongs to, or else of the screen.
QPoint DialogWindow::PlaceOver(const QWindow* parent) const {
    const QScreen* const shown = parent ? parent->screen() : screen();
    const QRect room = shown->availableGeometry();
    const QPoint middle = parent ? parent->geometry().center() : room.center();
    const QPoint corner = middle - rect().center();
    const auto keep = [](int place, int first, int last) {
        return std::max(first, std::min(place, last));
    };
    return {keep(corner.x(), room.left(), room.right() - width()),
            keep(corner.y(), room.top(), room.bottom() - height())};
}

// Widgets made in the order of the items follow one another in that order with the tab key.
void DialogWindow::MakeWidgets() {
    for (std::size_t i = widgets.size(); i < dialog->items.size(); ++i) {
        const auto number = static_cast<short>(i + 1);
        QWidget* widget = MakeItemWidget(dialog, number, canvas, postings);
        widgets.push_back(widget);
        if (auto* button = qobject_cast<QPushButton*>(widget))
            button->setDefault(number == dialog->defaultItem);
    }
}

// At first an edit text has the keys, or else the canvas: on a button, a space bar held for a tool
// would press the button.
void DialogWindow::GiveKeys() {
    canvas->setFocus();
    UpdateFocus(dialog->editItem);
}

void DialogWindow::Update(short item, ItemChange change) {
    if (item < 1 || static_cast<std::size_t>(item) > widgets.size()) return; // not yet presented
    QWidget* widget = widgets[static_cast<std::size_t>(item) - 1];
    if (!widget) return;
    if (change == ItemChange::focus) return UpdateFocus(item);
    const bool isOff = change == ItemChange::state && dialog->Item(item)->IsDisabled();
    if (isOff && widget->hasFocus()) canvas->setFocus(); // and not whatever comes next
    UpdateItemWidget(dialog, item, widget, change);
}

void DialogWindow::UpdateFocus(short item) {
    if (item < 1 || static_cast<std::size_t>(item) > widgets.size()) return;
    auto* edit = qobject_cast<QLineEdit*>(widgets[static_cast<std::size_t>(item) - 1]);
    if (!edit) return;
    if (item == dialog->editItem && dialog->editActive && edit->isEnabled()) {
        edit->setFocus();
        edit->selectAll();
    } else if (edit->hasFocus()) {
        canvas->setFocus();
    }
}

void DialogWindow::ShowCursor(const Cursor* cursor) {
    canvas->setCursor(MakeCursor(cursor, devicePixelRatioF()));
}

bool DialogWindow::HasContentAt(QPoint global) const {
    return isVisible() && rect().contains(mapFromGlobal(global));
}

void DialogWindow::UpdateOrigin() {
    dialog->origin = ToPoint(canvas->mapToGlobal(QPoint(0, 0)));
}

void DialogWindow::reject() {
    postings.Hit(dialog, dialog->cancelItem);
}
