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
    shell(command);
    for (std::size_t i = 0; i < number; ++i) {
      const auto& [text, given, hidden] = kPrompts[i];
      hidden ? secret(text, given) : answer(text, given);
    }
    see(kPrompts[number].text);
    ASSERT_TRUE(!kPrompts[number].secret || terminal_->expectEchoOff());
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

// The script of the query holds a password.
TEST_F(Signal, WhileSqlplusRunsLeavesNothing) {
  objects({"/a", "/b"});
  replaceSqlplus("#!/bin/sh\necho asked\nsleep 60\n");
  for (const int number : {SIGTERM, SIGHUP}) {
    syncdb("prod");
    see("asked");
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
  objects({"/a", "/b"});
  catalog("prod", {});
  replaceSqlplus(
      "#!/bin/bash\numask >mask\ntrap 'exit 0' INT\nsed -n '2s/^spool //p' \"${2#@}\" >spool\n"
      "echo piece >\"$(cat spool)\"\necho asked\nfor i in {1..600}; do sleep 0.1; done\n");
  syncdb("prod");
  see("asked");
  terminal_->send("\x03");
  ends(65535);
  EXPECT_TRUE(showed("QRB2660E")) << terminal_->transcript();
  EXPECT_TRUE(logged("QRB2660E"));
  EXPECT_EQ("0077\n", dir_.read("mask")) << "a spool file is its user's alone";
  expectNothingDone();
  dir_.write("answers", "\n+0\n");
  shell("exec vexosync delete <answers");
  for (int page = 0; page < 2; ++page) see("Command ==>");
  terminal_->send("\x03");
  EXPECT_EQ(128 + SIGINT, terminal_->wait());
}

}  // namespace
