// Small things that the dialogs' draw procedures share: where an item lies, pens that are put back,
// areas of one colour.
#pragma once

#include "ColorTable.h"
#include "DialogManager.h"

/// Local coordinates; empty when there is no such item.
Rect ItemRect(DialogPtr dialog, short item);

/// `rect` with every side moved out by `distance` pixels.
Rect OutsetRect(Rect rect, short distance);

/// Draws with the usual pen and leaves the port's as it was.
class UsualPen {
  public:
    UsualPen() {
        GetPenState(&saved);
        PenNormal();
    }
    ~UsualPen() { SetPenState(&saved); }
    UsualPen(const UsualPen&) = delete;
    UsualPen& operator=(const UsualPen&) = delete;

  private:
    PenState saved;
};

/// Makes the dialog the port and puts the port before back.
class DialogAsPort {
  public:
    explicit DialogAsPort(DialogPtr dialog) {
        GetPort(&saved);
        SetPort(dialog);
    }
    DialogAsPort(const DialogAsPort&) = delete;
    DialogAsPort& operator=(const DialogAsPort&) = delete;
    ~DialogAsPort() { SetPort(saved); }

  private:
    GrafPtr saved = nullptr;
};

/// A colour with its channels times 256: screens show the high byte.
constexpr RGBColor WidenColor(RGBtuple color) {
    const auto widen = [](std::uint8_t level) { return static_cast<std::uint16_t>(level << 8); };
    return {widen(color.red), widen(color.green), widen(color.blue)};
}

/// Fills an area with one colour; without memory for the pattern it is left as it is.
void FillWithColor(const Rect& rect, const RGBColor& color);
