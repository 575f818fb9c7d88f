// catalog_test.cpp: the SQL script, the file that sqlplus leaves, and reading it. Every doubt must
// end the query, because a handle that is lost makes a good backup look forgotten.
#include <csignal>

#include "common/ut/stdinput.h"
#include "common/ut/strutil.h"
#include "common/ut/trace.h"
#include "tests/support/child.h"
#include "tests/support/memory.h"
#include "tests/support/scripted_api.h"
#include "tests/utility/messages.h"
#include "utility/exchange.h"
#include "utility/syncdb_catalog.h"
#include "utility/syncdb_names.h"
#include "utility/syncdb_reconcile.h"
#include "utility/syncdb_spool.h"

namespace {

namespace fs = std::filesystem;
using std::string, std::pair, std::tuple, std::to_string, support::Step;

// What sqlplus says after so many rows.
string count(const string& n) { return "\n" + n + (n == "1" ? " row" : " rows") + " selected.\n"; }
string times(int n, const string& text) { return n > 0 ? text + times(n - 1, text) : ""; }
string padded(string line) { return line.append(80 - line.size(), ' ') + "\n"; }

// The query's files are "i.sql" and "o_3.out".
class CatalogQuery : public WithErrorLog {
 protected:
  // Puts an sqlplus first in the path that runs these shell lines. $i and $o are its files.
  void sqlplus(const string& lines = "echo piece >$o") {
    const char start[] = "#!/bin/sh\ni=${2#@} o=o_3.out\necho $1 >first\ncp $i seen\n";
    fs::permissions(dir_.write("bin/sqlplus", start + lines), fs::perms::owner_all);
  }
  int query() {
    support::Captured output;
    const int rc = utQueryCatalog(&record_, "i.sql", "o_3.out", ut::makeDate(2015, 1, 1),
                                  ut::makeDate(2026, 11, 21));
    shown_ = output.take();
    return rc;
  }
  int load(const char* path = "o_3.out") {
    dsBPlusTree* pointer = &tree_.emplace();
    support::Captured output;
    const int rc = utLoadBTree(path, &pointer, &answer_);
    shown_ = output.take();
    return rc;
  }
  int loadText(const string& spooled) { return load(dir_.write("o_3.out", spooled).c_str()); }
  // A text of a message was shown and logged; with the empty text, nothing was.
  void expectTold(const string& text) const {
    for (const string& where : {shown_, dir_.read("vexoerror.log")}) {
      EXPECT_TRUE(text.empty() ? where.empty() : where.find(text) != where.npos) << text << where;
    }
  }
  // How many of the query's two files are there.
  int files() const { return dir_.has("i.sql") + dir_.has("o_3.out"); }
  bool holds(string handle) { return tree_->SearchItem(handle.data(), utFindFilename) != nullptr; }

