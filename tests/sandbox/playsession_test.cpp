// playsession_test.cpp: sessions played from a script on a pseudo-terminal.
#include "tests/sandbox/site.h"

namespace {

class PlaySession : public Site {};

TEST_F(PlaySession, ShowsWhatTheUserSeesAndEndsAsTheCommandDoes) {
  dir_.write("program",
             "printf 'first\\n\\033[H\\033[2J\\033[3Jname: '; read name\n"
             "stty -echo; printf 'password: '; read word; stty echo; echo\n"
             "echo \"$name ${#word}\"; exit 5\n");
  dir_.write("session", "# comment\nexpect name:\nsend scott\nexpect password:\nsecret tiger\n");
  const Result result = run("'" PLAYSESSION "' session -- sh program");
  EXPECT_EQ(result.status, 5);
  EXPECT_EQ(result.output,
            "first\n" + std::string(72, '-') + "\nname: scott\npassword: \nscott 5\n");
  dir_.write("wrong", "expect surname\n");
  EXPECT_EQ(run("'" PLAYSESSION "' --timeout 1 wrong -- sh program").status, 99);
}

}  // namespace
