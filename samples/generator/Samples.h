// The pictures that the generator draws.
#pragma once

#include "WriteSample.h"

Sample DrawCoast();        ///< a bay at evening, like a photograph
Sample DrawSoftIcon();     ///< RGB with alpha: soft edges and a shadow
Sample DrawPaletteBadge(); ///< a palette with transparent and half transparent entries
Sample DrawPixelArt();     ///< 16 colours, hard edges
Sample DrawScan();         ///< grey: a page of writing on paper
