// library_test.cpp: the client library by itself: what only other programs than vexosync would ask
// of it, and what it says no to.
#include <cstdio>
#include <cstdlib>

#include "api/vltlib.h"
#include "tests/support/tempdir.h"

namespace {

class ClientLibrary : public testing::Test {
 protected:
  ClientLibrary() {
    ::setenv("SANDBOX_HOME", dir_.path().c_str(), 1);
    zylstore("init");
    zylstore("node N --password secret");
  }
  ~ClientLibrary() override { vltCleanUp(0); }

  void zylstore(const std::string& arguments) const {
    EXPECT_EQ(0, std::system(("'" ZYLSTORE "' " + arguments + " >/dev/null").c_str())) << arguments;
  }

  int setUp(const std::string& options) const {
    VltEnvSetUp environment = {};
    environment.structVersion = 4;
    std::snprintf(environment.vltiConfig, sizeof environment.vltiConfig, "%s",
                  dir_.write("vlt.opt", options).c_str());
    return vltSetUp(0, &environment);
  }

  int logOn(const char* node = "n", const char* password = "secret") {
    const VltApiVersionEx caller = {2, 8, 1, 13, 0};
    VltInitExIn in = {};
    in.structVersion = 5;
    in.apiVersion = &caller;
    in.clientNodeName = node;
    in.clientPassword = password;
    in.clientKind = VLT_CLIENT_KIND_USER;
    return vltInitEx(&handle_, &in, nullptr);
  }

  // The low-level names that a query finds, or its code.
  std::string found(const std::string& highLevel, const std::string& lowLevel) const {
    VltObjName name = {"/fs", "", "", VLT_OBJTYPE_FILE};
    std::snprintf(name.highLevel, sizeof name.highLevel, "%s", highLevel.c_str());
    std::snprintf(name.lowLevel, sizeof name.lowLevel, "%s", lowLevel.c_str());
    const VltQueryBackup query = {2, &name, nullptr, VLT_STATE_ACTIVE, {}};
    int rc = vltBeginQuery(handle_, VLT_QUERY_BACKUP, &query);
    if (rc != VLT_RC_OK) return std::to_string(rc);
    VltQryRespBackup response = {};
    response.structVersion = 8;
    VltDataBlk block = {3, sizeof response, 0, &response};
    std::string names;
    while ((rc = vltGetNextQObj(handle_, &block)) == VLT_RC_MORE_DATA) {
      names += response.objName.lowLevel;
    }
    EXPECT_EQ(VLT_RC_OK, vltEndQuery(handle_));
    return names.empty() ? std::to_string(rc) : names;
  }

  support::TempDir dir_;
  std::uint32_t handle_ = 0;
};

TEST_F(ClientLibrary, FindsWhatThePatternsDescribe) {
  for (const char* name : {"/ab", "/a[b", "/aB", "/\xC3\xA4", "/abab"}) {
    zylstore("put --node N --fs /fs --hl /h --ll '" + std::string(name) + "'");
  }
  zylstore("put --node N --fs /fs --hl '' --ll /none");
  ASSERT_EQ(VLT_RC_OK, setUp(""));
  ASSERT_EQ(VLT_RC_OK, logOn());
  const struct {
    const char *highLevel, *lowLevel, *found;
  } cases[] = {
      {"/*", "/*", "/ab/a[b/aB/\xC3\xA4/abab"},
      {"*", "*", "/ab/a[b/aB/\xC3\xA4/abab/none"},
      {"", "/*", "/none"},
      {"/?", "/a?", "/ab/aB"},
      {"/h", "/?", "/\xC3\xA4"},
      {"/h", "*b", "/ab/a[b/abab"},
      {"/h", "/a*b", "/ab/a[b/abab"},
      {"/h", "/a[b", "/a[b"},
      {"/h", "/[a]b", "2"},
      {"/H", "/*", "2"},
      {"h", "/*", "2405"},
      {"/h", "", "2405"},
  };
  for (const auto& row : cases) EXPECT_EQ(row.found, found(row.highLevel, row.lowLevel));
}

TEST_F(ClientLibrary, ReadsItsOptionsAndRefusesWhatItDoesNotKnow) {
  const struct {
    const char* options;
    int code;
  } cases[] = {
      {"* comment\n\n NODE  n\nserver \"the server\"\nADDRESS here\nCompression YES\n"
       "PASSWORDACCESS generate\nPASSWORDDIR /tmp\n",
       VLT_RC_OK},
      {"NODENAME n\n", VLT_RC_BAD_OPTION},
      {"NODE\n", VLT_RC_BAD_OPTION},
      {"NODE \"\"\n", VLT_RC_BAD_OPTION},
      {"COMPRESSION maybe\n", VLT_RC_BAD_OPTION},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(row.code, setUp(row.options)) << row.options;
    VltOptions options = {};
    options.structVersion = 1;
    EXPECT_EQ(row.code == VLT_RC_OK ? VLT_RC_OK : VLT_RC_NOT_SET_UP, vltQueryCliOptions(&options));
    EXPECT_STREQ(row.code == VLT_RC_OK ? "N" : "", options.nodeName);
    EXPECT_STREQ(row.code == VLT_RC_OK ? "the server" : "", options.serverName);
    EXPECT_STREQ(row.code == VLT_RC_OK ? "here" : "", options.serverAddress);
    EXPECT_EQ(row.code == VLT_RC_OK, options.compression == 1);
    EXPECT_EQ(row.code == VLT_RC_OK, options.passwordAccess == VLT_PASSWORD_GENERATE);
    vltCleanUp(0);
  }
}

TEST_F(ClientLibrary, SaysNoWithTheCodeOfTheReason) {
  zylstore("node OLD --password x --expired");
  zylstore("node READER --password x --no-delete");
  EXPECT_EQ(VLT_RC_NOT_SET_UP, logOn());
  ASSERT_EQ(VLT_RC_OK, setUp(""));
  EXPECT_EQ(VLT_RC_BAD_SEQUENCE, setUp(""));
  EXPECT_EQ(VLT_RC_UNKNOWN_NODE, logOn("x"));
  EXPECT_EQ(VLT_RC_WRONG_PASSWORD, logOn("n", "Secret"));
  EXPECT_EQ(VLT_RC_WRONG_PASSWORD, logOn("n", ""));
  EXPECT_EQ(VLT_RC_PASSWORD_EXPIRED, logOn("old", "x"));
  EXPECT_EQ(VLT_RC_PASSWORD_EXPIRED, vltBeginTxn(handle_));
  EXPECT_EQ(VLT_RC_OK, vltChangePW(handle_, "x", "y"));
  EXPECT_EQ(VLT_RC_OK, vltBeginTxn(handle_));
  const VltDelInfo object = {1, {0, 1}};
  ASSERT_EQ(VLT_RC_OK, logOn("reader", "x"));
  EXPECT_EQ(VLT_RC_BAD_SEQUENCE, vltDeleteObj(handle_, VLT_DELETE_BACKUP_ID, &object));
  EXPECT_EQ(VLT_RC_OK, vltBeginTxn(handle_));
  EXPECT_EQ(VLT_RC_NOT_AUTHORIZED, vltDeleteObj(handle_, VLT_DELETE_BACKUP_ID, &object));
  EXPECT_EQ(VLT_RC_NOT_SUPPORTED, vltBeginGetData(handle_, 0, nullptr));
  EXPECT_EQ(VLT_RC_OK, vltTerminate(handle_));
  EXPECT_EQ(VLT_RC_BAD_HANDLE, vltTerminate(handle_));
}

}  // namespace
