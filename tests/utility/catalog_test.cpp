// catalog_test.cpp: the SQL script, the file that sqlplus leaves, and reading it. Every doubt must
// end the query, because a handle that is lost makes a good backup look forgotten.
#include <csignal>
#include <cstring>
#include <optional>
#include <sstream>

#include "common/ut/stdinput.h"
#include "common/ut/strutil.h"
#include "common/ut/trace.h"
#include "tests/support/captured.h"
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

std::string times(int count, const std::string& text) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

class CatalogQuery : public WithErrorLog {
 protected:
  // Puts an sqlplus first in the path that runs these shell lines; the script's path is $script.
  void sqlplus(const std::string& lines) {
    std::filesystem::permissions(
        dir_.write("bin/sqlplus", "#!/bin/sh\nscript=${2#@}\necho \"$1\" >" + dir_.path("first") +
                                      "\ncp \"$script\" " + dir_.path("seen") + "\n" + lines +
                                      "\n"),
        std::filesystem::perms::owner_all);
  }

  unsigned short query() {
    support::Captured output;
    const unsigned short rc = utQueryCatalog(&record_, script_.c_str(), spool_.c_str(),
                                             ut::makeDate(2015, 1, 1), ut::makeDate(2026, 11, 21));
    shown_ = output.take();
    return rc;
  }
  unsigned short load() {
    dsBPlusTree* pointer = &tree_.emplace();
    answer_ = {};
    support::Captured output;
    const unsigned short rc = utLoadBTree(spool_.c_str(), &pointer, &answer_);
    shown_ = output.take();
    return rc;
  }
  unsigned short load(const std::string& spooled) {
    dir_.write("SQLOx_3.out", spooled);
    return load();
  }
  // A text of a message was shown and logged; with the empty text, nothing was.
  void expectTold(const std::string& text) const {
    const std::string log = dir_.read("vexoerror.log");
    const auto told = [&text](const std::string& where) {
      return text.empty() ? where.empty() : where.find(text) != where.npos;
    };
    EXPECT_TRUE(told(shown_) && told(log)) << text << shown_ << log;
  }
  // How many of the query's two files are there.
  int files() const { return dir_.has("SQLIx.sql") + dir_.has("SQLOx_3.out"); }
  bool holds(const std::string& handle) {
    return tree_->SearchItem(const_cast<char*>(handle.c_str()), utFindFilename) != nullptr;
  }

  support::ScopedEnv path_{"PATH", (dir_.path("bin") + ":" + std::getenv("PATH")).c_str()};
  objCatInfo_s record_ = {"r\"m'&; an", "pa'ss \"&@;", "pr;&'\"@d", 0, 3};
  std::string script_ = dir_.path("SQLIx.sql"), spool_ = dir_.path("SQLOx_3.out"), shown_;
  utility::CatalogAnswer answer_;
  std::optional<dsBPlusTree> tree_;
};

TEST_F(CatalogQuery, HandsSqlplusThisScriptAndRemovesIt) {
  sqlplus("ls -l \"$script\" | cut -c1-10 >" + dir_.path("mode") + "; echo piece >" + spool_);
  EXPECT_EQ(0, support::deeper([&] { return query(); }));
  EXPECT_FALSE(support::inMemory("an/pa'ss")) << "the script's text";
  EXPECT_EQ(
      "r\"m'&; an/pa'ss \"&@;@pr;&'\"@d\nspool " + spool_ +
          "\nset term off \nset heading on\nset pagesize 0\nset linesize 80\nset recsep off\n"
          "set sqlterminator on\nalter session set NLS_DATE_FORMAT='MM/DD/YYYY:hh24:mi:ss';\n"
          "select handle from rc_backup_piece where completion_time >='1/1/2015:00:00:00' and "
          "completion_time <='11/21/2026:23:59:59';\nquit\nspool off",
      dir_.read("seen"));
  EXPECT_EQ("-L\n-rw-------\npiece\n",
            dir_.read("first") + dir_.read("mode") + dir_.read("SQLOx_3.out"));
  EXPECT_FALSE(dir_.has("SQLIx.sql")) << "it holds a password";
  EXPECT_EQ("", shown_);
  TR_ORCLEVEL2 = 1;  // keeps the files
  EXPECT_EQ(0, query());
  EXPECT_EQ(0, load());
  TR_ORCLEVEL2 = 0;
  EXPECT_EQ(2, files());
  dir_.write("seen", "not run");
  record_.bNoCatalog = 1;
  TEST_SYNCDBNORMAN = 1;  // an empty answer, without sqlplus
  EXPECT_EQ(0, query());
  TEST_SYNCDBNORMAN = 0;
  EXPECT_EQ("not run", dir_.read("seen"));
  EXPECT_NE(std::string::npos,
            dir_.read("SQLIx.sql").find("select handle from v$backup_piece where"));
  EXPECT_EQ(0, load());
  EXPECT_FALSE(dir_.has("SQLOx_3.out"));
}

