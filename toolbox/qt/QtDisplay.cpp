#include "QtDisplay.h"

#include "EventTranslation.h"
#include "ItemWidgets.h"

#include <QApplication>
#include <QColorDialog>
#include <QEventLoop>
#include <QMessageBox>
#include <QMouseEvent>
#include <QTimer>
#include <QWindow>

#include <cstring>

namespace {

std::uint32_t ToTicks(qint64 milliseconds) {
    return static_cast<std::uint32_t>(milliseconds * 60 / 1000);
}

bool SameCursor(const Cursor* a, const Cursor* b) {
    return a && b ? *a == *b : a == b;
}

DialogWindow* DialogWindowOf(QObject* receiver) {
    if (!receiver->isWidgetType()) return nullptr;
    return dynamic_cast<DialogWindow*>(static_cast<QWidget*>(receiver)->window());
}

// The window of the program's own that a first dialog belongs to; null when it has none.
QWindow* ProgramWindow() {
    const auto isOne = [](const QWidget* widget) {
        return widget && widget->isVisible() && widget->windowType() == Qt::Window;
    };
    if (isOne(QApplication::activeWindow())) return QApplication::activeWindow()->windowHandle();
    for (const QWidget* widget : QApplication::topLevelWidgets())
        if (isOne(widget)) return widget->windowHandle();
    return nullptr;
}

QString TitleOf(const DialogWindow* window) {
    return window ? window->windowTitle() : QStringLiteral("GIF89");
}

} // namespace

QtDisplay::QtDisplay() {
    clock.start();
    qApp->installEventFilter(this);
}

// Dialogs

void QtDisplay::DialogOpened(DialogPtr dialog) {
    windows[dialog] = std::make_unique<DialogWindow>(dialog, postings);
}

void QtDisplay::DialogShown(DialogPtr dialog) {
    DialogWindow* parent = Front();
    DialogWindow* window = Find(dialog);
    if (!window) return;
    ForgetInput();
    const bool isFirst = !parent || parent == window;
    window->Present(isFirst ? ProgramWindow() : parent->windowHandle());
    window->ShowCursor(cursor.get());
    mouse = QCursor::pos();
}

void QtDisplay::DialogClosed(DialogPtr dialog) {
    windows.erase(dialog);
    ForgetInput();
    if (DialogWindow* next = Front()) next->activateWindow();
}

void QtDisplay::ItemChanged(DialogPtr dialog, short item, ItemChange change) {
    if (DialogWindow* window = Find(dialog)) window->Update(item, change);
}

DialogWindow* QtDisplay::Find(DialogPtr dialog) const {
    const auto found = windows.find(dialog);
    return found == windows.end() ? nullptr : found->second.get();
}

DialogWindow* QtDisplay::Front() const {
    for (DialogPtr dialog : OpenDialogs())
        if (DialogWindow* window = Find(dialog); window && window->isVisible()) return window;
    return nullptr;
}

// Input

void QtDisplay::Pump(int milliseconds) {
    const unsigned before = postings.Count();
    if (milliseconds <= 0) {
        QCoreApplication::processEvents();
    } else {
        // A timer of this call's own, since a filter may pump inside of pumping.
        QTimer patience;
        patience.setTimerType(Qt::PreciseTimer);
        patience.setSingleShot(true);
        patience.start(milliseconds);
        while (postings.Count() == before && patience.isActive())
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    // Asking may cost a trip to the display's server: once a pump is enough.
    const Qt::KeyboardModifiers held = QGuiApplication::queryKeyboardModifiers();
    closingModifiers &= held;
    modifiers = held & ~closingModifiers;
    if (DialogWindow* window = Front()) window->UpdateOrigin();
}

bool QtDisplay::ButtonDown() {
    return buttonDown;
}

Point QtDisplay::MousePosition() {
    return ToPoint(mouse);
}

void QtDisplay::ReadKeys(KeyMap keys) {
    std::memset(keys, 0, sizeof(KeyMap));
    const DialogWindow* window = Front();
    if (!window || !window->isActiveWindow()) return;
    std::memcpy(keys, keysDown, sizeof(KeyMap));
    AddModifierKeys(keys, modifiers);
}

std::uint32_t QtDisplay::Ticks() {
    return ToTicks(clock.elapsed());
}

std::uint32_t QtDisplay::DoubleClickTicks() {
    return ToTicks(QApplication::doubleClickInterval());
}

DialogPtr QtDisplay::DialogAt(Point global) {
    if (QApplication::activePopupWidget()) return nullptr; // an open list may lie there
    const DialogWindow* window = Front();
    return window && window->HasContentAt(ToQPoint(global)) ? window->Dialog() : nullptr;
}

bool QtDisplay::Failed() {
    return false; // a lost connection to the display ends the program
}

void QtDisplay::ForgetInput() {
    std::memset(keysDown, 0, sizeof keysDown);
    buttonDown = false;
    modulePress = false;
    modifiers = {};
}

EventRecord QtDisplay::Complete(EventRecord event) {
    event.when = Ticks();
    event.where = ToPoint(mouse);
    return event;
}

bool QtDisplay::eventFilter(QObject* receiver, QEvent* event) {
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
        if (DialogWindow* window = DialogWindowOf(receiver))
            return FilterMouse(*window, *static_cast<QWidget*>(receiver),
                               *static_cast<QMouseEvent*>(event));
        return false;
    case QEvent::ShortcutOverride: // comes, even twice, before each press of a key
        if (QApplication::activePopupWidget()) listKey = static_cast<QKeyEvent*>(event)->key();
        return false;
    case QEvent::KeyRelease:
        listKey.reset();
        [[fallthrough]];
    case QEvent::KeyPress:
        if (DialogWindow* window = DialogWindowOf(receiver))
            return FilterKey(*window, *static_cast<QWidget*>(receiver),
                             *static_cast<QKeyEvent*>(event));
        return false;
    case QEvent::Close:
        if (receiver == DialogWindowOf(receiver))
            closingModifiers = QGuiApplication::queryKeyboardModifiers();
        return false;
    case QEvent::WindowDeactivate:
        if (receiver == DialogWindowOf(receiver)) ForgetInput();
        return false;
    case QEvent::Leave:
        if (receiver == DialogWindowOf(receiver)) mouse = QCursor::pos();
        return false;
    default:
        return false;
    }
}

