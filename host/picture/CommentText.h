// Brings the texts that picture files carry to one form.
#pragma once

#include <string>
#include <string_view>

namespace gif89 {

/// The text as UTF-8, cut at its first zero byte. UTF-8 passes unchanged; anything else is taken
/// for Latin-1.
std::string CommentText(std::string_view bytes);

/// The same for a text that is Latin-1 by definition, even where it happens to be valid UTF-8.
std::string CommentTextFromLatin1(std::string_view bytes);

/// The text with escapes, as C has them, for all that would act on a terminal: control characters
/// and bytes that are no UTF-8.
std::string TerminalText(std::string_view text);

} // namespace gif89
