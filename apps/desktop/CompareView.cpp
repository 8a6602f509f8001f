#include "CompareView.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolBar>
#include <QVBoxLayout>

namespace gif89 {

CompareView::CompareView(ViewState& state, QWidget* parent)
    : QWidget(parent), tools(new QToolBar), originalView(new PictureView(state)),
      resultView(new PictureView(state)) {
    originalSide = MakeSide(tr("Original"), originalView, originalLabel);
    resultSide = MakeSide(tr("Result"), resultView, resultLabel);
    tools->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    auto* sides = new QHBoxLayout;
    sides->setSpacing(2);
    sides->addWidget(originalSide, 1);
    sides->addWidget(resultSide, 1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(tools);
    column->addLayout(sides, 1);
    Arrange();
}

void CompareView::AddTools(const QList<QAction*>& actions) {
    tools->addActions(actions);
}

QWidget* CompareView::MakeSide(const QString& title, PictureView*& view, QLabel*& label) {
    auto* side = new QWidget;
    label = new QLabel(title);
    label->setAlignment(Qt::AlignCenter);
    label->setContentsMargins(4, 4, 4, 4);
    label->setBuddy(view);
    view->setAccessibleName(title);
    auto* column = new QVBoxLayout(side);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(label);
    column->addWidget(view, 1);
    return side;
}

void CompareView::Show(const QImage& originalPixels, const ShownImage* original,
                       const QImage& result) {
    Clear();
    before = originalPixels;
    after = result;
    resultImage = ShownImage(result);
    originalView->Show(original);
    UpdateResult();
}

void CompareView::Clear() {
    originalView->Show(nullptr);
    resultView->Show(nullptr);
    marked.reset();
    resultImage = {};
    before = after = QImage();
}

void CompareView::SetSideBySide(bool both) {
    sideBySide = both;
    Arrange();
}

void CompareView::SetResultInFront(bool inFront) {
    resultInFront = inFront;
    Arrange();
}

void CompareView::SetHighlight(bool on) {
    highlight = on;
    UpdateResult();
}

// The one that comes is shown before the other goes, so that the keys always have a home.
void CompareView::Arrange() {
    const bool keys = originalView->hasFocus() || resultView->hasFocus();
    originalSide->setVisible(sideBySide || !resultInFront);
    resultSide->setVisible(sideBySide || resultInFront);
    if (keys) View().setFocus();
}

void CompareView::UpdateResult() {
    if (resultImage.IsNull()) return;
    if (highlight && !marked) marked = std::make_unique<ShownImage>(DifferenceImage(before, after));
    resultView->Show(highlight ? marked.get() : &resultImage);
    resultLabel->setText(highlight ? tr("Result, changed pixels marked") : tr("Result"));
    resultView->setAccessibleName(resultLabel->text());
}

} // namespace gif89
