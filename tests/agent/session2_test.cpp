// session2_test.cpp: set-up, logon and the password file, against a scripted library.
#include "agent/session2.h"

#include "agent/password.h"
#include "tests/agent/agent_fixture.h"

namespace {

using std::pair, std::string, std::tuple, std::vector, support::ScriptedApi, support::Step;
using PasswordFile = Agent;
using Session = Agent;

// The library's cipher, played by one that inverts every bit.
Step cipher(const char* function) {
  return Step(function).fill<std::uint8_t>([](std::uint8_t& block) {
    for (int at = 0; at < 8; ++at) (&block)[at] ^= 255;
  });
}
// The bytes of a password file: the header, and before each block the number of bytes that count.
string fileOf(const string& password) {
  string bytes = "Agent for Oracle Backup - Password file";
  for (std::size_t at = 0; at < password.size(); at += 8) {
    string block = password.substr(at, 8);
    bytes += std::to_string(block.size());
    block.resize(8);
    for (const char c : block) bytes += static_cast<char>(~c);
  }
  return bytes;
}
Step version(std::uint16_t level) {
  const auto answer = [level](VltApiVersionEx& out) { out = {2, 8, 1, level, 0}; };
  return Step("vltQueryApiVersionEx").fill<VltApiVersionEx>(answer);
}

TEST_F(PasswordFile, IsWrittenInChunksThatReadBack) {
  unsigned key[2] = {};
  for (const string& password : {string(), string("0123456789abcdef0"), string(64, 'x')}) {
    const std::size_t chunks = (password.size() + 7) / 8;
    ScriptedApi api(vector<Step>(chunks, cipher("vltEncryptEx")));
    ASSERT_EQ(0, psvexoWritePswdToFile("pw///", "pw///VEXO.N", password.c_str(), key));
    EXPECT_EQ(fileOf(password), dir.read("pw/VEXO.N"));
    char back[kPasswordSize];
    api.add(vector<Step>(chunks, cipher("vltDecryptEx")));
    EXPECT_EQ(0, psvexoReadPswdFromFile("pw/VEXO.N", back, key));
    EXPECT_EQ(password, back);
  }
  EXPECT_EQ(fs::perms{0700}, fs::status("pw").permissions());
}

TEST_F(PasswordFile, IsInTheFirstDirectoryThatIsNamed) {
  set(orc.VEXO_NODE, "N");
  for (const auto& [option, agents, directory] :
       {tuple("/p/", "/o", "/p/"), {"", "/o", "/o/"}, {"", "", "installed/agent/"}}) {
    set(orc.VEXO_PSWDPATH, option, orc.VLTI_ORC_DIR, agents);
    char ignored[agent::kPasswordPathSize], path[agent::kPasswordPathSize];
    psvexoGetFileName(ignored, path, &orc);
    EXPECT_EQ(directory + string("VEXO.N"), path);
  }
}

// What may be where the password file should be, read and then replaced by root and by another
// user.
TEST_F(PasswordFile, KeepsItsOwnerAndNeitherOpensNorReplacesWhatOthersPut) {
  if (::getuid() != 0) GTEST_SKIP() << "needs root, to make other users' files";
  constexpr uid_t kOwner = 1234, kOther = 4321;
  fs::permissions(".", fs::perms::all);
  const string good = fileOf("pw"), fresh = fileOf("newer");
  const struct {
    const char* what;
    char kind;  // a file, a link or a pipe
    unsigned file, link, user, mode;
    bool read, followed;
    unsigned ownerThen;
  } rows[] = {
      {"root's, read by another", 'f', 0, 0, kOther, 0644, true, false, kOther},
      {"root's, hidden from another", 'f', 0, 0, kOther, 0600, false, false, kOther},
      {"another's, changed by root", 'f', kOwner, 0, 0, 0600, true, false, kOwner},
      {"a user's link to his own", 'l', kOwner, kOwner, 0, 0600, false, true, kOwner},
      {"root's link, replaced by the user", 'l', kOwner, 0, kOwner, 0600, false, true, kOwner},
      {"a user's link to root's", 'l', 0, kOwner, kOwner, 0644, false, true, kOwner},
      {"a link that somebody planted", 'l', 0, kOther, 0, 0600, false, false, 0},
      {"a pipe", 'p', kOther, 0, 0, 0644, false, false, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    fs::remove("VEXO.N");
    const char* const name = row.kind == 'l' ? "target" : "VEXO.N";
    if (row.kind == 'p') ::mkfifo(name, row.mode);
    if (row.kind != 'p') dir.write(name, good);
    if (row.kind == 'l') fs::create_symlink(name, "VEXO.N");
    ASSERT_EQ(0, ::chmod(name, row.mode));
    ASSERT_EQ(0, ::lchown("VEXO.N", row.link, row.link));
    ASSERT_EQ(0, ::chown(name, row.file, row.file));
    support::inChild([&] {
      EXPECT_TRUE(::setgid(row.user) == 0 && ::setuid(row.user) == 0);
      unsigned key[2] = {};
      char password[kPasswordSize] = "from before";
      ScriptedApi api(vector<Step>(row.read ? 1 : 0, cipher("vltDecryptEx")));
      EXPECT_EQ(row.read ? 0 : 168, psvexoReadPswdFromFile("VEXO.N", password, key));
      EXPECT_STREQ(row.read ? "pw" : "", password);
      EXPECT_EQ(fs::perms{row.read ? 0644 : row.mode}, fs::status("VEXO.N").permissions());
      api.add({cipher("vltEncryptEx")});
      EXPECT_EQ(0, psvexoWritePswdToFile(".", "VEXO.N", "newer", key));
    });
    EXPECT_EQ(row.followed, fs::is_symlink("VEXO.N"));
    EXPECT_EQ(fresh, dir.read("VEXO.N"));
    EXPECT_EQ(row.kind == 'l' && !row.followed ? good : fresh, dir.read(name));
    struct stat entry = {};
    ASSERT_EQ(0, ::stat("VEXO.N", &entry));
    EXPECT_EQ(tuple(row.ownerThen, row.ownerThen, 0644u),
              tuple(entry.st_uid, entry.st_gid, entry.st_mode & 0777));
  }
}

TEST_F(Session, SetUpTakesThePasswordOfTheLegacyFileOnce) {
  set(orc.VEXO_NODE, "N", orc.VLTI_DIR, "/api", orc.VLTI_LOG, "/log", orc.VLTI_ORC_CONFIG, "/c");
  const auto setUp = [&](string password) {
    ScriptedApi api({version(13), Step("vltSetUp", "1").fill<const VltEnvSetUp>([](auto& in) {
                       EXPECT_EQ(tuple(4, 0), tuple(in.structVersion, in.incExlCaseSensitive));
                       EXPECT_EQ("/api/log/cvexoerror.log",
                                 string(in.vltiDir) + in.vltiLog + in.vltiConfig + in.logName);
                     }),
                     Step("vltCreateDesKeyEx", "'N'")});
    if (!password.empty()) {
      dir.write("installed/agent/VEXO.N", fileOf(password));
      api.add({cipher("vltDecryptEx")});
    }
    EXPECT_EQ(0, psDoVltSetUp(&orc)) << "no such file is no error";
    EXPECT_EQ(pair(1, 1), pair(int{orc.apiSetUp}, int{orc.bUsePwGenerate}));
    password.resize(kPasswordSize);
    EXPECT_EQ(password, string(orc.legacyPassword, kPasswordSize));
  };
  setUp("secret");
  EXPECT_EQ(fileOf("secret"), dir.read("installed/agent/VEXO.N.save"));
  for (const auto part : {"QRB2721", ", installed/agent/VEXO.N.save\n"}) EXPECT_HOLDS(log(), part);
  setUp("");
  fs::remove("installed/agent/VEXO.N.save");
  dir.write("installed/agent/VEXO.N.save/full", "");  // nothing can be renamed to this name
  support::Captured shown;
  setUp("another");  // used nevertheless
  for (const string& text : {shown.take(), log()}) EXPECT_HOLDS(text, "QRB2629E");
}

TEST_F(Session, TheLegacyWayAsksANewLibraryWithAnEmptyFileInTmpdir) {
  support::ScopedEnv temporary("TMPDIR", dir.path().c_str());
  TEST_LEGACYPWD = 1;
  ScriptedApi api({version(12), version(13)});
  EXPECT_HOLDS(support::traced("ORCLEVEL1", [&] { EXPECT_EQ(2507, psDoVltSetUp(&orc)); }),
               " psDoVltSetUp(): Exiting with rc = 2507\n");
  EXPECT_EQ(0, orc.apiSetUp);
  string asked;
  api.add({Step("vltSetUp", "1").fill<const VltEnvSetUp>([&](auto& in) {
             asked = in.vltiConfig;
             EXPECT_EQ(0u, fs::file_size(asked));
           }),
           Step("vltQueryCliOptions", "*", 2409)});
  api.add(support::textSteps("0", 2409, "ZYL2409E why"));
  EXPECT_EQ(2409, psDoVltSetUp(&orc));
  EXPECT_HOLDS(log(), "> ==> ZYL2409E why");
  EXPECT_EQ(0u, asked.find(dir.path("vexo"))) << asked;
  EXPECT_FALSE(fs::exists(asked));
  temporary.set("/proc");  // a directory in which nobody makes a file
  api.add({version(13)});
  const support::Captured quiet;
  EXPECT_EQ(2531, psDoVltSetUp(&orc));
  EXPECT_HOLDS(log(), "QRB2531");
}

// If the library keeps the password, it decides on the node, the owner and the directory as well.
TEST_F(Session, TheLegacyWayDropsTheNamesOfALibraryThatKeepsThePassword) {
  TEST_LEGACYPWD = 1;
  const auto generates = [](VltOptions& options) {
    options.passwordAccess = VLT_PASSWORD_GENERATE;
  };
  const auto noOptions = [](const VltInitExIn& in) { EXPECT_STREQ("", in.options); };
  for (const auto& [node, owner, directory] :
       {tuple("", "", ""), {"N", "", ""}, {"", "O", ""}, {"", "", "/p"}}) {
    SCOPED_TRACE(string("node ") + node + " owner " + owner);
    orc = {};
    set(orc.VEXO_NODE, node, orc.VEXO_OWNER, owner, orc.VEXO_PSWDPATH, directory);
    ScriptedApi api({version(13), Step("vltSetUp"),
                     Step("vltQueryCliOptions").fill<VltOptions>(generates),
                     Step("vltInitEx", "node=null owner=null password=''", 51)
                         .fill<const VltInitExIn>(noOptions)});
    api.add(support::textSteps("0", 51, "ZYL0051E"));
    support::Captured shown;
    EXPECT_EQ(0, psDoVltSetUp(&orc));
    EXPECT_EQ("", string(orc.VEXO_NODE) + orc.VEXO_OWNER + orc.VEXO_PSWDPATH);
    EXPECT_EQ(*node + *owner + *directory != 0 ? 2u : 0u,
              support::occurrences(shown.take() + orc.lastErrorMsg, "QRB2610"));
    EXPECT_EQ(pair(1, 1), pair(int{orc.apiSetUp}, int{orc.bUsePwGenerate}));
    EXPECT_EQ(51, vexoSession(&orc));
  }
  // If the agent keeps it, the library is set up anew.
  ScriptedApi api({version(13), Step("vltSetUp"), Step("vltQueryCliOptions"), Step("vltCleanUp"),
                   Step("vltSetUp", "*", 2409)});
  api.add(support::textSteps("0", 2409, "ZYL2409E"));
  EXPECT_EQ(2409, psDoVltSetUp(&orc));
  EXPECT_EQ(pair(0, 0), pair(int{orc.apiSetUp}, int{orc.bUsePwGenerate}));
}

TEST_F(Session, LogonFillsTheContext) {
  orc.bUsePwGenerate = 1;
  set(orc.VEXO_OWNER, "O", orc.VEXO_PSWDPATH, "/p w", orc.VLTI_ORC_CONFIG, "/c.opt");
  for (int again = 0; again < 2; ++again) {  // the options are appended only once
    set(orc.legacyPassword, "secret");
    ScriptedApi api({Step("vltInitEx", "node=null owner='O' password='secret'")
                         .fill<std::uint32_t>([](auto& handle) { handle = 7; })
                         .fill<const VltInitExIn>([](auto& in) {
                           EXPECT_STREQ(" -PASSWORDACCESS=GENERATE -PASSWORDDIR=/p w", in.options);
                           EXPECT_STREQ("/c.opt", in.configFile);
                           EXPECT_EQ(tuple(5, 3, 13),
                                     tuple(in.structVersion, in.clientKind, in.appVersion->level));
                         }),
                     Step("vltQuerySessOptions", "7"),
                     Step("vltQuerySessInfo", "7").fill<VltSessInfo>([](auto& info) {
                       info.maxObjPerTxn = 100;
                     })});
    EXPECT_EQ(0, vexoSession(&orc));
    EXPECT_EQ(string(kPasswordSize, '\0'), string(orc.legacyPassword, kPasswordSize));
    EXPECT_EQ(pair(7, 100), pair(static_cast<int>(orc.vltHandle), int{orc.maxObjPerTxn}));
  }
}

TEST_F(Session, LogonWipesThePasswordRightAfterTheLastCall) {
  set(orc.legacyPassword, "secret");
  orc.bUsePwGenerate = 1;
  const char* buffer = nullptr;
  string left = "not looked at";
  ScriptedApi api(
      {Step("vltInitEx", "node=null owner=null password='secret'", 51)
           .fill<const VltInitExIn>([&](const auto& in) { buffer = in.clientPassword; }),
       Step("vltRCMsgEx").fill<VltRcMsgOut>([&](auto&) { left.assign(buffer, kPasswordSize); }),
       Step("vltRCMsg").text("")});
  EXPECT_EQ(51, vexoSession(&orc));
  EXPECT_EQ(string(kPasswordSize, '\0'), left);
}

}  // namespace
