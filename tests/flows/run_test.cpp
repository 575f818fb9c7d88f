// run_test.cpp: starting and ending the program: help, invalid command lines, missing parts, and
// what the trace holds.
#include <signal.h>

#include <algorithm>

#include "tests/flows/site.h"

namespace {

class Run : public Site {};

TEST_F(Run, AnswersCommandsThatItDoesNotRunWithTheHelpAndSuccess) {
  for (const auto& [command, unknown, language] : {std::tuple("PASSWORD", 1, "EN"),
                                                   {"SHOWENV", 1, "EN"},
                                                   {"showversions", 1, "EN"},
                                                   {"help", 0, "EN"},
                                                   {"help", 0, "DE"}}) {
    option(std::string("VEXO_LANGUAGE ") + language);
    run({command});
    ends(0);
    EXPECT_EQ(1 + unknown, count("Version 8, Release 1")) << command;
    EXPECT_EQ(unknown, count("QRB0102E")) << command;
    EXPECT_EQ(1, count("-NUMORCINSTances=n")) << command;
    EXPECT_TRUE(unknown == 1 || count("\n") <= 23) << "it fits the smallest screen";
  }
}

TEST_F(Run, SaysWhatIsWrongWithACommandLineAfterTheHelp) {
  const struct {
    std::vector<std::string> arguments;
    int code;
    const char* message;
  } rows[] = {{{}, 12, "QRB0100E"},
              {{"synx"}, 1, "QRB0102E"},
              {{"delete", "-out=x\x1b"}, 4, "QRB0103E The option -out=x? is"},
              {{"syncdb", "-numcat"}, 13, "QRB0105E The option -numcat has"},
              {{"syncdb", "-nocat", "-numorcinst=10"},
               14,
               "QRB2622E The number in the option -numorcinst=10 "},
              {{"password", "secret"}, 4, "QRB0103E The option (not shown) is"}};
  for (const auto& row : rows) {
    run(row.arguments);
    ends(row.code);
    const std::size_t help = terminal_->transcript().find("Usage: vexosync");
    EXPECT_NE(std::string::npos, terminal_->transcript().find(row.message, help)) << row.message;
    EXPECT_EQ(1, count("Version 8, Release 1")) << "only the help's banner";
  }
}

TEST_F(Run, EndsIfAFileIsMissingOrDoesNotFit) {
  const std::string none = dir_.path(), incomplete = INCOMPLETE_LIBRARY;
  for (const auto& [directory, reason] :
       {std::pair(none, std::string("incomplete: libApiDS64.so: cannot open")),
        {incomplete,
         "incomplete: " + incomplete + "/libApiDS64.so: undefined symbol: vltUpdateObj"}}) {
    settings_.environment["LD_LIBRARY_PATH"] = directory;
    run({"query"});
    ends(104);
    std::string seen = terminal_->transcript();
    std::erase(seen, '\r');
    std::replace(seen.begin(), seen.end(), '\n', ' ');
    EXPECT_NE(std::string::npos, seen.find(reason)) << seen;
    EXPECT_TRUE(logged(reason)) << errorLog();
  }
  settings_.environment["LD_LIBRARY_PATH"] = WHOLE_LIBRARY;  // reports version 0
  run({"query"});
  ends(2507);
  EXPECT_TRUE(showed("QRB2572E") && logged("QRB2573E"));
  EXPECT_TRUE(showed("QRB2573E This program needs Version 8, Release 1, Level 13"));
  // The options file is reported instead of a bad option.
  settings_.environment["VEXO_OPTFILE"] = dir_.path("absent.opt");
  run({"syncdb", "-wrong"});
  ends(2534);
  EXPECT_TRUE(showed("QRB2615E The options file " + dir_.path("absent.opt")));
  EXPECT_TRUE(showed("QRB2534E") && showed("Usage: vexosync"));
  EXPECT_FALSE(showed("QRB0103E"));
  run({"query"});
  ends(2534);
  EXPECT_FALSE(showed("Usage: vexosync")) << "there is nothing wrong with the command";
}

// The answers are two empty dates. What standard output and error hold is in the files seen and
// errors; the trace must not have taken the place of a descriptor.
TEST_F(Run, StartsAndEndsInOrderWhateverItsDescriptorsAre) {
  option("VEXO_TRACE_FILE " + dir_.path("run.trc"));
  option("VEXO_TRACE_FLAGS SERVICE");
  settings_.unset.push_back("TERM");
  settings_.environment.erase("TERM");
  object("/a");
  dir_.write("answers", "\n+0\n");
  dir_.write("dos", "+-3 \r\n+0\r\n2\r\nq\r\n");
  dir_.write("wrong", "x\n03/07/2026\n03/06/2026\n\n+0\n");
  const std::string lost = "QRB2654E", failed = "vexoProcessCommand() failed";
  const struct {
    const char* command;
    int code;
    std::string seen, errors, traced;  // "" of errors: there are none
    std::string notTraced;
  } rows[] = {
      {"query <answers >seen 2>errors", 0, "oracle/a\n", "", "main(): Exit - OK", failed},
      {"query <&- >seen 2>errors", 0, "oracle/a\n", "", "main(): Exit - OK", failed},
      {"query <answers >&- 2>errors", 65535, "", lost, "not written", "Backup object\n"},
      {"query <answers >seen 2>&-", 0, "oracle/a\n", "", "main(): Exit - OK", failed},
      {"query <&- >&- 2>&-", 65535, "", "", "main(): Exit - rc = 65535", "Backup object\n"},
      {"query <answers >/dev/full 2>errors", 65535, "", lost, "not written", failed},
      {"help >/dev/full 2>errors", 65535, "", lost, "not written", failed},
      {"help >seen 2>errors", 0, "Usage: vexosync", "", "main(): Exit - OK", failed},
      {"synx >&- 2>errors", 1, "", lost, "not written", failed},
      {"query <wrong >seen 2>errors", 0, "QRB2525E", "", "dateParse() failed", failed},
      {"query <wrong >seen 2>errors", 0, "QRB2529E", "", "main(): Exit - OK", failed},
      {"delete <dos >seen 2>errors", 300, "no such entry", "", failed, "dateParse() failed"},
      {"delete <dos | cat >seen", 0, "\n        " + std::string(1016, '-') + "\n", "", failed, "?"},
      // A page at once, another after a second, the next one would come two seconds later.
      {"delete <answers >seen 2>errors & p=$!; sleep 2; kill $p; wait $p; exit $?", 128 + SIGTERM,
       "oracle/a\n", "QRB2691W", "ENTER", failed},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.command);
    for (const char* name : {"seen", "errors", "run.trc"}) std::filesystem::remove(dir_.path(name));
    shell(std::string("vexosync ") + row.command);
    ends(row.code);
    const std::string seen = dir_.read("seen"), errors = dir_.read("errors");
    EXPECT_NE(std::string::npos, seen.find(row.seen)) << seen;
    EXPECT_EQ(std::string::npos, seen.find_first_of("\x1b\r")) << "no codes of a terminal";
    EXPECT_EQ(row.errors, errors.substr(0, 8));
    EXPECT_EQ(row.errors.empty() ? 0 : 1, std::ranges::count(errors, '\n')) << errors;
    const std::string trace = dir_.read("run.trc");
    EXPECT_NE(std::string::npos, trace.find(row.traced)) << trace;
    EXPECT_EQ(std::string::npos, trace.find(row.notTraced)) << trace;
  }
  EXPECT_EQ(3, countIn(dir_.read("seen"), "Command ==>"));
}

