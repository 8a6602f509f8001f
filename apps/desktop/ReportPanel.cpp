#include "ReportPanel.h"

#include "StatusText.h"

#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>

namespace gif89 {
namespace {

constexpr int kPanelWidth = 300;

QLabel* MakeText(const QString& text = {}) {
    auto* label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

void SetLarger(QLabel* label) {
    QFont font = label->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.15);
    label->setFont(font);
}

// A sentence's first letter; labels and losses start small.
QString Capitalised(QString text) {
    if (!text.isEmpty()) text[0] = text[0].toUpper();
    return text;
}

} // namespace

ReportPanel::ReportPanel(QWidget* parent) : QScrollArea(parent) {
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFixedWidth(kPanelWidth);
    setAccessibleName(tr("Report of the export"));

    name = MakeText();
    verdict = MakeText();
    losses = MakeText();
    SetLarger(name);
    SetLarger(verdict);
    auto* copy = new QPushButton(tr("&Copy Path"));
    auto* folder = new QPushButton(tr("Show in &Folder"));
    connect(copy, &QPushButton::clicked, this, &ReportPanel::CopyPathWanted);
    connect(folder, &QPushButton::clicked, this, &ReportPanel::ShowFolderWanted);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(copy);
    buttons->addWidget(folder);
    buttons->addStretch();
    lines = new QGridLayout;
    lines->setColumnStretch(1, 1);
    lines->setHorizontalSpacing(10);
    lines->setVerticalSpacing(6);

    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(14, 10, 14, 10);
    column->setSpacing(10);
    column->addWidget(name);
    column->addWidget(verdict);
    column->addWidget(losses);
    column->addLayout(lines);
    column->addLayout(buttons);
    column->addStretch();
    setWidget(content);
}

void ReportPanel::Show(const ExportReport& report, const std::string& path) {
    const QString loss = Capitalised(QString::fromStdString(LossText(report)));
    lost = !report.Lossless();
    name->setText(FileNameText(path));
    name->setToolTip(FileText(path));
    verdict->setText(report.Lossless() ? tr("✓ Every pixel is kept") : tr("Something was lost"));
    losses->setText(loss);
    losses->setVisible(!loss.isEmpty());

    titles.clear();
    while (QLayoutItem* item = lines->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    int row = 0;
    for (const ReportLine& line : ReportLines(report)) {
        auto* title = MakeText(Capitalised(QString::fromStdString(line.label)));
        title->setWordWrap(false);
        titles.push_back(title);
        lines->addWidget(title, row, 0, Qt::AlignTop);
        lines->addWidget(MakeText(QString::fromStdString(line.text)), row++, 1);
    }
    Color();
    verticalScrollBar()->setValue(0);
}

// Green and amber that can be read on light and on dark windows; titles step back a little.
void ReportPanel::Color() {
    const QColor window = palette().color(QPalette::Window);
    const QColor ink = palette().color(QPalette::WindowText);
    const bool dark = window.lightness() < 128;
    const QColor good = dark ? QColor(0x7f, 0xd0, 0x8a) : QColor(0x1b, 0x6e, 0x2d);
    const QColor bad = dark ? QColor(0xff, 0xb8, 0x4d) : QColor(0x9a, 0x4b, 0x00);
    const auto mix = [](int a, int b) { return (2 * a + b) / 3; };
    const QColor paler(mix(ink.red(), window.red()), mix(ink.green(), window.green()),
                       mix(ink.blue(), window.blue()));
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, lost ? bad : good);
    verdict->setPalette(colors);
    colors.setColor(QPalette::WindowText, paler);
    for (QLabel* title : titles) title->setPalette(colors);
}

void ReportPanel::changeEvent(QEvent* event) {
    QScrollArea::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && widget()) Color();
}

} // namespace gif89
