// sqlplus_test.cpp: the tool run for real: logon, spool file, errors and their exit status.
#include <sys/wait.h>

#include <cstdlib>

#include "tests/support/tempdir.h"

namespace {

class Sqlplus : public testing::Test {
 protected:
  // The script that the maintenance utility writes, with its parts.
  struct Script {
    std::string logon = "rman/rman@rcat";
    std::string view = "rc_backup_piece";
    std::string from = "1/1/2024:00:00:00", to = "12/31/2024:23:59:59";
  };

  struct Result {
    int status;
    std::string output;
  };

  Sqlplus() {
    ::setenv("SANDBOX_HOME", dir_.path().c_str(), 1);
    catalog("rcat", "recovery");
  }

  // Runs a command of the shell in the test's directory; what it says on either stream is output.
  Result run(const std::string& command) const {
    const int status = std::system(
        ("cd '" + dir_.path() + "' && { " + command + "\n} >.out 2>&1 </dev/null").c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, dir_.read(".out")};
  }
  void zylstore(const std::string& arguments) const {
    const Result result = run("'" ZYLSTORE "' " + arguments);
    EXPECT_EQ(0, result.status) << arguments << ": " << result.output;
  }
  void catalog(const std::string& name, const std::string& kind) const {
    zylstore("catalog add " + name + " --user rman --password rman --kind " + kind);
  }

  Result spool(const Script& script) const {
    dir_.write("script.sql",
               script.logon +
                   "\nspool spool.out\nset term off \nset heading on\nset pagesize 0\n"
                   "set linesize 80\nset recsep off\nset sqlterminator on\n"
                   "alter session set NLS_DATE_FORMAT='MM/DD/YYYY:hh24:mi:ss';\n"
                   "select handle from " +
                   script.view + " where completion_time >='" + script.from +
                   "' and completion_time <='" + script.to + "';\nquit\nspool off");
    return run("'" SQLPLUS "' -L @script.sql");
  }

  support::TempDir dir_;
};

std::string padded(std::string text) {
  text.resize(80, ' ');
  return text + "\n";
}

TEST_F(Sqlplus, SpoolsRowsCountsAndErrorsAndEndsWell) {
  catalog("orcl", "target");
  const std::string exact(80, 'e'), longer(80, 'l');
  dir_.write("pieces", "before\t2023-12-31T23:59:59\nfirst\t2024-01-01\n" + exact +
                           "\t2024-02-01\n" + longer +
                           "tail\t2024-03-01\nh4\t2024-04-01\nh5\t2024-05-01\n" +
                           "last\t2024-12-31T23:59:59\nafter\t2025-01-01\n");
  zylstore("catalog load rcat pieces");
  const std::string altered = "\nSession altered.\n\n";
  const std::string rows = padded(exact) + longer + "\n" + padded("tail") + padded("h4") +
                           padded("h5") + padded("last") + "\n";
  const std::string noView = "*\nERROR at line 1:\nORA-00942: table or view does not exist\n\n\n";
  const struct {
    Script script;
    std::string spooled;  // to the end; from the start where it begins with the altered session
  } cases[] = {
      {{}, altered + padded("first") + rows + "6 rows selected.\n\n"},
      {{.from = "1/1/2024:00:00:01"}, altered + rows},
      {{.from = "12/30/2024", .to = "12/30/2024"}, altered + "\nno rows selected\n\n"},
      {{.view = "v$backup_piece"}, noView},
      {{.logon = "rman/rman@orcl"}, noView},
      {{.logon = "rman/rman@orcl", .view = "v$backup_piece"}, "\nno rows selected\n\n"},
      {{.from = "2/30/2024"}, "ORA-01839: date not valid for month specified\n\n\n"},
  };
  for (const auto& row : cases) {
    const Result result = spool(row.script);
    EXPECT_EQ(0, result.status);
    EXPECT_TRUE(dir_.read("spool.out").ends_with(row.spooled)) << dir_.read("spool.out");
    EXPECT_EQ(std::string::npos, result.output.find("last")) << result.output;
  }
}

}  // namespace
