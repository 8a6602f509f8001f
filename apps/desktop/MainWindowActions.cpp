// What the window is made of: pages, menus, tools and the line at its bottom.
#include "CompareView.h"
#include "MainWindow.h"
#include "RecentFiles.h"
#include "ReportPanel.h"
#include "StatusText.h"

#include <QActionGroup>
#include <QApplication>
#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QStandardItemModel>
#include <QStatusBar>
#include <QToolBar>

namespace gif89 {
namespace {

constexpr struct {
    Mode mode;
    const char* name;
    const char* hint;
} kModes[] = {
    {Mode::automatic, QT_TRANSLATE_NOOP("MainWindow", "&Automatic"),
     QT_TRANSLATE_NOOP("MainWindow", "Keeps the pixels where the colours fit a table, else reduces "
                                     "them")},
    {Mode::rgb, QT_TRANSLATE_NOOP("MainWindow", "&True Colour"),
     QT_TRANSLATE_NOOP("MainWindow", "Chooses the colours anew, also of a picture with a table")},
    {Mode::indexed, QT_TRANSLATE_NOOP("MainWindow", "&Indexed"),
     QT_TRANSLATE_NOOP("MainWindow", "Keeps the picture's own table")},
};

// A theme may name an icon that the toolkit cannot draw; a text serves better than nothing.
QIcon ThemeIcon(const char* name) {
    const QIcon icon = QIcon::fromTheme(QLatin1String(name));
    return icon.isNull() || icon.pixmap(16, 16).isNull() ? QIcon() : icon;
}

QString WithoutMnemonic(QString text) {
    return text.remove(u'&');
}

} // namespace

void MainWindow::MakePages() {
    message = new MessageBar;
    startPage = MakeStartPage();
    pictureView = new PictureView(view);
    compareView = new CompareView(view);
    reportPanel = new ReportPanel;
    connect(reportPanel, &ReportPanel::CopyPathWanted, this, &MainWindow::CopyResultPath);
    connect(reportPanel, &ReportPanel::ShowFolderWanted, this, &MainWindow::ShowResultFolder);

    resultPage = new QWidget;
    auto* beside = new QHBoxLayout(resultPage);
    beside->setContentsMargins(0, 0, 0, 0);
    beside->setSpacing(0);
    beside->addWidget(compareView, 1);
    beside->addWidget(reportPanel);

    pages = new QStackedWidget;
    for (QWidget* page : {startPage, static_cast<QWidget*>(pictureView), resultPage})
        pages->addWidget(page);
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(message);
    column->addWidget(pages, 1);
    setCentralWidget(content);
    for (PictureView* each : findChildren<PictureView*>())
        connect(each, &PictureView::Resized, this, &MainWindow::UpdateZoom);
}

QWidget* MainWindow::MakeStartPage() {
    auto* page = new QWidget;
    auto* title = new QLabel(tr("Drop a picture here"));
    QFont large = title->font();
    large.setPointSizeF(large.pointSizeF() * 1.8);
    title->setFont(large);
    auto* formats = new QLabel(tr("PNG, JPEG, WebP, TIFF, GIF, BMP, PNM or PAM"));
    auto* open = new QPushButton(tr("Open Picture…"));
    open->setMinimumSize(open->sizeHint() + QSize(24, 8));
    connect(open, &QPushButton::clicked, this, &MainWindow::AskForFiles);
    auto* column = new QVBoxLayout(page);
    column->setSpacing(12);
    column->addStretch(2);
    column->addWidget(title, 0, Qt::AlignCenter);
    column->addWidget(formats, 0, Qt::AlignCenter);
    column->addWidget(open, 0, Qt::AlignCenter);
    column->addStretch(3);
    return page;
}

QAction* MainWindow::AddAction(QMenu* menu, const QString& text, const char* icon,
                               const QList<QKeySequence>& keys, const std::function<void()>& act) {
    auto* action = new QAction(text, this);
    if (icon) action->setIcon(ThemeIcon(icon));
    action->setShortcuts(keys);
    connect(action, &QAction::triggered, this, [act] { act(); });
    menu->addAction(action);
    return action;
}

void MainWindow::MakeActions() {
    MakeFileMenu();
    MakeEditMenu();
    MakeViewMenu();
    MakeHelpMenu();
    MakeToolBar();
}

void MainWindow::MakeFileMenu() {
    QMenu* menu = menuBar()->addMenu(tr("&File"));
    openAction = AddAction(menu, tr("&Open…"), "document-open", {QKeySequence::Open},
                           [this] { AskForFiles(); });
    recentMenu = menu->addMenu(tr("Open &Recent"));
    connect(menu, &QMenu::aboutToShow, this, &MainWindow::ListRecentFiles);
    reloadAction = AddAction(menu, tr("Re&load"), "view-refresh",
                             {QKeySequence(Qt::Key_F5), QKeySequence(Qt::CTRL | Qt::Key_R)},
                             [this] { Reload(); });
    menu->addSeparator();
    exportAction =
        AddAction(menu, tr("&Export As…"), "document-save-as",
                  {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E)}, [this] { ExportAs(); });
    againAction = AddAction(menu, tr("Export A&gain"), "document-save",
                            {QKeySequence(Qt::CTRL | Qt::Key_E)}, [this] { ExportAgain(); });
    againAction->setToolTip(tr("Export once more with the same choices, without asking"));
    QMenu* ways = menu->addMenu(tr("Export Rou&te"));
    modeActions = new QActionGroup(this);
    for (const auto& each : kModes) {
        QAction* action = AddAction(ways, tr(each.name), nullptr, {},
                                    [this, wanted = each.mode] { SetMode(wanted); });
        action->setCheckable(true);
        action->setChecked(each.mode == mode);
        action->setStatusTip(tr(each.hint));
        modeActions->addAction(action);
    }
    menu->addSeparator();
    AddAction(menu, tr("&Close"), "window-close", {QKeySequence::Close}, [this] { close(); });
    AddAction(menu, tr("&Quit"), "application-exit", {QKeySequence(Qt::CTRL | Qt::Key_Q)},
              [] { QApplication::closeAllWindows(); });
}

