// run_test.cpp: starting and ending the program: help, invalid command lines, missing parts, and
// what the trace holds.
#include <sys/stat.h>

#include "tests/flows/site.h"

namespace {

class Run : public Site {
 protected:
  int count(const std::string& text) const {
    const std::string& all = terminal_->transcript();
    int found = 0;
    for (std::size_t at = all.find(text); at != all.npos; at = all.find(text, at + 1)) ++found;
    return found;
  }
};

TEST_F(Run, ShowsTheHelpOnceAndTheBannerWithIt) {
  run({"HELP"});
  ends(0);
  EXPECT_EQ(1, count("Version 8, Release 1"));
  EXPECT_EQ(1, count("Usage: vexosync"));
  EXPECT_EQ(0, count("QRB0102E"));
}

TEST_F(Run, AnswersCommandsThatItDoesNotRunWithTheHelpAndSuccess) {
  for (const char* command : {"PASSWORD", "SHOWENV", "showversions"}) {
    run({command});
    ends(0);
    EXPECT_EQ(2, count("Version 8, Release 1")) << command;
    EXPECT_EQ(1, count("QRB0102E")) << command;
    EXPECT_EQ(1, count("Usage: vexosync")) << command;
  }
}

TEST_F(Run, SaysWhatIsWrongWithACommandLineAfterTheHelp) {
  const struct {
    std::vector<std::string> arguments;
    int code;
    const char* message;
  } rows[] = {{{}, 12, "QRB0100E"},
              {{"synx"}, 1, "QRB0102E"},
              {{"delete", "-out=x"}, 4, "QRB0103E"},
              {{"syncdb", "-numcat"}, 13, "QRB0105E"},
              {{"syncdb", "-numcat=10"}, 14, "QRB2622E"}};
  for (const auto& row : rows) {
    run(row.arguments);
    ends(row.code);
    const std::size_t help = terminal_->transcript().find("Usage: vexosync");
    EXPECT_NE(std::string::npos, terminal_->transcript().find(row.message, help)) << row.message;
    EXPECT_EQ(1, count("Version 8, Release 1")) << "only the help's banner";
  }
}

TEST_F(Run, ReportsTheOptionsFileInsteadOfABadOption) {
  settings_.environment["VEXO_OPTFILE"] = dir_.path("absent.opt");
  run({"syncdb", "-wrong"});
  ends(2534);
  EXPECT_TRUE(showed("QRB2615E The options file " + dir_.path("absent.opt")));
  EXPECT_TRUE(showed("QRB2534E"));
  EXPECT_TRUE(showed("Usage: vexosync"));
  EXPECT_FALSE(showed("QRB0103E"));
}

TEST_F(Run, EndsIfTheClientLibraryIsMissingOrDoesNotFit) {
  settings_.environment["LD_LIBRARY_PATH"] = dir_.path();
  run({"query"});
  ends(104);
  EXPECT_TRUE(showed("QRB0156E"));
  settings_.environment["LD_LIBRARY_PATH"] = INCOMPLETE_LIBRARY;
  run({"query"});
  ends(104);
  EXPECT_TRUE(showed("QRB0156E"));
  settings_.environment["LD_LIBRARY_PATH"] = WHOLE_LIBRARY;  // reports version 0
  run({"query"});
  ends(2507);
  EXPECT_TRUE(showed("QRB2572E"));
  EXPECT_TRUE(showed("QRB2573E This program needs Version 8, Release 1, Level 13"));
  EXPECT_NE(std::string::npos, errorLog().find("QRB2573E"));
}

TEST_F(Run, ReportsAListingThatCouldNotBeWritten) {
  terminal_ = std::make_unique<sandbox::Terminal>(
      std::vector<std::string>{"/bin/sh", "-c", "vexosync query </dev/null >/dev/full"}, settings_);
  ends(65535);
  EXPECT_TRUE(showed("QRB2654E"));
  EXPECT_FALSE(showed("QRB2599I"));
}

TEST_F(Run, WritesTheTraceLinesThatSupportLooksFor) {
  const std::string trace = dir_.path("run.trc");
  option("VEXO_TRACE_FILE " + trace);
  option("VEXO_TRACE_FLAGS SERVICE PREFIX -PID -TID");
  ::umask(0);
  object("/a");
  run({"query"});
  dates();
  ends(0);
  const std::string text = dir_.read("run.trc");
  struct stat entry;
  ASSERT_EQ(0, ::stat(trace.c_str(), &entry));
  EXPECT_EQ(0600u, entry.st_mode & 0777);
  EXPECT_EQ(0u, text.find("ZYL Trace   123456789012"));
  for (const char* line :
       {"BEGINNING NEW TRACE\n", "      Run Time API Header:  8.1.13.0\n",
        " VEXO_NODE          : ORANODE\n", " vexoSession(): Enter\n",
        ":  vexoProcessCommand(): ENTER\n", " utGetFileList(): Found 'a' on ZYL Server\n",
        " vexoProcessCommand(): EXIT, rc = 0\n", " closeSess(): Exit - OK\n",
        " main(): Exit - OK\n"}) {
    EXPECT_NE(std::string::npos, text.find(line)) << line;
  }
  EXPECT_EQ(std::string::npos, text.find("CLinkedList"));
}

}  // namespace
