#include "WindowUser.h"

#include <QApplication>
#include <QWidget>
#include <QWindow>
#include <QtTest/qtestkeyboard.h>
#include <QtTest/qtestmouse.h>

#include <cstdlib>
#include <map>

namespace {

QWindow* WindowInFront() {
    QWidget* widget = QApplication::activePopupWidget();
    if (!widget) widget = QApplication::activeModalWidget();
    return widget ? widget->windowHandle() : nullptr;
}

Qt::KeyboardModifier ToModifier(int key) {
    constexpr std::pair<int, Qt::KeyboardModifier> kModifiers[] = {
        {Qt::Key_Alt, Qt::AltModifier},
        {Qt::Key_Control, Qt::ControlModifier},
        {Qt::Key_Shift, Qt::ShiftModifier}};
    for (const auto& [code, modifier] : kModifiers)
        if (code == key) return modifier;
    return Qt::NoModifier;
}

class OwnHands : public Hands {
  public:
    void MoveTo(QPoint global) override {
        mouse = global;
        Send(Qt::NoButton, QEvent::MouseMove);
    }
    void Button(bool down) override {
        buttons = down ? Qt::LeftButton : Qt::NoButton;
        Send(Qt::LeftButton, down ? QEvent::MouseButtonPress : QEvent::MouseButtonRelease);
    }
    void Key(int key, const QString& text, bool down) override {
        modifiers.setFlag(ToModifier(key), down && ToModifier(key) != Qt::NoModifier);
        qt_handleKeyEvent(WindowInFront(), down ? QEvent::KeyPress : QEvent::KeyRelease, key,
                          modifiers, text);
    }

  private:
    void Send(Qt::MouseButton button, QEvent::Type type) {
        QWindow* window = WindowInFront();
        constexpr int kMillisecondsApart = 10;
        time += kMillisecondsApart;
        qt_handleMouseEvent(window, window->mapFromGlobal(mouse), mouse, buttons, button, type,
                            modifiers, time);
    }

    QPoint mouse;
    Qt::MouseButtons buttons;
    Qt::KeyboardModifiers modifiers;
    int time = 0;
};

class XHands : public Hands {
  public:
    void MoveTo(QPoint global) override {
        Run("mousemove " + std::to_string(global.x()) + " " + std::to_string(global.y()));
    }
    void Button(bool down) override { Run(down ? "mousedown 1" : "mouseup 1"); }
    void Key(int key, const QString&, bool down) override {
        Run((down ? "keydown " : "keyup ") + NameOf(key));
    }

  private:
    static void Run(const std::string& command) {
        if (std::system(("xdotool " + command).c_str()) != 0) std::abort();
    }
    static std::string NameOf(int key) {
        static const std::map<int, std::string> kNames = {{Qt::Key_Alt, "Alt_L"},
                                                          {Qt::Key_Control, "Control_L"},
                                                          {Qt::Key_Shift, "Shift_L"},
                                                          {Qt::Key_Space, "space"},
                                                          {Qt::Key_Backspace, "BackSpace"},
                                                          {Qt::Key_Escape, "Escape"},
                                                          {Qt::Key_Return, "Return"},
                                                          {Qt::Key_Home, "Home"},
                                                          {Qt::Key_Down, "Down"}};
        const auto found = kNames.find(key);
        return found == kNames.end() ? std::string(1, static_cast<char>(std::tolower(key)))
                                     : found->second;
    }
};

} // namespace

std::unique_ptr<Hands> MakeOwnHands() {
    return std::make_unique<OwnHands>();
}

std::unique_ptr<Hands> MakeXHands() {
    return std::make_unique<XHands>();
}