// Two catalogs know three handles, one of them both. When the listing begins, no password is left.
TEST_F(CatalogQuery, OfEachCatalogHasItsOwnFilesAndLeavesNoPassword) {
  sqlplus("spool=$(sed -n '2s/^spool //p' $script); echo $script $spool >>" + dir_.path("names") +
          "; printf 'shared\\nof%d\\n' $$ >$spool");
  const support::ScopedEnv temporary("TMPDIR", dir_.path().c_str());
  support::inChild([&] {
    ut::ownStandardInput();
    static orcObj_t orc = {};
    orc.VEXO_ENABLESCRIPTINPUT[0] = 'y';
    vexoOptionsInfo_t options = {};
    options.numCatalogs = 2;
    using support::Step;
    support::ScriptedApi api(
        {Step("vltQuerySessInfo").fill<VltSessInfo>([](VltSessInfo&) {
           EXPECT_FALSE(support::inMemory("hidden-4711"));
         }),
         Step("vltBeginQuery"),
         Step("vltGetNextQObj", "*", VLT_RC_MORE_DATA).fill<VltDataBlk>([](VltDataBlk& block) {
           auto& object = *static_cast<VltQryRespBackup*>(block.buffer);
           object.insDate = {2026, 3, 7, 8, 5, 9};
           object.objName.lowLevel[0] = 'x';
         }),
         Step("vltGetNextQObj", "*", VLT_RC_FINISHED), Step("vltEndQuery")});
    const nfDate day = ut::makeDate(2026, 3, 7);
    support::Captured output;
    const support::FedInput answers("rman\nhidden-4711\n\nrman\nhidden-4711\n\nq\n");
    EXPECT_EQ(300, utSyncZylToRman(&orc, options, day, day, 0));
    shown_ = output.take();
    EXPECT_NE(std::string::npos, shown_.find("that Oracle reported (3).")) << shown_;
  });
  std::istringstream names(dir_.read("names"));
  for (const char* end : {"_1.out", "_2.out"}) {
    std::string script, spool;
    names >> script >> spool;
    EXPECT_TRUE(script.ends_with(".sql") && spool.ends_with(end)) << script << " " << spool;
  }
}

TEST_F(CatalogQuery, NeverRunsAScriptThatWouldBeCut) {
  sqlplus("echo piece >" + spool_);
  EXPECT_EQ(0, query());
  const std::size_t rest = dir_.read("seen").size() - std::strlen(record_.connString);
  ASSERT_TRUE(ut::copyText(record_.connString, std::string(1024 - rest, 'c')));
  EXPECT_EQ(0, query());
  EXPECT_EQ(1024u, dir_.read("seen").size());
  std::filesystem::remove(dir_.path("seen"));
  ASSERT_TRUE(ut::copyText(record_.connString, std::string(1025 - rest, 'c')));
  EXPECT_EQ(2533, query());
  expectTold("QRB2640E The SQL script for Catalog 3 ");
  EXPECT_FALSE(dir_.has("seen") || dir_.has("SQLIx.sql"));
}

// Interrupted, sqlplus stops its display and ends well.
TEST_F(CatalogQuery, TakesNoAnswerFromAQueryThatFailsOrIsInterrupted) {
  const std::string self = std::to_string(::getpid()) + "; exit 0";
  for (const auto& [end, message] : {std::pair(std::string("exit 1"), "QRB2533E"),
                                     {"trap : INT; kill -INT " + self, "QRB2660E"},
                                     {"trap : QUIT; kill -QUIT " + self, "QRB2660E"}}) {
    dir_.write("vexoerror.log", "");
    sqlplus("echo half >" + spool_ + "; " + end);
    EXPECT_EQ(2533, query()) << end;
    expectTold(message);
    EXPECT_EQ(1u, support::occurrences(shown_, "QRB")) << shown_;
    EXPECT_TRUE(shown_.starts_with(std::string("\n") + message)) << "a line of its own: " << shown_;
    EXPECT_EQ(0, files()) << end;
  }
  // The parent may have this program ignore the end of its children.
  std::signal(SIGCHLD, SIG_IGN);
  sqlplus("echo piece >" + spool_);
  EXPECT_EQ(0, query());
  std::signal(SIGCHLD, SIG_DFL);
  path_.set("/nonexistent:/usr/bin:/bin");  // no sqlplus at all
  EXPECT_EQ(2533, query());
}

