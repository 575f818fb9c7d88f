// agent_fixture.h: an agent installed in the test's own directory, without a message catalog: a
// message shows its number and its inserts.
#ifndef TESTS_AGENT_AGENT_FIXTURE_H
#define TESTS_AGENT_AGENT_FIXTURE_H

#include "agent/orcctx.h"
#include "agent/utility2.h"
#include "common/nls/nls.h"
#include "common/ut/nfdate.h"
#include "common/ut/strutil.h"
#include "tests/support/captured.h"
#include "tests/support/tempdir.h"

class Agent : public testing::Test {
 protected:
  Agent() {
    dir.enter();
    std::filesystem::create_directories("installed/agent");
    psMutexInit(&orcMutex);
    psMutexInit(&initMutex);
    EXPECT_EQ(0, newNlsGlobalObject());
    nlsSetPrefix("QRB");
  }
  ~Agent() override {
    destroyNlsGlobalObject();
    ut::setRunFormats({1, 1, 1});
  }
  std::string log() const { return dir.read("installed/agent/vexoerror.log"); }
  template <std::size_t N>
  static void set(char (&option)[N], const std::string& value) {
    EXPECT_TRUE(ut::copyText(option, value)) << value;
  }

  support::TempDir dir;
  support::ScopedEnv optionFile{"VEXO_OPTFILE", nullptr}, config{"VLTI_CONFIG", nullptr};
  orcObj_t orc = {};
};

#endif  // TESTS_AGENT_AGENT_FIXTURE_H
