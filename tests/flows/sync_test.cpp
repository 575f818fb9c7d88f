// sync_test.cpp: SYNCDB, DELETE and QUERY as a user runs them, on a terminal, against a real store.
#include "tests/flows/site.h"

namespace {

using std::string_literals::operator""s;

constexpr int kLeft = 300;  // the code of a pick list that was left

class Sync : public Site {
 protected:
  // SYNCDB with all answers from a file.
  void script(const std::string& answers, int code) {
    option("VEXO_ENABLESCRIPTINPUT y");
    dir_.write("answers", answers);
    shell("vexosync syncdb <answers");
    ends(code);
  }
  // A command up to what follows the dates; and out of its list.
  void begin(const std::vector<std::string>& arguments, const std::string& start = "",
             const std::string& end = "+0") {
    run(arguments);
    dates(start, end);
  }
  void leave() {
    answer("Command ==>", "q");
    ends(kLeft);
  }
};

TEST_F(Sync, OffersWhatNeitherOfTwoCatalogsKnowsAndDeletesWhatIsPicked) {
  objects({"/known_1", "/shared", "/orphan_a", "/known_2", "/orphan_b"});
  catalog("prod", {"known_1", "shared"});
  catalog("test", {"shared", "known_2"});
  zylstore("calls on");
  begin({"syncdb", "-numcat=2"});
  logon("prod");
  logon("test");
  answers({{"Command ==>", "2"}, {"x      2| ", "O"}, {"Do you want to continue?", "y"}});
  answers({{"       1| ", "q"}});
  ends(kLeft);
  EXPECT_EQ("/known_1 /shared /orphan_a /known_2", stored());
  EXPECT_FALSE(showed("known_1") || showed("shared"));
  EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(dir_.path("tmp")), {}))
      << "scripts and spool files are gone, the test's own file is there";
  std::istringstream calls(zylstore("calls show"));
  std::string order;
  for (std::string number, process, call; calls >> number >> process >> call;
       std::getline(calls, call)) {
    if (!order.ends_with(call + " ")) order += call + " ";
  }
  EXPECT_EQ(
      "vltSetUp vltInitEx vltQuerySessOptions vltQuerySessInfo vltBeginQuery vltGetNextQObj "
      "vltEndQuery vltBeginTxn vltDeleteObj vltEndTxn vltTerminate vltCleanUp ",
      order);
}

TEST_F(Sync, TakesTheGermanLetterForYesInGerman) {
  objects({"/a", "/b"});
  option("VEXO_LANGUAGE de_DE.UTF-8");
  run({"delete"});
  answers({{"Anfangsdatum", ""}, {"Enddatum", "+0"}, {"Befehl ==>", "1"}, {"x      1| ", "o"}});
  see("QRB2580W Die gewählten Sicherungsobjekte");
  answers({{"fortfahren?", "y"}, {"keine der Antworten J, N", "j"}, {"       1| ", "q"}});
  ends(kLeft);
  EXPECT_EQ("/b", stored());
}

TEST_F(Sync, AsksTheControlFilesOfSeveralDatabases) {
  objects({"/one", "/two", "/orphan"});
  catalog("db1", {"one"}, "target");
  catalog("db2", {"two"}, "target");
  begin({"SYNC", "-NOCAT", "-NUMORCINST=2"});
  see("Database 1: ");
  logon("db1");
  see("Database 2: ");
  logon("db2");
  answer("Command ==>", "c");
  ends(kLeft);
  EXPECT_FALSE(showed("oracle/one") || showed("oracle/two"));
  EXPECT_TRUE(showed("oracle/orphan"));
}

TEST_F(Sync, TakesEveryObjectForAnOrphanWhenTheCatalogIsEmpty) {
  objects({"/a", "/b"});
  catalog("prod", {});
  begin({"syncdb"}, "", "");
  see("QRB2612W");  // today is no good end
  logon("prod");
  see("QRB2645W Catalog 1 knows no backup piece");
  answers({{"Command ==>", "+"}, {"x      2| ", "o"}});
  for (const char* again : {"QRB2580W", "QRB2612W", "QRB2645W"}) see(again);
  answers({{"Do you want to continue?", "no"}, {"       2| ", "q"}});  // no pick is kept
  ends(kLeft);
  EXPECT_TRUE(logged("QRB2612W") && logged("QRB2645W"));
  EXPECT_EQ("/a /b", stored());
  catalog("db", {}, "target");
  begin({"syncdb", "-nocat"});
  logon("db");
  see("QRB2645W Database 1 knows no backup piece");
  leave();
}

