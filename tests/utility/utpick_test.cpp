// utpick_test.cpp: the pick list: answers, keys, and the exact page at several sizes and offsets;
// and an item of QUERY.
#include "utility/utpick.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "common/nls/nls.h"
#include "common/ut/nfdate.h"
#include "common/ut/printable.h"
#include "tests/support/captured.h"
#include "tests/support/traced.h"
#include "tests/utility/messages.h"
#include "utility/syncdb_query.h"

namespace {

void fill(ObjectList& list, unsigned count, const char* owner = "") {
  for (unsigned i = 1; i <= count; ++i) {
    utZylObj_s object = {};
    std::snprintf(object.name, sizeof object.name, "/marlorc/oracle/PIECE_%u", i);
    std::snprintf(object.node, sizeof object.node, "ORANODE");
    std::snprintf(object.owner, sizeof object.owner, "%s", owner);
    object.insDate = {2026, 3, 7, 8, 5, 9};
    object.sizeEstimate = {i == 20 ? 1u : 0u, i * 1024};  // the 20th has 4 GiB more
    ASSERT_EQ(0, list.addTail(object, 0));
  }
}

std::string picks(const ObjectList& list) {
  std::string result;
  int position = 1;
  for (const utZylObj_s* o = list.getFirst(); o != nullptr; o = list.getNext(o), ++position) {
    if (o->selected == 1) result += (result.empty() ? "" : " ") + std::to_string(position);
  }
  return result;
}

class PickList : public WithMessages {
 protected:
  // What a command writes to standard output, without the codes that clear the screen.
  template <typename Command>
  static std::string shown(Command command) {
    support::Captured output;
    command();
    return std::regex_replace(output.take(), std::regex("\x1b[^HJ]*[HJ]"), "");
  }

  static std::vector<std::string> page(ObjectList& list, int rows, int cols, int hoffset,
                                       const utility::PageNotes* notes = nullptr) {
    std::istringstream in(shown([&] {
      pageSize =
          DisplayList(&list, 1, rows, cols, hoffset, static_cast<unsigned>(list.count()), notes);
    }));
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
  }
  static inline int pageSize = 0;  // of the last page
  support::ScopedEnv terminal_{"TERM", "ansi"};

