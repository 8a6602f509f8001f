// The session that the script source plays, played in windows: offscreen or on an X server.
#include "OpenDisplay.h"
#include "TestDialog.h"
#include "WindowUser.h"

#include <QGuiApplication>

#include <gtest/gtest.h>

TEST(Session, GivesTheSameHitsInAWindowAsInAScript) {
    const TestDialogResources resources;
    EventSource& display = *gif89::OpenDisplay().events;
    const bool isX = QGuiApplication::platformName() == QLatin1String("xcb");
    const auto hands = isX ? MakeXHands() : MakeOwnHands();
    WindowUser user(display, *hands, TestSession());
    SetEventSource(&user);
    EXPECT_EQ(RunTestDialog(), TestSessionLog());
    SetEventSource(nullptr);
    EXPECT_EQ(user.Failure(), "");
}
