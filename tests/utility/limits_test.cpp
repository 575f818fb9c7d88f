// limits_test.cpp: files that can no longer be written or opened. A limit on the size of files acts
// as a full disk, a limit on descriptors as a system that has none left.
#include <sys/resource.h>

#include <csignal>

#include "agent/errormsg.h"
#include "agent/password.h"
#include "tests/support/scripted_api.h"
#include "tests/utility/messages.h"
#include "utility/bplus.h"
#include "utility/syncdb_catalog.h"
#include "utility/syncdb_spool.h"

namespace {

using Limits = WithErrorLog;

TEST_F(Limits, EndWithTheNamedCodeAndDamageNoExistingFile) {
  const auto query = [] {
    const objCatInfo_s catalog = {};
    return utQueryCatalog(&catalog, "i.sql", "o_1.out", {}, {});
  };
  const auto load = [] {
    dsBPlusTree tree, *pointer = &tree;
    return utLoadBTree("o_1.out", &pointer);
  };
  std::signal(SIGXFSZ, SIG_IGN);
  unsigned key[2] = {};
  VEXCTrace tracing;
  // Each step, its code on a full disk and without descriptors, and what is shown; empty: nothing.
  const std::tuple<std::function<long()>, int, int, const char*> rows[] = {
      {query, 2575, 2575, "QRB2575E"},
      {load, 2533, 2576, "Nothing was deleted."},
      {[&] { return psvexoWritePswdToFile(".", "VEXO.N", "x", key); }, -1, 2521, ""},
      {[&] { return tracing.trBegin("trace", 0); }, 406, 406, "Unable to open trace output file"},
      {[&] { return vexoErrorMsg("lost", 0), 0; }, 0, 0, ""}};
  dir_.write("VEXO.N", "the old one");
  dir_.write("vexoerror.log", "before\n");
  for (const auto limit : {RLIMIT_FSIZE, RLIMIT_NOFILE}) {
    for (const auto& [act, onFullDisk, withoutDescriptors, message] : rows) {
      dir_.write("o_1.out", "piece\n");
      support::ScriptedApi api;
      if (limit == RLIMIT_FSIZE && onFullDisk == -1) api.add({support::Step("vltEncryptEx")});
      support::Captured output;
      struct rlimit before;
      ::getrlimit(limit, &before);
      const struct rlimit none = {0, before.rlim_max};
      ::setrlimit(limit, &none);
      const long rc = act();
      ::setrlimit(limit, &before);
      const std::string shown = output.take();
      EXPECT_EQ(limit == RLIMIT_FSIZE ? onFullDisk : withoutDescriptors, rc) << message;
      EXPECT_TRUE(*message == '\0' ? shown.empty() : shown.find(message) != shown.npos) << shown;
    }
  }
  EXPECT_EQ("the old one", dir_.read("VEXO.N"));
  EXPECT_EQ("before\n", dir_.read("vexoerror.log"));
  EXPECT_FALSE(dir_.has("i.sql"));
  EXPECT_EQ(0, load()) << "with the limits gone";
  EXPECT_FALSE(dir_.has("o_1.out.room")) << "which tests whether there is room";
  dir_.write("o_1.out", "piece\n");
  dir_.write("o_1.out.room/in the way", "");
  EXPECT_EQ(2533, load());
}

}  // namespace
