// Texts from pictures and names of files, as they are kept and shown.
#include "CommentText.h"

#include <gtest/gtest.h>

namespace gif89 {
namespace {

TEST(TerminalText, ShowsWithEscapesWhatWouldActOnATerminal) {
    const std::pair<const char*, const char*> cases[] = {
        {"plain \\ n\xC3\xA4me \xF0\x9F\x98\x80", "plain \\ n\xC3\xA4me \xF0\x9F\x98\x80"},
        {"\x1B]0;title\a\n\x7F", "\\033]0;title\\a\\n\\177"},
        {"\xC2\x9B"
         "31m",
         "\\302\\23331m"}, // a control character of the second set
        {"\x9B"
         "31m\xC3",
         "\\23331m\\303"}}; // and bytes that are no UTF-8
    for (const auto& [text, shown] : cases) EXPECT_EQ(TerminalText(text), shown);
}

} // namespace
} // namespace gif89
