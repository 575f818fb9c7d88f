// file_test.cpp: private files in public directories, input lines, and no core files.
#include <sys/resource.h>
#if defined(__linux__)
#include <sys/prctl.h>
#endif

#include "common/ut/psfile.h"
#include "common/ut/psmem.h"
#include "common/ut/psterm.h"
#include "common/ut/sanitized.h"
#include "common/ut/stdinput.h"
#include "tests/support/child.h"
#include "tests/support/tempdir.h"

namespace {

using std::pair, std::string;

TEST(PrivateFile, IsOursAloneAndNothingThatSomebodyElseMayHavePlanted) {
  support::TempDir dir;
  dir.enter();
  for (const char* name : {"ours", "victim", "twice"}) dir.write(name, "precious");
  ASSERT_EQ(0, ::symlink("victim", "symlink") + ::symlink("made", "dangling") +
                   ::link("twice", "hardlink") + ::mkfifo("pipe", 0600) + ::chmod("ours", 0666));
  for (const char* name : {"symlink", "dangling", "hardlink", "pipe", ".", "", "no/file"}) {
    EXPECT_EQ(nullptr, ut::openPrivateFile(name)) << name;
  }
  EXPECT_EQ("preciousprecious", dir.read("victim") + dir.read("twice"));
  EXPECT_FALSE(dir.has("made"));
  EXPECT_NE(nullptr, ut::openPrivateFile("ours"));
  EXPECT_EQ("", dir.read("ours"));
  EXPECT_EQ(std::filesystem::perms{0600}, std::filesystem::status("ours").permissions());
}

TEST(TempName, IsNewAndInTheChosenDirectory) {
  support::TempDir dir;
  const string file = dir.write("file", "");
  support::ScopedEnv wanted("TMPDIR", dir.path().c_str());
  const string name = ut::tempName("longprefix");
  EXPECT_EQ(dir.path("longp"), name.substr(0, name.size() - 6));
  EXPECT_NE(ut::tempName("longprefix"), name);
  EXPECT_FALSE(std::filesystem::exists(name)) << "nothing is created";
  for (const char* unusable : {static_cast<const char*>(nullptr), "", "/no/such", file.c_str()}) {
    wanted.set(unusable);
    EXPECT_EQ("/tmp/a", ut::tempName("a").substr(0, 6));
  }
}

// From a file, and through the program's own buffer of standard input, which ends between the
// carriage return and the line feed of "one".
TEST(InputLine, IsCutAndItsRestDoesNotBecomeTheNextAnswer) {
  using enum ut::ReadResult;
  const auto readAll = [](std::FILE* input) {
    // A line end takes up no space; a CR at the end of input is a character.
    const pair<const char*, ut::ReadResult> rows[] = {
        {"xxxx", kCut},  {"one", kLine},    {"", kLine},     {"too ", kCut},
        {"four", kLine}, {"b\032c", kLine}, {"two", kLine},  {"", kLine},
        {"four", kLine}, {"long", kCut},    {"a\rb", kLine}, {"\r", kLine},
        {"\xff", kLine}, {"last", kCut},    {"", kEnd},      {"", kEnd}};
    for (const auto& [wanted, result] : rows) {
      char line[5] = "????";
      EXPECT_EQ(result, ut::readLine(input, line, sizeof line)) << wanted;
      EXPECT_STREQ(wanted, line);
    }
  };
  const support::TempDir dir;
  const string text(
      "\none\r\n\ntoo long\nfour\nb\0c\ntwo\r\n\r\nfour\r\nlonger\r\na\rb\n\r\r\n\xff\nlast\r", 60);
  const string path = dir.write("input", string(4091, 'x') + text);
  readAll(ut::FilePtr(std::fopen(path.c_str(), "r")).get());
  support::inChild([&] {
    ASSERT_NE(nullptr, std::freopen(path.c_str(), "r", stdin));
    ut::ownStandardInput();
    readAll(stdin);
  });
}

TEST(CoreFiles, AreForbiddenWhereverTheyWouldGo) {
  support::inChild([] {
    ut::forbidCoreFiles();
    struct rlimit limit = {1, 1};
    EXPECT_EQ(0, ::getrlimit(RLIMIT_CORE, &limit));
    EXPECT_EQ(0u, limit.rlim_max);
#if defined(__linux__)
    EXPECT_TRUE(ut::kSanitized || ::prctl(PR_GET_DUMPABLE) == 0);
#endif
  });
}

}  // namespace
