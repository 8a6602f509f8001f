// The picture of what will be written: the scaled preview, its colour table, and on OK of the
// indexed dialog the indices and palette themselves.
#pragma once

#include "DialogManager.h"
#include "GetParameters.h"

#include <cstdint>

/// Scales a block of index bytes. With `enlarge` of 2 or more every pixel becomes a square of that
/// many; otherwise every `shrink`-th pixel of every `shrink`-th row is taken, without averaging.
///
/// @param dst         ceil(rows / shrink) or rows * enlarge rows; where `shrink` does not divide
///                    `cols`, a row may run one byte into the next, which then overwrites it, and
///                    the last row one byte past its end
/// @param dstRowBytes out: cols * enlarge, or cols / shrink rounded down, rounded up to a
///                    multiple of 4
/// @return cols
std::int32_t MakePreviewBuffer(const unsigned char* src, unsigned char* dst,
                               std::int32_t srcRowBytes, std::int32_t* dstRowBytes,
                               std::int32_t rows, std::int32_t cols, std::int32_t enlarge,
                               std::int32_t shrink);

/// Draws the visible part of the image with a frame around it and one around the box, building the
/// preview buffer first when it is stale.
///
/// @param viewRect the preview item's rectangle; its frame lies one pixel outside
void DrawImageContent(PreviewView* g, Rect* viewRect);

/// Draw procedure of the preview: the picture over gray.
void DrawImageBox(DialogPtr dialog, short item);

/// True when any of 256 entries is marked.
Boolean IsThereAnyTransparency(const unsigned char* transMap);

/// Brings the preview's colours in step with the choices: transparent entries get `color`, all
/// others that of the palette. With `useMask` only entry `maskIndex` is transparent, and the marks
/// in `transMap` do not count.
void FixupPmTable(CTabHandle previewColors, const unsigned char* transMap,
                  const RGBLookUpTable* palette, RGBtuple color, int maskIndex, Boolean useMask);

/// Draw procedure of the small texts: the number of colours, or two lines that tell what to do.
void DrawSmallText(DialogPtr dialog, short item);

/// Turns the choices into the image and palette to be written. Without transparency nothing is
/// changed. Otherwise all transparent pixels carry one index, whose entry has the transparent
/// colour, and entries that no pixel uses are taken out of the palette; `numColors` becomes the
/// number of those that stay.
///
/// @return the transparent index, or -1 when no pixel is transparent
short PrepareGIFBuffer(IndexedDialogGlobals* g);
