// limits_test.cpp: files that can no longer be written or opened. A limit on the size of files acts
// as a full disk, a limit on descriptors as a system that has none left.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <functional>

#include "agent/errormsg.h"
#include "agent/password.h"
#include "common/ut/agttrc.h"
#include "tests/support/captured.h"
#include "tests/support/scripted_api.h"
#include "tests/utility/messages.h"
#include "utility/bplus.h"
#include "utility/syncdb_catalog.h"
#include "utility/syncdb_spool.h"

namespace {

using Limits = WithErrorLog;

TEST_F(Limits, EndWithTheNamedCodeAndDamageNoExistingFile) {
  const std::string passwords = dir_.path(), password = dir_.write("VEXO.N", "the old one");
  const std::string script = dir_.path("SQLI.sql"), spool = dir_.path("SQLO_1.out");
  const std::string trace = dir_.path("trace");
  const auto query = [&] {
    const objCatInfo_s catalog = {};
    const nfDate day = ut::makeDate(2026, 3, 7);
    return utQueryCatalog(&catalog, script.c_str(), spool.c_str(), day, day);
  };
  const auto load = [&] {
    dsBPlusTree tree;
    dsBPlusTree* pointer = &tree;
    return utLoadBTree(spool.c_str(), &pointer);
  };
  std::signal(SIGXFSZ, SIG_IGN);
  unsigned key[2] = {};
  VEXCTrace tracing;
  const struct {
    const char* what;
    std::function<int()> act;
    int onFullDisk, withoutDescriptors;
    const char* message;  // empty: nothing may be shown
  } rows[] = {
      {"script", query, 2575, 2575, "QRB2575E"},
      {"spool", load, 2533, 2576, "Nothing was deleted."},
      {"password",
       [&] { return psvexoWritePswdToFile(passwords.c_str(), password.c_str(), "x", key); }, -1,
       2521, ""},
      {"trace", [&] { return static_cast<int>(tracing.trBegin(trace.c_str(), 0)); }, 406, 406,
       "Unable to open trace output file"},
      {"error log", [&] { return vexoErrorMsg("lost", 0), 0; }, 0, 0, ""},
  };
  const std::string log = dir_.write("vexoerror.log", "before\n");
  for (const bool fullDisk : {true, false}) {
    for (const auto& row : rows) {
      dir_.write("SQLO_1.out", "piece\n");
      const std::size_t enciphers = fullDisk && row.onFullDisk == -1 ? 1 : 0;
      support::ScriptedApi api(
          std::vector<support::Step>(enciphers, support::Step("vltEncryptEx")));
      support::Captured output;
      const auto limit = fullDisk ? RLIMIT_FSIZE : RLIMIT_NOFILE;
      struct rlimit before;
      ::getrlimit(limit, &before);
      const struct rlimit none = {0, before.rlim_max};
      ::setrlimit(limit, &none);
      const int rc = row.act();
      ::setrlimit(limit, &before);
      const std::string shown = output.take();
      EXPECT_EQ(fullDisk ? row.onFullDisk : row.withoutDescriptors, rc) << row.what;
      EXPECT_NE(std::string::npos, shown.find(row.message)) << row.what << shown;
      EXPECT_EQ(*row.message == '\0', shown.empty()) << row.what << shown;
    }
  }
  EXPECT_EQ("the old one", dir_.read("VEXO.N"));
  EXPECT_EQ("before\n", dir_.read("vexoerror.log"));
  EXPECT_FALSE(std::filesystem::exists(script));
  EXPECT_EQ(0, load()) << "with the limits gone";
  EXPECT_FALSE(dir_.has("SQLO_1.out.room")) << "which tests whether there is room";
  dir_.write("SQLO_1.out", "piece\n");
  dir_.write("SQLO_1.out.room/in the way", "");
  EXPECT_EQ(2533, load());
}

}  // namespace
