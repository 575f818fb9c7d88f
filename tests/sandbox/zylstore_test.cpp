// zylstore_test.cpp: the admin tool run for real: what it refuses, what it loads, what it makes.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

#include "tests/sandbox/site.h"

namespace {

std::vector<std::vector<std::string>> rowsOf(const std::string& table) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    rows.emplace_back();
    for (std::string field; std::getline(fields, field, '\t');) rows.back().push_back(field);
  }
  return rows;
}

// Handles of a catalog with their days of completion.
std::map<std::string, std::string> piecesOf(const Site& site, const std::string& catalog) {
  std::map<std::string, std::string> pieces;
  for (const auto& row : rowsOf(site.zylstore("catalog list " + catalog)))
    EXPECT_TRUE(pieces.emplace(row[0], row[1]).second) << row[0];
  return pieces;
}

}  // namespace

TEST(Zylstore, TellsWhatWasTypedWrongFromWhatCannotBeDone) {
  const Site site;
  site.makeStore();
  const std::string put = "put --node ORANODE --fs /f --ll /l ";
  struct {
    std::string arguments;
    int status;
  } const rows[] = {
      {"", 2},
      {"frobnicate", 2},
      {"list --colour", 2},
      {"list extra", 2},
      {"node X", 2},
      {"node X --password ''", 2},
      {"node X --password", 2},
      {"put --node ORANODE --fs f --ll /l", 2},
      {"put --node ORANODE --fs /f --ll l", 2},
      {put + "--date 2024-02-30", 2},
      {put + "--size -1", 2},
      {put + "--size 99999999999999999999", 2},
      {put + "--encryption rot13", 2},
      {put + "--inactive=yes", 2},
      {"put --node NOBODY --fs /f --ll /l", 1},
      {"init", 1},
      {"list --store /no/such/store.db", 1},
      {"list --store .out", 1},
      {"limits --max-objects-per-txn 65536", 2},
      {"load missing", 1},
      {"catalog add a/b --user u --password p", 2},
      {"catalog add .a --user u --password p", 2},
      {"catalog load nowhere -", 1},
      {"generate --objects 5 --orphans 6", 2},
      {"fault vltEncryptEx 1", 2},
      {"fault EndTxn 0", 2},
      {"fault DeleteObj 54 --reason 1", 2},
      {"fault DeleteObj 70000", 2},
      {"fault --clear --list", 2},
      {"calls maybe", 2},
  };
  for (const auto& row : rows) {
    const auto result = site.tryZylstore(row.arguments);
    EXPECT_EQ(result.status, row.status) << row.arguments;
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1)
        << row.arguments << ": " << result.errors;
  }
  EXPECT_EQ(site.zylstore("--store store.db list"), "");
  EXPECT_EQ(site.zylstore("fault --list"), "");
}

TEST(Zylstore, LoadsAllLinesOrNone) {
  const Site site;
  site.makeStore();
  const std::string good = "ORANODE\t/f\t/h\t/l\t\t2024-01-01\t1\n";
  struct {
    std::string line;
    const char* complaint;
  } const rows[] = {
      {"ORANODE\t/f\t/h\t/l\t\t2024-01-01", "columns"},
      {"NOBODY\t/f\t/h\t/l\t\t2024-01-01\t1", "NOBODY"},
      {"ORANODE\tf\t/h\t/l\t\t2024-01-01\t1", "filespace"},
      {"ORANODE\t/f\t/h\t/" + std::string(256, 'l') + "\t\t2024-01-01\t1", "low-level"},
      {"ORANODE\t/f\t/h\t/l\t\t2024-1-1\t1", "2024-1-1"},
      {"ORANODE\t/f\t/h\t/l\t\t2024-01-01\t-1", "size"},
      {"ORANODE\t/f\t/h\t/l\t\t2024-01-01\t1\tshiny", "shiny"},
  };
  for (const auto& row : rows) {
    site.write("objects", good + "# comment\n\n" + row.line + "\n" + good);
    const auto result = site.tryZylstore("load objects");
    EXPECT_EQ(result.status, 1) << row.line;
    EXPECT_NE(result.errors.find("line 4: "), std::string::npos) << result.errors;
    EXPECT_NE(result.errors.find(row.complaint), std::string::npos) << result.errors;
  }
  EXPECT_EQ(site.zylstore("list"), "");
  site.write("objects", good + "oranode\t/f\t\t/m\tme\t2024-01-01T10:11:12\t7\tinactive,des56\n");
  EXPECT_EQ(site.zylstore("load objects"), "2 objects loaded\n");
  EXPECT_EQ(site.zylstore("list"),
            "1\tORANODE\tactive\t-\t/f\t/h\t/l\t2024-01-01T00:00:00\t1\n"
            "2\tORANODE\tinactive\tme\t/f\t-\t/m\t2024-01-01T10:11:12\t7\n");

  site.zylstore("catalog add rcat --user u --password p");
  site.write("pieces", "h1\t2024-01-01\nh2\tyesterday\n");
  EXPECT_EQ(site.tryZylstore("catalog load rcat pieces").status, 1);
  EXPECT_EQ(site.zylstore("catalog list rcat"), "");
}

