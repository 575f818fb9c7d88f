// vltlib_logon_test.cpp: set-up, options, logon and passwords.
#include "tests/sandbox/site.h"

namespace {

class ClientLibrary : public Store {};

TEST_F(ClientLibrary, ExportsTheInterfaceAndNothingElse) {
  const std::string list = "nm -D --defined-only '" CLIENT_LIBRARY "' | ";
  EXPECT_EQ(run(list + "grep -c ' T vlt'").output, "45\n");
  EXPECT_EQ(run(list + "wc -l").output, "45\n");
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
      {{nullptr}, VLT_RC_OK},  // the options file's node
      {{"ORANODE", "Secret"}, VLT_RC_WRONG_PASSWORD},
      {{"ORANODE", nullptr}, VLT_RC_WRONG_PASSWORD},
      {{"NOBODY"}, VLT_RC_UNKNOWN_NODE},
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

}  // namespace
