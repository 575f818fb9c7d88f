// agent_fixture.h: an agent installed in the test's own directory, without a message catalog: a
// message shows its number and its inserts.
#ifndef TESTS_AGENT_AGENT_FIXTURE_H
#define TESTS_AGENT_AGENT_FIXTURE_H

#include "agent/utility2.h"
#include "common/nls/nls.h"
#include "common/ut/strutil.h"
#include "tests/support/child.h"
#include "tests/support/scripted_api.h"
#include "tests/support/tempdir.h"
#include "tests/support/traced.h"

namespace fs = std::filesystem;

class Agent : public testing::Test {
 protected:
  Agent() {
    dir.enter();
    fs::create_directories("installed/agent");
    psMutexInit(&orcMutex);
    psMutexInit(&initMutex);
    EXPECT_EQ(0, newNlsGlobalObject());
    nlsSetPrefix("QRB");
  }
  ~Agent() override {
    destroyNlsGlobalObject();
    ut::setRunFormats({1, 1, 1});
    TEST_LEGACYPWD = TEST_SYNCDBNORMAN = 0;
  }
  std::string log() const { return dir.read("installed/agent/vexoerror.log"); }
  // Fills options: each is followed by its value.
  template <std::size_t N, typename... More>
  static void set(char (&option)[N], const std::string& value, More&... more) {
    EXPECT_TRUE(ut::copyText(option, value)) << value;
    if constexpr (sizeof...(more) > 0) set(more...);
  }

  support::TempDir dir;
  support::ScopedEnv optionFile{"VEXO_OPTFILE", nullptr}, config{"VLTI_CONFIG", nullptr};
  orcObj_t orc = {};
};

#endif  // TESTS_AGENT_AGENT_FIXTURE_H
