// What the command line says of things that a picture does not allow.
#pragma once

#include "Plan.h"
#include "Problem.h"

#include <string>

namespace gif89 {

/// One sentence, with the options that help.
std::string TextOf(const Refusal& refusal);

/// The end of a sentence about such a problem: what to do, or nothing.
const char* AdviceOn(ProblemKind kind);

} // namespace gif89
