// listing_test.cpp: which objects of the server are listed, and the dates that are asked for.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "common/ut/trace.h"
#include "tests/support/captured.h"
#include "tests/support/scripted_api.h"
#include "tests/utility/messages.h"
#include "utility/dialogue.h"
#include "utility/syncdb_listing.h"
#include "utility/syncdb_names.h"
#include "utility/syncdb_query.h"
#include "utility/utpick.h"

namespace {

using support::Step;

template <std::size_t N>
void put(char (&to)[N], const std::string& text) {
  std::snprintf(to, N, "%s", text.c_str());
}

// The library's answer to the next-object call: one object.
Step found(const std::string& lowLevel, VltDate date = {2026, 3, 7, 8, 5, 9}) {
  return Step("vltGetNextQObj", "7", VLT_RC_MORE_DATA)
      .fill<VltDataBlk>([lowLevel, date](VltDataBlk& block) {
        auto& object = *static_cast<VltQryRespBackup*>(block.buffer);
        EXPECT_EQ(8, object.structVersion);
        EXPECT_EQ(4600u, block.bufferLen);
        put(object.objName.fileSpace, "/fs");
        put(object.objName.highLevel, "/oracle");
        put(object.objName.lowLevel, lowLevel);
        object.objId = {1, 2};
        object.insDate = date;
        object.sizeEstimate = {1, 5};
        object.compressType = 1;
        object.encryptionType = 8 + 16;
        object.clientDeduplicated = 1;
      });
}
Step answer(std::int16_t rc) { return Step("vltGetNextQObj", "7", rc); }
Step ended() { return Step("vltEndQuery", "7"); }

std::vector<Step> started() {
  return {Step("vltQuerySessInfo", "7").fill<VltSessInfo>([](VltSessInfo& info) {
            put(info.nodeName, "ORANODE");
            put(info.owner, "DBA");
          }),
          Step("vltBeginQuery", "7 1 '/fs' '/*' '/*' owner='DBA'")
              .look<VltQueryBackup>([](const VltQueryBackup& query) {
                EXPECT_EQ(2, query.structVersion);
                EXPECT_EQ(VLT_STATE_ACTIVE, query.objState);
                EXPECT_EQ(2026, query.pitDate.year);
                EXPECT_EQ(3, query.pitDate.month);
                EXPECT_EQ(31, query.pitDate.day);
                EXPECT_EQ(23, query.pitDate.hour);
                EXPECT_EQ(59, query.pitDate.minute);
                EXPECT_EQ(59, query.pitDate.second);
              })};
}

class FileList : public WithErrorLog {
 protected:
  void SetUp() override {
    WithErrorLog::SetUp();
    orc_.vltHandle = 7;
    put(orc_.VEXO_FS, "/fs");
    put(orc_.VEXO_OWNER, "DBA");
  }

  // Runs a listing from 7 March to 31 March 2026 against `steps`.
  unsigned short list(std::vector<Step> steps, dsBPlusTree* tree = nullptr, bool query = false) {
    support::ScriptedApi api(query ? std::vector<Step>{} : started());
    api.add(std::move(steps));
    support::Captured output;
    const unsigned short rc =
        utGetFileList(ut::makeDate(2026, 3, 7), ut::makeDate(2026, 3, 31), &orc_, &list_, tree);
    shown_ = output.take();
    return rc;
  }
  std::string names() const {
    std::string text;
    for (auto* o = list_.getFirst(); o != nullptr; o = list_.getNext(o)) {
      text += std::string(text.empty() ? "" : " ") + o->name;
    }
    return text;
  }

