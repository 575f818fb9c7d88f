// deletion_test.cpp: the transactions for every limit, the question before them, and its answers.
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
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
using utility::ListKind;

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
  Deletion() { orc_.vltHandle = 7; }

  // Deletes from a list of the objects 1 to `count`; those named in `picked` are picked.
  unsigned short run(unsigned count, const std::string& picked, const std::string& answer,
                     utility::RunRecord* record = nullptr) {
    const char* const names[] = {"/a \"b\"\\\x01\xc3\xa9", "/\xff"};
    ObjectList list;
    for (unsigned id = 1; id <= count; ++id) {
      utZylObj_s object = {};
      std::snprintf(object.name, sizeof object.name, "%s", names[(id - 1) % 2]);
      object.objId = {0, id};
      object.sizeEstimate = {0, id * 1024};
      object.insDate = {2026, 3, static_cast<std::uint8_t>(id), 8, 5, 9};
      object.selected = picked.find(std::to_string(id)) != picked.npos ? 1 : 0;
      EXPECT_EQ(0, list.addTail(object, 0));
    }
    support::FedInput input(answer);
    support::Captured output;
    const unsigned short rc = utDeleteFiles(&list, &orc_, record);
    shown_ = output.take();
    left_.clear();
    for (auto* o = list.getFirst(); o != nullptr; o = list.getNext(o)) {
      left_ += std::to_string(o->objId.lo);
    }
    return rc;
  }

  orcObj_t orc_ = {};
  std::string shown_, left_;
};

TEST_F(Deletion, FillsTransactionsToOneLessThanTheLimit) {
  const struct {
    std::uint16_t limit;
    const char *picked, *calls, *left;
  } rows[] = {
      {0, "12345", "B D1 D2 D3 D4 D5 C", ""},   {1, "123", "B C B D1 C B D2 C B D3 C", "45"},
      {2, "123", "B D1 C B D2 C B D3 C", "45"}, {3, "12345", "B D1 D2 C B D3 D4 C B D5 C", ""},
      {3, "2345", "B D2 D3 C B D4 D5 C", "1"},  {3, "", "B C", "12345"},
  };
  for (const auto& row : rows) {
    support::ScriptedApi api(script(row.calls));
    orc_.maxObjPerTxn = row.limit;
    EXPECT_EQ(0, run(5, row.picked, "y\n")) << row.limit;
    EXPECT_EQ(row.left, left_) << row.limit;
  }
}

TEST_F(Deletion, DeletesNothingWithoutAYes) {
  for (const char* answer : {"N\n", "  no\n", "", "x\n\nn\n"}) {
    support::ScriptedApi api;  // no call at all
    EXPECT_EQ(0, run(3, "123", answer)) << answer;
    EXPECT_EQ("123", left_);
  }
}

TEST_F(Deletion, SaysWhatIsAboutToHappen) {
  const std::string noCatalog = "  Oracle:         not asked; good backups may be among them\n";
  const struct {
    const char* picked;
    ListKind list;
    std::uint64_t objects, known;
    unsigned lastDay;  // of March 2026
    std::string shown, notShown;
    std::size_t doubts = 0;
  } rows[] = {
      {"234", ListKind::kAll, 0, 0, 4,
       "  Picked objects: 3 (9.00 KB)\n  Oldest:         03/02/2026 08:05:09\n"
       "  Newest:         03/04/2026 08:05:09\n" +
           noCatalog,
       "QRB2666W"},
      {"", ListKind::kAll, 0, 0, 9,
       "  Picked objects: 0 (0 B)\n  Oldest:         None\n  Newest:         None\n" + noCatalog +
           "\nQRB2647W",
       "knows"},
      {"1", ListKind::kOrphans, 2000, 1960, 9,
       "  Oracle:         knows 1,960 of the 2,000 objects of these dates\n\ndoubt\ndoubt\n",
       "QRB2666W", 2},
      {"245", ListKind::kOrphans, 5, 0, 4, "\nQRB2666W Picked objects of the last day: 2. ",
       "doubt"},
      {"1", ListKind::kOrphans, 5, 0, 2, "knows 0 of the 5 objects", "QRB2666W"},
  };
  for (const auto& row : rows) {
    support::ScriptedApi api;
    utility::RunRecord record(row.list);
    record.objects = row.objects;
    record.objectsKnown = row.known;
    record.end = ut::makeDate(2026, 3, row.lastDay);
    record.doubts.assign(row.doubts, "doubt");
    EXPECT_EQ(0, run(5, row.picked, "n\n", &record));
    EXPECT_EQ(0u, shown_.find("\nQRB2580W ")) << shown_;
    EXPECT_NE(std::string::npos, shown_.find(row.shown)) << shown_;
    EXPECT_EQ(std::string::npos, shown_.find(row.notShown)) << shown_;
    EXPECT_EQ(0u, record.deleted.count);
  }
}

