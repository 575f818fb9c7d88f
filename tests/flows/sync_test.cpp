// sync_test.cpp: SYNCDB, DELETE and QUERY as a user runs them, on a terminal, against a real store.
#include "tests/flows/site.h"

namespace {

using std::tuple, std::string_literals::operator""s;

constexpr int kLeft = 300;  // the code of a pick list that was left

class Sync : public Site {
 protected:
  // SYNCDB with all answers from a file.
  void script(const string& given, int code, const strings& texts = {}) {
    option("VEXO_ENABLESCRIPTINPUT y");
    dir_.write("answers", given);
    run("vexosync syncdb <answers");
    ends(code, texts);
  }
  // The last answers of a command, and out of its list.
  void leaves(const Answers& last, const strings& texts = {}) {
    answers(last);
    ends(kLeft, texts);
  }
};

// Two recovery catalogs, then the control files of two databases.
TEST_F(Sync, OffersWhatNeitherOfTwoCatalogsKnowsAndDeletesWhatIsPicked) {
  objects("/known_1 /shared /orphan_a /known_2");
  zylstore("calls on");
  for (const auto& [command, kind, asked] :
       {tuple("syncdb -numcat=2", "recovery", "Catalog "s),
        {"SYNC -NOCAT -NUMORCINST=2", "target", "Database "}}) {
    objects("/orphan_b");
    catalog("1"s + kind, "known_1 shared", kind);
    catalog("2"s + kind, "shared known_2", kind);
    begin("vexosync "s + command);
    for (const char* number : {"1", "2"}) {
      see(asked + number + ": ");
      logon(string(number) + kind);
    }
    answers({{"Command ==>", "2"}, {"x      2| ", "O"}, {"Do you want to continue?", "y"}});
    leaves({{"       1| ", "q"}}, {"oracle/orphan_a"});
    EXPECT_EQ("/known_1 /shared /orphan_a /known_2", stored());
    EXPECT_FALSE(showed("known_1") || showed("shared") || showed("known_2"));
    // Scripts and spool files are gone, the test's own file is there.
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(dir_.path("tmp")), {}));
  }
  // Calls of the same function in a row count as one.
  const std::regex calls("\\S+\\s+\\S+\\s+vlt(\\w+).*\n(\\S+\\s+\\S+\\s+vlt\\1\\b.*\n)*");
  const string order =
      "SetUp InitEx QuerySessOptions QuerySessInfo BeginQuery GetNextQObj EndQuery "
      "BeginTxn DeleteObj EndTxn Terminate CleanUp ";
  EXPECT_EQ(order + order, std::regex_replace(zylstore("calls show"), calls, "$1 "));
}

TEST_F(Sync, TakesTheGermanLetterForYesInGerman) {
  objects("/a /b");
  option("VEXO_LANGUAGE de_DE.UTF-8");
  run("vexosync delete");
  answers({{"Anfangsdatum", ""}, {"Enddatum", "+0"}, {"Befehl ==>", "1"}, {"x      1| ", "o"}});
  see("QRB2580W Die gewählten Sicherungsobjekte");
  leaves({{"fortfahren?", "y"}, {"keine der Antworten J, N", "j"}, {"       1| ", "q"}});
  EXPECT_EQ("/b", stored());
}

TEST_F(Sync, TakesEveryObjectForAnOrphanWhenTheCatalogIsEmpty) {
  objects("/a /b");
  catalog("prod", "");
  begin("vexosync syncdb", "", "");
  see("QRB2612W");  // today is no good end
  logon("prod");
  see("QRB2645W Catalog 1 knows no backup piece");
  answers({{"Command ==>", "+"}, {"x      2| ", "o"}});
  for (const char* again : {"QRB2580W", "QRB2612W", "QRB2645W"}) see(again);
  leaves({{"Do you want to continue?", "no"}, {"       2| ", "q"}});  // no pick is kept
  EXPECT_TRUE(logged("QRB2612W") && logged("QRB2645W"));
  EXPECT_EQ("/a /b", stored());
  catalog("db", "", "target");
  begin("vexosync syncdb -nocat");
  logon("db");
  leaves({{"Command ==>", "q"}}, {"QRB2645W Database 1 knows no backup piece"});
}

