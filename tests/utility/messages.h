// messages.h: a fixture with the real message catalog open.
#ifndef TESTS_UTILITY_MESSAGES_H
#define TESTS_UTILITY_MESSAGES_H

#include <gtest/gtest.h>

#include "common/nls/nls.h"
#include "common/ut/installdirs.h"

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

#endif  // TESTS_UTILITY_MESSAGES_H