bool QtDisplay::FilterMouse(DialogWindow& window, QWidget& receiver, const QMouseEvent& event) {
    mouse = event.globalPosition().toPoint();
    window.UpdateOrigin();
    if (event.button() != Qt::LeftButton) return false; // moves, too

    buttonDown = event.type() != QEvent::MouseButtonRelease;
    modifiers = event.modifiers() & ~closingModifiers;
    EventRecord record;
    record.what = buttonDown ? mouseDown : mouseUp;
    record.modifiers = ToModifiers(event.modifiers());
    record = Complete(record);

    const bool ofWidget = IsNativeControl(&receiver);
    if (buttonDown && ofWidget) return OfferPress(window, record);
    if (ofWidget && !modulePress && !offering) return false; // ends the widget's own press
    modulePress = buttonDown;
    // Here and not by focus policy: a press on a button would give the canvas below it the keys.
    if (buttonDown) receiver.setFocus(Qt::MouseFocusReason);
    postings.Event(record);
    return true;
}

// The module sees a press on a widget first, disabled or not. It may wait for the button inside.
bool QtDisplay::OfferPress(DialogWindow& window, const EventRecord& event) {
    offering = true;
    const bool taken = postings.Offer(window.Dialog(), event);
    offering = false;
    modulePress = taken && buttonDown;
    return taken || !buttonDown; // a press whose release is over would leave the widget down
}

bool QtDisplay::FilterKey(DialogWindow& window, QWidget& receiver, const QKeyEvent& event) {
    const bool down = event.type() == QEvent::KeyPress;
    // A list may have closed already over a key that then arrives here.
    if (down && listKey == event.key()) return true;
    // Keys travel up to the window; only the first stop counts.
    if (&receiver != QApplication::focusWidget()) return false;
    const short code = ToKeyCode(event.key());
    if (code >= 0 && !event.isAutoRepeat()) SetKey(keysDown, code, down);
    if (!down || IsModifierKey(event.key())) return false;
    if (event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab) return false;

    const EventRecord record = Complete(ToKeyEvent(event));
    if (EndsDialog(record) && event.isAutoRepeat()) return true;
    if (OperatesControl(&receiver, event.key())) return false;
    if (!EndsDialog(record) && IsNativeControl(&receiver))
        return postings.Offer(window.Dialog(), record);
    postings.Event(record);
    return true;
}

// Questions

void QtDisplay::ShowCursor(const Cursor* shape) {
    if (SameCursor(shape, cursor.get())) return;
    cursor = shape ? std::make_unique<Cursor>(*shape) : nullptr;
    if (DialogWindow* window = Front()) window->ShowCursor(shape);
}

bool QtDisplay::PickColor(Point, const std::string& prompt, const RGBColor& start,
                          RGBColor* picked) {
    const QColor first(start.red >> 8, start.green >> 8, start.blue >> 8);
    const QColor chosen =
        QColorDialog::getColor(first, Front(), QString::fromStdString(prompt),
                               QColorDialog::DontUseNativeDialog); // one look everywhere
    if (!chosen.isValid()) return false;
    const auto widen = [](int byte) { return static_cast<std::uint16_t>(byte * 257); };
    *picked = {widen(chosen.red()), widen(chosen.green()), widen(chosen.blue())};
    return true;
}

void QtDisplay::Alert(AlertKind kind, const std::string& sentence) {
    constexpr QMessageBox::Icon kIcons[] = {QMessageBox::Information, QMessageBox::Warning,
                                            QMessageBox::Critical};
    QMessageBox box(kIcons[static_cast<int>(kind)], TitleOf(Front()),
                    QString::fromStdString(sentence), QMessageBox::Ok, Front());
    box.setTextFormat(Qt::PlainText);
    box.exec();
}
