// site.h: a small site for one test: store, catalogs, options, and vexosync on a terminal. All
// files are in the test's own directory.
#ifndef TESTS_FLOWS_SITE_H
#define TESTS_FLOWS_SITE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "sandbox/tools/terminal.h"
#include "tests/support/tempdir.h"

class Site : public testing::Test {
 protected:
  // Makes the store with node ORANODE; the library's generated password is in place.
  Site();

  // Runs a command line of zylstore and returns what it printed; a failure fails the test.
  std::string zylstore(const std::string& arguments) const;

  // Puts objects of ORANODE into the store.
  void object(const std::string& lowLevel, const std::string& more = "") const;
  void objects(const std::vector<std::string>& lowLevels) const {
    for (const std::string& name : lowLevels) object(name);
  }

  // Makes a catalog (user rman, password rman) that knows the handles; kind: recovery, target.
  void catalog(const std::string& name, const std::vector<std::string>& handles,
               const std::string& kind = "recovery") const;

  // The low-level names in the store, in the order of their identifiers, separated by blanks.
  std::string stored() const;

  // Adds a line to the agent's options file.
  void option(const std::string& line);

  // Starts vexosync, or a command line of the shell.
  void run(std::vector<std::string> arguments);
  void shell(const std::string& command);
  // Makes a script the sqlplus that vexosync finds.
  void replaceSqlplus(const std::string& script);

  // Waits for a text; with an answer, types it and Enter.
  void see(const std::string& text);
  void answer(const std::string& prompt, const std::string& text);
  void answers(const std::vector<std::pair<std::string, std::string>>& pairs) {
    for (const auto& [prompt, text] : pairs) answer(prompt, text);
  }
  // The same for a password: waits until the echo is off.
  void secret(const std::string& prompt, const std::string& text);
  void dates(const std::string& start = "", const std::string& end = "+0");
  // User rman, with password rman unless another is given.
  void logon(const std::string& connect, const std::string& password = "rman");
  // A run of SYNCDB up to its list, or to what keeps it from one.
  void syncdb(const std::string& connect, const std::string& password = "rman");

  // Waits for the end; the low eight bits of the program's code are `code`.
  void ends(int code);
  // How often the terminal showed a text.
  int count(const std::string& text) const { return countIn(terminal_->transcript(), text); }
  static int countIn(const std::string& all, const std::string& text);
  bool showed(const std::string& text) const { return count(text) > 0; }
  bool logged(const std::string& text) const { return errorLog().find(text) != std::string::npos; }
  std::string errorLog() const { return dir_.read("vexoerror.log"); }

  support::TempDir dir_;
  sandbox::TerminalSettings settings_;
  std::unique_ptr<sandbox::Terminal> terminal_;
};

#endif  // TESTS_FLOWS_SITE_H
