// file_test.cpp: private files in public directories, input lines, and no core files.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#if defined(__linux__)
#include <sys/prctl.h>
#endif

#include <cstdio>
#include <string>

#include "common/ut/psfile.h"
#include "common/ut/psmem.h"
#include "common/ut/psterm.h"
#include "common/ut/sanitized.h"
#include "common/ut/stdinput.h"
#include "tests/support/child.h"
#include "tests/support/tempdir.h"

namespace {

using support::ScopedEnv;
using support::TempDir;

TEST(PrivateFile, IsOursAloneWhateverTheMask) {
  TempDir dir;
  const std::string path = dir.path("file");
  for (int again = 0; again < 2; ++again) {
    const mode_t before = ::umask(0);
    ut::FilePtr file = ut::openPrivateFile(path.c_str());
    ::umask(before);
    ASSERT_NE(nullptr, file);
    struct stat entry = {};
    ASSERT_EQ(0, ::stat(path.c_str(), &entry));
    EXPECT_EQ(0600u, entry.st_mode & 07777) << "looser permissions are tightened";
    EXPECT_EQ(0, entry.st_size) << "the old contents are gone";
    std::fputs("secret", file.get());
    EXPECT_TRUE(ut::closeFile(std::move(file)) && ::chmod(path.c_str(), 0666) == 0);
  }
}

TEST(PrivateFile, RefusesWhatSomebodyElseMayHavePlanted) {
  TempDir dir;
  dir.enter();
  dir.write("victim", "precious");
  dir.write("twice", "precious");
  ASSERT_EQ(0, ::symlink("victim", "symlink") + ::symlink("made", "dangling") +
                   ::link("twice", "hardlink") + ::mkfifo("pipe", 0600));
  for (const char* name :
       {"symlink", "dangling", "hardlink", "twice", "pipe", ".", "", "no/file"}) {
    EXPECT_EQ(nullptr, ut::openPrivateFile(name)) << name;
  }
  EXPECT_EQ("preciousprecious", dir.read("victim") + dir.read("twice"));
  EXPECT_FALSE(dir.has("made"));
}

TEST(TempName, IsNewAndInTheChosenDirectory) {
  TempDir dir;
  const std::string file = dir.write("file", "");
  ScopedEnv wanted("TMPDIR", dir.path().c_str());
  const std::string name = ut::tempName("longprefix");
  EXPECT_EQ(dir.path("longp"), name.substr(0, name.size() - 6));
  EXPECT_NE(ut::tempName("longprefix"), name);
  EXPECT_FALSE(std::filesystem::exists(name)) << "nothing is created";
  for (const char* unusable : {static_cast<const char*>(nullptr), "", "/no/such", file.c_str()}) {
    wanted.set(unusable);
    EXPECT_EQ("/tmp/a", ut::tempName("a").substr(0, 6));
  }
}

TEST(InputLine, IsCutAndItsRestDoesNotBecomeTheNextAnswer) {
  TempDir dir;
  const std::string text(
      "one\n\ntoo long\nfour\nb\0c\ntwo\r\n\r\nfour\r\nlonger\r\na\rb\n\r\r\nlast\r", 56);
  const ut::FilePtr input(std::fopen(dir.write("input", text).c_str(), "r"));
  using enum ut::ReadResult;
  // A line end takes up no space; a CR at the end of input is a character.
  const std::pair<const char*, ut::ReadResult> rows[] = {
      {"one", kLine}, {"", kLine},    {"too ", kCut},  {"four", kLine}, {"b\032c", kLine},
      {"two", kLine}, {"", kLine},    {"four", kLine}, {"long", kCut},  {"a\rb", kLine},
      {"\r", kLine},  {"last", kCut}, {"", kEnd},      {"", kEnd}};
  for (const auto& [wanted, result] : rows) {
    char line[5] = "????";
    EXPECT_EQ(result, ut::readLine(input.get(), line, sizeof line)) << wanted;
    EXPECT_STREQ(wanted, line);
  }
}

TEST(InputLine, IsTheSameThroughTheProgramsOwnBuffer) {
  const auto readAll = [](std::FILE* input) {
    std::string lines;
    char line[6000];
    for (int ends = 0; ends < 2; lines += line + std::string("|")) {
      ends += ut::readLine(input, line, sizeof line) == ut::ReadResult::kEnd ? 1 : 0;
    }
    return lines;
  };
  const std::string longest(5000, 'x');  // longer than that buffer
  for (const std::string& text : {"one\n\n\xff\nlast" + longest, longest + "\nnext\n"}) {
    const TempDir dir;
    const ut::FilePtr input(std::fopen(dir.write("input", text).c_str(), "r"));
    support::inChild([&] {
      ASSERT_NE(nullptr, std::freopen(dir.path("input").c_str(), "r", stdin));
      ut::ownStandardInput();
      EXPECT_EQ(readAll(input.get()), readAll(stdin));
    });
  }
}

TEST(CoreFiles, AreForbiddenWhereverTheyWouldGo) {
  support::inChild([] {
    ut::forbidCoreFiles();
    struct rlimit limit = {1, 1};
    EXPECT_EQ(0, ::getrlimit(RLIMIT_CORE, &limit));
    EXPECT_EQ(0u, limit.rlim_max);
#if defined(__linux__) && !defined(VEXO_ADDRESS_SANITIZER)
    EXPECT_EQ(0, ::prctl(PR_GET_DUMPABLE));
#endif
  });
}

}  // namespace
