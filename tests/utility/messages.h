// messages.h: fixtures with the real message catalog, and with an error log for the test.
#ifndef TESTS_UTILITY_MESSAGES_H
#define TESTS_UTILITY_MESSAGES_H

#include "common/nls/nls.h"
#include "common/ut/installdirs.h"
#include "tests/support/captured.h"
#include "tests/support/tempdir.h"

class WithMessages : public testing::Test {
 protected:
  void SetUp() override { open(1); }
  void TearDown() override { destroyNlsGlobalObject(); }

  static void open(int dateFormat) {
    ASSERT_EQ(0, newNlsGlobalObject());
    nlsSetPrefix("QRB");
    ASSERT_EQ(0, nlinit("vexo.cat", 10, ut::kAgentDir, 10, dateFormat, 1, 1, nullptr, "vexo.cat"));
  }
};

// The test's directory is the current one.
class WithErrorLog : public WithMessages {
 protected:
  WithErrorLog() { dir_.enter(); }

  support::TempDir dir_;
  support::ScopedEnv options_{"VEXO_OPTFILE",
                              dir_.write("vexo.opt", "VLTI_LOG " + dir_.path() + "\n").c_str()};
};

#endif  // TESTS_UTILITY_MESSAGES_H
