// vltlib_transaction_test.cpp: what a transaction deletes, and that nothing else is ever deleted.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/sandbox/site.h"

namespace {

std::string table(int objects) {
  std::string text;
  for (int i = 1; i <= objects; ++i)
    text += "ORANODE\t/marlorc\t/oracle\t/" + std::to_string(i) + "\t\t2024-01-15\t1\n";
  return text;
}

void makeObjects(const Site& site, int objects) {
  site.makeStore();
  site.write("objects", table(objects));
  site.zylstore("load objects");
}

int16_t end(uint32_t handle, uint8_t vote, uint16_t expectedReason = 0) {
  uint16_t reason = 4711;
  const int16_t rc = vltEndTxn(handle, vote, &reason);
  EXPECT_EQ(reason, expectedReason);
  return rc;
}

}  // namespace

TEST(Transaction, DeletesWithTheCommitAndNotBefore) {
  const Site site;
  makeObjects(site, 4);
  const Client client(site);
  const uint32_t handle = logOn(), observer = logOn();
  ASSERT_EQ(vltBeginTxn(handle), VLT_RC_OK);
  EXPECT_EQ(vltBeginTxn(handle), VLT_RC_BAD_SEQUENCE);
  EXPECT_EQ(deleteObject(handle, 2), VLT_RC_OK);
  EXPECT_EQ(deleteObject(handle, 3), VLT_RC_OK);
  EXPECT_EQ(deleteObject(handle, 3), VLT_RC_NO_MATCH);
  EXPECT_EQ(deleteObject(handle, 99), VLT_RC_NO_MATCH);
  EXPECT_EQ(namesOf(observer), "/1 /2 /3 /4 [121]");
  uint16_t reason = 0;
  EXPECT_EQ(vltEndTxn(handle, 3, &reason), VLT_RC_BAD_ARGUMENT);
  EXPECT_EQ(vltEndTxn(handle, VLT_VOTE_COMMIT, nullptr), VLT_RC_BAD_ARGUMENT);
  EXPECT_EQ(end(handle, VLT_VOTE_COMMIT), VLT_RC_OK);
  EXPECT_EQ(namesOf(observer), "/1 /4 [121]");
  EXPECT_EQ(vltEndTxn(handle, VLT_VOTE_COMMIT, &reason), VLT_RC_BAD_SEQUENCE);
  EXPECT_EQ(deleteObject(handle, 1), VLT_RC_BAD_SEQUENCE);
  // An identifier is never used again.
  EXPECT_EQ(site.zylstore("put --node ORANODE --fs /marlorc --ll /new"), "5\n");
}

TEST(Transaction, KeepsEverythingAfterAnAbortOrALostSession) {
  const Site site;
  makeObjects(site, 2);
  const Client client(site);
  const uint32_t handle = logOn(), lost = logOn();
  ASSERT_EQ(vltBeginTxn(handle), VLT_RC_OK);
  EXPECT_EQ(deleteObject(handle, 1), VLT_RC_OK);
  EXPECT_EQ(end(handle, VLT_VOTE_ABORT), VLT_RC_OK);
  ASSERT_EQ(vltBeginTxn(lost), VLT_RC_OK);
  EXPECT_EQ(deleteObject(lost, 2), VLT_RC_OK);
  EXPECT_EQ(vltTerminate(lost), VLT_RC_OK);
  EXPECT_EQ(namesOf(handle), "/1 /2 [121]");
}

TEST(Transaction, TakesNoMoreThanTheLimitAndNothingWithoutPermission) {
  const Site site;
  makeObjects(site, 4);
  site.zylstore("limits --max-objects-per-txn 2");
  const Client client(site);
  const uint32_t handle = logOn();
  ASSERT_EQ(vltBeginTxn(handle), VLT_RC_OK);
  EXPECT_EQ(deleteObject(handle, 1), VLT_RC_OK);
  EXPECT_EQ(deleteObject(handle, 2), VLT_RC_OK);
  EXPECT_EQ(deleteObject(handle, 3), VLT_RC_TXN_LIMIT);
  EXPECT_EQ(end(handle, VLT_VOTE_COMMIT), VLT_RC_OK);
  site.zylstore("limits --max-objects-per-txn 0");
  site.zylstore("node ORANODE --password secret --no-delete");
  ASSERT_EQ(vltBeginTxn(handle), VLT_RC_OK);
  EXPECT_EQ(deleteObject(handle, 3), VLT_RC_NOT_AUTHORIZED);
  EXPECT_EQ(end(handle, VLT_VOTE_ABORT), VLT_RC_OK);
  site.zylstore("node OTHER --password secret");
  const uint32_t other = logOn({"OTHER"});
  ASSERT_EQ(vltBeginTxn(other), VLT_RC_OK);
  EXPECT_EQ(deleteObject(other, 3), VLT_RC_NO_MATCH);
  EXPECT_EQ(end(other, VLT_VOTE_COMMIT), VLT_RC_OK);
  EXPECT_EQ(namesOf(handle), "/3 /4 [121]");
}

TEST(Transaction, IsAbortedWithTheReasonWhenAnotherDeletedFirst) {
  const Site site;
  makeObjects(site, 3);
  const Client client(site);
  const uint32_t slow = logOn(), quick = logOn();
  ASSERT_EQ(vltBeginTxn(slow), VLT_RC_OK);
  EXPECT_EQ(deleteObject(slow, 1), VLT_RC_OK);
  EXPECT_EQ(deleteObject(slow, 2), VLT_RC_OK);
  ASSERT_EQ(vltBeginTxn(quick), VLT_RC_OK);
  EXPECT_EQ(deleteObject(quick, 2), VLT_RC_OK);
  EXPECT_EQ(end(quick, VLT_VOTE_COMMIT), VLT_RC_OK);
  EXPECT_EQ(end(slow, VLT_VOTE_COMMIT, VLT_RC_NO_MATCH), VLT_RC_CHECK_REASON);
  EXPECT_EQ(namesOf(slow), "/1 /3 [121]");
}

TEST(Transaction, IsWholeOrNotAtAllWhenItsProcessIsKilled) {
  const int objects = 4000;
  int kept = 0;
  // The delays reach from before the first deletion over the commit to after it.
  for (int delay = 0; delay < 12; ++delay) {
    const Site site;
    makeObjects(site, objects);
    site.zylstore("limits --max-objects-per-txn 0");
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
      const Client client(site);
      const uint32_t handle = logOn();
      uint16_t reason = 0;
      vltBeginTxn(handle);
      if (write(ready[1], "r", 1) != 1) _exit(1);
      for (int i = 1; i <= objects; ++i) deleteObject(handle, i);
      vltEndTxn(handle, VLT_VOTE_COMMIT, &reason);
      pause();
    }
    char byte;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    usleep(static_cast<useconds_t>(delay * delay * 500));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(ready[0]);
    close(ready[1]);
    const std::string left = site.zylstore("list");
    const bool all = left.find("/" + std::to_string(objects) + "\t") != std::string::npos;
    kept += all;
    EXPECT_EQ(std::count(left.begin(), left.end(), '\n'), all ? objects : 0) << delay;
  }
  EXPECT_GE(kept, 1);
}
