#include "FileDialogs.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QMessageBox>
#include <QSortFilterProxyModel>

#include <algorithm>

namespace {

QString ToQString(ConstStr255Param text) {
    return QString::fromUtf8(reinterpret_cast<const char*>(text + 1), text[0]);
}

FSSpec SpecOf(const QString& path, OSErr* error) {
    FSSpec spec;
    *error = PathToFSSpec(QFile::encodeName(path).toStdString(), &spec);
    return spec;
}

// What the catalogue knows of a file; `name` receives its name, which the record points at.
OSErr Describe(const FSSpec& spec, Str63 name, CInfoPBRec* info) {
    std::copy(std::begin(spec.name), std::end(spec.name), name);
    info->ioNamePtr = name;
    info->ioVRefNum = spec.vRefNum;
    info->ioDirID = spec.parID;
    return PBGetCatInfoSync(info);
}

/// Shows folders, and the files that the module's filter leaves.
class FilteredFiles : public QSortFilterProxyModel {
  public:
    FilteredFiles(FileFilterProc theFilter, QObject* parent)
        : QSortFilterProxyModel(parent), filter(theFilter) {}

    // The files' own model knows that folders come first and sizes are numbers.
    void sort(int column, Qt::SortOrder order) override { sourceModel()->sort(column, order); }

  protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override {
        const auto& files = *qobject_cast<QFileSystemModel*>(sourceModel());
        const QModelIndex index = files.index(row, 0, parent);
        if (files.isDir(index)) return true;
        OSErr error = noErr;
        const FSSpec spec = SpecOf(files.filePath(index), &error);
        Str63 name;
        CInfoPBRec info;
        return error == noErr && Describe(spec, name, &info) == noErr && !filter(&info);
    }

  private:
    FileFilterProc filter;
};

// `path` is the name proposed, may be empty, and then the file chosen.
bool Run(QFileDialog& dialog, QString* folder, QString* path) {
    dialog.setOption(QFileDialog::DontUseNativeDialog); // one look, and one that takes our filter
    dialog.setDirectory(folder->isEmpty() ? QDir::currentPath() : *folder);
    if (!path->isEmpty()) dialog.selectFile(*path);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return false;
    *path = dialog.selectedFiles().constFirst();
    *folder = QFileInfo(*path).absolutePath();
    return true;
}

void Warn(const QString& sentence) {
    QMessageBox box(QMessageBox::Warning, QString(), sentence, QMessageBox::Ok,
                    QApplication::activeWindow());
    box.setTextFormat(Qt::PlainText); // it names a file
    box.exec();
}

// Fills the reply, or tells the user why the file cannot be had.
bool Accept(const QString& path, StandardFileReply* reply) {
    OSErr error = noErr;
    const FSSpec spec = SpecOf(path, &error);
    if (error != noErr) {
        Warn(QStringLiteral("No file can be called \"%1\" there.").arg(path));
        return false;
    }
    reply->sfFile = spec;
    reply->sfGood = 1;
    return true;
}

// The same for a file to be opened, which the filter must leave: names can be typed, too.
bool AcceptOffered(FileFilterProc filter, const QString& path, StandardFileReply* reply) {
    if (!Accept(path, reply)) return false;
    Str63 name;
    CInfoPBRec info;
    if (Describe(reply->sfFile, name, &info) == noErr && (!filter || !filter(&info))) {
        reply->sfType = info.fdType;
        return true;
    }
    *reply = StandardFileReply();
    Warn(QStringLiteral("\"%1\" is no file of the kind that is asked for here.")
             .arg(QFileInfo(path).fileName()));
    return false;
}

} // namespace

void FileDialogs::PutFile(ConstStr255Param prompt, ConstStr255Param defaultName,
                          StandardFileReply* reply) {
    QString path = ToQString(defaultName);
    do {
        QFileDialog dialog(QApplication::activeWindow(), ToQString(prompt));
        dialog.setAcceptMode(QFileDialog::AcceptSave); // asks before it replaces
        dialog.setFileMode(QFileDialog::AnyFile);
        if (!Run(dialog, &folder, &path)) return;
    } while (!Accept(path, reply));
    reply->sfReplacing = QFileInfo::exists(path);
}

void FileDialogs::GetFile(FileFilterProc filter, StandardFileReply* reply) {
    QString path;
    do {
        QFileDialog dialog(QApplication::activeWindow(), QStringLiteral("Open"));
        dialog.setFileMode(QFileDialog::ExistingFile);
        if (filter) dialog.setProxyModel(new FilteredFiles(filter, &dialog));
        if (!Run(dialog, &folder, &path)) return;
    } while (!AcceptOffered(filter, path, reply));
}