  // Runs the list with a text on standard input. The output is not a terminal: 23 rows, 1024
  // columns, pages of 13 lines.
  static int run(ObjectList& list, const std::string& input, std::string* output = nullptr,
                 utility::RunRecord* record = nullptr) {
    support::FedInput answers(input);
    int rc = -1;
    const std::string text = shown([&] { rc = pkPickHandler(&list, record); });
    if (output != nullptr) *output = text;
    return rc;
  }
};

TEST_F(PickList, AppliesEveryFormOfAnswer) {
  const struct {
    const char *answer, *before, *picked;  // before "+": all picked
    const char* outOfRange = "";           // the numbers that are traced
  } rows[] = {
      {"2\t4,6 010", "", "2 4 6", " 10 "},  // read in base ten
      {"2:5+", "", "2 3 4 5"},
      {"2:5-", "+", "1 6 7 8 9"},
      {"3:7", "", "7"},                 // without a sign only the last one is toggled
      {"3:5 9+", "", "3 4 5 6 7 8 9"},  // the range is open until the next sign
      {"1-5", "+", "2 3 4 6 7 8 9"},    // not a range: 1 is unpicked, 5 toggled
      {"2+4+", "", "1 2 3 4"},          // a second signed item is a range from entry 1
      {"2+ 4+", "", "2 4"},             // two delimiters: the sign of 4 is not seen
      {"0+", "", "1"},                  // entry 0 means entry 1
      {"8:99999999999999999999+", "", "8 9", " 2147483647 "},
      {"++5+", "", "5"},
      {"5+0:", "", "1 5"},  // the range from 0 that a sign leaves open ends there
      {"10 1:12+ 99999999999 4000000000-", "", "1 2 3 4 5 6 7 8 9",
       " 10 12 2147483647 2147483647 "},
  };
  for (const auto& row : rows) {
    ObjectList list;
    fill(list, 9);
    utility::PickTotal picked;  // as the answers keep it
    if (*row.before == '+') ProcessAnswer(&list, "1:9+", 9, &picked);
    const std::string trace =
        support::traced("ORCLEVEL0", [&] { ProcessAnswer(&list, row.answer, 9, &picked); });
    EXPECT_EQ(row.picked, picks(list)) << "answer: " << row.answer;
    const utility::ObjectTotal counted = utility::summarizePicks(list).total;
    EXPECT_EQ(counted.count, picked.total.count) << "answer: " << row.answer;
    EXPECT_EQ(counted.bytes, picked.total.bytes) << "answer: " << row.answer;
    EXPECT_EQ(row.outOfRange, std::regex_replace(trace, std::regex("[^0-9]+"), " ")) << trace;
  }
}

TEST_F(PickList, DrawsThreeEntriesOnTwentyFourLines) {
  ObjectList list;
  fill(list, 3);
  list.getFirst()->selected = 1;
  list.getFirst()->node[0] = '\r';
  std::strcat(list.elementAt(3)->name, "\x1b[2J\n\xe2\x82\xac\xe2\x82");
  const std::vector<std::string> lines = page(list, 22, 79, 0);
  std::vector<std::string> expected = {
      "Backup objects on the storage server",
      "Node:  ?RANODE",
      "",
      "          Date       Time              Size  Object name",
      "        " + std::string(71, '-'),
      "x      1| 03/07/2026 08:05:09       1.00 KB  /marlorc/oracle/PIECE_1",
      "       2| 03/07/2026 08:05:09       2.00 KB  /marlorc/oracle/PIECE_2",
      "       3| 03/07/2026 08:05:09       3.00 KB  /marlorc/oracle/PIECE_3?[2J?\xe2\x82\xac?",
  };
  expected.insert(expected.end(), 10, "        | ");
  expected.push_back(
      "        0---------10--------20--------30--------40--------50--------60--------7");
  ASSERT_EQ(23u, lines.size());
  EXPECT_EQ(expected, std::vector<std::string>(lines.begin(), lines.begin() + 19));
  EXPECT_TRUE(lines[19].ends_with("; one sign a line") && lines[20].ends_with("right")) << "cut";
  EXPECT_EQ("  O delete  C Q leave  Picked 1 (1.00 KB)", lines[21]);
  EXPECT_EQ("Command ==> ", lines.back());
  EXPECT_EQ(13, pageSize);
}

TEST_F(PickList, LinesUpAtEveryWidthAndInEveryFormat) {
  ObjectList list;
  fill(list, 30, "DBA");
  for (int i = 0; i < 40; ++i) std::strcat(list.elementAt(3)->name, "\xe2\x82\xac");
  for (int format = 0; format < 30; ++format) {
    ut::setRunFormats({format % 6, format / 6, format % 7});
    const std::vector<std::string> lines = page(list, 22, 200, 0);
    EXPECT_EQ(lines[4].find("Object name"), lines[7].find("/marlorc")) << lines[7];
    EXPECT_EQ(lines[4].find("Size") + 4, lines[7].find("KB") + 2) << lines[7];
  }
  const std::vector<std::string> wide = page(list, 22, 200, 0);
  EXPECT_EQ(12, pageSize) << "the owner takes up a line of the list";
  EXPECT_EQ("Owner: DBA", wide[2]);
  for (std::size_t cols = 20; cols < 200; ++cols) {
    const std::vector<std::string> lines = page(list, 22, static_cast<int>(cols), 0);
    ASSERT_EQ(wide.size(), lines.size());
    EXPECT_EQ(std::min(wide[4].size(), cols - 10), lines[4].size()) << "the heading";
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
      EXPECT_LE(lines[i].size(), cols) << lines[i];
      EXPECT_EQ(0u, wide[i].find(lines[i])) << lines[i];
      EXPECT_EQ(ut::printable(lines[i]), lines[i]) << "a character is cut in two";
    }
  }
  EXPECT_EQ("x1234567| ", nlsprintf(msg::kListLine, 'x', 1234567u, "").substr(0, 10));
}

