// signal_test.cpp: a signal at each prompt ends the program by that signal; nothing is deleted, no
// temporary file is left, and the terminal has its echo.
#include <csignal>

#include "tests/flows/site.h"

namespace {

class Signal : public Site {
 protected:
  // Sends a signal: the program ends with this code, nothing is deleted, and no temporary file is
  // left besides the test's own.
  void endsBy(int number, int code, const strings& texts = {}) {
    number == SIGHUP ? terminal_->hangUp() : void(terminal_->sendSignal(number));
    ends(code, texts);
    EXPECT_EQ("/a /b", stored());
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(dir_.path("tmp")), {}));
  }
};

TEST_F(Signal, AtAPromptEndsTheProgramAndLeavesNothing) {
  objects("/a /b");
  catalog("prod", "");
  const Answers prompts = {{"Start date", ""},         {"End date", "+0"},
                           {"user name: ", "rman"},    {"password: ", "rman"},
                           {"connect string", "prod"}, {"Command ==>", "+"},
                           {"Command ==>", "O"},       {"Do you want to continue?", "n"}};
  for (auto at = prompts.begin(); at != prompts.end(); ++at) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
      SCOPED_TRACE(at->first + std::to_string(number));
      // The shell outlives the program, unless it is hung up, and shows the terminal's settings.
      const bool shell = number != SIGHUP;
      run(shell ? "trap : INT TERM; vexosync syncdb; s=$?; stty -a; exit $s"
                : "exec vexosync syncdb");
      answers({prompts.begin(), at});
      see(at->first);
      endsBy(number, 128 + number, shell ? strings{" icanon ", " echo "} : strings());
    }
  }
}

// The script of the query holds a password. Ctrl-C reaches sqlplus as well, which then ends well
// with half an answer.
TEST_F(Signal, WhileSqlplusRunsLeavesNothing) {
  objects("/a /b");
  replaceSqlplus(
      "#!/bin/bash\necho $(umask) $(ulimit -c) >mask\ntrap 'exit 0' INT\nsed -n '2s/^spool //p' "
      "\"${2#@}\" >spool\n"
      "echo piece >\"$(cat spool)\"\necho asked\nfor i in {1..600}; do sleep 0.1; done\n");
  for (const int number : {SIGTERM, SIGHUP, SIGINT}) {
    begin("ulimit -Sc $(ulimit -Hc); exec vexosync syncdb");
    logon("prod");
    see("asked");
    endsBy(number, number == SIGINT ? 255 : 128 + number);
  }
  EXPECT_TRUE(showed("QRB2660E") && logged("QRB2660E")) << terminal_->transcript();
  // A spool file is its user's alone, and no core file is written.
  EXPECT_EQ("0077 0\n", dir_.read("mask"));
}

// In a list that is drawn again and again Ctrl-C must not end the clearing of the screen only.
TEST_F(Signal, FromTheKeyboardEndsTheList) {
  objects("/a");
  dir_.write("answers", "\n+0\n");
  run("exec vexosync delete <answers");
  for (int page = 0; page < 2; ++page) see("Command ==>");
  terminal_->send("\x03");
  ends(128 + SIGINT);
}

}  // namespace
