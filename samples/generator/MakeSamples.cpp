// Draws the sample pictures into a folder: make_samples FOLDER
#include "Samples.h"

#include <cstdio>
#include <exception>

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::fputs("usage: make_samples FOLDER\n", stderr);
        return 2;
    }
    try {
        const std::string folder = std::string(arguments[1]) + "/";
        WriteJpeg(folder + "coast.jpg", DrawCoast(), 90);
        WritePng(folder + "icon-soft-alpha.png", DrawSoftIcon());
        WritePng(folder + "badge-palette.png", DrawPaletteBadge());
        WritePng(folder + "pixel-art.png", DrawPixelArt());
        WritePng(folder + "scan-grey.png", DrawScan());
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "make_samples: %s\n", problem.what());
        return 1;
    }
    return 0;
}
