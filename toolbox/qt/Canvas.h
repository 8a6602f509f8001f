// The drawn part of a dialog: shapes go into a backing picture at once and to the screen from
// there.
#pragma once

#include "Surface.h"

#include <QImage>
#include <QWidget>

#include <functional>

/// The font behind a Toolbox font number and size, measured in pixels so that the layouts fit on
/// any screen. Size 0 is the usual one.
QFont FontFor(short font, short size);

/// Covers a dialog's window, under the native widgets. Shapes are placed in points; the backing has
/// as many pixels as the screen, so that they are sharp on a fine one.
///
/// Black and white follow the desktop's theme as ink and paper: text and frames in the colour of
/// window text, white and the background in the colour of windows, so that a dark theme shows
/// light lines on dark. Colours and images are exact.
class Canvas : public QWidget, public Surface {
  public:
    /// `drawAgain` is called when the backing was lost: a new theme or another screen.
    Canvas(QWidget* parent, QSize size, std::function<void()> drawAgain);

    void Fill(const Rect& rect, const Ink& ink) override;
    void Line(Point from, Point to, const Ink& ink) override;
    int Text(Point start, const std::string& text, short font, short size) override;
    void Metrics(short font, short size, short* ascent, short* descent, short* leading) override;
    void Image(const Rect& rect, const ColorPixels& pixels) override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void MakeBacking();
    void StartAgain();

    QImage backing;
    std::function<void()> drawAgain;
};
