// site.h: a small site for one test: store, catalogs, options, and vexosync on a terminal. All
// files are in the test's own directory.
#ifndef TESTS_FLOWS_SITE_H
#define TESTS_FLOWS_SITE_H

#include <regex>

#include "sandbox/tools/terminal.h"
#include "tests/support/captured.h"
#include "tests/support/tempdir.h"

class Site : public testing::Test {
 protected:
  using string = std::string;
  using strings = std::vector<string>;
  using Answers = std::vector<std::pair<string, string>>;  // to a prompt each

  // Makes the store with node ORANODE; the library's generated password is in place.
  Site() {
    dir_.write("tmp/.keep", "");
    dir_.write("vlt.opt", "STORE " + dir_.path("store.db") + "\n");
    option("VLTI_ORC_CONFIG " + dir_.path("vlt.opt") + "\nVLTI_LOG " + dir_.path() +
           "\nVEXO_NODE ORANODE\nVEXO_PSWDPATH " + dir_.path("passwords"));
    zylstore("init");
    zylstore("node ORANODE --password secret --save-password " + dir_.path("passwords"));
  }

  // Runs a command line of zylstore and returns what it printed; a failure fails the test.
  string zylstore(const string& arguments) const {
    const string command =
        BUILD_DIRECTORY "/bin/zylstore " + arguments + " >" + dir_.path("tmp/.keep") + " 2>&1";
    EXPECT_EQ(0, std::system(command.c_str())) << command << dir_.read("tmp/.keep");
    return dir_.read("tmp/.keep");
  }

  // Puts objects of ORANODE into the store, whose low-level names are separated by blanks.
  void objects(const string& lowLevels, const string& more = "") const {
    std::istringstream names(lowLevels);
    const string put = "put --node ORANODE --fs /marlorc " + more + " --ll ";
    for (string name; names >> name;) zylstore(put + name);
  }
  // The low-level names in the store, in the order of their identifiers, separated by blanks.
  string stored() const {
    const std::regex row("(?:[^\t]*\t){6}([^\t\n]*).*\n");
    return std::regex_replace(zylstore("list"), row, " $1").erase(0, 1);
  }

  // Makes a catalog (user rman, password rman) that knows the handles, separated by blanks; kind:
  // recovery, target.
  void catalog(const string& name, const string& handles, const string& kind = "recovery") const {
    const string line = "$1\t2026-03-07T08:05:09\n",
                 lines = std::regex_replace(handles, std::regex("(\\S+) ?"), line);
    zylstore("catalog add " + name + " --user rman --password rman --kind " + kind);
    zylstore("catalog load " + name + " " + dir_.write("pieces", lines));
  }

  // Adds a line to the agent's options file.
  void option(const string& line) { dir_.write("vexo.opt", dir_.read("vexo.opt") + line + "\n"); }
  // Makes a script the sqlplus that vexosync finds.
  void replaceSqlplus(const string& script) {
    const string file = dir_.write("bin/sqlplus", script);
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
  }

  // Runs a command line of the shell on a terminal.
  void run(const string& command) {
    terminal_.reset(new sandbox::Terminal({"/bin/sh", "-c", command}, settings_));
  }
  // Waits for a text, and for a password's prompt until the echo is off; types the answer and
  // Enter.
  void see(const string& text) {
    ASSERT_TRUE(terminal_->expect(text)) << "no '" << text << "' in\n" << terminal_->transcript();
    ASSERT_TRUE(text.find("password") == text.npos || terminal_->expectEchoOff());
  }
  void answer(const string& prompt, const string& text) {
    ASSERT_NO_FATAL_FAILURE(see(prompt));
    terminal_->send(text + "\n");
  }
  void answers(const Answers& pairs) {
    for (const auto& [prompt, text] : pairs) answer(prompt, text);
  }
  // Runs a command up to what follows the dates.
  void begin(const string& command, const string& start = "", const string& end = "+0") {
    run(command);
    answers({{"Start date", start}, {"End date", end}});
  }
  // User rman, with password rman unless another is given.
  void logon(const string& connect, const string& password = "rman") {
    answers({{"user name: ", "rman"}, {"password: ", password}, {"connect string", connect}});
  }

  // Waits for the end; the low eight bits of the program's code are `code`, and it showed `texts`.
  void ends(int code, const strings& texts = {}) {
    EXPECT_EQ(code & 0xff, terminal_->wait(std::chrono::seconds(30))) << terminal_->transcript();
    for (const string& text : texts) EXPECT_TRUE(showed(text)) << text << terminal_->transcript();
  }
  // The beginning of every line of a text; lines in a row that begin alike are one.
  static string beginnings(const string& text) {
    const std::regex line("([^\r\n]{0,8}).*\r?\n"), again("([^|]+\\|)\\1+");
    return std::regex_replace(std::regex_replace(text + "\n", line, "$1|"), again, "$1");
  }
  // How often the terminal showed a text.
  unsigned count(const string& text) const {
    return support::occurrences(terminal_->transcript(), text);
  }
  bool showed(const string& text) const { return count(text) > 0; }
  bool logged(const string& text) const { return errorLog().find(text) < text.npos; }
  string errorLog() const { return dir_.read("vexoerror.log"); }

  support::TempDir dir_;
  support::ScopedEnv home_{"SANDBOX_HOME", dir_.path().c_str()};
  // 30 rows of 100 columns; the environment, what is not in it, and the directory.
  sandbox::TerminalSettings settings_ = {
      30,
      100,
      {{"VEXO_OPTFILE", dir_.path("vexo.opt")},
       {"TMPDIR", dir_.path("tmp")},
       {"LD_LIBRARY_PATH", BUILD_DIRECTORY "/lib"},
       {"TERM", "ansi"},
       {"PATH", dir_.path("bin:" BUILD_DIRECTORY "/bin:" BUILD_DIRECTORY "/bin/sandbox:") +
                    std::getenv("PATH")}},
      {"VLTI_DIR", "VLTI_LOG", "VLTI_CONFIG", "NLS_LANG", "ORACLE_HOME", "ORACLE_PATH", "SQLPATH"},
      dir_.path()};
  std::unique_ptr<sandbox::Terminal> terminal_;
};

#endif  // TESTS_FLOWS_SITE_H
