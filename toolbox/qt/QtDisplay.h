// Operates dialogs in real windows: feeds the toolbox with the user's events and answers questions.
#pragma once

#include "DialogWindow.h"
#include "Postings.h"

#include <QElapsedTimer>
#include <QObject>

#include <map>
#include <memory>
#include <optional>

class QKeyEvent;
class QMouseEvent;

class QtDisplay : public QObject, public EventSource {
  public:
    /// The application object must exist.
    QtDisplay();

    void DialogOpened(DialogPtr dialog) override;
    void DialogShown(DialogPtr dialog) override;
    void DialogClosed(DialogPtr dialog) override;
    void ItemChanged(DialogPtr dialog, short item, ItemChange change) override;

    void Pump(int milliseconds) override;
    bool ButtonDown() override;
    Point MousePosition() override;
    void ReadKeys(KeyMap keys) override;
    std::uint32_t Ticks() override;
    std::uint32_t DoubleClickTicks() override;
    DialogPtr DialogAt(Point global) override;
    bool Failed() override;

    void ShowCursor(const Cursor* cursor) override;
    bool PickColor(Point where, const std::string& prompt, const RGBColor& start,
                   RGBColor* picked) override;
    void Alert(AlertKind kind, const std::string& sentence) override;

    /// Sees every event of the program before the widgets do.
    bool eventFilter(QObject* receiver, QEvent* event) override;

  private:
    bool FilterMouse(DialogWindow& window, QWidget& receiver, const QMouseEvent& event);
    bool FilterKey(DialogWindow& window, QWidget& receiver, const QKeyEvent& event);
    bool OfferPress(DialogWindow& window, const EventRecord& event);
    void ForgetInput();

    DialogWindow* Find(DialogPtr dialog) const;
    DialogWindow* Front() const;
    EventRecord Complete(EventRecord event);

    std::map<DialogPtr, std::unique_ptr<DialogWindow>> windows;
    Postings postings;
    QElapsedTimer clock;
    std::unique_ptr<Cursor> cursor; ///< shown now; null is the arrow

    // Believed while a dialog is the active window
    QPoint mouse;
    bool buttonDown = false;
    bool offering = false;      ///< the module is looking at a press on a widget
    bool modulePress = false;   ///< the press that is under way is the module's, not a widget's
    std::optional<int> listKey; ///< pressed while a list was open, and not let go yet
    KeyMap keysDown = {};
    Qt::KeyboardModifiers modifiers; ///< as asked at the last pump
    /// Held when a window was closed, and since: they said how to close it, as in Alt+F4, and not
    /// what is meant in a dialog.
    Qt::KeyboardModifiers closingModifiers;
};
