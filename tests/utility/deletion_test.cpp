// deletion_test.cpp: the transactions for every limit, the question before them, and its answers.
#include <pwd.h>

#include "common/ut/result.h"
#include "tests/support/scripted_api.h"
#include "tests/utility/messages.h"
#include "utility/syncdb_deletion.h"

namespace {

namespace fs = std::filesystem;
using std::string, std::tuple, support::Step, support::masked;
using enum utility::ListKind;

// A script in short form, one word for each call: B begin, Dn delete object n, C commit.
std::vector<Step> script(const string& text) {
  std::vector<Step> steps;
  std::istringstream in(text);
  for (string word; in >> word;) {
    steps.push_back(word == "B"   ? Step("vltBeginTxn", "7")
                    : word == "C" ? Step("vltEndTxn", "7 1")
                                  : Step("vltDeleteObj", "7 2 id=" + word.substr(1)));
  }
  return steps;
}

class Deletion : public WithErrorLog {
 protected:
  Deletion() { orc_.vltHandle = 7; }

  // Deletes from a list of the objects 1 to `count`; those named in `picked` are picked.
  int run(std::uint8_t count, const string& picked, const string& answer,
          utility::RunRecord* record = nullptr) {
    ObjectList list;
    for (std::uint8_t id = 1; id <= count; ++id) {
      utZylObj_s o = {"/\xff",         "", "", {0, id}, {2026, 3, id, 8, 5, 9},
                      {0, id * 1024u}, 0,  0,  0,       0};
      if (id % 2 == 1) std::strcpy(o.name, "/a \"b\"\\\x01\xc3\xa9");
      o.selected = picked.find(std::to_string(id)) != picked.npos;
      EXPECT_EQ(0, list.addTail(o, 0));
    }
    support::FedInput input(answer);
    support::Captured output;
    const int rc = utDeleteFiles(&list, &orc_, record);
    shown_ = output.take();
    left_.clear();
    for (auto* o = list.getFirst(); o; o = list.getNext(o)) left_ += std::to_string(o->objId.lo);
    return rc;
  }

