// names_test.cpp: wildcards against their own definition.
#include "sandbox/names.h"

#include <gtest/gtest.h>

#include <random>

using sandbox::wildcardMatches;

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

TEST(Wildcards, AgreeWithTheirDefinitionOnRandomTexts) {
  const unsigned seed = 20240115;
  std::mt19937 random(seed);
  for (int i = 0; i < 20000; ++i) {
    const std::string pattern = randomText(random, "ab*?", 6), text = randomText(random, "ab", 7);
    ASSERT_EQ(wildcardMatches(pattern, text), matchesByDefinition(pattern, text))
        << pattern << " " << text << " " << seed;
  }
}

TEST(Wildcards, TakeCharactersWholeAndAnyPatternInTime) {
  EXPECT_TRUE(wildcardMatches("/?", "/\xC3\xA4"));
  EXPECT_FALSE(wildcardMatches("/??", "/\xC3\xA4"));
  EXPECT_FALSE(wildcardMatches("*??zx", "\xE2\x82\xACzx"));
  EXPECT_FALSE(wildcardMatches("/[a]", "/a"));
  // A matcher that tries every split would not come back from this one.
  EXPECT_FALSE(wildcardMatches("*a*a*a*a*a*a*a*a*a*a*a*b", std::string(250, 'a')));
}

}  // namespace
