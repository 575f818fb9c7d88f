// sqlplus_test.cpp: the stand-in for sqlplus, run for real: what the tests of the answers and of
// SYNCDB take for granted of its spool file, logon, errors and interrupts. Its profiles and
// languages are seen in how many answers are refused and doubted (answers_test.cpp).
#include <sys/wait.h>

#include "tests/support/captured.h"
#include "tests/support/tempdir.h"

namespace {

using std::string;

class Sqlplus : public testing::Test {
 protected:
  // The script that the maintenance utility writes, with its parts.
  struct Script {
    string from = "1/1/2024:00:00:00", to = "12/31/2024:23:59:59";
    string logon = "rman/rman@rcat", view = "rc_backup_piece";
  };

  Sqlplus() {
    ::setenv("SANDBOX_HOME", dir_.path().c_str(), 1);
    for (const char* name : {"NLS_LANG", "ORACLE_HOME", "ORACLE_PATH", "SQLPATH"}) ::unsetenv(name);
  }
  // Runs a command of the shell in the test's directory and returns its status.
  int run(const string& command) {
    const int status = std::system(
        ("cd '" + dir_.path() + "' && { " + command + "\n} >.out 2>&1 </dev/null").c_str());
    output_ = dir_.read(".out");
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  void catalog(const string& options) {
    EXPECT_EQ(0, run("'" ZYLSTORE "' catalog " + options)) << options << output_;
  }
  // Runs the script; `before` is what its shell puts before the tool's name.
  int spool(const Script& script, const string& before = "") {
    dir_.write("script.sql", script.logon +
                                 "\nspool spool.out\nset term off \nset heading on\n"
                                 "set pagesize 0\nset linesize 80\nset recsep off\n"
                                 "set sqlterminator on\n"
                                 "alter session set NLS_DATE_FORMAT='MM/DD/YYYY:hh24:mi:ss';\n"
                                 "select handle from " +
                                 script.view + " where completion_time >='" + script.from +
                                 "' and completion_time <='" + script.to + "';\nquit\nspool off");
    const int status = run(before + " '" SQLPLUS "' -L @script.sql");
    spooled_ = dir_.read("spool.out");
    return status;
  }

  support::TempDir dir_;
  string output_, spooled_;
};

string padded(string text) {
  text.resize(80, ' ');
  return text + "\n";
}

TEST_F(Sqlplus, SpoolsRowsCountsAndErrorsAndEndsWell) {
  catalog("add rcat --user rman --password rman");
  catalog("add orcl --kind target --user rman --password rman");
  catalog("add odd --user rman --password 'p@/w'");
  const string exact(80, 'e'), longer(80, 'l'), none = "\nno rows selected\n\n";
  dir_.write("pieces", "before\t2023-12-31T23:59:59\nfirst\t2024-01-01\n" + exact +
                           "\t2024-02-01\n" + longer + "tail\t2024-03-01\nh4\t2024-04-01\n" +
                           "h5\t2024-05-01\nlast\t2024-12-31T23:59:59\nafter\t2025-01-01\n");
  catalog("load rcat pieces");
  const string rows = padded(exact) + longer + "\n" + padded("tail") + padded("h4") + padded("h5") +
                      padded("last") + "\n";
  // The script, the end of the spool file, and the error of the logon.
  const std::tuple<Script, string, string> cases[] = {
      {{}, "\nSession altered.\n\n" + padded("first") + rows + "6 rows selected.\n\n", ""},
      {{.from = "1/1/2024:00:00:01"}, "\nSession altered.\n\n" + rows, ""},
      {{.from = "12/30/2024", .to = "12/30/2024"}, none, ""},
      {{.logon = "rman/rman@orcl"}, "ORA-00942: table or view does not exist\n\n\n", ""},
      {{.logon = "rman/rman@orcl", .view = "v$backup_piece"}, none, ""},
      {{.from = "2/30/2024"}, "ORA-01839: date not valid for month specified\n\n\n", ""},
      // The first signs outside quotes split a logon.
      {{.logon = "\"rman\"/\"p@/w\"@ODD"}, none, ""},
      {{.logon = "rman/p@/w@odd"}, "", "ORA-12154"},
      {{.logon = "rman/@rcat"}, "", "ORA-01005"},
      {{.logon = "rman/RMAN@rcat"}, "", "ORA-01017"},
      {{.logon = "other/rman@rcat"}, "", "ORA-01017"},
  };
  for (const auto& [script, end, error] : cases) {
    EXPECT_EQ(error.empty() ? 0 : 1, spool(script)) << script.logon;
    EXPECT_TRUE(spooled_.ends_with(end)) << spooled_;
    EXPECT_HOLDS(output_, error);
    EXPECT_EQ(string::npos, output_.find("last")) << output_;
  }
}

TEST_F(Sqlplus, CountsWhatItShowedWhenItIsInterruptedAndGoesOn) {
  catalog("add rcat --row-delay 10 --user rman --password rman");
  string lines;
  for (int i = 0; i < 1000; ++i) lines += "h" + std::to_string(i) + "\t2024-01-01\n";
  dir_.write("pieces", lines);
  catalog("load rcat pieces");
  // As soon as the spool file holds ten rows, however slow the machine is.
  EXPECT_EQ(0, spool({},
                     "sh -c '\"$@\" & while kill -0 $! && ! grep -qs h9 spool.out; do sleep 0.1; "
                     "done; kill -INT $!; wait $!' sh"));
  const unsigned rows = support::occurrences(spooled_, "\nh");
  EXPECT_TRUE(rows > 9 && rows < 1000) << rows;
  EXPECT_TRUE(spooled_.ends_with(" \n\n" + std::to_string(rows) + " rows selected.\n\n"));
}

}  // namespace