  support::ScopedEnv path_{"PATH", (dir_.path("bin") + ":" + std::getenv("PATH")).c_str()};
  objCatInfo_s record_ = {"r\"m'&; an", "pa'ss \"&@;", "pr;&'\"@d", 0, 3};
  string shown_;
  utility::CatalogAnswer answer_;
  std::optional<dsBPlusTree> tree_;
};

TEST_F(CatalogQuery, HandsSqlplusThisScriptAndRemovesIt) {
  sqlplus("ls -l $i | cut -c1-10 >>first; echo piece >$o");
  EXPECT_EQ(0, support::deeper([&] { return query(); }));
  EXPECT_FALSE(support::inMemory("an/pa'ss")) << "the script's text";
  EXPECT_EQ(
      "r\"m'&; an/pa'ss \"&@;@pr;&'\"@d\nspool o_3.out\nset term off \nset heading on\n"
      "set pagesize 0\nset linesize 80\nset recsep off\nset sqlterminator on\n"
      "alter session set NLS_DATE_FORMAT='MM/DD/YYYY:hh24:mi:ss';\nselect handle from "
      "rc_backup_piece where completion_time >='1/1/2015:00:00:00' and completion_time <="
      "'11/21/2026:23:59:59';\nquit\nspool off",
      dir_.read("seen"));
  EXPECT_EQ("-L\n-rw-------\npiece\n", dir_.read("first") + dir_.read("o_3.out") + shown_);
  EXPECT_FALSE(dir_.has("i.sql")) << "it holds a password";
  TR_ORCLEVEL2 = 1;  // keeps the files
  EXPECT_EQ(0, query());
  EXPECT_EQ(0, load());
  TR_ORCLEVEL2 = 0;
  EXPECT_EQ(2, files());
  sqlplus("exit 1");
  record_.bNoCatalog = 1;
  TEST_SYNCDBNORMAN = 1;  // an empty answer, without sqlplus
  EXPECT_EQ(0, query());
  TEST_SYNCDBNORMAN = 0;
  EXPECT_HOLDS(dir_.read("i.sql"), "select handle from v$backup_piece where");
  EXPECT_EQ(0, load());
  EXPECT_FALSE(dir_.has("o_3.out"));
}

// Two catalogs know three handles, one of them both. When the listing begins, no password is left.
TEST_F(CatalogQuery, OfEachCatalogHasItsOwnFilesAndLeavesNoPassword) {
  sqlplus(
      "o=$(sed -n '2s/^spool //p' $i); echo ${i##*.} ${o##*_} >>names; "
      "printf 'both\\nof%d\\n' $$ >$o");
  const support::ScopedEnv temporary("TMPDIR", dir_.path().c_str());
  support::inChild([&] {
    ut::ownStandardInput();
    static orcObj_t orc = {};
    orc.VEXO_ENABLESCRIPTINPUT[0] = 'y';
    vexoOptionsInfo_t options = {};
    options.numCatalogs = 2;
    support::ScriptedApi api(
        {Step("vltQuerySessInfo").fill<VltSessInfo>([](VltSessInfo&) {
           EXPECT_FALSE(support::inMemory("hidden-4711"));
         }),
         Step("vltBeginQuery"),
         Step("vltGetNextQObj", "*", VLT_RC_MORE_DATA).fill<VltDataBlk>([](VltDataBlk& block) {
           static_cast<VltQryRespBackup*>(block.buffer)->objName.lowLevel[0] = 'x';
         }),
         Step("vltGetNextQObj", "*", VLT_RC_FINISHED), Step("vltEndQuery")});
    support::Captured output;
    const support::FedInput answers("rman\nhidden-4711\n\nrman\nhidden-4711\n\nq\n");
    EXPECT_EQ(300, utSyncZylToRman(&orc, options, {}, {}, 0));
    EXPECT_HOLDS(output.take(), "that Oracle reported (3).");
  });
  EXPECT_EQ("sql 1.out\nsql 2.out\n", dir_.read("names"));
}

TEST_F(CatalogQuery, NeverRunsAScriptThatWouldBeCut) {
  sqlplus();
  EXPECT_EQ(0, query());
  const std::size_t rest = dir_.read("seen").size() - std::strlen(record_.connString);
  ASSERT_TRUE(ut::copyText(record_.connString, string(1024 - rest, 'c')));
  EXPECT_EQ(0, query());
  EXPECT_EQ(1024u, dir_.read("seen").size());
  fs::remove("seen");
  ASSERT_TRUE(ut::copyText(record_.connString, string(1025 - rest, 'c')));
  EXPECT_EQ(2533, query());
  expectTold("QRB2640E The SQL script for Catalog 3 ");
  EXPECT_FALSE(dir_.has("seen") || dir_.has("i.sql"));
}

// Interrupted, sqlplus stops its display and ends well.
TEST_F(CatalogQuery, TakesNoAnswerFromAQueryThatFailsOrIsInterrupted) {
  // The signal that it sends to this program, if not 0, and its status.
  for (const auto& [number, status, message] :
       {tuple("INT", "0", "QRB2660E"), {"QUIT", "0", "QRB2660E"}, {"0", "1", "QRB2533E"}}) {
    dir_.write("vexoerror.log", "");
    const string kill = "kill -" + string(number) + " " + to_string(::getpid());
    sqlplus("trap : INT QUIT; echo half >$o; " + kill + "; exit " + status);
    EXPECT_EQ(2533, query()) << number;
    expectTold(message);
    EXPECT_TRUE(support::occurrences(shown_, "QRB") == 1 && shown_.starts_with("\nQRB")) << shown_;
    EXPECT_EQ(0, files()) << number;
  }
  // The parent may have this program ignore the end of its children.
  std::signal(SIGCHLD, SIG_IGN);
  sqlplus();
  EXPECT_EQ(0, query());
  std::signal(SIGCHLD, SIG_DFL);
  path_.set("/nonexistent:/usr/bin:/bin");  // no sqlplus at all
  EXPECT_EQ(2533, query());
}

// The environment that a profile and the user's language would come from, and nobody's answers.
TEST_F(CatalogQuery, RunsSqlplusInEnglishWithoutTheUsersProfileAndInput) {
  const support::ScopedEnv path("SQLPATH", "/p"), old("ORACLE_PATH", "/p"), sid("SID", "DB");
  sqlplus("echo piece >$o; read x; echo \"$NLS_LANG|${SQLPATH-n}${ORACLE_PATH-n}|$SID|$x\" >is");
  const pair<const char*, string> rows[] = {
      {nullptr, ""},     {"GERMAN_GERMANY.WE8", "AMERICAN_GERMANY.WE8"},
      {"", ""},          {".AL32UTF8", "AMERICAN.AL32UTF8"},
      {"C", "AMERICAN"}, {"_SPAIN", "AMERICAN_SPAIN"},
  };
  for (const auto& [before, after] : rows) {
    const support::ScopedEnv language("NLS_LANG", before);
    const support::FedInput answers("1+\n");
    EXPECT_EQ(0, query());
    EXPECT_EQ(after + "|nn|DB|\n", dir_.read("is"));
  }
}

TEST_F(CatalogQuery, RemovesItsFilesBeforeASignalEndsTheProgram) {
  for (const int number : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, -SIGTERM}) {
    const auto end = [signal = std::abs(number)] {
      const utility::ExchangeGuard guard("i.sql", "o_3.out");
      { const utility::ExchangeGuard nested("/nonexistent", "/nonexistent"); }
      std::raise(signal);
    };
    for (const char* name : {"i.sql", "o_3.out"}) dir_.write(name, "rman/secret");
    TR_ORCLEVEL2 = number < 0;  // keeps them
    EXPECT_EXIT(end(), testing::KilledBySignal(std::abs(number)), "");
    TR_ORCLEVEL2 = 0;
    EXPECT_EQ(number < 0 ? 2 : 0, files()) << number;
  }
}