TEST_F(PickList, ScrollsTextHeadingAndRulerTogether) {
  ObjectList list;
  fill(list, 1);
  for (const auto& [offset, shown] : {std::pair(0, "abcd"), {2, "cdef"}, {6, ""}, {7, " "}}) {
    char window[5];
    FitStringToScreenSize(window, "abcdef", offset, 4);
    EXPECT_STREQ(shown, window) << offset;
  }
  const std::vector<std::string> shifted = page(list, 12, 40, 35);
  EXPECT_EQ("    Size  Object name", shifted[3]);
  EXPECT_EQ("       1| /marlorc/oracle/PIECE_1", shifted[5]);
  EXPECT_EQ("        -----40--------50--------60-----", shifted[8]);
  const std::vector<std::string> past = page(list, 12, 40, 1000);
  EXPECT_EQ(" ", past[3]);
  EXPECT_EQ("       1|  ", past[5]);
  // One column too many after each number from 100 to 999.
  const std::vector<std::string> hundreds = page(list, 12, 60, 90);
  EXPECT_EQ("        90--------100------110------120------130------140", hundreds[8].substr(0, 57));
}

// Keys, then the first entry and the first number of the ruler on the last page.
TEST_F(PickList, MovesByWholePagesAndStaysInTheList) {
  const struct {
    const char* keys;
    unsigned count, top;
    const char* ruler;
  } rows[] = {
      {"d\nd\nD", 30, 27, "0-"},
      {"b", 30, 18, "0-"},
      {"g5\nu", 30, 1, "0-"},
      {"d", 13, 1, "0-"},
      {"d", 14, 14, "0-"},
      {"d\nt", 30, 1, "0-"},
      {"g,5", 30, 5, "0-"},
      {"g:010", 30, 10, "0-"},
      {"g\t30", 30, 30, "0-"},
      {"g 0\ng 31\ng\ng x\ng -3", 30, 1, "0-"},
      {"r 15\nl", 30, 1, "0-"},
      {"r 40\nL 10", 30, 1, "30-"},
      {"r 1040\nr", 30, 1, "------1060"},  // 1054
      {"r 99999999999999999999", 30, 1, "------1060"},
      {"r -5", 30, 1, "0-"},
  };
  for (const auto& row : rows) {
    ObjectList list;
    fill(list, row.count);
    std::string output;
    EXPECT_EQ(kPickCancelled, run(list, std::string(row.keys) + "\nq\n", &output));
    const std::size_t entry =
        output.find('|', output.rfind("Backup objects on the storage server"));
    EXPECT_EQ(row.top, std::stoul(output.substr(entry - 8, 8))) << row.keys;
    EXPECT_NE(output.npos, output.find(std::string("\n        ") + row.ruler, entry)) << row.keys;
  }
}

TEST_F(PickList, ReturnsThePicksOnlyWhenTheyAreConfirmed) {
  ObjectList list;
  fill(list, 20);
  list.getFirst()->selected = 1;  // picked earlier: forgotten
  const struct {
    std::string input;
    const char* picked;
    int rc = 0;
  } rows[] = {
      {"3 5\no\n", "3 5"},
      {"+ 3\nO whatever\n", "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20"},
      {"c\n", "", 300},
      {"Quit\n", "", 300},
      // Half of an answer could pick what the user did not mean: 255 characters are one too many.
      {"3" + std::string(253, ' ') + "5\no\n", ""},
      {"3 " + std::string(250, ',') + "5+\no\n", "3 5"},
      {"3 " + std::string(5000, ' ') + "O\no\n", ""},  // its rest is no command
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.rc, run(list, row.input)) << row.input;
    EXPECT_EQ(row.picked, picks(list)) << row.input;
  }
}

const std::string kLeave = "  O delete  C Q leave";

