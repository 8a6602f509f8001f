// An open test dialog in a window, for tests that look at its widgets.
#pragma once

#include "DrawDialogs.h"
#include "HostDialogs.h"
#include "ModalDialog.h"
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
    }
    void Stroke(int key, const QString& text = {}) {
        hands->Key(key, text, true);
        hands->Key(key, text, false);
    }
    /// Runs the modal loop, in which the user does that at once. The hit, or -1 when there is none
    /// within some null events. Keeps the kinds of the events that reached the filter in `seen`,
    /// null events left out.
    short HitAfter(const std::function<void()>& act, ModalFilterProc filter = nullptr) {
        QMetaObject::invokeMethod(qApp, act, Qt::QueuedConnection);
        seen.clear();
        patience = 3;
        moduleFilter = filter;
        short item = 0;
        MoveableModalDialog(dialog, nullptr, Watch, &item);
        return item;
    }
    static Boolean Watch(DialogPtr shown, EventRecord* event, short* item) {
        if (event->what == nullEvent) {
            if (--patience > 0) return 0;
            *item = -1;
            return 1;
        }
        seen.push_back(event->what);
        return moduleFilter ? moduleFilter(shown, event, item) : Boolean{0};
    }

    // Filters carry nothing of their own.
    static inline std::vector<std::int16_t> seen;
    static inline ModalFilterProc moduleFilter;
    static inline int patience;

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