TEST_F(Run, NeverEndsAFailureWithSuccess) {
  for (const char* code : {"256", "512"}) {
    zylstore(std::string("fault InitEx ") + code);
    run({"query"});
    ends(255);
  }
}

TEST_F(Run, ShowsItsListOnATerminalThatHasRoomForIt) {
  object("/a");
  const struct {
    std::uint16_t rows, columns;  // of the terminal
    std::size_t dashes;           // below the heading of the list; 0: there is no list
  } rows[] = {{11, 21, 12}, {10, 21, 0}, {11, 20, 0}, {0, 0, 71}, {0, 90, 71}, {30, 0, 71}};
  for (const auto& [height, width, dashes] : rows) {
    settings_.rows = height;
    settings_.columns = width;
    run({"delete"});
    dates();
    if (dashes > 0) answer("Command ==>", "q");
    ends(300);
    EXPECT_EQ(dashes > 0 ? 1 : 0, count("        " + std::string(dashes, '-') + "\r\n"));
    EXPECT_EQ(dashes > 0 ? 0 : 1, count("QRB2530E"));
    EXPECT_EQ(dashes > 0 ? 2 : 1, count("\x1b[H\x1b[J")) << "cleared at the start, and for a page";
  }
}

TEST_F(Run, WritesTheTraceLinesThatSupportLooksFor) {
  option("VEXO_TRACE_FILE " + dir_.path("run.trc"));
  option("VEXO_TRACE_FLAGS SERVICE PREFIX -PID -TID");
  object("/a");
  run({"query"});
  dates();
  ends(0);
  const std::string text = dir_.read("run.trc");
  for (const char* line :
       {"      Run Time API Header:  8.1.13.0\n", " VEXO_NODE          : ORANODE\n",
        " vexoSession(): Enter\n", ":  vexoProcessCommand(): ENTER\n",
        " utGetFileList(): Found 'a' on ZYL Server\n", " vexoProcessCommand(): EXIT, rc = 0\n",
        " closeSess(): Exit - OK\n", " main(): Exit - OK\n"}) {
    EXPECT_NE(std::string::npos, text.find(line)) << line;
  }
  EXPECT_EQ(std::string::npos, text.find("CLinkedList"));
}

}  // namespace