TEST_F(Sync, TakesPasswordsFromAScriptAndInsistsOnAnEndDate) {
  object("/a");
  catalog("prod", {});
  script("\n+0\nrman\nrman\nprod\n+\no\ny\n", kLeft);
  EXPECT_EQ("", stored());
  object("/b");
  script("\n\nrman\nrman\nprod\n+\no\ny\n", 65535);
  EXPECT_TRUE(showed("QRB2613E"));
  EXPECT_FALSE(showed("user name"));
  EXPECT_EQ("/b", stored());
}

// sqlplus ends with status 0 after an error of a query. If that went unnoticed, every object would
// be an orphan.
TEST_F(Sync, EndsWithoutAListWhenOracleRefusesThePasswordOrTheQuery) {
  object("/a");
  catalog("prod", {"a"}, "target");  // has no view of a recovery catalog
  for (const auto& [password, code, error, message] :
       {std::tuple("wrong", 65535, "ORA-01017", "QRB2533E"),
        {"rman", 2533, "ORA-00942: table or", "QRB2642E"}}) {
    syncdb("prod", password);
    ends(code);
    EXPECT_TRUE(showed(error) && showed(message) && logged(message)) << message;
    EXPECT_FALSE(showed("Command ==>") || showed("wrong"));
  }
}

// A control character could end a line of the script and begin another command.
TEST_F(Sync, AsksAgainForAnAnswerWithAControlCharacter) {
  object("/a");
  catalog("prod", {"a"});
  script("\n+0\nr\x01man\nrman\nrm\0an\nrman\n\tprod\nprod\nq\n"s, 65535);
  EXPECT_TRUE(showed("QRB2648E") && showed("QRB2599I"));  // no orphan: the catalog was asked
  EXPECT_TRUE(showed("QRB2695I Oracle knows all objects of these dates (1)"));
  script("\n+0\nrman\nrman\n\tprod\n\tprod\n\tprod\nprod\nq\n", 65535);
  EXPECT_FALSE(showed("QRB2581I")) << "no catalog was asked";
}

TEST_F(Sync, RunsNoCommandThatTmpdirCouldChange) {
  for (const char* name : {"tmp/with blank", "tmp/$(touch ran)", "tmp/a;b"}) {
    settings_.environment["TMPDIR"] = dir_.path(name);
    std::filesystem::create_directories(dir_.path(name));
    syncdb("prod");
    ends(2531);
  }
}

TEST_F(Sync, EndsAfterThreeEmptyAnswers) {
  zylstore("calls on");
  for (const bool named : {false, true}) {
    begin({"syncdb"});
    if (named) answer("user name: ", "rman");
    for (int i = 0; i < 3; ++i) named ? secret("password: ", "") : answer("user name: ", "   ");
    ends(65535);
    EXPECT_TRUE(showed("QRB2623E"));
  }
  EXPECT_EQ(2, countIn(zylstore("calls show"), "Terminate")) << "once in each run";
}

TEST_F(Sync, DeletesToTheLastObjectAndLeavesTheEmptyList) {
  objects({"/a", "/b", "/c"});
  zylstore("limits --max-objects-per-txn 2");
  begin({"delete"});
  answers({{"Command ==>", "+"}, {"Command ==>", "O"}, {"Do you want to continue?", "Y"}});
  ends(kLeft);
  EXPECT_TRUE(showed("QRB2599I"));
  EXPECT_EQ("", stored());
}

TEST_F(Sync, PrintsTheObjectsOfTheRangeInTheRunsFormats) {
  object("/old", "--date 2025-02-03T12:00:01 --size 1234567 --encryption aes256 --deduplicated");
  object("/older", "--date 2025-02-02T23:59:59");
  object("/new", "--date 2025-02-05T00:00:00");
  option("VEXO_DATE_FMT 4\nVEXO_TIME_FMT 4\nVEXO_NUM_FMT 5");
  begin({"query"}, "03.02.2025", "04.02.2025");
  ends(0);
  for (const char* text : {"/marlorc/oracle/old", "03.02.2025 12:00:01P", "1.234.567 bytes",
                           "AES_256BIT", "Compressed:   No", "Deduplicated: Yes"}) {
    EXPECT_TRUE(showed(text)) << text << " is missing in\n" << terminal_->transcript();
  }
  EXPECT_FALSE(showed("older") || showed("/new"));
  begin({"q"}, "01.01.1999", "02.01.1999");
  ends(0);
  EXPECT_TRUE(showed("QRB2599I"));
}

TEST_F(Sync, LeavesThePickListWhenTheTerminalIsTooSmall) {
  object("/a");
  begin({"delete"});
  see("Command ==>");
  terminal_->resize(10, 100);
  terminal_->send("t\n");
  ends(kLeft);
  EXPECT_TRUE(showed("QRB2530E"));
}

}  // namespace
