#include "MainWindow.h"

#include "CompareView.h"
#include "CountColors.h"
#include "Problem.h"
#include "RecentFiles.h"
#include "ReportPanel.h"
#include "StatusText.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressBar>
#include <QSettings>
#include <QStackedWidget>
#include <QStandardPaths>
#include <QStatusBar>
#include <QUrl>

#include <filesystem>
#include <new>

namespace gif89 {
namespace {

constexpr std::size_t kMostWindows = 12; // that one call opens
constexpr int kShortWhile = 5000;        // milliseconds that a remark stays

const QString kGeometryKey = QStringLiteral("geometry"), kFolderKey = QStringLiteral("folder");

// The name's own bytes, which a text would not keep.
std::string PathOf(const QUrl& url) {
    return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString();
}

std::vector<std::string> LocalFiles(const QMimeData& offer) {
    std::vector<std::string> paths;
    for (const QUrl& url : offer.urls())
        if (url.isLocalFile()) paths.push_back(PathOf(url));
    return paths;
}

QString PicturesFolder() {
    const QString usual = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return QFileInfo(usual).isDir() ? usual : QDir::homePath();
}

QString OpenFilter() {
    return MainWindow::tr("Pictures (*.png *.jpg *.jpeg *.jpe *.webp *.tif *.tiff *.gif *.bmp "
                          "*.dib *.pbm *.pgm *.ppm *.pnm *.pam);;"
                          "PNG (*.png);;JPEG (*.jpg *.jpeg *.jpe);;WebP (*.webp);;"
                          "TIFF (*.tif *.tiff);;GIF (*.gif);;BMP (*.bmp *.dib);;"
                          "Portable pictures (*.pbm *.pgm *.ppm *.pnm *.pam);;All files (*)");
}

QString NameOf(const Document& document) {
    return document.path.empty() ? FileText(document.name) : FileNameText(document.path);
}

/// Shows the waiting cursor from Start to its end.
class WaitCursor {
  public:
    WaitCursor() = default;
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
    ~WaitCursor() {
        if (waiting) QApplication::restoreOverrideCursor();
    }
    void Start() {
        if (!waiting) QApplication::setOverrideCursor(Qt::WaitCursor);
        waiting = true;
    }