  orcObj_t orc_ = {};
  ObjectList list_;
  std::string shown_;
};

TEST_F(FileList, CountsTheStartDateByWholeDays) {
  EXPECT_EQ(0, list({found("/a", {2026, 3, 7, 0, 0, 0}), found("/b", {2026, 3, 6, 23, 59, 59}),
                     found("/c", {2026, 2, 28, 1, 1, 1}), found("/d", {2025, 12, 31, 1, 1, 1}),
                     found("/e", {2026, 4, 1, 1, 1, 1}), found("/f", {2027, 1, 1, 1, 1, 1}),
                     answer(VLT_RC_FINISHED), ended()}));
  EXPECT_EQ("/fs/oracle/a /fs/oracle/e /fs/oracle/f", names());
}

// Everything depends on this comparison: one leading "/" is dropped, the rest must be equal byte by
// byte.
TEST_F(FileList, LeavesOutWhatTheTreeHolds) {
  dsBPlusTree tree;
  const std::string longest(255, 'x');
  for (const std::string& handle : {std::string("known"), std::string("/deep"), longest}) {
    ASSERT_EQ(0,
              tree.IsertItem(const_cast<char*>(handle.c_str()), static_cast<int>(handle.size()) + 1,
                             utInsertFilename, utFindFilename));
  }
  EXPECT_EQ(0, list({found("/known"), found("known"), found("//deep"), found("/deep"),
                     found("/Known"), found("/know"), found("/known "), found("/"),
                     found("/" + longest), found("x" + longest), answer(VLT_RC_FINISHED), ended()},
                    &tree));
  EXPECT_EQ(
      "/fs/oracle/deep /fs/oracle/Known /fs/oracle/know /fs/oracle/known  /fs/oracle/ "
      "/fs/oraclex" +
          longest,
      names());
}

// A library may leave fields alone, or claim an object and fill nothing.
TEST_F(FileList, TakesNothingFromTheObjectBefore) {
  const auto fills = [](std::function<void(VltQryRespBackup&)> act) {
    return Step("vltGetNextQObj", "7", VLT_RC_MORE_DATA).fill<VltDataBlk>([act](VltDataBlk& block) {
      auto& object = *static_cast<VltQryRespBackup*>(block.buffer);
      EXPECT_EQ(8, object.structVersion);
      EXPECT_EQ(VLT_STATE_ACTIVE, object.objState);
      EXPECT_EQ(3, block.structVersion);
      EXPECT_EQ(4600u, block.bufferLen);
      object.insDate = {2026, 3, 8, 0, 0, 0};
      act(object);
      block.bufferLen = 0;
      object.structVersion = 0;
    });
  };
  EXPECT_EQ(0, list({found("/first"), fills([](VltQryRespBackup&) {}), found("/second"),
                     fills([](VltQryRespBackup& object) { put(object.objName.lowLevel, "/low"); }),
                     fills([](VltQryRespBackup& object) { put(object.objName.fileSpace, "/f"); }),
                     answer(VLT_RC_FINISHED), ended()}));
  EXPECT_EQ("/fs/oracle/first /fs/oracle/second /low /f", names());
  const utZylObj_s* low = list_.elementAt(3);
  ASSERT_NE(nullptr, low);
  EXPECT_EQ(0u, low->objId.lo + low->sizeEstimate.lo + low->compressed + low->encryptionType +
                    low->clientDeduplicated);
}

TEST_F(FileList, WritesTheNamesOfAllObjectsToADiagnosticFileForItsUserOnly) {
  support::ScopedEnv temporary("TMPDIR", dir_.path().c_str());
  const mode_t before = ::umask(0);
  TR_ORCLEVEL2 = 1;
  EXPECT_EQ(0, list({found("/a"), found("/b"), answer(VLT_RC_FINISHED), ended()}));
  TR_ORCLEVEL2 = 0;
  ::umask(before);
  for (const auto& file : std::filesystem::directory_iterator(dir_.path())) {
    const std::string name = file.path().filename();
    if (!name.starts_with("ZYLO")) continue;
    EXPECT_EQ("a\nb\n", dir_.read(name));
    EXPECT_EQ(0600u, static_cast<unsigned>(file.status().permissions()));
    return;
  }
  FAIL() << "no such file";
}

TEST_F(FileList, ReadsRecordsOfAnyBytesWithinTheirBounds) {
  const auto scribble = [](void* record, std::size_t size) { std::memset(record, 0xff, size); };
  EXPECT_EQ(
      0,
      list({Step("vltQuerySessInfo").fill<VltSessInfo>([&](VltSessInfo& info) {
              scribble(&info, sizeof info);
            }),
            Step("vltBeginQuery"),
            Step("vltGetNextQObj", "7", VLT_RC_MORE_DATA).fill<VltDataBlk>([&](VltDataBlk& block) {
              scribble(block.buffer, block.bufferLen);
            }),
            answer(VLT_RC_FINISHED), ended()},
           nullptr, true));
  utZylObj_s* object = list_.getFirst();
  ASSERT_NE(nullptr, object);
  EXPECT_EQ(std::string(1280, '\xff'), object->name);
  EXPECT_EQ(std::string(64, '\xff'), object->owner);
  support::Captured output;
  utPrintBackupItem(object);
  EXPECT_EQ(1280 + 64, std::ranges::count(output.take(), '?'));
  char entry[kEntryTextSize];
  EXPECT_EQ(0, pkFormatEntry(&list_, entry, 1, 1));
}

TEST_F(FileList, OffersDefaultDatesInEveryFormat) {
  const char* starts[] = {"01/01/1990", "01-01-1990", "1990-01-01", "01.01.1990", "1990.01.01"};
  for (int format = 1; format <= 5; ++format) {
    destroyNlsGlobalObject();
    open(format);
    char start[16], end[16];
    utGetDefaultDates(start, end);
    EXPECT_STREQ(starts[format - 1], start);
    nfDate today = {};
    ASSERT_EQ(0, dateParse(end, &today, 0)) << end;
    const nfDate now = ut::localNow();
    EXPECT_EQ(0, dateCmp(ut::makeDate(ut::yearOf(now), now.month, now.day), today)) << end;
  }
}

TEST_F(FileList, AsksForDatesUntilTheRangeIsValid) {
  const struct {
    const char* answers;
    nfDate start, end;  // a year of 0: today
    int usedDefault;
  } rows[] = {
      {"\n\n", ut::makeDate(1990, 1, 1), {}, 1},
      {"", ut::makeDate(1990, 1, 1), {}, 1},
      {"03/07/2026\n3/7/2026\n", ut::makeDate(2026, 3, 7), ut::makeDate(2026, 3, 7), 0},
      {"x\n02/30/2026\n03/07/2026\n03/31/2026x\n03/31/2026\n", ut::makeDate(2026, 3, 7),
       ut::makeDate(2026, 3, 31), 0},
      // A script with the line ends of another system, and blanks before them.
      {"03/07/2026 \r\nx\r\n\r\n03/08/2026\n03/09/2026\n", ut::makeDate(2026, 3, 7), {}, 1},
      {"nonsense\n\n03/31/2026\n", ut::makeDate(1990, 1, 1), ut::makeDate(2026, 3, 31), 0},
      {"03/07/2026\n03/06/2026\n03/01/2026\n03/06/2026\n", ut::makeDate(2026, 3, 1),
       ut::makeDate(2026, 3, 6), 0},
      // The default end was used once: the flag is kept, whatever is answered later.
      {"12/31/9999\n\n03/01/2026\n03/06/2026\n", ut::makeDate(2026, 3, 1), ut::makeDate(2026, 3, 6),
       1},
  };
  for (const auto& row : rows) {
    support::FedInput input(row.answers);
    support::Captured output;
    nfDate start = {}, end = {};
    int usedDefault = 0;
    utGetDates(&start, &end, usedDefault);
    output.take();
    EXPECT_EQ(0, dateCmp(row.start, start)) << row.answers;
    if (ut::yearOf(row.end) != 0) {
      EXPECT_EQ(0, dateCmp(row.end, end)) << row.answers;
    }
    EXPECT_EQ(row.usedDefault, usedDefault) << row.answers;
  }
}

}  // namespace
