// printable_test.cpp: what is left of a foreign text when it is shown on a terminal.
#include "common/ut/printable.h"

#include <gtest/gtest.h>

#include "common/nls/nls.h"

namespace {

TEST(Printable, ShowsWhatATerminalWouldObeyAsQuestionMarks) {
  for (const auto& [text, shown] : {
           std::pair(std::string("/marlorc/PIECE_1 ~"), std::string("/marlorc/PIECE_1 ~")),
           {"a\x1b[2J\rb\n\t\x7f", "a?[2J?b???"},
           {std::string("a\0b", 3), "a?b"},
           {"Grüße € 😀", "Grüße € 😀"},
           {"\u009b2J", "?2J"},                // a control sequence introducer of one character
           {"a\u202e\u2066\u200b", "a???"},    // reverses, isolates, is invisible
           {"caf\xe9 \xff\x80x", "caf? ??x"},  // not UTF-8
           {"\xc0\xaf \xe0\x80\xaf \xf0\x80\x80\xaf", "?? ??? ????"},  // overlong
           {"\xed\xa0\x80 \xf4\x90\x80\x80", "??? ????"},  // a surrogate, beyond the last character
           {"\xe2\x82 A\xf0\x9f\x98", "? A?"},             // cut short
       }) {
    EXPECT_EQ(shown, ut::printable(text));
    EXPECT_EQ(shown, ut::printable(shown)) << "what was made printable is kept";
    EXPECT_EQ(shown + "\n", nlsprintf(msg::kLine, text)) << "as an insert of a message";
  }
}

}  // namespace
