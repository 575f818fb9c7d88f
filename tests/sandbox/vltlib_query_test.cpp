// vltlib_query_test.cpp: which objects a query finds, in which order and state.
#include "tests/sandbox/site.h"

namespace {

// Five objects of ORANODE and one of another node.
class Querying : public Store {
 protected:
  Querying() {
    zylstore("node OTHER --password secret");
    dir_.write("objects",
               "ORANODE\t/marlorc\t/oracle\t/a_1\tscott\t2024-01-15T10:00:00\t100\n"
               "ORANODE\t/marlorc\t/oracle/x\t/a_2\t\t2024-01-16T23:59:59\t5000000000\tcompressed\n"
               "OTHER\t/marlorc\t/oracle\t/a_3\tscott\t2024-01-15\t1\n"
               "ORANODE\t/marlorc\t/oracle\t/b_4\tScott\t2024-01-17\t1\tinactive\n"
               "ORANODE\t/marl\t/oracle\t/a_5\tscott\t2024-01-17\t1\taes256,deduplicated\n"
               "ORANODE\t/marlorc\t/oracle\t/A_6\tscott\t2024-01-17\t1\tunknown-format\n");
    zylstore("load objects");
  }
};

TEST_F(Querying, MatchesNamesOwnerStateAndDate) {
  const uint32_t handle = logOn();
  const struct {
    Query query;
    const char* expected;
  } rows[] = {
      {{}, "/a_1 /a_2 ? [121]"},
      {{"/marl"}, "/a_5 [121]"},
      {{"/mar*"}, "[2]"},  // a filespace is no pattern
      {{"/marlorc", "/oracle"}, "/a_1 ? [121]"},
      {{"/marlorc", "/oracle/?"}, "/a_2 [121]"},
      {{"/marlorc", "/*", "/?_1"}, "/a_1 [121]"},
      {{"/marlorc", "/*", "/A*"}, "? [121]"},
      {{"/marlorc", "/*", "/*", "scott"}, "/a_1 ? [121]"},
      {{"/marlorc", "/*", "/*", "SCOTT"}, "[2]"},
      {{"/marlorc", "/*", "/*", nullptr, VLT_STATE_INACTIVE}, "/b_4 [121]"},
      {{"/marlorc", "/*", "/*", nullptr, 1, {2024, 1, 16, 23, 59, 59}}, "/a_1 /a_2 [121]"},
      {{"/marlorc", "/*", "/*", nullptr, 1, {2024, 1, 16, 23, 59, 58}}, "/a_1 [121]"},
  };
  for (const auto& row : rows) EXPECT_EQ(found(handle, row.query), row.expected) << (&row - rows);
  EXPECT_EQ(found(logOn({"OTHER"})), "/a_3 [121]");
}

}  // namespace
