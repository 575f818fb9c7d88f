// site.h: a small site for one test: store, catalogs, options, and vexosync on a terminal. All
// files are in the test's own directory.
#ifndef TESTS_FLOWS_SITE_H
#define TESTS_FLOWS_SITE_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "sandbox/tools/terminal.h"
#include "tests/support/tempdir.h"

class Site : public testing::Test {
 protected:
  // Makes the store with node ORANODE; the library's generated password is in place.
  Site();

  // Runs a command line of zylstore and returns what it printed; a failure fails the test.
  std::string zylstore(const std::string& arguments) const;

  // Puts one object of ORANODE into the store.
  void object(const std::string& lowLevel, const std::string& more = "") const;

  // Makes a catalog (user rman, password rman) that knows the handles; kind: recovery, target.
  void catalog(const std::string& name, const std::vector<std::string>& handles,
               const std::string& kind = "recovery") const;

  // The low-level names in the store, in the order of their identifiers, separated by blanks.
  std::string stored() const;

  // Adds a line to the agent's options file.
  void option(const std::string& line);

  // Starts vexosync.
  sandbox::Terminal& run(const std::vector<std::string>& arguments);

  // Waits for a text, then types an answer and Enter.
  void answer(const std::string& prompt, const std::string& text);
  // The same for a password: waits until the echo is off.
  void secret(const std::string& prompt, const std::string& text);
  void dates(const std::string& start = "", const std::string& end = "+0");
  // User rman, with password rman unless another is given.
  void logon(const std::string& connect, const std::string& password = "rman");

  // Waits for the end; the low eight bits of the program's code are `code`.
  void ends(int code);
  bool showed(const std::string& text) const;
  std::string errorLog() const { return dir_.read("vexoerror.log"); }

  support::TempDir dir_;
  sandbox::TerminalSettings settings_;
  std::unique_ptr<sandbox::Terminal> terminal_;
};

#endif  // TESTS_FLOWS_SITE_H
