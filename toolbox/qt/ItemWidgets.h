// The native widgets of a dialog's items, kept in step with the records.
#pragma once

#include "Accessibility.h"
#include "Postings.h"

/// Makes the widget of an item: buttons, check boxes, pop-ups, edit and static texts; an invisible
/// stand-in for items that are drawn; null for groups and kinds that show nothing. It belongs to
/// `parent` and reports to `postings` what the user does with it.
QWidget* MakeItemWidget(DialogPtr dialog, short item, QWidget* parent, Postings& postings);

/// Shows what has changed in the record; focus is not a widget's own affair.
void UpdateItemWidget(DialogPtr dialog, short item, QWidget* widget, ItemChange change);

/// True for widgets that the user operates, as against texts and stand-ins.
bool IsNativeControl(const QWidget* widget);
/// True for keys that a button, check box or pop-up is operated with; modules do not get to see
/// them, or such items could not be used without a mouse.
bool OperatesControl(const QWidget* widget, int key);
