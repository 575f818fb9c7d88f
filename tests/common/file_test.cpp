// file_test.cpp: private files in public directories, and input lines.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "common/ut/psfile.h"
#include "common/ut/psterm.h"
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
    EXPECT_TRUE(ut::closeFile(std::move(file)));
    ASSERT_EQ(0, ::chmod(path.c_str(), 0666));
  }
}

TEST(PrivateFile, RefusesWhatSomebodyElseMayHavePlanted) {
  TempDir dir;
  dir.enter();
  dir.write("victim", "precious");
  dir.write("twice", "precious");
  ASSERT_EQ(0, ::symlink("victim", "symlink"));
  ASSERT_EQ(0, ::symlink("made", "dangling"));
  ASSERT_EQ(0, ::link("twice", "hardlink"));
  ASSERT_EQ(0, ::mkfifo("pipe", 0600));
  for (const char* name :
       {"symlink", "dangling", "hardlink", "twice", "pipe", ".", "", "no/file"}) {
    EXPECT_EQ(nullptr, ut::openPrivateFile(name)) << name;
  }
  EXPECT_EQ("precious", dir.read("victim"));
  EXPECT_EQ("precious", dir.read("twice"));
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
      "one\n\ntoo long\nfour\nb\0c\ntwo\r\n\r\nfour\r\nlonger\r\na\rb\n\r\r\nlast\r", 60);
  const ut::FilePtr input(std::fopen(dir.write("input", text).c_str(), "r"));
  using enum ut::ReadResult;
  for (const auto& [wanted, result] : {std::pair("one", kLine),
                                       {"", kLine},
                                       {"too ", kCut},
                                       {"four", kLine},
                                       {"b\x1a"
                                        "c",
                                        kLine},
                                       {"two", kLine},
                                       {"", kLine},
                                       {"four", kLine},  // the line end takes up no space
                                       {"long", kCut},
                                       {"a\rb", kLine},
                                       {"\r", kLine},
                                       {"last", kCut},  // at the end of input it is a character
                                       {"", kEnd},
                                       {"", kEnd}}) {
    char line[5] = "????";
    EXPECT_EQ(result, ut::readLine(input.get(), line, sizeof line)) << wanted;
    EXPECT_STREQ(wanted, line);
  }
}

}  // namespace