  private:
    bool waiting = false;
};

} // namespace

MainWindow::MainWindow() : reader(this, [this](const ReadResult& read) { TakeDocument(read); }) {
    setAcceptDrops(true);
    MakePages();
    MakeActions();
    MakeStatusBar();
    connect(&view, &ViewState::Changed, this, &MainWindow::UpdateZoom);
    resize(1000, 680);
    restoreGeometry(QSettings().value(kGeometryKey).toByteArray());
    ShowPage(startPage);
}

MainWindow::~MainWindow() {
    disconnect(&view, nullptr, this, nullptr);
}

// Opening

void MainWindow::AskForFiles() {
    QString folder = QSettings().value(kFolderKey).toString();
    if (document && !document->path.empty())
        folder = QFileInfo(FileText(document->path)).absolutePath();
    const QStringList files = QFileDialog::getOpenFileNames(
        this, tr("Open Picture"), folder.isEmpty() ? PicturesFolder() : folder, OpenFilter());
    std::vector<std::string> paths;
    for (const QString& file : files) paths.push_back(QFile::encodeName(file).toStdString());
    OpenAll(paths);
}

void MainWindow::OpenAll(const std::vector<std::string>& paths) {
    if (paths.empty()) return;
    Open(paths.front());
    for (std::size_t i = 1; i < std::min(paths.size(), kMostWindows); ++i) {
        auto* window = new MainWindow;
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->show();
        window->Open(paths[i]);
    }
    if (paths.size() > kMostWindows)
        message->Say(MessageBar::Kind::note, tr("Only the first %1 of %2 pictures were opened. For "
                                                "many pictures there is the command gif89.")
                                                 .arg(kMostWindows)
                                                 .arg(paths.size()));
}

void MainWindow::Open(const std::string& path) {
    message->hide();
    reading = path;
    try {
        reader.Read(path);
    } catch (const std::exception& problem) {
        reading.clear();
        return Complain(FileNameText(path), problem.what());
    }
    busy->show();
    statusBar()->showMessage(tr("Opening %1…").arg(FileNameText(path)));
}

void MainWindow::TakeDocument(const ReadResult& read) {
    const std::string path = std::exchange(reading, {});
    busy->hide();
    statusBar()->clearMessage();
    if (!read.document) return Complain(FileNameText(path), read.reason);
    RememberFile(path);
    QSettings().setValue(kFolderKey, QFileInfo(FileText(path)).absolutePath());
    ShowDocument(read.document);
}

void MainWindow::OpenImage(const QImage& image, const QString& name) {
    message->hide();
    reader.Forget();
    busy->hide();
    try {
        ShowDocument(MakeDocument(PictureOf(image), QFile::encodeName(name).toStdString()));
    } catch (const std::bad_alloc&) {
        Complain(name, "needs more memory than there is");
    } catch (const std::exception& problem) {
        Complain(name, problem.what());
    }
}

void MainWindow::Reload() {
    if (document && !document->path.empty()) Open(document->path);
}

void MainWindow::ShowDocument(const DocumentPtr& next) {
    const bool same = document && !next->path.empty() && next->path == document->path;
    const bool sameSize = same && next->shown.Size() == document->shown.Size();
    compareView->Clear();
    result.reset();
    if (!same) target.clear();
    document = next; // the views let go of the old one above and below
    pictureView->Show(&document->shown);
    if (!sameSize) view.SetPicture(document->shown.Size());
    if (!document->fitsTable && mode == Mode::indexed) SetMode(Mode::automatic);
    const QString name = NameOf(*document);
    setWindowTitle(tr("%1 — GIF89 Export").arg(name));
    pictureView->setAccessibleName(name);
    ShowPage(pictureView);
    pictureView->setFocus();
}

// Dropping and pasting

bool MainWindow::TakesData(const QMimeData& offer) const {
    return !exporting && (offer.hasImage() || !LocalFiles(offer).empty());
}

// A file that is dragged may come with its pixels as well; the file says more.
void MainWindow::TakeData(const QMimeData& offer) {
    const std::vector<std::string> files = LocalFiles(offer);
    if (!files.empty()) return OpenAll(files);
    const QImage image = qvariant_cast<QImage>(offer.imageData());
    if (!image.isNull()) return OpenImage(image, tr("Pasted"));
    message->Say(MessageBar::Kind::note, tr("There is no picture in the clipboard."));
}

// Always as a copy: the source of a move may delete its file, of which we keep none.
bool MainWindow::AcceptDrop(QDropEvent* event) const {
    if (!TakesData(*event->mimeData())) return false;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    return true;
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    AcceptDrop(event);
}

void MainWindow::dragMoveEvent(QDragMoveEvent* event) {
    AcceptDrop(event);
}

void MainWindow::dropEvent(QDropEvent* event) {
    if (AcceptDrop(event)) TakeData(*event->mimeData());
}

void MainWindow::Paste() {
    if (const QMimeData* offer = QApplication::clipboard()->mimeData()) TakeData(*offer);
}

// Exporting

std::optional<std::string> MainWindow::AskForTarget() {
    const QString folder = QSettings().value(kFolderKey, PicturesFolder()).toString();
    const std::string proposed =
        target.empty()
            ? ProposeTarget(document->path, document->name, QFile::encodeName(folder).toStdString())
            : target;
    QFileDialog dialog(this, tr("Export As GIF"));
    dialog.setAcceptMode(QFileDialog::AcceptSave); // asks before it replaces
    dialog.setNameFilters({tr("GIF pictures (*.gif)"), tr("All files (*)")});
    dialog.setDefaultSuffix(QStringLiteral("gif"));
    const QFileInfo place(QFile::decodeName(QByteArray::fromStdString(proposed)));
    dialog.setDirectory(place.absolutePath());
    dialog.selectFile(place.fileName());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
    return QFile::encodeName(dialog.selectedFiles().constFirst()).toStdString();
}

void MainWindow::ExportAs() {
    if (!document || exporting) return;
    if (const auto chosen = AskForTarget()) ExportTo(*chosen, Choosing::inDialogs);
}

// The file is known when this very picture was exported before; the wishes also hold for others,
// as far as they fit them, which is looked at before the user is asked for a file.
void MainWindow::ExportAgain() {
    if (!document || exporting) return;
    if (!wishes) return ExportAs();
    if (!target.empty()) {
        ExportTo(target, Choosing::asBefore);
        return;
    }
    message->hide();
    if (!TryToExport(*document, [this] { CheckWishes(TaskFor(*document, {}), *wishes); })) return;
    if (const auto chosen = AskForTarget()) ExportTo(*chosen, Choosing::asBefore);
}

ExportTask MainWindow::TaskFor(const Document& exported, const std::string& path) const {
    return {exported.picture, exported.name, exported.path, mode, path, {}};
}

// Says what is wrong and of which file; the picture unless it is another.
bool MainWindow::TryToExport(const Document& exported, const std::function<void()>& act) {
    try {
        act();
        return true;
    } catch (const Problem& problem) {
        Complain(problem.File().empty() ? NameOf(exported) : FileNameText(problem.File()),
                 problem.what() + AdviceText(problem.Kind()).toStdString());
    } catch (const std::bad_alloc&) {
        Complain(NameOf(exported), "there is not enough memory for the export");
    } catch (const std::exception& problem) {
        Complain(NameOf(exported), problem.what());
    }
    return false;
}

bool MainWindow::ExportTo(const std::string& path, Choosing choosing) {
    if (!document || exporting) return false;
    message->hide();
    exporting = true;
    UpdateActions();
    const DocumentPtr exported = document; // stays whatever happens while dialogs are open
    std::optional<Exported> done;
    WaitCursor wait;
    ExportTask task = TaskFor(*exported, path);
    task.working = [&wait] { wait.Start(); };
    TryToExport(*exported, [&] {
        if (choosing == Choosing::inDialogs)
            done = ExportWithDialogs(task);
        else
            done = Exported{ExportWithWishes(task, *wishes), *wishes};
        if (!done) statusBar()->showMessage(tr("Export cancelled"), kShortWhile);
    });
    exporting = false;
    activateWindow(); // where no window manager gives it the keys back
    if (done) {
        wishes = std::move(done->wishes);
        if (document == exported) {
            target = path;
            ShowResult(std::move(done->saved));
        }
    }
    UpdateActions();
    return done.has_value();
}

void MainWindow::ShowResult(SavedGif saved) {
    try {
        compareView->Show(document->image, &document->shown, ImageOf(saved.gif));
    } catch (const std::exception& problem) {
        return Complain(FileNameText(saved.path),
                        std::string("was written, but ") + problem.what());
    }
    reportPanel->Show(saved.report, saved.path);
    statusBar()->showMessage(tr("Saved as %1").arg(FileText(saved.path)), kShortWhile);
    result = std::move(saved);
    ShowPage(resultPage);
    compareView->View().setFocus();
}

void MainWindow::CopyResultPath() {
    if (!result) return;
    QApplication::clipboard()->setText(FileText(result->path));
    statusBar()->showMessage(tr("The path is in the clipboard"), kShortWhile);
}

void MainWindow::ShowResultFolder() {
    if (!result) return;
    const QString folder = QFileInfo(FileText(result->path)).absolutePath();
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(folder)))
        message->Say(MessageBar::Kind::warning,
                     tr("No program could be started to show the folder %1").arg(folder));
}