TEST_F(Sync, TakesPasswordsFromAScriptAndInsistsOnAnEndDate) {
  objects("/a");
  catalog("prod", "");
  script("\n\nrman\nrman\nprod\n+\no\ny\n", 65535, {"QRB2613E"});
  EXPECT_FALSE(showed("user name"));
  EXPECT_EQ("/a", stored());
  script("\n+0\nrman\nrman\nprod\n+\no\ny\n", kLeft);
  EXPECT_EQ("", stored());
}

// sqlplus ends with status 0 after an error of a query. If that went unnoticed, every object would
// be an orphan.
TEST_F(Sync, EndsWithoutAListWhenOracleRefusesThePasswordOrTheQuery) {
  objects("/a");
  catalog("prod", "a", "target");  // has no view of a recovery catalog
  for (const auto& [password, code, error, message] :
       {tuple("wrong", 65535, "ORA-01017", "QRB2533E"),
        {"rman", 2533, "ORA-00942: table or", "QRB2642E"}}) {
    begin("vexosync syncdb");
    answers({{"user name: ", "rman"}, {"password: ", "wr\0ng"s}});  // is asked again
    answers({{"password: ", password}, {"connect string", "prod"}});
    ends(code, {error, message});
    EXPECT_TRUE(logged(message)) << message;
    EXPECT_FALSE(showed("Command ==>") || showed("wrong"));
  }
}

// A control character could end a line of the script and begin another command.
TEST_F(Sync, AsksAgainForAnAnswerWithAControlCharacter) {
  objects("/a");
  catalog("prod", "a");
  // No orphan: the catalog was asked.
  script("\n+0\nr\x01man\nrman\nrm\0an\nrman\n\tprod\nprod\nq\n"s, 65535,
         {"QRB2648E", "QRB2599I", "QRB2695I Oracle knows all objects of these dates (1)"});
  script("\n+0\nrman\nrman\n\tprod\n\tprod\n\tprod\nprod\nq\n", 65535);
  EXPECT_FALSE(showed("QRB2581I")) << "no catalog was asked";
}

TEST_F(Sync, RunsNoCommandThatTmpdirCouldChange) {
  for (const char* name : {"tmp/with blank", "tmp/$(touch ran)", "tmp/a;b"}) {
    std::filesystem::create_directories(settings_.environment["TMPDIR"] = dir_.path(name));
    begin("vexosync syncdb");
    logon("prod");
    ends(2531);
    const string lines = beginnings(terminal_->transcript());
    EXPECT_TRUE(lines.ends_with("|Catalog ||QRB2531E|write to||QRB2531E|write to|||")) << lines;
  }
}

TEST_F(Sync, EndsAfterThreeEmptyAnswers) {
  zylstore("calls on");
  for (const bool named : {false, true}) {
    begin("vexosync syncdb");
    if (named) answer("user name: ", "rman");
    for (int i = 0; i < 3; ++i) answer(named ? "password: " : "user name: ", named ? "" : "   ");
    ends(65535, {"QRB2623E"});
  }
  EXPECT_EQ(2u, support::occurrences(zylstore("calls show"), "Terminate")) << "once in each run";
  // Without a terminal nobody can be asked for a password.
  dir_.write("answers", "\n+0\nrman\n");
  run("setsid -w vexosync syncdb <answers");
  ends(65535, {"QRB0003"});
}

TEST_F(Sync, DeletesToTheLastObjectAndLeavesTheEmptyList) {
  objects("/a /b /c");
  zylstore("limits --max-objects-per-txn 2");
  begin("vexosync delete");
  leaves({{"Command ==>", "+"}, {"Command ==>", "O"}, {"Do you want to continue?", "Y"}},
         {"QRB2599I"});
  EXPECT_TRUE(beginnings(terminal_->transcript()).ends_with("|Do you w||QRB2599I||||"));
  EXPECT_EQ("", stored());
}

TEST_F(Sync, PrintsTheObjectsOfTheRangeInTheRunsFormats) {
  objects("/old", "--date 2025-02-03T12:00:01 --size 1234567 --encryption aes256 --deduplicated");
  objects("/older", "--date 2025-02-02T23:59:59");
  objects("/new", "--date 2025-02-05T00:00:00");
  option("VEXO_DATE_FMT 4\nVEXO_TIME_FMT 4\nVEXO_NUM_FMT 5");
  begin("vexosync query", "03.02.2025", "04.02.2025");
  ends(0, {"/marlorc/oracle/old", "03.02.2025 12:00:01P", "1.234.567 bytes", "AES_256BIT",
           "Compressed:   No", "Deduplicated: Yes"});
  EXPECT_FALSE(showed("older") || showed("/new"));
  begin("vexosync q", "01.01.1999", "02.01.1999");
  ends(0, {"QRB2599I"});
}

