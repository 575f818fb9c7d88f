// deletion_test.cpp: the transactions for every limit, the question before them, and its answers.
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "common/ut/result.h"
#include "tests/support/captured.h"
#include "tests/support/scripted_api.h"
#include "tests/utility/messages.h"
#include "utility/syncdb_deletion.h"

namespace {

using support::Step;

// A script in short form, one word for each call: B begin, Dn delete object n, C commit.
std::vector<Step> script(const std::string& text) {
  std::vector<Step> steps;
  std::istringstream in(text);
  for (std::string word; in >> word;) {
    if (word[0] == 'B') steps.emplace_back("vltBeginTxn", "7");
    if (word[0] == 'D') steps.emplace_back("vltDeleteObj", "7 2 id=" + word.substr(1));
    if (word[0] == 'C') steps.emplace_back("vltEndTxn", "7 1");
  }
  return steps;
}

class Deletion : public WithErrorLog {
 protected:
  void SetUp() override {
    WithErrorLog::SetUp();
    orc_.vltHandle = 7;
  }

  // Lists objects 1 to `count`; those named in `picked` are picked.
  static void fill(ObjectList& list, unsigned count, const std::string& picked) {
    for (unsigned id = 1; id <= count; ++id) {
      utZylObj_s object = {};
      object.objId = {0, id};
      object.sizeEstimate = {0, id * 1024};
      object.insDate = {2026, 3, static_cast<std::uint8_t>(id), 8, 5, 9};
      object.selected = picked.find(std::to_string(id)) != picked.npos ? 1 : 0;
      ASSERT_EQ(0, list.addTail(object, 0));
    }
  }
  static std::string left(const ObjectList& list) {
    std::string ids;
    for (auto* o = list.getFirst(); o != nullptr; o = list.getNext(o)) {
      ids += std::to_string(o->objId.lo);
    }
    return ids;
  }

  unsigned short run(ObjectList& list, const std::string& answer, std::string* shown = nullptr,
                     utility::RunRecord* record = nullptr) {
    support::FedInput input(answer);
    support::Captured output;
    const unsigned short rc = utDeleteFiles(&list, &orc_, record);
    const std::string text = output.take();
    if (shown != nullptr) *shown = text;
    return rc;
  }

