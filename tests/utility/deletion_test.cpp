// deletion_test.cpp: the transactions for every limit, the question before them, and its answers.
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

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
  for (const auto& [limit, picked, calls, left] :
       {std::tuple(std::uint16_t{0}, "12345", "B D1 D2 D3 D4 D5 C", ""),
        {1, "123", "B C B D1 C B D2 C B D3 C", "45"},
        {2, "123", "B D1 C B D2 C B D3 C", "45"},
        {3, "12345", "B D1 D2 C B D3 D4 C B D5 C", ""},
        {3, "2345", "B D2 D3 C B D4 D5 C", "1"},
        {3, "", "B C", "12345"}}) {
    support::ScriptedApi api(script(calls));
    orc_.maxObjPerTxn = limit;
    EXPECT_EQ(0, run(5, picked, "y\n")) << limit;
    EXPECT_EQ(left, left_) << limit;
  }
}

TEST_F(Deletion, DeletesNothingWithoutAYes) {
  for (const char* answer : {"N\n", "  no\n", "", "x\n\nn\n"}) {
    support::ScriptedApi api;  // no call at all
    EXPECT_EQ(0, run(3, "123", answer)) << answer;
    EXPECT_EQ("123", left_);
  }
}

// The picks, the list, its objects, those that Oracle knows, the doubts, the last day of the range,
// and what is shown and what is not.
TEST_F(Deletion, SaysWhatIsAboutToHappen) {
  for (const auto& [picked, list, objects, known, doubts, lastDay, shown, notShown] :
       {std::tuple("234", ListKind::kAll, 0u, 0u, 0u, 4u,
                   "  Picked objects: 3 (9.00 KB)\n  Oldest:         03/02/2026 08:05:09\n"
                   "  Newest:         03/04/2026 08:05:09\n  Oracle:         not asked; good back",
                   "QRB2666W"),
        {"", ListKind::kAll, 0, 0, 0, 9,
         "  Picked objects: 0 (0 B)\n  Oldest:         None\n  Newest:         None\n", "knows"},
        {"", ListKind::kAll, 0, 0, 0, 9, "among them\n\nQRB2647W", "doubt"},
        {"1", ListKind::kOrphans, 2000, 1960, 2, 9,
         "  Oracle:         knows 1,960 of the 2,000 objects of these dates\n\ndoubt\ndoubt\n",
         "QRB2666W"},
        {"245", ListKind::kOrphans, 5, 0, 0, 4, "\nQRB2666W Picked objects of the last day: 2. ",
         "doubt"},
        {"1", ListKind::kOrphans, 5, 0, 0, 2, "knows 0 of the 5 objects", "QRB2666W"}}) {
    support::ScriptedApi api;
    utility::RunRecord record(list);
    record.objects = objects;
    record.objectsKnown = known;
    record.end = ut::makeDate(2026, 3, lastDay);
    record.doubts.assign(doubts, "doubt");
    EXPECT_EQ(0, run(5, picked, "n\n", &record));
    EXPECT_EQ(0u, shown_.find("\nQRB2580W ")) << shown_;
    EXPECT_NE(std::string::npos, shown_.find(shown)) << shown_;
    EXPECT_EQ(std::string::npos, shown_.find(notShown)) << shown_;
    EXPECT_NE(std::string::npos, shown_.find("\n\nDo you want")) << shown_;
  }
}

