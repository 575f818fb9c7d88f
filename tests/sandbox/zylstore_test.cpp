// zylstore_test.cpp: the admin tool run for real: what it makes.
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

}  // namespace
