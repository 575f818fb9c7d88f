// catalog_test.cpp: the SQL script, what sqlplus leaves behind, and reading it: every doubt must
// end the query, because a handle that is lost makes a good backup look forgotten.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "common/ut/trace.h"
#include "tests/support/captured.h"
#include "tests/utility/messages.h"
#include "utility/syncdb.h"

namespace {

class Catalog : public WithErrorLog {
 protected:
  void SetUp() override {
    WithErrorLog::SetUp();
    path_.set((dir_.path("bin") + ":" + std::getenv("PATH")).c_str());
    std::snprintf(record_.userName, sizeof record_.userName, "rman");
    std::snprintf(record_.password, sizeof record_.password, "pa'ss \"&@;");
    std::snprintf(record_.connString, sizeof record_.connString, "prod");
    record_.catalogNumber = 3;
    script_ = dir_.path("SQLIx.sql");
    spool_ = dir_.path("SQLOx_3.out");
  }

  // Puts an sqlplus in front that runs these shell lines; the script's path is $script.
  void sqlplus(const std::string& lines) {
    const std::string file = dir_.write(
        "bin/sqlplus", "#!/bin/sh\nscript=${2#@}\necho \"$1\" >" + dir_.path("first") +
                           "\ncp \"$script\" " + dir_.path("seen") + "\n" + lines + "\n");
    ASSERT_EQ(0, ::chmod(file.c_str(), 0755));
  }

  unsigned short query() {
    support::Captured output;
    const unsigned short rc = utQueryCatalog(&record_, script_.c_str(), spool_.c_str(),
                                             ut::makeDate(2015, 1, 1), ut::makeDate(2026, 11, 21));
    shown_ = output.take();
    return rc;
  }
  unsigned short load(dsBPlusTree& tree) {
    dsBPlusTree* pointer = &tree;
    support::Captured output;
    const unsigned short rc = utLoadBTree(spool_.c_str(), &pointer);
    shown_ = output.take();
    return rc;
  }
  static bool holds(dsBPlusTree& tree, const std::string& handle) {
    return tree.SearchItem(const_cast<char*>(handle.c_str()), utFindFilename) != nullptr;
  }

  support::ScopedEnv path_{"PATH", std::getenv("PATH")};
  objCatInfo_s record_ = {};
  std::string script_, spool_, shown_;
};

TEST_F(Catalog, HandsSqlplusThisScriptAndRemovesIt) {
  sqlplus("ls -l \"$script\" | cut -c1-10 >" + dir_.path("mode") + "; echo piece >" + spool_);
  EXPECT_EQ(0, query());
  EXPECT_EQ(
      "rman/pa'ss \"&@;@prod\nspool " + spool_ +
          "\nset term off \nset heading on\nset pagesize 0\nset linesize 80\nset recsep off\n"
          "set sqlterminator on\nalter session set NLS_DATE_FORMAT='MM/DD/YYYY:hh24:mi:ss';\n"
          "select handle from rc_backup_piece where completion_time >='1/1/2015:00:00:00' and "
          "completion_time <='11/21/2026:23:59:59';\nquit\nspool off",
      dir_.read("seen"));
  EXPECT_EQ("-L\n", dir_.read("first"));
  EXPECT_EQ("-rw-------\n", dir_.read("mode"));
  EXPECT_FALSE(std::filesystem::exists(script_)) << "it holds a password";
  EXPECT_EQ("piece\n", dir_.read("SQLOx_3.out"));
  EXPECT_EQ("", shown_);
}

TEST_F(Catalog, NeverRunsAScriptThatWouldBeCut) {
  sqlplus("echo piece >" + spool_);
  const std::size_t rest = [&] {
    EXPECT_EQ(0, query());
    return dir_.read("seen").size() - 4;  // without "prod"
  }();
  std::string connect(1024 - rest, 'c');
  std::snprintf(record_.connString, sizeof record_.connString, "%s", connect.c_str());
  EXPECT_EQ(0, query());
  EXPECT_EQ(1024u, dir_.read("seen").size());
  std::filesystem::remove(dir_.path("seen"));
  connect += 'c';
  std::snprintf(record_.connString, sizeof record_.connString, "%s", connect.c_str());
  EXPECT_EQ(2533, query());
  EXPECT_NE(std::string::npos, shown_.find("QRB2640E The SQL script for catalog 3 ")) << shown_;
  EXPECT_NE(std::string::npos, dir_.read("vexoerror.log").find("QRB2640E"));
  EXPECT_FALSE(dir_.has("seen"));
  EXPECT_FALSE(std::filesystem::exists(script_));
}

TEST_F(Catalog, FailsWhenSqlplusDoesAndLeavesNothingBehind) {
  sqlplus("echo half >" + spool_ + "; exit 1");
  EXPECT_EQ(2533, query());
  EXPECT_NE(std::string::npos, shown_.find("\nQRB2533E"));
  EXPECT_FALSE(std::filesystem::exists(script_));
  EXPECT_FALSE(std::filesystem::exists(spool_));
  path_.set("/nonexistent:/usr/bin:/bin");  // no sqlplus at all
  EXPECT_EQ(2533, query());
}

// sqlplus can end well without having written a line.
TEST_F(Catalog, TakesASpoolFileThatWasNotWrittenForNoAnswer) {
  sqlplus("exit 0");
  EXPECT_EQ(0, query());
  dsBPlusTree tree;
  EXPECT_EQ(2576, load(tree));
  EXPECT_NE(std::string::npos, shown_.find("QRB2576E"));
  sqlplus(": >" + spool_);  // written, and empty: an answer
  EXPECT_EQ(0, query());
  EXPECT_EQ(0, load(tree));
}

TEST_F(Catalog, RefusesWhatSomebodyElsePutInThePlaceOfItsFiles) {
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

TEST_F(Catalog, MakesAnEmptySpoolFileWithoutSqlplusOnATestFlag) {
  sqlplus("echo piece >" + spool_);
  TEST_SYNCDBNORMAN = 1;
  EXPECT_EQ(0, query());
  TEST_SYNCDBNORMAN = 0;
  EXPECT_FALSE(dir_.has("seen"));
  EXPECT_TRUE(std::filesystem::exists(script_));
  dsBPlusTree tree;
  EXPECT_EQ(0, load(tree));
  EXPECT_FALSE(std::filesystem::exists(spool_));
}

TEST_F(Catalog, ReadsTheFirstWordOfEachLine) {
  dir_.write("SQLOx_3.out",
             "\nSession altered.\n\n  first piece\nsecond,x\n\tthird\nfirst\nSessions\n" +
                 std::string(600, 'l') + "\nlast");
  dsBPlusTree tree;
  ASSERT_EQ(0, load(tree));
  for (const std::string& handle :
       {std::string("first"), std::string("second"), std::string("third"), std::string("Sessions"),
        std::string("last"), std::string(512, 'l'), std::string(88, 'l')}) {
    EXPECT_TRUE(holds(tree, handle)) << handle;
  }
  for (const char* other : {"Session", "altered.", "piece", "x", ""}) {
    EXPECT_FALSE(holds(tree, other)) << other;
  }
  EXPECT_FALSE(std::filesystem::exists(spool_));
}

TEST_F(Catalog, FailsOnASpoolFileThatCannotBeRead) {
  ASSERT_EQ(0, ::mkdir(spool_.c_str(), 0700));  // opens for reading, but does not read
  dsBPlusTree tree;
  EXPECT_EQ(2576, load(tree));
}

}  // namespace
