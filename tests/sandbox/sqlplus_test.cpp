// sqlplus_test.cpp: the tool run for real: logon, profiles, spool file, errors, interrupts.
#include <sys/wait.h>

#include <algorithm>
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
    for (const char* name : {"NLS_LANG", "ORACLE_HOME", "ORACLE_PATH", "SQLPATH"}) ::unsetenv(name);
    catalog("rcat", "--kind recovery");
  }

  // Runs a command of the shell in the test's directory; what it says on either stream is output.
  Result run(const std::string& command) const {
    const int status = std::system(
        ("cd '" + dir_.path() + "' && { " + command + "\n} >.out 2>&1 </dev/null").c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, dir_.read(".out")};
  }
  std::string zylstore(const std::string& arguments) const {
    const Result result = run("'" ZYLSTORE "' " + arguments);
    EXPECT_EQ(0, result.status) << arguments << ": " << result.output;
    return result.output;
  }
  void catalog(const std::string& name, const std::string& options) const {
    zylstore("catalog add " + name + " --user rman --password rman " + options);
  }
  // Each line is one piece.
  void load(const std::string& lines, const std::string& options = "") const {
    dir_.write("pieces", lines);
    zylstore("catalog load rcat pieces " + options);
  }

  // Runs the script; `before` is what its shell puts before the tool's name.
  Result spool(const Script& script, const std::string& before = "") const {
    dir_.write("script.sql",
               script.logon +
                   "\nspool spool.out\nset term off \nset heading on\nset pagesize 0\n"
                   "set linesize 80\nset recsep off\nset sqlterminator on\n"
                   "alter session set NLS_DATE_FORMAT='MM/DD/YYYY:hh24:mi:ss';\n"
                   "select handle from " +
                   script.view + " where completion_time >='" + script.from +
                   "' and completion_time <='" + script.to + "';\nquit\nspool off");
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
  catalog("orcl", "--kind target");
  const std::string exact(80, 'e'), longer(80, 'l');
  load("before\t2023-12-31T23:59:59\nfirst\t2024-01-01\n" + exact + "\t2024-02-01\n" + longer +
       "tail\t2024-03-01\nh4\t2024-04-01\nh5\t2024-05-01\n" +
       "last\t2024-12-31T23:59:59\nafter\t2025-01-01\n");
  const std::string rows = padded(exact) + longer + "\n" + padded("tail") + padded("h4") +
                           padded("h5") + padded("last") + "\n";
  const std::string noView = "*\nERROR at line 1:\nORA-00942: table or view does not exist\n\n\n";
  const struct {
    Script script;
    std::string spooled;  // to the end; from the start where it begins with the altered session
  } cases[] = {
      {{}, kAltered + padded("first") + rows + "6 rows selected.\n\n"},
      {{.from = "1/1/2024:00:00:01"}, kAltered + rows},
      {{.from = "12/30/2024", .to = "12/30/2024"}, kAltered + "\nno rows selected\n\n"},
      {{.view = "v$backup_piece"}, noView},
      {{.logon = "rman/rman@orcl"}, noView},
      {{.logon = "rman/rman@orcl", .view = "v$backup_piece"}, "\nno rows selected\n\n"},
      {{.from = "2/30/2024"}, "ORA-01839: date not valid for month specified\n\n\n"},
      {{.from = "1.1.2024"},
       "*\nERROR at line 1:\nORA-01861: literal does not match format string\n\n\n"},
      {{.view = "rc_backup_piece, dual"}, "ORA-00933: SQL command not properly ended\n\n\n"},
  };
  for (const auto& row : cases) {
    const Result result = spool(row.script);
    EXPECT_EQ(0, result.status);
    EXPECT_TRUE(dir_.read("spool.out").ends_with(row.spooled)) << dir_.read("spool.out");
    EXPECT_EQ(std::string::npos, result.output.find("last")) << result.output;
  }
}

