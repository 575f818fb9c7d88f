// sync_test.cpp: SYNCDB, DELETE and QUERY as a user runs them, on a terminal, against a real store.
#include "tests/flows/site.h"

namespace {

using std::string_literals::operator""s;

constexpr int kLeft = 300;  // the code of a pick list that was left

class Sync : public Site {};

TEST_F(Sync, OffersWhatNeitherOfTwoCatalogsKnowsAndDeletesWhatIsPicked) {
  for (const char* name : {"/known_1", "/shared", "/orphan_a", "/known_2", "/orphan_b"}) {
    object(name);
  }
  catalog("prod", {"known_1", "shared"});
  catalog("test", {"shared", "known_2"});
  zylstore("calls on");
  run({"syncdb", "-numcat=2"});
  dates();
  logon("prod");
  logon("test");
  answer("Command ==>", "2");
  answer("x      2| ", "O");
  answer("Do you want to continue?", "y");
  ASSERT_TRUE(terminal_->expect("       1| "));
  answer("Command ==>", "q");
  ends(kLeft);
  EXPECT_EQ("/known_1 /shared /orphan_a /known_2", stored());
  EXPECT_FALSE(showed("known_1"));
  EXPECT_FALSE(showed("shared"));
  EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(dir_.path("tmp")), {}))
      << "scripts and spool files are gone, the test's own file is there";
  std::string calls = zylstore("calls show"), order;
  for (const char* call : {"SetUp", "InitEx", "QuerySessOptions", "QuerySessInfo", "BeginQuery",
                           "EndQuery", "BeginTxn", "DeleteObj", "EndTxn", "Terminate", "CleanUp"}) {
    const std::size_t at = calls.find(call, order.size());
    EXPECT_NE(std::string::npos, at) << call << " is missing, or too early:\n" << calls;
    if (at != std::string::npos) order = calls.substr(0, at);
  }
}

TEST_F(Sync, TakesTheGermanLetterForYesInGerman) {
  object("/a");
  object("/b");
  option("VEXO_LANGUAGE de_DE.UTF-8");
  run({"delete"});
  answer("Anfangsdatum", "");
  answer("Enddatum", "+0");
  answer("Befehl ==>", "1");
  answer("x      1| ", "o");
  ASSERT_TRUE(terminal_->expect("QRB2580W Die gewählten Sicherungsobjekte"));
  answer("fortfahren?", "y");
  answer("QRB0372E Das ist keine der Antworten J, N", "j");
  answer("       1| ", "q");
  ends(kLeft);
  EXPECT_EQ("/b", stored());
}

TEST_F(Sync, AsksTheControlFilesOfSeveralDatabases) {
  for (const char* name : {"/one", "/two", "/orphan"}) object(name);
  catalog("db1", {"one"}, "target");
  catalog("db2", {"two"}, "target");
  run({"SYNC", "-NOCAT", "-NUMORCINST=2"});
  dates();
  ASSERT_TRUE(terminal_->expect("Database 1: "));
  logon("db1");
  ASSERT_TRUE(terminal_->expect("Database 2: "));
  logon("db2");
  answer("Command ==>", "c");
  ends(kLeft);
  EXPECT_FALSE(showed("oracle/one"));
  EXPECT_FALSE(showed("oracle/two"));
  EXPECT_TRUE(showed("oracle/orphan"));
}

TEST_F(Sync, TakesEveryObjectForAnOrphanWhenTheCatalogIsEmpty) {
  object("/a");
  object("/b");
  catalog("prod", {});
  run({"syncdb"});
  dates();
  logon("prod");
  ASSERT_TRUE(terminal_->expect("QRB2645W Catalog 1 knows no backup piece"));
  answer("Command ==>", "+");  // the message is logged by now
  EXPECT_NE(std::string::npos, errorLog().find("QRB2645W"));
  answer("x      2| ", "o");
  ASSERT_TRUE(terminal_->expect("QRB2580W"));
  ASSERT_TRUE(terminal_->expect("QRB2645W")) << "the doubt comes again";
  answer("Do you want to continue?", "no");
  answer("       2| ", "q");  // no pick is kept
  ends(kLeft);
  EXPECT_EQ("/a /b", stored());
  catalog("db", {}, "target");
  run({"syncdb", "-nocat"});
  dates();
  logon("db");
  ASSERT_TRUE(terminal_->expect("QRB2645W Database 1 knows no backup piece"));
  answer("Command ==>", "q");
  ends(kLeft);
}

