// The window, driven inside the program: files come, dialogs are answered, files are written.
#include "CompareView.h"
#include "MainWindow.h"
#include "RecentFiles.h"
#include "ReportPanel.h"
#include "TemporaryFolder.h"
#include "WindowFixture.h"

#include <QAction>
#include <QClipboard>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <QUrl>

#include <random>
#include <set>

namespace gif89 {
namespace {

std::string Ppm(int columns, int rows, unsigned seed) {
    std::mt19937 random(seed);
    std::string file = "P6 " + std::to_string(columns) + " " + std::to_string(rows) + " 255\n";
    for (int i = 0; i < rows * columns * 3; ++i) file += static_cast<char>(random());
    return file;
}

class DesktopTest : public testing::Test {
  protected:
    DesktopTest() {
        static int count = 1;
        static char name[] = "DesktopTests", *arguments[] = {name, nullptr};
        static QApplication* const application = new QApplication(count, arguments);
        application->setOrganizationName("gif89");
        application->setApplicationName("gif89-desktop");
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope,
                           QString::fromStdString(folder.Path()));
        QSettings().clear();
        window = std::make_unique<MainWindow>();
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }

    /// Lets files drop on the window; names are percent-encoded.
    void Drop(const std::vector<std::string>& names) {
        QList<QUrl> urls;
        for (const std::string& name : names)
            urls << QUrl::fromEncoded(
                QByteArray::fromStdString("file://" + folder.Path() + "/" + name));
        QMimeData mime;
        mime.setUrls(urls);
        // Shift asks for a move.
        QDropEvent drop(QPointF(50, 50), Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton,
                        Qt::ShiftModifier);
        static_cast<QObject*>(window.get())->event(&drop);
        EXPECT_TRUE(drop.isAccepted());
        EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
    }
    bool WaitForDocument(const std::string& name) {
        return QTest::qWaitFor(
            [&] { return window->CurrentDocument() && window->CurrentDocument()->name == name; });
    }