TEST_F(Sqlplus, DoesWhatTheProfilesSet) {
  const std::string words = "one two three four five";
  load("short\t2024-01-01\n\t2024-01-01\tX\na\"b\t2024-01-01\tD\n" + words + "\t2024-01-01\n");
  const std::string three = padded("short") + padded("") + padded("a\"b");
  const std::string all = three + padded(words) + "\n";
  const struct {
    std::string profile, spooled;
  } cases[] = {
      {"", kAltered + all},
      {"column handle format a10",
       kAltered + three + padded("one two th") + padded("ree four f") + padded("ive") + "\n"},
      {"col handle for a10 wor",
       kAltered + three + padded("one two") + padded("three four") + padded("five") + "\n"},
      {"column handle format a10 truncated", kAltered + three + padded("one two th") + "\n"},
      {"column handle format a10\nset wrap off", kAltered + three + padded("one two th") + "\n"},
      {"set wrap off\ncolumn handle format a10 wra heading x\ncolumn handle clear",
       kAltered + "rows will be truncated\n\n" + all},
      {"column other format a1", kAltered + all},
      {"set feedback 4", kAltered + all + "4 rows selected.\n\n"},
      {"set feedback 5", kAltered + all},
      {"set feedback off", all},
      {"set feed only", kAltered + "\n4 rows selected.\n\n"},
      {"set markup csv on", kAltered + "\"short\"\n\n\"a\"\"b\"\n\"" + words + "\"\n\n"},
      {"set markup csv on quote off feed 1",  // FEED is no word of MARKUP
       kAltered + "short\n\na\"b\n" + words + "\n\n"},
      {"set null '(none)' trimspool on", kAltered + "short\n(none)\na\"b\n" + words + "\n\n"},
      {"set pagesize 20 linesize 7 recsep each", kAltered + all},  // the script sets them again
      {"set term off xyz 1\nset wrap off", kAltered + "rows will be truncated\n\n" + all},
      {"set xyz 1 wrap off", kAltered + all},  // the rest of the line is not read
  };
  for (const auto& row : cases) {
    dir_.write("login.sql", row.profile);
    const Result result = spool({}, "SQLPATH=/nowhere:$PWD");
    EXPECT_EQ(0, result.status);
    EXPECT_EQ(row.spooled, dir_.read("spool.out")) << row.profile;
    const bool isRefused = row.profile.find("set xyz") != std::string::npos;
    EXPECT_EQ(isRefused,
              result.output.find("SP2-0158: unknown SET option \"xyz\"") != std::string::npos)
        << result.output;
  }
}

