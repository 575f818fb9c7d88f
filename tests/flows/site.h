// site.h: a small site for one test: store, catalogs, options, and vexosync on a terminal. All
// files are in the test's own directory.
#ifndef TESTS_FLOWS_SITE_H
#define TESTS_FLOWS_SITE_H

#include <sstream>

#include "sandbox/tools/terminal.h"
#include "tests/support/captured.h"
#include "tests/support/tempdir.h"

class Site : public testing::Test {
 protected:
  // Makes the store with node ORANODE; the library's generated password is in place.
  Site() {
    settings_.rows = 30;
    settings_.columns = 100;
    settings_.environment = {{"SANDBOX_HOME", dir_.path()},
                             {"VEXO_OPTFILE", dir_.path("vexo.opt")},
                             {"PATH", BUILD_DIRECTORY "/bin:" BUILD_DIRECTORY "/bin/sandbox:" +
                                          std::string(std::getenv("PATH"))},
                             {"LD_LIBRARY_PATH", BUILD_DIRECTORY "/lib"},
                             {"TMPDIR", dir_.path("tmp")},
                             {"TERM", "ansi"}};
    settings_.unset = {"VLTI_DIR",    "VLTI_LOG",    "VLTI_CONFIG", "NLS_LANG",
                       "ORACLE_HOME", "ORACLE_PATH", "SQLPATH"};
    settings_.directory = dir_.path();
    dir_.write("tmp/.keep", "");
    dir_.write("vlt.opt", "STORE " + dir_.path("store.db") + "\n");
    option("VLTI_ORC_CONFIG " + dir_.path("vlt.opt") + "\nVLTI_LOG " + dir_.path() +
           "\nVEXO_NODE ORANODE\nVEXO_PSWDPATH " + dir_.path("passwords"));
    zylstore("init");
    zylstore("node ORANODE --password secret --save-password " + dir_.path("passwords"));
  }

  // Runs a command line of zylstore and returns what it printed; a failure fails the test.
  std::string zylstore(const std::string& arguments) const {
    const std::string output = dir_.path("tmp/.keep"),
                      command = "SANDBOX_HOME=" + dir_.path() +
                                " " BUILD_DIRECTORY "/bin/zylstore " + arguments + " >" + output +
                                " 2>&1";
    EXPECT_EQ(0, std::system(command.c_str())) << command << dir_.read("tmp/.keep");
    return dir_.read("tmp/.keep");
  }

  // Puts objects of ORANODE into the store.
  void object(const std::string& lowLevel, const std::string& more = "") const {
    zylstore("put --node ORANODE --fs /marlorc --ll " + lowLevel + " " + more);
  }
  void objects(const std::vector<std::string>& lowLevels) const {
    for (const std::string& name : lowLevels) object(name);
  }

  // Makes a catalog (user rman, password rman) that knows the handles; kind: recovery, target.
  void catalog(const std::string& name, const std::vector<std::string>& handles,
               const std::string& kind = "recovery") const {
    std::string lines;
    for (const std::string& handle : handles) lines += handle + "\t2026-03-07T08:05:09\n";
    zylstore("catalog add " + name + " --user rman --password rman --kind " + kind);
    zylstore("catalog load " + name + " " + dir_.write("pieces", lines));
  }

  // The low-level names in the store, in the order of their identifiers, separated by blanks.
  std::string stored() const {
    std::istringstream list(zylstore("list"));
    std::string names;
    for (std::string line; std::getline(list, line);) {
      std::istringstream fields(line);
      std::string field;
      for (int column = 0; column < 7; ++column) std::getline(fields, field, '\t');
      names += (names.empty() ? "" : " ") + field;
    }
    return names;
  }

  // Adds a line to the agent's options file.
  void option(const std::string& line) {
    dir_.write("vexo.opt", dir_.read("vexo.opt") + line + "\n");
  }

  // Starts vexosync, or a command line of the shell.
  void run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), BUILD_DIRECTORY "/bin/vexosync");
    terminal_ = std::make_unique<sandbox::Terminal>(arguments, settings_);
  }
  void shell(const std::string& command) {
    terminal_ = std::make_unique<sandbox::Terminal>(
        std::vector<std::string>{"/bin/sh", "-c", command}, settings_);
  }
  // Makes a script the sqlplus that vexosync finds.
  void replaceSqlplus(const std::string& script) {
    std::filesystem::permissions(dir_.write("bin/sqlplus", script),
                                 std::filesystem::perms::owner_all);
    settings_.environment["PATH"] = dir_.path("bin") + ":" + settings_.environment["PATH"];
  }

  // Waits for a text; with an answer, types it and Enter.
  void see(const std::string& text) {
    ASSERT_TRUE(terminal_->expect(text)) << "no '" << text << "' in\n" << terminal_->transcript();
  }
  void answer(const std::string& prompt, const std::string& text) {
    ASSERT_NO_FATAL_FAILURE(see(prompt));
    terminal_->send(text + "\n");
  }
  void answers(const std::vector<std::pair<std::string, std::string>>& pairs) {
    for (const auto& [prompt, text] : pairs) answer(prompt, text);
  }
  // The same for a password: waits until the echo is off.
  void secret(const std::string& prompt, const std::string& text) {
    ASSERT_NO_FATAL_FAILURE(see(prompt));
    ASSERT_TRUE(terminal_->expectEchoOff());
    terminal_->send(text + "\n");
  }
  void dates(const std::string& start = "", const std::string& end = "+0") {
    answers({{"Start date", start}, {"End date", end}});
  }
  // User rman, with password rman unless another is given.
  void logon(const std::string& connect, const std::string& password = "rman") {
    answer("user name: ", "rman");
    secret("password: ", password);
    answer("connect string", connect);
  }
  // A run of SYNCDB up to its list, or to what keeps it from one.
  void syncdb(const std::string& connect, const std::string& password = "rman") {
    run({"syncdb"});
    dates();
    logon(connect, password);
  }

  // Waits for the end; the low eight bits of the program's code are `code`.
  void ends(int code) {
    const std::optional<int> status = terminal_->wait();
    ASSERT_TRUE(status.has_value()) << "still running:\n" << terminal_->transcript();
    EXPECT_EQ(code & 0xff, *status) << terminal_->transcript();
  }
  // How often the terminal showed a text.
  int count(const std::string& text) const { return countIn(terminal_->transcript(), text); }
  static int countIn(const std::string& all, const std::string& text) {
    return static_cast<int>(support::occurrences(all, text));
  }
  bool showed(const std::string& text) const { return count(text) > 0; }
  bool logged(const std::string& text) const { return errorLog().find(text) != std::string::npos; }
  std::string errorLog() const { return dir_.read("vexoerror.log"); }

  support::TempDir dir_;
  sandbox::TerminalSettings settings_;
  std::unique_ptr<sandbox::Terminal> terminal_;
};

#endif  // TESTS_FLOWS_SITE_H