TEST(Zylstore, ReplacesAStoreOnlyWhenForced) {
  const Site site;
  site.makeStore();
  site.zylstore("put --node ORANODE --fs /f --ll /l");
  EXPECT_EQ(site.tryZylstore("init").status, 1);
  EXPECT_NE(site.zylstore("list"), "");
  site.zylstore("init --force");
  EXPECT_EQ(site.zylstore("list"), "");
  EXPECT_EQ(site.tryZylstore("put --node ORANODE --fs /f --ll /l").status, 1);
}

TEST(Generate, MakesExactlyTheOrphansThatWereAskedFor) {
  const Site site;
  site.zylstore("init");
  site.zylstore(
      "generate --objects 3000 --orphans 77 --seed 5 --today 2024-06-15 "
      "--catalogs one,two");
  const auto one = piecesOf(site, "one"), two = piecesOf(site, "two");
  std::set<std::string> names;
  size_t orphans = 0, inBoth = 0;
  std::string lastDate;
  for (const auto& row : rowsOf(site.zylstore("list --node ORANODE"))) {
    ASSERT_EQ(row.size(), 9u);
    ASSERT_EQ(row[6].front(), '/');
    const std::string handle = row[6].substr(1);
    EXPECT_TRUE(names.insert(handle).second) << handle;
    EXPECT_LE(lastDate, row[7]);
    lastDate = row[7];
    const bool inOne = one.contains(handle), inTwo = two.contains(handle);
    orphans += !inOne && !inTwo;
    inBoth += inOne && inTwo;
    if (inOne || inTwo) {
      const std::string completed = inOne ? one.at(handle) : two.at(handle);
      EXPECT_EQ(completed.substr(0, 10), row[7].substr(0, 10));
      EXPECT_GE(completed, row[7]);
    }
  }
  EXPECT_EQ(names.size(), 3000u);
  EXPECT_EQ(orphans, 77u);
  EXPECT_EQ(one.size() + two.size(), 3000u - 77 + inBoth);
  EXPECT_GT(inBoth, 100u);
  EXPECT_EQ(lastDate.substr(0, 10), "2024-06-15");
  for (const char* form : {"ORCL_df_", "FINDWH_al_", "c-", "0"})
    EXPECT_TRUE(std::any_of(names.begin(), names.end(), [&](const auto& name) {
      return name.starts_with(form);
    })) << form;
}

TEST(Generate, RepeatsItselfForASeedAndNotForAnother) {
  std::string tables[3];
  const char* const seeds[] = {"9", "9", "10"};
  for (int i = 0; i < 3; ++i) {
    const Site site;
    site.zylstore("init");
    site.zylstore(std::string("generate --objects 500 --orphans 500 --today 2024-06-15 --seed ") +
                  seeds[i]);
    tables[i] = site.zylstore("list") + site.zylstore("catalog list rcat");
  }
  EXPECT_EQ(tables[0], tables[1]);
  EXPECT_NE(tables[0], tables[2]);
}