// The environment that a profile and the user's language would come from, and nobody's answers.
TEST_F(CatalogQuery, RunsSqlplusInEnglishWithoutTheUsersProfileAndInput) {
  support::ScopedEnv path1("SQLPATH", "/profiles"), path2("ORACLE_PATH", "/profiles");
  support::ScopedEnv other("ORACLE_SID", "ORCL");
  sqlplus("echo piece >" + spool_ + "; read -r line; echo \"$NLS_LANG|${SQLPATH-none}|" +
          "${ORACLE_PATH-none}|$ORACLE_SID|$line\" >" + dir_.path("environment"));
  for (const auto& [before, after] :
       {std::pair<const char*, std::string>(nullptr, ""),
        {"", ""},
        {"GERMAN_GERMANY.WE8ISO8859P15", "AMERICAN_GERMANY.WE8ISO8859P15"},
        {".AL32UTF8", "AMERICAN.AL32UTF8"},
        {"_SPAIN", "AMERICAN_SPAIN"},
        {"JAPANESE", "AMERICAN"}}) {
    support::ScopedEnv language("NLS_LANG", before);
    support::FedInput answers("1+\n");
    EXPECT_EQ(0, query());
    EXPECT_EQ(after + "|none|none|ORCL|\n", dir_.read("environment"));
  }
}

TEST_F(CatalogQuery, RemovesItsFilesBeforeASignalEndsTheProgram) {
  for (const int number : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, -SIGTERM}) {
    const bool kept = number < 0;
    dir_.write("SQLIx.sql", "rman/secret");
    dir_.write("SQLOx_3.out", "piece");
    TR_ORCLEVEL2 = kept ? 1 : 0;
    EXPECT_EXIT(
        {
          const utility::ExchangeGuard guard(script_.c_str(), spool_.c_str());
          { const utility::ExchangeGuard nested("/nonexistent", "/nonexistent"); }
          std::raise(std::abs(number));
        },
        testing::KilledBySignal(std::abs(number)), "");
    TR_ORCLEVEL2 = 0;
    EXPECT_EQ(kept ? 2 : 0, files()) << number;
  }
}

// sqlplus can end with 0 without having written a line, and there can be another file by then.
TEST_F(CatalogQuery, RejectsAFileThatTheQueryDidNotWrite) {
  const std::string other = dir_.write("other", "keep me\n");
  const std::string remove = "rm " + spool_ + "; ";
  const std::tuple<std::string, unsigned short, const char*> rows[] = {
      {"exit 0", 2533, "QRB2644E"},
      {"echo piece >" + spool_ + "; touch -d 2020-01-01 " + spool_, 2533, "QRB2644E"},
      {remove + "ln -s " + other + " " + spool_, 2533, "QRB2644E"},
      {remove + "ln " + other + " " + spool_, 2533, "QRB2644E"},
      {remove + "mkfifo " + spool_, 2533, "QRB2644E"},
      {remove + "mkdir " + spool_, 2533, "QRB2644E"},
      {remove + "echo piece >" + spool_, 0, ""},
      {remove, 2576, "QRB2576E"},
      {": >" + spool_, 0, ""}};  // written, and empty: an answer
  for (const auto& [lines, rc, message] : rows) {
    SCOPED_TRACE(lines);
    dir_.write("vexoerror.log", "");
    sqlplus(lines);
    EXPECT_EQ(0, query());
    EXPECT_EQ(rc, load());
    expectTold(message);
    EXPECT_EQ("keep me\n", dir_.read("other"));
    std::filesystem::remove(spool_);
  }
  spool_ = "/proc/self/mem";  // opens, and cannot be read
  EXPECT_EQ(2576, load());
}

TEST_F(CatalogQuery, RefusesWhatSomebodyElsePutInThePlaceOfItsFiles) {
  const std::string precious = dir_.write("precious", "keep me");
  sqlplus("echo piece >" + spool_);
  for (const std::string& name : {script_, spool_}) {
    ASSERT_EQ(0, ::symlink(precious.c_str(), name.c_str()));
    EXPECT_EQ(2575, query()) << name;
    EXPECT_NE(std::string::npos, shown_.find("QRB2575E The temporary file " + name)) << shown_;
    EXPECT_EQ("keep me", dir_.read("precious"));
    ::unlink(name.c_str());
  }
}

