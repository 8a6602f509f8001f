// The palette of an RGB export, and what the dialogs and the indexed export ask of palettes.
#pragma once

#include "ColorTable.h"

#include <cstdint>

struct ExportRecord;
struct PictureShape;

/// Index of the nearest of all 256 entries by squared distance. The search ends at the first entry
/// that is equal; ties go to the lowest index.
int FindMatchingIndex(const RGBLookUpTable* table, RGBtuple color);

/// The count without the black entries at the top of the table; entries up to and including index
/// `floor` always stay.
int TrimTopBlacks(const RGBLookUpTable* table, int count, int floor);

/// Fills `table` with `colors` colours by median cut over the whole picture. `histogram` is 131072
/// bytes of working memory.
void AdaptiveTable(RGBLookUpTable* table, short colors, std::uint8_t* histogram,
                   ExportRecord* record, const PictureShape& shape, RGBtuple transparentColor);
