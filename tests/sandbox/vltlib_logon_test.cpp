// vltlib_logon_test.cpp: set-up, options, logon, passwords and what a session tells.
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <set>

#include "tests/sandbox/site.h"

TEST(ClientLibrary, ExportsTheInterfaceAndNothingElse) {
  const Site site;
  const auto result = site.run("nm -D --defined-only '" CLIENT_LIBRARY "'");
  ASSERT_EQ(result.status, 0) << result.errors;
  int lines = 0;
  for (size_t at = 0; (at = result.output.find('\n', at)) != std::string::npos; ++at) ++lines;
  int functions = 0;
  for (size_t at = 0; (at = result.output.find(" T vlt", at)) != std::string::npos; ++at)
    ++functions;
  EXPECT_EQ(functions, 45);
  EXPECT_EQ(lines, 45) << result.output;
}

TEST(SetUp, ReadsTheOptionsFileOrRefusesIt) {
  struct {
    const char* options;
    int16_t expected;
  } const rows[] = {
      {"* comment\n\n  nodename oranode\nPassWordAccess GENERATE\ncompression yes\n", VLT_RC_OK},
      {"STORE \"/some where/x.db\"\n", VLT_RC_OK},
      {"NODENAME\n", VLT_RC_BAD_OPTION},
      {"PASSWORDACCESS sometimes\n", VLT_RC_BAD_OPTION},
      {"NODE oranode\n", VLT_RC_BAD_OPTION},
  };
  for (const auto& row : rows) {
    const Site site;
    EXPECT_EQ(Client(site, row.options).rc, row.expected) << row.options;
  }
}

TEST(SetUp, ComesFirstAndOnlyOnce) {
  const Site site;
  site.makeStore();
  VltOptions options = {};
  options.structVersion = 1;
  uint32_t handle = 7;
  EXPECT_EQ(vltQueryCliOptions(&options), VLT_RC_NOT_SET_UP);
  EXPECT_EQ(Logon()(handle), VLT_RC_NOT_SET_UP);
  EXPECT_EQ(vltCleanUp(VLT_MULTITHREAD), VLT_RC_NOT_SET_UP);
  const Client client(site, "nodename abc\ncompression yes\npasswordaccess generate\n");
  VltEnvSetUp again = {};
  again.structVersion = 4;
  EXPECT_EQ(vltSetUp(1, &again), VLT_RC_BAD_SEQUENCE);
  again.structVersion = 3;
  EXPECT_EQ(vltCleanUp(VLT_MULTITHREAD), VLT_RC_OK);
  EXPECT_EQ(vltSetUp(1, &again), VLT_RC_BAD_STRUCT_VERSION);
  again.structVersion = 4;
  std::strcpy(again.vltiConfig, site.path("client.opt").c_str());
  EXPECT_EQ(vltSetUp(1, &again), VLT_RC_OK);
  ASSERT_EQ(vltQueryCliOptions(&options), VLT_RC_OK);
  EXPECT_STREQ(options.nodeName, "ABC");
  EXPECT_EQ(options.compression, 1);
  EXPECT_EQ(options.passwordAccess, VLT_PASSWORD_GENERATE);
}

TEST(Logon, EndsInTheCodeOfItsCauseAndAHandleOnlyOnSuccess) {
  const Site site;
  site.makeStore();
  site.zylstore("node STALE --password old --expired");
  const Client client(site, "nodename oranode\n");
  const std::string tooLong(VLT_MAX_NODE + 1, 'n');
  struct {
    Logon logon;
    int16_t expected;
  } const rows[] = {
      {{}, VLT_RC_OK},
      {{"oraNode"}, VLT_RC_OK},
      {{nullptr}, VLT_RC_OK},  // the options file's node
      {{"ORANODE", "Secret"}, VLT_RC_WRONG_PASSWORD},
      {{"ORANODE", nullptr}, VLT_RC_WRONG_PASSWORD},
      {{"NOBODY"}, VLT_RC_UNKNOWN_NODE},
      {{"STALE", "new"}, VLT_RC_WRONG_PASSWORD},
      {{"STALE", "old"}, VLT_RC_PASSWORD_EXPIRED},
      {{tooLong.c_str()}, VLT_RC_BAD_ARGUMENT},
      {{"ORANODE", "secret", " -PASSWORDACCESS=PROMPT"}, VLT_RC_OK},
      {{"ORANODE", "secret", " -COLOUR=RED"}, VLT_RC_BAD_OPTION},
      {{"ORANODE", "secret", " -PASSWORDACCESS=MAYBE"}, VLT_RC_BAD_OPTION},
  };
  std::set<uint32_t> handles;
  size_t sessions = 0;
  for (const auto& row : rows) {
    uint32_t handle = 4711;
    EXPECT_EQ(row.logon(handle), row.expected) << (&row - rows);
    const bool open = row.expected == VLT_RC_OK || row.expected == VLT_RC_PASSWORD_EXPIRED;
    EXPECT_EQ(handle != 0, open) << (&row - rows);
    if (open) handles.insert(handle), ++sessions;
  }
  EXPECT_EQ(handles.size(), sessions);
  for (uint32_t handle : handles) EXPECT_EQ(vltTerminate(handle), VLT_RC_OK);
  for (uint32_t handle : handles) EXPECT_EQ(vltTerminate(handle), VLT_RC_BAD_HANDLE);
}

