// Notes what was chosen in the RGB options dialog.
#pragma once

#include "EventRelay.h"

namespace gif89 {

class DialogWatch final : public EventRelay {
  public:
    using EventRelay::EventRelay;

    /// The palette that was shown when the dialog closed: "exact", "adaptive", "fixed" or "loaded";
    /// empty when there was no such dialog.
    const std::string& Palette() const { return palette; }

    void DialogClosed(DialogPtr dialog) override;

  private:
    std::string palette;
};

} // namespace gif89
