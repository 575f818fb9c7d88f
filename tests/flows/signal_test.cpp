// signal_test.cpp: a signal at each prompt ends the program by that signal; nothing is deleted, no
// temporary file is left, and the terminal has its echo.
#include <csignal>

#include "tests/flows/site.h"

namespace {

constexpr struct {
  const char *text, *answer;
} kPrompts[] = {{"Start date", ""},         {"End date", "+0"},
                {"user name: ", "rman"},    {"password: ", "rman"},
                {"connect string", "prod"}, {"Command ==>", "+"},
                {"Command ==>", "O"},       {"Do you want to continue?", "n"}};
constexpr std::size_t kPassword = 3;

class Signal : public Site {
 protected:
  // Answers the prompts before number `number` and waits for that one.
  void stopAt(std::size_t number, const std::string& command) {
    shell(command);
    for (std::size_t i = 0; i < number; ++i) {
      i == kPassword ? secret(kPrompts[i].text, "rman")
                     : answer(kPrompts[i].text, kPrompts[i].answer);
    }
    see(kPrompts[number].text);
    ASSERT_TRUE(number != kPassword || terminal_->expectEchoOff());
  }
  void expectNothingDone() {
    EXPECT_EQ("/a /b", stored());
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(dir_.path("tmp")), {}))
        << "a temporary file is left, besides the test's own";
  }
};

TEST_F(Signal, AtAPromptEndsTheProgramAndLeavesNothing) {
  objects({"/a", "/b"});
  catalog("prod", {});
  for (std::size_t at = 0; at < std::size(kPrompts); ++at) {
    SCOPED_TRACE(kPrompts[at].text);
    for (const int number : {SIGINT, SIGTERM}) {
      // The shell outlives the program, so that the terminal can still be examined.
      stopAt(at, "trap : INT TERM; vexosync syncdb; echo =$?=; read x");
      ASSERT_TRUE(terminal_->sendSignal(number));
      see("=" + std::to_string(128 + number) + "=");
      EXPECT_TRUE(terminal_->echoIsOn());
      expectNothingDone();
    }
    stopAt(at, "exec vexosync syncdb");
    terminal_->hangUp();
    EXPECT_EQ(128 + SIGHUP, terminal_->wait());
    expectNothingDone();
  }
}

// The script of the query holds a password. Ctrl-C reaches sqlplus as well, which then ends well
// with half an answer.
TEST_F(Signal, WhileSqlplusRunsLeavesNothing) {
  objects({"/a", "/b"});
  replaceSqlplus(
      "#!/bin/bash\numask >mask\ntrap 'exit 0' INT\nsed -n '2s/^spool //p' \"${2#@}\" >spool\n"
      "echo piece >\"$(cat spool)\"\necho asked\nfor i in {1..600}; do sleep 0.1; done\n");
  for (const int number : {SIGTERM, SIGHUP, SIGINT}) {
    syncdb("prod");
    see("asked");
    if (number == SIGTERM) terminal_->sendSignal(number);
    if (number == SIGHUP) terminal_->hangUp();
    if (number == SIGINT) terminal_->send("\x03");
    EXPECT_EQ(number == SIGINT ? 255 : 128 + number, terminal_->wait());
    expectNothingDone();
  }
  EXPECT_TRUE(showed("QRB2660E") && logged("QRB2660E")) << terminal_->transcript();
  EXPECT_EQ("0077\n", dir_.read("mask")) << "a spool file is its user's alone";
}

// In a list that is drawn again and again Ctrl-C must not end the clearing of the screen only.
TEST_F(Signal, FromTheKeyboardEndsTheList) {
  object("/a");
  dir_.write("answers", "\n+0\n");
  shell("exec vexosync delete <answers");
  for (int page = 0; page < 2; ++page) see("Command ==>");
  terminal_->send("\x03");
  EXPECT_EQ(128 + SIGINT, terminal_->wait());
}

}  // namespace
