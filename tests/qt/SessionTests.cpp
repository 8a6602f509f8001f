// The session that the script source plays, played in windows: offscreen or on an X server.
#include "OpenDisplay.h"
#include "TestDialog.h"
#include "WindowUser.h"

#include <QGuiApplication>

#include <gtest/gtest.h>

namespace {

TestDialogLog PlayScript(const std::vector<Act>& acts) {
    const TestDialogResources resources;
    ScriptSource script(acts);
    SetEventSource(&script);
    const TestDialogLog log = RunTestDialog();
    SetEventSource(nullptr);
    EXPECT_EQ(script.Failure(), "");
    return log;
}

TestDialogLog PlayInWindow(const std::vector<Act>& acts) {
    const TestDialogResources resources;
    EventSource& display = *gif89::OpenDisplay().events;
    const bool isX = QGuiApplication::platformName() == QLatin1String("xcb");
    const auto hands = isX ? MakeXHands() : MakeOwnHands();
    WindowUser user(display, *hands, acts);
    SetEventSource(&user);
    const TestDialogLog log = RunTestDialog();
    SetEventSource(nullptr);
    EXPECT_EQ(user.Failure(), "");
    return log;
}

TEST(Session, GivesTheSameHitsInAWindowAsInAScript) {
    EXPECT_EQ(PlayInWindow(TestSession()), TestSessionLog());
}

TEST(Session, EndsWithEscapeLikeAScript) {
    const std::vector<Act> acts = {PressItem(kTestStayOpen), TypeText("3"), PressKey(kKeyEscape)};
    EXPECT_EQ(PlayInWindow(acts), PlayScript(acts));
}

} // namespace
