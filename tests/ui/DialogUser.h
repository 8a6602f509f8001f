// Runs the RGB options, and whole exports, with a picture, a script for a user, and looks at the
// dialogs in between.
#pragma once

#include "GIF89Export.h"
#include "RGBDialogItems.h"
#include "ScriptSource.h"
#include "ScriptedHost.h"
#include "TemporaryFolder.h"

#include <functional>
#include <string>
#include <variant>
#include <vector>

/// An act of the user, or something that the test does at that moment.
using Look = std::function<void(DialogPtr dialog)>;
using UserStep = std::variant<Act, Look>;
using Steps = std::vector<UserStep>;

Steps operator+(Steps first, const Steps& second);

/// Plays steps, in windows and in file dialogs, as long as it lives. Also opens the resources.
class RGBUser : public ScriptSource {
  public:
    explicit RGBUser(Steps steps);
    RGBUser(const RGBUser&) = delete;
    RGBUser& operator=(const RGBUser&) = delete;
    ~RGBUser() override;

  private:
    Act NextStep(DialogPtr dialog);

    Steps steps;
    std::size_t played = 0;
    EventSource* outerSource;
    StandardFileResponder* outerResponder;
    std::int16_t resources;
};

/// An RGB export that has its buffers and has counted the colours, as it is when the options are
/// asked for.
class RGBContext : public ScriptedHost {
  public:
    RGBContext(int pictureRows, int pictureColumns, int picturePlanes,
               std::vector<std::uint8_t> picturePixels);
    ~RGBContext() { context.DeallocateBuffers(); }

    /// Asks for the options and expects that the script goes well.
    short Ask(Steps steps);
    /// What the core writes with the options that the members hold.
    std::string Write();

    GIF89RGBExport context;
    unsigned char exact = 2, supplied = 2;
    std::vector<std::string> alerts;
};

/// A whole export through the module's entry, saved to a file of its own; the file's bytes.
std::string ExportWith(int rows, int columns, int planes, std::vector<std::uint8_t> pixels,
                       Steps steps);

/// A swatch file of the first `colors` entries of a table.
std::string SwatchFile(const RGBLookUpTable& table, int colors, int space = 0);

std::string TextOf(DialogPtr dialog, short item);
/// The text of a pop-up's chosen entry.
std::string ChosenText(DialogPtr dialog, short item);
