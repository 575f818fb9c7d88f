// printable_test.cpp: what is left of a foreign text when it is shown on a terminal.
#include "common/ut/printable.h"

#include <gtest/gtest.h>

#include "common/nls/nls.h"

namespace {

TEST(Printable, ShowsWhatATerminalWouldObeyAsQuestionMarks) {
  const std::pair<std::string_view, std::string> rows[] = {
      {"/marlorc/PIECE_1 ~ Grüße € 😀", "/marlorc/PIECE_1 ~ Grüße € 😀"},
      // The last control is a control sequence introducer of one character.
      {{"a\x1b[2J\rb\n\t\x7f\0 \u009b2J", 16}, "a?[2J?b???? ?2J"},
      {"a\u202e\u2066\u200b", "a???"},  // reverses, isolates, is invisible
      // Not UTF-8, and overlong.
      {"caf\xe9 \xff\x80x \xc0\xaf \xe0\x80\xaf \xf0\x80\x80\xaf", "caf? ??x ?? ??? ????"},
      // A surrogate, beyond the last character, cut short.
      {"\xed\xa0\x80 \xf4\x90\x80\x80 \xe2\x82 A\xf0\x9f\x98", "??? ???? ? A?"}};
  for (const auto& [text, shown] : rows) {
    EXPECT_EQ(shown, ut::printable(text));
    EXPECT_EQ(shown, ut::printable(shown)) << "what was made printable is kept";
    EXPECT_EQ(shown + "\n", nlsprintf(msg::kLine, text)) << "as an insert of a message";
  }
}

}  // namespace
