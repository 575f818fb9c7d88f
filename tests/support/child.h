// child.h: code that runs in a process of its own, because what it changes is for good.
#ifndef TESTS_SUPPORT_CHILD_H
#define TESTS_SUPPORT_CHILD_H

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

// Runs `act` in a child and waits; a check that fails there fails the test.
template <typename Action>
void inChild(Action act) {
  if (::fork() == 0) {
    act();
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 1;
  EXPECT_LT(0, ::wait(&status));
  EXPECT_EQ(0, status) << "of the child";
}

}  // namespace support

#endif  // TESTS_SUPPORT_CHILD_H
