// sqlplus_test.cpp: the tool run for real: logon, spool file, errors and their exit status.
#include <gtest/gtest.h>

#include "tests/sandbox/site.h"

namespace {

// The script that the maintenance utility writes, with its parts.
struct Script {
  std::string logon = "rman/rman@rcat";
  std::string view = "rc_backup_piece";
  std::string from = "1/1/2024:00:00:00", to = "12/31/2024:23:59:59";
  std::string spool = "spool.out";

  std::string text() const {
    return logon + "\nspool " + spool +
           "\nset term off \nset heading on\nset pagesize 0\nset linesize 80\nset recsep off\n"
           "set sqlterminator on\nalter session set NLS_DATE_FORMAT='MM/DD/YYYY:hh24:mi:ss';\n"
           "select handle from " +
           view + " where completion_time >='" + from + "' and completion_time <='" + to +
           "';\nquit\nspool off";
  }
};

Site::Result runText(const Site& site, const std::string& text) {
  site.write("script.sql", text);
  return site.run("'" SQLPLUS "' -L @script.sql");
}

Site::Result run(const Site& site, const Script& script) { return runText(site, script.text()); }

void makeCatalog(const Site& site, const std::string& name, const std::string& kind,
                 const std::string& pieces) {
  site.zylstore("catalog add " + name + " --user rman --password rman --kind " + kind);
  site.write("pieces", pieces);
  site.zylstore("catalog load " + name + " pieces");
}

std::string padded(std::string text) {
  text.resize(80, ' ');
  return text + "\n";
}

const char* const kAltered = "\nSession altered.\n\n";

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

TEST(Sqlplus, SpoolsTheHandlesOfTheDateRangeAndShowsNone) {
  const Site site;
  makeCatalog(site, "rcat", "recovery",
              "before\t2023-12-31T23:59:59\nfirst\t2024-01-01\nlast\t2024-12-31T23:59:59\n"
              "after\t2025-01-01\n");
  const auto result = run(site, {});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(site.read("spool.out"), kAltered + padded("first") + padded("last") + "\n");
  EXPECT_FALSE(contains(result.output, "first")) << result.output;
  EXPECT_TRUE(contains(result.output, "SQL*Plus")) << result.output;
}

TEST(Sqlplus, CountsRowsFromSixOnAndSaysWhenThereAreNone) {
  const Site site;
  std::string pieces;
  for (int i = 1; i <= 6; ++i)
    pieces += "h" + std::to_string(i) + "\t2024-0" + std::to_string(i) + "-01\n";
  makeCatalog(site, "rcat", "recovery", pieces);
  Script script;
  run(site, script);
  EXPECT_TRUE(contains(site.read("spool.out"), padded("h6") + "\n6 rows selected.\n\n"));
  script.from = "1/2/2024:00:00:00";
  run(site, script);
  EXPECT_FALSE(contains(site.read("spool.out"), "selected"));
  script.from = script.to = "12/30/2024:00:00:00";
  run(site, script);
  EXPECT_EQ(site.read("spool.out"), std::string(kAltered) + "\nno rows selected\n\n");
}

TEST(Sqlplus, BreaksLongHandlesAtTheLineSize) {
  const Site site;
  const std::string exact(80, 'e'), longer = std::string(80, 'l') + "tail";
  makeCatalog(site, "rcat", "recovery", exact + "\t2024-01-01\n" + longer + "\t2024-01-01\n");
  run(site, {});
  EXPECT_EQ(site.read("spool.out"),
            kAltered + exact + "\n" + std::string(80, 'l') + "\n" + padded("tail") + "\n");
}

TEST(Sqlplus, LaysOutPagesAndSeparatorsByItsDefaults) {
  const Site site;
  makeCatalog(site, "rcat", "recovery",
              "a\t2024-01-01\n" + std::string(12, 'b') + "\t2024-01-01\nc\t2024-01-01\n");
  const auto result = runText(site,
                              "rman/rman@rcat\nset lin 10 pages 7\nset feed 1\n"
                              "select handle\n  from RC_BACKUP_PIECE\n/\nexit 3\n");
  EXPECT_EQ(result.status, 3);
  EXPECT_TRUE(contains(result.output,
                       "\n\nHANDLE\n----------\na\nbbbbbbbbbb\nbb\n\n\nHANDLE\n----------\nc\n\n"
                       "3 rows selected.\n\n"))
      << result.output;
}

TEST(Sqlplus, LogsOnByFirstSlashAndLastSign) {
  const Site site;
  makeCatalog(site, "rcat", "recovery", "h\t2024-01-01\n");
  site.zylstore("catalog add default --user rman --password other");
  site.zylstore("catalog add odd --user rman --password 'a/b@c'");
  struct {
    const char* logon;
    const char* error;
  } const rows[] = {
      {"rman/rman@rcat", nullptr},
      {"RMAN/rman@RCAT", nullptr},
      {"rman/a/b@c@odd", nullptr},
      {"rman/other@", nullptr},
      {"rman/other", nullptr},
      {"rman/rman@rcat as sysdba", nullptr},
      {"rman/RMAN@rcat", "ORA-01017"},
      {"scott/rman@rcat", "ORA-01017"},
      {"rman/@rcat", "ORA-01005"},
      {"rman/rman@nowhere", "ORA-12154"},
      {"rman/rman@../catalogs/rcat", "ORA-12154"},
      {"rman/rman@.rcat", "ORA-12154"},
      {"rman", "SP2-0306"},
  };
  for (const auto& row : rows) {
    Script script;
    script.logon = row.logon;
    const auto result = run(site, script);
    EXPECT_EQ(result.status, row.error == nullptr ? 0 : 1) << row.logon;
    if (row.error == nullptr) continue;
    EXPECT_TRUE(contains(result.output, row.error)) << row.logon << result.output;
    if (std::string(row.error) != "SP2-0306") {
      EXPECT_TRUE(contains(result.output, "ERROR:\nORA-")) << result.output;
      EXPECT_TRUE(contains(result.output, "SP2-0751: Unable to connect")) << result.output;
    }
  }
}

TEST(Sqlplus, EndsWellAfterAFailedStatement) {
  const Site site;
  makeCatalog(site, "rcat", "recovery", "h\t2024-01-01\n");
  makeCatalog(site, "orcl", "target", "h\t2024-01-01\n");
  Script missing;
  missing.view = "v$backup_piece";
  EXPECT_EQ(run(site, missing).status, 0);
  const std::string statement = missing.text().substr(missing.text().find("select handle"));
  const std::string line = statement.substr(0, statement.find(';'));
  EXPECT_EQ(site.read("spool.out"),
            kAltered + line + "\n" + std::string(19, ' ') +
                "*\nERROR at line 1:\nORA-00942: table or view does not exist\n\n\n");
  missing.logon = "rman/rman@orcl";
  EXPECT_EQ(run(site, missing).status, 0);
  EXPECT_TRUE(contains(site.read("spool.out"), padded("h")));
  Script badDate;
  badDate.from = "x/1/2024:00:00:00";
  EXPECT_EQ(run(site, badDate).status, 0);
  EXPECT_TRUE(contains(site.read("spool.out"), "ERROR at line 1:\nORA-01858: "));
}

TEST(Sqlplus, NamesCommandsThatItDoesNotKnowAndGoesOn) {
  const Site site;
  makeCatalog(site, "rcat", "recovery", "h\t2024-01-01\n");
  const auto result = runText(site,
                              "rman/rman@rcat\nspool /no/such/place.out\nset colour on\n"
                              "set linesize 0\nset term maybe\nset serveroutput on\n"
                              "retrieve all the things\nselect * from rc_backup_piece;\n"
                              "select x from rc_backup_piece;\nselect handle from dual\n\n"
                              "drop everything;\nselect handle from rc_backup_piece where "
                              "completion_time >= '01-JAN-24';\n");
  EXPECT_EQ(result.status, 0);
  size_t at = 0;
  for (const char* part :
       {"SP2-0606: Cannot create SPOOL file \"/no/such/place.out\"",
        "SP2-0158: unknown SET option \"colour\"", "SP2-0267: linesize option 0 out of range",
        "SP2-0265: termout must be set ON or OFF",
        "SP2-0734: unknown command beginning \"retrieve a...\" - rest of line ignored.",
        "ORA-00936", "ORA-00904: \"X\": invalid identifier", "ORA-00900", "HANDLE\n", "\nh\n"}) {
    at = result.output.find(part, at);
    ASSERT_NE(at, std::string::npos) << part << "\n" << result.output;
  }
  EXPECT_FALSE(contains(result.output, "ORA-00942")) << "an empty line gives a statement up";
}
