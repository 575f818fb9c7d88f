// deletion_test.cpp: the transactions for every limit, the question before them, and its answers.
#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

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
                     const utility::Findings* findings = nullptr) {
    support::FedInput input(answer);
    support::Captured output;
    const unsigned short rc = utDeleteFiles(&list, &orc_, findings);
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
  const std::string noCatalog = "  Oracle:         not asked; good backups may be among them\n";
  const struct {
    const char* picked;
    std::uint32_t asked, without;
    std::uint64_t known;
    std::string shown;
  } rows[] = {
      {"234", 0, 0, 0,
       "  Picked objects: 3 (9.00 KB)\n  Oldest:         03/02/2026 08:05:09\n"
       "  Newest:         03/04/2026 08:05:09\n" +
           noCatalog},
      {"", 0, 0, 0,
       "  Picked objects: 0 (0 B)\n  Oldest:         None\n  Newest:         None\n" + noCatalog +
           "\nQRB2647W"},
      {"1", 2, 0, 1234567, "  Oracle:         knows 1,234,567 backup pieces of these dates, none"},
      {"1", 3, 2, 5, "\nQRB2652W Catalogs that know no backup piece of these dates: 2 of 3. "},
  };
  for (const auto& row : rows) {
    support::ScriptedApi api;
    ObjectList list;
    fill(list, 5, row.picked);
    const utility::Findings findings = {row.asked, row.without, row.known};
    std::string shown;
    EXPECT_EQ(0, run(list, "n\n", &shown, row.asked == 0 ? nullptr : &findings));
    EXPECT_EQ(0u, shown.find("\nQRB2580W ")) << shown;
    EXPECT_NE(std::string::npos, shown.find(row.shown)) << shown;
  }
}

}  // namespace
