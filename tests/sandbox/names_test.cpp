// names_test.cpp: wildcards and dates against tables and slow oracles.
#include "sandbox/names.h"

#include <gtest/gtest.h>

#include <random>

#include "sandbox/dates.h"
#include "sandbox/sqlplus_dates.h"

using namespace sandbox;

namespace {

// The definition itself, as slow as it is plain.
bool matchesByDefinition(std::string_view pattern, std::string_view text) {
  if (pattern.empty()) return text.empty();
  if (pattern[0] == '*')
    return matchesByDefinition(pattern.substr(1), text) ||
           (!text.empty() && matchesByDefinition(pattern, text.substr(1)));
  return !text.empty() && (pattern[0] == '?' || pattern[0] == text[0]) &&
         matchesByDefinition(pattern.substr(1), text.substr(1));
}

std::string randomText(std::mt19937& random, std::string_view letters, size_t longest) {
  std::string text(random() % (longest + 1), ' ');
  for (char& c : text) c = letters[random() % letters.size()];
  return text;
}

}  // namespace

TEST(Wildcards, AgreeWithTheirDefinitionOnRandomTexts) {
  const unsigned seed = 20240115;
  std::mt19937 random(seed);
  int matches = 0;
  for (int i = 0; i < 20000; ++i) {
    const std::string pattern = randomText(random, "ab*?", 6), text = randomText(random, "ab", 7);
    const bool expected = matchesByDefinition(pattern, text);
    ASSERT_EQ(wildcardMatches(pattern, text), expected) << pattern << " " << text << " " << seed;
    matches += expected;
  }
  EXPECT_GT(matches, 1000);
}

TEST(Wildcards, TakeCharactersWholeAndBracketsAsTheyStand) {
  EXPECT_TRUE(wildcardMatches("/?", "/\xC3\xA4"));
  EXPECT_FALSE(wildcardMatches("/??", "/\xC3\xA4"));
  EXPECT_FALSE(wildcardMatches("*??bx",
                               "\xE2\x82\xAC"
                               "bx"));
  EXPECT_TRUE(wildcardMatches("/[a]*", "/[a]b"));
  EXPECT_FALSE(wildcardMatches("/[a]", "/a"));
  EXPECT_FALSE(wildcardMatches("/A", "/a"));
  // A matcher that tries every split would not come back from this one.
  EXPECT_FALSE(wildcardMatches(std::string(60, '*') + "b", std::string(500, 'a')));
  EXPECT_FALSE(wildcardMatches("*a*a*a*a*a*a*a*a*a*a*a*b", std::string(250, 'a')));
}

TEST(Dates, ReadOnlyRealMoments) {
  EXPECT_EQ(parseStamp("2024-02-29"), 20240229000000);
  EXPECT_EQ(parseStamp("1999-12-31T23:59:59"), 19991231235959);
  for (const char* bad : {"", "2023-02-29", "2024-13-01", "2024-00-10", "2024-1-1", "2024-01-01T",
                          "2024-01-01 10:00:00", "2024-01-01T24:00:00", "2024-01-01T10:60:00",
                          "x024-01-01", "2024-01-01T10:00:0x", "2024-01-011"})
    EXPECT_FALSE(parseStamp(bad)) << bad;
}

TEST(Dates, CountDaysOverMonthsLeapYearsAndCenturies) {
  int64_t day = dayNumber(19990101000000);
  for (int i = 0; i < 40000; ++i, ++day) ASSERT_EQ(dayNumber(stampOf(day, 86399)), day);
  EXPECT_EQ(stampOf(dayNumber(20240228000000) + 1, 3661), 20240229010101);
  EXPECT_EQ(stampOf(dayNumber(21000228000000) + 1, 0), 21000301000000);
}

TEST(OracleDates, FollowTheFormatOrNameTheError) {
  const char* format = "MM/DD/YYYY:hh24:mi:ss";
  struct {
    const char* text;
    const char* format;
    const char* expected;
  } const rows[] = {
      {"3/7/2014:00:00:00", format, "2014-03-07T00:00:00"},
      {"12/31/2014:23:59:59", format, "2014-12-31T23:59:59"},
      {"12/31/2014", format, "2014-12-31T00:00:00"},
      {"15-jan-24", "DD-MON-RR", "2024-01-15T00:00:00"},
      {"15-JAN-99", "DD-MON-RR", "1999-01-15T00:00:00"},
      {"0/0/0:00:00:00", format, "ORA-01843"},
      {"2/30/2014:00:00:00", format, "ORA-01839"},
      {"1/32/2014:00:00:00", format, "ORA-01847"},
      {"1/1/0:00:00:00", format, "ORA-01841"},
      {"1/1/2014:24:00:00", format, "ORA-01850"},
      {"1/1/2014:00:60:00", format, "ORA-01851"},
      {"1/1/2014:00:00:61", format, "ORA-01852"},
      {"x/1/2014:00:00:00", format, "ORA-01858"},
      {"1/1/65535:00:00:00", format, "ORA-01861"},
      {"1/1/2014:00:00:00x", format, "ORA-01830"},
      {"1/1", format, "ORA-01840"},
      {"1/1/2014", "MM/DD/QQQQ", "ORA-01821"},
  };
  for (const auto& row : rows) {
    std::string result;
    try {
      result = stampText(parseOracleDate(row.text, row.format));
    } catch (const OracleError& error) {
      result = error.text.substr(0, 9);
    }
    EXPECT_EQ(result, row.expected) << row.text;
  }
}
