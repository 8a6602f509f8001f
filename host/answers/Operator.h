// Answers the module's options dialogs from choices made beforehand: a user who never tires. What
// the dialogs would not let a person do is an error here too.
#pragma once

#include "ColorTable.h"
#include "Picture.h"
#include "Problem.h"
#include "ScriptSource.h"
#include "Shape.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace gif89 {

/// What the user wants; everything left open stays as the dialog opens.
struct ExportChoices {
    std::optional<bool> interlace;
    std::optional<bool> comment;   ///< whether the document's comment is written
    std::optional<RGBtuple> matte; ///< the colour that stands for transparency
    // Indexed pictures
    std::vector<std::string> transparent; ///< entries to mark: numbers, or colours as #rrggbb;
                                          ///< the picture's own transparency is off then
    std::string alpha;                    ///< a channel's name or number; empty for none
    bool invert = false;                  ///< the channel hides where it is bright
    bool opaque = false;                  ///< no transparency, whatever the picture has
    // RGB pictures
    std::string palette; ///< exact, adaptive, fixed or a file; empty for the dialog's own choice
    std::optional<int> colors;
    bool resize = false; ///< a supplied palette may be cut to `colors`
};

/// Reads a colour: #rrggbb, or three numbers 0..255 with commas between. Throws Problem (kUsage).
RGBtuple ParseColor(const std::string& text);

/// A channel hides pixels below this opacity.
constexpr std::uint8_t kVisibleFrom = 128;

/// The number of the channel that is an indexed picture's own transparency, from 1; 0 when there
/// is none or it hides nothing.
short OwnTransparency(const Picture& picture);

/// The shaping that goes with the choices: a palette that is not the picture's own, or is to be
/// cut, goes the RGB way; a number of colours reduces only pictures that have more.
Shaping ShapingFor(const ExportChoices& choices, Shaping wanted);

/// Throws Problem when a shaped picture cannot have what was chosen.
void CheckChoices(const Picture& picture, const ExportChoices& choices);

/// Makes the entries of those names transparent, as ExportChoices names them, beside what the
/// picture's own transparency hides, which it must have. Throws Problem.
void HideEntries(Picture& picture, const std::vector<std::string>& names);

/// Operates the dialogs of one export. The picture and the choices must outlive it.
class Operator {
  public:
    /// Whether the operator presses OK in the end, or leaves the dialog to somebody else.
    enum class End : bool { confirms, leavesOpen };
    Operator(const Picture& thePicture, const ExportChoices& theChoices, End how = End::confirms);
    Operator(const Operator&) = delete;
    Operator& operator=(const Operator&) = delete;

    EventSource& Events() { return script; }
    StandardFileResponder& Files() { return script; }

    /// True once all choices are made in a dialog that the operator leaves open.
    bool IsDone() const { return done; }

    /// Throws the reason when the operator could not do what was chosen; call it when the export
    /// has ended, before looking at its own result.
    void ThrowFailure() const;

  private:
    Act NextAct(DialogPtr dialog);
    void PlanIndexed(DialogPtr dialog);
    void PlanRGB(DialogPtr dialog);
    void PlanCheckBox(DialogPtr dialog, short item, const std::optional<bool>& wanted,
                      const char* name);
    void PlanMarks(DialogPtr dialog);
    void PlanChannel();
    void PlanPalette(DialogPtr dialog);
    void PlanMatte(DialogPtr dialog, short item);

    const Picture& picture;
    const ExportChoices& choices;
    const End end;
    ScriptSource script;
    std::deque<Act> acts;
    bool planned = false, done = false;
    ExitCode refusal = kUsage; ///< of an alert that answers the latest act
    std::optional<Problem> problem;
};

} // namespace gif89
