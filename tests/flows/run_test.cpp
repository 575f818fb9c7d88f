// run_test.cpp: starting and ending the program: help, invalid command lines, missing parts, and
// what the trace holds.
#include "tests/flows/site.h"

namespace {

using std::tuple, std::string_literals::operator""s;

class Run : public Site {};

TEST_F(Run, AnswersCommandsThatItDoesNotRunWithTheHelpAndSuccess) {
  for (const auto& [language, command, unknown] : {tuple("EN", "PASSWORD", 1u),
                                                   {"EN", "SHOWENV", 1},
                                                   {"EN", "showversions", 1},
                                                   {"EN", "help", 0},
                                                   {"DE", "help", 0}}) {
    option("VEXO_LANGUAGE "s + language);
    run("vexosync "s + command);
    ends(0);
    EXPECT_EQ(1 + unknown, count("Version 8, Release 1")) << command;
    EXPECT_EQ(unknown, count("QRB0102E")) << command;
    EXPECT_EQ(1u, count("-NUMORCINSTances=n")) << command;
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
    run("vexosync "s + arguments);
    ends(code, {message});
    const string seen = terminal_->transcript();
    EXPECT_LT(seen.find("Usage: vexosync"), seen.find(message)) << message;
    EXPECT_EQ(1u, count("Version 8, Release 1")) << "only the help's banner";
  }
}

TEST_F(Run, EndsIfAFileIsMissingOrDoesNotFit) {
  settings_.columns = 1000;
  for (const auto& [library, code, reason] :
       {tuple(dir_.path(), 104, "incomplete: libApiDS64.so: cannot open"),
        {INCOMPLETE_LIBRARY, 104,
         "incomplete: " INCOMPLETE_LIBRARY "/libApiDS64.so: undefined symbol: vltUpdateObj"},
        // Reports version 0.
        {WHOLE_LIBRARY, 2507, "QRB2573E This program needs Version 8, Release 1, Level 13"}}) {
    settings_.environment["LD_LIBRARY_PATH"] = library;
    run("vexosync query");
    ends(code, {reason});
    EXPECT_TRUE(logged(reason)) << errorLog();
    EXPECT_EQ(code == 2507, showed("QRB2572E"));
  }
  // The options file is reported instead of a bad option; only that needs the help.
  for (const auto& [argument, help] : {std::pair("-wrong", true), {"-nocat", false}}) {
    run("VEXO_OPTFILE=/absent vexosync syncdb "s + argument);
    ends(2534, {"QRB2615E The options file /absent ", "QRB2534E"});
    EXPECT_FALSE(showed("QRB0103E") || showed("QRB2699I"));
    EXPECT_EQ(help, showed("Usage: vexosync"));
  }
  // What a user tries first, without options file and library.
  const string agent = BUILD_DIRECTORY "/client/oracle/bin64/vexo.opt";
  for (const auto& [arguments, code, text] :
       {tuple("--version", 0, "vexosync 8.1.13.0"s),
        {"--version >/dev/full; echo = $?", 0, "= 255"},
        {"--help", 0, "Usage: vexosync"},
        {"-h", 0, "Usage: vexosync"},
        {"help", 2534, "QRB2699I The options file is looked for as " + agent + ", unless"},
        {"query", 2534, "  cp " + agent + ".sample " + agent + "\r\n"}}) {
    run("unset VEXO_OPTFILE; vexosync "s + arguments);
    ends(code, {text});
  }
  const string lines = "|(C) 1997||QRB2615E||QRB2699I|  cp " + agent.substr(0, 3) + "||QRB2534E|||";
  EXPECT_TRUE(beginnings(terminal_->transcript()).ends_with(lines)) << terminal_->transcript();
}

// The answers are two empty dates. What standard output and error hold is in the files seen and
// errors; the trace must not have taken the place of a descriptor.
TEST_F(Run, StartsAndEndsInOrderWhateverItsDescriptorsAre) {
  option("VEXO_TRACE_FILE " + dir_.path("run.trc") + "\nVEXO_TRACE_FLAGS SERVICE PREFIX -PID -TID");
  objects("/a");
  dir_.write("answers", "\n+0\n");
  dir_.write("dos", "+-3 \r\n+0\r\n2\r\nq\r\n");
  dir_.write("wrong", "x\n03/07/2026\n03/06/2026\n\n+0\n");
  const string lost = "QRB2654E.*\n", failed = "vexoProcessCommand() failed",
               good = "main(): Exit - OK";
  // The command, its code, what is seen, the error (if any), what is traced and what is not.
  for (const auto& [command, code, part, error, traced, notTraced] :
       {tuple("query <answers >seen 2>errors", 0, "oracle/a\n"s, ""s, good, failed),
        {"query <&- >seen 2>errors", 0, "oracle/a\n", "", "Found 'a' on ZYL Server\n", failed},
        {"query <answers >&- 2>errors", 65535, "", lost, "not written", "Backup object\n"},
        {"query <answers >seen 2>&-", 0, "oracle/a\n", "", "EXIT, rc = 0\n", failed},
        {"query <&- >&- 2>&-", 65535, "", "", "main(): Exit - rc = 65535", "Backup object\n"},
        {"query <answers >/dev/full 2>errors", 65535, "", lost, "not written", failed},
        {"synx >&- 2>errors", 1, "", lost, "not written", failed},
        {"query <wrong >seen 2>errors", 0, "QRB2525E", "", "dateParse() failed", failed},
        {"query <wrong >seen 2>errors", 0, "QRB2529E", "", "API Header:  8.1.13.0\n",
         "CLinkedList"},
        {"delete <dos >seen 2>errors", 300, "no such entry", "", failed, "dateParse() failed"},
        {"delete <dos | cat >seen", 0, "\n        " + string(1016, '-') + "\n", "", failed, good},
        // A page at once, another after a second, the next one would come two seconds later.
        {"delete <answers >seen 2>errors & p=$!; sleep 2; kill $p; wait $p; exit $?", 128 + 15,
         "oracle/a\n", "QRB2691W.*\n", "ENTER", failed}}) {
    SCOPED_TRACE(command);
    run("rm -f seen errors run.trc; unset TERM; vexosync "s + command);
    ends(code);
    const string seen = dir_.read("seen"), trace = dir_.read("run.trc");
    EXPECT_HOLDS(seen, part);
    EXPECT_EQ(string::npos, seen.find_first_of("\x1b\r")) << "no codes of a terminal";
    EXPECT_TRUE(std::regex_match(dir_.read("errors"), std::regex(error))) << dir_.read("errors");
    EXPECT_HOLDS(trace, traced);
    EXPECT_EQ(string::npos, trace.find(notTraced)) << trace;
  }
  EXPECT_EQ(3u, support::occurrences(dir_.read("seen"), "Command ==>"));
}

TEST_F(Run, NeverEndsAFailureWithSuccess) {
  zylstore("fault InitEx 256");
  run("vexosync query");
  ends(255);
}

TEST_F(Run, ShowsItsListOnATerminalThatHasRoomForIt) {
  objects("/a");
  // The size of the terminal, and the dashes below the heading of the list; 0: there is no list.
  using Row = tuple<std::uint16_t, std::uint16_t, unsigned>;
  for (const auto& [height, width, dashes] :
       {Row(11, 21, 12), {11, 20, 0}, {10, 21, 0}, {0, 90, 71}, {30, 0, 71}}) {
    settings_.rows = height;
    settings_.columns = width;
    begin("vexosync delete");
    if (dashes > 0) answer("Command ==>", "q");
    ends(300);
    EXPECT_EQ(dashes > 0 ? 1u : 0u, count("        " + string(dashes, '-') + "\r\n"));
    EXPECT_EQ(dashes > 0 ? 0u : 1u, count("QRB2530E The\r\n")) << "wrapped";
    EXPECT_EQ(dashes > 0 ? 2u : 1u, count("\x1b[H\x1b[J"))
        << "cleared at the start, and for a page";
  }
}

}  // namespace
