// An open test dialog in a window, for tests that look at its widgets.
#pragma once

#include "HostDialogs.h"
#include "OpenDisplay.h"
#include "StandardFile.h"
#include "TestDialog.h"
#include "WindowUser.h"

#include <QApplication>
#include <QDialog>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

class WindowTest : public testing::Test {
  protected:
    WindowTest() : display(*gif89::OpenDisplay().events), hands(MakeOwnHands()) {
        SetEventSource(&display);
        dialog = GetNewDialog(kTestDialog, nullptr, nullptr);
        SetDialogDefaultItem(dialog, kTestOK);
        SetDialogCancelItem(dialog, kTestCancel);
        SetDialogTracksCursor(dialog, true);
        SetOutlineGroup(dialog, kTestGroup);
        ParamText(reinterpret_cast<ConstStr255Param>("\0012"),
                  reinterpret_cast<ConstStr255Param>("\0011"), nullptr, nullptr);
    }
    ~WindowTest() override {
        DisposeDialog(dialog);
        SetEventSource(nullptr);
    }

    void Show() {
        ShowWindow(dialog);
        Settle();
    }
    /// Lets everything that is under way arrive and be drawn.
    void Settle() {
        for (int i = 0; i < 5; ++i) {
            DrawInvalidItems();
            display.Pump(5);
        }
    }

    QDialog* Window() const { return qobject_cast<QDialog*>(QApplication::activeModalWidget()); }
    QWidget* Canvas() const { return Window()->childAt(1, 1); }
    /// The widget that lies where the item does.
    QWidget* WidgetOf(short item) const {
        const Rect& rect = dialog->Item(item)->rect;
        const QRect place(QPoint(rect.left, rect.top), QPoint(rect.right - 1, rect.bottom - 1));
        for (QWidget* widget : Canvas()->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
            if (widget->geometry() == place) return widget;
        return nullptr;
    }
    template <class T> T* As(short item) const { return qobject_cast<T*>(WidgetOf(item)); }

    QPoint MiddleOf(short item) const { return Global(WidgetOf(item)->geometry().center()); }
    QPoint Global(QPoint local) const { return Canvas()->mapToGlobal(local); }
    void Press(QPoint global) {
        hands->MoveTo(global);
        hands->Button(true);
        hands->Button(false);
        Settle();
    }
    void Stroke(int key, const QString& text = {}) {
        hands->Key(key, text, true);
        hands->Key(key, text, false);
        Settle();
    }
    /// The hit that what was done so far has made, -1 for none.
    short NextHit(ModalFilterProc filter = nullptr) {
        static int patience;
        static ModalFilterProc inner;
        patience = 3;
        inner = filter;
        short item = 0;
        MoveableModalDialog(
            dialog, nullptr,
            [](DialogPtr shown, EventRecord* event, short* hit) -> Boolean {
                if (event->what != nullEvent) return inner ? inner(shown, event, hit) : Boolean{0};
                if (--patience > 0) return 0;
                *hit = -1;
                return 1;
            },
            &item);
        return item;
    }

    TestDialogResources resources;
    EventSource& display;
    std::unique_ptr<Hands> hands;
    DialogPtr dialog;
};

/// Answers the toolkit's own dialogs while they hold the program up: each step is asked again and
/// again, with the dialog in front, until it says that it is done.
class Answers {
  public:
    using Step = std::function<bool(QWidget* front)>;

    explicit Answers(std::deque<Step> theSteps) : steps(std::move(theSteps)) {
        QObject::connect(&timer, &QTimer::timeout, [this] { Try(); });
        timer.start(10);
    }
    ~Answers() { EXPECT_TRUE(steps.empty()) << steps.size() << " answers were not asked for"; }

  private:
    void Try() {
        QWidget* front = QApplication::activeModalWidget();
        constexpr int kMostTries = 1000;
        if (front && ++tries > kMostTries) return static_cast<void>(front->close());
        if (front && !steps.empty() && steps.front()(front)) steps.pop_front();
    }

    std::deque<Step> steps;
    QTimer timer;
    int tries = 0;
};
