// What is said of a picture in the window, as plain texts.
#pragma once

#include "Picture.h"
#include "Plan.h"
#include "Problem.h"

#include <QString>

#include <cstdint>

namespace gif89 {

/// "RGB", "RGB with transparency", "indexed, 16 entries", "grey, 256 levels".
QString ModeText(const Picture& picture);
/// "1,920 x 1,080", with the real multiplication sign.
QString SizeText(int columns, int rows);
/// "52,340 colours".
QString ColorsText(std::int64_t colors);
/// The further channels by name; empty when there are none but the transparency.
QString ChannelsText(const Picture& picture);
/// What reading did to the picture; empty when nothing is worth saying.
QString NotesText(const InputNotes& notes);
/// What a picture does not allow, and what the window offers instead.
QString RefusalText(const Refusal& refusal);
/// The end of a sentence about such a problem: what to do, or nothing.
QString AdviceText(ProblemKind kind);
/// "66.7 %", "400 %".
QString ZoomText(double zoom);

/// A file's name or path as text. Names are bytes; what is no text in them is shown as "?".
QString FileText(const std::string& bytes);
/// The name without its folder.
QString FileNameText(const std::string& path);

} // namespace gif89
