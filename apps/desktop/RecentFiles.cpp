#include "RecentFiles.h"

#include <QSettings>
#include <QStringList>

#include <algorithm>
#include <filesystem>

namespace gif89 {
namespace {

const QString kKey = QStringLiteral("recentFiles");

// Settings are text, names are bytes.
QString Encode(const std::string& path) {
    return QString::fromLatin1(QByteArray::fromStdString(path).toPercentEncoding("/ "));
}

std::string Decode(const QString& text) {
    return QByteArray::fromPercentEncoding(text.toLatin1()).toStdString();
}

} // namespace

std::vector<std::string> RecentFiles() {
    std::vector<std::string> paths;
    for (const QString& text : QSettings().value(kKey).toStringList())
        if (paths.size() < kMostRecentFiles) paths.push_back(Decode(text));
    return paths;
}

void RememberFile(const std::string& path) {
    const std::string whole = std::filesystem::absolute(path).lexically_normal();
    std::vector<std::string> paths = RecentFiles();
    paths.erase(std::remove(paths.begin(), paths.end(), whole), paths.end());
    paths.insert(paths.begin(), whole);
    if (paths.size() > kMostRecentFiles) paths.resize(kMostRecentFiles);
    QStringList texts;
    for (const std::string& each : paths) texts << Encode(each);
    QSettings().setValue(kKey, texts);
}

void ForgetFiles() {
    QSettings().remove(kKey);
}

} // namespace gif89
