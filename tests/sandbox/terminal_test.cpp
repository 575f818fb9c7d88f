// terminal_test.cpp: programs on a pseudo-terminal, and sessions played from a script.
#include "sandbox/terminal.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <system_error>

#include "tests/sandbox/site.h"

using sandbox::Terminal;
using namespace std::chrono_literals;

namespace {

std::vector<std::string> shell(const std::string& script) { return {"sh", "-c", script}; }

}  // namespace

TEST(Terminal, TalksWithAProgramThroughItsOwnTerminal) {
  Terminal terminal(shell("printf 'name? ' >/dev/tty; read name </dev/tty; echo \"hello $name\"; "
                          "stty size; exit 7"),
                    {33, 101, {}, {}, ""});
  ASSERT_TRUE(terminal.expect("name? "));
  EXPECT_TRUE(terminal.send("world\n"));
  EXPECT_TRUE(terminal.expect("hello world\r\n"));
  EXPECT_EQ(terminal.wait(), 7);
  EXPECT_EQ(terminal.sinceLastExpect(), "33 101\r\n");
  EXPECT_EQ(terminal.transcript(), "name? world\r\nhello world\r\n33 101\r\n");
  EXPECT_FALSE(terminal.send("more\n") && terminal.expect("x", 100ms));
}

TEST(Terminal, TellsTextThatNeverComesFromTheEnd) {
  Terminal waiting(shell("printf 'one st'; sleep 0.2; echo art; sleep 60"));
  EXPECT_FALSE(waiting.expect("never", 100ms));
  EXPECT_TRUE(waiting.expect("start"));         // it comes in two pieces
  EXPECT_FALSE(waiting.expect("start", 50ms));  // consumed
  EXPECT_EQ(waiting.wait(100ms), std::nullopt);
  const auto before = std::chrono::steady_clock::now();
  Terminal ended(shell("echo bye"));
  EXPECT_FALSE(ended.expect("never", 30s));
  EXPECT_LT(std::chrono::steady_clock::now() - before, 10s);
  EXPECT_TRUE(ended.expect("bye"));
  EXPECT_EQ(ended.wait(), 0);
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
  EXPECT_EQ(terminal.wait(), 0);
}

TEST(Terminal, NeitherHangsOnFloodsNorOnPrograms) {
  Terminal flood(shell("stty -icanon -echo; echo go; cat"));
  ASSERT_TRUE(flood.expect("go"));
  // More than the terminal buffers in either direction.
  EXPECT_TRUE(flood.send(std::string(300'000, 'x')));
  EXPECT_TRUE(flood.send("end"));
  EXPECT_TRUE(flood.expect("xend"));
  Terminal killed(shell("kill -TERM $$"));
  EXPECT_EQ(killed.wait(), 128 + 15);
}

TEST(Terminal, GivesEnvironmentAndDirectoryOrSaysWhyNot) {
  const Site site;
  setenv("SANDBOX_TEST_OLD", "old", 1);
  setenv("SANDBOX_TEST_KEPT", "kept", 1);
  sandbox::TerminalSettings settings;
  settings.environment["SANDBOX_TEST_NEW"] = "new";
  settings.unset = {"SANDBOX_TEST_OLD"};
  settings.directory = site.path(".");
  site.write("marker", "");
  Terminal terminal(shell("ls; echo $SANDBOX_TEST_OLD-$SANDBOX_TEST_KEPT-$SANDBOX_TEST_NEW"),
                    settings);
  EXPECT_TRUE(terminal.expect("marker"));
  EXPECT_TRUE(terminal.expect("\n-kept-new"));
  settings.directory = site.path("missing");
  EXPECT_THROW(Terminal(shell("true"), settings), std::system_error);
  EXPECT_THROW(Terminal({"no-such-program-anywhere"}), std::system_error);
  EXPECT_THROW(Terminal(std::vector<std::string>()), std::system_error);
}

TEST(PlaySession, ShowsWhatTheUserSeesAndEndsAsTheCommandDoes) {
  const Site site;
  site.write("program.sh",
             "echo first; printf '\\033[H\\033[2J\\033[3J'; printf 'name: '; read name\n"
             "stty -echo; printf 'password: '; read word; stty echo; echo; "
             "echo \"$name ${#word}\"; exit 5\n");
  site.write("session", "# comment\nexpect name:\nsend scott\nexpect password:\nsecret tiger\n");
  const auto result = site.run("'" PLAYSESSION "' --rows 30 --cols 90 session -- sh program.sh");
  EXPECT_EQ(result.status, 5) << result.errors;
  EXPECT_EQ(result.output,
            "first\n" + std::string(72, '-') + "\nname: scott\npassword: \nscott 5\n");

  site.write("wrong", "expect surname\n");
  const auto unmet = site.run("'" PLAYSESSION "' --timeout 1 wrong -- sh program.sh");
  EXPECT_EQ(unmet.status, 99);
  EXPECT_NE(unmet.errors.find("\"surname\" did not appear, script line 1"), std::string::npos);
  site.write("shown", "secret tiger\n");
  EXPECT_EQ(site.run("'" PLAYSESSION "' --timeout 1 shown -- sh -c 'read x'").status, 99);
  site.write("broken", "expects x\n");
  EXPECT_EQ(site.run("'" PLAYSESSION "' broken -- true").status, 98);
  EXPECT_EQ(site.run("'" PLAYSESSION "' session -- no-such-program").status, 98);
}