// Each row takes one message out of the catalog, or puts another text in its place.
TEST_F(Deletion, DeletesNothingIfItsQuestionCannotBeShownWhole) {
  const struct {
    const char *number, *text;  // without a text the message is missing
    ListKind list;
    bool deletes;
  } rows[] = {
      {"371", "", ListKind::kAll, false},
      {"371", "QRB0371", ListKind::kAll, false},
      {"371", "QRB0371ZSure about %s? ", ListKind::kAll, false},
      {"2580", "", ListKind::kAll, false},
      {"2580", "QRB2580WOf %s objects, %d", ListKind::kAll, false},
      {"2653", "", ListKind::kAll, false},
      {"2653", "", ListKind::kOrphans, true},
      {"2646", "QRB2646", ListKind::kOrphans, false},
      {"2646", "", ListKind::kAll, true},
      {"2580", "QRB2580W%s %s", ListKind::kAll, true},  // another wording
  };
  std::ifstream source(CATALOG);
  const std::string whole{std::istreambuf_iterator<char>(source), {}};
  for (const auto& row : rows) {
    const std::string start = std::string("\n") + row.number + " \"";
    std::string catalog = whole;
    const std::size_t at = catalog.find(start);
    ASSERT_NE(std::string::npos, at) << row.number;
    catalog.replace(at, catalog.find('\n', at + 1) - at, *row.text ? start + row.text + "\"" : "");
    std::filesystem::remove(dir_.path("vexo.cat"));
    const std::string from = dir_.write("source.msg", catalog);
    ASSERT_EQ(0, std::system((GENCAT " " + dir_.path("vexo.cat") + " " + from).c_str()));
    ASSERT_EQ(0, nlinit("vexo.cat", 10, dir_.path().c_str(), 10, 1, 1, 1, nullptr, "vexo.cat"));
    support::ScriptedApi api(script(row.deletes ? "B D1 C" : ""));
    utility::RunRecord record(row.list);
    EXPECT_EQ(0, run(1, "1", "y\n", &record));
    EXPECT_EQ(row.deletes ? "" : "1", left_) << row.number << row.text;
    EXPECT_EQ(!row.deletes, shown_.find("QRB2696E") != shown_.npos) << shown_;
  }
  EXPECT_NE(std::string::npos, dir_.read("vexoerror.log").find("QRB2696E"));
}

// Digits are masked in what is compared: times, process numbers and numbers of transactions.
TEST_F(Deletion, RecordsEveryObjectBeforeItsTransactionEndsAndTheEndAfterIt) {
  const support::ScopedEnv zone("TZ", "UTC0");
  ::tzset();
  const std::string common = R"(","time":"#-#-#T#:#:#+#:#","pid":#,"user":")" +
                             support::masked(::getpwuid(::getuid())->pw_name) +
                             R"(","transaction":"#-#-#",")";
  const auto deleted = [&](const std::string& name) {
    return R"({"v":#,"event":"delete)" + common +
           R"(node":"","owner":"","id":"#","size":#,"date":"#-#-#T#:#:#","name":)" + name + "}\n";
  };
  const auto end = [&](const std::string& outcome) {
    return R"({"v":#,"event":"end)" + common + R"(outcome":")" + outcome +
           R"(,"reason":#,"objects":#})" + "\n";
  };
  const struct {
    std::int16_t deleteRc, endRc;
    std::uint16_t reason;
    const char* outcome;  // of the second transaction
    std::uint64_t deleted;
  } rows[] = {
      {0, 0, 0, R"(committed","code":#)", 2},
      {0, VLT_RC_CHECK_REASON, 54, R"(taken back","code":#)", 1},
      {0, -50, 0, R"(unknown","code":-#)", 1},
      {0, 0, 54, R"(unknown","code":#)", 1},
      {54, 0, 0, R"(taken back","code":#)", 1},
  };
  for (const auto& row : rows) {
    std::filesystem::remove(dir_.path("vexodeleted.log"));
    const bool secondFails = row.deleteRc != 0;
    std::string beforeCommit;
    support::ScriptedApi api(script("B D1 C B"));
    api.add({Step("vltDeleteObj", "7 2 id=2", row.deleteRc)});
    if (secondFails) api.add({Step("vltRCMsg", "7 54").text("no")});
    api.add({Step("vltEndTxn", secondFails ? "7 2" : "7 1", row.endRc)
                 .fill<std::uint16_t>([&](std::uint16_t& reason) {
                   reason = row.reason;
                   beforeCommit = dir_.read("vexodeleted.log");
                 })});
    if (row.endRc != 0 || row.reason != 0) api.add({Step("vltRCMsg")});
    orc_.maxObjPerTxn = 2;
    utility::RunRecord record(ListKind::kAll);
    ut::ignoreResult(run(2, "12", "y\n", &record), "each code has its test");
    EXPECT_EQ(row.deleted, record.deleted.count);
    EXPECT_EQ(deleted(R"("/a \"b\"\\\u#é")") + end(R"(committed","code":#)") +
                  (secondFails ? "" : deleted(R"("/?","nameBytes":"#fff")")) + end(row.outcome),
              support::masked(dir_.read("vexodeleted.log")));
    EXPECT_EQ(secondFails ? 2 : 3, std::ranges::count(beforeCommit, '\n')) << "lines come first";
    const auto status = std::filesystem::status(dir_.path("vexodeleted.log"));
    EXPECT_EQ(0600u, static_cast<unsigned>(status.permissions()));
  }
}

TEST_F(Deletion, GoesOnWithoutARecordThatCannotBeWrittenAndSaysSo) {
  std::filesystem::create_symlink("/dev/full", dir_.path("vexodeleted.log"));
  for (const std::int16_t code : {std::int16_t{0}, std::int16_t{54}}) {
    support::ScriptedApi api(script(code == 0 ? "B D1 C" : "B"));
    if (code != 0) {
      api.add({Step("vltDeleteObj", "7 2 id=1", code), Step("vltRCMsg"), Step("vltEndTxn", "7 2")});
    }
    EXPECT_EQ(code, run(1, "1", "y\n"));
    EXPECT_NE(std::string::npos, shown_.find("QRB2668W")) << "at the end: " << shown_;
  }
  std::filesystem::remove(dir_.path("vexodeleted.log"));
  dir_.write("vexodeleted.log/in the way", "");
  support::ScriptedApi api(script("B D1 C"));
  EXPECT_EQ(0, run(1, "1", "y\n"));
  EXPECT_LT(shown_.find("QRB2667W"), shown_.find("Do you want to continue?")) << shown_;
  EXPECT_EQ("", left_);
}

}  // namespace
