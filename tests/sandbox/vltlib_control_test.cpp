// vltlib_control_test.cpp: ordered faults, the record of calls, the texts and the cipher.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>

#include "tests/sandbox/site.h"

namespace {

// The record's operations with their codes, "vltSetUp:0 vltInitEx:-50".
std::string callsOf(const Site& site) {
  std::string result;
  const std::string shown = site.zylstore("calls show");
  for (size_t start = 0; start < shown.size();) {
    const size_t end = shown.find('\n', start);
    const std::string line = shown.substr(start, end - start);
    const size_t name = line.find("vlt");
    result.append(line, name, line.find('\t', name) - name);
    result.append(":").append(line, line.rfind('\t') + 1).append(" ");
    start = end + 1;
  }
  return result;
}

}  // namespace

TEST(Faults, FailTheOrderedCallsAndOnlyThose) {
  const Site site;
  site.makeStore();
  site.zylstore("fault InitEx -50 --after 1 --times 2");
  site.zylstore("fault vltinitex 54");
  const Client client(site);
  uint32_t handle = 0;
  std::string codes;
  for (int i = 0; i < 5; ++i) {
    codes += std::to_string(Logon()(handle)) + " ";
    EXPECT_EQ(handle == 0, i > 0 && i < 4);
  }
  EXPECT_EQ(codes, "0 -50 -50 54 0 ");
  EXPECT_EQ(site.zylstore("fault --list"), "");
}

TEST(Faults, CountOverProcesses) {
  const Site site;
  site.makeStore();
  site.zylstore("fault SetUp 2410 --after 1");
  EXPECT_EQ(Client(site).rc, VLT_RC_OK);
  EXPECT_EQ(site.zylstore("fault --list"), "vltSetUp\tcode 2410\treason 0\tafter 0\ttimes 1\n");
  {
    const Client refused(site);
    EXPECT_EQ(refused.rc, VLT_RC_STORE_FAILED);
    uint32_t handle = 0;
    EXPECT_EQ(Logon()(handle), VLT_RC_NOT_SET_UP);
  }
  EXPECT_EQ(Client(site).rc, VLT_RC_OK);
}

TEST(Faults, OfTheCommitAbortAndGiveTheReason) {
  struct {
    const char* fault;
    int16_t code;
    uint16_t reason;
  } const rows[] = {
      {"fault EndTxn 2302 --reason 54", 2302, 54},
      {"fault EndTxn 0 --reason 11", 0, 11},
      {"fault EndTxn 2410", 2410, 0},
  };
  for (const auto& row : rows) {
    const Site site;
    site.makeStore();
    site.zylstore("put --node ORANODE --fs /marlorc --ll /a");
    const Client client(site);
    const uint32_t handle = logOn();
    site.zylstore(row.fault);
    uint16_t reason = 4711;
    ASSERT_EQ(vltBeginTxn(handle), VLT_RC_OK);
    ASSERT_EQ(deleteObject(handle, 1), VLT_RC_OK);
    EXPECT_EQ(vltEndTxn(handle, VLT_VOTE_COMMIT, &reason), row.code);
    EXPECT_EQ(reason, row.reason);
    EXPECT_EQ(namesOf(handle), "/a [121]") << row.fault;
    EXPECT_EQ(vltBeginTxn(handle), VLT_RC_OK) << "the aborted transaction is still open";
  }
}

