// The library's one function: starts the toolkit without ever ending the program over it, or joins
// the program's own.
#include "Display.h"

#include "Accessibility.h"
#include "Canvas.h"
#include "FileDialogs.h"
#include "QtDisplay.h"

#include <QApplication>
#include <QLocale>
#include <QStyleFactory>

#include <clocale>
#include <cstdio>
#include <string>

namespace {

constexpr char kNoScreen[] = "offscreen";

struct WindowDisplay {
    QtDisplay events;
    FileDialogs files;
};

std::string WantedPlatform() {
    const QByteArray wanted = qgetenv("QT_QPA_PLATFORM");
    return wanted.isEmpty() ? "xcb" : wanted.toStdString();
}

void DropMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtFatalMsg) std::fprintf(stderr, "%s\n", qPrintable(text));
}

// Without a display the toolkit ends the program, unless it has another platform to fall back to.
// What it prints on the way is said by our caller in one sentence.
void StartToolkit(const std::string& platform) {
    static std::string name = "gif89", option = "-platform";
    static std::string platforms = platform + ";" + kNoScreen;
    static char* arguments[] = {name.data(), option.data(), platforms.data(), nullptr};
    static int count = 3;
    const QtMessageHandler usual = qInstallMessageHandler(DropMessage);
    // Lives on: tearing it down at exit gains nothing.
    [[maybe_unused]] static auto* const application = new QApplication(count, arguments);
    qInstallMessageHandler(usual);
}

// Questions look like the dialogs, whose layouts are fixed; the theme's colours stay.
void SetLook() {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setFont(FontFor(0, 0));
    QGuiApplication::setQuitOnLastWindowClosed(false);
}

// True when windows can be shown. The toolkit of a program with windows of its own stays as it is.
bool HaveToolkit() {
    if (QCoreApplication::instance()) return qobject_cast<QApplication*>(qApp) != nullptr;
    const std::string platform = WantedPlatform();
    StartToolkit(platform);
    const bool screenless = QGuiApplication::platformName() == QLatin1String(kNoScreen);
    if (screenless && platform.rfind(kNoScreen, 0) != 0) return false;
    SetLook();
    return true;
}

WindowDisplay* Open() {
    const bool canShow = HaveToolkit();
    // The toolkit takes the user's locale for everything. The program prints numbers with points,
    // and while its texts are English only, the system's reasons are, too.
    for (const int category : {LC_NUMERIC, LC_MESSAGES, LC_TIME}) std::setlocale(category, "C");
    QLocale::setDefault(QLocale(QLocale::English));
    if (!canShow) return nullptr;
    InstallItemAccessibility();
    return new WindowDisplay;
}

} // namespace

const char* GIF89OpenDisplay(DisplayParts* parts) {
    static WindowDisplay* const display = Open();
    if (!display)
        return "no window can be opened: there is no display, or the one that DISPLAY names "
               "cannot be reached";
    *parts = {&display->events, &display->files};
    return nullptr;
}
