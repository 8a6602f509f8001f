// What an export promises, worked out plainly from what went in and what an outside decoder reads.
#pragma once

#include "ExportReport.h"
#include "GiflibDecode.h"
#include "Picture.h"
#include "Plan.h"

namespace gif89 {

/// A finished file beside what went in.
struct Outcome {
    const Picture& original; ///< as it was before it was shaped
    const Picture& picture;  ///< that was exported
    const Plan& plan;
    const GiflibPicture& gif;
};

/// Requires that sides, comment, interlacing and transparency are as planned, that pixels are kept
/// where that is promised, and that the report tells what became of the others.
void CheckPromises(const Outcome& outcome, const ExportReport& report);

} // namespace gif89