TEST(Logon, FindsNoServerWithoutARealStore) {
  const Site site;
  uint32_t handle = 0;
  {
    const Client client(site);
    EXPECT_EQ(client.rc, VLT_RC_OK);
    EXPECT_EQ(Logon()(handle), VLT_RC_SERVER_UNREACHABLE);
  }
  site.write("other.db", "no database at all, but long enough to look like a file with content");
  const Client client(site, "STORE " + site.path("other.db") + "\n");
  EXPECT_EQ(Logon()(handle), VLT_RC_SERVER_UNREACHABLE);
}

TEST(Logon, RefusesRecordsOfOtherVersions) {
  const Site site;
  site.makeStore();
  const Client client(site);
  VltApiVersionEx version = {2, 8, 1, 13, 0};
  VltInitExIn in = {};
  VltInitExOut out = {};
  uint32_t handle = 1;
  in.structVersion = 4;
  EXPECT_EQ(vltInitEx(&handle, &in, nullptr), VLT_RC_BAD_STRUCT_VERSION);
  in.structVersion = 5;
  EXPECT_EQ(vltInitEx(&handle, &in, nullptr), VLT_RC_BAD_ARGUMENT);
  in.apiVersion = &version;
  EXPECT_EQ(vltInitEx(nullptr, &in, nullptr), VLT_RC_BAD_ARGUMENT);
  EXPECT_EQ(vltInitEx(&handle, nullptr, nullptr), VLT_RC_BAD_ARGUMENT);
  in.clientKind = VLT_CLIENT_KIND_USER;
  in.clientNodeName = "ORANODE";
  in.clientPassword = "secret";
  EXPECT_EQ(vltInitEx(&handle, &in, &out), VLT_RC_BAD_STRUCT_VERSION);
  EXPECT_EQ(handle, 0u);
  out.structVersion = 1;
  EXPECT_EQ(vltInitEx(&handle, &in, &out), VLT_RC_OK);
  EXPECT_EQ(out.serverLevel, 13);
}