// sqlplus can end with 0 without having written a line, and there can be another file by then.
TEST_F(CatalogQuery, RejectsAFileThatTheQueryDidNotWrite) {
  dir_.write("other", "keep me\n");
  // The last one is written, and empty: an answer.
  const tuple<const char*, int, const char*> rows[] = {
      {"touch -d2020-01-01 $o", 2533, "QRB2644E"},    {"exit 0", 2533, "QRB2644E"},
      {"rm $o; ln -s other $o", 2533, "QRB2644E"},    {"rm $o; echo piece >$o", 0, ""},
      {"ln -f other $o; touch $o", 2533, "QRB2644E"}, {"rm $o", 2576, "QRB2576E"},
      {"rm $o; mkfifo $o", 2533, "QRB2644E"},         {": >$o", 0, ""},
  };
  for (const auto& [lines, rc, message] : rows) {
    SCOPED_TRACE(lines);
    dir_.write("vexoerror.log", "");
    sqlplus(lines);
    EXPECT_EQ(0, query());
    EXPECT_EQ(rc, load());
    expectTold(message);
    EXPECT_EQ("keep me\n", dir_.read("other"));
    fs::remove("o_3.out");
  }
  EXPECT_EQ(2576, load("/proc/self/mem")) << "opens, and cannot be read";
}

TEST_F(CatalogQuery, RefusesWhatSomebodyElsePutInThePlaceOfItsFiles) {
  dir_.write("precious", "keep me");
  sqlplus();
  for (const string name : {"i.sql", "o_3.out"}) {
    fs::create_symlink("precious", name);
    EXPECT_EQ(2575, query()) << name;
    EXPECT_HOLDS(shown_, "QRB2575E The temporary file " + name);
    EXPECT_EQ("keep me", dir_.read("precious"));
    fs::remove(name);
  }
}