void MainWindow::ListRecentFiles() {
    recentMenu->clear();
    const std::vector<std::string> paths = RecentFiles();
    for (const std::string& path : paths) {
        QString text = FileText(path);
        QAction* action =
            recentMenu->addAction(FileNameText(path).replace(u'&', QStringLiteral("&&")));
        action->setStatusTip(text);
        action->setToolTip(text);
        connect(action, &QAction::triggered, this, [this, path] { Open(path); });
    }
    recentMenu->setEnabled(!paths.empty());
    recentMenu->addSeparator();
    connect(recentMenu->addAction(tr("&Clear List")), &QAction::triggered, this, ForgetFiles);
}

void MainWindow::MakeEditMenu() {
    QMenu* menu = menuBar()->addMenu(tr("&Edit"));
    pasteAction = AddAction(menu, tr("&Paste Picture"), "edit-paste", {QKeySequence::Paste},
                            [this] { Paste(); });
    menu->addSeparator();
    copyPathAction =
        AddAction(menu, tr("&Copy Path of the Result"), "edit-copy",
                  {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C)}, [this] { CopyResultPath(); });
    folderAction = AddAction(menu, tr("Show Result in &Folder"), "folder-open", {},
                             [this] { ShowResultFolder(); });
}

void MainWindow::MakeViewMenu() {
    QMenu* menu = menuBar()->addMenu(tr("&View"));
    zoomInAction = AddAction(menu, tr("Zoom &In"), "zoom-in",
                             {QKeySequence(Qt::CTRL | Qt::Key_Plus),
                              QKeySequence(Qt::CTRL | Qt::Key_Equal), QKeySequence(Qt::Key_Plus)},
                             [this] { CurrentView().ZoomBy(1); });
    zoomOutAction = AddAction(menu, tr("Zoom &Out"), "zoom-out",
                              {QKeySequence(Qt::CTRL | Qt::Key_Minus), QKeySequence(Qt::Key_Minus)},
                              [this] { CurrentView().ZoomBy(-1); });
    wholeAction =
        AddAction(menu, tr("&Actual Pixels"), "zoom-original", {QKeySequence(Qt::CTRL | Qt::Key_1)},
                  [this] { CurrentView().ZoomTo(1); });
    fitAction = AddAction(menu, tr("&Fit"), "zoom-fit-best", {QKeySequence(Qt::CTRL | Qt::Key_0)},
                          [this] { view.Fit(); });
    menu->addSeparator();
    showPictureAction =
        AddAction(menu, tr("&Picture"), nullptr, {QKeySequence(Qt::CTRL | Qt::Key_2)}, [this] {
            ShowPage(pictureView);
            pictureView->setFocus();
        });
    showResultAction = AddAction(menu, tr("&Result and Report"), nullptr,
                                 {QKeySequence(Qt::CTRL | Qt::Key_3)}, [this] {
                                     ShowPage(resultPage);
                                     compareView->View().setFocus();
                                 });
    auto* page = new QActionGroup(this);
    for (QAction* action : {showPictureAction, showResultAction}) {
        action->setCheckable(true);
        page->addAction(action);
    }
    menu->addSeparator();
    sideBySideAction = AddAction(menu, tr("&Side by Side"), "view-split-left-right",
                                 {QKeySequence(Qt::Key_S)}, [this] {
                                     compareView->SetSideBySide(sideBySideAction->isChecked());
                                     UpdateActions();
                                     UpdateZoom();
                                 });
    flipAction = AddAction(menu, tr("Show the &Original"), "object-flip-horizontal",
                           {QKeySequence(Qt::Key_X)},
                           [this] { compareView->SetResultInFront(!flipAction->isChecked()); });
    flipAction->setToolTip(tr("Flip between the result and the original in one view (X)"));
    highlightAction =
        AddAction(menu, tr("&Mark Changed Pixels"), "document-edit", {QKeySequence(Qt::Key_D)},
                  [this] { compareView->SetHighlight(highlightAction->isChecked()); });
    for (QAction* action : {sideBySideAction, flipAction, highlightAction})
        action->setCheckable(true);
    sideBySideAction->setChecked(true);
    compareView->AddTools({sideBySideAction, flipAction, highlightAction});
    zoomInAction->setIconText(QStringLiteral("+"));
    zoomOutAction->setIconText(QStringLiteral("−"));
    wholeAction->setIconText(QStringLiteral("1:1"));
}

