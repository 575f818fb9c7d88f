// utility2_test.cpp: the error log, and the start of the message system and the trace.
#include "agent/utility2.h"

#include <fcntl.h>

#include <chrono>
#include <csignal>
#include <map>
#include <sstream>

#include "agent/errormsg.h"
#include "agent/logfile.h"
#include "agent/parser2.h"
#include "agent/psutil2.h"
#include "api/clientdirs.h"
#include "common/ut/agttrc.h"
#include "tests/agent/agent_fixture.h"
#include "tests/support/child.h"
#include "tests/support/scripted_api.h"
#include "tests/support/traced.h"

namespace {

using ErrorLog = Agent;
using Start = Agent;

TEST_F(ErrorLog, LinesCarryTimeAndProcess) {
  vexoErrorMsg("one %s\nfake\x1b[2J\n", 0);
  vexoErrorMsg("two", 1);
  support::Captured shown(STDERR_FILENO);
  psNonNlsErrorMsg("three");
  EXPECT_EQ("three\n", shown.take());
  EXPECT_EQ(
      "#/#/# #:#:# TID<#> ==> one %s?fake?[#J\n#/#/# #:#:# two\n#/#/# #:#:# TID<#>  ==>  three\n",
      support::masked(log()));
  EXPECT_HOLDS(log(), " TID<" + std::to_string(::getpid()) + "> ==> one");
  EXPECT_EQ(std::filesystem::perms{0600},
            std::filesystem::status("installed/agent/vexoerror.log").permissions());
}

TEST_F(ErrorLog, KeepsLinesWholeAcrossProcesses) {
  // Through both functions that write to the log, with some lines longer than a stream's buffer,
  // after a line whose writer was killed.
  dir.write("installed/agent/vexoerror.log", "torn");
  constexpr int kProcesses = 8, kLines = 1000;
  const auto textOf = [](char name) { return std::string(name < 'c' ? 5000 : 99, name); };
  const support::Captured quiet(STDERR_FILENO);
  for (char name = 'a'; name < 'a' + kProcesses; ++name) {
    if (::fork() != 0) continue;
    const std::string text = textOf(name);
    for (int n = 0; n < kLines; ++n) {
      name % 2 == 0 ? psNonNlsErrorMsg(text.c_str()) : vexoErrorMsg(text.c_str(), 0);
    }
    ::_exit(0);
  }
  while (::wait(nullptr) > 0) {
  }
  std::map<std::string, int> counts, wanted = {{"torn", 1}};
  for (char name = 'a'; name < 'a' + kProcesses; ++name) wanted[textOf(name)] = kLines;
  std::istringstream text(log());
  for (std::string line; std::getline(text, line);) ++counts[line.substr(line.rfind(' ') + 1)];
  EXPECT_TRUE(wanted == counts) << counts.size() << " kinds of lines";
  psWriteError("", "nowhere\n");
  psWriteError("missing/log", "nowhere\n");
}

TEST_F(ErrorLog, LosesALineWhoseLockIsNotGivenUpAndGoesOn) {
  const int file = ::open("log", O_RDWR | O_CREAT, 0600);
  const pid_t holder = ::fork();
  if (holder == 0) ::_exit(::lockf(file, F_LOCK, 0) == 0 ? ::pause() : 1);
  while (::lockf(file, F_TEST, 0) == 0) ::usleep(1000);
  using Clock = std::chrono::steady_clock;
  const auto begin = Clock::now();
  EXPECT_FALSE(agent::appendLocked("log", "lost\n", 300));
  EXPECT_LE(std::chrono::milliseconds(300), Clock::now() - begin);
  EXPECT_FALSE(agent::appendLocked("log", "lost too\n", 60000)) << "waited in vain once";
  ::kill(holder, SIGKILL);
  EXPECT_EQ(holder, ::waitpid(holder, nullptr, 0));
  EXPECT_TRUE(agent::appendLocked("log", "kept\n"));
  EXPECT_EQ("kept\n", dir.read("log"));
  ::close(file);
}

TEST_F(ErrorLog, IsWhereItCanBeWritten) {
  std::filesystem::create_directories("logs");
  const std::pair<const char*, const char*> kRows[] = {
      {"VLTI_LOG logs\n", "logs/vexoerror.log"},
      {"VLTI_LOG \"logs/\"\n", "logs/vexoerror.log"},
      {"VLTI_LOG missing\n", "vexoerror.log"},
      {"VLTI_LOG logs\nVLTI_LOG missing\n", "logs/vexoerror.log"},
      {"VEXO_NODE n\n", "installed/agent/vexoerror.log"},
      {nullptr, "installed/agent/vexoerror.log"}};
  char path[api::kPathSize];
  for (const auto& [options, wanted] : kRows) {
    std::filesystem::remove("installed/agent/vexo.opt");
    if (options != nullptr) dir.write("installed/agent/vexo.opt", options);
    EXPECT_EQ(0, getErrorLog(path));
    EXPECT_STREQ(wanted, path);
  }
  std::filesystem::remove_all("installed");
  EXPECT_EQ(0, getErrorLog(path));
  EXPECT_STREQ("vexoerror.log", path) << "the current directory is the last resort";
}

TEST_F(Start, ReadsFormatNumbersAndReportsAMissingCatalog) {
  set(orc.VLTI_ORC_DIR, "installed/agent");
  const std::tuple<const char*, int, int, int> rows[] = {
      {"7", 1, 1, 1}, {"6", 1, 1, 6},   {"5", 5, 1, 5}, {"4", 4, 4, 4},
      {"0", 0, 0, 0}, {"abc", 0, 0, 0}, {"-1", 1, 1, 1}};
  for (const auto& [text, date, time, number] : rows) {
    set(orc.VEXO_DATE_FORMAT, text);
    set(orc.VEXO_TIME_FORMAT, text);
    set(orc.VEXO_NUM_FORMAT, text);
    EXPECT_EQ(0, newNlsGlobalObject());
    const support::Captured quiet(STDERR_FILENO);
    EXPECT_EQ(nls::kCatalogNotOpened, callNlinit(&orc));
    const ut::RunFormats& formats = ut::runFormats();
    EXPECT_EQ(std::tuple(date, time, number),
              std::tuple(formats.date, formats.time, formats.number))
        << text;
  }
  EXPECT_HOLDS(log(),
               "==> Error: Could not initialize NLS object. Check that the message file, vexo.cat, "
               "exists in the VEX for Oracle installation directory. rc = 610\n");
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
  std::string options, wanted;
  for (std::string name; words >> name;) {
    std::string label = name.ends_with("_FMT") ? name.substr(0, name.size() - 2) + "ORMAT" : name;
    label.resize(19, ' ');
    options += name + " " + name + "\n";
    wanted += " " + label + (name == "VEXO_FS" ? ": /" : ": ") + name + "\n";
  }
  dir.write("installed/agent/vexo.opt", options);
  EXPECT_EQ(0, vexoSetOptions(&orc));
  support::ScriptedApi api(
      {support::Step("vltQueryApiVersionEx").fill<VltApiVersionEx>([](VltApiVersionEx& library) {
        library = {2, 21, 22, 23, 24};
      })});
  const std::string text = support::traced("", [&] {
    for (TR_PREFIX = 0; TR_PREFIX < 2; ++TR_PREFIX) vexoTraceHeaderInfo(&orc);
    TR_PREFIX = 0;
  });
  EXPECT_HOLDS(text, wanted);
  EXPECT_HOLDS(text, "      Run Time API Header:  21.22.23.24\n");
}

TEST_F(Start, NamesTheUserAndTheHost) {
  for (const auto& [user, name] : {std::pair(0, ""), {65534, "nobody"}, {4321, ""}}) {
    if (::getuid() != 0) GTEST_SKIP() << "needs root";
    support::inChild([id = user, wanted = name] {
      ASSERT_EQ(0, ::setuid(static_cast<uid_t>(id)));
      char text[65] = "?";
      EXPECT_EQ(0, psvexoGetOwnerName(text, sizeof text));
      EXPECT_STREQ(wanted, text);
      EXPECT_EQ(*wanted == '\0' ? 0 : api::kPathTooLong, psvexoGetOwnerName(text, 6));
      EXPECT_STREQ("", text);
    });
  }
}

TEST_F(Start, GoesOnWithoutATraceThatCannotBeOpened) {
  VEXCTrace trace;
  trcClass = &trace;
  set(orc.VEXO_TEST_FLAGS, " SYNCDBNORMAN\r");
  set(orc.VEXO_TRACE_FLAGS, "PREFIX -PID -TID -PREFIX 'API' SERVCIE");
  set(orc.VEXO_TRACE_FILE, "missing/trace");
  support::Captured shown;
  vexoInitTrace(&orc);
  EXPECT_HOLDS(shown.take(), "QRB0201E");
  EXPECT_HOLDS(log(), "QRB0201E");
  EXPECT_EQ(1, TEST_SYNCDBNORMAN);
  EXPECT_EQ(0, TR_API) << "without a trace no class is switched on";
  EXPECT_EQ(std::string::npos, log().find("SERVCIE")) << "nor judged";
  TEST_SYNCDBNORMAN = 0;
  set(orc.VEXO_TEST_FLAGS, "nosuch");
  set(orc.VEXO_TRACE_FILE, dir.path("trace"));
  set(orc.VEXO_TRACE_MAX, "2");
  vexoInitTrace(&orc);
  EXPECT_EQ(1, TR_API);
  const std::string first = support::masked(dir.read("trace"));
  EXPECT_HOLDS(first, "\nTracefile maximum length set to # MB.\n");
  EXPECT_HOLDS(first, "\n[#] [#] :  vexoInitTrace(): QRB#");
  for (const char* word : {"VEXO_TEST_FLAGS", "NOSUCH", "VEXO_TRACE_FLAGS", "SERVCIE"}) {
    EXPECT_HOLDS(first, word);
    EXPECT_HOLDS(log(), word);
  }
  TR_API = 0;
  trcClass = nullptr;
}

}  // namespace
