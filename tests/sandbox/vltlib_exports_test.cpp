// vltlib_exports_test.cpp: the interface of the client library.
#include "tests/sandbox/site.h"

namespace {

class ClientLibrary : public Store {};

TEST_F(ClientLibrary, ExportsTheInterfaceAndNothingElse) {
  const std::string list = "nm -D --defined-only '" CLIENT_LIBRARY "' | ";
  EXPECT_EQ(run(list + "grep -c ' T vlt'").output, "45\n");
  EXPECT_EQ(run(list + "wc -l").output, "45\n");
}

}  // namespace
