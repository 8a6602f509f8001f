// gif89-desktop: opens pictures in windows and saves them as GIF89a files.
#include "CommentText.h"
#include "MainWindow.h"
#include "Problem.h"
#include "StagedFile.h"
#include "Streams.h"

#include <QApplication>
#include <QIcon>
#include <QLocale>

#include <clocale>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr char kHelp[] = "Usage: gif89-desktop [FILE]...\n"
                         "Opens pictures in windows, where they are saved as GIF89a files.\n"
                         "\n"
                         "  --help     show this and end\n"
                         "  --version  show the version and end\n"
                         "\n"
                         "The command gif89 does the same without windows.\n";

constexpr char kNoScreen[] = "offscreen";

/// Settings of the program, and the files that it was called with.
struct Call {
    bool help = false, version = false;
    std::string wrongOption;
    std::vector<std::string> files;
};

Call ReadCall(int count, char** arguments) {
    Call call;
    bool options = true;
    for (int i = 1; i < count; ++i) {
        const std::string argument = arguments[i];
        if (!options || argument.size() < 2 || argument[0] != '-')
            call.files.push_back(argument);
        else if (argument == "--")
            options = false;
        else if (argument == "--help" || argument == "-h")
            call.help = true;
        else if (argument == "--version")
            call.version = true;
        else
            call.wrongOption = argument;
    }
    return call;
}

// Without a display the toolkit ends the program, unless it has another platform to fall back to.
// The module's dialogs want the pointer's place on the screen, which X tells.
std::string WantedPlatforms() {
    const QByteArray wanted = qgetenv("QT_QPA_PLATFORM");
    if (!wanted.isEmpty()) return wanted.toStdString();
    return std::string(qEnvironmentVariableIsSet("DISPLAY") ? "xcb;" : "wayland;") + kNoScreen;
}

void DescribeProgram() {
    QCoreApplication::setOrganizationName(QStringLiteral("gif89"));
    QCoreApplication::setApplicationName(QStringLiteral("gif89-desktop"));
    QCoreApplication::setApplicationVersion(QStringLiteral(GIF89_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("gif89-desktop"));
    QIcon icon;
    for (const int side : {16, 22, 24, 32, 48, 64, 128, 256})
        icon.addFile(QStringLiteral(":/icons/%1x%1/gif89-desktop.png").arg(side));
    QGuiApplication::setWindowIcon(icon);
}

int Print(const char* text) try {
    gif89::WriteToStandardOutput(text);
    return 0;
} catch (const gif89::Problem& problem) {
    std::fprintf(stderr, "gif89-desktop: %s\n", problem.what());
    return problem.Code();
}

} // namespace

int main(int argc, char** argv) {
    gif89::OccupyStandardStreams();
    std::string platformOption = "-platform", platforms = WantedPlatforms();
    std::vector<char*> arguments = {argv[0], platformOption.data(), platforms.data()};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    arguments.push_back(nullptr);
    int count = static_cast<int>(arguments.size()) - 1;

    const Call early = ReadCall(argc, argv); // also where there is no display
    if (early.help) return Print(kHelp);
    if (early.version) return Print("gif89-desktop " GIF89_VERSION "\n");

    QApplication application(count, arguments.data()); // takes the toolkit's own options out
    // The toolkit takes the user's locale for everything. Numbers in reports have points, and while
    // our texts are English only, the system's reasons and the toolkit's texts are, too.
    for (const int category : {LC_NUMERIC, LC_MESSAGES, LC_TIME}) std::setlocale(category, "C");
    QLocale::setDefault(QLocale(QLocale::English));
    const Call call = ReadCall(count, arguments.data());
    if (!call.wrongOption.empty()) {
        std::fprintf(stderr, "gif89-desktop: unknown option %s\n%s",
                     gif89::TerminalText(call.wrongOption).c_str(), kHelp);
        return 2;
    }
    if (QGuiApplication::platformName() == QLatin1String(kNoScreen) &&
        platforms.rfind(kNoScreen, 0) != 0) {
        std::fputs("gif89-desktop: there is no display to open windows on\n", stderr);
        return 1;
    }

    DescribeProgram();
    gif89::HandleSignalsWhileSaving();
    gif89::MainWindow window;
    window.show();
    window.activateWindow();
    window.OpenAll(call.files);
    return QApplication::exec();
}
