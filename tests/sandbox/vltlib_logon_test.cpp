// vltlib_logon_test.cpp: set-up, options, logon and passwords.
#include "tests/sandbox/site.h"

namespace {

class ClientLibrary : public Store {};

TEST_F(ClientLibrary, ExportsTheInterfaceAndNothingElse) {
  const std::string list = "nm -D --defined-only '" CLIENT_LIBRARY "' | ";
  EXPECT_EQ(run(list + "grep -c ' T vlt'").output, "45\n");
  EXPECT_EQ(run(list + "wc -l").output, "45\n");
}

TEST_F(ClientLibrary, RefusesAnOptionsFileThatItCannotUse) {
  const std::string good = "* comment\n\n  nodename abc\nPassWordAccess GENERATE\n";
  EXPECT_EQ(setUp(good), VLT_RC_OK);
  for (const char* bad : {"NODENAME\n", "PASSWORDACCESS sometimes\n", "NODE oranode\n"})
    EXPECT_EQ(setUp(good + bad), VLT_RC_BAD_OPTION) << bad;
}

TEST_F(ClientLibrary, LogsOnOrGivesTheCodeOfTheCauseAndNoHandle) {
  zylstore("node STALE --password old --expired");
  const std::string notAStore = dir_.write("no.db", std::string(5000, 'x'));
  const struct {
    Logon logon;
    int16_t expected;
    std::string options = "nodename oranode\n";
  } rows[] = {
      {{}, VLT_RC_OK},
      {{"oraNode"}, VLT_RC_OK},
      {{nullptr}, VLT_RC_OK},  // the options file's node
      {{"ORANODE", "Secret"}, VLT_RC_WRONG_PASSWORD},
      {{"ORANODE", nullptr}, VLT_RC_WRONG_PASSWORD},
      {{"NOBODY"}, VLT_RC_UNKNOWN_NODE},
      {{"STALE", "new"}, VLT_RC_WRONG_PASSWORD},
      {{"STALE", "old"}, VLT_RC_PASSWORD_EXPIRED},
      {{"ORANODE", "secret", " -COLOUR=RED"}, VLT_RC_BAD_OPTION},
      {{}, VLT_RC_SERVER_UNREACHABLE, "STORE " + dir_.path("absent.db") + "\n"},
      {{}, VLT_RC_SERVER_UNREACHABLE, "STORE " + notAStore + "\n"},
  };
  for (const auto& row : rows) {
    ASSERT_EQ(setUp(row.options), VLT_RC_OK);
    uint32_t handle = 4711;
    EXPECT_EQ(row.logon(handle), row.expected) << (&row - rows);
    const bool open = row.expected == VLT_RC_OK || row.expected == VLT_RC_PASSWORD_EXPIRED;
    EXPECT_EQ(handle != 0, open) << (&row - rows);
    EXPECT_EQ(vltTerminate(handle), open ? VLT_RC_OK : VLT_RC_BAD_HANDLE);
    EXPECT_EQ(vltTerminate(handle), VLT_RC_BAD_HANDLE);
  }
}

TEST_F(ClientLibrary, KeepsAGeneratedPasswordOnceItWasRight) {
  const std::string options = " -PASSWORDACCESS=GENERATE -PASSWORDDIR=" + dir_.path("pass words");
  const std::string file = "pass words/ZYL.ORANODE.pwd";
  const Logon stored = {"oranode", nullptr, options.c_str()};
  uint32_t handle = 0;
  EXPECT_EQ(stored(handle), VLT_RC_WRONG_PASSWORD);
  EXPECT_EQ((Logon{"ORANODE", "wrong", options.c_str()})(handle), VLT_RC_WRONG_PASSWORD);
  EXPECT_FALSE(dir_.has(file));
  logOn({"ORANODE", "secret", options.c_str()});
  EXPECT_EQ(dir_.read(file).find("secret"), std::string::npos);
  EXPECT_EQ(std::filesystem::status(dir_.path(file)).permissions(), std::filesystem::perms(0600));
  handle = logOn(stored);
  logOn({"ORANODE", "wrong", options.c_str()});  // the kept one is tried after it
  EXPECT_EQ(vltChangePW(handle, "secret", "a longer password of 30 bytes"), VLT_RC_OK);
  logOn(stored);
  dir_.write(file, "ZYLPWD1\n\x40short");
  EXPECT_EQ(stored(handle), VLT_RC_WRONG_PASSWORD);
}

TEST_F(ClientLibrary, EndsTheExpiryWithANewPasswordOnly) {
  zylstore("node STALE --password old --expired");
  uint32_t handle = 0;
  ASSERT_EQ((Logon{"stale", "old"})(handle), VLT_RC_PASSWORD_EXPIRED);
  EXPECT_EQ(Query().begin(handle), VLT_RC_PASSWORD_EXPIRED);
  EXPECT_EQ(vltChangePW(handle, "OLD", "new"), VLT_RC_WRONG_PASSWORD);
  EXPECT_EQ(vltChangePW(handle, "old", "new"), VLT_RC_OK);
  EXPECT_EQ(vltBeginTxn(handle), VLT_RC_OK);
  EXPECT_EQ((Logon{"STALE", "old"})(handle), VLT_RC_WRONG_PASSWORD);
}

}  // namespace
