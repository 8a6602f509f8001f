// The window: a picture is opened, looked at, exported, and compared with what became of it.
#pragma once

#include "Document.h"
#include "Exporter.h"
#include "MessageBar.h"
#include "ViewState.h"

#include <QMainWindow>

#include <functional>
#include <optional>

class QAction;
class QActionGroup;
class QComboBox;
class QLabel;
class QMenu;
class QMimeData;
class QProgressBar;
class QStackedWidget;

namespace gif89 {

class CompareView;
class PictureView;
class ReportPanel;

class MainWindow : public QMainWindow {
    Q_OBJECT
  public:
    MainWindow();
    ~MainWindow() override;

    /// Reads the file without holding the window up, and shows it or says why not.
    void Open(const std::string& path);
    /// The first one here, the others in windows of their own, which are gone when closed.
    void OpenAll(const std::vector<std::string>& paths);
    void OpenImage(const QImage& image, const QString& name);

    const Document* CurrentDocument() const { return document.get(); }
    const std::optional<SavedGif>& Result() const { return result; }
    QString Message() const { return message->Text(); }

    /// Exports to that file: with the dialogs, or with what was wished in the last export. True
    /// when it was written.
    enum class Choosing : bool { inDialogs, asBefore };
    bool ExportTo(const std::string& target, Choosing choosing);

  protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    // Building, in MainWindowActions.cpp
    void MakePages();
    void MakeActions();
    void MakeFileMenu();
    void MakeEditMenu();
    void MakeViewMenu();
    void MakeHelpMenu();
    void MakeToolBar();
    void MakeStatusBar();
    QWidget* MakeStartPage();
    QAction* AddAction(QMenu* menu, const QString& text, const char* icon,
                       const QList<QKeySequence>& keys, const std::function<void()>& act);

    // What menus and keys do
    void AskForFiles();
    void Paste();
    void Reload();
    void ExportAs();
    void ExportAgain();
    std::optional<std::string> AskForTarget();
    void SetMode(Mode wanted);
    void CopyResultPath();
    void ShowResultFolder();
    void ShowAbout();

    void TakeDocument(const ReadResult& read);
    void ShowDocument(const DocumentPtr& next);
    void ShowResult(SavedGif saved);
    void ShowPage(QWidget* page);
    void ListRecentFiles();
    void UpdateActions();
    void UpdateModes();
    void UpdateFacts();
    void UpdateZoom();
    bool TakesData(const QMimeData& offer) const;
    bool AcceptDrop(QDropEvent* event) const;
    void TakeData(const QMimeData& offer);
    void Complain(const QString& subject, const std::string& reason);
    ExportTask TaskFor(const Document& exported, const std::string& path) const;
    bool TryToExport(const Document& exported, const std::function<void()>& act);
    PictureView& CurrentView();

    DocumentPtr document;
    std::optional<SavedGif> result; ///< of this document
    std::optional<Wishes> wishes;   ///< of the last export, also of another document
    std::string target;             ///< of the last export of this document
    Mode mode = Mode::automatic;
    bool exporting = false;
    std::string reading; ///< the file that is being read

    ViewState view;
    BackgroundReader reader;

    MessageBar* message = nullptr;
    QStackedWidget* pages = nullptr;
    QWidget* startPage = nullptr;
    PictureView* pictureView = nullptr;
    QWidget* resultPage = nullptr;
    CompareView* compareView = nullptr;
    ReportPanel* reportPanel = nullptr;

    QMenu* recentMenu = nullptr;
    QActionGroup* modeActions = nullptr;
    QComboBox* modeBox = nullptr;
    QAction *openAction = nullptr, *reloadAction = nullptr, *exportAction = nullptr,
            *againAction = nullptr, *pasteAction = nullptr, *copyPathAction = nullptr,
            *folderAction = nullptr;
    QAction *zoomInAction = nullptr, *zoomOutAction = nullptr, *wholeAction = nullptr,
            *fitAction = nullptr;
    QAction *showPictureAction = nullptr, *showResultAction = nullptr, *sideBySideAction = nullptr,
            *flipAction = nullptr, *highlightAction = nullptr;

    QProgressBar* busy = nullptr;
    QLabel *facts = nullptr, *zoomLabel = nullptr;
};

} // namespace gif89
