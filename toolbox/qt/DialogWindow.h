// The window of one dialog: a canvas with the native widgets of its items on it.
#pragma once

#include "Canvas.h"
#include "Postings.h"

#include <QDialog>

#include <vector>

class DialogWindow : public QDialog {
  public:
    /// Gives the dialog its surface. The record must outlive the window.
    DialogWindow(DialogPtr dialog, Postings& postings);
    ~DialogWindow() override;

    /// Makes the widgets, and shows the window in the middle of `parent`, or of the screen.
    void Present(QWindow* parent);
    void Update(short item, ItemChange change);
    /// The drawn part's cursor; null is the arrow. Widgets keep theirs.
    void ShowCursor(const Cursor* cursor);

    DialogPtr Dialog() const { return dialog; }
    bool HasContentAt(QPoint global) const;
    /// Writes to the record where the window lies.
    void UpdateOrigin();

    /// Closing the window presses the cancel item; the module then closes the dialog.
    void reject() override;

  private:
    QPoint PlaceOver(const QWindow* parent) const;
    void MakeWidgets();
    void GiveKeys();
    void UpdateFocus(short item);

    DialogPtr dialog;
    Postings& postings;
    Canvas* canvas;
    std::vector<QWidget*> widgets; ///< by item number less one; null where there is none
};