void MainWindow::ShowAbout() {
    QMessageBox::about(this, tr("About GIF89 Export"),
                       tr("<b>GIF89 Export %1</b><p>Saves pictures as GIF89a files, keeps every "
                          "pixel it can, and says what it could not keep.")
                           .arg(QStringLiteral(GIF89_VERSION)));
}

// The window

void MainWindow::Complain(const QString& subject, const std::string& reason) {
    message->Say(MessageBar::Kind::error,
                 tr("%1: %2").arg(subject, QString::fromStdString(reason)));
}

PictureView& MainWindow::CurrentView() {
    return pages->currentWidget() == resultPage ? compareView->View() : *pictureView;
}

void MainWindow::ShowPage(QWidget* page) {
    pages->setCurrentWidget(page);
    UpdateActions();
    UpdateFacts();
    UpdateZoom();
}

void MainWindow::UpdateFacts() {
    if (!document) return facts->clear();
    const Picture& picture = document->picture;
    QStringList texts = {ModeText(picture),
                         SizeText(picture.columns, picture.rows),
                         ColorsText(CountColors(picture)),
                         ChannelsText(picture),
                         QString::fromStdString(picture.notes.format),
                         NotesText(picture.notes)};
    texts.removeAll(QString());
    facts->setText(texts.join(QStringLiteral("  ·  ")));
    facts->setToolTip(facts->text());
}

void MainWindow::UpdateZoom() {
    zoomLabel->setText(document ? ZoomText(CurrentView().Zoom()) : QString());
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (exporting) return event->ignore(); // the module's dialog is on its way
    QSettings().setValue(kGeometryKey, saveGeometry());
    event->accept();
}

} // namespace gif89