void MainWindow::MakeHelpMenu() {
    QMenu* menu = menuBar()->addMenu(tr("&Help"));
    AddAction(menu, tr("About the Export &Module…"), nullptr, {}, [this] {
        try {
            ShowModuleAbout();
        } catch (const std::exception& problem) {
            Complain(tr("Export module"), problem.what());
        }
    });
    AddAction(menu, tr("&About GIF89 Export…"), "help-about", {}, [this] { ShowAbout(); });
}

void MainWindow::MakeToolBar() {
    QToolBar* bar = addToolBar(tr("Tools"));
    bar->setObjectName(QStringLiteral("tools"));
    bar->setMovable(false);
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->addAction(openAction);
    bar->addAction(exportAction);
    bar->addAction(againAction);
    bar->addSeparator();
    for (QAction* action : {zoomOutAction, zoomInAction, wholeAction, fitAction})
        bar->addAction(action);

    auto* room = new QWidget;
    room->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    bar->addWidget(room);
    auto* label = new QLabel(tr("Route: "));
    modeBox = new QComboBox;
    modeBox->setAccessibleName(tr("Export route"));
    modeBox->setFocusPolicy(Qt::TabFocus);
    for (const auto& each : kModes) {
        modeBox->addItem(WithoutMnemonic(tr(each.name)));
        modeBox->setItemData(modeBox->count() - 1, tr(each.hint), Qt::ToolTipRole);
    }
    connect(modeBox, &QComboBox::activated, this,
            [this](int index) { SetMode(kModes[index].mode); });
    label->setBuddy(modeBox);
    bar->addWidget(label);
    bar->addWidget(modeBox);
}

void MainWindow::SetMode(Mode wanted) {
    mode = wanted;
    for (int i = 0; i < static_cast<int>(std::size(kModes)); ++i) {
        if (kModes[i].mode != wanted) continue;
        modeBox->setCurrentIndex(i);
        modeActions->actions().at(i)->setChecked(true);
    }
}

// The picture's own table is no route for a picture that does not fit one.
void MainWindow::UpdateModes() {
    const bool fits = !document || document->fitsTable;
    auto* const list = qobject_cast<QStandardItemModel*>(modeBox->model());
    for (int i = 0; i < static_cast<int>(std::size(kModes)); ++i) {
        const bool possible = fits || kModes[i].mode != Mode::indexed;
        modeActions->actions().at(i)->setEnabled(possible);
        list->item(i)->setEnabled(possible);
    }
}

void MainWindow::MakeStatusBar() {
    facts = new QLabel;
    facts->setContentsMargins(6, 0, 0, 0);
    zoomLabel = new QLabel;
    busy = new QProgressBar;
    busy->setRange(0, 0); // goes to and fro
    busy->setFixedWidth(120);
    busy->setTextVisible(false);
    busy->setAccessibleName(tr("Opening"));
    busy->hide();
    statusBar()->addWidget(facts, 1);
    statusBar()->addPermanentWidget(busy);
    statusBar()->addPermanentWidget(zoomLabel);
}

void MainWindow::UpdateActions() {
    const bool open = document != nullptr, done = result.has_value();
    UpdateModes();
    const bool comparing = done && pages->currentWidget() == resultPage;
    for (QAction* action : {openAction, pasteAction}) action->setEnabled(!exporting);
    reloadAction->setEnabled(open && !document->path.empty() && !exporting);
    exportAction->setEnabled(open && !exporting);
    againAction->setEnabled(open && wishes && !exporting);
    for (QAction* action : {zoomInAction, zoomOutAction, wholeAction, fitAction, showPictureAction})
        action->setEnabled(open);
    for (QAction* action : {copyPathAction, folderAction, showResultAction})
        action->setEnabled(done);
    for (QAction* action : {sideBySideAction, highlightAction}) action->setEnabled(comparing);
    flipAction->setEnabled(comparing && !sideBySideAction->isChecked());
    (comparing ? showResultAction : showPictureAction)->setChecked(open);
}

} // namespace gif89
