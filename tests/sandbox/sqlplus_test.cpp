// sqlplus_test.cpp: the stand-in for sqlplus, run for real: what the tests of the answers and of
// SYNCDB take for granted of its spool file, logon, errors and interrupts. Its profiles and
// languages are seen in how many answers are refused and doubted (answers_test.cpp).
#include <sys/wait.h>

#include <algorithm>

#include "tests/support/tempdir.h"

namespace {

class Sqlplus : public testing::Test {
 protected:
  // The script that the maintenance utility writes, with its parts.
  struct Script {
    std::string from = "1/1/2024:00:00:00", to = "12/31/2024:23:59:59";
    std::string logon = "rman/rman@rcat", view = "rc_backup_piece";
  };

  struct Result {
    int status;
    std::string output, spooled;
  };

  Sqlplus() {
    ::setenv("SANDBOX_HOME", dir_.path().c_str(), 1);
    for (const char* name : {"NLS_LANG", "ORACLE_HOME", "ORACLE_PATH", "SQLPATH"}) ::unsetenv(name);
    catalog("rcat --user rman --password rman");
  }

  // Runs a command of the shell in the test's directory; what it says on either stream is output.
  Result run(const std::string& command) const {
    const int status = std::system(
        ("cd '" + dir_.path() + "' && { " + command + "\n} >.out 2>&1 </dev/null").c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, dir_.read(".out"),
            dir_.read("spool.out")};
  }
  void catalog(const std::string& options) const {
    EXPECT_EQ(0, run("'" ZYLSTORE "' catalog add " + options).status) << options;
  }
  // Each line is one piece.
  void load(const std::string& lines) const {
    dir_.write("pieces", lines);
    EXPECT_EQ(0, run("'" ZYLSTORE "' catalog load rcat pieces").status) << lines;
  }

  // Runs the script; `before` is what its shell puts before the tool's name.
  Result spool(const Script& script, const std::string& before = "") const {
    const std::string set =
        "\nspool spool.out\nset term off \nset heading on\nset pagesize 0\nset linesize 80\n"
        "set recsep off\nset sqlterminator on\n"
        "alter session set NLS_DATE_FORMAT='MM/DD/YYYY:hh24:mi:ss';\nselect handle from ";
    dir_.write("script.sql", script.logon + set + script.view + " where completion_time >='" +
                                 script.from + "' and completion_time <='" + script.to +
                                 "';\nquit\nspool off");
    return run(before + " '" SQLPLUS "' -L @script.sql");
  }

  support::TempDir dir_;
};

const std::string kAltered = "\nSession altered.\n\n";

std::string padded(std::string text, std::size_t size = 80) {
  text.resize(std::max(size, text.size()), ' ');
  return text + "\n";
}

TEST_F(Sqlplus, SpoolsRowsCountsAndErrorsAndEndsWell) {
  catalog("orcl --kind target --user rman --password rman");
  catalog("odd --user rman --password 'p@/w'");
  const std::string exact(80, 'e'), longer(80, 'l');
  load("before\t2023-12-31T23:59:59\nfirst\t2024-01-01\n" + exact + "\t2024-02-01\n" + longer +
       "tail\t2024-03-01\nh4\t2024-04-01\nh5\t2024-05-01\n" +
       "last\t2024-12-31T23:59:59\nafter\t2025-01-01\n");
  const std::string rows = padded(exact) + longer + "\n" + padded("tail") + padded("h4") +
                           padded("h5") + padded("last") + "\n";
  const std::string noView = "*\nERROR at line 1:\nORA-00942: table or view does not exist\n\n\n";
  const struct {
    Script script;
    std::string spooled;     // to the end; from the start where it begins with the altered session
    std::string error = "";  // of the logon
  } cases[] = {
      {{}, kAltered + padded("first") + rows + "6 rows selected.\n\n"},
      {{.from = "1/1/2024:00:00:01"}, kAltered + rows},
      {{.from = "12/30/2024", .to = "12/30/2024"}, kAltered + "\nno rows selected\n\n"},
      {{.logon = "rman/rman@orcl"}, noView},
      {{.logon = "rman/rman@orcl", .view = "v$backup_piece"}, "\nno rows selected\n\n"},
      {{.from = "2/30/2024"}, "ORA-01839: date not valid for month specified\n\n\n"},
      // The first signs outside quotes split a logon.
      {{.logon = "\"rman\"/\"p@/w\"@ODD"}, "\nno rows selected\n\n"},
      {{.logon = "rman/p@/w@odd"}, "", "ORA-12154"},
      {{.logon = "rman/@rcat"}, "", "ORA-01005"},
      {{.logon = "rman/RMAN@rcat"}, "", "ORA-01017"},
      {{.logon = "other/rman@rcat"}, "", "ORA-01017"},
  };
  for (const auto& row : cases) {
    const Result result = spool(row.script);
    EXPECT_EQ(row.error.empty() ? 0 : 1, result.status);
    EXPECT_TRUE(result.spooled.ends_with(row.spooled)) << result.spooled;
    EXPECT_NE(std::string::npos, result.output.find(row.error)) << result.output;
    EXPECT_EQ(std::string::npos, result.output.find("last")) << result.output;
  }
}

TEST_F(Sqlplus, CountsWhatItShowedWhenItIsInterruptedAndGoesOn) {
  catalog("rcat --row-delay 10 --user rman --password rman");
  std::string lines;
  for (int i = 0; i < 1000; ++i) lines += "h" + std::to_string(i) + "\t2024-01-01\n";
  load(lines);
  // As soon as the spool file holds ten rows, however slow the machine is.
  const Result result =
      spool({},
            "sh -c '\"$@\" & while kill -0 $! && ! grep -qs h9 spool.out; do sleep 0.1; done; "
            "kill -INT $!; wait $!' sh");
  EXPECT_EQ(0, result.status);
  int rows = 0;
  const auto shown = [&] { return "\n" + padded("h" + std::to_string(rows)); };
  while (result.spooled.find(shown()) != std::string::npos) ++rows;
  EXPECT_TRUE(rows > 5 && rows < 1000) << rows;
  EXPECT_TRUE(result.spooled.ends_with(" \n\n" + std::to_string(rows) + " rows selected.\n\n"));
}

}  // namespace
