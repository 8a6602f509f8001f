// Names for people who do not see the dialog, and stand-ins that announce what is only drawn.
#pragma once

#include "DialogManager.h"

#include <QWidget>

/// What an item is called: its own text, else the label beside or above it, else its number.
QString AccessibleNameOf(const DialogRecord& dialog, short item);

/// Stands at a drawn item for assistive programs; invisible, and presses pass through it.
class DrawnItem : public QWidget {
  public:
    explicit DrawnItem(QWidget* parent);
};

/// Makes assistive programs see drawn items as graphics, and pop-ups with both their name and what
/// is chosen in them. Called once.
void InstallItemAccessibility();
