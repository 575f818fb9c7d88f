// listing_test.cpp: which objects of the server are listed, and the dates that are asked for.
#include <algorithm>

#include "common/ut/trace.h"
#include "tests/support/scripted_api.h"
#include "tests/utility/messages.h"
#include "utility/dialogue.h"
#include "utility/syncdb_listing.h"
#include "utility/syncdb_names.h"
#include "utility/syncdb_query.h"
#include "utility/utpick.h"

namespace {

using std::string, std::tuple, support::Step;

// The library's answer to the next-object call: one object, of 7 March 2026, with what `act` fills.
Step object(std::function<void(VltQryRespBackup&)> act) {
  return Step("vltGetNextQObj", "7", VLT_RC_MORE_DATA).fill<VltDataBlk>([act](VltDataBlk& block) {
    auto& object = *static_cast<VltQryRespBackup*>(block.buffer);
    EXPECT_EQ(tuple(8, VLT_STATE_ACTIVE, 3, 4600u),
              tuple(object.structVersion, object.objState, block.structVersion, block.bufferLen));
    object.insDate = {2026, 3, 7, 8, 5, 9};
    act(object);
    object.structVersion = 0;
    block.bufferLen = 0;
  });
}
Step found(const string& lowLevel, VltDate date = {2026, 3, 7, 8, 5, 9}) {
  return object([=](VltQryRespBackup& object) {
    object = {8, 0, {"/fs", "/oracle", "", 0}, "other", {1, 2}, date, {1, 5}, 1, 8 + 16, 1};
    std::strcpy(object.objName.lowLevel, lowLevel.c_str());
  });
}

std::vector<Step> started() {
  return {Step("vltQuerySessInfo", "7").fill<VltSessInfo>([](VltSessInfo& info) {
            std::strcpy(info.nodeName, "ORANODE");
            std::strcpy(info.owner, "DBA");
          }),
          Step("vltBeginQuery", "7 1 '/fs' '/*' '/*' owner='DBA'")
              .fill<const VltQueryBackup>([](const VltQueryBackup& query) {
                const auto& [year, month, day, h, m, s] = query.pitDate;
                EXPECT_EQ(tuple(2, VLT_STATE_ACTIVE, 2026, 3, 31, 23, 59, 59),
                          tuple(query.structVersion, query.objState, year, month, day, h, m, s));
              })};
}

class FileList : public WithErrorLog {
 protected:
  FileList() {
    orc_.vltHandle = 7;
    std::strcpy(orc_.VEXO_FS, "/fs");
    std::strcpy(orc_.VEXO_OWNER, "DBA");
  }
  // Lists `objects` from 7 March to 31 March 2026.
  void list(std::vector<Step> objects, dsBPlusTree* tree = nullptr,
            utility::RangeCounts* counts = nullptr, std::int16_t last = VLT_RC_FINISHED,
            std::vector<Step> start = started()) {
    support::ScriptedApi api(std::move(start));
    api.add(std::move(objects));
    api.add({Step("vltGetNextQObj", "7", last), Step("vltEndQuery", "7")});
    support::Captured output;
    EXPECT_EQ(0, utGetFileList(ut::makeDate(2026, 3, 7), ut::makeDate(2026, 3, 31), &orc_, &list_,
                               tree, counts));
  }
  // A tree of these handles.
  static std::unique_ptr<dsBPlusTree> know(std::vector<string> handles) {
    auto tree = std::make_unique<dsBPlusTree>();
    for (string& handle : handles) {
      EXPECT_EQ(0, tree->IsertItem(handle.data(), static_cast<int>(handle.size()) + 1,
                                   utInsertFilename, utFindFilename));
    }
    return tree;
  }
  string names() const {
    string text;
    for (auto* o = list_.getFirst(); o; o = list_.getNext(o)) text += o->name + string(" ");
    return text;
  }