TEST_F(Sqlplus, LaysOutPagesAndReportsWhatItDoesNotUnderstand) {
  const std::string x80(80, 'x'), dashes = std::string(80, '-') + "\n";
  load("one\t2024-01-01\ntwo\t2024-01-01\n" + x80 + "x\t2024-01-01\n");
  const std::string select = "select handle from rc_backup_piece", blank = padded("");
  const std::string head = "\n" + padded("HANDLE") + dashes, two = padded("one") + padded("two");
  const std::string last = x80 + "\n" + padded("x") + blank + "\n", page = head + two + last;
  const std::string none = "ORA-00933: SQL command not properly ended\n\n\n";
  const struct {
    std::string script, spooled;
    int status = 0;
  } cases[] = {
      {select + ";", page},
      {"set pagesize 6\n" + select + ";", page},
      {"set pagesize 5\n" + select + ";", head + two + head + last},
      {"set pages 5 recsep ea lin 100\ncol handle for a9 tru hea 'Long heading'\n" + select + ";",
       "\n" + padded("Long head", 100) + "---------" + std::string(91, ' ') + "\n" +
           padded("one", 100) + padded("", 100) + "\n" + padded("Long head", 100) + "---------" +
           std::string(91, ' ') + "\n" + padded("two", 100) + padded("", 100) + "\n" +
           padded("Long head", 100) + "---------" + std::string(91, ' ') + "\n" +
           padded("xxxxxxxxx", 100) + padded("", 100) + "\n"},
      {"set heading off\n" + select + ";", "\n" + two + last},
      {"set markup csv on\n" + select + ";",
       "\n\"HANDLE\"\n\"one\"\n\"two\"\n\"" + x80 + "x\"\n\n"},
      {"set sqlt ! null \"y\nSelect Handle\n From RC_Backup_Piece\t!\nexit 3", page, 3},
      {select + "\n\nset recsep off\n" + select + "\n/",
       head + two + x80 + "\n" + padded("x") + "\n"},
      {"select handle\nfrom rc_backup_piece x\n/",
       "from rc_backup_piece x\n                     *\nERROR at line 2:\n" + none},
      {"select name from x;",
       "select name from x\n       *\nERROR at line 1:\nORA-00904: invalid identifier\n\n\n"},
      {"alter session set NLS_DATE_FORMAT='DD' x;", "alter session set NLS_DATE_FORMAT='DD' x\n" +
                                                        std::string(39, ' ') +
                                                        "*\nERROR at line 1:\n" + none},
      {"prompt  a  b ;\nrem set wrap off\n--x\n\ndrop table pieces;",
       "a  b\nSP2-0734: unknown command beginning \"drop table...\" - rest of line ignored.\n"},
      {"set", "SP2-0281: set missing set option\n"},
      {"set wrap x", "SP2-0265: wrap must be set ON or OFF\n"},
      {"set pagesize x", "SP2-0268: pagesize option not a valid number\n"},
      {"set lin 32768", "SP2-0267: linesize option 32768 out of range (1 through 32767)\n"},
      {"set recsep x", "SP2-0158: unknown SET recsep option \"x\"\n"},
      {"set markup html on", "SP2-0158: unknown SET markup option \"html\"\n"},
      {"set markup csv x", "SP2-0265: markup csv must be set ON or OFF\n"},
      {"set wr off", "SP2-0158: unknown SET option \"wr\"\n"},
      {"column handle format n9", "SP2-0246: Illegal FORMAT string \"n9\"\n"},
      {"column handle format a0", "SP2-0246: Illegal FORMAT string \"a0\"\n"},
      {"column handle bold", "SP2-0158: unknown COLUMN option \"bold\"\n"},
  };
  for (const auto& row : cases) {
    dir_.write("script.sql", "rman/rman@rcat\nspool spool.out\n" + row.script);
    EXPECT_EQ(row.status, run("'" SQLPLUS "' -L -S @script.sql").status) << row.script;
    EXPECT_EQ(row.spooled, dir_.read("spool.out")) << row.script;
  }
}

TEST_F(Sqlplus, ReadsTheSitesProfileBeforeTheUsers) {
  load("short\t2024-01-01\n");
  dir_.write("home/sqlplus/admin/glogin.sql", "set feedback 1\nset timing on\nset echo on");
  dir_.write("a/login.sql", "set feedback off");
  dir_.write("b/login.sql", "set null b");
  const std::string timed = "Elapsed: 00:00:00.", row = padded("short") + "\n";
  const struct {
    std::string environment, shown, hidden;
  } cases[] = {
      {"", row, timed},
      {"ORACLE_HOME=$PWD/home", row + "1 row selected.\n\n" + timed, "no rows"},
      {"ORACLE_HOME=$PWD/home", kAltered + timed, "no rows"},
      {"ORACLE_HOME=$PWD/home", "\nSQL> quit\n", "no rows"},
      {"ORACLE_HOME=$PWD/home SQLPATH=$PWD/a", row + timed, "row selected"},
      {"SQLPATH=$PWD/a:$PWD/b", row, "altered"},
      {"SQLPATH=$PWD/b ORACLE_PATH=$PWD/a", row, "altered"},
      {"SQLPATH=$PWD/a ORACLE_PATH=$PWD/b", row, "no rows"},
  };
  for (const auto& [environment, shown, hidden] : cases) {
    spool({}, environment);
    const std::string spooled = dir_.read("spool.out");
    EXPECT_NE(std::string::npos, spooled.find(shown)) << environment << "\n" << spooled;
    EXPECT_EQ(std::string::npos, spooled.find(hidden)) << environment << "\n" << spooled;
  }
}

