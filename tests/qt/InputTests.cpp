// Presses, keys and cursors between the toolkit and the module, and what waiting for them costs.
#include "Cursors.h"
#include "EventManager.h"
#include "WindowFixture.h"

#include <QPixmap>
#include <QPushButton>

#include <cstdio>
#include <ctime>

namespace {

bool IsDown(EventSource& display, short key) {
    KeyMap keys;
    display.ReadKeys(keys);
    return keys[key >> 3] >> (key & 7) & 1;
}

class Input : public WindowTest {};

Boolean WaitForRelease(DialogPtr, EventRecord* event, short*) {
    while (event->what == mouseDown && StillDown()) {
    }
    return 0;
}

Boolean WaitForReleaseAndTake(DialogPtr, EventRecord* event, short* item) {
    if (event->what != mouseDown) return 0;
    while (StillDown()) {
    }
    EventRecord release;
    *item = GetNextEvent(mUpMask, &release) ? 42 : 43;
    return 1;
}

// A button passes on what it does not understand, a pop-up does not.
TEST_F(Input, LetsTheModuleFollowAPressOnAWidgetToItsEnd) {
    Show();
    for (const short item : {kTestOK, kTestColours}) {
        // The press is offered from inside the toolkit; all that follows must arrive there.
        const auto dragOff = [&] {
            QTimer::singleShot(40, Qt::PreciseTimer, [&] {
                hands->MoveTo(MiddleOf(item) - QPoint(9, 0));
                hands->Button(false);
            });
            hands->MoveTo(MiddleOf(item));
            hands->Button(true);
        };
        EXPECT_EQ(HitAfter(dragOff, WaitForReleaseAndTake), 42) << "item " << item;
        HitAfter(dragOff, WaitForRelease);
        EXPECT_EQ(HitAfter([] {}), -1) << "item " << item << " was used";
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    }
    EXPECT_FALSE(As<QPushButton>(kTestOK)->isDown()) << "its press was over already";
}

TEST_F(Input, EndsAPressThatTheModuleTookWithAMouseUp) {
    Show();
    const ModalFilterProc takeDown = [](DialogPtr, EventRecord* event, short* item) -> Boolean {
        *item = 42;
        return event->what == mouseDown;
    };
    EXPECT_EQ(HitAfter([&] { Press(MiddleOf(kTestColours)); }, takeDown), 42);
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    EventRecord release;
    EXPECT_TRUE(GetNextEvent(mUpMask, &release));
}

TEST_F(Input, OfAnInactiveWindowIsNotBelieved) {
    Show();
    hands->Key(Qt::Key_Alt, {}, true);
    hands->Key(Qt::Key_Space, QStringLiteral(" "), true);
    hands->MoveTo(Global({60, 60}));
    hands->Button(true);
    Settle();
    EXPECT_TRUE(IsDown(display, kKeyOption));
    EXPECT_TRUE(IsDown(display, kKeySpace));
    EXPECT_TRUE(display.ButtonDown());

    QWidget other;
    other.show();
    other.activateWindow();
    QApplication::setActiveWindow(&other);
    Settle();
    EXPECT_FALSE(IsDown(display, kKeyOption));
    EXPECT_FALSE(IsDown(display, kKeySpace));
    EXPECT_FALSE(display.ButtonDown());
    other.close();
    QApplication::setActiveWindow(Window());
    Settle();
    EXPECT_FALSE(IsDown(display, kKeySpace)) << "the release went elsewhere";
    hands->Key(Qt::Key_Alt, {}, false);
}

TEST_F(Input, FindsTheDialogOnlyWhereNothingLiesOverIt) {
    Show();
    const auto at = [&](QPoint point) {
        return display.DialogAt({static_cast<short>(point.y()), static_cast<short>(point.x())});
    };
    EXPECT_EQ(at(Global({0, 0})), dialog);
    EXPECT_EQ(at(Global({379, 319})), dialog);
    EXPECT_EQ(at(Global({-1, 0})), nullptr);
    EXPECT_EQ(at(Global({380, 0})), nullptr);
    hands->MoveTo(MiddleOf(kTestColours));
    hands->Button(true);
    hands->Button(false);
    Settle();
    ASSERT_NE(QApplication::activePopupWidget(), nullptr);
    EXPECT_EQ(at(Global({1, 1})), nullptr) << "a list is open";
    Stroke(Qt::Key_Escape);
    EXPECT_EQ(at(Global({1, 1})), dialog);
}

TEST_F(Input, ShowsTheModulesCursorOnTheCanvasAlone) {
    Show();
    const Cursor& wanted = **GetCursor(kTestCursor);
    SetCursor(&wanted);
    const QCursor shown = Canvas()->cursor();
    EXPECT_EQ(shown.hotSpot(), QPoint(8, 8));
    const QImage pixels = shown.pixmap().toImage();
    const int scale = pixels.width() / 16;
    ASSERT_EQ(scale, static_cast<int>(Canvas()->devicePixelRatioF()));
    for (int y = 0; y < 16 * scale; ++y)
        for (int x = 0; x < 16 * scale; ++x) {
            const int bit = 0x8000 >> (x / scale), row = y / scale;
            const QRgb ink = wanted.data[row] & bit ? 0xFF000000 : 0xFFFFFFFF;
            ASSERT_EQ(pixels.pixel(x, y), wanted.mask[row] & bit ? ink : 0u) << x << ", " << y;
        }
    EXPECT_EQ(WidgetOf(kTestOK)->cursor().shape(), Qt::ArrowCursor);
    EXPECT_EQ(WidgetOf(kTestNumber)->cursor().shape(), Qt::IBeamCursor);
    HitAfter([] {}); // its null events choose no cursor
    EXPECT_EQ(Canvas()->cursor().shape(), Qt::ArrowCursor);
}

// The bounds are several times what is wanted, for machines that have other things to do; the
// figures are printed.
TEST_F(Input, CostsLittleToWaitFor) {
    Show();
    constexpr double kSeconds = 2;
    const auto pass = [&](const std::function<void()>& wait) {
        const std::clock_t before = std::clock(); // processor time
        const std::uint32_t end = TickCount() + static_cast<std::uint32_t>(kSeconds * 60);
        while (TickCount() < end) wait();
        return static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC / kSeconds;
    };
    const double idle = pass([&] { HitAfter([] {}); });
    hands->MoveTo(Global({60, 60}));
    hands->Button(true);
    EventRecord press;
    ASSERT_TRUE(GetNextEvent(1 << mouseDown, &press));
    bool staysDown = true;
    const double held = pass([&] {
        InvalItem(dialog, kTestCanvas);
        staysDown = StillDown() && staysDown;
    });
    EXPECT_TRUE(staysDown);
    hands->Button(false);
    std::printf("ten idle seconds: %.3f s of processor time; held button: %.1f %% of a core\n",
                idle * 10, held * 100);
    EXPECT_LT(idle * 10, 0.3 * 4);
    EXPECT_LT(held, 0.1 * 4);
}

} // namespace