TEST_F(Sync, WarnsAboutTheDefaultEndDate) {
  object("/a");
  catalog("prod", {});
  run({"syncdb"});
  dates("", "");
  ASSERT_TRUE(terminal_->expect("QRB2612W"));
  logon("prod");
  answer("Command ==>", "q");
  ends(kLeft);
  EXPECT_NE(std::string::npos, errorLog().find("QRB2612W"));
}

TEST_F(Sync, TakesPasswordsFromAScriptAndInsistsOnAnEndDate) {
  object("/a");
  catalog("prod", {});
  option("VEXO_ENABLESCRIPTINPUT y");
  const auto script = [&](const std::string& answers) {
    dir_.write("answers", answers);
    terminal_ = std::make_unique<sandbox::Terminal>(
        std::vector<std::string>{"/bin/sh", "-c", "vexosync syncdb <answers"}, settings_);
  };
  script("\n+0\nrman\nrman\nprod\n+\no\ny\n");
  ends(kLeft);
  EXPECT_EQ("", stored());
  object("/b");
  script("\n\nrman\nrman\nprod\n+\no\ny\n");
  ends(65535);
  EXPECT_TRUE(showed("QRB2613E"));
  EXPECT_FALSE(showed("user name"));
  EXPECT_EQ("/b", stored());
}

TEST_F(Sync, EndsWithoutAListWhenOracleRefusesThePassword) {
  object("/a");
  catalog("prod", {"a"});
  run({"syncdb"});
  dates();
  logon("prod", "wrong");
  ends(65535);
  EXPECT_TRUE(showed("ORA-01017"));
  EXPECT_TRUE(showed("QRB2533E"));
  EXPECT_FALSE(showed("Command ==>"));
  EXPECT_FALSE(showed("wrong"));
  EXPECT_EQ("/a", stored());
}

// sqlplus ends with status 0 after an error. If that went unnoticed, every object would be an
// orphan.
TEST_F(Sync, EndsWithoutAListWhenTheQueryFailsWithinSqlplus) {
  object("/a");
  catalog("prod", {"a"}, "target");  // has no view of a recovery catalog
  run({"syncdb"});
  dates();
  logon("prod");
  ends(2533);
  EXPECT_TRUE(showed("QRB2642E"));
  EXPECT_TRUE(showed("ORA-00942: table or"));
  EXPECT_NE(std::string::npos, errorLog().find("QRB2642E"));
  EXPECT_FALSE(showed("Command ==>"));
  EXPECT_EQ("/a", stored());
}

TEST_F(Sync, KnowsHandlesThatSqlplusBreaksAtItsLineSize) {
  const std::string deep(200, 'd'), exact(80, 'e');
  for (const std::string& name : {deep, exact}) object("/" + name);
  object("/orphan");
  catalog("prod", {deep, "s1", "s2", "s3", "s4", "s5", exact});
  run({"syncdb"});
  dates();
  logon("prod");
  answer("Command ==>", "q");
  ends(kLeft);
  EXPECT_TRUE(showed("oracle/orphan"));
  EXPECT_FALSE(showed("oracle/ddd"));
  EXPECT_FALSE(showed("oracle/eee"));
}