TEST_F(CatalogQuery, VoidsAListingThatIsNotSound) {
  const std::string many = "a\nb\nc\nd\ne\nf\n", full(80, 'f');
  const std::pair<std::string, const char*> rows[] = {
      {"ORA-00942: table or view does not exist\n", "QRB2642E"},
      {many + "  ORA-01555: snapshot \x1btoo old\n\n6 rows selected.\n",
       ": ORA-01555: snapshot ?too"},
      {"SP2-0606:\n", "QRB2642E"},
      {"TNS-12154: x\n", "QRB2642E"},
      {"PLS-1:x\n", "QRB2642E"},
      {many + "\n7 rows selected.\n", "\"7 rows selected.\", but 6 handles"},
      {many + "\n5 rows selected.\n", "QRB2643E"},
      {many + "\n18446744073709551622 rows selected.\n", "QRB2643E"},
      {"a\n\nno rows selected\n", "QRB2643E"},
      {"\n1 row selected.\n", "QRB2643E"},
      {full + "\nrest\n\n2 rows selected.\n", "the handle in line 1 fills its line"},
      {"a\n" + full + "\n" + full + "\nb\n\n3 rows selected.\n",
       "the handle in line 2 fills its line"},
      {"a\n" + full + "\nb\n\n4 rows selected.\n", "\"4 rows selected.\", but 2 handles"},
      {many + "ERROR at line 1:\nsomething without a code\n", ": something without a code"},
      {"ERROR\n\n\n  ORA-1: x\n", "QRB2642E"},
      {many + "ERROR:\n", "QRB2642E"},
      {"ORA-28001: the password has expired\n" + many, "ORA-28001"},  // no warning
      {"see RMAN-06004: no\n" + many, "RMAN-06004"},
      {many + "rows will be truncated\n\n6 rows selected.\n", "rows will be truncated"},
      {"a\n\nb\n\n\n\n6 rows selected.\n", "but 2 handles"},  // three blank ones, four missing
      {many + "cut", "QRB2649E"},
      {many + std::string(512, 'l'), "QRB2649E"},
      {std::string("b\0c\n", 4) + many, "QRB2649E"},
      {std::string("\0\n", 2) + many, "QRB2649E"},
  };
  for (const auto& [spool, message] : rows) {
    EXPECT_EQ(2533, load(spool)) << spool;
    EXPECT_NE(std::string::npos, shown_.find(message)) << spool << shown_;
    EXPECT_EQ(0, files());
  }
  EXPECT_NE(std::string::npos, dir_.read("vexoerror.log").find("QRB2643E"));
}

