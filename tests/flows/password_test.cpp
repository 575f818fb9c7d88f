// password_test.cpp: the password change on a terminal, and logons before and after it.
#include "tests/flows/site.h"

namespace {

// The first is a part of every password in these tests; it must not appear anywhere.
const std::string kMark = "MaRk-4711", kOld = kMark + "old", kNew = kMark + "new";

class Password : public Site {
 protected:
  Password() {
    zylstore("node ORANODE --password " + kOld + " --save-password " + dir_.path("passwords"));
    option("VEXO_TRACE_FILE " + dir_.path("trace") + "\nVEXO_TRACE_FLAGS ALL PREFIX");
  }
  // No file, log or trace of the test holds a password, and the terminal showed none.
  void TearDown() override {
    EXPECT_FALSE(terminal_ != nullptr && showed(kMark));
    const string search = "grep -r " + kMark + " " + dir_.path();
    EXPECT_EQ(1, WEXITSTATUS(std::system(search.c_str()))) << "found, or not searched";
  }

  // Makes the agent keep the password itself; only root can change it then.
  void ownFile(const string& access = "prompt") {
    option("VEXO_TEST_FLAGS LEGACYPWD");
    dir_.write("vlt.opt", "STORE " + dir_.path("store.db") + "\nPASSWORDACCESS " + access + "\n");
  }
  // The end of a password change, and a whole one: its arguments, its code and what it shows.
  void changed(int rc, const strings& texts = {}) {
    ends(0, texts);
    see("\nrc=" + std::to_string(rc) + "\r\n");
  }
  void change(const string& arguments, int rc, const strings& texts = {}) {
    run("exec change_password " + arguments);
    changed(rc, texts);
  }
  void logsOn(const string& as = "") {
    begin(as + " vexosync query");
    ends(0);
  }
  // As root, and as another user unless the build is in a directory that only root may enter.
  void everybodyLogsOn() {
    logsOn();
    logsOn("as='setpriv --reuid nobody'; $as test -r " BUILD_DIRECTORY "/bin/vexosync || as=; $as");
  }
};

TEST_F(Password, LogsOnWithTheAgentsFileAndThenWithThePasswordTakenFromIt) {
  if (::getuid() != 0) GTEST_SKIP() << "needs root";
  ownFile();
  run("vexosync query");
  ends(168, {"QRB0168E The password file"});  // no file yet
  EXPECT_FALSE(showed("ZYL")) << "its own failure has its own words";
  zylstore("calls on");
  change(kOld + " " + kNew, 0);
  EXPECT_EQ(0u, support::occurrences(zylstore("calls show"), "options=")) << "none are given";
  run("chmod -R a+rwX . && chmod a-w passwords/VEXO.ORANODE");
  ends(0);
  everybodyLogsOn();
  // The next release: the library keeps the password, and has none yet.
  std::filesystem::remove(dir_.path("passwords/ZYL.ORANODE.pwd"));
  dir_.write("vlt.opt", "STORE " + dir_.path("store.db") + "\n");
  option("VEXO_TEST_FLAGS none");
  logsOn();
  EXPECT_TRUE(dir_.has("passwords/VEXO.ORANODE.save"));
  change(kNew + " " + kOld + " nobody", 0);
  everybodyLogsOn();
}

// Whoever may not change it, or has no place for it, is told so at once.
TEST_F(Password, ChangeIsRefusedBeforeAnythingIsAsked) {
  if (::getuid() != 0) GTEST_SKIP() << "needs root";
  run("chmod a+rwx . passwords tmp");
  ends(0);
  zylstore("calls on");
  settings_.columns = 300;
  for (const auto& [access, place, user, rc, lines] :
       {std::tuple("prompt", "passwords", "nobody", 2620, "|||QRB2620E|||"),
        {"prompt", "absent", "nobody", 2620, "|||QRB2620E|||"},
        {"prompt", "absent", "", 2521, "|||QRB2521E||"},
        {"generate", "passwords", "", 2621, "|||QRB2621E|||"}}) {
    ownFile(access);
    option("VEXO_PSWDPATH " + dir_.path(place));
    change(user, rc);
    const string end = string("Change o") + lines + "rc=" + std::to_string(rc) + "||";
    EXPECT_TRUE(beginnings(terminal_->transcript()).ends_with(end)) << terminal_->transcript();
  }
  EXPECT_EQ(0u, support::occurrences(zylstore("calls show"), "InitEx"));
}

TEST_F(Password, IsChangedEvenIfTheAgentsFileCannotBeWritten) {
  if (::getuid() != 0) GTEST_SKIP() << "needs root";
  ownFile();
  dir_.write("passwords/VEXO.ORANODE/in the way", "");
  change(kOld + " " + kNew, 0, {"QRB0160E"});
  // There is the library's file and what is in the way.
  EXPECT_EQ(2, std::distance(std::filesystem::directory_iterator(dir_.path("passwords")), {}));
  std::filesystem::remove_all(dir_.path("passwords/VEXO.ORANODE"));
  change(kNew + " " + kNew, 0, {"QRB0260I"});
  logsOn();
}

// Oracle's passwords are kept just as secret. Nothing is offered if Oracle knows every object.
TEST_F(Password, OfACatalogLeavesNoTraceBelowLevelTwo) {
  option("VEXO_TRACE_FLAGS ALL PREFIX -ORCLEVEL2");
  objects("/a");
  catalog("prod", "a");
  zylstore("catalog add prod --user rman --password " + kNew);
  begin("vexosync syncdb");
  logon("prod", kNew);
  ends(65535, {"QRB2599I"});
  EXPECT_FALSE(showed("Command ==>"));
  EXPECT_HOLDS(dir_.read("trace"), " utSyncZylToRman(): EXIT, rc = 65535\n");
}

TEST_F(Password, IsAskedAgainUntilTheNewOnesAgree) {
  const string longest = kMark + string(64 - kMark.size(), 'x');
  const string again = "QRB0162E||Enter yo|";
  // The answers after the old password, in pairs; the code; what is shown, and its lines after the
  // first prompt.
  const std::tuple<strings, int, string, string> rows[] = {
      {{kNew, "a", longest, longest + "x"}, -1, "QRB0161E", again + "QRB0161E|differed|"},
      {{kNew, "a", kNew, "b", kNew, kMark + "NEW"},
       -1,
       "QRB0161E",
       again + again + "|QRB0161E|differed||"},
      {{kNew, ""}, -1, "QRB0258E", ""},
      {{longest + "x"}, -1, "QRB0161E", "QRB0161E|differed|"},
      {{kNew + '\0' + "a"}, -1, "QRB2722E", ""},
      {{kNew, kNew + '\0' + "a"}, -1, "QRB2722E", ""},
      {{kNew, "a", kNew, "b", longest, longest}, 0, "QRB0260I", again + again + "QRB0260I|||"},
  };
  for (const auto& [given, rc, message, lines] : rows) {
    run("change_password");
    answer("current password: ", kOld);
    for (std::size_t i = 0; i < given.size(); ++i) {
      answer(i % 2 == 0 ? "new password: " : "new password again: ", given[i]);
    }
    changed(rc, {message});
    EXPECT_EQ(rc == -1, dir_.read("trace").ends_with(" psvexoPassWord(): EXIT, rc = -1\n"));
    EXPECT_EQ("|Change o|||Enter yo|" + lines + "rc=" + std::to_string(rc) + "||",
              beginnings(terminal_->transcript()));
    EXPECT_FALSE(showed(kMark));
    EXPECT_EQ(rc == 0, logged(" QRB0260I") && !logged("> QRB0260I")) << "after the time alone";
  }
  run("setsid -w change_password");  // has no terminal
  changed(-1, {"QRB0003"});
  logsOn();
}

TEST_F(Password, RestoresTheEchoHoweverTheProgramIsEndedOrStopped) {
  // Ended by Ctrl-backslash; stopped, and continued by a shell with job control, which leaves the
  // terminal as it finds it.
  for (const char* keys : {"half\x1c", "\x1a"}) {
    run("set -m; ulimit -c unlimited; change_password; echo over; read x; fg");
    see("current password: ");
    terminal_->send(keys);
    see("over\r\n");
    EXPECT_TRUE(terminal_->echoIsOn());
  }
  terminal_->send("\n");
  ASSERT_TRUE(terminal_->expectEchoOff());
  terminal_->send(kOld + "\n");
  answers({{"new password: ", kNew}, {"new password again: ", kNew}});
  changed(0);
}

TEST_F(Password, ReplacesAnExpiredOneAndReportsWhatTheServerRefuses) {
  zylstore("node ORANODE --password " + kOld + " --expired");
  run("vexosync query");
  ends(52);
  zylstore("calls on");
  change(kMark + " " + kNew, 51, {"ZYL0051"});
  zylstore("fault ChangePW 54");
  for (const int rc : {54, 0}) change(kOld + " " + kNew, rc);
  zylstore("fault InitEx 256");
  change(kNew + " " + kOld, 256);                       // without a session nothing is changed
  for (const char* call : {"ChangePW", "Terminate"}) {  // refused or not
    EXPECT_EQ(3u, support::occurrences(zylstore("calls show"), call)) << call;
  }
  logsOn();
}

}  // namespace