TEST_F(Sqlplus, SpeaksTheLanguageAndWritesTheCharacterSetOfNlsLang) {
  const std::string accents(79, 'a');
  load(
      "gr\xC3\xB6\xC3\x9F"
      "e\xE2\x82\xAC\t2024-01-01\n" +
      accents + "\xC3\xA9z\t2024-01-01\n");
  const std::string utf8 = padded(
                               "gr\xC3\xB6\xC3\x9F"
                               "e\xE2\x82\xAC",
                               84) +
                           accents + "\xC3\xA9\n" + padded("z") + "\n";
  const std::string ascii = padded("gr??e?") + accents + "?\n" + padded("z") + "\n";
  const std::string latin1 = padded(
                                 "gr\xF6\xDF"
                                 "e?") +
                             accents + "\xE9\n" + padded("z") + "\n";
  const struct {
    std::string nlsLang, altered, rows, count;
  } cases[] = {
      {"", "Session altered.", utf8, "2 rows selected."},
      {"AMERICAN", "Session altered.", utf8, "2 rows selected."},
      {"american_america.us7ascii", "Session altered.", ascii, "2 rows selected."},
      {"GERMAN_GERMANY.AL32UTF8", "Session geändert.", utf8, "2 Zeilen ausgewählt."},
      {"German_Austria", "Session geändert.", utf8, "2 Zeilen ausgewählt."},
      {"GERMAN.US7ASCII", "Session ge?ndert.", ascii, "2 Zeilen ausgew?hlt."},
      {"FRENCH_FRANCE.UTF8", "Session modifiée.", utf8, "2 lignes sélectionnées."},
      {".WE8ISO8859P1", "Session altered.", latin1, "2 rows selected."},
  };
  dir_.write("login.sql", "set feedback 1");
  for (const auto& row : cases) {
    spool({}, "SQLPATH=$PWD NLS_LANG=" + row.nlsLang);
    EXPECT_EQ("\n" + row.altered + "\n\n" + row.rows + row.count + "\n\n", dir_.read("spool.out"))
        << row.nlsLang;
  }
  spool({.to = "1/1/2023"}, "NLS_LANG=GERMAN");
  EXPECT_TRUE(dir_.read("spool.out").ends_with("\nEs wurden keine Zeilen ausgewählt\n\n"));
  spool({.to = "1/1/2023"}, "NLS_LANG=FRENCH");
  EXPECT_TRUE(dir_.read("spool.out").ends_with("\naucune ligne sélectionnée\n\n"));
  spool({.to = "x"}, "NLS_LANG=FRENCH");
  EXPECT_NE(std::string::npos, dir_.read("spool.out").find("\nERREUR à la ligne 1 :\nORA-01861: "));
  EXPECT_NE(std::string::npos,
            spool({.logon = "x/y"}, "NLS_LANG=GERMAN").output.find("FEHLER:\nORA"));
  const Result unknown = spool({}, "NLS_LANG=AMERICAN.EBCDIC");
  EXPECT_EQ(1, unknown.status);
  EXPECT_NE(std::string::npos, unknown.output.find("ORA-12705: ")) << unknown.output;
}

TEST_F(Sqlplus, SplitsTheLogonAtTheFirstSignsOutsideQuotes) {
  zylstore("catalog add odd --user rman --password 'p@/w'");
  zylstore("catalog add default --user rman --password rman");
  const std::string denied = "ORA-01017", unresolved = "ORA-12154";
  const struct {
    std::string logon, error;
  } cases[] = {
      {"rman/\"p@/w\"@odd", ""},
      {"\"rman\"/\"p@/w\"@ODD", ""},
      {"RMAN/rman", ""},
      {"rman/p@/w@odd", unresolved},
      {"rman/\"p@/w\"@rcat", denied},
      {"rman/rman@odd", denied},
      {"rman/@rcat", "ORA-01005"},
      {"rman@rcat", "ORA-01005"},
      {"rman/rman@none", unresolved},
      {"rman/RMAN@rcat", denied},
      {"rman/rman@../rcat", unresolved},
      {"other/rman@rcat", denied},
  };
  for (const auto& [logon, error] : cases) {
    const Result result = spool({.logon = logon});
    EXPECT_EQ(error.empty() ? 0 : 1, result.status) << logon;
    EXPECT_NE(std::string::npos, result.output.find(error)) << logon << "\n" << result.output;
  }
}