  orcObj_t orc_ = {};
  string shown_, left_;
};

TEST_F(Deletion, FillsTransactionsToOneLessThanTheLimit) {
  const tuple<std::uint16_t, const char*, const char*, const char*> rows[] = {
      {0, "12345", "B D1 D2 D3 D4 D5 C", ""},   {1, "123", "B C B D1 C B D2 C B D3 C", "45"},
      {2, "123", "B D1 C B D2 C B D3 C", "45"}, {3, "12345", "B D1 D2 C B D3 D4 C B D5 C", ""},
      {3, "2345", "B D2 D3 C B D4 D5 C", "1"},  {3, "", "B C", "12345"},
  };
  for (const auto& [limit, picked, calls, left] : rows) {
    support::ScriptedApi api(script(calls));
    orc_.maxObjPerTxn = limit;
    EXPECT_EQ(0, run(5, picked, "y\n")) << calls;
    EXPECT_EQ(left, left_) << calls;
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
// and what is not shown and what is.
TEST_F(Deletion, SaysWhatIsAboutToHappen) {
  for (const auto& [picked, list, objects, known, doubts, lastDay, notShown, shown] :
       {tuple("234", kAll, 0u, 0u, 0u, 4u, "QRB2666W",
              "  Picked objects: 3 (9.00 KB)\n  Oldest:         03/02/2026 08:05:09\n"
              "  Newest:         03/04/2026 08:05:09\n  Oracle:         not asked; good back"),
        {"", kAll, 0, 0, 0, 9, "doubt",
         "  Picked objects: 0 (0 B)\n  Oldest:         None\n  Newest:         None\n"
         "  Oracle:         not asked; good backups may be among them\n\nQRB2647W"},
        {"1", kOrphans, 2000, 1960, 2, 2, "QRB2666W",
         "  Oracle:         knows 1,960 of the 2,000 objects of these dates\n\ndoubt\ndoubt\n"},
        {"245", kOrphans, 5, 0, 0, 4, "doubt",
         " 0 of the 5 objects of these dates\n\nQRB2666W Picked objects of the last day: 2. "}}) {
    support::ScriptedApi api;
    utility::RunRecord record(list);
    record.objects = objects;
    record.objectsKnown = known;
    record.end = ut::makeDate(2026, 3, lastDay);
    record.doubts.assign(doubts, "doubt");
    EXPECT_EQ(0, run(5, picked, "n\n", &record));
    EXPECT_TRUE(shown_.starts_with("\nQRB2580W ")) << shown_;
    EXPECT_HOLDS(shown_, shown);
    EXPECT_EQ(string::npos, shown_.find(notShown)) << shown_;
    EXPECT_HOLDS(shown_, "\n\nDo you want");
  }
}

// Each row takes one message out of the catalog, or puts another text in its place, and says
// whether orphans are then deleted, and objects of a list of all. Another wording harms nothing.
TEST_F(Deletion, DeletesNothingIfItsQuestionCannotBeShownWhole) {
  std::ifstream source(CATALOG);
  const string whole{std::istreambuf_iterator<char>(source), {}};
  const tuple<string, string, bool, bool> rows[] = {
      {"371", "", false, false},        {"371", "QRB0371ZSure about %s? ", false, false},
      {"371", "QRB0371", false, false}, {"2580", "QRB2580WOf %s objects, %d", false, false},
      {"2580", "", false, false},       {"2580", "QRB2580W%s %s", true, true},
      {"2653", "", true, false},        {"2646", "QRB2646", false, true},
  };
  for (const auto& [number, text, deletesOrphans, deletesAll] : rows) {
    SCOPED_TRACE(number + text);
    const string start = "\n" + number + " \"";
    string catalog = whole;
    const std::size_t at = catalog.find(start);
    catalog.replace(at, catalog.find('\n', at + 1) - at, text.empty() ? "" : start + text + "\"");
    fs::remove("vexo.cat");
    const string from = dir_.write("source.msg", catalog);
    ASSERT_EQ(0, std::system((GENCAT " vexo.cat " + from).c_str()));
    ASSERT_EQ(0, nlinit("vexo.cat", 10, dir_.path().c_str(), 10, 1, 1, 1, nullptr, "vexo.cat"));
    for (const auto& [list, deletes] : {std::pair(kOrphans, deletesOrphans), {kAll, deletesAll}}) {
      support::ScriptedApi api(script(deletes ? "B D1 C" : ""));
      utility::RunRecord record(list);
      EXPECT_EQ(0, run(1, "1", "y\n", &record));
      EXPECT_EQ(deletes ? "" : "1", left_);
      EXPECT_EQ(!deletes, shown_.find("QRB2696E") != shown_.npos) << shown_;
    }
  }
}

// Digits are masked in what is compared: times, process numbers and numbers of transactions.
TEST_F(Deletion, RecordsEveryObjectBeforeItsTransactionEndsAndTheEndAfterIt) {
  const support::ScopedEnv zone("TZ", "UTC0");
  ::tzset();
  const string common = R"(","time":"#-#-#T#:#:#+#:#","pid":#,"user":")" +
                        masked(::getpwuid(::getuid())->pw_name) + R"(","transaction":"#-#-#",")";
  const auto deleted = [&](const string& name) {
    return R"({"v":#,"event":"delete)" + common +
           R"(node":"","owner":"","id":"#","size":#,"date":"#-#-#T#:#:#","name":)" + name + "}\n";
  };
  const auto end = [&](const string& outcome) {
    return R"({"v":#,"event":"end)" + common + R"(outcome":")" + outcome +
           R"(,"reason":#,"objects":#})" + "\n";
  };
  // What the second deletion gives, and the end of its transaction; the outcome, and how many are
  // gone.
  const tuple<std::int16_t, std::int16_t, std::uint16_t, const char*, unsigned> rows[] = {
      {0, 0, 0, R"(committed","code":#)", 2},
      {0, VLT_RC_CHECK_REASON, 54, R"(taken back","code":#)", 1},
      {0, -50, 0, R"(unknown","code":-#)", 1},
      {0, 0, 54, R"(unknown","code":#)", 1},
      {54, 0, 0, R"(taken back","code":#)", 1}};
  for (const auto& [deleteRc, endRc, why, outcome, gone] : rows) {
    fs::remove("vexodeleted.log");
    string beforeCommit;
    support::ScriptedApi api(script("B D1 C B"));
    api.add({Step("vltDeleteObj", "7 2 id=2", deleteRc)});
    if (deleteRc != 0) api.add({Step("vltRCMsg", "7 54").text("no")});
    api.add({Step("vltEndTxn", deleteRc != 0 ? "7 2" : "7 1", endRc)
                 .fill<std::uint16_t>([&, code = why](std::uint16_t& reason) {
                   reason = code;
                   beforeCommit = dir_.read("vexodeleted.log");
                 })});
    if (endRc != 0 || why != 0) api.add({Step("vltRCMsg")});
    orc_.maxObjPerTxn = 2;
    utility::RunRecord record(kAll);
    ut::ignoreResult(run(2, "12", "y\n", &record), "each code has its test");
    EXPECT_EQ(gone, record.deleted.count);
    const string lines = deleted(R"("/a \"b\"\\\u#é")") + end(R"(committed","code":#)") +
                         (deleteRc != 0 ? "" : deleted(R"("/?","nameBytes":"#fff")"));
    EXPECT_EQ(lines + end(outcome), masked(dir_.read("vexodeleted.log")));
    EXPECT_EQ(lines, masked(beforeCommit)) << "lines come first";
  }
  EXPECT_EQ(fs::perms(0600), fs::status("vexodeleted.log").permissions());
}

TEST_F(Deletion, GoesOnWithoutARecordThatCannotBeWrittenAndSaysSo) {
  fs::create_symlink("/dev/full", "vexodeleted.log");
  for (const std::int16_t code : {std::int16_t{0}, std::int16_t{54}}) {
    support::ScriptedApi api(script("B"));
    api.add({Step("vltDeleteObj", "7 2 id=1", code)});
    if (code != 0) api.add({Step("vltRCMsg")});
    api.add({Step("vltEndTxn", code == 0 ? "7 1" : "7 2")});
    EXPECT_EQ(code, run(1, "1", "y\n"));
    EXPECT_HOLDS(shown_, "QRB2668W");
  }
  fs::remove("vexodeleted.log");
  dir_.write("vexodeleted.log/in the way", "");
  support::ScriptedApi api(script("B D1 C"));
  EXPECT_EQ(0, run(1, "1", "y\n"));
  EXPECT_LT(shown_.find("QRB2667W"), shown_.find("Do you want to continue?")) << shown_;
}

}  // namespace