TEST_F(Sync, LeavesThePickListWhenTheTerminalIsTooSmall) {
  objects("/a");
  begin("vexosync delete");
  see("Command ==>");
  terminal_->resize(10, 100);
  terminal_->send("t\n");
  ends(kLeft, {"QRB2530E"});
}

// What is told to zylstore first, a command, its answers, and the beginning of every line that it
// shows, empty ones included; lines in a row that begin alike count as one.
TEST_F(Sync, ShowsTheseLinesInThisOrder) {
  objects("/a", "--date 2026-03-07T14:05:36");
  objects("/b", "--date 2026-03-07T14:05:37");
  catalog("prod", "a");
  option("VEXO_ENABLESCRIPTINPUT y");
  const string top = "vexosync|Version |(C) 1997||", dates = top + "|Start da||End date|";
  const string item = "Backup o|  Name: |  Owner:|  Backed|  Size: |  Compre|  Encryp|  Dedupl||";
  const string page = "|  Mark: |  Move: |  O dele|Command |",
               first = "Node:  O||        |       1", picked = "Node:  O||        |x      1",
               both = "|       2|        ",
               doubted = "QRB2580W||  Picked|  Oldest|  Newest|  Oracle||";
  const string usage = "|" + top +
                       "Usage: v|  SYNCdb|        |  Query |  DELETE|  HELP  ||  -VEXO_|  -NUMCA|"
                       "  -NOCAT|  -NUMOR|  n: dig||  vexosy|Only obj||||";
  const string sure = dates + "Backup o|" + first + both + page + picked + both + page + doubted;
  const string asked = "QRB2581I||SQL*Plus|";
  const tuple<string, string, string, string> rows[] = {
      {"", "query", "x\n03/08/2026\n03/07/2026\n03/07/2026\n03/07/2026\n",
       top + "|Start da|QRB2525E||Start da|End date||QRB2529E||Start da||End date|" + item + item +
           "Backup o||"},
      {"", "query", "01/01/1999\n01/01/1999\n", dates + "||QRB2599I||||"},
      {"", "syncdb", "03/07/2026\n03/07/2026\n\nrman\nrman\n\tx\nprod\n1 9\nO\nx\nn\nq\n",
       dates + "|Catalog |QRB2623E|||Catalog |QRB2648E||Catalog |" + asked +
           "|Connecte||Disconne|Backup o|" + first + "|        " + page + picked + "|        " +
           page + doubted + "QRB2666W||Do you w|" + first + "|        " + page},
      {"fault DeleteObj 54", "delete", "\n03/07/2026\n1\nO\ny\n", sure + "Do you w|ZYL0054E|||"},
      {"fault EndTxn 2302 --reason 54", "delete", "\n03/07/2026\n1\nO\ny\n",
       sure + "Do you w|ZYL0054E|||"},
      {"fault BeginQuery 2410", "query", "\n03/07/2026\n", dates + "|ZYL2410S|||"},
      {"fault InitEx 51", "query", "", top + "ZYL0051E|||"},
      {"catalog load prod " + dir_.path("both"), "syncdb", "\n+0\nrman\nrman\nprod\n",
       dates + "QRB2665W||Catalog |" + asked + "|Connecte||Disconne|||QRB2599I|||QRB2695I|||"},
      {"", "syncdb", "\n+0\nrman\nno\nprod\n",
       dates + "QRB2665W||Catalog |" + asked + "ERROR:|ORA-0101|||SP2-0751||QRB2533E|||"},
      {"", "synx", "", usage + "QRB0102E|SYNX|||"},
      {"", "delete -nocat", "", usage + "QRB0103E|DELETE|||"},
      {"", "sync -numcat", "", usage + "QRB0105E|||"},
      {"", "sync -numcat=0", "", usage + "QRB2622E|||"},
  };
  dir_.write("both", "a\t2026-03-07\nb\t2026-03-07\n");
  for (const auto& [before, command, given, lines] : rows) {
    dir_.write("answers", given);
    if (!before.empty()) zylstore(before);
    run("unset TERM; vexosync " + command + " <answers >seen 2>&1");
    terminal_->wait(std::chrono::seconds(30));
    EXPECT_EQ(lines, beginnings(dir_.read("seen"))) << command;
  }
}

}  // namespace
