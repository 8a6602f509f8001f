// The picture and what became of it: side by side or in one place, with the pixels that differ
// marked when wanted.
#pragma once

#include "PictureView.h"

#include <memory>

class QLabel;
class QToolBar;

namespace gif89 {

class CompareView : public QWidget {
  public:
    CompareView(ViewState& state, QWidget* parent = nullptr);

    /// Puts buttons above the pictures.
    void AddTools(const QList<QAction*>& actions);

    /// Shows two images of one size; `original` must stay as it is while it is shown.
    void Show(const QImage& originalPixels, const ShownImage* original, const QImage& result);
    void Clear();

    /// Both beside one another, or one of them at a time.
    void SetSideBySide(bool both);
    /// Which one is seen when there is one.
    void SetResultInFront(bool inFront);
    /// Marks in the result what differs from the original.
    void SetHighlight(bool on);

    /// The view that zooming by menu and keys is about.
    PictureView& View() { return originalSide->isVisible() ? *originalView : *resultView; }

  private:
    QWidget* MakeSide(const QString& title, PictureView*& view, QLabel*& label);
    void Arrange();
    void UpdateResult();

    QToolBar* tools;
    PictureView* originalView;
    PictureView* resultView;
    QLabel* originalLabel;
    QLabel* resultLabel;
    QWidget* originalSide;
    QWidget* resultSide;
    QImage before, after;
    ShownImage resultImage;
    std::unique_ptr<ShownImage> marked; ///< made when first wanted
    bool sideBySide = true;
    bool resultInFront = true;
    bool highlight = false;
};

} // namespace gif89
