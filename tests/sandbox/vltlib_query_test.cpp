// vltlib_query_test.cpp: which objects a query finds, in which order and state.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/sandbox/site.h"

namespace {

// Five objects of ORANODE and one of another node.
void makeObjects(const Site& site) {
  site.makeStore();
  site.zylstore("node OTHER --password secret");
  site.write("objects",
             "# comment\n"
             "ORANODE\t/marlorc\t/oracle\t/a_1\tscott\t2024-01-15T10:00:00\t100\n"
             "ORANODE\t/marlorc\t/oracle/x\t/a_2\t\t2024-01-16T23:59:59\t5000000000\tcompressed\n"
             "OTHER\t/marlorc\t/oracle\t/a_3\tscott\t2024-01-15\t1\n"
             "ORANODE\t/marlorc\t/oracle\t/b_4\tScott\t2024-01-17\t1\tinactive\n"
             "ORANODE\t/marl\t/oracle\t/a_5\tscott\t2024-01-17\t1\taes256,deduplicated\n"
             "ORANODE\t/marlorc\t/oracle\t/A_6\tscott\t2024-01-17\t1\tunknown-format\n");
  site.zylstore("load objects");
}

}  // namespace

TEST(Query, MatchesNamesOwnerStateAndDate) {
  const Site site;
  makeObjects(site);
  const Client client(site);
  const uint32_t handle = logOn();
  struct {
    Query query;
    const char* expected;
  } const rows[] = {
      {{}, "/a_1 /a_2 ? [121]"},
      {{"/marl"}, "/a_5 [121]"},
      {{"/mar*"}, "[2]"},  // a filespace is no pattern
      {{"/MARLORC"}, "[2]"},
      {{"/marlorc", "/oracle"}, "/a_1 ? [121]"},
      {{"/marlorc", "/oracle/?"}, "/a_2 [121]"},
      {{"/marlorc", ""}, "[2]"},
      {{"/marlorc", "*", "/a*"}, "/a_1 /a_2 [121]"},
      {{"/marlorc", "/*", "/?_1"}, "/a_1 [121]"},
      {{"/marlorc", "/*", "/*", "scott"}, "/a_1 ? [121]"},
      {{"/marlorc", "/*", "/*", ""}, "/a_1 /a_2 ? [121]"},
      {{"/marlorc", "/*", "/*", "SCOTT"}, "[2]"},
      {{"/marlorc", "/*", "/*", nullptr, VLT_STATE_INACTIVE}, "/b_4 [121]"},
      {{"/marlorc", "/*", "/*", nullptr, 1, {2024, 1, 16, 23, 59, 59}}, "/a_1 /a_2 [121]"},
      {{"/marlorc", "/*", "/*", nullptr, 1, {2024, 1, 16, 23, 59, 58}}, "/a_1 [121]"},
      {{"/marlorc", "/*", "/*", nullptr, 1, {2024, 1, 15, 9, 59, 59}}, "[2]"},
      {{"/marlorc", "/*", "/A*"}, "? [121]"},
  };
  for (const auto& row : rows) EXPECT_EQ(namesOf(handle, row.query), row.expected) << (&row - rows);
  EXPECT_EQ(namesOf(logOn({"OTHER"})), "/a_3 [121]");
}

TEST(Query, FillsEveryFieldOfTheResponse) {
  const Site site;
  site.zylstore("init --first-id 4294967295");
  site.zylstore("node ORANODE --password secret");
  const std::string put = "put --node oranode --fs /f --hl /h --owner scott --date ";
  EXPECT_EQ(site.zylstore(put + "2024-02-29T01:02:03 --ll /plain --size 0"), "4294967295\n");
  EXPECT_EQ(site.zylstore(put + "2023-12-31 --ll /full --size 9876543210 --compressed "
                                "--encryption aes128 --deduplicated"),
            "4294967296\n");
  const Client client(site);
  const uint32_t handle = logOn();
  ASSERT_EQ((Query{"/f"}).begin(handle), VLT_RC_OK);
  VltQryRespBackup plain, full;
  std::memset(&plain, 0xAA, sizeof plain);
  std::memset(&full, 0xAA, sizeof full);
  ASSERT_EQ(nextObject(handle, plain), VLT_RC_MORE_DATA);
  ASSERT_EQ(nextObject(handle, full), VLT_RC_MORE_DATA);
  EXPECT_EQ(plain.structVersion, 8);
  EXPECT_STREQ(plain.objName.fileSpace, "/f");
  EXPECT_STREQ(plain.objName.highLevel, "/h");
  EXPECT_STREQ(plain.objName.lowLevel, "/plain");
  EXPECT_EQ(plain.objName.objType, VLT_OBJTYPE_FILE);
  EXPECT_STREQ(plain.owner, "scott");
  EXPECT_EQ(plain.objState, VLT_STATE_ACTIVE);
  EXPECT_TRUE(plain.objId.hi == 0 && plain.objId.lo == 0xFFFFFFFF);
  EXPECT_TRUE(full.objId.hi == 1 && full.objId.lo == 0);
  const VltDate date = plain.insDate;
  EXPECT_TRUE(date.year == 2024 && date.month == 2 && date.day == 29);
  EXPECT_TRUE(date.hour == 1 && date.minute == 2 && date.second == 3);
  EXPECT_TRUE(plain.sizeEstimate.hi == 0 && plain.sizeEstimate.lo == 0);
  EXPECT_TRUE(full.sizeEstimate.hi == 2 && full.sizeEstimate.lo == 1286608618);
  EXPECT_EQ(plain.compressType | plain.encryptionType | plain.clientDeduplicated, 0);
  EXPECT_EQ(full.compressType, VLT_COMPRESSED);
  EXPECT_EQ(full.encryptionType, VLT_ENCRYPT_AES_128);
  EXPECT_EQ(full.clientDeduplicated, 1);
  // The whole identifier comes back in a deletion.
  uint16_t reason = 0;
  ASSERT_EQ(vltBeginTxn(handle), VLT_RC_OK);
  EXPECT_EQ(deleteObject(handle, 4294967296), VLT_RC_OK);
  ASSERT_EQ(vltEndTxn(handle, VLT_VOTE_COMMIT, &reason), VLT_RC_OK);
  EXPECT_EQ(namesOf(logOn(), {"/f"}), "/plain [121]");
}

