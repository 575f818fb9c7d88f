// vltlib_transaction_test.cpp: what a transaction deletes, and that nothing else is ever deleted.
#include "tests/sandbox/site.h"

namespace {

class Transaction : public Store {
 protected:
  // A store with the objects /1, /2 ... of ORANODE.
  void fill(int objects) const {
    std::string lines;
    for (int i = 1; i <= objects; ++i)
      lines += "ORANODE\t/marlorc\t/oracle\t/" + std::to_string(i) + "\t\t2024-01-15\t1\n";
    dir_.write("objects", lines);
    zylstore("init --force");
    zylstore("node ORANODE --password secret");
    zylstore("node OTHER --password secret");
    zylstore("load objects");
    ASSERT_EQ(setUp(), VLT_RC_OK);
  }

  // The code and the reason of the end, "0/0".
  static std::string end(uint32_t handle, uint8_t vote) {
    uint16_t reason = 4711;
    const int16_t rc = vltEndTxn(handle, vote, &reason);
    return std::to_string(rc) + "/" + std::to_string(reason);
  }
};

TEST_F(Transaction, DeletesWhatItSaysOrNothing) {
  const uint8_t commit = VLT_VOTE_COMMIT, abort = VLT_VOTE_ABORT;
  const char* const all = "/1 /2 /3 /4 [121]";
  const struct {
    const char *before, *node;
    std::vector<int> ids;
    uint8_t vote;
    const char *codes, *left;
  } rows[] = {
      {"list", "ORANODE", {2, 3, 3, 99}, commit, "0 0 2 2 0/0", "/1 /4 [121]"},
      {"list", "ORANODE", {1, 2}, abort, "0 0 0/0", all},
      {"list", "OTHER", {3}, commit, "2 0/0", all},
      {"limits --max-objects-per-txn 1", "ORANODE", {1, 2}, commit, "0 2407 0/0", "/2 /3 /4 [121]"},
      {"node ORANODE --password secret --no-delete", "ORANODE", {3}, abort, "54 0/0", all},
      {"fault DeleteObj 54 --after 1", "ORANODE", {1, 2}, commit, "0 54 0/0", "/2 /3 /4 [121]"},
      {"fault EndTxn 2302 --reason 54", "ORANODE", {1}, commit, "0 2302/54", all},
      {"fault EndTxn 0 --reason 11", "ORANODE", {1}, commit, "0 0/11", all},
  };
  for (const auto& row : rows) {
    fill(4);
    zylstore(row.before);
    const uint32_t handle = logOn({row.node});
    ASSERT_EQ(vltBeginTxn(handle), VLT_RC_OK);
    EXPECT_EQ(vltBeginTxn(handle), VLT_RC_BAD_SEQUENCE);
    std::string codes;
    for (int id : row.ids) codes += std::to_string(remove(handle, id)) + " ";
    EXPECT_EQ(found(logOn()), all) << "before the end";
    EXPECT_EQ(codes + end(handle, row.vote), row.codes) << row.before;
    EXPECT_EQ(found(logOn()), row.left) << row.before;
    EXPECT_EQ(vltBeginTxn(handle), VLT_RC_OK) << "the transaction is still open";
  }
}

}  // namespace
