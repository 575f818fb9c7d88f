// clientdirs_test.cpp: where the client library's files are.
#include "api/clientdirs.h"

#include "common/ut/installdirs.h"
#include "tests/support/tempdir.h"

namespace {

TEST(ClientFiles, AreWhereTheEnvironmentSaysOrAsInstalled) {
  const std::string agent = ut::kAgentDir, slash = "/", none;
  for (const auto& [routine, name, installed, end] :
       {std::tuple(&psGetMARLAPIDir, "VLTI_DIR", std::string(ut::kApiDir), slash),
        {psGetMARLAPILog, "VLTI_LOG", agent, slash},
        {psGetMARLAPIConfig, "VLTI_CONFIG", agent + "/vlt.opt", none}}) {
    const std::string longest(api::kPathSize - 1 - end.size(), 'x'), tooLong = longest + "x";
    for (const auto& [value, wanted] : {std::pair(none, installed),
                                        {"/x", "/x" + end},
                                        {"/x/", "/x/"},
                                        {longest, longest + end},
                                        {tooLong, none}}) {
      const support::ScopedEnv variable(name, value.c_str());
      char path[api::kPathSize] = "?";
      EXPECT_EQ(value == tooLong ? api::kPathTooLong : 0, routine(path, sizeof path));
      EXPECT_EQ(wanted, path) << name;
    }
  }
}

}  // namespace
