// The number of colours in the options dialog for RGB pictures: a text, a pop-up of usual counts
// beside it, and a label. All three are disabled while the palette fixes the count.
#pragma once

#include "DialogManager.h"
#include "GIF89RGBExport.h"

/// The count that SetColorDepthText reads from the text.
constexpr std::int32_t kTypedCount = -1;

/// The most colours that leave room for a transparent one: 255, or 256 without transparency.
std::int32_t LargestColorCount(const GIF89RGBExport& context);

/// Writes a count into the text, or with kTypedCount takes the one that is typed there, and chooses
/// its entry in the pop-up. A possible count that has none gets the entry for typed counts, which
/// is inserted at the top when it is needed first. While the text holds no possible count, no entry
/// is chosen.
void SetColorDepthText(DialogPtr dialog, GIF89RGBExport* context, std::int32_t count);

/// Shows the count that the dialog opens with when the palette does not fix one.
void ShowUsualCount(DialogPtr dialog, const GIF89RGBExport& context);
/// Lets the pop-up offer only what LargestColorCount allows.
void LimitPresets(DialogPtr dialog, const GIF89RGBExport& context);
/// Copies the chosen entry of the pop-up into the text and selects it.
void TakePreset(DialogPtr dialog);

/// Enables or disables text, pop-up and label.
void EnableCountControls(DialogPtr dialog, bool enable);
/// Enables or disables the text, and with it its text edit.
void EnableColorDepthText(DialogPtr dialog);
void DisableColorDepthText(DialogPtr dialog);

/// A label is followed by a blank one in its place, which is enabled while the label is not and so
/// keeps presses there from being taken for the label's.
void GrayText(DialogPtr dialog, short item);
void UnGrayText(DialogPtr dialog, short item);