TEST(Query, RefusesWrongArgumentsAndOrder) {
  const Site site;
  makeObjects(site);
  const Client client(site);
  const uint32_t handle = logOn();
  VltQryRespBackup object;
  EXPECT_EQ(nextObject(handle, object), VLT_RC_BAD_SEQUENCE);
  EXPECT_EQ(vltEndQuery(handle), VLT_RC_BAD_SEQUENCE);
  EXPECT_EQ(vltBeginQuery(handle, VLT_QUERY_BACKUP, nullptr), VLT_RC_BAD_ARGUMENT);
  EXPECT_EQ((Query{"marlorc"}).begin(handle), VLT_RC_BAD_ARGUMENT);
  EXPECT_EQ((Query{"/m", "/*", ""}).begin(handle), VLT_RC_BAD_ARGUMENT);
  EXPECT_EQ((Query{"/m", "/*", "/*", nullptr, 3}).begin(handle), VLT_RC_BAD_ARGUMENT);
  EXPECT_EQ((Query{"/m", "/*", "/*", nullptr, 1, {2024, 2, 30, 0, 0, 0}}).begin(handle),
            VLT_RC_BAD_ARGUMENT);
  VltObjName unterminated;
  std::memset(&unterminated, '/', sizeof unterminated);
  const VltQueryBackup query = {2, &unterminated, nullptr, VLT_STATE_ACTIVE, {}};
  EXPECT_EQ(vltBeginQuery(handle, VLT_QUERY_BACKUP, &query), VLT_RC_BAD_ARGUMENT);

  ASSERT_EQ(Query().begin(handle), VLT_RC_OK);
  EXPECT_EQ(Query().begin(handle), VLT_RC_BAD_SEQUENCE);
  VltDataBlk block = {3, sizeof object - 1, 0, &object};
  object.structVersion = 8;
  EXPECT_EQ(vltGetNextQObj(handle, &block), VLT_RC_BUFFER_TOO_SMALL);
  block = {2, sizeof object, 0, &object};
  EXPECT_EQ(vltGetNextQObj(handle, &block), VLT_RC_BAD_STRUCT_VERSION);
  block = {3, sizeof object, 0, nullptr};
  EXPECT_EQ(vltGetNextQObj(handle, &block), VLT_RC_BAD_ARGUMENT);
  object.structVersion = 7;
  block.buffer = &object;
  EXPECT_EQ(vltGetNextQObj(handle, &block), VLT_RC_BAD_STRUCT_VERSION);
  // None of the refused calls has cost an object.
  EXPECT_EQ(nextObject(handle, object), VLT_RC_MORE_DATA);
  EXPECT_STREQ(object.objName.lowLevel, "/a_1");
}

TEST(Query, KeepsItsSnapshotWhileOthersWrite) {
  const Site site;
  makeObjects(site);
  const Client client(site);
  const uint32_t reader = logOn(), writer = logOn();
  ASSERT_EQ(Query().begin(reader), VLT_RC_OK);
  ASSERT_EQ(vltBeginTxn(writer), VLT_RC_OK);
  ASSERT_EQ(deleteObject(writer, 1), VLT_RC_OK);
  uint16_t reason = 0;
  ASSERT_EQ(vltEndTxn(writer, VLT_VOTE_COMMIT, &reason), VLT_RC_OK);
  site.zylstore("put --node ORANODE --fs /marlorc --ll /late");
  VltQryRespBackup object;
  ASSERT_EQ(nextObject(reader, object), VLT_RC_MORE_DATA);
  EXPECT_STREQ(object.objName.lowLevel, "/a_1");
  // The same session may delete while it reads.
  ASSERT_EQ(vltBeginTxn(reader), VLT_RC_OK);
  ASSERT_EQ(deleteObject(reader, 2), VLT_RC_OK);
  ASSERT_EQ(vltEndTxn(reader, VLT_VOTE_COMMIT, &reason), VLT_RC_OK);
  ASSERT_EQ(nextObject(reader, object), VLT_RC_MORE_DATA);
  EXPECT_STREQ(object.objName.lowLevel, "/a_2");
  EXPECT_EQ(nextObject(reader, object), VLT_RC_UNKNOWN_FORMAT);
  EXPECT_EQ(nextObject(reader, object), VLT_RC_FINISHED);
  EXPECT_EQ(nextObject(reader, object), VLT_RC_FINISHED);
  ASSERT_EQ(vltEndQuery(reader), VLT_RC_OK);
  EXPECT_EQ(namesOf(reader), "? /late [121]");
}
