// run_test.cpp: starting and ending the program: help, invalid command lines, missing parts, and
// what the trace holds.
#include <signal.h>

#include <algorithm>

#include "tests/flows/site.h"

namespace {

using std::string, std::tuple;

class Run : public Site {};

TEST_F(Run, AnswersCommandsThatItDoesNotRunWithTheHelpAndSuccess) {
  for (const auto& [command, unknown, language] : {tuple("PASSWORD", 1, "EN"),
                                                   {"SHOWENV", 1, "EN"},
                                                   {"showversions", 1, "EN"},
                                                   {"help", 0, "EN"},
                                                   {"help", 0, "DE"}}) {
    option(string("VEXO_LANGUAGE ") + language);
    run({command});
    ends(0);
    EXPECT_EQ(1 + unknown, count("Version 8, Release 1")) << command;
    EXPECT_EQ(unknown, count("QRB0102E")) << command;
    EXPECT_EQ(1, count("-NUMORCINSTances=n")) << command;
    EXPECT_TRUE(unknown == 1 || count("\n") <= 23) << "it fits the smallest screen";
  }
}

TEST_F(Run, SaysWhatIsWrongWithACommandLineAfterTheHelp) {
  for (const auto& [arguments, code, message] :
       {tuple("", 12, "QRB0100E"),
        {"synx", 1, "QRB0102E"},
        {"--version -h", 1, "QRB0102E"},
        {"delete -out=x\x1b", 4, "QRB0103E The option -out=x? is"},
        {"syncdb -numcat", 13, "QRB0105E The option -numcat has"},
        {"syncdb -nocat -numorcinst=10", 14, "QRB2622E The number in the option -numorcinst=10 "},
        {"password secret", 4, "QRB0103E The option (not shown) is"}}) {
    shell(string("vexosync ") + arguments);
    ends(code);
    const string seen = terminal_->transcript();
    EXPECT_LT(seen.find("Usage: vexosync"), seen.find(message)) << message;
    EXPECT_TRUE(showed(message)) << message;
    EXPECT_EQ(1, count("Version 8, Release 1")) << "only the help's banner";
  }
}

TEST_F(Run, EndsIfAFileIsMissingOrDoesNotFit) {
  const string none = dir_.path(), incomplete = INCOMPLETE_LIBRARY;
  for (const auto& [directory, reason] :
       {std::pair(none, string("incomplete: libApiDS64.so: cannot open")),
        {incomplete,
         "incomplete: " + incomplete + "/libApiDS64.so: undefined symbol: vltUpdateObj"}}) {
    settings_.environment["LD_LIBRARY_PATH"] = directory;
    run({"query"});
    ends(104);
    string seen = terminal_->transcript();
    std::erase(seen, '\r');
    std::replace(seen.begin(), seen.end(), '\n', ' ');
    EXPECT_NE(string::npos, seen.find(reason)) << seen;
    EXPECT_TRUE(logged(reason)) << errorLog();
  }
  settings_.environment["LD_LIBRARY_PATH"] = WHOLE_LIBRARY;  // reports version 0
  run({"query"});
  ends(2507);
  EXPECT_TRUE(showed("QRB2572E") && logged("QRB2573E"));
  EXPECT_TRUE(showed("QRB2573E This program needs Version 8, Release 1, Level 13"));
  // The options file is reported instead of a bad option; only that needs the help.
  settings_.environment["VEXO_OPTFILE"] = dir_.path("absent.opt");
  for (const auto& [argument, help] : {std::pair("-wrong", true), {"-nocat", false}}) {
    run({"syncdb", argument});
    ends(2534);
    EXPECT_TRUE(showed("QRB2615E The options file " + dir_.path("absent.opt")));
    EXPECT_TRUE(showed("QRB2534E") && !showed("QRB0103E") && !showed("QRB2699I"));
    EXPECT_EQ(help, showed("Usage: vexosync"));
  }
  // What a user tries first, without options file and library.
  settings_.unset.push_back("VEXO_OPTFILE");
  settings_.environment.erase("VEXO_OPTFILE");
  settings_.columns = 240;
  const string agent = BUILD_DIRECTORY "/client/oracle/bin64/vexo.opt";
  for (const auto& [arguments, code, text] :
       {tuple("--version", 0, string("vexosync 8.1.13.0")),
        {"--version >/dev/full; echo = $?", 0, "= 255"},
        {"--help", 0, "Usage: vexosync"},
        {"-h", 0, "Usage: vexosync"},
        {"help", 2534, "QRB2699I The options file is looked for as " + agent + ", unless"},
        {"query", 2534, "  cp " + agent + ".sample " + agent + "\r\n"}}) {
    shell(string("vexosync ") + arguments);
    ends(code);
    EXPECT_TRUE(showed(text)) << arguments << terminal_->transcript();
  }
}

// The answers are two empty dates. What standard output and error hold is in the files seen and
// errors; the trace must not have taken the place of a descriptor.
TEST_F(Run, StartsAndEndsInOrderWhateverItsDescriptorsAre) {
  option("VEXO_TRACE_FILE " + dir_.path("run.trc") + "\nVEXO_TRACE_FLAGS SERVICE PREFIX -PID -TID");
  settings_.unset.push_back("TERM");
  settings_.environment.erase("TERM");
  object("/a");
  dir_.write("answers", "\n+0\n");
  dir_.write("dos", "+-3 \r\n+0\r\n2\r\nq\r\n");
  dir_.write("wrong", "x\n03/07/2026\n03/06/2026\n\n+0\n");
  const string lost = "QRB2654E", failed = "vexoProcessCommand() failed",
               good = "main(): Exit - OK";
  // The command, its code, what is seen, the error (if any), what is traced and what is not.
  for (const auto& [command, code, part, error, traced, notTraced] :
       {tuple("query <answers >seen 2>errors", 0, string("oracle/a\n"), string(), good, failed),
        {"query <&- >seen 2>errors", 0, "oracle/a\n", "", "Found 'a' on ZYL Server\n", failed},
        {"query <answers >&- 2>errors", 65535, "", lost, "not written", "Backup object\n"},
        {"query <answers >seen 2>&-", 0, "oracle/a\n", "", "EXIT, rc = 0\n", failed},
        {"query <&- >&- 2>&-", 65535, "", "", "main(): Exit - rc = 65535", "Backup object\n"},
        {"query <answers >/dev/full 2>errors", 65535, "", lost, "not written", failed},
        {"help >/dev/full 2>errors", 65535, "", lost, "not written", failed},
        {"synx >&- 2>errors", 1, "", lost, "not written", failed},
        {"help >seen 2>errors", 0, "Usage: vexosync", "", good, failed},
        {"query <wrong >seen 2>errors", 0, "QRB2525E", "", "dateParse() failed", failed},
        {"query <wrong >seen 2>errors", 0, "QRB2529E", "", "Run Time API Header:  8.1.13.0\n",
         "CLinkedList"},
        {"delete <dos >seen 2>errors", 300, "no such entry", "", failed, "dateParse() failed"},
        {"delete <dos | cat >seen", 0, "\n        " + string(1016, '-') + "\n", "", failed, good},
        // A page at once, another after a second, the next one would come two seconds later.
        {"delete <answers >seen 2>errors & p=$!; sleep 2; kill $p; wait $p; exit $?", 128 + SIGTERM,
         "oracle/a\n", "QRB2691W", "ENTER", failed}}) {
    SCOPED_TRACE(command);
    for (const char* name : {"seen", "errors", "run.trc"}) std::filesystem::remove(dir_.path(name));
    shell(string("vexosync ") + command);
    ends(code);
    const string seen = dir_.read("seen"), errors = dir_.read("errors");
    EXPECT_NE(string::npos, seen.find(part)) << seen;
    EXPECT_EQ(string::npos, seen.find_first_of("\x1b\r")) << "no codes of a terminal";
    EXPECT_EQ(error, errors.substr(0, 8));
    EXPECT_EQ(error.empty() ? 0 : 1, std::ranges::count(errors, '\n')) << errors;
    const string trace = dir_.read("run.trc");
    EXPECT_NE(string::npos, trace.find(traced)) << trace;
    EXPECT_EQ(string::npos, trace.find(notTraced)) << trace;
  }
  EXPECT_EQ(3, countIn(dir_.read("seen"), "Command ==>"));
}

TEST_F(Run, NeverEndsAFailureWithSuccess) {
  for (const char* code : {"256", "512"}) {
    zylstore(string("fault InitEx ") + code);
    run({"query"});
    ends(255);
  }
}

TEST_F(Run, ShowsItsListOnATerminalThatHasRoomForIt) {
  object("/a");
  // The size of the terminal, and the dashes below the heading of the list; 0: there is no list.
  using Size = std::uint16_t;
  for (const auto& [height, width, dashes] :
       {tuple(Size{11}, Size{21}, 12u), {11, 20, 0}, {10, 21, 0}, {0, 90, 71}, {30, 0, 71}}) {
    settings_.rows = height;
    settings_.columns = width;
    run({"delete"});
    dates();
    if (dashes > 0) answer("Command ==>", "q");
    ends(300);
    EXPECT_EQ(dashes > 0 ? 1 : 0, count("        " + string(dashes, '-') + "\r\n"));
    EXPECT_EQ(dashes > 0 ? 0 : 1, count("QRB2530E The\r\n")) << "wrapped";
    EXPECT_EQ(dashes > 0 ? 2 : 1, count("\x1b[H\x1b[J")) << "cleared at the start, and for a page";
  }
}

}  // namespace