// A control character could end a line of the script and begin another command.
TEST_F(Sync, AsksAgainForAnAnswerWithAControlCharacter) {
  object("/a");
  catalog("prod", {"a"});
  option("VEXO_ENABLESCRIPTINPUT y");
  dir_.write("answers", "\n+0\nr\x01man\nrman\nrm\0an\nrman\n\tprod\nprod\nq\n"s);
  terminal_ = std::make_unique<sandbox::Terminal>(
      std::vector<std::string>{"/bin/sh", "-c", "vexosync syncdb <answers"}, settings_);
  ends(65535);  // no orphan: the catalog was asked
  EXPECT_TRUE(showed("QRB2648E"));
  EXPECT_TRUE(showed("QRB2599I"));
  EXPECT_TRUE(showed("QRB2695I Oracle knows all objects of these dates (1)"));
  dir_.write("answers", "\n+0\nrman\nrman\n\tprod\n\tprod\n\tprod\nprod\nq\n");
  terminal_ = std::make_unique<sandbox::Terminal>(
      std::vector<std::string>{"/bin/sh", "-c", "vexosync syncdb <answers"}, settings_);
  ends(65535);
  EXPECT_FALSE(showed("QRB2581I")) << "no catalog was asked";
}

TEST_F(Sync, RunsNoCommandThatTmpdirCouldChange) {
  for (const char* name : {"tmp/with blank", "tmp/$(touch ran)", "tmp/a;b"}) {
    settings_.environment["TMPDIR"] = dir_.path(name);
    std::filesystem::create_directories(dir_.path(name));
    run({"syncdb"});
    dates();
    logon("prod");
    ends(2531);
  }
}

TEST_F(Sync, EndsAfterThreeEmptyAnswers) {
  run({"syncdb"});
  dates();
  for (int i = 0; i < 3; ++i) answer("user name: ", "   ");
  ends(65535);
  EXPECT_TRUE(showed("QRB2623E"));
  run({"syncdb"});
  dates();
  answer("user name: ", "rman");
  for (int i = 0; i < 3; ++i) secret("password: ", "");
  ends(65535);
}

TEST_F(Sync, DeletesToTheLastObjectAndLeavesTheEmptyList) {
  for (const char* name : {"/a", "/b", "/c"}) object(name);
  zylstore("limits --max-objects-per-txn 2");
  zylstore("calls on");
  run({"delete"});
  dates();
  answer("Command ==>", "+");
  answer("Command ==>", "O");
  answer("Do you want to continue?", "Y");
  ends(kLeft);
  EXPECT_TRUE(showed("QRB2599I"));
  EXPECT_EQ("", stored());
  const std::string calls = zylstore("calls show");
  std::size_t commits = 0;
  for (std::size_t at = calls.find("EndTxn"); at != calls.npos; at = calls.find("EndTxn", at + 1)) {
    ++commits;
  }
  EXPECT_EQ(3u, commits) << calls;
}

TEST_F(Sync, PrintsTheObjectsOfTheRangeInTheRunsFormats) {
  object("/old", "--date 2025-02-03T22:00:01 --size 1234567 --encryption aes256 --deduplicated");
  object("/older", "--date 2025-02-02T23:59:59");
  object("/new", "--date 2025-02-05T00:00:00");
  option("VEXO_DATE_FMT 4");
  option("VEXO_TIME_FMT 4");
  option("VEXO_NUM_FMT 5");
  run({"query"});
  dates("03.02.2025", "04.02.2025");
  ends(0);
  for (const char* text : {"/marlorc/oracle/old", "03.02.2025 10:00:01P", "1.234.567 bytes",
                           "AES_256BIT", "Compressed:   No", "Deduplicated: Yes"}) {
    EXPECT_TRUE(showed(text)) << text << " is missing in\n" << terminal_->transcript();
  }
  EXPECT_FALSE(showed("older"));
  EXPECT_FALSE(showed("/new"));
  run({"q"});
  dates("01.01.1999", "02.01.1999");
  ends(0);
  EXPECT_TRUE(showed("QRB2599I"));
}

TEST_F(Sync, LeavesThePickListWhenTheTerminalIsTooSmall) {
  object("/a");
  run({"delete"});
  dates();
  ASSERT_TRUE(terminal_->expect("Command ==>"));
  terminal_->resize(10, 100);
  terminal_->send("t\n");
  ends(kLeft);
  EXPECT_TRUE(showed("QRB2530E"));
}

}  // namespace
