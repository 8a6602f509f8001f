// Answers the module's options dialogs with what a plan says: a user who never tires, and decides
// nothing.
#pragma once

#include "DialogUser.h"
#include "Plan.h"
#include "Problem.h"
#include "ScriptSource.h"

#include <deque>
#include <optional>

namespace gif89 {

/// Operates the dialogs of one export.
class Answers {
  public:
    /// Whether OK is pressed in the end, or the dialog is left to somebody else.
    enum class End : bool { confirms, leavesOpen };
    /// The plan must outlive this.
    explicit Answers(const Plan& thePlan, End how = End::confirms);
    Answers(const Answers&) = delete;
    Answers& operator=(const Answers&) = delete;

    DialogUser User() { return {&script, &script, &palette}; }

    /// True once everything is answered in a dialog that is left open.
    bool IsDone() const { return done; }

    /// Throws the reason when the dialogs did not take what the plan says; call it when the export
    /// has ended, before looking at its own result.
    void ThrowFailure() const;

  private:
    Act NextAct(DialogPtr dialog);
    void AnswerIndexed(DialogPtr dialog);
    void AnswerRGB(DialogPtr dialog);
    void SetCheckBox(DialogPtr dialog, short item, const std::optional<bool>& wanted);
    void MarkEntries(DialogPtr dialog);
    void ChooseChannel();
    void ChoosePalette();
    void ChooseMatte(short item);

    const Plan& plan;
    const End end;
    ScriptSource script;
    std::deque<Act> acts;
    bool begun = false, done = false;
    PaletteKind palette;                      ///< that was used, as far as it is known
    ProblemKind refusal = ProblemKind::usage; ///< of an alert that answers the latest act
    std::optional<Problem> problem;
};

} // namespace gif89