// Each row takes one message out of the catalog, or puts another text in its place, and says
// whether orphans are then deleted, and objects of a list of all.
TEST_F(Deletion, DeletesNothingIfItsQuestionCannotBeShownWhole) {
  std::ifstream source(CATALOG);
  const std::string whole{std::istreambuf_iterator<char>(source), {}};
  for (const auto& [number, text, deletesOrphans, deletesAll] :
       {std::tuple("371", std::string(), false, false),
        {"371", "QRB0371", false, false},
        {"371", "QRB0371ZSure about %s? ", false, false},
        {"2580", "", false, false},
        {"2580", "QRB2580WOf %s objects, %d", false, false},
        {"2580", "QRB2580W%s %s", true, true},  // another wording
        {"2653", "", true, false},
        {"2646", "QRB2646", false, true}}) {
    const std::string start = std::string("\n") + number + " \"";
    std::string catalog = whole;
    const std::size_t at = catalog.find(start);
    catalog.replace(at, catalog.find('\n', at + 1) - at, text.empty() ? "" : start + text + "\"");
    std::filesystem::remove(dir_.path("vexo.cat"));
    const std::string from = dir_.write("source.msg", catalog);
    ASSERT_EQ(0, std::system((GENCAT " " + dir_.path("vexo.cat") + " " + from).c_str()));
    ASSERT_EQ(0, nlinit("vexo.cat", 10, dir_.path().c_str(), 10, 1, 1, 1, nullptr, "vexo.cat"));
    for (const ListKind list : {ListKind::kOrphans, ListKind::kAll}) {
      const bool deletes = list == ListKind::kAll ? deletesAll : deletesOrphans;
      support::ScriptedApi api(script(deletes ? "B D1 C" : ""));
      utility::RunRecord record(list);
      EXPECT_EQ(0, run(1, "1", "y\n", &record));
      EXPECT_EQ(deletes ? "" : "1", left_) << number << text;
      EXPECT_EQ(!deletes, shown_.find("QRB2696E") != shown_.npos) << shown_;
    }
  }
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
  // What the second deletion gives, and the end of its transaction; the outcome, and how many are
  // gone.
  using Code = std::int16_t;
  for (const auto& [deleteRc, endRc, why, outcome, gone] :
       {std::tuple(Code{0}, Code{0}, 0, R"(committed","code":#)", 2u),
        {0, VLT_RC_CHECK_REASON, 54, R"(taken back","code":#)", 1},
        {0, -50, 0, R"(unknown","code":-#)", 1},
        {0, 0, 54, R"(unknown","code":#)", 1},
        {54, 0, 0, R"(taken back","code":#)", 1}}) {
    std::filesystem::remove(dir_.path("vexodeleted.log"));
    const bool fails = deleteRc != 0;
    std::string beforeCommit;
    support::ScriptedApi api(script("B D1 C B"));
    api.add({Step("vltDeleteObj", "7 2 id=2", deleteRc)});
    if (fails) api.add({Step("vltRCMsg", "7 54").text("no")});
    api.add({Step("vltEndTxn", fails ? "7 2" : "7 1", endRc)
                 .fill<std::uint16_t>([&, code = why](std::uint16_t& reason) {
                   reason = static_cast<std::uint16_t>(code);
                   beforeCommit = dir_.read("vexodeleted.log");
                 })});
    if (endRc != 0 || why != 0) api.add({Step("vltRCMsg")});
    orc_.maxObjPerTxn = 2;
    utility::RunRecord record(ListKind::kAll);
    ut::ignoreResult(run(2, "12", "y\n", &record), "each code has its test");
    EXPECT_EQ(gone, record.deleted.count);
    const std::string lines = deleted(R"("/a \"b\"\\\u#é")") + end(R"(committed","code":#)") +
                              (fails ? "" : deleted(R"("/?","nameBytes":"#fff")"));
    EXPECT_EQ(lines + end(outcome), support::masked(dir_.read("vexodeleted.log")));
    EXPECT_EQ(lines, support::masked(beforeCommit)) << "lines come first";
  }
  const auto mode = std::filesystem::status(dir_.path("vexodeleted.log")).permissions();
  EXPECT_EQ(0600u, static_cast<unsigned>(mode));
}

TEST_F(Deletion, GoesOnWithoutARecordThatCannotBeWrittenAndSaysSo) {
  std::filesystem::create_symlink("/dev/full", dir_.path("vexodeleted.log"));
  for (const std::int16_t code : {std::int16_t{0}, std::int16_t{54}}) {
    support::ScriptedApi api(script("B"));
    api.add({Step("vltDeleteObj", "7 2 id=1", code)});
    if (code != 0) api.add({Step("vltRCMsg")});
    api.add({Step("vltEndTxn", code == 0 ? "7 1" : "7 2")});
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