    TemporaryFolder folder;
    std::unique_ptr<MainWindow> window;
};

/// Presses the button of that title in the dialog in front.
Answers::Step Press(const QString& title) {
    return [title](QWidget* front) {
        for (auto* button : front->findChildren<QPushButton*>())
            if (button->text() == title && button->isEnabled()) {
                button->click();
                return true;
            }
        return false;
    };
}

TEST_F(DesktopTest, OpensADroppedFileWhateverBytesItsNameHas) {
    folder.Write("odd \xff name.ppm", Ppm(7, 5, 1));
    Drop({"odd%20%FF%20name.ppm"});
    ASSERT_TRUE(WaitForDocument("odd \xff name"));
    EXPECT_EQ(window->CurrentDocument()->shown.Size(), QSize(7, 5));
    EXPECT_EQ(window->CurrentDocument()->picture.visibleColors, 35);
    EXPECT_EQ(RecentFiles(), std::vector<std::string>{folder.Path("odd \xff name.ppm")});
}

TEST_F(DesktopTest, OpensFurtherFilesInWindowsOfTheirOwn) {
    for (const char* name : {"a.ppm", "b.ppm", "c.ppm"}) folder.Write(name, Ppm(2, 2, 1));
    Drop({"a.ppm", "b.ppm", "c.ppm"});
    std::set<MainWindow*> windows;
    EXPECT_TRUE(QTest::qWaitFor([&] {
        for (QWidget* each : QApplication::topLevelWidgets())
            if (auto* other = qobject_cast<MainWindow*>(each); other && other->CurrentDocument())
                windows.insert(other);
        return windows.size() == 3;
    }));
    std::set<std::string> names;
    for (MainWindow* each : windows) {
        names.insert(each->CurrentDocument()->name);
        if (each != window.get()) delete each;
    }
    EXPECT_EQ(names, (std::set<std::string>{"a", "b", "c"}));
}

TEST_F(DesktopTest, SaysWhatIsWrongAndKeepsWhatItShows) {
    folder.Write("good.ppm", Ppm(3, 3, 2));
    folder.Write("cut.ppm", Ppm(30, 30, 3).substr(0, 500));
    Drop({"good.ppm"});
    ASSERT_TRUE(WaitForDocument("good"));
    for (const char* name : {"cut.ppm", "missing.ppm"}) {
        Drop({name});
        EXPECT_TRUE(QTest::qWaitFor([&] { return window->Message().startsWith(name); })) << name;
        EXPECT_EQ(window->CurrentDocument()->name, "good");
    }
    EXPECT_EQ(RecentFiles().size(), 1U);
}

TEST_F(DesktopTest, PastesAPicture) {
    QImage image(4, 3, QImage::Format_ARGB32);
    image.fill(QColor(10, 20, 30, 128));
    QApplication::clipboard()->setImage(image);
    QTest::keyClick(window.get(), Qt::Key_V, Qt::ControlModifier);
    ASSERT_TRUE(window->CurrentDocument());
    EXPECT_EQ(window->CurrentDocument()->name, "Pasted");
    EXPECT_EQ(window->CurrentDocument()->picture.pixels[3], 128);
}

TEST_F(DesktopTest, ExportsWithTheDialogsAndAgainWithout) {
    folder.Write("noise.ppm", Ppm(60, 40, 4));
    Drop({"noise.ppm"});
    ASSERT_TRUE(WaitForDocument("noise"));
    {
        const Answers answers({[](QWidget* front) {
                                   auto* count = front->findChild<QLineEdit*>();
                                   count->selectAll();
                                   QTest::keyClicks(count, "16");
                                   return true;
                               },
                               Press("OK")});
        ASSERT_TRUE(window->ExportTo(folder.Path("one.gif"), MainWindow::Choosing::inDialogs));
    }
    EXPECT_EQ(window->Result()->report.tableEntries, 16);
    EXPECT_TRUE(window->findChild<ReportPanel*>()->isVisible());
    ASSERT_TRUE(window->ExportTo(folder.Path("two.gif"), MainWindow::Choosing::asBefore));
    EXPECT_TRUE(folder.Read("one.gif") == folder.Read("two.gif"));

    // The original is still what it was, and what was changed is known.
    EXPECT_EQ(window->CurrentDocument()->picture.visibleColors,
              window->Result()->report.sourceColors);
    EXPECT_GT(window->Result()->report.changedPixels, 0);

    // The same choices reduce a picture with a table, unless it is to keep that; then the user is
    // told so before a file is asked for.
    const auto route = [this](const char* name) {
        for (auto* action : window->findChildren<QAction*>())
            if (action->text() == QLatin1String(name)) return action;
        return static_cast<QAction*>(nullptr);
    };
    EXPECT_FALSE(route("&Indexed")->isEnabled()) << "too many colours for a table";
    std::string levels = "P5 8 5 255\n";
    for (int i = 0; i < 40; ++i) levels += static_cast<char>(i);
    folder.Write("grey.pgm", levels);
    Drop({"grey.pgm"});
    ASSERT_TRUE(WaitForDocument("grey"));
    route("&Indexed")->trigger();
    {
        const Answers none({});
        QTest::keyClick(window.get(), Qt::Key_E, Qt::ControlModifier);
    }
    EXPECT_EQ(
        window->Message().toStdString(),
        "grey.pgm: an indexed picture keeps its own palette; by the routes Automatic and True "
        "Colour it may get another");
    route("&Automatic")->trigger();
    ASSERT_TRUE(window->ExportTo(folder.Path("grey.gif"), MainWindow::Choosing::asBefore));
    EXPECT_EQ(window->Result()->report.tableEntries, 16);
}

TEST_F(DesktopTest, WritesNothingWhenCancelledOrImpossible) {
    folder.Write("noise.ppm", Ppm(60, 40, 5));
    Drop({"noise.ppm"});
    ASSERT_TRUE(WaitForDocument("noise"));
    {
        const Answers answers({Press("Cancel")});
        EXPECT_FALSE(window->ExportTo(folder.Path("a.gif"), MainWindow::Choosing::inDialogs));
    }
    EXPECT_EQ(window->Message(), "");
    {
        const Answers answers({Press("OK")});
        EXPECT_FALSE(
            window->ExportTo(folder.Path("missing/a.gif"), MainWindow::Choosing::inDialogs));
    }
    EXPECT_TRUE(window->Message().startsWith("a.gif: ")) << window->Message().toStdString();
    EXPECT_FALSE(window->Result());
}

} // namespace
} // namespace gif89
