// What of a picture can be seen through.
#pragma once

#include "Picture.h"

#include <vector>

namespace gif89 {

/// A channel hides pixels below this opacity.
constexpr std::uint8_t kVisibleFrom = 128;

/// The number of the channel that is a picture's own transparency, from 1; 0 when there
/// is none or it hides nothing.
int OwnTransparency(const Picture& picture);

/// Whether some pixel of an RGB picture, or one that channel "Transparency" belongs to, is fully
/// transparent.
bool HasTransparent(const Picture& picture);

/// Whether some pixel is neither transparent nor opaque.
bool HasPartlyOpaque(const Picture& picture);

/// Opacity below the threshold becomes 0, all other 255.
void CutOpacity(Picture& picture, int threshold);

/// Lays pixels whose opacity reaches the threshold, 1..255, over a colour, so that they become
/// opaque, and makes all others transparent. A picture with a table in which that changes a colour
/// becomes an RGB one.
void BlendOver(Picture& picture, RGBtuple below, int threshold);

/// Leaves no transparency: what shows through is the colour below. A picture with a table that
/// has opacities becomes an RGB one.
void LayOver(Picture& picture, RGBtuple below);

/// Hides the pixels of those entries in that channel, numbered from 1.
void HideEntries(Picture& picture, const std::vector<int>& entries, int channel);

} // namespace gif89