TEST(Faults, ArmedDuringASessionReachThePerObjectCalls) {
  const Site site;
  site.makeStore();
  site.zylstore(
      "load - <<'E'\n"
      "ORANODE\t/marlorc\t/o\t/1\t\t2024-01-01\t1\n"
      "ORANODE\t/marlorc\t/o\t/2\t\t2024-01-01\t1\n"
      "E");
  const Client client(site);
  const uint32_t handle = logOn();
  site.zylstore("fault GetNextQObj 2410 --after 1");
  EXPECT_EQ(namesOf(handle), "/1 [2410]");
  site.zylstore("fault DeleteObj 54 --after 1");
  ASSERT_EQ(vltBeginTxn(handle), VLT_RC_OK);
  EXPECT_EQ(deleteObject(handle, 1), VLT_RC_OK);
  EXPECT_EQ(deleteObject(handle, 2), VLT_RC_NOT_AUTHORIZED);
  EXPECT_EQ(deleteObject(handle, 2), VLT_RC_OK);
  site.zylstore("fault Init 2 --times 9");
  site.zylstore("fault --clear");
  EXPECT_EQ(vltInit(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            VLT_RC_NOT_SUPPORTED);
}

TEST(Calls, AreRecordedInOrderWithCodesAndWithoutPasswords) {
  const Site site;
  site.makeStore();
  site.zylstore("put --node ORANODE --fs /marlorc --ll /a");
  site.zylstore("fault InitEx -50");
  site.zylstore("calls on");
  {
    const Client client(site);
    uint32_t handle = 0;
    Logon()(handle);
    handle = logOn({"ORANODE", "secret", " -PASSWORDACCESS=PROMPT"});
    namesOf(handle);
    uint16_t reason = 0;
    vltBeginTxn(handle);
    deleteObject(handle, 1);
    vltEndTxn(handle, VLT_VOTE_ABORT, &reason);
    vltChangePW(handle, "secret", "hush-hush");
    char text[VLT_MAX_RC_TEXT + 1];
    vltRCMsg(handle, 51, text);
    vltBeginQuery(handle, 9, nullptr);
    vltTerminate(handle);
  }
  EXPECT_EQ(callsOf(site),
            "vltSetUp:0 vltInitEx:-50 vltInitEx:0 vltBeginQuery:0 vltGetNextQObj:2200 "
            "vltGetNextQObj:121 vltEndQuery:0 vltBeginTxn:0 vltDeleteObj:0 vltEndTxn:0 "
            "vltChangePW:0 vltRCMsg:0 vltBeginQuery:2405 vltTerminate:0 vltCleanUp:0 ");
  const std::string shown = site.zylstore("calls show");
  for (const char* part : {"node=\"ORANODE\"", "fs=/marlorc", "id=1", "vote=2", "rc=51"})
    EXPECT_NE(shown.find(part), std::string::npos) << part;
  for (const char* secret : {"secret", "hush"})
    EXPECT_EQ(shown.find(secret), std::string::npos) << secret;
  // Nor is a password to be found in the store itself.
  EXPECT_NE(site.run("grep -a -e hush -e secret store.db*").status, 0);
  site.zylstore("calls off");
  site.zylstore("calls clear");
  { const Client client(site); }
  EXPECT_EQ(site.zylstore("calls show"), "");
}

TEST(CodeTexts, AreThereForEveryCodeThatIsReturned) {
  std::set<std::string> texts;
  char text[VLT_MAX_RC_TEXT + 1];
  for (int rc : {-50,  0,    2,    51,   52,   53,   54,   121,  122,  2200, 2302,
                 2401, 2402, 2403, 2404, 2405, 2406, 2407, 2408, 2409, 2410}) {
    EXPECT_EQ(vltRCMsg(0, static_cast<int16_t>(rc), text), VLT_RC_OK) << rc;
    char expected[20];
    std::snprintf(expected, sizeof expected, "ZYL%04d", rc < 0 ? -rc : rc);
    EXPECT_EQ(std::strncmp(text, expected, 7), 0) << text;
    EXPECT_EQ(text[8], ' ') << text;
    texts.insert(text);
  }
  EXPECT_EQ(texts.size(), 21u);
  EXPECT_EQ(vltRCMsg(0, 9999, text), VLT_RC_BAD_ARGUMENT);
  EXPECT_NE(std::strstr(text, "9999"), nullptr);
  EXPECT_EQ(vltRCMsg(0, 51, nullptr), VLT_RC_BAD_ARGUMENT);
}

TEST(CodeTexts, AreCutToTheBuffer) {
  char text[20];
  std::memset(text, '#', sizeof text);
  const VltRcMsgIn in = {1, 0, 51, 1};
  VltRcMsgOut out = {1, text, 13};
  EXPECT_EQ(vltRCMsgEx(&in, &out), VLT_RC_OK);
  EXPECT_STREQ(text, "ZYL0051E The");
  EXPECT_EQ(text[13], '#');
  const VltRcMsgIn bare = {1, 0, 51, 0};
  EXPECT_EQ(vltRCMsgEx(&bare, &out), VLT_RC_OK);
  EXPECT_STREQ(text, "The server r");
  out.textSize = 0;
  EXPECT_EQ(vltRCMsgEx(&in, &out), VLT_RC_BAD_ARGUMENT);
}

TEST(Cipher, IsDes) {
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
}

TEST(Cipher, MakesOneGoodKeyForATextAndAnotherForTheNext) {
  std::set<uint64_t> keys;
  for (int i = 0; i < 500; ++i) {
    const std::string text = "NODE" + std::to_string(i);
    uint32_t key[2] = {}, again[2] = {};
    vltCreateDesKeyEx(text.c_str(), key);
    vltCreateDesKeyEx(text.c_str(), again);
    EXPECT_EQ(std::memcmp(key, again, 8), 0);
    uint8_t bytes[8];
    std::memcpy(bytes, key, 8);
    for (uint8_t byte : bytes) EXPECT_EQ(__builtin_popcount(byte) % 2, 1) << text;
    uint8_t block[8] = {'s', 'e', 'c', 'r', 'e', 't', 0, 0}, sealed[8], opened[8];
    vltEncryptEx(key, block, sealed);
    vltDecryptEx(key, sealed, opened);
    EXPECT_NE(std::memcmp(block, sealed, 8), 0);
    EXPECT_EQ(std::memcmp(block, opened, 8), 0);
    uint64_t whole;
    std::memcpy(&whole, key, 8);
    keys.insert(whole);
  }
  EXPECT_EQ(keys.size(), 500u);
}