TEST(GeneratedPassword, IsKeptOnceItWasRightAndServesLaterLogons) {
  const Site site;
  site.makeStore();
  const std::string directory = site.path("pass words");
  const std::string options = " -PASSWORDACCESS=GENERATE -PASSWORDDIR=" + directory;
  const Client client(site);
  uint32_t handle = 0;
  EXPECT_EQ((Logon{"ORANODE", nullptr, options.c_str()})(handle), VLT_RC_WRONG_PASSWORD);
  EXPECT_EQ((Logon{"ORANODE", "wrong", options.c_str()})(handle), VLT_RC_WRONG_PASSWORD);
  EXPECT_FALSE(std::filesystem::exists(directory));
  logOn({"ORANODE", "secret", options.c_str()});
  const std::string file = "pass words/ZYL.ORANODE.pwd";
  EXPECT_EQ(site.read(file).find("secret"), std::string::npos);
  struct stat status;
  ASSERT_EQ(stat(site.path(file).c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  handle = logOn({"oranode", nullptr, options.c_str()});
  logOn({"ORANODE", "wrong", options.c_str()});  // the kept one is tried after it

  EXPECT_EQ(vltChangePW(handle, "secret", "a longer password of 30 bytes"), VLT_RC_OK);
  logOn({"ORANODE", "", options.c_str()});
  site.zylstore("node ORANODE --password other");
  EXPECT_EQ((Logon{"ORANODE", nullptr, options.c_str()})(handle), VLT_RC_WRONG_PASSWORD);
  site.write(file, "ZYLPWD1\n\x40short");
  EXPECT_EQ((Logon{"ORANODE", nullptr, options.c_str()})(handle), VLT_RC_WRONG_PASSWORD);
}

TEST(GeneratedPassword, SavedByTheAdminToolLetsTheNodeIn) {
  const Site site;
  site.makeStore();
  site.zylstore("node KEEPER --password 12345678 --save-password " + site.path("passwords"));
  const Client client(site, "PASSWORDACCESS generate\nNODENAME keeper\n");
  logOn({nullptr, nullptr});
}

TEST(ChangePassword, EndsTheExpiryAndChecksTheOldOne) {
  const Site site;
  site.makeStore();
  site.zylstore("node STALE --password old --expired");
  const Client client(site);
  uint32_t handle = 0;
  ASSERT_EQ((Logon{"STALE", "old"})(handle), VLT_RC_PASSWORD_EXPIRED);
  EXPECT_EQ(Query().begin(handle), VLT_RC_PASSWORD_EXPIRED);
  EXPECT_EQ(vltBeginTxn(handle), VLT_RC_PASSWORD_EXPIRED);
  VltSessInfo info = {};
  info.structVersion = 1;
  EXPECT_EQ(vltQuerySessInfo(handle, &info), VLT_RC_OK);
  EXPECT_EQ(vltChangePW(handle, "OLD", "new"), VLT_RC_WRONG_PASSWORD);
  EXPECT_EQ(vltChangePW(handle, "old", ""), VLT_RC_BAD_ARGUMENT);
  EXPECT_EQ(vltChangePW(handle, "old", std::string(65, 'x').c_str()), VLT_RC_BAD_ARGUMENT);
  EXPECT_EQ(vltChangePW(handle, "old", nullptr), VLT_RC_BAD_ARGUMENT);
  EXPECT_EQ(vltChangePW(handle, "old", "new"), VLT_RC_OK);
  EXPECT_EQ(vltBeginTxn(handle), VLT_RC_OK);
  logOn({"STALE", "new"});
  EXPECT_EQ((Logon{"STALE", "old"})(handle), VLT_RC_WRONG_PASSWORD);
}

TEST(SessionInformation, TellsTheNodesRightsAndTheServersLimit) {
  const Site site;
  site.makeStore();
  site.zylstore("node READER --password secret --no-delete");
  site.zylstore("limits --max-objects-per-txn 65535");
  const Client client(site, "SERVERNAME alpha\nSERVERADDRESS alpha.example\n");
  VltSessInfo info = {};
  const uint32_t reader = logOn({"reader", "secret", nullptr, "scott"});
  EXPECT_EQ(vltQuerySessInfo(reader, &info), VLT_RC_BAD_STRUCT_VERSION);
  info.structVersion = 1;
  ASSERT_EQ(vltQuerySessInfo(reader, &info), VLT_RC_OK);
  EXPECT_STREQ(info.nodeName, "READER");
  EXPECT_STREQ(info.owner, "scott");
  EXPECT_STREQ(info.serverHost, "alpha.example");
  EXPECT_EQ(info.backupDeleteAllowed, 0);
  EXPECT_EQ(info.maxObjPerTxn, 65535);
  EXPECT_EQ(info.serverVersion * 1000 + info.serverLevel, 8013);
  ASSERT_EQ(vltQuerySessInfo(logOn(), &info), VLT_RC_OK);
  EXPECT_EQ(info.backupDeleteAllowed, 1);
  EXPECT_EQ(vltQuerySessInfo(reader, nullptr), VLT_RC_BAD_ARGUMENT);
  EXPECT_EQ(vltQuerySessInfo(999, &info), VLT_RC_BAD_HANDLE);
  VltOptions options = {};
  options.structVersion = 1;
  ASSERT_EQ(vltQuerySessOptions(reader, &options), VLT_RC_OK);
  EXPECT_STREQ(options.nodeName, "READER");
  EXPECT_STREQ(options.serverName, "alpha");
}
