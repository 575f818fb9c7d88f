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
#include <tuple>
#include <vector>

#include "common/nls/nls.h"
#include "common/ut/nfdate.h"
#include "common/ut/printable.h"
#include "tests/support/captured.h"
#include "tests/support/traced.h"
#include "tests/utility/messages.h"
#include "utility/syncdb_query.h"

namespace {

using std::string, std::tuple;

struct Objects : ObjectList {
  explicit Objects(unsigned count, const char* owner = "") {
    for (unsigned i = 1; i <= count; ++i) {
      utZylObj_s object = {};
      std::snprintf(object.name, sizeof object.name, "/marlorc/oracle/PIECE_%u", i);
      std::strcpy(object.node, "ORANODE");
      std::strcpy(object.owner, owner);
      object.insDate = {2026, 3, 7, 8, 5, 9};
      object.sizeEstimate = {i == 20 ? 1u : 0u, i * 1024};  // the 20th has 4 GiB more
      EXPECT_EQ(0, addTail(object, 0));
    }
  }
  string picks() {
    string result;
    for (unsigned i = 1; i <= static_cast<unsigned>(count()); ++i) {
      if (elementAt(i)->selected == 1) result += " " + std::to_string(i);
    }
    return result;
  }
};

class PickList : public WithMessages {
 protected:
  // What a command writes to standard output, without the codes that clear the screen.
  template <typename Command>
  static string shown(Command command) {
    support::Captured output;
    command();
    return std::regex_replace(output.take(), std::regex("\x1b[^HJ]*[HJ]"), "");
  }

  static std::vector<string> page(ObjectList& list, int rows, int cols, int hoffset,
                                  const utility::PageNotes* notes = nullptr) {
    std::istringstream in(shown([&] {
      pageSize =
          DisplayList(&list, 1, rows, cols, hoffset, static_cast<unsigned>(list.count()), notes);
    }));
    std::vector<string> lines;
    for (string line; std::getline(in, line);) lines.push_back(line);
    return lines;
  }
  static inline int pageSize = 0;  // of the last page
  support::ScopedEnv terminal_{"TERM", "ansi"};

