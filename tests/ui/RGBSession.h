// RGB exports that are asked for their options, and what these should come to.
#pragma once

#include "GIF89RGBExport.h"
#include "ModuleResources.h"
#include "ScriptedHost.h"
#include "ScriptedUser.h"

/// An RGB export that has its buffers and has counted the colours, as it is when the options are
/// asked for.
class RGBContext : public ScriptedHost {
  public:
    RGBContext(int pictureRows, int pictureColumns, int picturePlanes,
               std::vector<std::uint8_t> picturePixels);
    ~RGBContext() { context.DeallocateBuffers(); }

    /// Asks for the options.
    short Ask(Steps steps);
    /// What the core writes with the options that the members hold.
    std::string Write();

    GIF89RGBExport context;
    unsigned char exact = 2, supplied = 2;
    std::vector<std::string> alerts;
};

/// The file of a whole export through the module's entry.
std::string ExportWith(int rows, int columns, int planes, std::vector<std::uint8_t> pixels,
                       Steps steps);

/// A swatch file of the first `colors` entries of a table.
std::string SwatchFile(const RGBLookUpTable& table, int colors, int space = 0);

std::string TextOf(DialogPtr dialog, short item);
/// The text of a pop-up's chosen entry.
std::string ChosenText(DialogPtr dialog, short item);
