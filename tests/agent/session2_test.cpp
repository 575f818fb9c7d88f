// session2_test.cpp: set-up, logon and the password file, against a scripted library.
#include "agent/session2.h"

#include <sys/stat.h>

#include <algorithm>

#include "agent/password.h"
#include "tests/agent/agent_fixture.h"
#include "tests/support/child.h"
#include "tests/support/scripted_api.h"
#include "tests/support/traced.h"

namespace {

using support::ScriptedApi;
using support::Step;
using support::textSteps;
using Session = Agent;
using PasswordFile = Agent;

// The library's cipher, played by one that inverts every bit.
Step cipher(const char* function) {
  return Step(function).fill<std::uint8_t>([](std::uint8_t& block) {
    for (std::uint8_t* byte = &block; byte != &block + 8; ++byte) {
      *byte = static_cast<std::uint8_t>(~*byte);
    }
  });
}
std::string chunk(char digit, std::string text) {
  text.resize(8, '\0');
  for (char& c : text) c = static_cast<char>(~c);
  return digit + text;
}
const std::string kHeader = "Agent for Oracle Backup - Password file";

Step version(std::uint16_t level) {
  return Step("vltQueryApiVersionEx").fill<VltApiVersionEx>([level](VltApiVersionEx& version) {
    version = {2, 8, 1, level, 0};
  });
}
Step logon(const std::string& arguments, std::int16_t rc) {
  return Step("vltInitEx", arguments, rc).fill<std::uint32_t>([rc](std::uint32_t& handle) {
    handle = rc == 0 ? 7 : 0;
  });
}

TEST_F(PasswordFile, IsWrittenInChunksThatReadBack) {
  unsigned key[2] = {};
  const std::string digits = "0123456789abcdef0";
  for (const std::string& password :
       {std::string(), digits.substr(0, 5), digits.substr(0, 16), digits, std::string(64, 'x')}) {
    const std::size_t length = password.size(), chunks = (length + 7) / 8;
    ScriptedApi api(std::vector<Step>(chunks, cipher("vltEncryptEx")));
    ASSERT_EQ(0, psvexoWritePswdToFile("pw///", "pw///VEXO.N", password.c_str(), key));
    std::string expected = kHeader;
    for (std::size_t at = 0; at < length; at += 8) {
      const std::string part = password.substr(at, 8);
      expected += chunk(static_cast<char>('0' + part.size()), part);
    }
    EXPECT_EQ(expected, dir.read("pw/VEXO.N"));
    char back[kPasswordSize];
    api.add(std::vector<Step>(chunks, cipher("vltDecryptEx")));
    EXPECT_EQ(0, psvexoReadPswdFromFile("pw/VEXO.N", back, key));
    EXPECT_EQ(password, back);
  }
  const auto mode = [](const char* name) { return std::filesystem::status(name).permissions(); };
  EXPECT_EQ(std::filesystem::perms{0700}, mode("pw"));
  EXPECT_EQ(std::filesystem::perms{0644}, mode("pw/VEXO.N"));
}

TEST_F(PasswordFile, IsInTheFirstDirectoryThatIsNamed) {
  set(orc.VEXO_NODE, "N");
  for (const auto& [option, agents, path] : {std::tuple("/p", "/o", "/p/VEXO.N"),
                                             {"/p/", "", "/p/VEXO.N"},
                                             {"", "/o", "/o/VEXO.N"},
                                             {"", "", "installed/agent/VEXO.N"}}) {
    set(orc.VEXO_PSWDPATH, option);
    set(orc.VLTI_ORC_DIR, agents);
    char directory[agent::kPasswordPathSize], found[agent::kPasswordPathSize];
    psvexoGetFileName(directory, found, &orc);
    EXPECT_STREQ(path, found);
  }
}

// What may be where the password file should be, read and then replaced by root and by another
// user.
TEST_F(PasswordFile, KeepsItsOwnerAndNeitherOpensNorReplacesWhatOthersPut) {
  if (::getuid() != 0) GTEST_SKIP() << "needs root, to make other users' files";
  constexpr uid_t kOwner = 1234, kOther = 4321;
  std::filesystem::permissions(dir.path(), std::filesystem::perms::all);
  const std::string path = dir.path("VEXO.N");
  const std::string good = kHeader + chunk('2', "pw"), fresh = kHeader + chunk('5', "newer");
  enum Kind { kFile, kLink, kPipe };
  const struct {
    const char* what;
    Kind kind;
    uid_t file, link, user;
    mode_t mode;
    bool read, followed;
    uid_t ownerThen;
  } rows[] = {
      {"root's", kFile, 0, 0, 0, 0644, true, false, 0},
      {"root's, read by another", kFile, 0, 0, kOther, 0644, true, false, kOther},
      {"root's, hidden from another", kFile, 0, 0, kOther, 0600, false, false, kOther},
      {"another's, changed by root", kFile, kOwner, 0, 0, 0600, true, false, kOwner},
      {"the user's own", kFile, kOwner, 0, kOwner, 0600, true, false, kOwner},
      {"root's link to a user's", kLink, kOwner, 0, 0, 0600, false, true, kOwner},
      {"a user's link to his own", kLink, kOwner, kOwner, 0, 0600, false, true, kOwner},
      {"root's link, replaced by the user", kLink, kOwner, 0, kOwner, 0600, false, true, kOwner},
      {"a user's link to root's", kLink, 0, kOwner, kOwner, 0644, false, true, kOwner},
      {"a link that somebody planted", kLink, 0, kOther, 0, 0600, false, false, 0},
      {"a pipe", kPipe, kOther, 0, 0, 0644, false, false, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    std::filesystem::remove(path);
    const std::string name = row.kind == kLink ? "target" : "VEXO.N", file = dir.path(name);
    if (row.kind == kPipe) {
      ASSERT_EQ(0, ::mkfifo(path.c_str(), row.mode));
    } else {
      std::filesystem::remove(file);
      dir.write(name, good);
    }
    ASSERT_EQ(0, ::chmod(file.c_str(), row.mode));
    ASSERT_EQ(0, ::chown(file.c_str(), row.file, row.file));
    if (row.kind == kLink) {
      std::filesystem::create_symlink("target", path);
      ASSERT_EQ(0, ::lchown(path.c_str(), row.link, row.link));
    }
    struct stat entry = {};
    support::inChild([&] {
      EXPECT_TRUE(::setgid(row.user) == 0 && ::setuid(row.user) == 0);
      unsigned key[2] = {};
      char password[kPasswordSize] = "from before";
      ScriptedApi api;
      if (row.read) api.add({cipher("vltDecryptEx")});
      EXPECT_EQ(row.read ? 0 : 168, psvexoReadPswdFromFile(path.c_str(), password, key));
      EXPECT_STREQ(row.read ? "pw" : "", password);
      EXPECT_EQ(0, ::stat(path.c_str(), &entry));
      EXPECT_EQ(row.read ? 0644u : row.mode, entry.st_mode & 0777);
      api.add({cipher("vltEncryptEx")});
      EXPECT_EQ(0, psvexoWritePswdToFile(dir.path().c_str(), path.c_str(), "newer", key));
    });
    EXPECT_EQ(row.followed, std::filesystem::is_symlink(path));
    EXPECT_EQ(fresh, dir.read("VEXO.N"));
    EXPECT_EQ(row.kind == kLink && !row.followed ? good : fresh, dir.read(name));
    ASSERT_EQ(0, ::stat(path.c_str(), &entry));
    EXPECT_EQ(std::pair(row.ownerThen, row.ownerThen), std::pair(entry.st_uid, entry.st_gid));
    EXPECT_EQ(0644u, entry.st_mode & 0777);
  }
}

TEST_F(Session, SetUpTakesThePasswordOfTheLegacyFileOnce) {
  set(orc.VEXO_NODE, "N");
  set(orc.VLTI_DIR, "/api");
  set(orc.VLTI_LOG, "/log");
  set(orc.VLTI_ORC_CONFIG, "/c.opt");
  const auto setUp = [] {
    return Step("vltSetUp", "1").fill<const VltEnvSetUp>([](const VltEnvSetUp& record) {
      EXPECT_EQ(4, record.structVersion);
      EXPECT_EQ(0, record.incExlCaseSensitive);
      EXPECT_EQ("/api/log/c.optvexoerror.log",
                std::string(record.vltiDir) + record.vltiLog + record.vltiConfig + record.logName);
    });
  };
  const auto key = Step("vltCreateDesKeyEx", "'N'");
  dir.write("installed/agent/VEXO.N", kHeader + chunk('6', "secret"));
  ScriptedApi api({version(13), setUp(), key, cipher("vltDecryptEx"), version(13), setUp(), key,
                   version(13), setUp(), key, cipher("vltDecryptEx")});
  EXPECT_EQ(0, psDoVltSetUp(&orc));
  EXPECT_STREQ("secret", orc.legacyPassword);
  EXPECT_EQ(std::pair(1, 1), std::pair(int{orc.apiSetUp}, int{orc.bUsePwGenerate}));
  EXPECT_TRUE(dir.has("installed/agent/VEXO.N.save"));
  EXPECT_HOLDS(log(), "QRB2721");
  EXPECT_HOLDS(log(), "VEXO.N.save");
  EXPECT_EQ(0, psDoVltSetUp(&orc)) << "no such file is no error";
  EXPECT_EQ(std::string(kPasswordSize, '\0'), std::string(orc.legacyPassword, kPasswordSize));
  std::filesystem::remove("installed/agent/VEXO.N.save");
  dir.write("installed/agent/VEXO.N.save/full", "");  // nothing can be renamed to this name
  dir.write("installed/agent/VEXO.N", kHeader + chunk('6', "secret"));
  support::Captured shown;
  EXPECT_EQ(0, psDoVltSetUp(&orc));
  EXPECT_HOLDS(shown.take(), "QRB2629E");
  EXPECT_HOLDS(log(), "QRB2629E");
  EXPECT_STREQ("secret", orc.legacyPassword) << "it is used nevertheless";
}

TEST_F(Session, SetUpTracesWhyItFailed) {
  const support::Captured quiet;
  ScriptedApi api({version(12)});
  EXPECT_HOLDS(support::traced("ORCLEVEL1", [&] { EXPECT_EQ(2507, psDoVltSetUp(&orc)); }),
               " psDoVltSetUp(): Exiting with rc = 2507\n");
  EXPECT_EQ(0, orc.apiSetUp);
}

TEST_F(Session, TheLegacyWayAsksWithAnEmptyFileInTmpdir) {
  support::ScopedEnv temporary("TMPDIR", dir.path().c_str());
  TEST_LEGACYPWD = 1;
  std::string asked;
  ScriptedApi api({version(13),
                   Step("vltSetUp", "1").fill<const VltEnvSetUp>([&](const VltEnvSetUp& in) {
                     asked = in.vltiConfig;
                     EXPECT_EQ(0u, std::filesystem::file_size(asked));
                   }),
                   Step("vltQueryCliOptions", "*", 2409)});
  api.add(textSteps("0", 2409, "ZYL2409E why"));
  EXPECT_EQ(2409, psDoVltSetUp(&orc));
  EXPECT_EQ(0u, asked.find(dir.path("vexo"))) << asked;
  EXPECT_FALSE(std::filesystem::exists(asked));
  temporary.set("/proc");  // a directory in which nobody makes a file
  api.add({version(13)});
  const support::Captured quiet;
  EXPECT_EQ(2531, psDoVltSetUp(&orc));
  EXPECT_HOLDS(log(), "QRB2531");
  TEST_LEGACYPWD = 0;
}

// If the library keeps the password, it decides on the node, the owner and the directory as well.
TEST_F(Session, TheLegacyWayDropsTheNamesOfALibraryThatKeepsThePassword) {
  TEST_LEGACYPWD = 1;
  for (const auto& [node, owner, directory] :
       {std::tuple("", "", ""), {"N", "", ""}, {"", "O", ""}, {"", "", "/p"}}) {
    orc = {};
    set(orc.VEXO_NODE, node);
    set(orc.VEXO_OWNER, owner);
    set(orc.VEXO_PSWDPATH, directory);
    ScriptedApi api({version(13), Step("vltSetUp"),
                     Step("vltQueryCliOptions").fill<VltOptions>([](VltOptions& options) {
                       options.passwordAccess = VLT_PASSWORD_GENERATE;
                     }),
                     logon("node=null owner=null password=''", 51)
                         .fill<const VltInitExIn>(
                             [](const VltInitExIn& in) { EXPECT_STREQ("", in.options); })});
    api.add(textSteps("0", 51, "ZYL0051E"));
    support::Captured shown;
    EXPECT_EQ(0, psDoVltSetUp(&orc));
    EXPECT_EQ("", std::string(orc.VEXO_NODE) + orc.VEXO_OWNER + orc.VEXO_PSWDPATH);
    const unsigned named = *node + *owner + *directory != 0 ? 2 : 0;
    EXPECT_EQ(named, support::occurrences(shown.take() + orc.lastErrorMsg, "QRB2610"))
        << node << owner;
    EXPECT_EQ(std::pair(1, 1), std::pair(int{orc.apiSetUp}, int{orc.bUsePwGenerate}));
    EXPECT_EQ(51, vexoSession(&orc));
  }
  // If the agent keeps it, the library is set up anew.
  ScriptedApi api({version(13), Step("vltSetUp"), Step("vltQueryCliOptions"), Step("vltCleanUp"),
                   Step("vltSetUp", "*", 2409)});
  api.add(textSteps("0", 2409, "ZYL2409E"));
  EXPECT_EQ(2409, psDoVltSetUp(&orc));
  EXPECT_EQ(std::pair(0, 0), std::pair(int{orc.apiSetUp}, int{orc.bUsePwGenerate}));
  TEST_LEGACYPWD = 0;
}

TEST_F(Session, LogonFillsTheContext) {
  orc.bUsePwGenerate = 1;
  set(orc.VEXO_OWNER, "O");
  set(orc.VEXO_PSWDPATH, "/p w");
  set(orc.VLTI_ORC_CONFIG, "/c.opt");
  for (int again = 0; again < 2; ++again) {
    set(orc.legacyPassword, "secret");
    ScriptedApi api({logon("node=null owner='O' password='secret'", 0)
                         .fill<const VltInitExIn>([](const VltInitExIn& in) {
                           EXPECT_STREQ(" -PASSWORDACCESS=GENERATE -PASSWORDDIR=/p w", in.options);
                           EXPECT_STREQ("/c.opt", in.configFile);
                           EXPECT_EQ(5, in.structVersion);
                           EXPECT_EQ(3, in.clientKind);
                           ASSERT_NE(nullptr, in.appVersion);
                           EXPECT_EQ(13, in.appVersion->level);
                         }),
                     Step("vltQuerySessOptions", "7"),
                     Step("vltQuerySessInfo", "7").fill<VltSessInfo>([](VltSessInfo& info) {
                       info.maxObjPerTxn = 100;
                     })});
    EXPECT_EQ(0, vexoSession(&orc)) << "the options are appended only once";
    EXPECT_EQ(0, std::ranges::count_if(orc.legacyPassword, [](char c) { return c != '\0'; }));
    EXPECT_EQ(7u, orc.vltHandle);
    EXPECT_EQ(100, orc.maxObjPerTxn);
  }
}

TEST_F(Session, LogonWipesThePasswordRightAfterTheLastCall) {
  set(orc.legacyPassword, "secret");
  orc.bUsePwGenerate = 1;
  const char* buffer = nullptr;
  std::string given, left = "not looked at";
  ScriptedApi api({Step("vltInitEx", "*", 51).fill<const VltInitExIn>([&](const VltInitExIn& in) {
                     buffer = in.clientPassword;
                     given = buffer;
                   }),
                   Step("vltRCMsgEx").fill<VltRcMsgOut>([&](VltRcMsgOut&) {
                     left.assign(buffer, kPasswordSize);
                   }),
                   Step("vltRCMsg").text("")});
  EXPECT_EQ(51, vexoSession(&orc));
  EXPECT_EQ("secret", given);
  EXPECT_EQ(std::string(kPasswordSize, '\0'), left);
}

}  // namespace
