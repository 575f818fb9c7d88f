// trace_test.cpp: trace targets, prefixes, lists of classes, and the file that wraps.
#include "common/ut/trace.h"

#include "common/ut/agttrc.h"
#include "tests/support/captured.h"
#include "tests/support/tempdir.h"

namespace {

using std::pair, std::string, std::tuple, support::Captured;

class Trace : public testing::Test {
 protected:
  static void allOff() {
#define TRACE_CLASS(name) TR_##name = 0;
#define TEST_FLAG(name) TEST_##name = 0;
#include "common/ut/trcclass.def"
    TR_ALL = 0;
  }
  void start(const char* flags, unsigned long megabytes = 0, int banner = 0) {
    allOff();
    trace.emplace();
    trSetMaxTraceSize(megabytes);
    EXPECT_EQ(0u, trace->trBegin(path.c_str(), banner));
    EXPECT_EQ(0u, trace->trEnable(flags, true));
  }
  // What was written after the lines that every start writes.
  string lines() const {
    const string text = dir.read("trace"), last = "Tracing to file: " + path + "\n";
    return text.substr(text.rfind(last) + last.size());
  }
  support::TempDir dir;
  const string path = dir.path("trace");
  std::optional<VEXCTrace> trace;
};

TEST_F(Trace, LinesCarryThePrefixesThatAreOn) {
  for (const auto& [flags, line] : {pair("API", "[#] [#] : hello #\n"),
                                    {"API,timestamp\t-tid", "#/#/# #:#:#.# [#] : hello #\n"}}) {
    start(flags);
    TRACE(TR_API, "hello %d\n", 5);
    EXPECT_EQ(line, support::masked(lines()));
  }
  start("API -TID -PID PREFIX");
  TRACE(TR_API, "hello\n");
  EXPECT_EQ(0u, lines().find("trace_test.cpp      ("));
  EXPECT_EQ(25u, lines().find("): hello\n")) << "20 columns for the name, 4 for the line";
  start("API -TID -PID TIMESTAMP");
  // More than a second: some of the milliseconds are few, and padded.
  for (int line = 0; line < 100; ++line, ::usleep(11000)) TRACE(TR_API, "\n");
  EXPECT_EQ(2700u, lines().size());
  EXPECT_EQ(100u, support::occurrences(support::masked(lines()), ":#.# : \n"));
}

TEST_F(Trace, WordsSwitchClassesAndAggregates) {
  const auto on = [] {
    string words = TR_ALL != 0 ? "(all) " : "";
#define TRACE_CLASS(name) \
  if (TR_##name != 0) words += #name " ";
#include "common/ut/trcclass.def"
    return words;
  };
  const string service =
      "API CONFIG ENG ERI ERROR EVENT FILEOPS GENERAL GUI MESSAGES ORCBUFF ORCLEVEL0 ORCLEVEL1 "
      "ORCLEVEL2 PCM PROXY0 PROXY1 PROXY2 SQLAPI VEXAPI ";
  const string all =
      "(all) API BUFFRING CONFIG ENG ERI ERROR EVENT FILEOPS GENERAL GUI LINKEDLIST MEM MESSAGES "
      "MUTEX NLS ORCBUFF ORCLEVEL0 ORCLEVEL1 ORCLEVEL2 PCM PERFORMANCE PROXY0 PROXY1 PROXY2 "
      "SORTLINKEDLIST SQLAPI VEXAPI THREAD TRACE ";
  VEXCTrace switches;
  for (const auto& [flags, wanted] :
       {pair("SERVICE", service),
        {"ALL", all},
        {"detailed", string(all).replace(all.find("ENG"), 0, "DETAILED ")},
        {"ALL -DETAILED", ""},
        {"ALL -SERVICE",
         "(all) BUFFRING LINKEDLIST MEM MUTEX NLS PERFORMANCE SORTLINKEDLIST THREAD TRACE "},
        {"PARSE -SERVICE -ALL", "PARSE "},
        {"MBHISTORY EWSDETAIL MAPIDETAIL PARSE CMD NLS SERVICE",
         string(service).replace(4, 0, "CMD ")},
        {"\"API\",'NLS'\r\nMEM\r", "API MEM NLS "},
        {"ORCLEVEL ORCLEVEL11 --API - PARSECMD", ""}}) {
    allOff();
    EXPECT_EQ(0u, switches.trEnable(flags, true));
    EXPECT_EQ(wanted, on()) << flags;
  }
  switches.trTestEnable("legacypwd,'SYNCDBNORMAN'\r nosuch TEST -test");
  EXPECT_EQ(tuple(1, 1, 0, 0),
            tuple(TEST_LEGACYPWD, TEST_SYNCDBNORMAN, TEST_TEST, TEST_ORACLEDATA));
  EXPECT_EQ("SERVCIE TEST -API -", ut::unknownTraceWords("servcie -NLS,TEST all --API\t- 'MEM'\r"));
  EXPECT_EQ("NOSUCH API", ut::unknownTestWords(" nosuch legacypwd -TEST 'API'\r"));
}

// Names come from elsewhere, and a trace may go to a terminal.
TEST_F(Trace, InsertsAreMadePrintableAndEverythingElseIsWrittenAsPrintfWould) {
  start("API -PID -TID");
  TRACE(TR_API, " %s: Found '%s'\n", "f()", "X\x1b[2J\nf(): Exit\r\xff\u202e\u00e9");
  TRACE(TR_API, "%c%c%c %.3s|%12s|%-6s|\n", 'a', '\n', 0, "abc\n", "a\nb", "a\tb");
  const char unterminated[2] = {'o', 'k'};
  TRACE(TR_API, "%.*s %*d\n", 2, unterminated, 4, 7);
  TRACE_LINES(TR_API, "%s:\n%s\n", "script", "one\ntwo\x1b\n\n");
  TRACE(TR_API, "%%%d %5d|%-5d|%05d %u %#X %lu %ld %zu %hu %hhd %llx %p %.2f %+i%%\n", -1, 42, 42,
        42, ~0u, 255u, ~0ul, -9l, sizeof(int), std::uint16_t{65535}, '\x7f', 1ull << 40,
        reinterpret_cast<void*>(16), 1.5, 3);
  EXPECT_EQ(
      " f(): Found 'X?[2J?f(): Exit???\u00e9'\n"
      "a?? abc|         a?b|a?b   |\nok    7\nscript:\none\ntwo?\n\n\n"
      "%-1    42|42   |00042 4294967295 0XFF " +
          std::to_string(~0ul) + " -9 4 65535 127 10000000000 0x10 1.50 +3%\n",
      lines());
}

TEST_F(Trace, KeepsErrnoCutsLongLinesAndEvaluatesNothingWhileOff) {
  start("API -PID -TID");
  int evaluated = 0;
  TRACE(TR_NLS, "%d\n", ++evaluated);
  errno = ENOTTY;
  TRACE(TR_API, "%s", string(6000, 'x').c_str());
  EXPECT_EQ(pair(0, ENOTTY), pair(evaluated, errno));
  const string longest(ut::kMaxTraceLine - 1, 'x');
  TRACE(TR_API, "%s\n", longest.c_str());
  TRACE(TR_API, "%sx\n", longest.c_str());
  TRACE(TR_API, "%sy", longest.c_str());
  TRACE(TR_API, "next\n");
  trClose();
  TRACE(TR_API, "after the end\n");
  EXPECT_EQ(longest + "\n" + longest + "\n" + longest + "\n" + longest + "ynext\n", lines());
}

// The numbers of the first and the last "line NUMBER" of a text.
pair<long, long> endsOf(const string& text) {
  return {std::stol(text.substr(text.find("\nline ") + 6, 8)),
          std::stol(text.substr(text.rfind("\nline ") + 6, 8))};
}

TEST_F(Trace, WrappedFileSaysWhereItsNewestLineEnds) {
  long last = 0;
  const auto writeLines = [&](int count) {
    while (count-- > 0) TRACE(TR_API, "line %08ld %090d\n", ++last, 0);
  };
  const auto seamOf = [](const string& text) { return std::stoul(text.substr(12, 12)); };
  start("API -PID -TID", 1);
  EXPECT_EQ(0u, dir.read("trace").find("ZYL Trace   123456789012"));
  writeLines(14000);
  string text = dir.read("trace");
  EXPECT_LE(text.size(), 1048576u);
  EXPECT_EQ(text.find('\n') + 1, text.find("Continued from end of segment 1\n\n"));
  const std::size_t seam = seamOf(text);
  const auto newer = endsOf(text.substr(0, seam)), older = endsOf(text.substr(seam));
  EXPECT_EQ(pair(last, older.second + 1), pair(newer.second, newer.first)) << "nothing was lost";
  EXPECT_EQ(support::occurrences(text, "\nline "), static_cast<unsigned>(last - older.first + 1));
  start("API -PID -TID", 1);  // another run continues where the first one stopped
  EXPECT_EQ("BEGINNING NEW TRACE\n", dir.read("trace").substr(seam, 20));
  for (const int count : {1, 15000}) {
    writeLines(count);
    text = dir.read("trace");
    EXPECT_EQ(last, endsOf(text.substr(0, seamOf(text))).second);
  }
  EXPECT_EQ(0u, text.find("ZYL Trace   ")) << "the header survives every wrap";
}

TEST_F(Trace, BeginsWithABannerIfOneIsWanted) {
  start("");
  EXPECT_EQ(std::filesystem::perms{0600}, std::filesystem::status(path).permissions());
  EXPECT_HOLDS(dir.read("trace"), "\nBEGINNING NEW TRACE\n\nTracing to file: " + path + "\n");
  EXPECT_EQ("", lines());
  start("", 0, 1);
  EXPECT_HOLDS(lines(),
               "       Application Client :   VEX Oracle SUN\n"
               "              VEX Version :   8.1.13.0\n"
               "        Base Code Version :   Version 8, Release 1, Level13.0 vexosync\n");
}

TEST_F(Trace, TargetsThatCannotBeUsedAreLeftAlone) {
  trace.emplace();
  const string foreign = "precious, and longer than the mark of a trace file\n";
  dir.write("foreign", foreign);
  dir.write("short", "ZYL Trace   12\n");
  for (const char* name : {"foreign", "short", "no/directory", "."}) {
    Captured out;
    EXPECT_EQ(ut::kTraceNotOpened, trace->trBegin(dir.path(name).c_str(), 1)) << name;
    EXPECT_EQ("Unable to open trace output file " + dir.path(name) + "\n", out.take());
  }
  EXPECT_EQ(foreign + "|ZYL Trace   12\n", dir.read("foreign") + "|" + dir.read("short"));
  trSetMaxTraceSize(1);
  for (const string position : {"000000000025", "000000009999"}) {  // outside the file
    dir.write("damaged", "ZYL Trace   " + position + "x\nold\n");
    EXPECT_EQ(0u, trace->trBegin(dir.path("damaged").c_str(), 0));
    EXPECT_HOLDS(dir.read("damaged"), "x\nold\nBEGINNING");
  }
  Captured full;
  EXPECT_EQ(0u, trace->trBegin("/dev/full", 1));
  EXPECT_FALSE(ut::traceIsOpen());
  EXPECT_EQ("Unable to write to trace file /dev/full. Tracing disabled.\n", full.take());
}

}  // namespace
