// signal_test.cpp: a signal at each prompt ends the program by that signal; nothing is deleted, no
// temporary file is left, and the terminal has its echo.
#include <csignal>

#include "tests/flows/site.h"

namespace {

struct Prompt {
  const char *text, *answer;
  bool secret;
};
constexpr Prompt kPrompts[] = {
    {"Start date", "", false},         {"End date", "+0", false},
    {"user name: ", "rman", false},    {"password: ", "rman", true},
    {"connect string", "prod", false}, {"Command ==>", "+", false},
    {"Command ==>", "O", false},       {"Do you want to continue?", "n", false},
};

class Signal : public Site {
 protected:
  // Answers the prompts before number `number` and waits for that one.
  void stopAt(std::size_t number, const std::string& command) {
    terminal_ = std::make_unique<sandbox::Terminal>(
        std::vector<std::string>{"/bin/sh", "-c", command}, settings_);
    for (std::size_t i = 0; i < number; ++i) {
      if (kPrompts[i].secret) {
        secret(kPrompts[i].text, kPrompts[i].answer);
      } else {
        answer(kPrompts[i].text, kPrompts[i].answer);
      }
    }
    ASSERT_TRUE(terminal_->expect(kPrompts[number].text)) << terminal_->transcript();
    ASSERT_TRUE(!kPrompts[number].secret || terminal_->expectEchoOff());
  }
  void expectNothingDone() {
    EXPECT_EQ("/a /b", stored());
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(dir_.path("tmp")), {}))
        << "a temporary file is left, besides the test's own";
  }
};

TEST_F(Signal, AtAPromptEndsTheProgramAndLeavesNothing) {
  for (const char* name : {"/a", "/b"}) object(name);
  catalog("prod", {});
  for (std::size_t at = 0; at < std::size(kPrompts); ++at) {
    SCOPED_TRACE(kPrompts[at].text);
    for (const int number : {SIGINT, SIGTERM}) {
      // The shell outlives the program, so that the terminal can still be examined.
      stopAt(at, "trap : INT TERM; vexosync syncdb; echo =$?=; read x");
      ASSERT_TRUE(terminal_->sendSignal(number));
      ASSERT_TRUE(terminal_->expect("=" + std::to_string(128 + number) + "="))
          << terminal_->transcript();
      EXPECT_TRUE(terminal_->echoIsOn());
      expectNothingDone();
    }
    stopAt(at, "exec vexosync syncdb");
    terminal_->hangUp();
    EXPECT_EQ(128 + SIGHUP, terminal_->wait());
    expectNothingDone();
  }
}

// The script of the query holds a password.
TEST_F(Signal, WhileSqlplusRunsLeavesNothing) {
  for (const char* name : {"/a", "/b"}) object(name);
  const std::string sqlplus = dir_.write("bin/sqlplus", "#!/bin/sh\necho asked\nsleep 60\n");
  std::filesystem::permissions(sqlplus, std::filesystem::perms::owner_all);
  settings_.environment["PATH"] = dir_.path("bin") + ":" + settings_.environment["PATH"];
  for (const int number : {SIGTERM, SIGHUP}) {
    run({"syncdb"});
    dates();
    logon("prod");
    ASSERT_TRUE(terminal_->expect("asked"));
    if (number == SIGHUP) {
      terminal_->hangUp();
    } else {
      ASSERT_TRUE(terminal_->sendSignal(number));
    }
    EXPECT_EQ(128 + number, terminal_->wait());
    expectNothingDone();
  }
}

// Ctrl-C reaches sqlplus as well, which then ends well with half an answer. In a list that is drawn
// again and again it must not end the clearing of the screen only.
TEST_F(Signal, FromTheKeyboardEndsTheQueryAndTheList) {
  for (const char* name : {"/a", "/b"}) object(name);
  catalog("prod", {});
  const std::string sqlplus = dir_.write(
      "bin/sqlplus",
      "#!/bin/bash\ntrap 'exit 0' INT\nsed -n '2s/^spool //p' \"${2#@}\" >spool\n"
      "echo piece >\"$(cat spool)\"\necho asked\nfor i in {1..600}; do sleep 0.1; done\n");
  std::filesystem::permissions(sqlplus, std::filesystem::perms::owner_all);
  const std::string path = settings_.environment["PATH"];
  settings_.environment["PATH"] = dir_.path("bin") + ":" + path;
  run({"syncdb"});
  dates();
  logon("prod");
  ASSERT_TRUE(terminal_->expect("asked"));
  terminal_->send("\x03");
  ends(65535);
  EXPECT_TRUE(showed("QRB2660E")) << terminal_->transcript();
  EXPECT_NE(std::string::npos, errorLog().find("QRB2660E"));
  expectNothingDone();
  settings_.environment["PATH"] = path;
  dir_.write("answers", "\n+0\n");
  terminal_ = std::make_unique<sandbox::Terminal>(
      std::vector<std::string>{"/bin/sh", "-c", "exec vexosync delete <answers"}, settings_);
  ASSERT_TRUE(terminal_->expect("Command ==>"));
  ASSERT_TRUE(terminal_->expect("Command ==>"));
  terminal_->send("\x03");
  EXPECT_EQ(128 + SIGINT, terminal_->wait());
}

}  // namespace
