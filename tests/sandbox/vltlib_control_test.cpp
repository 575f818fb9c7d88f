// vltlib_control_test.cpp: ordered faults, the record of calls and the cipher.
#include <cstring>
#include <set>

#include "tests/sandbox/site.h"

namespace {

class Control : public Store {};

TEST_F(Control, RecordsCallsInOrderWithCodesAndWithoutPasswords) {
  zylstore("put --node ORANODE --fs /marlorc --ll /a");
  zylstore("calls on");
  ASSERT_EQ(setUp(), VLT_RC_OK);
  zylstore("fault InitEx -50");
  uint32_t handle = 0;
  Logon()(handle);
  handle = logOn({"ORANODE", "secret", " -PASSWORDACCESS=PROMPT"});
  found(handle);
  vltBeginTxn(handle);
  remove(handle, 1);
  uint16_t reason = 0;
  vltEndTxn(handle, VLT_VOTE_ABORT, &reason);
  vltChangePW(handle, "secret", "hush-hush");
  vltBeginQuery(handle, 9, nullptr);
  vltTerminate(handle);
  vltCleanUp(VLT_MULTITHREAD);
  EXPECT_EQ(zylstore("calls show | awk -F'\\t' '{printf \"%s:%s \", $3, $NF}'"),
            "vltCleanUp:0 vltSetUp:0 vltInitEx:-50 vltInitEx:0 vltBeginQuery:0 vltGetNextQObj:2200 "
            "vltGetNextQObj:121 vltEndQuery:0 vltBeginTxn:0 vltDeleteObj:0 vltEndTxn:0 "
            "vltChangePW:0 vltBeginQuery:2405 vltTerminate:0 vltCleanUp:0 ");
  const std::string shown = zylstore("calls show");
  for (const char* part : {"node=\"ORANODE\"", "fs=/marlorc", "id=1", "vote=2"})
    EXPECT_NE(shown.find(part), std::string::npos) << part;
  // A password is in neither the record nor the store.
  EXPECT_EQ(run("(cat store.db*; '" ZYLSTORE "' calls show) | grep -a -e hush -e secret").output,
            "");
}

TEST(Cipher, IsDesWithOneGoodKeyForEachText) {
  // A published test vector of the cipher: key, plain text, cipher text.
  const uint8_t keyBytes[8] = {0x13, 0x34, 0x57, 0x79, 0x9B, 0xBC, 0xDF, 0xF1};
  const uint8_t plain[8] = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};
  const uint8_t expected[8] = {0x85, 0xE8, 0x13, 0x54, 0x0F, 0x0A, 0xB4, 0x05};
  uint32_t key[2];
  uint8_t out[8];
  std::memcpy(key, keyBytes, sizeof key);
  vltEncryptEx(key, plain, out);
  EXPECT_EQ(std::memcmp(out, expected, 8), 0);
  vltDecryptEx(key, out, out);
  EXPECT_EQ(std::memcmp(out, plain, 8), 0);
  std::set<std::string> keys;
  for (int i = 0; i < 500; ++i) {
    vltCreateDesKeyEx(("NODE" + std::to_string(i / 2)).c_str(), key);
    std::memcpy(out, key, 8);
    for (uint8_t byte : out) EXPECT_EQ(__builtin_popcount(byte) % 2, 1) << i;
    keys.emplace(out, out + 8);
  }
  EXPECT_EQ(keys.size(), 250u);
}

}  // namespace