  orcObj_t orc_ = {};
};

TEST_F(Deletion, FillsTransactionsToOneLessThanTheLimit) {
  const struct {
    std::uint16_t limit;
    const char* picked;
    const char* calls;
    const char* left;
  } rows[] = {
      {0, "12345", "B D1 D2 D3 D4 D5 C", ""},   {1, "123", "B C B D1 C B D2 C B D3 C", "45"},
      {2, "123", "B D1 C B D2 C B D3 C", "45"}, {3, "12345", "B D1 D2 C B D3 D4 C B D5 C", ""},
      {3, "2345", "B D2 D3 C B D4 D5 C", "1"},  {3, "", "B C", "12345"},
  };
  for (const auto& row : rows) {
    support::ScriptedApi api(script(row.calls));
    ObjectList list;
    fill(list, 5, row.picked);
    orc_.maxObjPerTxn = row.limit;
    EXPECT_EQ(0, run(list, "y\n")) << row.limit;
    EXPECT_EQ(row.left, left(list)) << row.limit;
  }
}

TEST_F(Deletion, DeletesNothingWithoutAYes) {
  for (const char* answer : {"n\n", "N\n", "  no\n", "", "x\n\nn\n"}) {
    support::ScriptedApi api;  // no call at all
    ObjectList list;
    fill(list, 3, "123");
    EXPECT_EQ(0, run(list, answer)) << answer;
    EXPECT_EQ("123", left(list));
  }
}

TEST_F(Deletion, SaysWhatIsAboutToHappen) {
  using utility::ListKind;
  const std::string noCatalog = "  Oracle:         not asked; good backups may be among them\n";
  const struct {
    const char* picked;
    ListKind list;
    std::uint64_t objects, known;
    unsigned lastDay;  // of March 2026
    std::vector<std::string> doubts;
    std::string shown, notShown;
  } rows[] = {
      {"234",
       ListKind::kAll,
       0,
       0,
       4,
       {},
       "  Picked objects: 3 (9.00 KB)\n  Oldest:         03/02/2026 08:05:09\n"
       "  Newest:         03/04/2026 08:05:09\n" +
           noCatalog,
       "QRB2666W"},
      {"",
       ListKind::kAll,
       0,
       0,
       9,
       {},
       "  Picked objects: 0 (0 B)\n  Oldest:         None\n  Newest:         None\n" + noCatalog +
           "\nQRB2647W",
       "knows"},
      {"1",
       ListKind::kOrphans,
       2000,
       1960,
       9,
       {"first doubt", "second doubt"},
       "  Oracle:         knows 1,960 of the 2,000 objects of these dates\n\n"
       "first doubt\nsecond doubt\n",
       "QRB2666W"},
      {"245",
       ListKind::kOrphans,
       5,
       0,
       4,
       {},
       "\nQRB2666W Picked objects of the last day: 2. ",
       "doubt"},
      {"1", ListKind::kOrphans, 5, 0, 2, {}, "knows 0 of the 5 objects", "QRB2666W"},
  };
  for (const auto& row : rows) {
    support::ScriptedApi api;
    ObjectList list;
    fill(list, 5, row.picked);
    utility::RunRecord record(row.list);
    record.objects = row.objects;
    record.objectsKnown = row.known;
    record.end = ut::makeDate(2026, 3, row.lastDay);
    record.doubts = row.doubts;
    std::string shown;
    EXPECT_EQ(0, run(list, "n\n", &shown, &record));
    EXPECT_EQ(0u, shown.find("\nQRB2580W ")) << shown;
    EXPECT_NE(std::string::npos, shown.find(row.shown)) << shown;
    EXPECT_EQ(std::string::npos, shown.find(row.notShown)) << shown;
    EXPECT_EQ(0u, record.deleted.count);
  }
}

// Each row takes one message out of the catalog, or puts another text in its place.
TEST_F(Deletion, DeletesNothingIfItsQuestionCannotBeShownWhole) {
  using utility::ListKind;
  const struct {
    int number;
    const char* text;  // empty: the message is missing
    ListKind list;
    bool deletes;
  } rows[] = {
      {371, "", ListKind::kAll, false},
      {371, "QRB0371", ListKind::kAll, false},
      {371, "QRB0371ZSure about %s? ", ListKind::kAll, false},
      {2580, "", ListKind::kAll, false},
      {2580, "QRB2580WOf %s objects, %d", ListKind::kAll, false},
      {2653, "", ListKind::kAll, false},
      {2653, "", ListKind::kOrphans, true},
      {2646, "QRB2646", ListKind::kOrphans, false},
      {2646, "", ListKind::kAll, true},
      {2580, "QRB2580W%s %s", ListKind::kAll, true},  // another wording
  };
  for (const auto& row : rows) {
    const std::string start = std::to_string(row.number) + " \"";
    std::ifstream source(CATALOG);
    std::string catalog;
    for (std::string line; std::getline(source, line);) {
      if (!line.starts_with(start)) {
        catalog += line + "\n";
      } else if (*row.text != '\0') {
        catalog += start + row.text + "\"\n";
      }
    }
    std::filesystem::remove(dir_.path("vexo.cat"));
    const std::string from = dir_.write("source.msg", catalog);
    ASSERT_EQ(0, std::system((GENCAT " " + dir_.path("vexo.cat") + " " + from).c_str()));
    ASSERT_EQ(0, nlinit("vexo.cat", 10, dir_.path().c_str(), 10, 1, 1, 1, nullptr, "vexo.cat"));
    support::ScriptedApi api(script(row.deletes ? "B D1 C" : ""));
    ObjectList list;
    fill(list, 1, "1");
    utility::RunRecord record(row.list);
    std::string shown;
    EXPECT_EQ(0, run(list, "y\n", &shown, &record));
    EXPECT_EQ(row.deletes ? "" : "1", left(list)) << row.number << row.text;
    EXPECT_EQ(!row.deletes, shown.find("QRB2696E") != shown.npos) << shown;
  }
  EXPECT_NE(std::string::npos, dir_.read("vexoerror.log").find("QRB2696E"));
}

// Digits are masked in what is compared: times, process numbers and numbers of transactions.
TEST_F(Deletion, RecordsEveryObjectBeforeItsTransactionEndsAndTheEndAfterIt) {
  const auto deleted = [](const std::string& id, const std::string& name) {
    return R"({"v":#,"event":"delete","time":"#-#-#T#:#:#)" + std::string("+#:#") +
           R"(","pid":#,"user":"ME","transaction":"#-#-#","node":"","owner":"","id":")" + id +
           R"(","size":#,"date":"#-#-#T#:#:#","name":)" + name + "}\n";
  };
  const auto end = [](const std::string& outcome) {
    return R"({"v":#,"event":"end","time":"#-#-#T#:#:#)" + std::string("+#:#") +
           R"(","pid":#,"user":"ME","transaction":"#-#-#","outcome":")" + outcome + "}\n";
  };
  const struct {
    std::int16_t deleteRc, endRc;
    std::uint16_t reason;
    const char* outcome;  // of the second transaction, masked
    std::uint64_t deleted;
  } rows[] = {
      {0, 0, 0, R"(committed","code":#,"reason":#,"objects":#)", 2},
      {0, VLT_RC_CHECK_REASON, 54, R"(taken back","code":#,"reason":#,"objects":#)", 1},
      {0, -50, 0, R"(unknown","code":-#,"reason":#,"objects":#)", 1},
      {0, 0, 54, R"(unknown","code":#,"reason":#,"objects":#)", 1},
      {54, 0, 0, R"(taken back","code":#,"reason":#,"objects":#)", 1},
  };
  const std::string names = dir_.path("vexodeleted.log");
  for (const auto& row : rows) {
    std::filesystem::remove(names);
    std::string beforeCommit;
    support::ScriptedApi api(script("B D1 C B"));
    api.add({Step("vltDeleteObj", "7 2 id=2", row.deleteRc)});
    const bool failed = row.deleteRc != 0 || row.endRc != 0 || row.reason != 0;
    if (row.deleteRc != 0) api.add({Step("vltRCMsg", "7 54").text("no")});
    api.add({Step("vltEndTxn", row.deleteRc == 0 ? "7 1" : "7 2", row.endRc)
                 .fill<std::uint16_t>([&](std::uint16_t& reason) {
                   reason = row.reason;
                   beforeCommit = dir_.read("vexodeleted.log");
                 })});
    if (failed && row.deleteRc == 0) api.add({Step("vltRCMsg")});
    ObjectList list;
    fill(list, 2, "12");
    std::snprintf(list.elementAt(1)->name, 64, "/a \"b\"\\\x01\xc3\xa9");
    std::snprintf(list.elementAt(2)->name, 64, "/\xff");
    orc_.maxObjPerTxn = 2;
    utility::RunRecord record(utility::ListKind::kAll);
    ut::ignoreResult(run(list, "y\n", nullptr, &record), "each code has its test");
    EXPECT_EQ(row.deleted, record.deleted.count);
    std::string text = dir_.read("vexodeleted.log");
    const std::string user = ::getpwuid(::getuid())->pw_name;
    for (std::size_t at; (at = text.find("\"" + user + "\"")) != text.npos;) {
      text.replace(at, user.size() + 2, "\"ME\"");
    }
    for (std::size_t at; (at = text.find("00-0")) != text.npos;) text.replace(at, 3, "00+");
    const std::string second = row.deleteRc == 0 ? deleted("#", R"("/?","nameBytes":"#fff")") : "";
    EXPECT_EQ(deleted("#", R"("/a \"b\"\\\u#é")") +
                  end(R"(committed","code":#,"reason":#,"objects":#)") + second + end(row.outcome),
              support::masked(text));
    EXPECT_EQ(second.empty() ? 2 : 3, std::ranges::count(beforeCommit, '\n')) << "lines come first";
    EXPECT_EQ(0600u, static_cast<unsigned>(std::filesystem::status(names).permissions()));
  }
}

TEST_F(Deletion, GoesOnWithoutARecordThatCannotBeWrittenAndSaysSoFirst) {
  dir_.write("vexodeleted.log/in the way", "");
  support::ScriptedApi api(script("B D1 C"));
  ObjectList list;
  fill(list, 1, "1");
  std::string shown;
  EXPECT_EQ(0, run(list, "y\n", &shown));
  EXPECT_LT(shown.find("QRB2667W"), shown.find("Do you want to continue?")) << shown;
  EXPECT_EQ("", left(list));
}

TEST_F(Deletion, SaysAtItsEndThatItsRecordHasGaps) {
  std::filesystem::create_symlink("/dev/full", dir_.path("vexodeleted.log"));
  for (const std::int16_t code : {std::int16_t{0}, std::int16_t{54}}) {
    support::ScriptedApi api(script(code == 0 ? "B D1 C" : "B"));
    if (code != 0) {
      api.add({Step("vltDeleteObj", "7 2 id=1", code), Step("vltRCMsg"), Step("vltEndTxn", "7 2")});
    }
    ObjectList list;
    fill(list, 1, "1");
    std::string shown;
    EXPECT_EQ(code, run(list, "y\n", &shown));
    EXPECT_NE(std::string::npos, shown.find("QRB2668W")) << shown;
  }
}

}  // namespace