TEST_F(CatalogQuery, VoidsAListingThatIsNotSound) {
  const string six = "a\nb\nc\nd\ne\nf\n", full(80, 'f');
  const pair<const char*, std::vector<string>> rows[] = {
      {"QRB2642E",
       {"ORA-00942: table or view does not exist\n", "SP2-0606:\n", "TNS-12154: x\n", "PLS-1:x\n",
        "ERROR\n\n\n  x\n", six + "ERROR:\n"}},
      {": ORA-01555: snapshot ?too", {six + "  ORA-01555: snapshot \x1btoo old\n" + count("6")}},
      {"\"7 rows selected.\", but 6 handles", {six + count("7")}},
      {"but 6 handles", {six + count("5"), six + count("18446744073709551622")}},
      {"QRB2643E", {"a\nno rows selected\n", count("1")}},
      {"the handle in line 1 fills its line", {full + "\nrest\n" + count("2")}},
      {"the handle in line 2 fills its line", {"a\n" + full + "\n" + full + "\nb\n" + count("3")}},
      {"\"4 rows selected.\", but 2 handles", {"a\n" + full + "\nb\n" + count("4")}},
      {": something without a code", {six + "ERROR at line 1:\nsomething without a code\n"}},
      {"ORA-28001", {"ORA-28001: the password has expired\n" + six}},  // no warning
      {"RMAN-06004", {"see RMAN-06004: no\n" + six}},
      {"see ORA-12", {"see ORA-12: no\n" + six}},
      {"rows will be truncated", {six + "rows will be truncated\n" + count("6")}},
      // Three blank lines: four and two handles that are missing.
      {"but 2 handles", {"a\n\nb\n\n\n" + count("6"), "a\n\nb\n\n\n" + count("4")}},
      {"QRB2649E", {six + "cut", six + string(512, 'l'), string("\0\n", 2) + six}}};
  for (const auto& [message, spools] : rows) {
    for (const string& spool : spools) {
      EXPECT_EQ(2533, loadText(spool)) << spool;
      EXPECT_HOLDS(shown_, message);
      EXPECT_EQ(0, files());
    }
  }
  EXPECT_HOLDS(dir_.read("vexoerror.log"), "QRB2643E");
}

