// Small things that the dialogs share: where an item lies and what draws it, pens that are put
// back, colours and areas of one colour.
#pragma once

#include "ColorTable.h"
#include "DialogManager.h"

/// Local coordinates; empty when there is no such item.
Rect ItemRect(DialogPtr dialog, short item);

/// Has an item drawn by `draw`.
void SetDrawProcedure(DialogPtr dialog, short item, UserItemProc draw);

/// Titles the Cancel button, which puts everything back while the option key is down.
void ShowCancelTitle(DialogPtr dialog, bool optionDown);

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

/// A colour with its channels times 257, which keeps the ends of the range.
constexpr RGBColor WidenToWords(RGBtuple color) {
    const auto widen = [](std::uint8_t level) { return static_cast<std::uint16_t>(level * 257); };
    return {widen(color.red), widen(color.green), widen(color.blue)};
}

constexpr RGBtuple TakeHighBytes(const RGBColor& color) {
    const auto level = [](std::uint16_t word) { return static_cast<std::uint8_t>(word >> 8); };
    return {0, level(color.red), level(color.green), level(color.blue)};
}

/// Fills an area with one colour; without memory for the pattern it is left as it is.
void FillWithColor(const Rect& rect, const RGBColor& color);
