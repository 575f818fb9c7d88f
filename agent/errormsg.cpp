// errormsg.cpp: the agent's error log, see errormsg.h.
//
// Every line passes through appendLine, which makes it one line, and psWriteError, which appends it
// under a lock. The two ways in differ in how the log is found: vexoErrorMsg asks the options file,
// psNonNlsErrorMsg, which reports that file's own errors, does not.
#include "agent/errormsg.h"

#include <cstdio>
#include <new>
#include <string>
#include <string_view>

#include "agent/logfile.h"
#include "agent/orcctx.h"
#include "agent/psutil2.h"
#include "api/clientdirs.h"
#include "common/nls/nls.h"
#include "common/ut/nfdate.h"
#include "common/ut/printable.h"
#include "common/ut/progress.h"
#include "common/ut/result.h"

namespace {

constexpr std::size_t kTimeSize = 80;

}  // namespace

void vexoGetCurTime(char* out) {
  const nfDate now = ut::localNow();
  std::snprintf(out, kTimeSize, "%s %s", ut::formatDate(now).text, ut::formatTime(now).text);
}

unsigned short getErrorLog(char* path) {
  agent::findLog(agent::kErrorLogName, path);
  return 0;
}

void psWriteError(const char* path, const char* line) {
  if (*path == '\0') return;
  ut::ignoreResult(agent::appendLocked(path, line), "a lost line stops nothing");
}

namespace {

enum class LineKind { kPlain, kMessage, kEarly };

// Appends a text as one line: foreign text must not start a second one that looks like ours.
void appendLine(const char* path, LineKind kind, const char* text) {
  char time[kTimeSize];
  vexoGetCurTime(time);
  try {
    std::string_view wanted(text);
    while (wanted.ends_with('\n')) wanted.remove_suffix(1);
    const std::string message = ut::printable(wanted);
    std::string line(message.size() + sizeof time + 64, '\0');
    if (kind == LineKind::kPlain) {
      std::snprintf(line.data(), line.size(), "%s %s\n", time, message.c_str());
    } else if (kind == LineKind::kMessage) {
      std::snprintf(line.data(), line.size(), "%s TID<%d> ==> %s\n", time, psvexoGetID(),
                    message.c_str());
    } else {
      // Two blanks on each side of the arrow, where other lines have one. Kept on purpose, pinned
      // by ErrorLog.LinesCarryTimeAndProcess.
      std::snprintf(line.data(), line.size(), "%s TID<%d>  ==>  %s\n", time, psvexoGetID(),
                    message.c_str());
    }
    psWriteError(path, line.c_str());
  } catch (const std::bad_alloc&) {
    psWriteError(path, "QRB2522S Not enough memory.\n");
  }
}

}  // namespace

void vexoErrorMsg(const char* text, int plain) {
  char path[api::kPathSize];
  ut::ignoreResult(getErrorLog(path), "always finds one");
  appendLine(path, plain != 0 ? LineKind::kPlain : LineKind::kMessage, text);
}

void agent::showAndLog(const std::string& text) {
  nlprintf(msg::kLine, text);
  vexoErrorMsg(text.c_str(), 0);
}

void psNonNlsErrorMsg(const char* text) {
  std::fflush(stdout);
  ut::eraseProgress();
  std::fprintf(stderr, "%s\n", text);
  char directory[kOptionSize] = "";
  if (psvexoGetVexoDir(directory, sizeof directory) != 0) *directory = '\0';
  char path[api::kPathSize];
  agent::logIn(directory, agent::kErrorLogName, path);
  appendLine(path, LineKind::kEarly, text);
}
