// Writes small ICC profiles for tests, and says what becomes of a light in sRGB.
#pragma once

#include <cstdint>
#include <vector>

enum class Primaries : bool { standard, redAndGreenSwapped };

/// An RGB profile with the primaries of sRGB and a plain power for its curves.
std::vector<std::uint8_t> MakeRgbProfile(double gamma, Primaries primaries = Primaries::standard);

/// sRGB as programs embed it, named "B", u with dots, "ro", Escape, a grinning face.
std::vector<std::uint8_t> MakeStandardProfile();

std::vector<std::uint8_t> MakeGreyProfile(double gamma);

/// A CMYK profile of greys: lightness is 100 less 10 for full cyan, 20 for magenta, 30 for yellow
/// and 40 for black.
std::vector<std::uint8_t> MakeInkProfile();

/// A link from RGB to RGB, which belongs into no picture.
std::vector<std::uint8_t> MakeLinkProfile();

/// The sRGB level, 0..255, of a light of 0..1 (IEC 61966-2-1).
int StandardLevel(double light);

/// The light of a CIE lightness of 0..100.
double LightOf(double lightness);
