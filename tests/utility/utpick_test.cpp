// utpick_test.cpp: the pick list: answers, keys, and the exact page at several sizes and offsets;
// and an item of QUERY.
#include "utility/utpick.h"

#include <algorithm>
#include <cstring>
#include <regex>

#include "common/ut/printable.h"
#include "tests/support/traced.h"
#include "tests/utility/messages.h"
#include "utility/syncdb_query.h"

namespace {

using std::string, std::tuple, std::pair;
using Lines = std::vector<string>;

struct Objects : ObjectList {
  explicit Objects(unsigned count, const char* owner = "") {
    for (unsigned i = 1; i <= count; ++i) {
      utZylObj_s object = {"", "ORANODE", "", {0, i}, {2026, 3, 7, 8, 5, 9}, {}, 0, 0, 0, 0};
      std::snprintf(object.name, sizeof object.name, "/marlorc/oracle/PIECE_%u", i);
      std::strcpy(object.owner, owner);
      object.sizeEstimate = {i == 20 ? 1u : 0u, i * 1024};  // the 20th has 4 GiB more
      EXPECT_EQ(0, addTail(object, 0));
    }
  }
  string picks() {
    string result;
    for (auto* o = getFirst(); o != nullptr; o = getNext(o)) {
      if (o->selected == 1) result += " " + std::to_string(o->objId.lo);
    }
    return result;
  }
};

class PickList : public WithMessages {
 protected:
  // What a command writes to standard output, without the codes that clear the screen.
  static string shown(auto command) {
    support::Captured output;
    command();
    return std::regex_replace(output.take(), std::regex("\x1b[^HJ]*[HJ]"), "");
  }
  static Lines page(ObjectList& list, int rows, int cols, int hoffset,
                    const utility::PageNotes* notes = nullptr) {
    const auto count = static_cast<unsigned>(list.count());
    std::istringstream in(
        shown([&] { pageSize = DisplayList(&list, 1, rows, cols, hoffset, count, notes); }));
    Lines lines;
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
  // "010" is read in base ten. A range that has no sign yet toggles its end and is open until the
  // next sign ("3:7", "3:5 9+"); "1-5" is none: 1 is unpicked, 5 toggled. A second signed item is a
  // range from entry 1 ("2+4+"), unless two delimiters hide its sign ("2+ 4+"); "5+0:" ends the
  // range from 0 that the first one leaves open. Entry 0 means entry 1.
  const tuple<const char*, const char*, const char*, const char*> rows[] = {
      {"2\t4,6 010", "", " 2 4 6", " 10 "}, {"8:12+ 4000000000", "", " 8 9", " 12 2147483647 "},
      {"2:5-", "1:9+", " 1 6 7 8 9", ""},   {"9:9999999999999999999+", "", " 9", " 2147483647 "},
      {"3:5 9+", "", " 3 4 5 6 7 8 9", ""}, {"3:7", "", " 7", ""},
      {"1-5", "1:7+", " 2 3 4 6 7", ""},    {"++5+", "", " 5", ""},
      {"2+4+", "7", " 1 2 3 4 7", ""},      {"0+", "", " 1", ""},
      {"2+ 4+", "7", " 2 4 7", ""},         {"5+0:", "", " 1 5", ""},
  };
  for (const auto& [answer, before, after, outOfRange] : rows) {
    SCOPED_TRACE(answer);
    Objects list(9);
    utility::PickTotal picked;  // as the answers keep it
    ProcessAnswer(&list, before, 9, &picked);
    const string trace = support::traced(
        "ORCLEVEL0", [&, typed = answer] { ProcessAnswer(&list, typed, 9, &picked); });
    EXPECT_EQ(after, list.picks());
    const utility::ObjectTotal counted = utility::summarizePicks(list).total;
    EXPECT_EQ(pair(counted.count, counted.bytes), pair(picked.total.count, picked.total.bytes));
    EXPECT_EQ(outOfRange, std::regex_replace(trace, std::regex("[^0-9]+"), " "));
  }
}

TEST_F(PickList, DrawsThreeEntriesOnTwentyFourLines) {
  Objects list(3);
  list.getFirst()->selected = 1;
  list.getFirst()->node[0] = '\r';
  std::strcat(list.elementAt(3)->name, "\x1b[2J\n\xe2\x82\xac\xe2\x82");
  Lines expected = {
      "Backup objects on the storage server",
      "Node:  ?RANODE",
      "",
      "          Date       Time              Size  Object name",
      "        " + string(71, '-'),
      "x      1| 03/07/2026 08:05:09       1.00 KB  /marlorc/oracle/PIECE_1",
      "       2| 03/07/2026 08:05:09       2.00 KB  /marlorc/oracle/PIECE_2",
      "       3| 03/07/2026 08:05:09       3.00 KB  /marlorc/oracle/PIECE_3?[2J?\xe2\x82\xac?",
      "        0---------10--------20--------30--------40--------50--------60--------7",
      nlsprintf(msg::kPickHelpMarks),
      nlsprintf(msg::kPickHelpMoves),
      "  O delete  C Q leave  Picked 1 (1.00 KB)",
      "Command ==> "};
  expected.insert(expected.begin() + 8, 10, "        | ");
  EXPECT_EQ(expected, page(list, 22, 79, 0));
  EXPECT_EQ(13, pageSize);
}

TEST_F(PickList, LinesUpAtEveryWidthAndInEveryFormat) {
  Objects list(30, "DBA");
  // Characters of three, three and four bytes, whose first bytes are the first of their kind.
  for (int i = 0; i < 40; ++i) std::strcat(list.elementAt(3)->name, "€ठ𐐀");
  for (int format = 0; format < 30; ++format) {
    ut::setRunFormats({format % 6, format / 6, format % 7});
    const Lines lines = page(list, 22, 200, 0);
    EXPECT_EQ(lines[4].find("Object name"), lines[7].find("/marlorc")) << lines[7];
    EXPECT_EQ(lines[4].find("Size") + 4, lines[7].find("KB") + 2) << lines[7];
  }
  const Lines wide = page(list, 22, 200, 0);
  EXPECT_EQ(12, pageSize) << "the owner takes up a line of the list";
  EXPECT_EQ("Owner: DBA", wide[2]);
  for (std::size_t cols = 20; cols < 200; ++cols) {
    const Lines lines = page(list, 22, static_cast<int>(cols), 0);
    ASSERT_EQ(wide.size(), lines.size());
    EXPECT_EQ(std::min(wide[4].size(), cols - 10), lines[4].size()) << "the heading";
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
      EXPECT_TRUE(lines[i].size() <= cols && wide[i].starts_with(lines[i])) << cols << lines[i];
      EXPECT_EQ(ut::printable(lines[i]), lines[i]) << "a character is cut in two";
    }
  }
  EXPECT_EQ("x1234567| ", nlsprintf(msg::kListLine, 'x', 1234567u, "").substr(0, 10));
}

TEST_F(PickList, ScrollsTextHeadingAndRulerTogether) {
  for (const auto& [offset, text] : {pair(0, "abcd"), {2, "cdef"}, {6, ""}, {7, " "}}) {
    char window[5];
    FitStringToScreenSize(window, "abcdef", offset, 4);
    EXPECT_STREQ(text, window) << offset;
  }
  Objects list(1);
  const Lines shifted = page(list, 12, 40, 35), past = page(list, 12, 40, 1000);
  EXPECT_EQ("    Size  Object name", shifted[3]);
  EXPECT_EQ("       1| /marlorc/oracle/PIECE_1", shifted[5]);
  EXPECT_EQ("        -----40--------50--------60-----", shifted[8]);
  EXPECT_EQ(" |       1|  ", past[3] + "|" + past[5]);
  std::strcpy(list.getFirst()->name, "/\xe2\x82\xacuro");
  EXPECT_EQ("       1| uro", page(list, 12, 40, 37)[5]) << "no half of a character";
  // One column too many after each number from 100 to 999.
  EXPECT_EQ(0u, page(list, 12, 60, 90)[8].find(
                    "        90--------100------110------120------130------140"));
}

// Keys, the length of the list, then the first entry and the ruler's beginning on the last page.
TEST_F(PickList, MovesByWholePagesAndStaysInTheList) {
  const tuple<const char*, unsigned, unsigned, const char*> rows[] = {
      {"d\nd\nD", 30, 27, "0-"}, {"b", 30, 18, "0-"},     {"r 40\nL 10", 30, 1, "30-"},
      {"g5\nu", 30, 1, "0-"},    {"d", 13, 1, "0-"},      {"r 1040\nr", 30, 1, "------1060"},
      {"d", 14, 14, "0-"},       {"d\nt", 30, 1, "0-"},   {"r 4294967297", 30, 1, "------1060"},
      {"g,5", 30, 5, "0-"},      {"g:010", 30, 10, "0-"}, {"g 0\ng 31\ng\ng x\ng -3", 30, 1, "0-"},
      {"g\t30", 30, 30, "0-"},   {"r -5", 30, 1, "0-"},   {"r 15\nl\ng 9\ng 1", 30, 1, "0-"},
  };
  for (const auto& [keys, count, top, ruler] : rows) {
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
  const char* const all = " 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20";
  // Half of an answer could pick what the user did not mean: 255 characters are one too many, and
  // the rest is no command.
  const tuple<string, string, int> rows[] = {
      {"3 5\no\n", " 3 5", 0}, {"3" + string(253, ' ') + "5\no\n", "", 0},
      {"+ 3\nO x\n", all, 0},  {"3 " + string(250, ',') + "5+\no\n", " 3 5", 0},
      {"Quit\n", "", 300},     {"3 " + string(5000, ' ') + "O\no\n", "", 0},
      {"c\n", "", 300},
  };
  for (const auto& [input, picked, rc] : rows) {
    run(list, input, rc);
    EXPECT_EQ(picked, list.picks()) << input;
  }
}

const string kLeave = "  O delete  C Q leave";

// The third help line after each answer, where there is room for all of it: the answers, what is
// picked, and what follows the doubt.
TEST_F(PickList, SaysWhatTheLastAnswerDid) {
  const string none = "0 (0 B)", three = "1 (3.00 KB)", tooLong(300, '5');
  const tuple<string, string, const char*> rows[] = {
      {"3\n3 4", "1 (4.00 KB)", "  +1 -1"},
      {"+", "20 (4.00 GB)", "  +20 -0  7 picked elsewhere"},
      {"+\n-", none, "  +0 -20"},
      {"+\n1", "19 (4.00 GB)", "  +0 -1  7 picked elsewhere"},
      {"zzz", none, "  no such entry"},
      {"3 21:25+", three, "  +1 -0, no such entry"},
      {"g 21", none, "  no such entry"},
      {tooLong, none, "  ignored: too long"},
      {"19:25+\n19:25-", none, "  +0 -2"},
      {"g 2", none, ""},
      {"u", none, ""},
      {tooLong + "\n3", three, "  +1 -0"},
      {"3+\n3+", three, ""},
      {"20:25+", "1 (4.00 GB)", "  +1 -0  1 picked elsewhere"},
  };
  for (const auto& [answers, picked, changes] : rows) {
    Objects list(20);
    utility::RunRecord record(utility::ListKind::kAll);
    record.doubts.resize(1);
    const string text = run(list, answers + "\nq\n", kPickCancelled, &record);
    const string last = text.substr(text.rfind(kLeave));
    EXPECT_EQ(kLeave + "  Picked " + picked + "  ! 1 doubt, see the question" + changes,
              last.substr(0, last.find('\n')));
  }
}

TEST_F(PickList, LeavesOutWholePartsOfTheStateFromTheRight) {
  Objects list(20);
  utility::RunRecord record(utility::ListKind::kOrphans);
  record.doubts.resize(2);
  record.deleted = {3, 6144};
  list.getFirst()->selected = 1;
  const utility::PageNotes notes = {{{2, 1024}, 1, 0, 0}, &record, false};
  const string picked = kLeave + "  Picked 2 (1.00 KB)";
  const string doubts = picked + "  ! 2 doubts, see the question", changes = doubts + "  +1 -0";
  const string all = changes + "  1 picked elsewhere  deleted 3, 6.00 KB";
  const string title = "Backup objects on the storage server: 20 unknown to Oracle (SYNCDB)";
  const pair<unsigned, string> rows[] = {{200, all},   {78, changes}, {77, doubts}, {71, doubts},
                                         {70, picked}, {41, picked},  {40, kLeave}, {20, kLeave}};
  for (const auto& [cols, line] : rows) {
    const Lines lines = page(list, 22, static_cast<int>(cols), 0, &notes);
    EXPECT_EQ(pair(title.substr(0, cols), line.substr(0, cols)),
              pair(lines.front(), lines.at(lines.size() - 2)));
  }
}

using Query = PickList;

TEST_F(Query, NamesOneEncryption) {
  for (const auto& [bits, name] :
       {pair(std::uint8_t{28}, "AES_128BIT"), {20, "AES_256BIT"}, {4, "DES_56BIT"}, {0, "None"}}) {
    utZylObj_s object = {};
    object.encryptionType = bits;
    EXPECT_HOLDS(shown([&] { utPrintBackupItem(&object); }), name);
  }
}

TEST_F(PickList, SlowsDownAtTheEndOfItsInput) {
  for (const auto& [ends, seconds] :
       {pair(0u, 0), {1, 0}, {2, 1}, {3, 2}, {7, 32}, {8, 60}, {9, 60}, {~0u, 60}}) {
    EXPECT_EQ(seconds, utility::pauseAtEndOfInput(ends).count()) << ends;
  }
}

}  // namespace