// The third help line after each answer, where there is room for all of it.
TEST_F(PickList, SaysWhatTheLastAnswerDid) {
  const std::string none = "  Picked 0 (0 B)", three = "  Picked 1 (3.00 KB)";
  const std::string tooLong(300, '5');
  const struct {
    std::string answers, line;
    std::uint64_t doubts = 0, deleted = 0;
  } rows[] = {
      {"3\n3 4", "  Picked 1 (4.00 KB)  +1 -1"},
      {"+", "  Picked 20 (4.00 GB)  +20 -0  7 picked elsewhere"},
      {"+\n1", "  Picked 19 (4.00 GB)  +0 -1  7 picked elsewhere"},
      {"+\n-", none + "  +0 -20"},
      {"3+\n3+", three},
      {"3 21:25+", three + "  +1 -0, no such entry"},
      {"19:25+\n19:25-", none + "  +0 -2"},
      {"zzz", none + "  no such entry"},
      {"g 21", none + "  no such entry"},
      {"g 2", none},
      {tooLong, none + "  ignored: too long"},
      {tooLong + "\n3", three + "  ! 1 doubt, see the question  +1 -0", 1},
      {"3\nd", three + "  ! 2 doubts, see the question  1 picked elsewhere  deleted 3, 6.00 KB", 2,
       3},
  };
  for (const auto& row : rows) {
    ObjectList list;
    fill(list, 20);
    utility::RunRecord record(utility::ListKind::kAll);
    record.doubts.resize(row.doubts);
    record.deleted = {row.deleted, row.deleted * 2048};
    std::string text;
    EXPECT_EQ(kPickCancelled, run(list, row.answers + "\nq\n", &text, &record));
    const std::size_t last = text.rfind(kLeave);
    ASSERT_NE(std::string::npos, last) << text;
    EXPECT_EQ(kLeave + row.line, text.substr(last, text.find('\n', last) - last)) << row.answers;
  }
}

TEST_F(PickList, LeavesOutWholePartsOfTheStateFromTheRight) {
  ObjectList list;
  fill(list, 20);
  utility::RunRecord record(utility::ListKind::kOrphans);
  record.doubts.resize(2);
  utility::PageNotes notes;
  notes.run = &record;
  notes.picked.total.add(*list.getFirst());
  notes.picked.added = 1;
  list.getFirst()->selected = 1;
  const std::string picked = kLeave + "  Picked 1 (1.00 KB)";
  const std::string doubts = picked + "  ! 2 doubts, see the question";
  for (const auto& [cols, line] : {std::pair(78u, doubts + "  +1 -0"),
                                   {77u, doubts},
                                   {71u, doubts},
                                   {70u, picked},
                                   {41u, picked},
                                   {40u, kLeave},
                                   {20u, kLeave.substr(0, 20)}}) {
    const std::vector<std::string> lines = page(list, 22, static_cast<int>(cols), 0, &notes);
    ASSERT_LE(3u, lines.size());
    EXPECT_EQ(line, lines[lines.size() - 2]) << cols;
    const std::string title = "Backup objects on the storage server: 20 unknown to Oracle (SYNCDB)";
    EXPECT_EQ(title.substr(0, cols), lines.front());
  }
}

using Query = PickList;

TEST_F(Query, NamesOneEncryption) {
  for (const auto& [bits, name] :
       {std::pair(28, "AES_128BIT"), {20, "AES_256BIT"}, {4, "DES_56BIT"}, {0, "None"}}) {
    utZylObj_s object = {};
    object.encryptionType = static_cast<std::uint8_t>(bits);
    EXPECT_NE(std::string::npos, shown([&] { utPrintBackupItem(&object); }).find(name)) << bits;
  }
}

TEST_F(PickList, SlowsDownAtTheEndOfItsInput) {
  for (const auto& [ends, seconds] :
       {std::pair(0u, 0), {1, 0}, {2, 1}, {3, 2}, {7, 32}, {8, 60}, {9, 60}, {~0u, 60}}) {
    EXPECT_EQ(seconds, utility::pauseAtEndOfInput(ends).count()) << ends;
  }
}

}  // namespace