TEST_F(Sqlplus, RefusesWhatItCannotRunOrWrite) {
  dir_.write("full.sql",
             "rman/rman@rcat\nspool /dev/full\nprompt x\nspool off\nspool /none/x\nexit");
  dir_.write("endless.sql", "rman/rman@rcat\nset term off");
  const struct {
    std::string arguments, shown;
    int status;
  } cases[] = {
      {"-V", "SQL*Plus: sandbox edition\n", 0},
      {"-S", "SP2-0306: Invalid option.\nUsage: ", 1},
      {"-x @full.sql", "SP2-0306: Invalid option.\nUsage: ", 1},
      {"@full.sql @full.sql", "SP2-0306: Invalid option.\nUsage: ", 1},
      {"-L @none.sql", "SP2-0310: unable to open file \"none.sql\"\n", 1},
      {"-L @full.sql", "x\nSP2-0308: cannot close spool file\nSP2-0606: Cannot create", 0},
      {"-L @endless.sql", "\nConnected.\n\nSQL> Disconnected", 0},
      {"-S @endless.sql <full.sql", "SQL> x\n", 0},
  };
  for (const auto& [arguments, shown, status] : cases) {
    const Result result = run("'" SQLPLUS "' " + arguments);
    EXPECT_EQ(status, result.status) << arguments;
    EXPECT_NE(std::string::npos, result.output.find(shown)) << arguments << "\n" << result.output;
  }
}

TEST_F(Sqlplus, CountsWhatItShowedWhenItIsInterruptedAndGoesOn) {
  catalog("rcat", "--row-delay 10");
  std::string lines;
  for (int i = 0; i < 1000; ++i) lines += "h" + std::to_string(i) + "\t2024-01-01\n";
  load(lines);
  dir_.write("login.sql", "set echo on");
  const Result result = spool({}, "SQLPATH=$PWD timeout --preserve-status -s INT 0.5");
  EXPECT_EQ(0, result.status);
  const std::string spooled = dir_.read("spool.out");
  std::ptrdiff_t rows = 0;
  while (spooled.find("\n" + padded("h" + std::to_string(rows))) != std::string::npos) ++rows;
  EXPECT_TRUE(rows > 5 && rows < 1000) << spooled;
  const std::string counted = std::to_string(rows) + " rows selected.\n\nSQL> quit\n";
  EXPECT_TRUE(spooled.ends_with(" \n\n" + counted)) << spooled;
}

TEST_F(Sqlplus, FindsAnyBytesInAHandle) {
  load("c:\\x41\t2024-01-01\n");
  load("c:\\x5Cd\\x09\\xfF\\x0d\t2024-01-02T03:04:05\tD\n", "--escapes");
  EXPECT_EQ("c:\\x41\t2024-01-01T00:00:00\tA\nc:\\d\t\xFF\r\t2024-01-02T03:04:05\tD\n",
            zylstore("catalog list rcat"));
  dir_.write("login.sql", "set trimspool on");
  spool({}, "SQLPATH=$PWD");
  EXPECT_EQ(kAltered + "c:\\x41\nc:\\d\t\xFF\r\n\n", dir_.read("spool.out"));
  for (const char* bad : {"\\x4\\t2024-01-01", "\\y\\t2024-01-01", "\\\\\\t2024-01-01"}) {
    const Result result =
        run("printf '" + std::string(bad) + "\\n' | '" ZYLSTORE "' catalog load rcat - --escapes");
    EXPECT_EQ(1, result.status) << bad << result.output;
  }
}

}  // namespace
