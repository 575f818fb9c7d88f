// utility2_test.cpp: the error log, and the start of the message system and the trace.
#include "agent/utility2.h"

#include <fcntl.h>

#include <chrono>
#include <csignal>

#include "agent/errormsg.h"
#include "agent/logfile.h"
#include "agent/parser2.h"
#include "agent/psutil2.h"
#include "tests/agent/agent_fixture.h"

namespace {

using std::pair, std::string, std::tuple, support::Captured;
using ErrorLog = Agent;
using Start = Agent;

TEST_F(ErrorLog, LinesCarryTimeAndProcess) {
  vexoErrorMsg("one %s\nfake\x1b[2J\n", 0);
  vexoErrorMsg("two", 1);
  Captured shown(STDERR_FILENO);
  psNonNlsErrorMsg("three");
  EXPECT_EQ("three\n", shown.take());
  EXPECT_EQ(
      "#/#/# #:#:# TID<#> ==> one %s?fake?[#J\n#/#/# #:#:# two\n#/#/# #:#:# TID<#>  ==>  three\n",
      support::masked(log()));
  EXPECT_HOLDS(log(), " TID<" + std::to_string(::getpid()) + "> ==> one");
  EXPECT_EQ(fs::perms{0600}, fs::status("installed/agent/vexoerror.log").permissions());
}

// Through both functions that write to the log, with some lines longer than a stream's buffer,
// after a line whose writer was killed.
TEST_F(ErrorLog, KeepsLinesWholeAcrossProcesses) {
  dir.write("installed/agent/vexoerror.log", "t");
  const Captured quiet(STDERR_FILENO);
  std::map<string, int> counts, wanted = {{"t", 1}};
  for (char name = 'a'; name < 'i'; ++name) {
    const string text(name < 'c' ? 5000 : 99, name);
    wanted[text] = 1000;
    if (::fork() != 0) continue;
    for (int n = 0; n < 1000; ++n) {
      name % 2 == 0 ? psNonNlsErrorMsg(text.c_str()) : vexoErrorMsg(text.c_str(), 0);
    }
    ::_exit(0);
  }
  for (char name = 'a'; name < 'i'; ++name) EXPECT_LT(0, ::wait(nullptr));
  std::istringstream lines(log());
  for (string line; std::getline(lines, line);) ++counts[line.substr(line.rfind(' ') + 1)];
  EXPECT_TRUE(wanted == counts) << counts.size() << " kinds of lines";
}

TEST_F(ErrorLog, LosesALineWhoseLockIsNotGivenUpAndGoesOn) {
  const int file = ::open("log", O_RDWR | O_CREAT, 0600);
  const pid_t holder = ::fork();
  if (holder == 0) ::_exit(::lockf(file, F_LOCK, 0) == 0 ? ::pause() : 1);
  while (::lockf(file, F_TEST, 0) == 0) ::usleep(1000);
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(300);
  EXPECT_FALSE(agent::appendLocked("log", "lost\n", 300));
  EXPECT_TRUE(std::chrono::steady_clock::now() >= end);
  EXPECT_FALSE(agent::appendLocked("log", "lost too\n", 60000)) << "waited in vain once";
  ::kill(holder, SIGKILL);
  EXPECT_EQ(holder, ::waitpid(holder, nullptr, 0));
  EXPECT_TRUE(agent::appendLocked("log", "kept\n"));
  EXPECT_EQ("kept\n", dir.read("log"));
  ::close(file);
}

TEST_F(ErrorLog, IsWhereItCanBeWritten) {
  fs::create_directories("logs");
  char path[api::kPathSize];
  for (const auto& [options, wanted] : {pair("VLTI_LOG \"logs/\"\n", "logs/vexoerror.log"),
                                        {"VLTI_LOG missing\n", "vexoerror.log"},
                                        {"VLTI_LOG logs\nVLTI_LOG missing\n", "logs/vexoerror.log"},
                                        {"VEXO_NODE n\n", "installed/agent/vexoerror.log"}}) {
    dir.write("installed/agent/vexo.opt", options);
    EXPECT_EQ(0, getErrorLog(path));
    EXPECT_STREQ(wanted, path);
  }
  fs::remove_all("installed");
  EXPECT_EQ(0, getErrorLog(path));
  EXPECT_STREQ("vexoerror.log", path) << "the current directory is the last resort";
}

TEST_F(Start, ReadsFormatNumbersAndReportsAMissingCatalog) {
  set(orc.VLTI_ORC_DIR, "installed/agent");
  // The three options, and the formats of dates, times and numbers.
  const tuple<const char*, tuple<int, int, int>> rows[] = {{"7", {1, 1, 1}},   {"6", {1, 1, 6}},
                                                           {"5", {5, 1, 5}},   {"4", {4, 4, 4}},
                                                           {"abc", {0, 0, 0}}, {"-1", {1, 1, 1}}};
  for (const auto& [text, wanted] : rows) {
    set(orc.VEXO_DATE_FORMAT, text, orc.VEXO_TIME_FORMAT, text, orc.VEXO_NUM_FORMAT, text);
    EXPECT_EQ(0, newNlsGlobalObject());
    const Captured quiet(STDERR_FILENO);
    EXPECT_EQ(nls::kCatalogNotOpened, callNlinit(&orc));
    const auto [date, time, number] = ut::runFormats();
    EXPECT_EQ(wanted, tuple(date, time, number)) << text;
  }
  EXPECT_HOLDS(log(), " vexo.cat, exists in the VEX for Oracle installation directory. rc = 610\n");
  dir.write("source.msg", "$quote \"\n$set 1\n2641 \"QRB2641WNo %s for %s\"\n");
  ASSERT_EQ(0, std::system(GENCAT " installed/agent/vexo.cat source.msg"));
  set(orc.VEXO_LANGUAGE, "FRA");
  EXPECT_EQ(0, newNlsGlobalObject());
  EXPECT_EQ(0, callNlinit(&orc));
  EXPECT_HOLDS(log(), "==> QRB2641W No vexo_fra.cat for FRA\n");
}

// Each keyword's value is its own name.
TEST_F(Start, TracesEachOptionUnderItsName) {
  std::istringstream words(
      "VLTI_DIR VLTI_LOG VLTI_ORC_DIR VLTI_ORC_CONFIG VEXO_AVG_SIZE VEXO_FS VEXO_NODE VEXO_OWNER "
      "VEXO_PSWDPATH VEXO_TRACE_MAX VEXO_TRACE_FILE VEXO_TRACE_FLAGS VEXO_TEST_FLAGS "
      "VEXO_MGMT_CLASS_2 VEXO_MGMT_CLASS_3 VEXO_MGMT_CLASS_4 VEXO_NUM_BUFFERS VEXO_DATE_FMT "
      "VEXO_TIME_FMT VEXO_NUM_FMT VEXO_LANGUAGE");
  string options, wanted;
  for (string name; words >> name;) {
    string label = name.ends_with("_FMT") ? name.substr(0, name.size() - 2) + "ORMAT" : name;
    label.resize(19, ' ');
    options += name + " " + name + "\n";
    wanted += " " + label + (name == "VEXO_FS" ? ": /" : ": ") + name + "\n";
  }
  dir.write("installed/agent/vexo.opt", options);
  EXPECT_EQ(0, vexoSetOptions(&orc));
  const auto answer = [](VltApiVersionEx& library) { library = {2, 21, 22, 23, 24}; };
  support::ScriptedApi api({support::Step("vltQueryApiVersionEx").fill<VltApiVersionEx>(answer)});
  const string text = support::traced("", [&] {
    for (TR_PREFIX = 0; TR_PREFIX < 2; ++TR_PREFIX) vexoTraceHeaderInfo(&orc);
    TR_PREFIX = 0;
  });
  EXPECT_HOLDS(text, wanted);
  EXPECT_HOLDS(text, "      Run Time API Header:  21.22.23.24\n");
}

TEST_F(Start, NamesEveryUserButRoot) {
  if (::getuid() != 0) GTEST_SKIP() << "needs root";
  for (const auto& user : {pair(0u, ""), {65534, "nobody"}, {4321, ""}}) {
    support::inChild([&] {
      ASSERT_EQ(0, ::setuid(user.first));
      char name[65] = "?";
      EXPECT_EQ(0, psvexoGetOwnerName(name, sizeof name));
      EXPECT_STREQ(user.second, name);
    });
  }
}

TEST_F(Start, GoesOnWithoutATraceThatCannotBeOpened) {
  VEXCTrace trace;
  trcClass = &trace;
  set(orc.VEXO_TEST_FLAGS, " SYNCDBNORMAN\r", orc.VEXO_TRACE_FILE, "missing/trace");
  set(orc.VEXO_TRACE_FLAGS, "PREFIX -PID -TID -PREFIX 'API' SERVCIE");
  Captured shown;
  vexoInitTrace(&orc);
  for (const string& text : {shown.take(), log()}) EXPECT_HOLDS(text, "QRB0201E");
  EXPECT_EQ(tuple(1, 0), tuple(TEST_SYNCDBNORMAN, TR_API)) << "without a trace no class is on";
  EXPECT_EQ(string::npos, log().find("SERVCIE")) << "nor judged";
  const string file = dir.path("trace");
  set(orc.VEXO_TEST_FLAGS, "nosuch", orc.VEXO_TRACE_FILE, file, orc.VEXO_TRACE_MAX, "12x");
  vexoInitTrace(&orc);
  EXPECT_EQ(1, TR_API);
  EXPECT_HOLDS(dir.read("trace"), "\nTracefile maximum length set to 12 MB.\n");
  EXPECT_HOLDS(support::masked(dir.read("trace")), "\n[#] [#] :  vexoInitTrace(): QRB#");
  for (const char* words : {": VEXO_TEST_FLAGS, NOSUCH\n", ": VEXO_TRACE_FLAGS, SERVCIE\n"}) {
    EXPECT_HOLDS(dir.read("trace"), words);
    EXPECT_HOLDS(log(), words);
  }
  TR_API = 0;
  trcClass = nullptr;
}

}  // namespace
