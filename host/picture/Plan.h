// What is exported how: decided once, from a picture and what the user asked for, for every
// program.
#pragma once

#include "Picture.h"
#include "Reduction.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace gif89 {

/// What the user asks for. Automatic keeps every pixel where the colours fit a table.
enum class Mode : std::uint8_t { automatic, rgb, indexed };

/// The module has those up to `file`, our own reduction those behind it.
enum class PaletteKind : std::uint8_t {
    open, ///< the best one; left to the module, exact where that is possible, else adaptive
    exact,
    adaptive,
    fixed,
    file,
    best,
    web,
    grey,
};

/// Entries of a colour table: one by its number, or all of a colour.
using EntryName = std::variant<int, RGBtuple>;

/// Everything a user may ask for before a picture is known.
struct Wishes {
    Mode mode = Mode::automatic;
    // Colours
    std::optional<int> colors = {}; ///< at most so many, 2..256
    PaletteKind palette = PaletteKind::open;
    std::string paletteFile = {}; ///< with PaletteKind::file
    /// What that file holds, where our own reduction is to map to it and not the module.
    std::optional<Palette> given = {};
    bool resize = false;     ///< the module cuts a fixed or loaded palette to `colors`
    Palette keptColors = {}; ///< the palette has these in any case; fewer than `colors`
    Dithering dithering = Dithering::diffusion;
    int ditherAmount = 100; ///< 0..100
    /// What does not fit, and what is partly opaque, is left to the module, whose dialogs a person
    /// answers.
    bool leavesToModule = false;
    // Transparency
    std::optional<RGBtuple> matte = {};
    int alphaThreshold = 0; ///< 1..255: opacity below it becomes 0; 0 is half, with a matte 1
    bool opaque = false;    ///< what is transparent is laid over the matte, or white
    bool dropOwn = false;   ///< the picture's own transparency hides nothing
    std::vector<EntryName> transparent = {}; ///< to hide, beside the picture's own transparency
    std::vector<std::string> channels = {};  ///< names of those that the user adds to the picture
    std::string alpha = {};                  ///< a channel's name or number; empty for none
    bool invert = false;                     ///< the channel hides where it is bright
    // The file; what is left open stays as the dialog opens
    std::optional<bool> interlace = {};
    std::optional<bool> comment = {};            ///< whether the picture's comment is written
    std::optional<std::string> commentText = {}; ///< replaces the picture's own; empty for none
};

/// What was decided.
enum class Way : std::uint8_t {
    ownTable,  ///< the picture keeps its table and indices
    fewColors, ///< the picture gets a table of its colours
    module,    ///< the module reduces the colours
    reduced,   ///< we reduce them, to a table
};

/// The way of one picture, and what the module's dialogs are told.
struct Plan {
    Way way = Way::module;
    std::optional<bool> interlace, comment; ///< none leaves them as the dialog opens
    std::optional<RGBtuple> matte;          ///< only where something is transparent
    // The table of Way::fewColors
    RGBLookUpTable table = {};
    int opaqueEntries = 0;   ///< of that table
    bool hidesEntry = false; ///< one more entry, black, stands for transparent pixels
    // The indexed dialog
    std::vector<int> transparent; ///< entries to mark; with a channel, to be hidden in that
    int channel = 0;              ///< its number from 1; 0 for none
    bool inverted = false;
    // Way::reduced
    Reduction reduction = {};
    // The RGB dialog
    PaletteKind palette = PaletteKind::open;
    std::string paletteFile;
    std::optional<int> colors;
    bool resize = false;
};

/// What a picture does not allow.
struct Refusal {
    enum class Kind : std::uint8_t {
        noTable,           ///< too many colours for a table, or opacities that it cannot say
        keepsTable,        ///< colours are to be chosen for a picture that is to keep its table
        noEntry,           ///< `number`; the picture has `entries`
        noColor,           ///< `color` is none of the table's
        noChannel,         ///< `name`; the picture has `names`
        nothingToInvert,   ///< no channel is used
        entriesNeedTable,  ///< entries or channels are to hide pixels of a picture without a table
        channelsNeedTable, ///< channels are to be added to such a picture
        exactIsCounted,    ///< an exact palette has the picture's own number of colours
        tooManyForExact,   ///< for an exact palette
        nothingToCut,      ///< only a fixed or loaded palette can be cut
        notTheModules,     ///< the module has no such palette, and keeps no colours
        tooManyKept,       ///< more colours are to be kept than there may be
    };
    Kind kind;
    int number = 0, entries = 0;
    RGBtuple color = {};
    std::string name = {};
    std::vector<std::string> names = {};
};

/// True when the wishes change pixels before anything is reduced, so that a comparison needs a copy
/// made before.
bool ChangesPixels(const Picture& picture, const Wishes& wishes);

/// First step, before channels are added: makes every pixel transparent or opaque, by the threshold
/// and the matte, unless that is left to the module, and sets the comment.
void ApplyWishes(Picture& picture, const Wishes& wishes);

/// Second step: decides. The picture is as ApplyWishes left it, with `wishes.channels` behind its
/// own; those of an RGB picture count for the table that it may get.
std::variant<Plan, Refusal> MakePlan(const Picture& picture, const Wishes& wishes);

/// Third step: brings the picture into the planned shape, unless it is to be reduced. Throws
/// Problem without memory.
void BringIntoShape(Picture& picture, const Plan& plan);

} // namespace gif89