// Handles that the listing holds, and those that it may hold, are known, and they are counted.
TEST_F(CatalogQuery, KnowsEveryHandleThatALineCanMean) {
  const string a(80, 'a'), b(80, 'b'), c = padded("c");
  const string accents = times(80, "\xc3\xa9"), half = times(40, "\xc3\xa9");
  // The spool file, its rows and new handles, and what is known or, with "!", not; each with "|".
  const tuple<string, const char*, string> rows[] = {
      {"\nSession altered.\n\n  first piece\nsecond,x\n\tthird\nfirst\nSessions\n", "3 2",
       "first|second|second,x|third|Sessions|first piece|!Session|!altered.|!piece|!x|!|"},
      {"\nno rows selected\n\n", "0 0", ""},
      {"ERROR:\nORA-28002:\nORA-28011:\n\nORA-:\nORA-1\nxORA-1:\n", "3 3", "ORA-:|ORA-1|xORA-1:|"},
      {a + "\n" + c + padded("d") + count("2"), "2 2", a + "|c|d|" + a + "c|!cd|!" + a + "cd|"},
      {a + "\n" + b + "\n" + c + count("1"), "1 1",
       a + "|" + b + "|" + a + b + "|" + b + "c|" + a + b + "c|"},
      // A blank line and the count end a handle.
      {a + "\n\n" + c + b + "\n" + count("3"), "3 3", a + "|c|" + b + "|!" + a + "c|"},
      {a + "\n" + padded("Session") + count("1"), "1 1", a + "Session|!Session|"},
      // Counted by characters, and by bytes.
      {accents + "\n" + c + half + "\n" + c + count("2"), "2 2", accents + "c|" + half + "c|"},
      {"p1\r\n" + padded("p2").substr(0, 80) + "\r\n" + a + "\r\nend\r\n\n3 rows selected.\r\n",
       "3 3", "p1|p2|p1\r|" + a + "|" + a + "end|"},
      {padded(",p1,") + padded("  p2 , x") + padded("\"p3\"\"q\"") + padded("x ORA-1") + count("4"),
       "4 4", ",p1,|p1|p2|p2 , x|  p2 , x|p3\"q|\"p3\"\"q\"|x ORA-1|!p1,|!p3|!2 , |"},
      // Three pieces without a handle; one that is not counted.
      {padded("") + padded("p1") + "\n" + padded("p2") + "\n" + count("5"), "2 2", "p1|p2|!|"},
      {padded("p1") + "\n" + padded("p2") + padded("p1") + count("3"), "3 2", "p1|p2|"},
      {padded("S_7") + padded("31_1") + padded("x"), "3 3",
       "S_731_1|S_731_1x|31_1x|31_1|S_7 31_1 x|S_7 31_1x|S_731_1 x|!S_7x|"},
      {"SQL> x\nHANDLE it\n" + padded("p1") + count("1") + "3 rows updated.\n", "1 1", "p1|"},
      // Words that end like a code; six lines, too many to be joined uncounted.
      {"a aORA-1 zORA-1 AORA-1 ZORA-1 0ORA-1 9ORA-1 ORA-x\n" + padded("p1") + count("1"), "1 1",
       "p1|a aORA-1 zORA-1 AORA-1 ZORA-1 0ORA-1 9ORA-1 ORA-x|"},
      {"1\n2\n3\n4\n5\n6\n", "6 6", "1|6|!12|!56|"},
      {string(600, 'l') + "\n", "2 2", string(512, 'l') + "|" + string(88, 'l') + "|"}};
  for (const auto& [spool, counts, handles] : rows) {
    SCOPED_TRACE(spool);
    EXPECT_EQ(0, loadText(spool));
    EXPECT_EQ(counts, to_string(answer_.rows) + " " + to_string(answer_.handles) + shown_);
    std::istringstream in(handles);
    for (string name; std::getline(in, name, '|');) {
      const std::size_t unknown = name[0] == '!';
      EXPECT_EQ(unknown == 0, holds(name.substr(unknown))) << name;
    }
  }
}

// A letter that was lost and the longest handle, which the last answer does not have.
TEST_F(CatalogQuery, KeepsWhatTheAnswersOfAllCatalogsWereLike) {
  for (const string sign : {"?", "\xef\xbf\xbd", "\xc2\xbf"}) {
    utility::Knowledge all;
    utility::RunRecord run(utility::ListKind::kOrphans);
    dsBPlusTree tree;
    for (const string& spool : {string(80, 'f') + "\nlost" + sign + "\nx\n", string("x\n")}) {
      EXPECT_EQ(0, takeAnswer(record_, dir_.write("o_3.out", spool).c_str(), &tree, &all, &run));
      EXPECT_TRUE(all.longestHandle == 85 && all.lettersLost) << sign;
    }
  }
}

// Without a row count the answer may be whole or not; with few rows there is none.
TEST_F(CatalogQuery, TellsWhetherTheRowsWereCounted) {
  const string few = "1\n2\n3\n4\n5\n", six = few + "6\n", text = "of a profile\n";
  const string full = string(80, 'f') + "\n";
  // Whether they were counted, whether some may be missing. A full line is two handles, or one;
  // 41 lines can be joined in too many ways; a count may be the profile's.
  const pair<pair<bool, bool>, std::vector<string>> rows[] = {
      {{false, false}, {few, few + times(35, text)}},
      {{false, true}, {six, full + few, six + "\n6 Zeilen ausgewaehlt.\n", few + times(36, text)}},
      {{true, false}, {six + count("6") + "\nSQL> exit\n", count("3") + six + count("6")}}};
  for (const auto& [judged, spools] : rows) {
    for (const string& spool : spools) {
      EXPECT_EQ(0, loadText(spool)) << spool << shown_;
      EXPECT_EQ(judged, pair(answer_.counted, answer_.mayBeIncomplete())) << spool;
      EXPECT_EQ("", shown_);
    }
  }
}

}  // namespace