  orcObj_t orc_ = {};
  ObjectList list_;
};

TEST_F(FileList, CountsTheStartDateByWholeDays) {
  list({found("/a", {2026, 3, 7, 0, 0, 0}), found("/b", {2026, 3, 6, 23, 59, 59}),
        found("/c", {2026, 2, 28, 1, 1, 1}), found("/d", {2025, 12, 31, 1, 1, 1}),
        found("/e", {2026, 4, 1, 1, 1, 1}), found("/f", {2027, 1, 1, 1, 1, 1})});
  EXPECT_EQ("/fs/oracle/a /fs/oracle/e /fs/oracle/f ", names());
}

// Everything depends on this comparison: one leading "/" is dropped, the rest must be equal byte by
// byte.
TEST_F(FileList, LeavesOutWhatTheTreeHolds) {
  const string longest(255, 'x'), d = "/fs/oracle";
  list({found("/known"), found("known"), found("//deep"), found("/deep"), found("/Known"),
        found("/know"), found("/known "), found("/"), found("/" + longest), found("x" + longest)},
       know({"known", "/deep", longest}).get());
  EXPECT_EQ(d + "/deep " + d + "/Known " + d + "/know " + d + "/known  " + d + "/ " + d + "x" +
                longest + " ",
            names());
}

// With handles of at most five characters. Only a query that was run to its end is complete.
TEST_F(FileList, CountsWhatItFinds) {
  for (const auto& [more, rc, complete] :
       {tuple(0, VLT_RC_FINISHED, true), {0, 2410, false}, {1, VLT_RC_FINISHED, false}}) {
    std::vector<Step> objects = {found("/known"), found("/known_2"), found("/k\xc3\xa4se1"),
                                 found("/k\xc3\xa4se12"), found("/\xc3\xa4")};
    if (more == 1) objects.push_back(Step("vltGetNextQObj", "7", VLT_RC_UNKNOWN_FORMAT));
    utility::RangeCounts counts = {5, 0, 0, 0, 0, 0};
    list(objects, know({"k\xc3\xa4se1", "known"}).get(), &counts, static_cast<std::int16_t>(rc));
    EXPECT_EQ(tuple(5u, 2u, 1u, 2u, 2u, complete),
              tuple(counts.objects, counts.known, counts.foreignKnown, counts.foreignOffered,
                    counts.cutOff, counts.complete));
  }
}

// A library may leave fields alone, or claim an object and fill nothing.
TEST_F(FileList, TakesNothingFromTheObjectBefore) {
  list({found("/first"), object([](auto&) {}), found("/second"),
        object([](VltQryRespBackup& object) { std::strcpy(object.objName.lowLevel, "/low"); }),
        object([](VltQryRespBackup& object) { std::strcpy(object.objName.fileSpace, "/f"); })});
  EXPECT_EQ("/fs/oracle/first /fs/oracle/second /low /f ", names());
  const utZylObj_s *first = list_.getFirst(), *low = list_.elementAt(3);
  ASSERT_NE(nullptr, low);
  EXPECT_EQ("ORANODE DBA", first->node + string(" ") + first->owner);
  EXPECT_EQ(0u, low->objId.lo | low->sizeEstimate.lo | low->compressed | low->encryptionType |
                    low->clientDeduplicated);
}

TEST_F(FileList, WritesTheNamesOfAllObjectsToADiagnosticFileForItsUserOnly) {
  support::ScopedEnv temporary("TMPDIR", dir_.path().c_str());
  const mode_t before = ::umask(0);
  TR_ORCLEVEL2 = 1;
  list({found("/early", {2026, 3, 6, 23, 59, 59}), found("/a"), found("/b")});
  TR_ORCLEVEL2 = 0;
  ::umask(before);
  std::filesystem::remove(dir_.path("vexo.opt"));
  const std::filesystem::directory_entry file = *std::filesystem::directory_iterator(dir_.path());
  const string name = file.path().filename();
  EXPECT_TRUE(name.starts_with("ZYLO")) << name;
  EXPECT_EQ("a\nb\n", dir_.read(name));
  EXPECT_EQ(std::filesystem::perms(0600), file.status().permissions());
}

TEST_F(FileList, ReadsRecordsOfAnyBytesWithinTheirBounds) {
  list({Step("vltGetNextQObj", "7", VLT_RC_MORE_DATA).fill<VltDataBlk>([](VltDataBlk& block) {
         std::memset(block.buffer, 0xff, block.bufferLen);
       })},
       nullptr, nullptr, VLT_RC_FINISHED,
       {Step("vltQuerySessInfo").fill<VltSessInfo>([](VltSessInfo& info) {
          std::memset(&info, 0xff, sizeof info);
        }),
        Step("vltBeginQuery")});
  utZylObj_s* scribbled = list_.getFirst();
  ASSERT_NE(nullptr, scribbled);
  EXPECT_EQ(string(1280, '\xff'), scribbled->name);
  EXPECT_EQ(string(64, '\xff'), scribbled->owner);
  support::Captured output;
  utPrintBackupItem(scribbled);
  EXPECT_EQ(1280 + 64, std::ranges::count(output.take(), '?'));
  char entry[kEntryTextSize];
  EXPECT_EQ(0, pkFormatEntry(&list_, entry, 1, 1));
}

TEST(Totals, StopAtTheLargestSizeAndAtNone) {
  utZylObj_s large = {}, small = {};
  large.sizeEstimate = {~0u, ~0u - 1};
  small.sizeEstimate = {0, 5};
  utility::ObjectTotal total;
  for (const utZylObj_s& added : {large, small}) total.add(added);
  EXPECT_EQ(~0ull, total.bytes);
  for (const utZylObj_s& removed : {small, large}) total.remove(removed);
  EXPECT_EQ(tuple(0u, 0u), tuple(total.bytes, total.count));
}

TEST_F(FileList, OffersDefaultDatesInEveryFormat) {
  int format = 0;
  for (const char* first : {"01/01/1990", "01-01-1990", "1990-01-01", "01.01.1990", "1990.01.01"}) {
    destroyNlsGlobalObject();
    open(++format);
    char start[16], end[16];
    utGetDefaultDates(start, end);
    EXPECT_STREQ(first, start);
    EXPECT_STREQ(ut::formatDate(ut::localNow()).text, end);
  }
}

TEST_F(FileList, AsksForDatesUntilTheRangeIsValid) {
  // Without an end in the range: until today.
  const tuple<const char*, const char*, int> rows[] = {
      {"", "01/01/1990", 1},
      {"03/07/2026\n3/7/2026\n", "03/07/2026 03/07/2026", 0},
      {"x\n02/30/2026\n03/07/2026\n03/31/2026x\n03/31/2026\n", "03/07/2026 03/31/2026", 0},
      // A script with the line ends of another system, and blanks before them.
      {"03/07/2026 \r\nx\r\n\r\n03/08/2026\n03/09/2026\n", "03/07/2026", 1},
      {"nonsense\n\n03/31/2026\n", "01/01/1990 03/31/2026", 0},
      {"03/07/2026\n03/06/2026\n03/01/2026\n03/06/2026\n", "03/01/2026 03/06/2026", 0},
      // The default end was used once: the flag is kept, whatever is answered later.
      {"12/31/9999\n\n03/01/2026\n03/06/2026\n", "03/01/2026 03/06/2026", 1},
  };
  for (const auto& [answers, wanted, wantedDefault] : rows) {
    support::FedInput input(answers);
    const support::Captured output;
    nfDate start = {}, end = {};
    int usedDefault = 0;
    utGetDates(&start, &end, usedDefault);
    const string range = ut::formatDate(start).text + string(" ") + ut::formatDate(end).text;
    EXPECT_TRUE(range.starts_with(wanted)) << answers << range;
    EXPECT_EQ(wantedDefault, usedDefault) << answers;
  }
}

}  // namespace