// Handles that the listing holds, and those that it may hold, are known, and they are counted.
TEST_F(CatalogQuery, KnowsEveryHandleThatALineCanMean) {
  const auto padded = [](const std::string& line) {
    return line + std::string(80 - line.size(), ' ') + "\n";
  };
  const std::string a(80, 'a'), b(80, 'b'), c = padded("c"), count = "\n1 row selected.\n";
  const std::string accents = times(80, "\xc3\xa9");
  // The spool file, its rows and new handles, what is known and what is not, each with "|".
  const std::array<std::string, 4> rows[] = {
      {"\nSession altered.\n\n  first piece\nsecond,x\n\tthird\nfirst\nSessions\n", "3 2",
       "first|second|second,x|third|Sessions|first piece|", "Session|altered.|piece|x||"},
      {padded("p1") + padded("p2") + padded("p1") + "\n3 rows selected.\n", "3 2", "p1|p2|", ""},
      {"\nno rows selected\n\n", "0 0", "", ""},
      {"ERROR:\nORA-28002: it will expire\nORA-28011: soon\n\nORA-x:\n" + count, "1 1", "ORA-x:|",
       ""},
      {"ORA-12\nxORA-1:\n", "2 2", "ORA-12|xORA-1:|", ""},
      {a + "\n" + c + padded("d") + "\n2 rows selected.\n", "2 2", a + "|c|d|" + a + "c|",
       "cd|" + a + "cd|"},
      {a + "\n" + b + "\n" + c + count, "1 1",
       a + "|" + b + "|" + a + b + "|" + b + "c|" + a + b + "c|", ""},
      {padded("d") + a + "\n\n2 rows selected.\n", "2 2", a + "|d|", ""},
      {a + "\n\n" + c + "\n2 rows selected.\n", "2 2", a + "|c|", a + "c|"},  // the blank ends it
      {a + "\n" + padded("Session") + count, "1 1", a + "Session|", "Session|"},
      {accents + "\n" + c + count, "1 1", accents + "c|", ""},
      {"p1\r\n" + padded("p2").substr(0, 80) + "\r\n" + a + "\r\nend\r\n\n3 rows selected.\r\n",
       "3 3", "p1|p2|p1\r|" + a + "|" + a + "end|", ""},
      {padded(",p1,") + padded("  p2 , x") + padded("\"p3\"\"q\"") + "\n3 rows selected.\n", "3 3",
       ",p1,|p1|p2|p2 , x|  p2 , x|p3\"q|\"p3\"\"q\"|", "p1,|p3|"},
      {padded("") + padded("p1") + "\n" + padded("p2") + "\n\n5 rows selected.\n", "2 2", "p1|p2|",
       "|"},  // three pieces without a handle
      {padded("p1") + "\n" + padded("p2") + "\n2 rows selected.\n", "2 2", "p1|p2|", ""},
      {padded("SALES_df_7") + padded("31_1") + padded("x"), "3 3",
       "SALES_df_731_1|SALES_df_731_1x|31_1x|31_1|SALES_df_7 31_1 x|SALES_df_7 31_1x|"
       "SALES_df_731_1 x|",
       "SALES_df_7x|"},
      {padded("see ORA-1 below") + count, "1 1", "see ORA-1 below|", ""},  // padded: a handle
      {"SQL> set x\nHANDLE of it\n" + padded("p1") + count, "1 1", "p1|", ""},
      {"see xORA-1 x\n", "0 0", "see xORA-1 x|", ""},
      {times(40, "\xc3\xa9") + "\n" + c + count, "1 1", times(40, "\xc3\xa9") + "c|",
       ""},  // by bytes
      {std::string(600, 'l') + "\n", "2 2",
       std::string(512, 'l') + "|" + std::string(88, 'l') + "|", ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(0, load(row[0])) << row[0] << shown_;
    EXPECT_EQ(row[1], std::to_string(answer_.rows) + " " + std::to_string(answer_.handles))
        << row[0];
    for (const bool known : {true, false}) {
      std::istringstream handles(row[known ? 2 : 3]);
      for (std::string handle; std::getline(handles, handle, '|');) {
        EXPECT_EQ(known, holds(handle)) << handle;
      }
    }
    EXPECT_EQ("", shown_);
  }
}

// A letter that was lost and the longest handle, which the last answer does not have.
TEST_F(CatalogQuery, KeepsWhatTheAnswersOfAllCatalogsWereLike) {
  for (const char* sign : {"?", "\xef\xbf\xbd", "\xc2\xbf"}) {
    utility::Knowledge knowledge;
    utility::RunRecord run(utility::ListKind::kOrphans);
    dsBPlusTree tree;
    for (const std::string& spool :
         {std::string(80, 'f') + "\nlost" + sign + "\n", std::string("x\n")}) {
      dir_.write("SQLOx_3.out", spool);
      EXPECT_EQ(0, utility::takeAnswer(record_, spool_.c_str(), &tree, &knowledge, &run));
      EXPECT_EQ(std::pair(std::size_t{85}, true),
                std::pair(knowledge.longestHandle, knowledge.lettersLost))
          << sign;
    }
  }
}

// Without a row count the answer may be whole or not; with few rows there is none.
TEST_F(CatalogQuery, TellsWhetherTheRowsWereCounted) {
  const std::string five = "1\n2\n3\n4\n5\n", six = five + "6\n";
  const std::string heading = "of a profile\n";
  const std::tuple<std::string, bool, bool> rows[] = {
      {five, false, false},
      {six, false, true},
      {std::string(80, 'f') + "\n" + five, false, true},  // two handles, or one
      {six + "\n6 Zeilen ausgewaehlt.\n", false, true},
      {five + times(35, heading), false, false},
      {five + times(36, heading), false, true},  // too many ways to join them
      {six + "\n6 rows selected.\n\nSQL> exit\n", true, false},
      {"\n3 rows selected.\n" + six + "\n6 rows selected.\n", true, false},  // of the profile
  };
  for (const auto& [spool, counted, mayBeIncomplete] : rows) {
    EXPECT_EQ(0, load(spool)) << spool << shown_;
    EXPECT_EQ(std::pair(counted, mayBeIncomplete),
              std::pair(answer_.counted, answer_.mayBeIncomplete()))
        << spool;
    EXPECT_EQ("", shown_);
  }
}

}  // namespace
