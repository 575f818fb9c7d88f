// zylstore_test.cpp: the admin tool run for real: what it refuses, what it loads, what it makes.
#include <map>
#include <sstream>
#include <vector>

#include "tests/sandbox/site.h"

namespace {

class Zylstore : public Site {
 protected:
  // A table's rows by one of its columns, which must tell them apart.
  auto rowsOf(const std::string& command, size_t key) const {
    std::map<std::string, std::vector<std::string>> rows;
    std::istringstream lines(zylstore(command));
    for (std::string line; std::getline(lines, line);) {
      std::istringstream fields(line);
      std::vector<std::string> row;
      for (std::string field; std::getline(fields, field, '\t');) row.push_back(field);
      EXPECT_TRUE(rows.emplace(row.at(key), row).second) << row.at(key);
    }
    return rows;
  }
};

TEST_F(Zylstore, LoadsAllLinesOrNone) {
  zylstore("init");
  zylstore("node ORANODE --password secret");
  const std::string good = "ORANODE\t/f\t/h\t/l\t\t2024-01-01\t1\n";
  const struct {
    std::string line;
    const char* complaint;
  } rows[] = {
      {"ORANODE\t/f\t/h\t/l\t\t2024-01-01", "columns"},
      {"NOBODY\t/f\t/h\t/l\t\t2024-01-01\t1", "NOBODY"},
      {"ORANODE\t/f\t/h\t/" + std::string(256, 'l') + "\t\t2024-01-01\t1", "low-level"},
      {"ORANODE\t/f\t/h\t/l\t\t2023-02-29\t1", "2023-02-29"},
      {"ORANODE\t/f\t/h\t/l\t\t2024-01-01\t-1", "size"},
  };
  for (const auto& row : rows) {
    dir_.write("objects", good + "# comment\n\n" + row.line + "\n" + good);
    const Result result = run("'" ZYLSTORE "' load objects");
    EXPECT_EQ(result.status, 1) << row.line;
    EXPECT_NE(result.output.find("line 4: "), std::string::npos) << result.output;
    EXPECT_NE(result.output.find(row.complaint), std::string::npos) << result.output;
  }
  EXPECT_EQ(run("'" ZYLSTORE "' init").status, 1) << "a store is replaced only when forced";
  EXPECT_EQ(zylstore("list"), "");
  dir_.write("objects", good + "oranode\t/f\t\t/m\tme\t2024-01-01T10:11:12\t7\tinactive,des56\n");
  EXPECT_EQ(zylstore("load objects"), "2 objects loaded\n");
  EXPECT_EQ(zylstore("list"),
            "1\tORANODE\tactive\t-\t/f\t/h\t/l\t2024-01-01T00:00:00\t1\n"
            "2\tORANODE\tinactive\tme\t/f\t-\t/m\t2024-01-01T10:11:12\t7\n");
}

TEST_F(Zylstore, GeneratesExactlyTheOrphansThatWereAskedFor) {
  zylstore("init");
  zylstore("generate --objects 3000 --orphans 77 --seed 5 --catalogs one,two --today 2024-06-15");
  auto pieces = rowsOf("catalog list one", 0);
  const auto one = pieces.size(), two = rowsOf("catalog list two", 0).size();
  pieces.merge(rowsOf("catalog list two", 0));
  const auto objects = rowsOf("list --node ORANODE", 6);
  EXPECT_EQ(objects.size(), 3000u);
  EXPECT_EQ(pieces.size(), 3000u - 77);
  EXPECT_GT(one + two, pieces.size() + 100) << "some handles are in both";
  for (const auto& [handle, piece] : pieces) {
    const auto object = objects.find("/" + handle);
    ASSERT_NE(object, objects.end()) << handle;
    EXPECT_EQ(piece.at(1).substr(0, 10), object->second.at(7).substr(0, 10));
  }
}

TEST_F(Zylstore, GeneratesTheSameForASeedAndAnotherSiteForTheNext) {
  std::vector<std::string> tables;
  for (const std::string seed : {"9", "9", "10"}) {
    zylstore("init --force");
    zylstore("generate --objects 500 --orphans 50 --today 2024-06-15 --seed " + seed);
    tables.push_back(zylstore("list") + zylstore("catalog list rcat"));
    std::filesystem::remove_all(dir_.path("catalogs"));
  }
  EXPECT_EQ(tables[0], tables[1]);
  EXPECT_NE(tables[0], tables[2]);
}

}  // namespace
