// terminal_test.cpp: programs on a pseudo-terminal, and sessions played from a script.
#include "sandbox/terminal.h"

#include "tests/sandbox/site.h"

using sandbox::Terminal;
using namespace std::chrono_literals;

namespace {

std::vector<std::string> shell(const std::string& script) { return {"sh", "-c", script}; }

TEST(Terminal, TalksWithAProgramThroughItsOwnTerminal) {
  Terminal terminal(shell("printf 'name? ' >/dev/tty; read name </dev/tty; echo \"hello $name\"; "
                          "stty size; exit 7"),
                    {33, 101, {}, {}, ""});
  ASSERT_TRUE(terminal.expect("name? "));
  EXPECT_TRUE(terminal.send("world\n"));
  EXPECT_TRUE(terminal.expect("hello world\r\n"));
  EXPECT_EQ(terminal.wait(), 7);
  EXPECT_EQ(terminal.transcript(), "name? world\r\nhello world\r\n33 101\r\n");
}

TEST(Terminal, TellsTextThatNeverComesFromTheEnd) {
  Terminal waiting(shell("printf 'one st'; sleep 0.2; echo art; sleep 60"));
  EXPECT_FALSE(waiting.expect("never", 100ms));
  EXPECT_TRUE(waiting.expect("start"));         // it comes in two pieces
  EXPECT_FALSE(waiting.expect("start", 50ms));  // consumed
  EXPECT_EQ(waiting.wait(100ms), std::nullopt);
  const auto before = std::chrono::steady_clock::now();
  Terminal ended(shell("echo bye; kill -TERM $$"));
  EXPECT_FALSE(ended.expect("never", 30s));
  EXPECT_LT(std::chrono::steady_clock::now() - before, 10s);
  EXPECT_TRUE(ended.expect("bye"));
  EXPECT_EQ(ended.wait(), 128 + 15);
}

TEST(Terminal, KeepsTheLastWordsOfAProgramThatLeavesAnotherBehind) {
  for (int i = 0; i < 20; ++i) {
    Terminal terminal(shell("(trap '' HUP; sleep 3) & seq 1 2000; echo last words"));
    EXPECT_EQ(terminal.wait(), 0);
    EXPECT_TRUE(terminal.expect("last words")) << i;
  }
}

TEST(Terminal, SeesTheEchoGoOffAndTheWindowChange) {
  Terminal terminal(
      shell("trap 'stty size' WINCH; echo ready; read line; stty -echo; read secret; "
            "stty echo; echo \"[$secret]\"; cat; echo done"));
  ASSERT_TRUE(terminal.expect("ready"));
  EXPECT_TRUE(terminal.echoIsOn());
  EXPECT_TRUE(terminal.send("open\n"));
  ASSERT_TRUE(terminal.expectEchoOff());
  EXPECT_FALSE(terminal.echoIsOn());
  EXPECT_TRUE(terminal.send("hidden\n"));
  ASSERT_TRUE(terminal.expect("[hidden]"));
  EXPECT_EQ(terminal.transcript().find("hidden"), terminal.transcript().find("[hidden]") + 1);
  terminal.resize(11, 22);
  EXPECT_TRUE(terminal.sendEof());
  EXPECT_TRUE(terminal.expect("11 22"));
  EXPECT_TRUE(terminal.expect("done"));
}

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