  // Runs the list with a text on standard input and returns what it shows. The output is not a
  // terminal: 23 rows, 1024 columns, pages of 13 lines.
  static string run(ObjectList& list, const string& input, int rc = kPickCancelled,
                    utility::RunRecord* record = nullptr) {
    support::FedInput answers(input);
    return shown([&] { EXPECT_EQ(rc, pkPickHandler(&list, record)) << input; });
  }
};

// An answer, what was picked before it and is after it, and the numbers that are traced.
TEST_F(PickList, AppliesEveryFormOfAnswer) {
  for (const auto& [answer, before, after, outOfRange] :
       {tuple("2\t4,6 010", "", " 2 4 6", " 10 "),  // read in base ten
        {"2:5+", "", " 2 3 4 5", ""},
        {"2:5-", "1:9+", " 1 6 7 8 9", ""},
        {"3:7", "", " 7", ""},                  // without a sign only the last one is toggled
        {"3:5 9+", "", " 3 4 5 6 7 8 9", ""},   // the range is open until the next sign
        {"1-5", "1:9+", " 2 3 4 6 7 8 9", ""},  // not a range: 1 is unpicked, 5 toggled
        {"2+4+", "", " 1 2 3 4", ""},           // a second signed item is a range from entry 1
        {"2+ 4+", "", " 2 4", ""},              // two delimiters: the sign of 4 is not seen
        {"0+", "", " 1", ""},                   // entry 0 means entry 1
        {"++5+", "", " 5", ""},
        {"5+0:", "", " 1 5", ""},  // the range from 0 that a sign leaves open ends there
        {"8:99999999999999999999+", "", " 8 9", " 2147483647 "},
        {"10 1:12+ 99999999999 4000000000-", "", " 1 2 3 4 5 6 7 8 9",
         " 10 12 2147483647 2147483647 "}}) {
    Objects list(9);
    utility::PickTotal picked;  // as the answers keep it
    ProcessAnswer(&list, before, 9, &picked);
    const string trace = support::traced(
        "ORCLEVEL0", [&, typed = answer] { ProcessAnswer(&list, typed, 9, &picked); });
    EXPECT_EQ(after, list.picks()) << answer;
    const utility::ObjectTotal counted = utility::summarizePicks(list).total;
    EXPECT_TRUE(counted.count == picked.total.count && counted.bytes == picked.total.bytes)
        << answer;
    EXPECT_EQ(outOfRange, std::regex_replace(trace, std::regex("[^0-9]+"), " ")) << trace;
  }
}

TEST_F(PickList, DrawsThreeEntriesOnTwentyFourLines) {
  Objects list(3);
  list.getFirst()->selected = 1;
  list.getFirst()->node[0] = '\r';
  std::strcat(list.elementAt(3)->name, "\x1b[2J\n\xe2\x82\xac\xe2\x82");
  const std::vector<string> lines = page(list, 22, 79, 0);
  std::vector<string> expected = {
      "Backup objects on the storage server",
      "Node:  ?RANODE",
      "",
      "          Date       Time              Size  Object name",
      "        " + string(71, '-'),
      "x      1| 03/07/2026 08:05:09       1.00 KB  /marlorc/oracle/PIECE_1",
      "       2| 03/07/2026 08:05:09       2.00 KB  /marlorc/oracle/PIECE_2",
      "       3| 03/07/2026 08:05:09       3.00 KB  /marlorc/oracle/PIECE_3?[2J?\xe2\x82\xac?",
  };
  expected.insert(expected.end(), 10, "        | ");
  expected.push_back(
      "        0---------10--------20--------30--------40--------50--------60--------7");
  ASSERT_EQ(23u, lines.size());
  EXPECT_EQ(expected, std::vector<string>(lines.begin(), lines.begin() + 19));
  EXPECT_EQ(nlsprintf(msg::kPickHelpMarks), lines[19]);
  EXPECT_EQ(nlsprintf(msg::kPickHelpMoves), lines[20]);
  EXPECT_EQ("  O delete  C Q leave  Picked 1 (1.00 KB)", lines[21]);
  EXPECT_EQ("Command ==> ", lines.back());
  EXPECT_EQ(13, pageSize);
}

TEST_F(PickList, LinesUpAtEveryWidthAndInEveryFormat) {
  Objects list(30, "DBA");
  for (int i = 0; i < 40; ++i) std::strcat(list.elementAt(3)->name, "\xe2\x82\xac");
  for (int format = 0; format < 30; ++format) {
    ut::setRunFormats({format % 6, format / 6, format % 7});
    const std::vector<string> lines = page(list, 22, 200, 0);
    EXPECT_EQ(lines[4].find("Object name"), lines[7].find("/marlorc")) << lines[7];
    EXPECT_EQ(lines[4].find("Size") + 4, lines[7].find("KB") + 2) << lines[7];
  }
  const std::vector<string> wide = page(list, 22, 200, 0);
  EXPECT_EQ(12, pageSize) << "the owner takes up a line of the list";
  EXPECT_EQ("Owner: DBA", wide[2]);
  for (std::size_t cols = 20; cols < 200; ++cols) {
    const std::vector<string> lines = page(list, 22, static_cast<int>(cols), 0);
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
  for (const auto& [offset, shown] : {std::pair(0, "abcd"), {2, "cdef"}, {6, ""}, {7, " "}}) {
    char window[5];
    FitStringToScreenSize(window, "abcdef", offset, 4);
    EXPECT_STREQ(shown, window) << offset;
  }
  Objects list(1);
  const std::vector<string> shifted = page(list, 12, 40, 35), past = page(list, 12, 40, 1000);
  EXPECT_EQ("    Size  Object name", shifted[3]);
  EXPECT_EQ("       1| /marlorc/oracle/PIECE_1", shifted[5]);
  EXPECT_EQ("        -----40--------50--------60-----", shifted[8]);
  EXPECT_EQ(" ", past[3]);
  EXPECT_EQ("       1|  ", past[5]);
  // One column too many after each number from 100 to 999.
  EXPECT_EQ(0u, page(list, 12, 60, 90)[8].find(
                    "        90--------100------110------120------130------140"));
}

// Keys, the length of the list, then the first entry and the ruler's beginning on the last page.
TEST_F(PickList, MovesByWholePagesAndStaysInTheList) {
  for (const auto& [keys, count, top, ruler] : {tuple("d\nd\nD", 30u, 27u, "0-"),
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
                                                {"r -5", 30, 1, "0-"}}) {
    Objects list(count);
    string page = run(list, keys + string("\nq\n"));
    page.erase(0, page.rfind("Backup objects on the storage server"));
    EXPECT_EQ(top, std::stoul(page.substr(page.find('|') - 8, 8))) << keys;
    EXPECT_NE(page.npos, page.find(string("\n        ") + ruler, page.find('|'))) << keys;
  }
}

TEST_F(PickList, ReturnsThePicksOnlyWhenTheyAreConfirmed) {
  Objects list(20);
  list.getFirst()->selected = 1;  // picked earlier: forgotten
  for (const auto& [input, picked, rc] :
       {tuple(string("3 5\no\n"), " 3 5", 0),
        {"+ 3\nO whatever\n", " 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20", 0},
        {"c\n", "", 300},
        {"Quit\n", "", 300},
        // Half of an answer could pick what the user did not mean: 255 characters are one too many.
        {"3" + string(253, ' ') + "5\no\n", "", 0},
        {"3 " + string(250, ',') + "5+\no\n", " 3 5", 0},
        {"3 " + string(5000, ' ') + "O\no\n", "", 0}}) {  // its rest is no command
    run(list, input, rc);
    EXPECT_EQ(picked, list.picks()) << input;
  }
}

const string kLeave = "  O delete  C Q leave";

// The third help line after each answer, where there is room for all of it.
TEST_F(PickList, SaysWhatTheLastAnswerDid) {
  const string none = "  Picked 0 (0 B)", three = "  Picked 1 (3.00 KB)", tooLong(300, '5');
  for (const auto& [answers, line, doubts, deleted] :
       {tuple(string("3\n3 4"), string("  Picked 1 (4.00 KB)  +1 -1"), 0u, 0u),
        {"+", "  Picked 20 (4.00 GB)  +20 -0  7 picked elsewhere", 0, 0},
        {"+\n1", "  Picked 19 (4.00 GB)  +0 -1  7 picked elsewhere", 0, 0},
        {"+\n-", none + "  +0 -20", 0, 0},
        {"3+\n3+", three, 0, 0},
        {"3 21:25+", three + "  +1 -0, no such entry", 0, 0},
        {"19:25+\n19:25-", none + "  +0 -2", 0, 0},
        {"zzz", none + "  no such entry", 0, 0},
        {"g 21", none + "  no such entry", 0, 0},
        {"g 2", none, 0, 0},
        {tooLong, none + "  ignored: too long", 0, 0},
        {tooLong + "\n3", three + "  ! 1 doubt, see the question  +1 -0", 1, 0},
        {"3\nd", three + "  ! 2 doubts, see the question  1 picked elsewhere  deleted 3, 6.00 KB",
         2, 3}}) {
    Objects list(20);
    utility::RunRecord record(utility::ListKind::kAll);
    record.doubts.resize(doubts);
    record.deleted = {deleted, deleted * 2048};
    const string text = run(list, answers + "\nq\n", kPickCancelled, &record);
    const std::size_t last = text.rfind(kLeave);
    EXPECT_EQ(kLeave + line, text.substr(last, text.find('\n', last) - last)) << answers;
  }
}

TEST_F(PickList, LeavesOutWholePartsOfTheStateFromTheRight) {
  Objects list(20);
  utility::RunRecord record(utility::ListKind::kOrphans);
  record.doubts.resize(2);
  utility::PageNotes notes;
  notes.run = &record;
  notes.picked.total.add(*list.getFirst());
  notes.picked.added = 1;
  list.getFirst()->selected = 1;
  const string picked = kLeave + "  Picked 1 (1.00 KB)";
  const string doubts = picked + "  ! 2 doubts, see the question";
  const string title = "Backup objects on the storage server: 20 unknown to Oracle (SYNCDB)";
  for (const auto& [cols, line] : {std::pair(78u, doubts + "  +1 -0"),
                                   {77u, doubts},
                                   {71u, doubts},
                                   {70u, picked},
                                   {41u, picked},
                                   {40u, kLeave},
                                   {20u, kLeave.substr(0, 20)}}) {
    const std::vector<string> lines = page(list, 22, static_cast<int>(cols), 0, &notes);
    EXPECT_EQ(line, lines.at(lines.size() - 2)) << cols;
    EXPECT_EQ(title.substr(0, cols), lines.front());
  }
}

using Query = PickList;

TEST_F(Query, NamesOneEncryption) {
  for (const auto& [bits, name] :
       {std::pair(28, "AES_128BIT"), {20, "AES_256BIT"}, {4, "DES_56BIT"}, {0, "None"}}) {
    utZylObj_s object = {};
    object.encryptionType = static_cast<std::uint8_t>(bits);
    EXPECT_NE(string::npos, shown([&] { utPrintBackupItem(&object); }).find(name)) << bits;
  }
}

TEST_F(PickList, SlowsDownAtTheEndOfItsInput) {
  for (const auto& [ends, seconds] :
       {std::pair(0u, 0), {1, 0}, {2, 1}, {3, 2}, {7, 32}, {8, 60}, {9, 60}, {~0u, 60}}) {
    EXPECT_EQ(seconds, utility::pauseAtEndOfInput(ends).count()) << ends;
  }
}

}  // namespace
