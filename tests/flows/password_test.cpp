// password_test.cpp: the password change on a terminal, and logons before and after it.

#include "tests/flows/site.h"

namespace {

// A part of every password in these tests; it must not appear anywhere.
const std::string kMark = "MaRk-4711";
const std::string kOld = kMark + "old", kNew = kMark + "new";

class Password : public Site {
 protected:
  void SetUp() override {
    zylstore("node ORANODE --password " + kOld + " --save-password " + dir_.path("passwords"));
    option("VEXO_TRACE_FILE " + dir_.path("trace"));
    option("VEXO_TRACE_FLAGS ALL PREFIX");
  }
  // No file, log or trace of the test holds a password, and the terminal showed none.
  void TearDown() override {
    EXPECT_FALSE(terminal_ != nullptr && showed(kMark));
    for (const auto& entry : std::filesystem::recursive_directory_iterator(dir_.path())) {
      if (!entry.is_regular_file()) continue;
      const std::string name = std::filesystem::relative(entry.path(), dir_.path());
      EXPECT_EQ(std::string::npos, dir_.read(name).find(kMark)) << name;
    }
  }

  // Makes the agent keep the password itself; only root can change it then.
  void ownFile() {
    option("VEXO_TEST_FLAGS LEGACYPWD");
    dir_.write("vlt.opt", dir_.read("vlt.opt") + "PASSWORDACCESS prompt\n");
  }
  void change(const std::string& arguments = "") { shell("exec change_password " + arguments); }
  void changed(int rc) {
    see("rc=" + std::to_string(rc) + "\r\n");
    ends(0);
  }
  void change(const std::string& old, const std::string& fresh, int rc) {
    change(old + " " + fresh);
    changed(rc);
  }
  // `as` runs a command as another user, which only root can do.
  void logsOn(const std::string& as = "") {
    shell("exec " + as + "vexosync query");
    dates();
    ends(0);
  }
  // As root, and as another user unless the build is in a directory that only root may enter.
  void everybodyLogsOn() {
    logsOn();
    const std::string as = "setpriv --reuid nobody ";
    if (std::system((as + "test -r " BUILD_DIRECTORY "/bin/vexosync").c_str()) == 0) logsOn(as);
  }
};

TEST_F(Password, LogsOnWithTheAgentsFileAndThenWithThePasswordTakenFromIt) {
  if (::getuid() != 0) GTEST_SKIP() << "needs root";
  ownFile();
  run({"query"});
  ends(168);  // no file yet
  EXPECT_TRUE(showed("QRB0168E The password file"));
  EXPECT_FALSE(showed("ZYL")) << "its own failure has its own words";
  zylstore("calls on");
  change(kOld, kNew, 0);
  EXPECT_EQ(std::string::npos, zylstore("calls show").find("options=")) << "no options are given";
  EXPECT_EQ(39u + 2 * 9, dir_.read("passwords/VEXO.ORANODE").size());
  shell("chmod -R a+rwX . && chmod a-w passwords/VEXO.ORANODE");
  ends(0);
  everybodyLogsOn();
  // The next release: the library keeps the password, and has none yet.
  std::filesystem::remove(dir_.path("passwords/ZYL.ORANODE.pwd"));
  dir_.write("vlt.opt", "STORE " + dir_.path("store.db") + "\n");
  option("VEXO_TEST_FLAGS none");
  logsOn();
  EXPECT_TRUE(dir_.has("passwords/VEXO.ORANODE.save"));
  change("nobody " + kNew + " " + kOld);
  changed(0);
  everybodyLogsOn();
}

// Whoever may not change it, or has no place for it, is told so at once.
TEST_F(Password, ChangeIsRefusedBeforeAnythingIsAsked) {
  if (::getuid() != 0) GTEST_SKIP() << "needs root";
  for (const char* name : {"", "passwords", "tmp"}) {
    std::filesystem::permissions(dir_.path(name), std::filesystem::perms::all);
  }
  const std::string store = dir_.read("vlt.opt") + "PASSWORDACCESS ";
  zylstore("calls on");
  option("VEXO_TEST_FLAGS LEGACYPWD");
  for (const auto& [access, place, user, rc] : {std::tuple("prompt", "passwords", "nobody", 2620),
                                                {"prompt", "absent", "nobody", 2620},
                                                {"prompt", "absent", "", 2521},
                                                {"generate", "passwords", "", 2621}}) {
    dir_.write("vlt.opt", store + access + "\n");
    option("VEXO_PSWDPATH " + dir_.path(place));
    change(user);
    changed(rc);
    EXPECT_TRUE(showed("QRB" + std::to_string(rc) + "E")) << terminal_->transcript();
    EXPECT_FALSE(showed("password: "));
  }
  EXPECT_EQ(std::string::npos, zylstore("calls show").find("InitEx"));
}

TEST_F(Password, IsChangedEvenIfTheAgentsFileCannotBeWritten) {
  if (::getuid() != 0) GTEST_SKIP() << "needs root";
  ownFile();
  dir_.write("passwords/VEXO.ORANODE/in the way", "");
  change(kOld, kNew, 0);
  EXPECT_TRUE(showed("QRB0160E"));
  EXPECT_EQ(2, std::distance(std::filesystem::directory_iterator(dir_.path("passwords")), {}))
      << "the library's file and what is in the way";
  std::filesystem::remove_all(dir_.path("passwords/VEXO.ORANODE"));
  change(kNew, kNew, 0);
  EXPECT_TRUE(showed("QRB0260I"));
  logsOn();
}

// Oracle's passwords are kept just as secret. Nothing is offered if Oracle knows every object.
TEST_F(Password, OfACatalogLeavesNoTraceBelowLevelTwo) {
  option("VEXO_TRACE_FLAGS ALL PREFIX -ORCLEVEL2");
  object("/a");
  catalog("prod", {"a"});
  zylstore("catalog add prod --user rman --password " + kNew);
  syncdb("prod", kNew);
  ends(65535);
  EXPECT_TRUE(showed("QRB2599I"));
  EXPECT_FALSE(showed("Command ==>"));
  EXPECT_NE(std::string::npos, dir_.read("trace").find(" utSyncZylToRman(): EXIT, rc = 65535\n"));
}

TEST_F(Password, IsAskedAgainUntilTheNewOnesAgree) {
  const std::string longest = kMark + std::string(64 - kMark.size(), 'x');
  // The answers after the old password, in pairs.
  const std::tuple<std::vector<std::string>, int, const char*> rows[] = {
      {{kNew, "a", longest, longest + "x"}, -1, "QRB0161E"},
      {{kNew, "a", kNew, "b", kNew, kMark + "NEW"}, -1, "QRB0161E"},
      {{kNew, ""}, -1, "QRB0258E"},
      {{longest + "x"}, -1, "QRB0161E"},
      {{kNew + '\0' + "a"}, -1, "QRB2722E"},
      {{kNew, kNew + '\0' + "a"}, -1, "QRB2722E"},
      {{kNew, "a", kNew, "b", longest, longest}, 0, "QRB0260I"},
  };
  for (const auto& [given, rc, message] : rows) {
    change();
    secret("current password: ", kOld);
    for (std::size_t i = 0; i < given.size(); ++i) {
      secret(i % 2 == 0 ? "new password: " : "new password again: ", given[i]);
    }
    changed(rc);
    EXPECT_TRUE(showed(message)) << terminal_->transcript();
    const bool refused = dir_.read("trace").ends_with(" psvexoPassWord(): EXIT, rc = -1\n");
    EXPECT_EQ(rc == -1, refused);
    EXPECT_EQ(given.size() > 3, showed("QRB0162E"));
    EXPECT_FALSE(showed(kMark));
    EXPECT_EQ(rc == 0, logged(" QRB0260I") && !logged("> QRB0260I")) << "after the time alone";
  }
  logsOn();
}

TEST_F(Password, RestoresTheEchoHoweverTheProgramIsEndedOrStopped) {
  const char* prompts[] = {"current password: ", "new password: ", "new password again: "};
  shell("ulimit -c unlimited; trap : QUIT; change_password; echo over; read x");
  see(prompts[0]);
  ASSERT_TRUE(terminal_->expectEchoOff());
  terminal_->send("half\x1c");  // Ctrl-backslash
  see("over");
  EXPECT_TRUE(terminal_->echoIsOn());
  // Stopped and continued by a shell with job control.
  shell("exec bash --norc --noediting -ic 'change_password; echo stopped; read x; fg'");
  see(prompts[0]);
  ASSERT_TRUE(terminal_->expectEchoOff());
  terminal_->send("\x1a");
  see("stopped\r\n");
  EXPECT_TRUE(terminal_->echoIsOn());
  terminal_->send("\n");
  ASSERT_TRUE(terminal_->expectEchoOff());
  terminal_->send(kOld + "\n");
  secret(prompts[1], kNew);
  secret(prompts[2], kNew);
  changed(0);
}

TEST_F(Password, ReplacesAnExpiredOneAndReportsWhatTheServerRefuses) {
  zylstore("node ORANODE --password " + kOld + " --expired");
  run({"query"});
  ends(52);
  change(kMark, kNew, 51);
  EXPECT_TRUE(showed("ZYL0051"));
  zylstore("fault ChangePW 54");
  zylstore("calls on");
  change(kOld, kNew, 54);
  change(kOld, kNew, 0);
  const std::string calls = zylstore("calls show");
  EXPECT_EQ(2, countIn(calls, "Terminate")) << "after each change, refused or not: " << calls;
  logsOn();
}

}  // namespace
